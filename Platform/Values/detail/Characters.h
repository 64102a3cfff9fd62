/// @file
/// Private: walking UTF-16 by characters. A surrogate without its partner is one of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/Values/detail/Utf.h"

namespace qz::detail {

struct Character {
  char32_t point;
  std::uint32_t width;  // in units: 1 or 2
};

constexpr Character joined(char16_t high, char16_t low) noexcept {
  return {((char32_t{high} - 0xD800) << 10) + (char32_t{low} - 0xDC00) + 0x10000, 2};
}

/// Whether `at` is between the halves of a pair.
constexpr bool splitsPair(std::u16string_view text, std::size_t at) noexcept {
  return at > 0 && at < text.size() && isLowSurrogate(text[at]) && isHighSurrogate(text[at - 1]);
}

/// The character that starts at `at`, which is below the length.
constexpr Character characterAt(std::u16string_view text, std::size_t at) noexcept {
  const char16_t unit = text[at];
  if (isHighSurrogate(unit) && at + 1 < text.size() && isLowSurrogate(text[at + 1]))
    return joined(unit, text[at + 1]);
  return {unit, 1};
}

/// Whether the character is a surrogate without its partner.
constexpr bool isLoneSurrogate(Character each) noexcept {
  return each.width == 1 && (isHighSurrogate(each.point) || isLowSurrogate(each.point));
}

constexpr bool hasLoneSurrogate(std::u16string_view text) noexcept {
  for (std::size_t at = 0; at < text.size();) {
    const Character each = characterAt(text, at);
    if (isLoneSurrogate(each)) return true;
    at += each.width;
  }
  return false;
}

/// The character that ends before `at`, which is above 0.
constexpr Character characterBefore(std::u16string_view text, std::size_t at) noexcept {
  if (at > 1 && splitsPair(text, at - 1)) return joined(text[at - 2], text[at - 1]);
  return {text[at - 1], 1};
}

}  // namespace qz::detail
