// Sorting that hands back the permutation it applied.
//
// The order of equal elements is part of the result, and it is the partition scheme of plainSort
// that decides it. wordSort and keyedSort are much faster and leave exactly the same permutation.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>

#include "QZFoundation/detail/BlockPartition.h"
#include "QZFoundation/detail/KeySqueeze.h"
#include "QZFoundation/detail/PartitionReplay.h"
#include "QZFoundation/detail/PlainSort.h"
#include "QZFoundation/detail/RadixOrder.h"
#include "QZFoundation/detail/SortKeys.h"
#include "QZFoundation/detail/SortWord.h"

namespace qz::detail {

// Up to this count the plain scheme is done before the buffers of the fast one are set up.
inline constexpr std::size_t plainSortMaximum = 32;

// The fast path numbers ranks and positions with 32 bits each.
inline constexpr std::uint64_t fastSortMaximum = 0xFFFFFFFF;

// Ranges of up to so many words are sorted in the processor's nearer caches, larger ones are split.
inline constexpr std::int64_t leafLength = 8192;

// Splits words[0..count) by the plain scheme down to leaves for sortLeaf(words, count). A range met
// suspiciously deep is a leaf as well, whatever its size: the scheme may be quadratic on it.
template <typename Word, typename SortLeaf>
void sortLeaves(Word* words, std::size_t count, std::uint64_t indexMask, SortLeaf sortLeaf) {
  const int suspicious = 2 * static_cast<int>(std::bit_width(count / leafLength)) + 4;
  partitionThroughout(
      static_cast<std::int64_t>(count),
      [&](std::int64_t lo, std::int64_t hi, int depth) {
        if (hi - lo >= leafLength && depth <= suspicious) return false;
        if (lo < hi) sortLeaf(words + lo, static_cast<std::size_t>(hi - lo + 1));
        return true;
      },
      [&](std::int64_t lo, std::int64_t hi) { return blockPartition(words, lo, hi, indexMask); });
}

// Sorts to what the plain scheme makes of the words; count < 2^32.
template <typename Word>
void sortWords(Word* words, std::size_t count, std::uint64_t indexMask) {
  const std::size_t capacity = std::min<std::size_t>(count, leafLength);
  PartitionReplay<Word> replay(capacity, indexMask);
  sortLeaves(words, count, indexMask, [&](Word* leaf, std::size_t size) {
    if (size <= capacity) {
      replay.sort(leaf, size);
    } else {
      PartitionReplay<Word>(size, indexMask).sort(leaf, size);
    }
  });
}

// Sorts words of equal key by tieAt(word, word), where -1 means less. Merging stays within the
// words whatever is answered, and needs few answers for words already in order.
template <typename Word, typename TieAt>
void sortTied(Word* words, Word* scratch, std::size_t count, TieAt& tieAt) {
  if (count < 2) return;
  const std::size_t half = count / 2;
  sortTied(words, scratch, half, tieAt);
  sortTied(words + half, scratch, count - half, tieAt);
  if (tieAt(words[half], words[half - 1]) != -1) return;
  std::copy(words, words + half, scratch);
  std::size_t left = 0, right = half, out = 0;
  while (left < half && right < count) {
    words[out++] = tieAt(words[right], scratch[left]) == -1 ? words[right++] : scratch[left++];
  }
  std::copy(scratch + left, scratch + half, words + out);
}

// Sorts words by key, then by tieAt(word, word), and gives `placed` for each place the position
// that the word came from: what the plain scheme makes of words with the positions 0, 1, 2... for
// index.
template <typename Word, typename PositionOf, typename TieAt, typename Placed>
void orderWords(Word* words, std::size_t count, std::uint64_t indexMask, PositionOf positionOf,
                TieAt tieAt, Placed placed) {
  const auto scratch = std::make_unique_for_overwrite<Word[]>(count);
  // Where equal keys end up does not matter yet.
  sortLeaves(words, count, indexMask, [&](Word* leaf, std::size_t size) {
    radixOrder(leaf, scratch.get(), size, indexMask);
  });
  std::unique_ptr<std::uint64_t[]> ranks;  // made when two words are equal throughout
  std::size_t groupEnd = 0;
  for (std::size_t k = 0; k + 1 < count; ++k) {
    if (!sameKey(words[k], words[k + 1], indexMask)) continue;
    if (k >= groupEnd) {
      groupEnd = k + 2;
      while (groupEnd < count && sameKey(words[groupEnd], words[k], indexMask)) ++groupEnd;
      sortTied(words + k, scratch.get(), groupEnd - k, tieAt);
    }
    if (tieAt(words[k], words[k + 1]) == -1) continue;
    if (ranks == nullptr) {
      ranks = std::make_unique_for_overwrite<std::uint64_t[]>(count);
      std::iota(ranks.get(), ranks.get() + count, std::uint64_t{0});
    }
    ranks[k + 1] = ranks[k];
  }
  if (ranks == nullptr) {
    for (std::size_t k = 0; k < count; ++k) placed(k, positionOf(words[k]));
    return;
  }
  // Ranks stand in for key and tie-breaker, which need not be asked again.
  constexpr unsigned positionBits = 32;
  constexpr std::uint64_t positionMask = (std::uint64_t{1} << positionBits) - 1;
  const auto ranked = std::make_unique_for_overwrite<std::uint64_t[]>(count);
  for (std::size_t k = 0; k < count; ++k) {
    const std::uint64_t position = positionOf(words[k]);
    ranked[position] = ranks[k] << positionBits | position;
  }
  sortWords(ranked.get(), count, positionMask);
  for (std::size_t k = 0; k < count; ++k) placed(k, ranked[k] & positionMask);
}

// Sorts entries with the positions 0, 1, 2... for index by the plain scheme, without more memory.
template <typename TieAt>
void orderPlainly(KeyedEntry* entries, std::size_t count, TieAt& tieAt) {
  auto compare = [&tieAt](const KeyedEntry& a, const KeyedEntry& b) {
    if (a.key != b.key) return a.key < b.key ? -1L : 1L;
    return a.index == b.index ? 0L : static_cast<long>(tieAt(a, b));
  };
  plainScheme(entries, 0, static_cast<std::int64_t>(count) - 1, compare,
              [](std::int64_t, std::int64_t) {});
}

// Sorts 64-bit keys whose order `tie(index, index)` refines: it answers -1, 0 or +1 and is asked
// only about different positions with equal keys, O(n log n) times in all. The result is what
// plainSort makes of comparing keys first, then tie. A tie that contradicts itself gets some
// permutation. If `tie` throws, or memory runs out, keys and indices are as they were.
template <std::integral Index, typename Tie>
requires std::invocable<Tie&, Index, Index>
void keyedSort(std::uint64_t* keys, Index* indices, std::size_t count, Tie&& tie) {
  if (count < 2) return;
  const auto entryOf = [&](std::size_t k) { return KeyedEntry{keys[k], k}; };
  auto entryTie = [&](const KeyedEntry& a, const KeyedEntry& b) {
    return tie(indices[a.index], indices[b.index]);
  };
  if (count <= plainSortMaximum) {
    std::array<KeyedEntry, plainSortMaximum> entries;
    std::array<Index, plainSortMaximum> moved;
    for (std::size_t k = 0; k < count; ++k) entries[k] = entryOf(k);
    orderPlainly(entries.data(), count, entryTie);
    for (std::size_t k = 0; k < count; ++k) moved[k] = indices[entries[k].index];
    for (std::size_t k = 0; k < count; ++k) keys[k] = entries[k].key;
    std::copy_n(moved.data(), count, indices);
    return;
  }
  const auto movedKeys = std::make_unique_for_overwrite<std::uint64_t[]>(count);
  const auto movedIndices = std::make_unique_for_overwrite<Index[]>(count);
  const auto placed = [&](std::size_t k, std::uint64_t position) {
    movedKeys[k] = keys[position];
    movedIndices[k] = indices[position];
  };
  const KeySqueeze squeeze(keys, count);
  const unsigned positionBits = static_cast<unsigned>(std::bit_width(count - 1));
  if (count <= fastSortMaximum && squeeze.bits() + positionBits <= 64) {
    const std::uint64_t mask = (std::uint64_t{1} << positionBits) - 1;
    const auto words = std::make_unique_for_overwrite<std::uint64_t[]>(count);
    for (std::size_t k = 0; k < count; ++k) words[k] = squeeze(keys[k]) << positionBits | k;
    orderWords(
        words.get(), count, mask, [mask](std::uint64_t word) { return word & mask; },
        [&](std::uint64_t a, std::uint64_t b) { return tie(indices[a & mask], indices[b & mask]); },
        placed);
  } else {
    const auto entries = std::make_unique_for_overwrite<KeyedEntry[]>(count);
    for (std::size_t k = 0; k < count; ++k) entries[k] = entryOf(k);
    if (count <= fastSortMaximum) {
      orderWords(
          entries.get(), count, 0, [](const KeyedEntry& entry) { return entry.index; }, entryTie,
          placed);
    } else {
      orderPlainly(entries.get(), count, entryTie);
      for (std::size_t k = 0; k < count; ++k) placed(k, entries[k].index);
    }
  }
  std::copy_n(movedKeys.get(), count, keys);
  std::copy_n(movedIndices.get(), count, indices);
}

// Sorts integers in ascending order and moves `indices` along, as plainSort would. If memory runs
// out, keys and indices are as they were.
template <std::integral Key, std::integral Index>
void wordSort(Key* keys, Index* indices, std::size_t count) {
  if (count < 2) return;
  if (count <= plainSortMaximum || count > fastSortMaximum) {
    plainSort(keys, indices, 0, static_cast<std::int64_t>(count) - 1,
              [](const Key& a, const Key& b) { return (a > b) - (a < b); });
    return;
  }
  const auto [lowest, highest] = std::minmax_element(keys, keys + count);
  const std::uint64_t base = static_cast<std::uint64_t>(*lowest);
  const std::uint64_t span = static_cast<std::uint64_t>(*highest) - base;
  std::uint64_t used = 0;
  for (std::size_t k = 0; k < count; ++k) used |= static_cast<std::uint64_t>(indices[k]);
  const auto indexBits = std::bit_width(used);
  if (indexBits < 64 && indexBits + std::bit_width(span) <= 64) {
    // The keys span little enough for key and index to share a word: one move then moves both.
    const std::uint64_t indexMask = (std::uint64_t{1} << indexBits) - 1;
    const auto words = std::make_unique_for_overwrite<std::uint64_t[]>(count);
    for (std::size_t k = 0; k < count; ++k) {
      words[k] = (static_cast<std::uint64_t>(keys[k]) - base) << indexBits |
                 static_cast<std::uint64_t>(indices[k]);
    }
    sortWords(words.get(), count, indexMask);
    for (std::size_t k = 0; k < count; ++k) {
      keys[k] = static_cast<Key>((words[k] >> indexBits) + base);
      indices[k] = static_cast<Index>(words[k] & indexMask);
    }
  } else {
    const auto entries = std::make_unique_for_overwrite<KeyedEntry[]>(count);
    for (std::size_t k = 0; k < count; ++k) {
      entries[k] = {static_cast<std::uint64_t>(keys[k]) - base,
                    static_cast<std::uint64_t>(indices[k])};
    }
    sortWords(entries.get(), count, 0);
    for (std::size_t k = 0; k < count; ++k) {
      keys[k] = static_cast<Key>(entries[k].key + base);
      indices[k] = static_cast<Index>(entries[k].index);
    }
  }
}

}  // namespace qz::detail
