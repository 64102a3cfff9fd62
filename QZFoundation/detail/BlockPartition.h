// The plain partition scheme's partition, without branches that cannot be predicted.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "QZFoundation/detail/SortWord.h"

namespace qz::detail {

inline constexpr std::int64_t partitionBlock = 64;

// What finishPartition can take: offsets into it have to fit a byte.
inline constexpr std::int64_t partitionEnd = 3 * partitionBlock;

// The rest of a partition around a key that spans low..high: [lo, hi], at most partitionEnd words.
// Whatever lies before lo is at most the pivot.
template <typename Word>
std::int64_t finishPartition(Word* words, std::int64_t lo, std::int64_t hi, std::uint64_t low,
                             std::uint64_t high) {
  std::array<std::uint8_t, partitionEnd> lefts;
  std::array<std::uint8_t, partitionEnd> rights;
  std::size_t leftEnd = 0;
  std::size_t rightEnd = 0;
  const std::int64_t size = hi - lo + 1;
  Word* const base = words + lo;
  for (std::int64_t k = 0; k < size; ++k) {
    lefts[leftEnd] = static_cast<std::uint8_t>(k);
    leftEnd += keyBits(base[k]) >= low;
    rights[rightEnd] = static_cast<std::uint8_t>(size - 1 - k);
    rightEnd += keyBits(base[size - 1 - k]) <= high;
  }
  const std::size_t most = std::min(leftEnd, rightEnd);
  std::size_t k = 0;
  for (; k < most && lefts[k] < rights[k]; ++k) std::swap(base[lefts[k]], base[rights[k]]);
  // The right scan now ends at its next stop, or at what was last exchanged to the left if that
  // comes first, or else in front of the rest.
  const std::int64_t barrier = k != 0 ? lefts[k - 1] : -1;
  const std::int64_t stop = k < rightEnd ? rights[k] : -1;
  return lo + std::max(barrier, stop);
}

// Partitions words[lo..hi], lo < hi, and returns j: the parts are lo..j and j+1..hi.
//
// The scheme exchanges the k-th stop of its left scan with the k-th stop of its right scan as long
// as they have not met. No exchange touches a position that is still to be scanned, so the stops
// can be collected a block ahead.
template <typename Word>
std::int64_t blockPartition(Word* words, std::int64_t lo, std::int64_t hi,
                            std::uint64_t indexMask) {
  const std::uint64_t pivot = keyBits(words[(lo + hi) / 2]);
  const std::uint64_t low = pivot & ~indexMask;
  const std::uint64_t high = pivot | indexMask;
  std::array<std::uint8_t, partitionBlock> lefts;
  std::array<std::uint8_t, partitionBlock> rights;
  Word* left = words + lo;   // everything before is as the scheme leaves it
  Word* right = words + hi;  // everything behind, too
  std::size_t leftAt = 0;    // stops that still wait for one on the other side
  std::size_t leftEnd = 0;
  std::size_t rightAt = 0;
  std::size_t rightEnd = 0;
  while (right - left + 1 > partitionEnd) {
    if (leftAt == leftEnd) {
      leftAt = leftEnd = 0;
      for (unsigned k = 0; k < partitionBlock; ++k) {
        lefts[leftEnd] = static_cast<std::uint8_t>(k);
        leftEnd += keyBits(left[k]) >= low;
      }
    }
    if (rightAt == rightEnd) {
      rightAt = rightEnd = 0;
      for (unsigned k = 0; k < partitionBlock; ++k) {
        rights[rightEnd] = static_cast<std::uint8_t>(k);
        rightEnd += keyBits(*(right - k)) <= high;
      }
    }
    const std::size_t exchanges = std::min(leftEnd - leftAt, rightEnd - rightAt);
    for (std::size_t k = 0; k < exchanges; ++k) {
      std::swap(left[lefts[leftAt + k]], *(right - rights[rightAt + k]));
    }
    leftAt += exchanges;
    rightAt += exchanges;
    if (leftAt == leftEnd) left += partitionBlock;
    if (rightAt == rightEnd) right -= partitionBlock;
  }
  if (leftAt != leftEnd) left += lefts[leftAt];
  if (rightAt != rightEnd) right -= rights[rightAt];
  return finishPartition(words, left - words, right - words, low, high);
}

// Ranges still to be partitioned.
struct PartitionRange {
  std::int64_t lo;
  std::int64_t hi;
  int depth;
};

// Takes apart words[0..count), from `done(lo, hi, depth)` on no further, with j = split(lo, hi).
// The smaller part goes first and the larger waits: at most one for each halving. The parts share
// no word, so their order does not show in the result.
template <typename Done, typename Split>
void partitionThroughout(std::int64_t count, Done done, Split split) {
  std::array<PartitionRange, 64> pending;
  std::size_t waiting = 0;
  PartitionRange range{0, count - 1, 0};
  for (;;) {
    while (!done(range.lo, range.hi, range.depth)) {
      const std::int64_t j = split(range.lo, range.hi);
      PartitionRange smaller{range.lo, j, range.depth + 1};
      PartitionRange larger{j + 1, range.hi, range.depth + 1};
      if (smaller.hi - smaller.lo > larger.hi - larger.lo) std::swap(smaller, larger);
      pending[waiting++] = larger;
      range = smaller;
    }
    if (waiting == 0) return;
    range = pending[--waiting];
  }
}

}  // namespace qz::detail
