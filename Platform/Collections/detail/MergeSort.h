/// @file
/// Private: a stable sort that stays in bounds whatever the comparison answers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <type_traits>

#pragma GCC visibility push(default)

namespace qz::detail {

inline constexpr std::size_t mergeSortRun = 16;

/// Sorts a few items by inserting each one where binary search finds its place.
template <class T, class After>
void insertionSort(T* items, std::size_t count, const After& after) {
  for (std::size_t i = 1; i < count; ++i) {
    const T item = items[i];
    if (!after(items[i - 1], item)) continue;
    std::size_t low = 0;
    std::size_t high = i - 1;  // the item there orders after `item`
    while (low < high) {
      const std::size_t middle = low + (high - low) / 2;
      if (after(items[middle], item))
        high = middle;
      else
        low = middle + 1;
    }
    std::copy_backward(items + low, items + i, items + i + 1);
    items[low] = item;
  }
}

/// Sorts `items` with a scratch of half their number. Sorted neighbours are left where they are.
template <class T, class After>
void mergeSortHalves(T* items, std::size_t count, T* scratch, const After& after) {
  if (count <= mergeSortRun) return insertionSort(items, count, after);
  const std::size_t half = count / 2;
  T* const middle = items + half;
  T* const end = items + count;
  mergeSortHalves(items, half, scratch, after);
  mergeSortHalves(middle, count - half, scratch, after);
  if (!after(middle[-1], middle[0])) return;
  T* const scratchEnd = std::copy(items, middle, scratch);
  if (after(items[0], end[-1])) {
    std::copy(scratch, scratchEnd, std::copy(middle, end, items));
    return;
  }
  T* left = scratch;
  T* right = middle;
  T* to = items;
  while (left != scratchEnd && right != end) *to++ = after(*left, *right) ? *right++ : *left++;
  std::copy(left, scratchEnd, to);
}

/// Sorts `items` so that `after(a, b)` is true of no neighbours a, b; others keep their order.
///
/// About n·log2(n) comparisons, fewer than 1.1·n when the items are sorted already. A comparison
/// that contradicts itself gives some order of the same items. When it throws, items may be
/// missing and doubled: sort borrowed pointers or indices, not owners.
template <class T, class After>
void mergeSort(std::span<T> items, const After& after) {
  static_assert(std::is_trivially_copyable_v<T>);
  std::unique_ptr<T[]> scratch;
  if (items.size() > mergeSortRun) scratch = std::make_unique_for_overwrite<T[]>(items.size() / 2);
  mergeSortHalves(items.data(), items.size(), scratch.get(), after);
}

}  // namespace qz::detail

#pragma GCC visibility pop
