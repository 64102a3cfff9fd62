#include "QZFoundation/detail/PermutationSort.h"

#include <bit>

#include "Platform/Runtime/detail/Sanitizers.h"
#include "tests/support/Test.h"

namespace qz::detail {
namespace {

using Random = std::mt19937_64;
using Trace = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

template <typename Key>
long threeWay(const Key& a, const Key& b) {
  return a < b ? -1 : b < a ? 1 : 0;
}

template <typename Index = std::uint32_t>
std::vector<Index> numbered(std::size_t count) {
  std::vector<Index> result(count);
  std::iota(result.begin(), result.end(), Index{0});
  return result;
}

// The scheme in its simplest, recursive form; only consistent orders keep it within its range.
template <typename T, typename Compare>
void recursiveSort(T* objects, std::uint32_t* indices, int lo, int hi, Compare& compare) {
  if (!(lo < hi)) return;
  do {
    const T pivot = objects[(lo + hi) / 2];
    int i = lo - 1;
    int j = hi + 1;
    for (;;) {
      do j--;
      while (compare(objects[j], pivot) == 1);
      do i++;
      while (compare(objects[i], pivot) == -1);
      if (!(j > i)) break;
      std::swap(objects[i], objects[j]);
      std::swap(indices[i], indices[j]);
    }
    recursiveSort(objects, indices, lo, j, compare);
    lo = j + 1;
  } while (lo < hi);
}

struct Shape {
  const char* name;
  std::function<std::int64_t(std::int64_t k, std::int64_t count, Random& random)> value;
};

std::int64_t below(Random& random, std::int64_t bound) {
  return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(bound));
}

const std::vector<Shape>& shapes() {
  using I = std::int64_t;
  static const std::vector<Shape> all = {
      {"random", [](I, I, Random& r) { return static_cast<I>(r()); }},
      {"random32", [](I, I, Random& r) { return I{static_cast<std::int32_t>(r())}; }},
      {"pairs", [](I, I n, Random& r) { return below(r, n / 2 + 1); }},
      {"widePairs", [](I, I n, Random& r) { return below(r, n / 2 + 1) << 52; }},
      {"three values", [](I, I, Random& r) { return below(r, 3) - 1; }},
      {"square root", [](I, I n, Random& r) { return below(r, 1 + static_cast<I>(std::sqrt(n))); }},
      {"few equal", [](I k, I n, Random& r) { return below(r, 9) == 0 ? n / 3 : k * 7919 % n; }},
      {"all equal", [](I, I, Random&) { return I{-42}; }},
      {"sorted", [](I k, I, Random&) { return k; }},
      {"sorted pairs", [](I k, I, Random&) { return k / 2; }},
      {"reversed", [](I k, I n, Random&) { return n - k; }},
      {"reversed pairs", [](I k, I n, Random&) { return (n - k) / 2; }},
      {"organ pipe", [](I k, I n, Random&) { return std::min(k, n - 1 - k); }},
      {"saw", [](I k, I, Random&) { return k % 17; }},
      {"nearly sorted", [](I k, I n, Random& r) { return below(r, 20) == 0 ? below(r, n) : k; }},
      {"extremes",
       [](I k, I, Random&) {
         return std::array{INT64_MIN, INT64_MAX, I{0}}[k % 3];
       }},
  };
  return all;
}

std::vector<std::int64_t> shaped(const Shape& shape, std::size_t count, Random& random) {
  std::vector<std::int64_t> values(count);
  for (std::size_t k = 0; k < count; ++k)
    values[k] = shape.value(static_cast<std::int64_t>(k), static_cast<std::int64_t>(count), random);
  return values;
}

template <typename Key, typename Index>
void expectWordSortLikePlainSort(const std::vector<std::int64_t>& values,
                                 std::vector<Index> indices) {
  std::vector<Key> keys(values.begin(), values.end());
  std::vector<Key> plainKeys = keys;
  std::vector<Index> plainIndices = indices;
  plainSort(plainKeys.data(), plainIndices.data(), 0, std::ssize(keys) - 1, threeWay<Key>);
  wordSort(keys.data(), indices.data(), keys.size());
  ASSERT_EQ(keys, plainKeys);
  ASSERT_EQ(indices, plainIndices);
}

// A value for each position such that the scheme's pivot is always the largest or nearly so: an
// answer is settled only when it is asked for, and always to the disadvantage of the pivot.
std::vector<std::int64_t> quadraticValues(std::uint32_t count) {
  const std::int64_t unsettled = count;
  std::vector<std::int64_t> values(count, unsettled);
  std::int64_t settled = 0;
  std::uint32_t candidate = 0;
  std::vector<std::uint32_t> objects = numbered(count);
  std::vector<std::uint32_t> indices = numbered(count);
  plainSort(objects.data(), indices.data(), 0, std::int64_t{count} - 1,
            [&](std::uint32_t a, std::uint32_t b) -> long {
              if (a != b && values[a] == unsettled && values[b] == unsettled) {
                values[a == candidate ? a : b] = settled++;
              }
              if (values[a] == unsettled) candidate = a;
              if (values[b] == unsettled) candidate = b;
              return threeWay(values[a], values[b]);
            });
  return values;
}

TEST(PlainSort, ComparesAndExchangesLikeTheRecursiveForm) {
  Random random(1);
  for (const Shape& shape : shapes()) {
    for (std::size_t count = 0; count < 120; ++count) {
      SCOPED_TRACE(std::string(shape.name) + " " + std::to_string(count));
      const std::vector<std::int64_t> values = shaped(shape, count, random);
      Trace expected, actual;
      // Every seventh answer is beyond +-1, which counts as "stop"; the recursive form may be used,
      // since stopping early never lets a scan pass the pivot's place.
      auto tracing = [&values](Trace& trace) {
        return [&values, &trace](std::uint32_t a, std::uint32_t b) {
          trace.emplace_back(a, b);
          return threeWay(values[a], values[b]) * ((a + b) % 7 == 0 ? 2 : 1);
        };
      };
      std::vector<std::uint32_t> objects = numbered(count), indices = objects;
      std::vector<std::uint32_t> expectedObjects = objects, expectedIndices = objects;
      auto recursiveCompare = tracing(expected);
      const int last = static_cast<int>(count) - 1;
      recursiveSort(expectedObjects.data(), expectedIndices.data(), 0, last, recursiveCompare);
      plainSort(objects.data(), indices.data(), 0, last, tracing(actual));
      ASSERT_EQ(objects, expectedObjects);
      ASSERT_EQ(indices, expectedIndices);
      ASSERT_EQ(actual, expected);
    }
  }
}

// Runs an order that contradicts itself; it must stay in its range, end, and lose nothing.
void expectSound(std::size_t count, const std::function<long(std::uint32_t, std::uint32_t)>& order,
                 bool unchanged = false) {
  constexpr std::uint32_t outside = 0xDEAD;
  constexpr std::size_t margin = 4;
  std::vector<std::uint32_t> objects(count + 2 * margin, outside);
  std::iota(objects.begin() + margin, objects.end() - margin, 0U);
  std::vector<std::uint32_t> indices = objects;
  const std::vector<std::uint32_t> before = objects;
  std::size_t comparisons = 0;
  const std::uint32_t* const first = objects.data() + margin;
  plainSort(objects.data(), indices.data(), margin, static_cast<std::int64_t>(margin + count) - 1,
            [&](const std::uint32_t& element, const std::uint32_t& pivot) {
              EXPECT_GE(&element, first);
              EXPECT_LT(&element, first + count);
              EXPECT_NE(pivot, outside);
              // Each partition scans its range at most twice, and both parts are smaller.
              if (++comparisons > count * (count + 3)) throw std::runtime_error("endless");
              return order(element, pivot);
            });
  EXPECT_EQ(objects, indices);
  if (!unchanged) {
    EXPECT_TRUE(std::equal(objects.begin(), objects.begin() + margin, before.begin()));
    std::sort(objects.begin() + margin, objects.end() - margin);
  }
  EXPECT_EQ(objects, before);
}

TEST(PlainSort, StaysSoundWhenTheOrderContradictsItself) {
  Random random(4);
  for (std::size_t count = 0; count <= 70; ++count) {
    SCOPED_TRACE(count);
    for (const long answer : {1L, -1L, 0L, 0x100000001L})
      expectSound(
          count, [=](auto, auto) { return answer; }, std::abs(answer) == 1);
    expectSound(count, [](auto a, auto b) { return a == b ? 1L : threeWay(a, b); });
    expectSound(count, [](auto a, auto b) { return a == b ? -1L : threeWay(b, a); });
    expectSound(count, [](auto a, auto b) { return static_cast<long>((a + 3 - b) % 3) - 1; });
    expectSound(count, [](auto a, auto b) { return a % 4 && b % 4 ? threeWay(a, b) : 1L; });
    expectSound(count, [](auto a, auto b) { return a % 4 && b % 4 ? threeWay(b, a) : 0L; });
    for (int round = 0; round < 20; ++round) {
      expectSound(count, [&](auto, auto) { return static_cast<long>(random() % 4) - 1; });
      expectSound(count, [&](auto, auto) { return random() % 20 == 0 ? -1L : 1L; });
      expectSound(count, [&](auto, auto) { return random() % 20 == 0 ? 1L : -1L; });
    }
  }
}

// The deepest nesting of parts is about half of the elements; the stack in use may not follow it.
void expectQuadraticButFlat(const std::vector<std::int64_t>& values) {
  std::vector<std::int64_t> objects = values;
  std::vector<std::uint32_t> indices = numbered(values.size());
  std::size_t comparisons = 0;
  std::uintptr_t lowest = ~std::uintptr_t{0}, highest = 0;
  plainSort(objects.data(), indices.data(), 0, std::ssize(values) - 1,
            [&](std::int64_t a, std::int64_t b) {
              ++comparisons;
              const volatile char here = 0;
              const auto at = reinterpret_cast<std::uintptr_t>(&here);
              lowest = std::min(lowest, at);
              highest = std::max(highest, at);
              return threeWay(a, b);
            });
  EXPECT_GT(comparisons, values.size() * values.size() / 8) << "the input is harmless";
  EXPECT_LT(highest - lowest, std::size_t{64} * 1024);
  std::vector<std::int64_t> sorted = values;
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(objects, sorted);
  for (std::size_t k = 0; k < values.size(); ++k) ASSERT_EQ(values[indices[k]], objects[k]);
}

TEST(PlainSort, QuadraticInputNeedsNoDeepStack) {
  Random random(6);
  // A quadratic number of steps, each of which sanitizers watch.
  constexpr std::uint32_t count = watchesAddresses || watchesThreads ? 5000 : 20000;
  expectQuadraticButFlat(quadraticValues(count));
  // The organ pipe splits off two elements at a time to the right, each time deferring them.
  expectQuadraticButFlat(shaped(shapes()[12], count, random));
}

std::vector<std::size_t> smallCountsAnd(std::initializer_list<std::size_t> larger) {
  std::vector<std::size_t> counts = numbered<std::size_t>(201);
  counts.insert(counts.end(), larger);
  return counts;
}

TEST(WordSort, MatchesPlainSort) {
  Random random(7);
  for (const Shape& shape : shapes()) {
    for (auto count : smallCountsAnd({255, 256, 511, 512, 513, 1000, 3001, 8192, 20000})) {
      SCOPED_TRACE(std::string(shape.name) + " " + std::to_string(count));
      const std::vector<std::int64_t> values = shaped(shape, count, random);
      expectWordSortLikePlainSort<std::int64_t>(values, numbered(count));
      expectWordSortLikePlainSort<std::uint64_t>(values, numbered<std::int32_t>(count));
      expectWordSortLikePlainSort<std::int32_t>(values, numbered<std::uint64_t>(count));
      expectWordSortLikePlainSort<std::uint32_t>(values, numbered<std::int64_t>(count));
      expectWordSortLikePlainSort<std::int8_t>(values, numbered(count));
    }
  }
  for (const std::size_t which : {0u, 1u, 2u, 3u, 4u, 5u}) {
    SCOPED_TRACE(shapes()[which].name);
    const std::vector<std::int64_t> values = shaped(shapes()[which], 300000, random);
    expectWordSortLikePlainSort<std::int64_t>(values, numbered(values.size()));
    expectWordSortLikePlainSort<std::int32_t>(values, numbered(values.size()));
  }
}

TEST(WordSort, KeysThatJustFitAWordWithTheirIndex) {
  Random random(10);
  for (const unsigned indexBits : {0u, 1u, 31u, 32u, 33u, 63u}) {
    for (const unsigned keyBits : {63 - indexBits, 64 - indexBits, 65 - indexBits}) {
      if (keyBits > 64) continue;
      SCOPED_TRACE(std::to_string(indexBits) + " " + std::to_string(keyBits));
      const std::uint64_t span = keyBits == 0 ? 0 : ~std::uint64_t{0} >> (64 - keyBits);
      std::vector<std::int64_t> values(400);
      std::vector<std::uint64_t> indices(400);
      for (std::size_t k = 0; k < 400; ++k) {
        // Few values, among them both ends of the span.
        values[k] = static_cast<std::int64_t>(span / 6 * (random() % 7) + 5);
        if (random() % 8 == 0) values[k] = static_cast<std::int64_t>(span + 5);
        indices[k] = indexBits == 0 ? 0 : random() >> (64 - indexBits);
      }
      expectWordSortLikePlainSort<std::int64_t>(values, indices);
      expectWordSortLikePlainSort<std::uint64_t>(values, indices);
    }
  }
}

// Inputs that make the scheme quadratic, with enough equal elements that it has to be followed.
TEST(WordSort, MatchesPlainSortOnQuadraticInput) {
  Random random(11);
  std::vector<std::vector<std::int64_t>> inputs;
  for (const std::uint32_t count : {2500u, 5000u, 12000u}) {
    const std::vector<std::int64_t> hard = quadraticValues(count);
    for (const std::int64_t divisor : {1, 2, 3, 7}) {
      inputs.push_back(hard);
      for (std::int64_t& value : inputs.back()) value /= divisor;
    }
    for (const std::int64_t noise : {10, 200}) {
      for (const auto& values : {shaped(shapes()[12], count, random), hard}) {
        inputs.push_back(values);
        for (std::int64_t& value : inputs.back()) {
          if (below(random, noise) == 0) value = below(random, count);
        }
      }
    }
  }
  for (std::size_t k = 0; k < inputs.size(); ++k) {
    SCOPED_TRACE(k);
    expectWordSortLikePlainSort<std::int64_t>(inputs[k], numbered(inputs[k].size()));
    // Too wide for one word, so that ranks stand in for the keys.
    for (std::int64_t& value : inputs[k]) value <<= 45;
    expectWordSortLikePlainSort<std::int64_t>(inputs[k], numbered(inputs[k].size()));
  }
}

struct Composite {
  std::uint64_t prefix;
  std::int64_t rest;
  auto operator<=>(const Composite&) const = default;
};

void expectKeyedSortLikePlainSort(const std::vector<Composite>& values) {
  const std::size_t count = values.size();
  // Indices that are not positions: the tie-breaker has to be asked in the caller's numbers.
  std::vector<std::int32_t> indices(count);
  for (std::size_t k = 0; k < count; ++k) indices[k] = -static_cast<std::int32_t>(k) - 1;
  std::vector<std::int32_t> plainIndices = indices;
  std::vector<Composite> plain = values;
  plainSort(plain.data(), plainIndices.data(), 0, std::ssize(values) - 1, threeWay<Composite>);
  std::vector<std::uint64_t> keys;
  for (const Composite& value : values) keys.push_back(value.prefix);
  std::size_t ties = 0;
  keyedSort(keys.data(), indices.data(), count, [&](std::int32_t a, std::int32_t b) {
    ++ties;
    const Composite& x = values[static_cast<std::size_t>(-a - 1)];
    const Composite& y = values[static_cast<std::size_t>(-b - 1)];
    EXPECT_EQ(x.prefix, y.prefix);
    EXPECT_NE(a, b);
    return static_cast<int>(threeWay(x.rest, y.rest));
  });
  ASSERT_EQ(indices, plainIndices);
  for (std::size_t k = 0; k < count; ++k) ASSERT_EQ(keys[k], plain[k].prefix);
  if (count > 200) {
    const double most = static_cast<double>(count) * (std::log2(static_cast<double>(count)) + 3);
    EXPECT_LE(static_cast<double>(ties), most);
  }
}

TEST(KeyedSort, MatchesPlainSort) {
  Random random(13);
  for (const Shape& shape : shapes()) {
    for (const std::size_t count : smallCountsAnd({511, 512, 2000, 8000})) {
      SCOPED_TRACE(std::string(shape.name) + " " + std::to_string(count));
      const std::vector<std::int64_t> shapedValues = shaped(shape, count, random);
      std::vector<Composite> distinct(count), tied(count), refined(count), split(count);
      for (std::size_t k = 0; k < count; ++k) {
        const std::int64_t value = shapedValues[k];
        distinct[k] = {sortKey(value), below(random, 1 << 30)};
        tied[k] = {7, value};
        refined[k] = {random() % 5 << 61, value};
        split[k] = {sortKey(value) >> 2, value & 3};
      }
      for (const auto& values : {distinct, tied, refined, split})
        expectKeyedSortLikePlainSort(values);
    }
  }
}

// Keys that differ in scattered bits only, around the number of bits that fit a word with the
// index.
TEST(KeyedSort, MatchesPlainSortForKeysWithScatteredBits) {
  Random random(15);
  for (int bits = 0; bits <= 64; ++bits) {
    SCOPED_TRACE(bits);
    std::uint64_t mask = 0;
    while (std::popcount(mask) < bits) mask |= std::uint64_t{1} << random() % 64;
    const std::uint64_t common = random() & ~mask;
    std::vector<Composite> values(600);
    for (Composite& value : values) value = {common | (random() & mask), below(random, 3)};
    // Half of the keys occur again, and all the bits vary.
    for (std::size_t k = 0; k < 300; ++k) values[2 * k].prefix = values[k].prefix;
    values[7].prefix = common;
    values[8].prefix = common | mask;
    std::vector<std::uint64_t> keys;
    for (const Composite& value : values) keys.push_back(value.prefix);
    const KeySqueeze squeeze(keys.data(), keys.size());
    ASSERT_EQ(squeeze.bits(), static_cast<unsigned>(bits));
    for (std::size_t k = 1; k < keys.size(); ++k) {
      ASSERT_EQ(threeWay(squeeze(keys[k - 1]), squeeze(keys[k])), threeWay(keys[k - 1], keys[k]));
      ASSERT_LE(std::bit_width(squeeze(keys[k])), static_cast<unsigned>(bits));
    }
    expectKeyedSortLikePlainSort(values);
  }
}

TEST(KeyedSort, ContradictoryAndThrowingTiesLoseNothing) {
  Random random(14);
  for (const std::size_t count : {2u, 20u, 32u, 33u, 300u, 2000u}) {
    std::vector<std::uint64_t> values(count);
    for (std::uint64_t& value : values) value = random() % 4;
    using Tie = std::function<long(std::uint32_t, std::uint32_t)>;
    const std::vector<Tie> ties = {
        [](auto, auto) { return 1L; },
        [](auto, auto) { return -1L; },
        [&](auto, auto) { return static_cast<long>(random() % 5) - 2; },
        [](auto a, auto b) { return static_cast<long>((a + 3 - b % 3) % 3) - 1; },
    };
    for (const Tie& tie : ties) {
      std::vector<std::uint64_t> keys = values;
      std::vector<std::uint32_t> indices = numbered(count);
      keyedSort(keys.data(), indices.data(), count, tie);
      EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
      for (std::size_t k = 0; k < count; ++k) ASSERT_EQ(values[indices[k]], keys[k]);
      std::sort(indices.begin(), indices.end());
      EXPECT_EQ(indices, numbered(count));
    }
    if (count < 20) continue;
    std::vector<std::uint64_t> keys = values;
    std::vector<std::uint32_t> indices = numbered(count);
    std::size_t asked = 0;
    EXPECT_THROW(keyedSort(keys.data(), indices.data(), count,
                           [&](auto a, auto b) {
                             if (++asked == count / 2) throw std::runtime_error("enough");
                             return threeWay(a, b);
                           }),
                 std::runtime_error);
    EXPECT_EQ(keys, values);
    EXPECT_EQ(indices, numbered(count));
  }
}

TEST(SortKeys, NumbersKeepTheirOrderAboveNaN) {
  using Limits = std::numeric_limits<double>;
  const double nan = Limits::quiet_NaN();
  std::vector<double> values = {nan, -nan, std::bit_cast<double>(~0ull), 0.0, -0.0, -1.5};
  for (const double each : {Limits::infinity(), Limits::max(), Limits::min(), Limits::denorm_min(),
                            1.0, std::nextafter(1.0, 2.0)}) {
    values.insert(values.end(), {each, -each});
  }
  for (const double x : values) {
    for (const double y : values) {
      const long nans = long{std::isnan(y)} - long{std::isnan(x)};
      EXPECT_EQ(threeWay(sortKey(x), sortKey(y)), nans != 0 ? nans : threeWay(x, y));
    }
  }
}

}  // namespace
}  // namespace qz::detail
