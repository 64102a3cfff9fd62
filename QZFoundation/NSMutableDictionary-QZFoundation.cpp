#include "QZFoundation/NSMutableDictionary-QZFoundation.h"

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSNumber.h"

namespace qz {

void mergeWithDictionary_usingSelector(NSMutableDictionary* self, NSDictionary* other,
                                       Selector selector) {
  if (other == nullptr) return;
  // Merged with itself, a Dictionary may lose keys while they are walked over.
  const Ref<NSEnumerator> keys =
      other == self ? other->allKeys()->objectEnumerator() : other->keyEnumerator();
  for (NSObject* key : keys) {
    const Ref<NSObject> theirs = other->objectForKey(key);
    Ref<NSObject> mine = self->objectForKey(key);
    if (mine) mine = mine->performSelector_withObject(selector, theirs);
    if (mine)
      self->setObject_forKey(mine, key);
    else
      self->removeObjectForKey(key);
  }
}

void removeObject(NSMutableDictionary* self, NSObject* object) {
  self->removeObjectsForKeys(self->allKeysForObject(object));
}

void setInteger_forKey(NSMutableDictionary* self, std::int32_t integer, NSObject* key) {
  self->setObject_forKey(NSNumber::numberWithInt(integer), key);
}

void detail::registerNSMutableDictionaryQZFoundation() {
  extend<NSMutableDictionary>("QZFoundation")
      .method<&mergeWithDictionary_usingSelector>("mergeWithDictionary:usingSelector:")
      .method<&removeObject>("removeObject:")
      .method<&setInteger_forKey>("setInteger:forKey:");
}

}  // namespace qz
