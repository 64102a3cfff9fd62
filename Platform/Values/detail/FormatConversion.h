/// @file
/// Private: one conversion of a format, such as `%2$-08.3f`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Values/NSStringFormat.h"

namespace qz::detail {

/// The greatest width and precision.
inline constexpr std::int64_t maxFieldSize = 1'000'000;

/// A width or a precision as it is written: absent, a number, or the value of an argument.
struct FormatField {
  enum class Source : std::uint8_t { None, Number, NextArgument, Position };
  Source source = Source::None;
  std::int64_t number = 0;  // the value, or the position counted from 1
};

struct FormatConversion {
  bool left = false;
  bool plus = false;
  bool space = false;
  bool alternate = false;
  bool zero = false;
  std::uint8_t cutBits = 64;  // 8 for hh, 16 for h
  FormatField width;
  FormatField precision;
  std::int64_t position = -1;  // counted from 1; -1: the next argument
  char16_t letter = 0;
};

/// Reads what follows a "%". Answers how many units it took, or 0 for what is no conversion.
std::size_t parseConversion(std::u16string_view text, FormatConversion& conversion);

/// What surrounds and fills a printed value.
struct FormatStyle {
  FormatConversion conversion;
  std::int64_t width = 0;
  std::int64_t precision = -1;  // -1: none
};

/// A printed number: sign and prefix go before the zeros of a zero-filled field.
struct FormattedNumber {
  std::string prefix;
  std::string digits;
  bool mayFillWithZeros = true;
};

/// The numbers of `%d %i %u %x %X %o`, as C prints them.
FormattedNumber formatInteger(const FormatStyle& style, bool negative, std::uint64_t magnitude);

/// The numbers of `%f %F %e %E %g %G %a %A`, as C prints them.
FormattedNumber formatFloating(const FormatStyle& style, double value);

}  // namespace qz::detail
