// Finds where a partitioning scan stops without visiting every element on the way.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "QZFoundation/detail/SortWord.h"

namespace qz::detail {

// Minima and maxima over blocks of keys, and over ever larger groups of blocks, so that "next key
// at least x" and "previous key at most x" take logarithmic time. A partition then costs as much
// as the exchanges it makes, which keeps an input that splits off a few elements at a time (the
// middle pivot does so on an organ pipe) from taking quadratic time.
//
// Words rearranged behind the tree's back are harmless as long as they stay within a range that is
// never searched again: a node then holds a bound at least as wide as its searchable part needs,
// and a search always meets its answer before it could leave its own range.
template <typename Word>
class ScanTree {
 public:
  ScanTree(Word* words, std::int64_t count)
      : words_(words),
        count_(count),
        leaves_(static_cast<std::int64_t>(
            std::bit_ceil(static_cast<std::uint64_t>((count + blockLength - 1) / blockLength)))),
        nodes_(static_cast<std::size_t>(2 * leaves_)) {
    for (std::int64_t block = 0; block * blockLength < count_; ++block) {
      node(leaves_ + block) = blockNode(block);
    }
    for (std::int64_t at = leaves_ - 1; at > 0; --at) node(at) = joined(at);
  }

  // The first position from `from` on whose key is >= low. There has to be one.
  std::int64_t nextAtLeast(std::int64_t from, std::uint64_t low) const {
    const std::int64_t block = from / blockLength;
    const std::int64_t end = std::min((block + 1) * blockLength, count_);
    for (; from < end; ++from) {
      if (keyBits(words_[from]) >= low) return from;
    }
    std::int64_t at = leaves_ + block;
    while ((at & 1) != 0 || node(at + 1).highest < low) at /= 2;
    ++at;
    while (at < leaves_) {
      at *= 2;
      if (node(at).highest < low) ++at;
    }
    from = (at - leaves_) * blockLength;
    while (keyBits(words_[from]) < low) ++from;
    return from;
  }

  // The last position from `from` downwards whose key is <= high. There has to be one.
  std::int64_t previousAtMost(std::int64_t from, std::uint64_t high) const {
    const std::int64_t block = from / blockLength;
    for (; from >= block * blockLength; --from) {
      if (keyBits(words_[from]) <= high) return from;
    }
    std::int64_t at = leaves_ + block;
    while ((at & 1) == 0 || node(at - 1).lowest > high) at /= 2;
    --at;
    while (at < leaves_) {
      at = 2 * at + 1;
      if (node(at).lowest > high) --at;
    }
    from = std::min((at - leaves_ + 1) * blockLength, count_) - 1;
    while (keyBits(words_[from]) > high) --from;
    return from;
  }

  void exchange(std::int64_t i, std::int64_t j) {
    std::swap(words_[i], words_[j]);
    refresh(i / blockLength);
    refresh(j / blockLength);
  }

 private:
  static constexpr std::int64_t blockLength = 32;

  struct Node {
    std::uint64_t lowest = ~std::uint64_t{0};
    std::uint64_t highest = 0;

    bool operator==(const Node&) const = default;
  };

  Node& node(std::int64_t at) { return nodes_[static_cast<std::size_t>(at)]; }
  const Node& node(std::int64_t at) const { return nodes_[static_cast<std::size_t>(at)]; }

  Node joined(std::int64_t at) const {
    const Node& left = node(2 * at);
    const Node& right = node(2 * at + 1);
    return {std::min(left.lowest, right.lowest), std::max(left.highest, right.highest)};
  }

  Node blockNode(std::int64_t block) const {
    Node result;
    const std::int64_t end = std::min((block + 1) * blockLength, count_);
    for (std::int64_t k = block * blockLength; k < end; ++k) {
      result.lowest = std::min(result.lowest, keyBits(words_[k]));
      result.highest = std::max(result.highest, keyBits(words_[k]));
    }
    return result;
  }

  void refresh(std::int64_t block) {
    std::int64_t at = leaves_ + block;
    Node fresh = blockNode(block);
    while (!(node(at) == fresh)) {
      node(at) = fresh;
      at /= 2;
      if (at == 0) return;
      fresh = joined(at);
    }
  }

  Word* words_;
  std::int64_t count_;
  std::int64_t leaves_;
  std::vector<Node> nodes_;  // node k has the children 2k and 2k + 1; block b is node leaves_ + b
};

}  // namespace qz::detail
