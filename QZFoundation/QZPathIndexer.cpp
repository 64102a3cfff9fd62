#include "QZFoundation/QZPathIndexer.h"

#include <algorithm>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Collections/NSMutableSet.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Values/detail/StringStorage.h"
#include "QZFoundation/NSString-QZFoundation.h"

namespace qz {
namespace {

/// A path as the index has it.
struct Parts {
  Parts(NSString* path, const char* operation) {
    detail::requireString(path, operation);
    name = path->lastPathComponent();
    folder = path->stringByDeletingLastPathComponent();
    folderName = folder->lastPathComponent();
    components = folder->pathComponents();
  }

  Ref<NSString> name;
  Ref<NSString> folder;
  Ref<NSString> folderName;
  Ref<NSArray> components;
};

/// The Object under `key`, made if there is none.
template <class T>
Ref<T> entry(NSMutableDictionary* dictionary, NSString* key) {
  Ref<T> found = as<T>(dictionary->objectForKey(key));
  if (!found) {
    found = make<T>();
    dictionary->setObject_forKey(found, key);
  }
  return found;
}

/// The last `count` of the components, or all if there are fewer.
Ref<NSString> tail(NSArray* components, std::uint32_t count) {
  const std::uint32_t all = components->count();
  const std::uint32_t taken = std::min(count, all);
  return components->subarrayWithRange({all - taken, taken})->componentsJoinedByString("/"_ns);
}

bool tailsDiffer(NSSet* folders, std::uint32_t count) {
  auto tails = make<NSMutableSet>();
  for (NSObject* each : folders->allObjects()) tails->addObject(tail(as<NSArray>(each), count));
  return tails->count() == folders->count();
}

}  // namespace

QZPathIndexer::QZPathIndexer() : pathsByFilename_(make<NSMutableDictionary>()) {}
QZPathIndexer::~QZPathIndexer() = default;

Ref<QZPathIndexer> QZPathIndexer::init() { return make<QZPathIndexer>(); }

void QZPathIndexer::addPath(NSString* path) {
  const Parts parts(path, "addPath:");
  const auto byFolder = entry<NSMutableDictionary>(pathsByFilename_, parts.name);
  entry<NSMutableSet>(byFolder, parts.folderName)->addObject(parts.components);
}

void QZPathIndexer::removePath(NSString* path) {
  const Parts parts(path, "removePath:");
  const auto byFolder = as<NSMutableDictionary>(pathsByFilename_->objectForKey(parts.name));
  if (!byFolder) return;
  if (const auto folders = as<NSMutableSet>(byFolder->objectForKey(parts.folderName))) {
    folders->removeObject(parts.components);
    if (folders->count() == 0) byFolder->removeObjectForKey(parts.folderName);
  }
  if (byFolder->count() == 0) pathsByFilename_->removeObjectForKey(parts.name);
}

bool QZPathIndexer::containsPath(NSString* path) {
  const Parts parts(path, "containsPath:");
  const auto byFolder = as<NSMutableDictionary>(pathsByFilename_->objectForKey(parts.name));
  if (!byFolder) return false;
  const auto folders = as<NSMutableSet>(byFolder->objectForKey(parts.folderName));
  // A String among Arrays is never found: deliberate, see the header.
  const bool contains = folders && folders->containsObject(parts.folder);
  if (byFolder->count() == 0) pathsByFilename_->removeObjectForKey(parts.name);
  return contains;
}

Ref<NSString> QZPathIndexer::prefixForPath(NSString* path) {
  const Parts parts(path, "prefixForPath:");
  const auto byFolder = as<NSMutableDictionary>(pathsByFilename_->objectForKey(parts.name));
  const auto folders =
      byFolder ? as<NSMutableSet>(byFolder->objectForKey(parts.folderName)) : Ref<NSMutableSet>();
  if (!folders || folders->count() == 0) return parts.folderName;
  std::uint32_t count = 1;
  while (!tailsDiffer(folders, count)) ++count;
  if (count == 1) return parts.folderName;
  if (count >= parts.components->count()) return parts.folder;
  return NSString::stringWithFormat("%@/%@"_ns, horizontalEllipsisString(),
                                    tail(parts.components, count));
}

Ref<NSString> QZPathIndexer::description() const {
  return NSString::stringWithFormat("%@: [pathsByFilename = %@]"_ns, Derives::description(),
                                    pathsByFilename_);
}

Ref<NSMutableDictionary> QZPathIndexer::pathsByFilename() const { return pathsByFilename_; }

void QZPathIndexer::describe(ClassDescription<QZPathIndexer>& is) {
  is.named("QZPathIndexer")
      .initializer<&QZPathIndexer::init>("init")
      .method<&QZPathIndexer::addPath>("addPath:")
      .method<&QZPathIndexer::removePath>("removePath:")
      .method<&QZPathIndexer::containsPath>("containsPath:")
      .method<&QZPathIndexer::prefixForPath>("prefixForPath:")
      .property<&QZPathIndexer::pathsByFilename>("pathsByFilename");
}

}  // namespace qz
