#include "Platform/System/detail/PropertyListBuilder.h"

#include <limits>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Collections/NSMutableSet.h"
#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

void ObjectStack::dropTo(std::size_t base) noexcept {
  for (std::size_t i = base; i < objects_.size(); ++i) release(objects_[i]);
  objects_.resize(base);
}

PropertyListBuilder::PropertyListBuilder(std::uint32_t mutability) noexcept
    : mutableContainers_(mutability == NSPropertyListMutableContainers ||
                         mutability == NSPropertyListMutableContainersAndLeaves),
      mutableLeaves_(mutability == NSPropertyListMutableContainersAndLeaves) {}

Ref<NSObject> PropertyListBuilder::string(Ref<NSString> text) const {
  if (mutableLeaves_) return text->mutableCopy();
  return text;
}

Ref<NSObject> PropertyListBuilder::data(Ref<NSData> bytes) const {
  if (mutableLeaves_) return bytes->mutableCopy();
  return bytes;
}

Ref<NSNumber> PropertyListBuilder::integer(std::int64_t value) {
  using Int = std::numeric_limits<std::int32_t>;
  if (value >= Int::min() && value <= Int::max())
    return NSNumber::numberWithInt(static_cast<std::int32_t>(value));
  return NSNumber::numberWithLongLong(value);
}

Ref<NSNumber> PropertyListBuilder::integer(std::uint64_t value) {
  if (value <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
    return integer(static_cast<std::int64_t>(value));
  return NSNumber::numberWithUnsignedLongLong(value);
}

Ref<NSObject> PropertyListBuilder::array(ObjectStack& elements, std::size_t base) const {
  const auto objects = elements.from(base);
  if (mutableContainers_) {
    auto array = NSMutableArray::fromSpan(objects);
    elements.dropTo(base);
    return array;
  }
  ArrayBuilder builder(objects.size());
  for (NSObject* each : objects) builder.take(Ref<NSObject>(each, adopt));
  elements.disownTo(base);
  return builder.finish();
}

Ref<NSObject> PropertyListBuilder::dictionary(ObjectStack& keys, std::size_t keyBase,
                                              ObjectStack& values, std::size_t valueBase) const {
  const auto allKeys = keys.from(keyBase);
  const auto allValues = values.from(valueBase);
  const auto count = static_cast<std::uint32_t>(allKeys.size());
  Ref<NSDictionary> dictionary;
  if (mutableContainers_)
    dictionary = NSMutableDictionary::dictionaryWithObjects_forKeys_count(allValues.data(),
                                                                          allKeys.data(), count);
  else
    dictionary =
        NSDictionary::dictionaryWithObjects_forKeys_count(allValues.data(), allKeys.data(), count);
  if (dictionary->count() != count) return nullptr;
  keys.dropTo(keyBase);
  values.dropTo(valueBase);
  return dictionary;
}

std::size_t PropertyListBuilder::indexOfRepeatedKey(std::span<NSObject* const> keys) {
  auto seen = make<NSMutableSet>();
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (seen->containsObject(keys[i])) return i;
    seen->addObject(keys[i]);
  }
  return keys.size();
}

}  // namespace qz::detail
