#include "Platform/Values/NSScanner.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/detail/Characters.h"
#include "Platform/Values/detail/NumberText.h"
#include "Platform/Values/detail/StringSearch.h"
#include "Platform/Values/detail/StringStorage.h"

namespace qz {

using detail::requireString;

void NSScanner::describe(ClassDescription<NSScanner>& is) {
  is.named("NSScanner")
      .classMethod<&NSScanner::scannerWithString>("scannerWithString:")
      .initializer<&NSScanner::initWithString>("initWithString:")
      .property<&NSScanner::string>("string")
      .property<&NSScanner::scanLocation, &NSScanner::setScanLocation>("scanLocation")
      .property<&NSScanner::charactersToBeSkipped, &NSScanner::setCharactersToBeSkipped>(
          "charactersToBeSkipped")
      .property<&NSScanner::caseSensitive, &NSScanner::setCaseSensitive>("caseSensitive")
      .method<&NSScanner::isAtEnd>("isAtEnd")
      .method<&NSScanner::scanInt>("scanInt:")
      .method<&NSScanner::scanInteger>("scanInteger:")
      .method<&NSScanner::scanLongLong>("scanLongLong:")
      .method<&NSScanner::scanUnsignedLongLong>("scanUnsignedLongLong:")
      .method<&NSScanner::scanHexInt>("scanHexInt:")
      .method<&NSScanner::scanHexLongLong>("scanHexLongLong:")
      .method<&NSScanner::scanDouble>("scanDouble:")
      .method<&NSScanner::scanFloat>("scanFloat:")
      .method<&NSScanner::scanString_intoString>("scanString:intoString:")
      .method<&NSScanner::scanUpToString_intoString>("scanUpToString:intoString:")
      .method<&NSScanner::scanCharactersFromSet_intoString>("scanCharactersFromSet:intoString:")
      .method<&NSScanner::scanUpToCharactersFromSet_intoString>(
          "scanUpToCharactersFromSet:intoString:");
}

NSScanner::NSScanner(NSString* string)
    : string_(NSString::stringWithString(&requireString(string, "scannerWithString:"))),
      skipped_(NSCharacterSet::whitespaceAndNewlineCharacterSet()) {}

Ref<NSScanner> NSScanner::scannerWithString(NSString* string) { return make<NSScanner>(string); }

Ref<NSScanner> NSScanner::initWithString(NSString* string) { return make<NSScanner>(string); }

void NSScanner::setScanLocation(std::uint32_t location) {
  if (location > string_->length())
    detail::raiseIndex("setScanLocation:", location, string_->length());
  location_ = location;
}

void NSScanner::setCharactersToBeSkipped(NSCharacterSet* set) {
  if (set == nullptr) {
    skipped_ = nullptr;
    return;
  }
  const Ref<NSObject> copy = set->copy();
  skipped_ = static_cast<NSCharacterSet*>(copy.get());
}

bool NSScanner::isAtEnd() const noexcept { return start() == string_->length(); }

// Where the run of members, or of other characters, that starts at `location` ends.
std::uint32_t NSScanner::runFrom(std::uint32_t location, const NSCharacterSet& set,
                                 bool ofMembers) const noexcept {
  const std::u16string_view text = string_->view();
  while (location < text.size()) {
    const detail::Character each = detail::characterAt(text, location);
    if (set.longCharacterIsMember(each.point) != ofMembers) break;
    location += each.width;
  }
  return location;
}

// Behind what is skipped.
std::uint32_t NSScanner::start() const noexcept {
  return skipped_ ? runFrom(location_, *skipped_, true) : location_;
}

// Hands out what was read, unless it is nothing, and moves behind it.
bool NSScanner::take(std::uint32_t from, std::uint32_t to, Ref<NSString>* found) {
  if (from == to) return false;
  if (found != nullptr) *found = string_->substringWithRange({from, to - from});
  location_ = to;
  return true;
}

// Numbers -----------------------------------------------------------------------------------------

// `read(text, negative)` answers a value and its length, 0 when there is none.
template <class T, class Read>
bool NSScanner::scanNumber(T* value, bool isSigned, Read read) {
  std::uint32_t at = start();
  std::u16string_view text = string_->view().substr(at);
  const bool negative = isSigned && text.starts_with(u'-');
  if (negative || (isSigned && text.starts_with(u'+'))) {
    text.remove_prefix(1);
    ++at;
  }
  const auto number = read(text, negative);
  if (number.length == 0) return false;
  if (value != nullptr) *value = number.value;
  location_ = at + static_cast<std::uint32_t>(number.length);
  return true;
}

namespace {

template <class T>
struct Scanned {
  T value;
  std::size_t length;
};

template <class T>
Scanned<T> readSigned(std::u16string_view text, bool negative) noexcept {
  const detail::ReadDigits digits = detail::readDigits(text, 10);
  return {detail::signedWithin<T>(negative, digits.value), digits.length};
}

template <class T>
Scanned<T> readReal(std::u16string_view text, bool negative) {
  const detail::ReadFloating<T> number = detail::readFloating<T>(text);
  return {negative ? -number.value : number.value, number.length};
}

template <class T>
Scanned<T> readHex(std::u16string_view text, bool) noexcept {
  const bool isMarked = text.size() > 2 && text[0] == u'0' && (text[1] | 0x20) == u'x';
  detail::ReadDigits digits =
      isMarked ? detail::readDigits(text.substr(2), 16) : detail::ReadDigits();
  if (digits.length != 0)
    digits.length += 2;
  else
    digits = detail::readDigits(text, 16);
  constexpr std::uint64_t greatest = std::numeric_limits<T>::max();
  return {static_cast<T>(std::min(digits.value, greatest)), digits.length};
}

}  // namespace

bool NSScanner::scanInt(std::int32_t* value) {
  return scanNumber(value, true, &readSigned<std::int32_t>);
}

bool NSScanner::scanInteger(std::int64_t* value) { return scanLongLong(value); }

bool NSScanner::scanLongLong(std::int64_t* value) {
  return scanNumber(value, true, &readSigned<std::int64_t>);
}

bool NSScanner::scanUnsignedLongLong(std::uint64_t* value) {
  return scanNumber(value, true, [](std::u16string_view text, bool negative) {
    const detail::ReadDigits digits = detail::readDigits(text, 10);
    return Scanned<std::uint64_t>{negative ? 0 : digits.value, digits.length};
  });
}

bool NSScanner::scanHexInt(std::uint32_t* value) {
  return scanNumber(value, false, &readHex<std::uint32_t>);
}

bool NSScanner::scanHexLongLong(std::uint64_t* value) {
  return scanNumber(value, false, &readHex<std::uint64_t>);
}

bool NSScanner::scanDouble(double* value) { return scanNumber(value, true, &readReal<double>); }

bool NSScanner::scanFloat(float* value) { return scanNumber(value, true, &readReal<float>); }

// Texts -------------------------------------------------------------------------------------------

bool NSScanner::scanString_intoString(NSString* text, Ref<NSString>* found) {
  const std::u16string_view wanted = requireString(text, "scanString:intoString:");
  const std::uint32_t from = start();
  const NSRange range =
      detail::rangeOfPart(string_->view(), wanted, searchOptions() | NSAnchoredSearch,
                          {from, string_->length() - from});
  if (range.location == NSNotFound) return false;
  return take(from, static_cast<std::uint32_t>(NSMaxRange(range)), found);
}

bool NSScanner::scanUpToString_intoString(NSString* text, Ref<NSString>* found) {
  const std::u16string_view wanted = requireString(text, "scanUpToString:intoString:");
  const std::uint32_t from = start();
  const NSRange range = detail::rangeOfPart(string_->view(), wanted, searchOptions(),
                                            {from, string_->length() - from});
  const std::uint32_t to = range.location == NSNotFound ? string_->length() : range.location;
  return take(from, to, found);
}

bool NSScanner::scanCharactersFromSet_intoString(NSCharacterSet* set, Ref<NSString>* found) {
  const NSCharacterSet& members = detail::requireSet(set, "scanCharactersFromSet:intoString:");
  const std::uint32_t from = start();
  return take(from, runFrom(from, members, true), found);
}

bool NSScanner::scanUpToCharactersFromSet_intoString(NSCharacterSet* set, Ref<NSString>* found) {
  const NSCharacterSet& members = detail::requireSet(set, "scanUpToCharactersFromSet:intoString:");
  const std::uint32_t from = start();
  return take(from, runFrom(from, members, false), found);
}

}  // namespace qz
