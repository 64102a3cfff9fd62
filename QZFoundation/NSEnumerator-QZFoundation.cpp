#include "QZFoundation/NSEnumerator-QZFoundation.h"

#include "Platform/Runtime/Describe.h"
#include "Platform/Values/NSString.h"

namespace qz {

Ref<NSMutableDictionary> dictionaryIndexedByKeyPath(NSEnumerator* self, NSString* keyPath) {
  auto dictionary = make<NSMutableDictionary>();
  while (Ref<NSObject> object = self->nextObject()) {
    Ref<NSObject> key = object->valueForKeyPath(keyPath);
    dictionary->setObject_forKey(object, key);
  }
  return dictionary;
}

void detail::registerNSEnumeratorQZFoundation() {
  extend<NSEnumerator>("QZFoundation")
      .method<&dictionaryIndexedByKeyPath>("dictionaryIndexedByKeyPath:");
}

}  // namespace qz
