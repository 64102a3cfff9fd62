// Arrays asked by key path and by Selector, and delimited text read into Objects.
#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/QZFoundation.h"
#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"
#include "bench/support/People.h"
#include "bench/support/Plain.h"
#include "bench/support/Texts.h"

namespace qz::bench {
namespace {

constexpr std::size_t searched = 100'000;
constexpr std::int32_t oldest = 1'000'000;  // every other one is an adult, at random

// Ages that are all different, in order, so that the last one is found last.
std::vector<std::int32_t> risingAges(std::size_t count) {
  std::vector<std::int32_t> ages(count);
  for (std::size_t i = 0; i < count; ++i) ages[i] = 10'000 + 2 * static_cast<std::int32_t>(i);
  return ages;
}

// Made once: a million people take a second.
NSArray* manyPeople() {
  static const auto people = NSArray::fromRange(makePeople(randomInts(million, oldest)));
  return people;
}
const plain::People& manyPlainPeople() {
  static const auto people = plain::makePeople(randomInts(million, oldest));
  return people;
}

void indexByKeyPath(benchmark::State& state) {
  const auto people = NSArray::fromRange(makePeople(risingAges(searched)));
  const auto last = NSNumber::numberWithInt(risingAges(searched).back());
  for (auto _ : state)
    benchmark::DoNotOptimize(indexOfObjectMatchingValue_forKeyPath(people, last, "age"_ns));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(searched));
}

void indexByGetter(benchmark::State& state) {
  const auto people = plain::makePeople(risingAges(searched));
  const std::int32_t last = risingAges(searched).back();
  for (auto _ : state) {
    auto found = std::ranges::find_if(people, [=](auto& each) { return each->age() == last; });
    benchmark::DoNotOptimize(found);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(searched));
}

void filterBySelector(benchmark::State& state) {
  for (auto _ : state) {
    auto adults = arrayByFilteringWithSelector(manyPeople(), "isAdult"_sel);
    benchmark::DoNotOptimize(adults);
  }
}

void filterByCopyIf(benchmark::State& state) {
  for (auto _ : state) {
    plain::People adults;
    std::ranges::copy_if(manyPlainPeople(), std::back_inserter(adults),
                         [](const auto& each) { return each->isAdult(); });
    benchmark::DoNotOptimize(adults);
  }
}

void mapBySelector(benchmark::State& state) {
  for (auto _ : state) {
    auto employers = arrayByPerformingSelector(manyPeople(), "employer"_sel);
    benchmark::DoNotOptimize(employers);
  }
}

void mapByTransform(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<plain::Handle<plain::Company>> employers;
    employers.reserve(million);
    std::ranges::transform(manyPlainPeople(), std::back_inserter(employers),
                           [](const auto& each) { return each->employer(); });
    benchmark::DoNotOptimize(employers);
  }
}

void searchSorted(benchmark::State& state) {
  static const auto people = NSArray::fromRange(makePeople(risingAges(million)));
  const auto sought = makePeople(randomInts(visited, static_cast<std::int32_t>(2 * million)));
  for (auto _ : state)
    for (const auto& each : sought)
      benchmark::DoNotOptimize(
          indexOfObject_inArraySortedUsingSelector(people, each, "compareByAge:"_sel));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(visited));
}

void searchByLowerBound(benchmark::State& state) {
  static const auto people = plain::makePeople(risingAges(million));
  const auto sought =
      plain::makePeople(randomInts(visited, static_cast<std::int32_t>(2 * million)));
  for (auto _ : state)
    for (const auto& each : sought) {
      auto found = std::ranges::lower_bound(
          people, each, [](const auto& a, const auto& b) { return a->compareByAge(*b) < 0; });
      benchmark::DoNotOptimize(found);
    }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(visited));
}

// Delimited text.

class Record : public Derives<Record, NSObject> {
 public:
  static void describe(ClassDescription<Record>& is) {
    is.named("BenchRecord")
        .field<&Record::name>("name")
        .field<&Record::version>("version")
        .field<&Record::section>("section");
  }
  Ref<NSString> name;
  Ref<NSString> version;
  Ref<NSString> section;
};

