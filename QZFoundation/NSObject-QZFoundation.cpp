#include "QZFoundation/NSObject-QZFoundation.h"

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Concurrency/MainThread.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Values/NSNull.h"
#include "Platform/Values/NSString.h"

namespace qz {
namespace {

NSComparisonResult compareValues(NSObject* first, NSObject* second, NSString* keyPath,
                                 Selector selector) {
  if (first == nullptr) return NSOrderedSame;
  Ref<NSObject> mine = first->valueForKeyPath(keyPath);
  Ref<NSObject> theirs = second == nullptr ? nullptr : second->valueForKeyPath(keyPath);
  return send<NSComparisonResult>(mine, selector, theirs);
}

Ref<NSArray> arrayOfOne(NSObject* self) { return NSArray::arrayWithObject(self); }
Ref<NSArray> arrayItself(NSArray* self) { return Ref<NSArray>(self); }
Ref<NSObject> plainCopy(NSObject* self) { return self->copy(); }

}  // namespace

NSComparisonResult compare_usingKeyPath(NSObject* self, NSObject* other, NSString* keyPath) {
  return compareValues(self, other, keyPath, "compare:"_sel);
}

NSComparisonResult caseInsensitiveCompare_usingKeyPath(NSObject* self, NSObject* other,
                                                       NSString* keyPath) {
  return compareValues(self, other, keyPath, "caseInsensitiveCompare:"_sel);
}

Ref<NSArray> objectAsArray(NSObject* self) { return send<Ref<NSArray>>(self, "objectAsArray"_sel); }

Ref<NSObject> deepCopy(NSObject* self) { return send<Ref<NSObject>>(self, "deepCopy"_sel); }

Ref<NSObject> copyMutableContainers(NSObject* self) {
  return send<Ref<NSObject>>(self, "copyMutableContainers"_sel);
}

bool performBoolSelector_withObject(NSObject* self, Selector selector, NSObject* object) {
  return self != nullptr && self->performSelector_withObject(selector, object).boolValue();
}

std::int32_t performIntSelector_withObject(NSObject* self, Selector selector, NSObject* object) {
  if (self == nullptr) return 0;
  return static_cast<std::int32_t>(
      self->performSelector_withObject(selector, object).integerValue());
}

Ref<NSMutableArray> performSelector_withObjectsInArray(NSObject* self, Selector selector,
                                                       NSArray* array) {
  return performSelector_withObjectsInArray_returnValues(self, selector, array, true);
}

Ref<NSMutableArray> performSelector_withObjectsInArray_returnValues(NSObject* self,
                                                                    Selector selector,
                                                                    NSArray* array,
                                                                    bool returnValues) {
  if (self == nullptr) return nullptr;
  Ref<NSMutableArray> values;
  if (returnValues)
    values = NSMutableArray::arrayWithCapacity(array == nullptr ? 0 : array->count());
  if (array == nullptr) return values;
  for (NSObject* element : *array) {
    Reply reply = self->performSelector_withObject(selector, element);
    if (!values) continue;
    Ref<NSObject> value = std::move(reply).object();
    values->addObject(value ? value : NSNull::null());
  }
  return values;
}

Ref<NSObject> performSelectorOnMainThreadReturningValue_withObject_withObject(NSObject* self,
                                                                              Selector selector,
                                                                              NSObject* first,
                                                                              NSObject* second) {
  if (self == nullptr) return nullptr;
  return callOnMainThread([&] {
    return send<Ref<NSObject>>(self, "performSelector:withObject:withObject:"_sel, selector, first,
                               second);
  });
}

Ref<NSObject> performSelectorOnMainThreadReturningValue_withObject(NSObject* self,
                                                                   Selector selector,
                                                                   NSObject* object) {
  return performSelectorOnMainThreadReturningValue_withObject_withObject(self, selector, object,
                                                                         nullptr);
}

void setValueOnMainThread_forKey_waitUntilDone(NSObject* self, NSObject* value, NSString* key,
                                               bool wait) {
  if (self == nullptr) return;
  const Ref<NSObject> kept = value == nullptr ? NSNull::null() : Ref<NSObject>(value);
  self->performSelectorOnMainThread_withObject_waitUntilDone(
      "setValuesForKeysWithDictionary:"_sel, NSDictionary::dictionaryWithObject_forKey(kept, key),
      wait);
}

void setValueOnMainThread_forKey(NSObject* self, NSObject* value, NSString* key) {
  setValueOnMainThread_forKey_waitUntilDone(self, value, key, true);
}

NSComparisonResult QZCompareByKeyPath(NSObject* first, NSObject* second, void* keyPath) {
  return compare_usingKeyPath(first, second, static_cast<NSString*>(keyPath));
}

void detail::registerNSObjectQZFoundation() {
  extend<NSObject>("QZFoundation")
      .method<&compare_usingKeyPath>("compare:usingKeyPath:")
      .method<&caseInsensitiveCompare_usingKeyPath>("caseInsensitiveCompare:usingKeyPath:")
      .method<&arrayOfOne>("objectAsArray")
      .method<&plainCopy>("deepCopy")
      .method<&plainCopy>("copyMutableContainers")
      .method<&performBoolSelector_withObject>("performBoolSelector:withObject:")
      .method<&performIntSelector_withObject>("performIntSelector:withObject:")
      .method<&performSelectorOnMainThreadReturningValue_withObject_withObject>(
          "performSelectorOnMainThreadReturningValue:withObject:withObject:")
      .method<&performSelectorOnMainThreadReturningValue_withObject>(
          "performSelectorOnMainThreadReturningValue:withObject:")
      .method<&setValueOnMainThread_forKey_waitUntilDone>(
          "setValueOnMainThread:forKey:waitUntilDone:")
      .method<&setValueOnMainThread_forKey>("setValueOnMainThread:forKey:")
      .method<&performSelector_withObjectsInArray>("performSelector:withObjectsInArray:")
      .method<&performSelector_withObjectsInArray_returnValues>(
          "performSelector:withObjectsInArray:returnValues:");
  extend<NSArray>("QZFoundation").method<&arrayItself>("objectAsArray");
}

}  // namespace qz
