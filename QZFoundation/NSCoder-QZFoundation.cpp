#include "QZFoundation/NSCoder-QZFoundation.h"

#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/Send.h"

namespace qz {
namespace {

template <class Use>
void forEachKey(NSObject* keys, Use use) {
  const auto enumerator = send<Ref<NSEnumerator>>(keys, "objectEnumerator"_sel);
  if (!enumerator) return;
  while (const Ref<NSObject> key = enumerator->nextObject()) use(as<NSString>(key.get()));
}

}  // namespace

void encodeValuesOfObject_forKeys(NSCoder* self, NSObject* object, NSObject* keys) {
  forEachKey(keys, [&](NSString* key) {
    self->encodeObject_forKey(object != nullptr ? object->valueForKey(key) : nullptr, key);
  });
}

void decodeValuesToObject_forKeys(NSCoder* self, NSObject* object, NSObject* keys) {
  forEachKey(keys, [&](NSString* key) {
    const Ref<NSObject> value = self->decodeObjectForKey(key);
    if (object != nullptr) object->setValue_forKey(value, key);
  });
}

void detail::registerNSCoderQZFoundation() {
  extend<NSCoder>("QZFoundation")
      .method<&encodeValuesOfObject_forKeys>("encodeValuesOfObject:forKeys:")
      .method<&decodeValuesToObject_forKeys>("decodeValuesToObject:forKeys:");
}

}  // namespace qz
