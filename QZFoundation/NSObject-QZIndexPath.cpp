#include "QZFoundation/NSObject-QZIndexPath.h"

#include <span>
#include <string>
#include <vector>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSNull.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/NSArray-QZFoundation.h"

namespace qz {
namespace {

Ref<NSArray> childrenOf(NSObject* node, NSString* childKey) {
  Ref<NSObject> children = node->valueForKey(childKey);
  if (children && !isKind<NSArray>(children))
    detail::raise(NSInvalidArgumentException, "the children of a node are of class " +
                                                  std::string(children->classObject()->name()) +
                                                  ", not NSArray");
  return as<NSArray>(children);
}

}  // namespace

Ref<NSMutableArray> valuePathForIndexPath_valueKeyPath_childKey(NSObject* self, NSIndexPath* path,
                                                                NSString* valueKeyPath,
                                                                NSString* childKey) {
  auto values = NSMutableArray::array();
  if (path == nullptr) return values;
  Ref<NSObject> node = self;
  for (const std::uint32_t index : path->indexes()) {
    if (!node) break;
    const Ref<NSArray> children = childrenOf(node, childKey);
    node = children && index < children->count() ? children->objectAtIndex(index) : nullptr;
    const Ref<NSObject> value = node ? node->valueForKeyPath(valueKeyPath) : nullptr;
    values->addObject(value ? value : Ref<NSObject>(NSNull::null()));
  }
  return values;
}

Ref<NSArray> valuePathsForIndexPaths_valueKeyPath_childKey(NSObject* self, NSArray* paths,
                                                           NSString* valueKeyPath,
                                                           NSString* childKey) {
  detail::ArrayBuilder all;
  for (NSIndexPath* path : elements<NSIndexPath>(paths))
    all.take(valuePathForIndexPath_valueKeyPath_childKey(self, path, valueKeyPath, childKey));
  return all.finish();
}

Ref<NSIndexPath> indexPathForValues_valueKeyPath_childKey(NSObject* self, NSArray* values,
                                                          NSString* valueKeyPath,
                                                          NSString* childKey) {
  std::vector<std::uint32_t> indexes;
  Ref<NSObject> node = self;
  for (const Ref<NSObject> value : values) {
    const Ref<NSArray> children = node ? childrenOf(node, childKey) : nullptr;
    if (!children) return nullptr;
    const std::uint32_t index =
        indexOfObjectMatchingValue_forKeyPath(children, value, valueKeyPath);
    if (index == NSNotFound) return nullptr;
    indexes.push_back(index);
    node = children->objectAtIndex(index);
  }
  return NSIndexPath::indexPathWithIndexes(std::span(indexes));
}

Ref<NSArray> indexPathsForValuePaths_valueKeyPath_childKey(NSObject* self, NSArray* valuePaths,
                                                           NSString* valueKeyPath,
                                                           NSString* childKey) {
  detail::ArrayBuilder all;
  for (NSArray* values : elements<NSArray>(valuePaths))
    if (auto path = indexPathForValues_valueKeyPath_childKey(self, values, valueKeyPath, childKey))
      all.take(std::move(path));
  return all.finish();
}

void detail::registerNSObjectQZIndexPath() {
  extend<NSObject>("QZFoundation")
      .method<&valuePathForIndexPath_valueKeyPath_childKey>(
          "valuePathForIndexPath:valueKeyPath:childKey:")
      .method<&valuePathsForIndexPaths_valueKeyPath_childKey>(
          "valuePathsForIndexPaths:valueKeyPath:childKey:")
      .method<&indexPathForValues_valueKeyPath_childKey>(
          "indexPathForValues:valueKeyPath:childKey:")
      .method<&indexPathsForValuePaths_valueKeyPath_childKey>(
          "indexPathsForValuePaths:valueKeyPath:childKey:");
}

}  // namespace qz
