#include "Platform/Values/NSMutableString.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/detail/FormatEngine.h"
#include "Platform/Values/detail/StringStorage.h"
#include "Platform/Values/detail/UnitBuffer.h"
#include "Platform/Values/detail/Utf.h"

namespace qz {

using detail::requireString;

void NSMutableString::describe(ClassDescription<NSMutableString>& is) {
  is.named("NSMutableString")
      .classMethod<&NSMutableString::string>("string")
      .classMethod<&NSMutableString::stringWithString>("stringWithString:")
      .classMethod<&NSMutableString::stringWithUTF8String>("stringWithUTF8String:")
      .classMethod<&NSMutableString::stringWithCharacters_length>("stringWithCharacters:length:")
      .classMethod<&NSMutableString::stringWithFormat_arguments>("stringWithFormat:arguments:")
      .classMethod<&NSMutableString::stringWithCapacity>("stringWithCapacity:")
      .method<&NSMutableString::appendString>("appendString:")
      .method<&NSMutableString::appendFormat_arguments>("appendFormat:arguments:")
      .method<&NSMutableString::insertString_atIndex>("insertString:atIndex:")
      .method<&NSMutableString::deleteCharactersInRange>("deleteCharactersInRange:")
      .method<&NSMutableString::replaceCharactersInRange_withString>(
          "replaceCharactersInRange:withString:")
      .method<&NSMutableString::replaceOccurrencesOfString_withString_options_range>(
          "replaceOccurrencesOfString:withString:options:range:")
      .method<&NSMutableString::setString>("setString:");
}

NSMutableString::~NSMutableString() {
  if (capacity_ != 0) std::free(buffer());
}

// Making ------------------------------------------------------------------------------------------

Ref<NSMutableString> NSMutableString::string() { return make<NSMutableString>(); }

Ref<NSMutableString> NSMutableString::stringWithUTF8String(std::string_view bytes) {
  detail::UnitBuffer units;
  units.appendUtf8(bytes);
  return stringWithCharacters(units.view());
}

Ref<NSMutableString> NSMutableString::stringWithCharacters(std::u16string_view units) {
  auto string = make<NSMutableString>();
  string->appendCharacters(units);
  return string;
}

Ref<NSMutableString> NSMutableString::stringWithCharacters_length(const char16_t* units,
                                                                  std::uint32_t length) {
  return stringWithCharacters({units, length});
}

Ref<NSMutableString> NSMutableString::stringWithString(NSString* other) {
  return stringWithCharacters(requireString(other, "stringWithString:"));
}

Ref<NSMutableString> NSMutableString::stringWithFormat_arguments(NSString* format,
                                                                 FormatArguments arguments) {
  auto string = make<NSMutableString>();
  string->appendFormat_arguments(format, arguments);
  return string;
}

Ref<NSMutableString> NSMutableString::stringWithCapacity(std::uint32_t capacity) {
  auto string = make<NSMutableString>();
  string->reserve(capacity);
  return string;
}

// Changing ----------------------------------------------------------------------------------------

void NSMutableString::appendString(NSString* string) {
  appendCharacters(requireString(string, "appendString:"));
}

void NSMutableString::appendCharacters(std::u16string_view units) { replace({length_, 0}, units); }

void NSMutableString::appendFormat_arguments(NSString* format, FormatArguments arguments) {
  const NSString& required = requireString(format, "appendFormat:");
  detail::UnitBuffer units;
  detail::formatUnits(units, required, arguments);
  appendCharacters(units.view());
}

void NSMutableString::insertString_atIndex(NSString* string, std::uint32_t index) {
  const std::u16string_view units = requireString(string, "insertString:atIndex:");
  if (index > length_) detail::raiseIndex("insertString:atIndex:", index, length_);
  replace({index, 0}, units);
}

void NSMutableString::deleteCharactersInRange(NSRange range) {
  detail::requireRange("deleteCharactersInRange:", range, length_);
  replace(range, {});
}

void NSMutableString::replaceCharactersInRange_withString(NSRange range, NSString* string) {
  const std::u16string_view units = requireString(string, "replaceCharactersInRange:withString:");
  detail::requireRange("replaceCharactersInRange:withString:", range, length_);
  replace(range, units);
}

void NSMutableString::setString(NSString* string) {
  replace({0, length_}, requireString(string, "setString:"));
}

void NSMutableString::reserve(std::uint64_t length) {
  const std::uint32_t wanted = detail::checkedLength(length);
  if (wanted <= capacity_) return;
  constexpr std::uint32_t least = 16;
  const std::uint32_t doubled = capacity_ > maxLength / 2 ? maxLength : 2 * capacity_;
  const std::uint32_t capacity = std::max({wanted, doubled, least});
  units_ = detail::reallocateUnits(capacity_ != 0 ? buffer() : nullptr, capacity);
  capacity_ = capacity;
}

void NSMutableString::replace(NSRange range, std::u16string_view units) {
  const std::less<const char16_t*> before;
  const bool isOwn =
      !units.empty() && !before(units.data(), units_) && before(units.data(), units_ + length_);
  // Making room would move the text under its own copy.
  if (isOwn)
    replaceForeign(range, std::u16string(units));
  else
    replaceForeign(range, units);
}

void NSMutableString::replaceForeign(NSRange range, std::u16string_view units) {
  if (range.length == 0 && units.empty()) return;
  const std::uint32_t kept = length_ - range.length;
  const std::uint32_t length = detail::checkedLength(kept, units.size());
  reserve(length);
  char16_t* const gap = buffer() + range.location;
  const char16_t* const tail = gap + range.length;
  if (range.length != units.size())
    std::char_traits<char16_t>::move(gap + units.size(), tail, kept - range.location);
  std::copy(units.begin(), units.end(), gap);
  length_ = length;
}

// Object ------------------------------------------------------------------------------------------

std::size_t NSMutableString::hash() const { return detail::hashUnits(units_, length_); }

Ref<NSObject> NSMutableString::copy() const { return detail::makeString(view()); }

Ref<NSString> NSMutableString::description() const { return detail::makeString(view()); }

}  // namespace qz
