#include "Platform/Runtime/detail/ChangeDictionary.h"

#include <array>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/detail/ArrayBuilder.h"
#include "Platform/Values/NSNumber.h"

namespace qz::detail {
namespace {

NSString* const keys[] = {NSKeyValueChangeKindKey, NSKeyValueChangeNewKey, NSKeyValueChangeOldKey,
                          NSKeyValueChangeIndexesKey, NSKeyValueChangeNotificationIsPriorKey};

NSString* knownKey(NSObject* key) {
  for (NSString* each : keys)
    if (each == key) return each;
  if (auto* text = as<NSString>(key))
    for (NSString* each : keys)
      if (each->isEqualToString(text)) return each;
  return nullptr;
}

}  // namespace

Ref<NSObject> ChangeDictionary::objectForKey(NSObject* key) const {
  NSString* known = knownKey(key);
  if (known == NSKeyValueChangeNewKey) return entries_.newValue;
  if (known == NSKeyValueChangeOldKey) return entries_.oldValue;
  if (known == NSKeyValueChangeKindKey)
    return NSNumber::numberWithUnsignedInt(static_cast<std::uint32_t>(entries_.kind));
  if (known == NSKeyValueChangeIndexesKey) return entries_.indexes;
  if (known == NSKeyValueChangeNotificationIsPriorKey && entries_.isPrior)
    return NSNumber::numberWithBool(true);
  return nullptr;
}

std::uint32_t ChangeDictionary::count() const {
  return 1U + static_cast<bool>(entries_.newValue) + static_cast<bool>(entries_.oldValue) +
         static_cast<bool>(entries_.indexes) + entries_.isPrior;
}

Ref<NSEnumerator> ChangeDictionary::keyEnumerator() const {
  ArrayBuilder present(std::size(keys));
  for (NSString* each : keys)
    if (objectForKey(each)) present.add(each);
  return present.finish()->objectEnumerator();
}

}  // namespace qz::detail
