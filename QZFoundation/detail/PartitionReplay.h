// Sorts a range of words to what the plain partition scheme makes of it.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "QZFoundation/detail/BlockPartition.h"
#include "QZFoundation/detail/RadixOrder.h"
#include "QZFoundation/detail/ScanTree.h"
#include "QZFoundation/detail/SortWord.h"

namespace qz::detail {

// Distinct keys end in the same order whichever way they are sorted; only among equal ones does the
// partition scheme decide. So a copy of the words is sorted by the fastest means first, and the
// scheme's exchanges are repeated just on the parts that turn out to hold equal keys:
//   - a part without equals is copied from the sorted words;
//   - a part of nothing but equals is rearranged without looking at it;
//   - any other part is partitioned;
//   - a large part met suspiciously deep is partitioned with a ScanTree.
// A partition makes at most as many exchanges as its smaller part has words, so the last rule holds
// the total to O(n log^2 n) whatever the input.
template <typename Word>
class PartitionReplay {
 public:
  // Room for sorting up to `capacity` words at a time.
  PartitionReplay(std::size_t capacity, std::uint64_t indexMask)
      : indexMask_(indexMask),
        sorted_(std::make_unique_for_overwrite<Word[]>(capacity)),
        scratch_(std::make_unique_for_overwrite<Word[]>(capacity)),
        pairs_(std::make_unique_for_overwrite<std::uint32_t[]>(capacity)) {}

  void sort(Word* words, std::size_t count) {
    std::copy(words, words + count, sorted_.get());
    radixOrder(sorted_.get(), scratch_.get(), count, indexMask_);
    if (!hasEqualNeighbours(sorted_.get(), count, indexMask_)) {
      std::copy(sorted_.get(), sorted_.get() + count, words);
      return;
    }
    std::uint32_t pairs = 0;
    for (std::size_t k = 0; k < count; ++k) {
      if (k != 0) pairs += sameKey(sorted_[k - 1], sorted_[k], indexMask_);
      pairs_[k] = pairs;
    }
    const int suspicious = 2 * static_cast<int>(std::bit_width(count));
    partitionThroughout(
        static_cast<std::int64_t>(count),
        [&](std::int64_t lo, std::int64_t hi, int depth) {
          if (settle(words, lo, hi)) return true;
          if (depth <= suspicious || hi - lo < treeMinimum) return false;
          replayWithTree(words, lo, hi);
          return true;
        },
        [&](std::int64_t lo, std::int64_t hi) {
          return blockPartition(words, lo, hi, indexMask_);
        });
  }

 private:
  static constexpr std::int64_t treeMinimum = 1024;

  // Finishes a range whose outcome needs no comparisons.
  bool settle(Word* words, std::int64_t lo, std::int64_t hi) {
    if (lo >= hi) return true;
    const std::int64_t equal = std::int64_t{pairs_[static_cast<std::size_t>(hi)]} -
                               std::int64_t{pairs_[static_cast<std::size_t>(lo)]};
    if (equal == 0) {
      // The ends may have equals outside the range, so which of those are here is not known yet.
      const auto [lowest, highest] = std::minmax_element(words + lo, words + hi + 1, keyLess<Word>);
      const Word first = *lowest;
      const Word last = *highest;
      std::copy(sorted_.get() + lo + 1, sorted_.get() + hi, words + lo + 1);
      words[lo] = first;
      words[hi] = last;
      return true;
    }
    if (equal == hi - lo) {
      mirror(words, lo, hi);
      return true;
    }
    return false;
  }

  // Equal keys stop every scan, so a partition reverses the range and splits it in its middle.
  static void mirror(Word* words, std::int64_t lo, std::int64_t hi) {
    while (lo < hi) {
      std::reverse(words + lo, words + hi + 1);
      const std::int64_t middle = (lo + hi) / 2;
      mirror(words, lo, middle);
      lo = middle + 1;
    }
  }

  void replayWithTree(Word* words, std::int64_t first, std::int64_t last) {
    ScanTree<Word> tree(words + first, last - first + 1);
    partitionThroughout(
        last - first + 1,
        [&](std::int64_t lo, std::int64_t hi, int) {
          return settle(words, first + lo, first + hi);
        },
        [&](std::int64_t lo, std::int64_t hi) {
          // A small range is not searched through the tree again, so the tree may miss changes.
          if (hi - lo < partitionEnd) {
            return blockPartition(words, first + lo, first + hi, indexMask_) - first;
          }
          const std::uint64_t pivot = keyBits(words[first + (lo + hi) / 2]);
          std::int64_t i = lo - 1;
          std::int64_t j = hi + 1;
          for (;;) {
            j = tree.previousAtMost(j - 1, pivot | indexMask_);
            i = tree.nextAtLeast(i + 1, pivot & ~indexMask_);
            if (j <= i) return j;
            tree.exchange(i, j);
          }
        });
  }

  std::uint64_t indexMask_;
  std::unique_ptr<Word[]> sorted_;
  std::unique_ptr<Word[]> scratch_;
  std::unique_ptr<std::uint32_t[]> pairs_;  // how many equal neighbours are sorted up to k
};

}  // namespace qz::detail
