#include "Platform/Values/NSString.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSMutableString.h"
#include "Platform/Values/detail/FormatEngine.h"
#include "Platform/Values/detail/StringDescriptions.h"
#include "Platform/Values/detail/StringStorage.h"
#include "Platform/Values/detail/UnitBuffer.h"
#include "Platform/Values/detail/Utf.h"

namespace qz {

using detail::requireString;

void NSString::describe(ClassDescription<NSString>& is) {
  is.named("NSString")
      .classMethod<&NSString::string>("string")
      .classMethod<&NSString::stringWithString>("stringWithString:")
      .classMethod<&NSString::stringWithUTF8String>("stringWithUTF8String:")
      .classMethod<&NSString::stringWithCharacters_length>("stringWithCharacters:length:")
      .initializer<&NSString::initWithCharactersNoCopy_length>("initWithCharactersNoCopy:length:")
      .classMethod<&NSString::stringWithFormat_arguments>("stringWithFormat:arguments:")
      .initializer<&NSString::initWithFormat_arguments>("initWithFormat:arguments:")
      .method<&NSString::length>("length")
      .method<&NSString::characterAtIndex>("characterAtIndex:")
      .method<&NSString::getCharacters_range>("getCharacters:range:")
      .method<&NSString::UTF8String>("UTF8String")
      .method<&NSString::isEqualToString>("isEqualToString:")
      .method<&NSString::compare>("compare:")
      .method<&NSString::caseInsensitiveCompare>("caseInsensitiveCompare:")
      .method<&NSString::hasPrefix>("hasPrefix:")
      .method<&NSString::hasSuffix>("hasSuffix:")
      .method<&NSString::substringFromIndex>("substringFromIndex:")
      .method<&NSString::substringToIndex>("substringToIndex:")
      .method<&NSString::substringWithRange>("substringWithRange:")
      .method<&NSString::stringByAppendingString>("stringByAppendingString:")
      .method<&NSString::stringByAppendingFormat_arguments>("stringByAppendingFormat:arguments:")
      .method<&NSString::uppercaseString>("uppercaseString")
      .method<&NSString::lowercaseString>("lowercaseString")
      .method<&NSString::capitalizedString>("capitalizedString")
      .method<&NSString::intValue>("intValue")
      .method<&NSString::integerValue>("integerValue")
      .method<&NSString::longLongValue>("longLongValue")
      .method<&NSString::unsignedLongLongValue>("unsignedLongLongValue")
      .method<&NSString::doubleValue>("doubleValue")
      .method<&NSString::floatValue>("floatValue")
      .method<&detail::readTruth>("boolValue");
  detail::describeSearching(is);
  detail::describeParts(is);
  detail::describeLines(is);
  detail::describeEncodings(is);
  detail::describePaths(is);
  detail::describePercentEscapes(is);
}

// Making ------------------------------------------------------------------------------------------

Ref<NSString> NSString::string() { return ""_ns; }

Ref<NSString> NSString::stringWithUTF8String(std::string_view bytes) {
  if (detail::asciiPrefix(bytes) == bytes.size())
    return detail::fillString(bytes.size(),
                              [bytes](char16_t* out) { detail::decodeUtf8(bytes, out); });
  detail::UnitBuffer units;
  units.appendUtf8(bytes);
  return units.toString();
}

Ref<NSString> NSString::stringWithValidUTF8String(std::string_view bytes) {
  return detail::isValidUtf8(bytes) ? stringWithUTF8String(bytes) : nullptr;
}

Ref<NSString> NSString::stringWithCharacters(std::u16string_view units) {
  return detail::makeString(units);
}

Ref<NSString> NSString::stringWithCharacters_length(const char16_t* units, std::uint32_t length) {
  return detail::makeString({units, length});
}

Ref<NSString> NSString::stringWithString(NSString* other) {
  return Ref<NSString>(
      static_cast<NSString*>(requireString(other, "stringWithString:").copy().leak()), adopt);
}

Ref<NSString> NSString::initWithCharactersNoCopy_length(char16_t* units, std::uint32_t length) {
  return detail::adoptUnits(units, length);
}

Ref<NSString> NSString::stringWithFormat_arguments(NSString* format, FormatArguments arguments) {
  const NSString& required = requireString(format, "stringWithFormat:");
  detail::UnitBuffer units;
  detail::formatUnits(units, required, arguments);
  return units.toString();
}

// Reading -----------------------------------------------------------------------------------------

char16_t NSString::characterAtIndex(std::uint32_t index) const {
  if (index >= length_) detail::raiseIndex("characterAtIndex:", index, length_);
  return units_[index];
}

void NSString::getCharacters_range(char16_t* buffer, NSRange range) const {
  detail::requireRange("getCharacters:range:", range, length_);
  std::copy_n(units_ + range.location, range.length, buffer);
}

std::string NSString::UTF8String() const {
  // A short text is written once, to where there is room for any, rather than measured first.
  std::array<char, 384> small;
  if (length_ <= small.size() / 3)
    return std::string(small.data(), detail::encodeUtf8(view(), small.data()));
  // A long one goes by pieces through memory that stays in the cache, and is measured only when it
  // turns out not to be ASCII.
  constexpr std::size_t step = 4096;
  std::array<char, 3 * step> piece;
  std::string bytes;
  bytes.reserve(length_);
  bool isMeasured = false;
  for (std::u16string_view left = view(); !left.empty();) {
    std::size_t count = std::min(left.size(), step);
    if (count < left.size() && detail::isHighSurrogate(left[count - 1])) --count;
    const auto size = static_cast<std::size_t>(
        detail::encodeUtf8(left.substr(0, count), piece.data()) - piece.data());
    if (size > count && !isMeasured) {
      bytes.reserve(bytes.size() + detail::utf8Length(left));
      isMeasured = true;
    }
    bytes.append(piece.data(), size);
    left.remove_prefix(count);
  }
  return bytes;
}

// Parts and combinations --------------------------------------------------------------------------

Ref<NSString> NSString::substringFromIndex(std::uint32_t index) const {
  if (index > length_) detail::raiseIndex("substringFromIndex:", index, length_);
  return substringWithRange({index, length_ - index});
}

Ref<NSString> NSString::substringToIndex(std::uint32_t index) const {
  if (index > length_) detail::raiseIndex("substringToIndex:", index, length_);
  return substringWithRange({0, index});
}

Ref<NSString> NSString::substringWithRange(NSRange range) const {
  detail::requireRange("substringWithRange:", range, length_);
  if (range.length == length_) return stringWithString(const_cast<NSString*>(this));
  return detail::makeString({units_ + range.location, range.length});
}

Ref<NSString> NSString::stringByAppendingString(NSString* other) const {
  const std::u16string_view tail = requireString(other, "stringByAppendingString:");
  const std::u16string_view head = view();
  return detail::fillString(std::uint64_t{head.size()} + tail.size(), [=](char16_t* out) {
    std::copy(tail.begin(), tail.end(), std::copy(head.begin(), head.end(), out));
  });
}

Ref<NSString> NSString::stringByAppendingFormat_arguments(NSString* format,
                                                          FormatArguments arguments) const {
  const NSString& required = requireString(format, "stringByAppendingFormat:");
  detail::UnitBuffer units;
  units.append(view());
  detail::formatUnits(units, required, arguments);
  return units.toString();
}

// Object ------------------------------------------------------------------------------------------

Ref<NSObject> NSString::copy() const { return const_cast<NSString*>(this); }

Ref<NSObject> NSString::mutableCopy() const {
  return NSMutableString::stringWithCharacters(view());
}

Ref<NSString> NSString::description() const { return const_cast<NSString*>(this); }

namespace detail {

Ref<NSString> boxText(const std::string& text) { return NSString::stringWithUTF8String(text); }

std::string unboxText(NSString* text) { return text != nullptr ? text->UTF8String() : ""; }

}  // namespace detail
}  // namespace qz
