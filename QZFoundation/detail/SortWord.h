// What the fast sorts move about: a key together with the index that belongs to it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace qz::detail {

// A sort word is either a KeyedEntry or, if that suffices, a std::uint64_t with the key in the
// upper bits and the index in the bits of `indexMask`. For a KeyedEntry that mask is 0.
struct KeyedEntry {
  std::uint64_t key;
  std::uint64_t index;
};

inline std::uint64_t keyBits(std::uint64_t word) { return word; }
inline std::uint64_t keyBits(const KeyedEntry& word) { return word.key; }

template <typename Word>
bool sameKey(const Word& a, const Word& b, std::uint64_t indexMask) {
  return ((keyBits(a) ^ keyBits(b)) & ~indexMask) == 0;
}

template <typename Word>
bool keyLess(const Word& a, const Word& b) {
  return keyBits(a) < keyBits(b);
}

template <typename Word>
bool hasEqualNeighbours(const Word* sorted, std::size_t count, std::uint64_t indexMask) {
  const auto same = [indexMask](const Word& a, const Word& b) { return sameKey(a, b, indexMask); };
  return std::adjacent_find(sorted, sorted + count, same) != sorted + count;
}

}  // namespace qz::detail
