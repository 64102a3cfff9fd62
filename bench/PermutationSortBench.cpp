// Sorting with a permutation to hand back, against std::sort, which hands back none.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "QZFoundation/detail/PermutationSort.h"

namespace qz::detail {
namespace {

constexpr std::size_t kMillion = 1000000;

// Restoring the unsorted input is part of every iteration, on both sides alike: it costs little,
// and stopping the clock around it would cost more for small counts.
template <typename Key>
void wordSortOf(benchmark::State& state, const std::vector<Key>& values) {
  std::vector<Key> keys(values.size());
  std::vector<std::uint32_t> indices(values.size());
  for (auto _ : state) {
    std::copy(values.begin(), values.end(), keys.begin());
    std::iota(indices.begin(), indices.end(), 0U);
    wordSort(keys.data(), indices.data(), keys.size());
    benchmark::DoNotOptimize(indices.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(values.size()));
}

template <typename Key>
void stdSortOf(benchmark::State& state, const std::vector<Key>& values) {
  std::vector<Key> keys(values.size());
  for (auto _ : state) {
    std::copy(values.begin(), values.end(), keys.begin());
    std::sort(keys.begin(), keys.end());
    benchmark::DoNotOptimize(keys.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(values.size()));
}

template <typename Key>
std::vector<Key> randomKeys(std::size_t count, std::uint64_t bound = 0) {
  std::mt19937_64 random(1);
  std::vector<Key> keys(count);
  for (Key& key : keys) key = static_cast<Key>(bound == 0 ? random() : random() % bound);
  return keys;
}

template <typename Value>
std::vector<std::int32_t> patterned(Value value) {
  std::vector<std::int32_t> keys(kMillion);
  for (std::size_t k = 0; k < kMillion; ++k) keys[k] = static_cast<std::int32_t>(value(k));
  return keys;
}

void BM_WordSort_1M(benchmark::State& s) { wordSortOf(s, randomKeys<std::int32_t>(kMillion)); }
void BM_StdSort_1M(benchmark::State& s) { stdSortOf(s, randomKeys<std::int32_t>(kMillion)); }
BENCHMARK(BM_WordSort_1M)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StdSort_1M)->Unit(benchmark::kMillisecond);

void BM_PlainSort_1M(benchmark::State& state) {
  const std::vector<std::int32_t> values = randomKeys<std::int32_t>(kMillion);
  std::vector<std::int32_t> keys(kMillion);
  std::vector<std::uint32_t> indices(kMillion);
  for (auto _ : state) {
    std::copy(values.begin(), values.end(), keys.begin());
    std::iota(indices.begin(), indices.end(), 0U);
    plainSort(keys.data(), indices.data(), 0, static_cast<std::int64_t>(kMillion) - 1,
              [](std::int32_t a, std::int32_t b) { return a < b   ? -1
                                                          : b < a ? 1
                                                                  : 0; });
    benchmark::DoNotOptimize(indices.data());
  }
}
BENCHMARK(BM_PlainSort_1M)->Unit(benchmark::kMillisecond);

// Keys too wide to share a word with their index.
void BM_WordSortWide_1M(benchmark::State& s) { wordSortOf(s, randomKeys<std::int64_t>(kMillion)); }
void BM_StdSortWide_1M(benchmark::State& s) { stdSortOf(s, randomKeys<std::int64_t>(kMillion)); }
BENCHMARK(BM_WordSortWide_1M)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StdSortWide_1M)->Unit(benchmark::kMillisecond);

// 1,000,000 random keys of so many distinct values.
void BM_WordSortDistinct(benchmark::State& state) {
  const auto distinct = static_cast<std::uint64_t>(state.range(0));
  wordSortOf(state, randomKeys<std::int32_t>(kMillion, distinct));
}
void BM_StdSortDistinct(benchmark::State& state) {
  const auto distinct = static_cast<std::uint64_t>(state.range(0));
  stdSortOf(state, randomKeys<std::int32_t>(kMillion, distinct));
}
BENCHMARK(BM_WordSortDistinct)
    ->Arg(2)
    ->Arg(100)
    ->Arg(10000)
    ->Arg(500000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StdSortDistinct)
    ->Arg(2)
    ->Arg(100)
    ->Arg(10000)
    ->Arg(500000)
    ->Unit(benchmark::kMillisecond);

std::size_t allEqual(std::size_t) { return 5; }
std::size_t ascending(std::size_t k) { return k; }
std::size_t ascendingPairs(std::size_t k) { return k / 2; }
std::size_t descending(std::size_t k) { return kMillion - k; }
std::size_t organPipe(std::size_t k) { return std::min(k, kMillion - 1 - k); }
std::size_t saw(std::size_t k) { return k % 1000; }

void BM_WordSortPattern(benchmark::State& state, std::size_t (*value)(std::size_t)) {
  wordSortOf(state, patterned(value));
}
void BM_StdSortPattern(benchmark::State& state, std::size_t (*value)(std::size_t)) {
  stdSortOf(state, patterned(value));
}
BENCHMARK_CAPTURE(BM_WordSortPattern, allEqual, allEqual)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StdSortPattern, allEqual, allEqual)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_WordSortPattern, sorted, ascending)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StdSortPattern, sorted, ascending)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_WordSortPattern, sortedPairs, ascendingPairs)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StdSortPattern, sortedPairs, ascendingPairs)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_WordSortPattern, reversed, descending)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StdSortPattern, reversed, descending)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_WordSortPattern, organPipe, organPipe)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StdSortPattern, organPipe, organPipe)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_WordSortPattern, saw, saw)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StdSortPattern, saw, saw)->Unit(benchmark::kMillisecond);

