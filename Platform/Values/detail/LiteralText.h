/// @file
/// Private: turns a literal's UTF-8 into UTF-16 while compiling, and hashes UTF-16.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "Platform/Runtime/Selector.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// The hash of a String's units; never 0, which stands for "not computed yet".
constexpr std::uint32_t hashUnits(const char16_t* units, std::size_t count) noexcept {
  constexpr std::uint64_t k = 0x9FB21C651E98DF25u;
  std::uint64_t hash = count * k;
  auto four = [units](std::size_t at) constexpr {
    std::uint64_t word = 0;
    if (std::is_constant_evaluated() || std::endian::native != std::endian::little) {
      for (std::size_t i = 0; i < 4; ++i) word |= std::uint64_t{units[at + i]} << (16 * i);
    } else {
      std::memcpy(&word, units + at, sizeof word);
    }
    return word;
  };
  auto mix = [&hash](std::uint64_t word) constexpr {
    hash = (hash ^ word) * k;
    hash ^= hash >> 32;
  };
  std::size_t i = 0;
  for (; i + 4 <= count; i += 4) mix(four(i));
  if (i < count) {
    std::uint64_t word = 0;
    for (; i < count; ++i) word = word << 16 | units[i];
    mix(word);
  }
  hash *= k;
  const auto folded = static_cast<std::uint32_t>(hash >> 32);
  return folded != 0 ? folded : 1;
}

/// A literal's units. `count` leaves out the closing zero.
template <std::size_t N>
struct LiteralUnits {
  char16_t units[N]{};
  std::uint32_t count = 0;

  /// Compilation fails here when the literal is not valid UTF-8.
  consteval explicit LiteralUnits(const FixedText<N>& text) {
    for (std::size_t i = 0; i + 1 < N;) {
      const auto lead = static_cast<unsigned char>(text.text[i]);
      if ((lead >= 0x80 && lead < 0xC2) || lead > 0xF4) throw "not UTF-8";
      const std::size_t size = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
      char32_t point = size == 1 ? lead : lead & (0x7Fu >> size);
      for (std::size_t k = 1; k < size; ++k) {
        const auto next = static_cast<unsigned char>(text.text[i + k]);
        if ((next & 0xC0) != 0x80) throw "not UTF-8";
        point = point << 6 | (next & 0x3Fu);
      }
      const bool isOverlong = (size == 3 && point < 0x800) || (size == 4 && point < 0x10000);
      const bool isSurrogate = point >= 0xD800 && point < 0xE000;
      if (isOverlong || isSurrogate || point > 0x10FFFF) throw "not UTF-8";
      i += size;
      if (point < 0x10000) {
        units[count++] = static_cast<char16_t>(point);
      } else {
        units[count++] = static_cast<char16_t>(0xD7C0 + (point >> 10));
        units[count++] = static_cast<char16_t>(0xDC00 + (point & 0x3FF));
      }
    }
  }
};

}  // namespace qz::detail

#pragma GCC visibility pop
