// Values read and written by key, beside the accessors themselves.
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"
#include "bench/support/People.h"
#include "bench/support/Plain.h"

namespace qz::bench {
namespace {

const auto smallInts = randomInts(visited, 100);  // of these a Number exists already
const auto largeInts = [] {
  auto values = randomInts(visited, 1'000'000'000);
  for (std::int32_t& value : values) value += 100'000;
  return values;
}();

template <class Objects, class Visit>
void visitAll(benchmark::State& state, const Objects& objects, Visit visit) {
  for (auto _ : state)
    for (const auto& object : objects) visit(object.get());
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(objects.size()));
}

template <const std::vector<std::int32_t>& ages>
void valueForKey(benchmark::State& state) {
  visitAll(state, makePeople(ages), [](Person* person) {
    Ref<NSObject> age = person->valueForKey("age"_ns);
    benchmark::DoNotOptimize(age);
  });
}

void getter(benchmark::State& state) {
  visitAll(state, plain::makePeople(largeInts), [](plain::Person* person) {
    int age = person->age();
    benchmark::DoNotOptimize(age);
  });
}

void setValueForKey(benchmark::State& state) {
  auto age = NSNumber::numberWithInt(largeInts[0]);
  visitAll(state, makePeople(largeInts),
           [&age](Person* person) { person->setValue_forKey(age, "age"_ns); });
}

void setter(benchmark::State& state) {
  int age = largeInts[0];
  benchmark::DoNotOptimize(age);
  visitAll(state, plain::makePeople(largeInts),
           [age](plain::Person* person) { person->setAge(age); });
}

void valueForKeyPath(benchmark::State& state) {
  visitAll(state, makePeople(largeInts), [](Person* person) {
    Ref<NSObject> zip = person->valueForKeyPath("employer.address.zip"_ns);
    benchmark::DoNotOptimize(zip);
  });
}

void threeGetters(benchmark::State& state) {
  visitAll(state, plain::makePeople(largeInts), [](plain::Person* person) {
    int zip = person->employer()->address()->zip();
    benchmark::DoNotOptimize(zip);
  });
}

}  // namespace

void compareKeyValueAccess() {
  compare("ValueForKey", {"valueForKey of an int, a new Number", "virtual getter", 8},
          &valueForKey<largeInts>, &getter);
  compare("ValueForKeyShared", {"valueForKey of an int, a shared Number", "virtual getter", 8},
          &valueForKey<smallInts>, &getter);
  compare("SetValueForKey", {"setValue_forKey of an int", "virtual setter", 8}, &setValueForKey,
          &setter);
  compare("ValueForKeyPath",
          {"valueForKeyPath of three steps", "three virtual getters, two of owning handles", 12},
          &valueForKeyPath, &threeGetters);
}

}  // namespace qz::bench