// So many random keys out of half as many values. The inputs alternate, or the processor would
// learn a small one by heart and predict every branch.
constexpr std::size_t kAlternating = 1 << 20;

template <typename Sort>
void sortCount(benchmark::State& state, Sort sort) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const auto values = randomKeys<std::int64_t>(kAlternating, count / 2);
  std::vector<std::int64_t> keys(count);
  std::vector<std::uint32_t> indices(count);
  std::size_t at = 0;
  for (auto _ : state) {
    std::copy_n(values.begin() + static_cast<std::ptrdiff_t>(at), count, keys.begin());
    at = (at + count) % kAlternating;
    sort(keys, indices);
    benchmark::DoNotOptimize(keys.data());
    benchmark::DoNotOptimize(indices.data());
  }
}
void BM_WordSortCount(benchmark::State& state) {
  sortCount(state, [](auto& keys, auto& indices) {
    std::iota(indices.begin(), indices.end(), 0U);
    wordSort(keys.data(), indices.data(), keys.size());
  });
}
void BM_StdSortCount(benchmark::State& state) {
  sortCount(state, [](auto& keys, auto&) { std::sort(keys.begin(), keys.end()); });
}
BENCHMARK(BM_WordSortCount)->RangeMultiplier(4)->Range(4, 65536);
BENCHMARK(BM_StdSortCount)->RangeMultiplier(4)->Range(4, 65536);

constexpr std::size_t kStringCount = 100000;

// Lower-case strings of 8 to 16 letters behind a common prefix.
std::vector<std::u16string> randomStrings(const std::u16string& prefix) {
  std::mt19937_64 random(2);
  std::vector<std::u16string> strings(kStringCount);
  for (std::u16string& string : strings) {
    string = prefix;
    for (std::size_t letters = 8 + random() % 9; letters > 0; --letters) {
      string.push_back(static_cast<char16_t>(u'a' + random() % 26));
    }
  }
  return strings;
}

// From the strings to the permutation, prefix keys included. The strings stay in place.
void keyedSortOf(benchmark::State& state, const std::vector<std::u16string>& strings) {
  std::vector<std::uint64_t> keys(strings.size());
  std::vector<std::uint32_t> indices(strings.size());
  for (auto _ : state) {
    for (std::size_t k = 0; k < strings.size(); ++k) {
      std::uint64_t key = 0;
      for (std::size_t at = 0; at < 4; ++at) {
        key = key << 16 | (at < strings[k].size() ? strings[k][at] : 0U);
      }
      keys[k] = key;
    }
    std::iota(indices.begin(), indices.end(), 0U);
    keyedSort(keys.data(), indices.data(), keys.size(), [&](std::uint32_t a, std::uint32_t b) {
      const int order = strings[a].compare(strings[b]);
      return (order > 0) - (order < 0);
    });
    benchmark::DoNotOptimize(indices.data());
  }
}

// Only the sort is timed, not the copying of the strings it sorts.
void stdSortStringsOf(benchmark::State& state, const std::vector<std::u16string>& strings) {
  std::vector<std::u16string> sorted;
  for (auto _ : state) {
    state.PauseTiming();
    sorted = strings;
    state.ResumeTiming();
    std::sort(sorted.begin(), sorted.end());
    benchmark::DoNotOptimize(sorted.data());
  }
}

void BM_KeyedSortStrings_100K(benchmark::State& s) { keyedSortOf(s, randomStrings(u"")); }
void BM_StdSortStrings_100K(benchmark::State& s) { stdSortStringsOf(s, randomStrings(u"")); }
BENCHMARK(BM_KeyedSortStrings_100K)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StdSortStrings_100K)->Unit(benchmark::kMillisecond);

// Every prefix key is the same.
void BM_KeyedSortSamePrefix_100K(benchmark::State& s) { keyedSortOf(s, randomStrings(u"item")); }
void BM_StdSortSamePrefix_100K(benchmark::State& s) { stdSortStringsOf(s, randomStrings(u"item")); }
BENCHMARK(BM_KeyedSortSamePrefix_100K)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StdSortSamePrefix_100K)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace qz::detail