void readRecords(benchmark::State& state) {
  const auto text = NSString::stringWithUTF8String(recordText());
  const auto keys = NSArray::arrayWithObjects({"name"_ns, "version"_ns, "section"_ns});
  for (auto _ : state) {
    auto records = arrayWithDelimitedText_objectDelimiter_fieldDelimiter_keys_objectClass(
        text, "\n"_ns, "\t"_ns, keys, classOf<Record>());
    benchmark::DoNotOptimize(records);
  }
}

class PlainRecord : public plain::Object {
 public:
  virtual const std::u16string& title() const { return name; }
  std::u16string name;
  std::u16string version;
  std::u16string section;
};

void splitRecords(benchmark::State& state) {
  const std::u16string text = widened(recordText());
  for (auto _ : state) {
    std::vector<std::unique_ptr<PlainRecord>> records;
    std::u16string_view rest = text;
    const auto field = [](std::u16string_view& record) {
      const std::size_t end = record.find(u'\t');
      std::u16string value(record.substr(0, end));
      record.remove_prefix(end + 1);
      return value;
    };
    for (std::size_t end; (end = rest.find(u'\n')) != std::u16string_view::npos;) {
      std::u16string_view record = rest.substr(0, end);
      auto object = std::make_unique<PlainRecord>();
      object->name = field(record);
      object->version = field(record);
      object->section = field(record);
      records.push_back(std::move(object));
      rest.remove_prefix(end + 1);
    }
    benchmark::DoNotOptimize(records);
  }
}

void indexByText(benchmark::State& state) {
  std::vector<Ref<Record>> records;
  for (const std::string& name : randomNames(searched)) {
    records.push_back(make<Record>());
    records.back()->name = NSString::stringWithUTF8String(name);
  }
  const auto array = NSArray::fromRange(records);
  const auto last = NSString::stringWithUTF8String(randomNames(searched).back());
  for (auto _ : state)
    benchmark::DoNotOptimize(indexOfObjectMatchingValue_forKeyPath(array, last, "name"_ns));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(searched));
}

void indexByTextGetter(benchmark::State& state) {
  std::vector<std::unique_ptr<PlainRecord>> records;
  for (const std::string& name : randomNames(searched)) {
    records.push_back(std::make_unique<PlainRecord>());
    records.back()->name = widened(name);
  }
  const std::u16string last = records.back()->name;
  for (auto _ : state) {
    auto found = std::ranges::find_if(records, [&](auto& each) { return each->title() == last; });
    benchmark::DoNotOptimize(found);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(searched));
}

}  // namespace

void compareArrays() {
  compare("MatchByKeyPath",
          {"indexOfObjectMatchingValue:forKeyPath: of an int, each of 100,000 Objects",
           "loop with virtual getter and compare", 5},
          &indexByKeyPath, &indexByGetter);
  compare("MatchTextByKeyPath",
          {"indexOfObjectMatchingValue:forKeyPath: of a String, each of 100,000 Objects",
           "loop with virtual getter and compare", 5},
          &indexByText, &indexByTextGetter);
  compare(
      "FilterBySelector",
      {"arrayByFilteringWithSelector:, 1,000,000 Objects", "std::copy_if with a virtual call", 1.5},
      &filterBySelector, &filterByCopyIf);
  compare(
      "MapBySelector",
      {"arrayByPerformingSelector:, 1,000,000 Objects", "std::transform with a virtual call", 1.5},
      &mapBySelector, &mapByTransform);
  compare("SortedSearch",
          {"indexOfObject:inArraySortedUsingSelector:, one of 1,000,000",
           "std::lower_bound with a virtual compare", 1.2},
          &searchSorted, &searchByLowerBound);
  compare("DelimitedText",
          {"20 MB of delimited records into Objects with three keys",
           "hand-written split into heap objects with three u16string", 0.8},
          &readRecords, &splitRecords);
}

}  // namespace qz::bench
