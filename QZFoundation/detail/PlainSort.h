// The partition scheme that decides in which order equal elements come out of a sort.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace qz::detail {

// Partitions objects[lo..hi] around its middle element, then its parts, calling
// compare(element, pivot) for every scan step and exchanged(i, j) after each exchange.
//
// A scan keeps going on exactly +1 (right) or -1 (left). With an order that contradicts itself it
// could leave its range: it then stops at the range's end, after comparing the element there. If
// the right part comes out empty, as when every comparison says -1, the last element is split off
// by itself; with a consistent order that happens only if a negative lo makes the middle round up
// to hi, and then that element is the largest. So both parts are always smaller than the range.
//
// The left part goes first. Deferred right parts can be as many as half the elements, so from
// inOrder of them on the smaller part goes first, which adds at most one for each halving. This
// shows in the sequence of comparisons only, never in the result, as the parts share no element.
template <typename T, typename Compare, typename Exchanged>
void plainScheme(T* objects, std::int64_t lo, std::int64_t hi, Compare& compare,
                 Exchanged exchanged) {
  static_assert(std::is_trivially_copyable_v<T>, "elements are exchanged as plain words");
  constexpr std::size_t inOrder = 128;  // random elements come nowhere near it
  struct Range {
    std::int64_t lo;
    std::int64_t hi;
  };
  std::array<Range, inOrder + 64> pending;
  std::size_t waiting = 0;
  for (;;) {
    while (lo < hi) {
      const T pivot = objects[(lo + hi) / 2];
      std::int64_t i = lo - 1;
      std::int64_t j = hi + 1;
      for (;;) {
        do {
          --j;
        } while (compare(std::as_const(objects[j]), pivot) == 1 && j > lo);
        do {
          ++i;
        } while (compare(std::as_const(objects[i]), pivot) == -1 && i < hi);
        if (j <= i) break;
        std::swap(objects[i], objects[j]);
        exchanged(i, j);
      }
      if (j == hi) --j;
      Range next{lo, j};
      Range later{j + 1, hi};
      if (waiting >= inOrder && next.hi - next.lo > later.hi - later.lo) std::swap(next, later);
      if (later.lo < later.hi) {
        if (next.lo < next.hi) {
          pending[waiting++] = later;
        } else {
          next = later;
        }
      }
      lo = next.lo;
      hi = next.hi;
    }
    if (waiting == 0) return;
    --waiting;
    lo = pending[waiting].lo;
    hi = pending[waiting].hi;
  }
}

// Sorts objects[lo..hi] by the plain scheme and exchanges `indices` along. Memory is constant. If
// `compare` throws, objects and indices hold all they held before, still matched to each other.
template <typename T, typename Index, typename Compare>
requires std::invocable<Compare&, const T&, const T&>
void plainSort(T* objects, Index* indices, std::int64_t lo, std::int64_t hi, Compare&& compare) {
  plainScheme(objects, lo, hi, compare,
              [indices](std::int64_t i, std::int64_t j) { std::swap(indices[i], indices[j]); });
}

}  // namespace qz::detail
