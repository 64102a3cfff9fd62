#include "QZFoundation/NSDictionary-QZFoundation.h"

#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/NestingGuard.h"
#include "QZFoundation/detail/ValueSearch.h"

namespace qz {

Ref<NSDictionary> inverseDictionary(NSDictionary* self) {
  const Ref<NSArray> keys = self->allKeys();
  auto values = self->objectsForKeys_notFoundMarker(keys, nullptr);
  return NSDictionary::initWithObjects_forKeys(keys, values);
}

bool containsObject(NSDictionary* self, NSObject* object) {
  for (NSObject* value : self->objectEnumerator())
    if (value->isEqual(object)) return true;
  return false;
}

Ref<NSArray> allObjects(NSDictionary* self) { return self->objectEnumerator()->allObjects(); }

bool boolForKey(NSDictionary* self, NSObject* key) {
  return send<bool>(self->objectForKey(key), "boolValue"_sel);
}

std::int32_t integerForKey(NSDictionary* self, NSObject* key) {
  return send<std::int32_t>(self->objectForKey(key), "intValue"_sel);
}

// Matching ----------------------------------------------------------------------------------------

// The walk and what it sends are kept; that the key it stops at is not answered is deliberate.
Ref<NSObject> keyOfObjectMatchingValue_forKeyPath_usingSelector(NSDictionary* self, NSObject* value,
                                                                NSString* keyPath,
                                                                Selector selector) {
  detail::ValueSearch search(value, keyPath, selector);
  for (NSObject* key : self->keyEnumerator())
    if (const Ref<NSObject> object = self->objectForKey(key); search.matches(object)) break;
  return nullptr;
}

Ref<NSObject> objectMatchingValue_forKeyPath_usingSelector(NSDictionary* self, NSObject* value,
                                                           NSString* keyPath, Selector selector) {
  const Ref<NSObject> key =
      keyOfObjectMatchingValue_forKeyPath_usingSelector(self, value, keyPath, selector);
  return self->objectForKey(key);
}

Ref<NSObject> objectMatchingValue_forKeyPath(NSDictionary* self, NSObject* value,
                                             NSString* keyPath) {
  return objectMatchingValue_forKeyPath_usingSelector(self, value, keyPath, "isEqual:"_sel);
}

Ref<NSObject> objectMatchingValue_forKey(NSDictionary* self, NSObject* value, NSString* key) {
  return objectMatchingValue_forKeyPath(self, value, key);
}

Ref<NSMutableDictionary> dictionaryByMatchingValue_forKeyPath(NSDictionary* self, NSObject* value,
                                                              NSString* key) {
  auto matching = make<NSMutableDictionary>();
  for (const auto& [each, object] : self)
    if (object->valueForKey(key) == value ||
        (value != nullptr && value->isEqual(object->valueForKey(key))))
      matching->setObject_forKey(object, each);
  return matching;
}

// Deriving ----------------------------------------------------------------------------------------

Ref<NSMutableDictionary> dictionaryWithObjectsForKeys(NSDictionary* self, NSEnumerator* keys) {
  auto found = make<NSMutableDictionary>();
  for (NSObject* key : keys)
    if (const Ref<NSObject> object = self->objectForKey(key)) found->setObject_forKey(object, key);
  return found;
}

Ref<NSMutableDictionary> dictionaryByAddingObjectsAndKeys(
    NSDictionary* self, std::span<NSObject* const> objectsAndKeys) {
  auto more = NSMutableDictionary::dictionaryWithDictionary(self);
  for (std::size_t i = 0; i + 1 < objectsAndKeys.size(); i += 2) {
    if (objectsAndKeys[i] == nullptr || objectsAndKeys[i + 1] == nullptr) break;
    more->setObject_forKey(objectsAndKeys[i], objectsAndKeys[i + 1]);
  }
  return more;
}

// Copies of whole trees ---------------------------------------------------------------------------

namespace {

Ref<NSMutableDictionary> addingList(NSDictionary* self, NSArray* objectsAndKeys) {
  std::vector<NSObject*> list;
  for (NSObject* each : objectsAndKeys) list.push_back(each);
  return dictionaryByAddingObjectsAndKeys(self, std::span<NSObject* const>(list));
}

Ref<NSDictionary> deepCopyOfDictionary(NSDictionary* self) {
  const detail::NestingGuard guard("-[NSDictionary deepCopy]");
  return self->dictionaryByMappingObjects(
      [](NSObject*, NSObject* object) { return deepCopy(object); });
}

Ref<NSMutableDictionary> mutableContainersOfDictionary(NSDictionary* self) {
  const detail::NestingGuard guard("-[NSDictionary copyMutableContainers]");
  return NSMutableDictionary::dictionaryByMapping(
      self, [](NSObject*, NSObject* object) { return copyMutableContainers(object); });
}

}  // namespace

void detail::registerNSDictionaryQZFoundation() {
  using Keys = NSString*;
  extend<NSDictionary>("QZFoundation")
      .method<&inverseDictionary>("inverseDictionary")
      .method<overload<bool(NSDictionary*, NSObject*)>(&containsObject)>("containsObject:")
      .method<overload<Ref<NSArray>(NSDictionary*)>(&allObjects)>("allObjects")
      .method<&boolForKey>("boolForKey:")
      .method<&integerForKey>("integerForKey:")
      .method<&keyOfObjectMatchingValue_forKeyPath_usingSelector>(
          "keyOfObjectMatchingValue:forKeyPath:usingSelector:")
      .method<overload<Ref<NSObject>(NSDictionary*, NSObject*, Keys, Selector)>(
          &objectMatchingValue_forKeyPath_usingSelector)>(
          "objectMatchingValue:forKeyPath:usingSelector:")
      .method<overload<Ref<NSObject>(NSDictionary*, NSObject*, Keys)>(
          &objectMatchingValue_forKeyPath)>("objectMatchingValue:forKeyPath:")
      .method<overload<Ref<NSObject>(NSDictionary*, NSObject*, Keys)>(&objectMatchingValue_forKey)>(
          "objectMatchingValue:forKey:")
      .method<&dictionaryByMatchingValue_forKeyPath>("dictionaryByMatchingValue:forKeyPath:")
      .method<&dictionaryWithObjectsForKeys>("dictionaryWithObjectsForKeys:")
      .method<&addingList>("dictionaryByAddingObjectsAndKeys:")
      .method<&deepCopyOfDictionary>("deepCopy")
      .method<&mutableContainersOfDictionary>("copyMutableContainers");
}

}  // namespace qz
