// Orders sort words by key without regard to how equal keys come out.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "QZFoundation/detail/SortWord.h"

namespace qz::detail {

// Below this count clearing and summing the counters costs more than comparing does.
inline constexpr std::size_t radixOrderMinimum = 32;

// From this count on fewer rounds with larger digits win.
inline constexpr std::size_t largeDigitMinimum = 2048;

template <typename Word>
void radixOrder(Word* words, Word* scratch, std::size_t count, std::uint64_t indexMask);

// Two digits are enough to tell almost all keys apart, if they are the two below the highest bit
// that varies. What they leave together is ordered by itself and, in turn, by its own highest bits,
// so it comes to at most 64 / (2 * 8) rounds.
template <unsigned digitBits, typename Word>
void radixOrderBy(Word* words, Word* scratch, std::size_t count, std::uint64_t indexMask) {
  std::uint64_t lowest = keyBits(words[0]);
  std::uint64_t highest = lowest;
  for (std::size_t k = 1; k < count; ++k) {
    lowest = std::min(lowest, keyBits(words[k]));
    highest = std::max(highest, keyBits(words[k]));
  }
  lowest &= ~indexMask;
  const int indexBits = static_cast<int>(std::bit_width(indexMask));
  const int top = static_cast<int>(std::bit_width(highest - lowest));
  if (top <= indexBits) return;  // one key throughout
  const int shift = std::max(top - 2 * static_cast<int>(digitBits), indexBits);

  constexpr std::size_t digitCount = std::size_t{1} << digitBits;
  const auto digits = [=](const Word& word) { return (keyBits(word) - lowest) >> shift; };
  std::array<std::uint32_t, digitCount> lowSlots{};
  std::array<std::uint32_t, digitCount> highSlots{};
  for (std::size_t k = 0; k < count; ++k) {
    const std::uint64_t both = digits(words[k]);
    ++lowSlots[both % digitCount];
    ++highSlots[both / digitCount];
  }
  std::uint32_t lowNext = 0;
  std::uint32_t highNext = 0;
  for (std::size_t digit = 0; digit < digitCount; ++digit) {
    lowNext += std::exchange(lowSlots[digit], lowNext);
    highNext += std::exchange(highSlots[digit], highNext);
  }
  for (std::size_t k = 0; k < count; ++k) {
    const Word word = words[k];
    scratch[lowSlots[digits(word) % digitCount]++] = word;
  }
  for (std::size_t k = 0; k < count; ++k) {
    const Word word = scratch[k];
    words[highSlots[digits(word) / digitCount]++] = word;
  }
  if (shift == indexBits) return;

  for (std::size_t k = 0, end; k < count; k = end) {
    for (end = k + 1; end < count && digits(words[end]) == digits(words[k]);) ++end;
    if (end - k > 1) radixOrder(words + k, scratch + k, end - k, indexMask);
  }
}

// Sorts `count` < 2^32 words with as many of scratch space.
template <typename Word>
void radixOrder(Word* words, Word* scratch, std::size_t count, std::uint64_t indexMask) {
  if (count < radixOrderMinimum) {
    std::sort(words, words + count, keyLess<Word>);
  } else if (count < largeDigitMinimum) {
    radixOrderBy<8>(words, scratch, count, indexMask);
  } else {
    radixOrderBy<11>(words, scratch, count, indexMask);
  }
}

}  // namespace qz::detail
