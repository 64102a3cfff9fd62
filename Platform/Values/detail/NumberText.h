/// @file
/// Private: numbers as they are written, without blanks and sign.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

#pragma GCC visibility push(default)

namespace qz::detail {

struct ReadDigits {
  std::uint64_t value = 0;  // the greatest when they say more
  std::size_t length = 0;
};

/// The digits that the text begins with, to a base up to 16.
ReadDigits readDigits(std::u16string_view text, int base) noexcept;

/// The nearest value that the type has.
template <class T>
constexpr T signedWithin(bool negative, std::uint64_t magnitude) noexcept {
  constexpr auto greatest = static_cast<std::uint64_t>(std::numeric_limits<T>::max());
  if (!negative) return static_cast<T>(magnitude < greatest ? magnitude : greatest);
  if (magnitude > greatest) return std::numeric_limits<T>::min();
  return static_cast<T>(-static_cast<T>(magnitude));
}

template <class T>
struct ReadFloating {
  T value = 0;
  std::size_t length = 0;  // 0 when the text does not begin with a number
};

/// The decimal number, with "." and an exponent, that the text begins with. Correctly rounded;
/// beyond the type's range an infinity or zero. Of float and double.
template <class T>
ReadFloating<T> readFloating(std::u16string_view text);

}  // namespace qz::detail

#pragma GCC visibility pop
