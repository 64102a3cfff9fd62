// Large Arrays of small Objects.
#include <memory>
#include <ranges>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Values/NSNumber.h"
#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"
#include "bench/support/Plain.h"

namespace qz::bench {
namespace {

constexpr std::int32_t firstInt = 100'000;  // beyond the shared Numbers: each is an Object

Ref<NSArray> numbers(std::size_t count) {
  return NSArray::fromRange(std::views::iota(firstInt, firstInt + static_cast<int>(count)) |
                            std::views::transform(&NSNumber::numberWithInt));
}

Ref<NSMutableArray> numbersAdded(std::size_t count) {
  auto array = NSMutableArray::arrayWithCapacity(static_cast<std::uint32_t>(count));
  for (std::size_t i = 0; i < count; ++i)
    array->addObject(NSNumber::numberWithInt(firstInt + static_cast<int>(i)));
  return array;
}

using Values = std::vector<std::unique_ptr<plain::Value>>;

Values values(std::size_t count) {
  Values all;
  all.reserve(count);
  for (std::size_t i = 0; i < count; ++i)
    all.push_back(std::make_unique<plain::Int>(firstInt + static_cast<int>(i)));
  return all;
}

template <auto Make>
void makeAndDestroy(benchmark::State& state) {
  for (auto _ : state) {
    auto all = Make(million);
    benchmark::DoNotOptimize(all);
  }
}

template <auto Make>
void makeAndKeep(std::size_t count) {
  using All = decltype(Make(count));
  new All(Make(count));
}

}  // namespace

void compareCollections() {
  compare("BoxedInts",
          {"Array of 1,000,000 boxed ints, built from a range and destroyed",
           "vector of unique_ptr to a base", 0.15},
          &makeAndDestroy<&numbers>, &makeAndDestroy<&values>);
  compare("BoxedIntsAdded",
          {"MutableArray of 1,000,000 boxed ints, added one by one and destroyed",
           "vector of unique_ptr to a base", 0},
          &makeAndDestroy<&numbersAdded>, &makeAndDestroy<&values>);
  compareMemory("BoxedInts",
                {"bytes for each of 1,000,000 boxed ints in an Array, slot included",
                 "vector of unique_ptr to a base", million, 32},
                &makeAndKeep<&numbers>, &makeAndKeep<&values>);
}

}  // namespace qz::bench
