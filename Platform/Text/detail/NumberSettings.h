/// @file
/// Private: all that can be set of a number formatter.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Text/NSLocale.h"
#include "Platform/Values/NSNumber.h"

namespace qz::detail {

struct NumberSettings {
  using Text = std::optional<std::u16string>;
  using Count = std::optional<std::uint32_t>;

  std::int32_t style = 0;
  Text positiveFormat, zeroFormat, negativeFormat;
  Ref<NSLocale> locale;

  Count minimumIntegerDigits, maximumIntegerDigits, minimumFractionDigits, maximumFractionDigits;
  Count minimumSignificantDigits, maximumSignificantDigits;
  Count groupingSize, secondaryGroupingSize, formatWidth;
  std::optional<bool> usesSignificantDigits, usesGroupingSeparator, alwaysShowsDecimalSeparator;
  std::optional<std::int32_t> roundingMode, multiplier;
  std::optional<double> roundingIncrement;

  Text decimalSeparator, groupingSeparator, minusSign, percentSymbol, currencySymbol, currencyCode;
  Text positivePrefix, positiveSuffix, negativePrefix, negativeSuffix, paddingCharacter;
  Text notANumber, positiveInfinity, negativeInfinity, zeroSymbol, nilSymbol;

  bool isLenient = false;
  bool allowsFloats = true;
  Ref<NSNumber> minimum, maximum;
};

/// What was set, as a String; nil for what was not.
inline Ref<NSString> textOf(const NumberSettings::Text& text) {
  return text ? NSString::stringWithCharacters(*text) : nullptr;
}

/// The parts of "positive;zero;negative", with quotes heeded. A part that is missing is none.
struct PatternSections {
  std::u16string positive;
  NumberSettings::Text zero, negative;
};
/// None when there are more than three parts, or the first is empty.
std::optional<PatternSections> splitPattern(std::u16string_view format);

/// Whether ICU takes it as a pattern.
bool isNumberPattern(std::u16string_view pattern);

/// Whether a pattern has a place for a digit.
bool hasDigitPlace(std::u16string_view pattern) noexcept;

}  // namespace qz::detail
