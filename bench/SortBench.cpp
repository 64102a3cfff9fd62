// Sorting into a map, beside std::sort of the values themselves.
#include <algorithm>
#include <string>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/NSArray-QZIndexMap.h"
#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"
#include "bench/support/People.h"
#include "bench/support/Plain.h"

namespace qz::bench {
namespace {

constexpr std::size_t manyNumbers = 1'000'000;
constexpr std::size_t manyObjects = 100'000;

Ref<NSArray> boxed(const std::vector<std::int32_t>& values) {
  std::vector<Ref<NSNumber>> numbers;
  for (const std::int32_t value : values) numbers.push_back(NSNumber::numberWithInt(value));
  return NSArray::fromRange(numbers);
}

Ref<NSArray> boxed(const std::vector<std::string>& values) {
  std::vector<Ref<NSString>> strings;
  for (const std::string& value : values) strings.push_back(NSString::stringWithUTF8String(value));
  return NSArray::fromRange(strings);
}

void sortMap(benchmark::State& state, NSArray* array) {
  for (auto _ : state) {
    Ref<QZIndexMap> map = sortMapUsingSelector(array, "compare:"_sel);
    benchmark::DoNotOptimize(map);
  }
}

/// Sorts a fresh copy each time; making it is not measured.
template <class T, class Less>
void sortCopies(benchmark::State& state, const std::vector<T>& values, Less less) {
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<T> copy = values;
    state.ResumeTiming();
    std::sort(copy.begin(), copy.end(), less);
    benchmark::ClobberMemory();
    state.PauseTiming();
    copy = {};
    state.ResumeTiming();
  }
}

void sortNumbers(benchmark::State& state) { sortMap(state, boxed(anyInts(manyNumbers))); }
void sortRawInts(benchmark::State& state) {
  sortCopies(state, anyInts(manyNumbers), std::less<>());
}

template <auto Texts>
void sortStrings(benchmark::State& state) {
  sortMap(state, boxed(Texts(manyObjects)));
}
template <auto Texts>
void sortRawStrings(benchmark::State& state) {
  std::vector<std::u16string> texts;
  for (const std::string& text : Texts(manyObjects)) texts.push_back(widened(text));
  sortCopies(state, texts, std::less<>());
}

void sortPeople(benchmark::State& state) {
  const People people = makePeople(anyInts(manyObjects));
  Ref<NSArray> array = NSArray::fromRange(people);
  for (auto _ : state) {
    Ref<QZIndexMap> map = sortMapUsingKeyPath(array, "age"_ns);
    benchmark::DoNotOptimize(map);
  }
}
void sortPlainPeople(benchmark::State& state) {
  const plain::People people = plain::makePeople(anyInts(manyObjects));
  std::vector<plain::Person*> pointers;
  for (const auto& person : people) pointers.push_back(person.get());
  sortCopies(state, pointers,
             [](const plain::Person* a, const plain::Person* b) { return a->age() < b->age(); });
}

}  // namespace

void compareSorting() {
  compare(
      "SortNumbers",
      {"sortMapUsingSelector compare:, 1,000,000 random Numbers", "std::sort of the raw ints", 1.2},
      &sortNumbers, &sortRawInts);
  compare("SortStrings",
          {"sortMapUsingSelector compare:, 100,000 Strings (random names)",
           "std::sort of std::u16string", 0.8},
          &sortStrings<&randomNames>, &sortRawStrings<&randomNames>);
  compare("SortPaths",
          {"sortMapUsingSelector compare:, 100,000 Strings (file paths)",
           "std::sort of std::u16string", 0.8},
          &sortStrings<&randomPaths>, &sortRawStrings<&randomPaths>);
  compare("SortByKeyPath",
          {"sortMapUsingKeyPath, 100,000 Objects by an int",
           "std::sort of pointers with a virtual getter", 0.5},
          &sortPeople, &sortPlainPeople);
}

}  // namespace qz::bench
