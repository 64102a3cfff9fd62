// Making, sharing and letting go of Objects.
#include <memory>

#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"
#include "bench/support/People.h"
#include "bench/support/Plain.h"

namespace qz::bench {
namespace {

void makeAndRelease(benchmark::State& state) {
  for (auto _ : state) {
    Person* person = new Person(36);
    benchmark::DoNotOptimize(person);
    release(person);
  }
}

// The compiler forgets the class between the two, so that the destructor call stays virtual.
void newAndDelete(benchmark::State& state) {
  for (auto _ : state) {
    plain::Object* person = new plain::Person(36);
    benchmark::DoNotOptimize(person);
    delete person;
  }
}

void makeManyAndRelease(benchmark::State& state) {
  std::vector<Ref<NSObject>> people(visited);
  for (auto _ : state) {
    for (Ref<NSObject>& person : people) person = make<Person>(36);
    benchmark::ClobberMemory();
    for (Ref<NSObject>& person : people) person = nullptr;
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(visited));
}

void newManyAndDelete(benchmark::State& state) {
  std::vector<std::unique_ptr<plain::Object>> people(visited);
  for (auto _ : state) {
    for (auto& person : people) person = std::make_unique<plain::Person>(36);
    benchmark::ClobberMemory();
    for (auto& person : people) person = nullptr;
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(visited));
}

// Each has another owner all the while, so the count never comes down to the last.
template <class Handles>
void copyEach(benchmark::State& state, const Handles& handles) {
  for (auto _ : state) {
    for (const auto& handle : handles) {
      auto copy = handle;
      benchmark::DoNotOptimize(copy);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(handles.size()));
}

const auto ages = randomInts(visited, 100);

void retainAndRelease(benchmark::State& state) { copyEach(state, makePeople(ages)); }
void intrusiveCount(benchmark::State& state) { copyEach(state, plain::makePeople(ages)); }

void sharedPointer(benchmark::State& state) {
  std::vector<std::shared_ptr<plain::Person>> people;
  for (const std::int32_t age : ages) people.push_back(std::make_shared<plain::Person>(age));
  copyEach(state, people);
}

}  // namespace

void compareObjects() {
  compare("MakeObject", {"create and destroy an Object", "new and virtual delete", 1.3},
          &makeAndRelease, &newAndDelete);
  compare("MakeManyObjects",
          {"create 1024 Objects, then destroy them (each)", "new and virtual delete", 1.3},
          &makeManyAndRelease, &newManyAndDelete);
  compare("RetainRelease", {"retain and release", "intrusive atomic count", 1.0}, &retainAndRelease,
          &intrusiveCount);
  compare("RetainReleaseShared", {"retain and release", "copy of a std::shared_ptr", 0},
          &retainAndRelease, &sharedPointer);
}

}  // namespace qz::bench
