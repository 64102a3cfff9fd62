/// @file
/// Private: finding units that are the same, unit for unit.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#pragma GCC visibility push(default)

namespace qz::detail {

/// For each length of a beginning of `part`: how long the longest shorter beginning is that ends
/// it. With this table a search never looks at a unit of the text twice.
std::vector<std::uint32_t> repeatedPrefixes(std::u16string_view part);

/// Calls `found(location)` for each place where `part` occurs, from the left, none overlapping the
/// one before, until it answers false. An empty part is nowhere. Linear time.
template <class Found>
void forEachOccurrence(std::u16string_view text, std::u16string_view part, Found found) {
  if (part.empty() || part.size() > text.size()) return;
  const std::size_t last = part.size() - 1;
  const std::size_t starts = text.size() - last;
  const char16_t* const units = text.data();
  std::size_t next = 0;  // the first start that is not behind the end of the previous occurrence
  std::size_t at = 0;
#if defined(__SSE2__)
  // Sixteen starts a step: those where the first and the last unit fit are looked at closely.
  const __m128i first = _mm_set1_epi16(static_cast<short>(part.front()));
  const __m128i final = _mm_set1_epi16(static_cast<short>(part[last]));
  auto fitting = [&](std::size_t start) {
    const auto load = [](const char16_t* from) {
      return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    };
    return _mm_and_si128(_mm_cmpeq_epi16(load(units + start), first),
                         _mm_cmpeq_epi16(load(units + start + last), final));
  };
  // A text made to fit at both ends and nowhere between would take quadratic time.
  std::size_t patience = 8 * text.size() + 4096;
  for (; at + 16 <= starts; at += 16) {
    const __m128i both = _mm_packs_epi16(fitting(at), fitting(at + 8));
    for (auto mask = static_cast<unsigned>(_mm_movemask_epi8(both)); mask != 0; mask &= mask - 1) {
      const std::size_t start = at + static_cast<std::size_t>(std::countr_zero(mask));
      if (start < next) continue;
      if (last > 1 && std::memcmp(units + start + 1, part.data() + 1, 2 * (last - 1)) != 0) {
        if (patience < part.size()) goto carefully;
        patience -= part.size();
        continue;
      }
      if (!found(start)) return;
      next = start + part.size();
    }
  }
carefully:
#endif
  if (at < next) at = next;
  if (at >= starts) return;
  // A few starts are soon compared, and need no table.
  if (starts - at <= 16) {
    for (; at < starts; ++at) {
      if (std::memcmp(units + at, part.data(), 2 * part.size()) != 0) continue;
      if (!found(at)) return;
      at += last;
    }
    return;
  }
  const std::vector<std::uint32_t> fallback = repeatedPrefixes(part);
  std::size_t matched = 0;
  for (; at < text.size(); ++at) {
    while (matched != 0 && units[at] != part[matched]) matched = fallback[matched - 1];
    if (units[at] == part[matched]) ++matched;
    if (matched == part.size()) {
      if (!found(at - last)) return;
      matched = 0;
    }
  }
}

/// Where `unit` occurs first; npos when it does not.
inline std::size_t findUnit(std::u16string_view text, char16_t unit) noexcept {
  std::size_t at = 0;
#if defined(__SSE2__)
  const __m128i wanted = _mm_set1_epi16(static_cast<short>(unit));
  for (; at + 8 <= text.size(); at += 8) {
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at));
    const auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(units, wanted)));
    if (mask != 0) return at + static_cast<std::size_t>(std::countr_zero(mask)) / 2;
  }
#endif
  for (; at < text.size(); ++at)
    if (text[at] == unit) return at;
  return std::u16string_view::npos;
}

/// Where `part` occurs first, or last; npos when it does not, or is empty.
std::size_t findUnits(std::u16string_view text, std::u16string_view part);
std::size_t findLastUnits(std::u16string_view text, std::u16string_view part) noexcept;

}  // namespace qz::detail

#pragma GCC visibility pop
