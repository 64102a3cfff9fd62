/// @file
/// Private: where lines end.
#pragma once

#include <bit>
#include <cstddef>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qz::detail {

/// Line feed, carriage return, next line, and the line and paragraph separators.
constexpr bool isLineEnd(char16_t unit) noexcept {
  return unit == 0x000A || unit == 0x000D || unit == 0x0085 || (unit | 1) == 0x2029;
}

/// The first unit from `at` on that ends a line; the length when there is none.
inline std::size_t findLineEnd(std::u16string_view text, std::size_t at) noexcept {
#if defined(__SSE2__)
  const auto same = [](__m128i units, int unit) {
    return _mm_cmpeq_epi16(units, _mm_set1_epi16(static_cast<short>(unit)));
  };
  for (; text.size() - at >= 8; at += 8) {
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at));
    const __m128i breaks = _mm_or_si128(same(units, 0x000A), same(units, 0x000D));
    const __m128i separators = same(_mm_or_si128(units, _mm_set1_epi16(1)), 0x2029);
    const __m128i ends = _mm_or_si128(_mm_or_si128(breaks, separators), same(units, 0x0085));
    const auto mask = static_cast<unsigned>(_mm_movemask_epi8(ends));
    if (mask != 0) return at + static_cast<std::size_t>(std::countr_zero(mask)) / 2;
  }
#endif
  while (at < text.size() && !isLineEnd(text[at])) ++at;
  return at;
}

/// What follows the line end at `at`: a carriage return takes a line feed with it. The length when
/// `at` is the length.
constexpr std::size_t skipLineEnd(std::u16string_view text, std::size_t at) noexcept {
  if (at == text.size()) return at;
  const bool isPair = text[at] == u'\r' && at + 1 < text.size() && text[at + 1] == u'\n';
  return at + (isPair ? 2 : 1);
}

}  // namespace qz::detail
