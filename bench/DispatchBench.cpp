// Operations named at run time, beside virtual calls over the same pattern of classes.
#include <array>
#include <string_view>
#include <unordered_map>

#include "Platform/Runtime/Send.h"
#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"
#include "bench/support/People.h"
#include "bench/support/Plain.h"

namespace qz::bench {
namespace {

const auto ages = randomInts(visited, 100);

/// Calls `visit` with each Object in turn, and adds up what it answers.
template <class Objects, class Visit>
void visitAll(benchmark::State& state, const Objects& objects, Visit visit) {
  for (auto _ : state) {
    std::int64_t sum = 0;
    for (const auto& object : objects) sum += visit(object.get());
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(objects.size()));
}

template <auto Make>
void sendAge(benchmark::State& state) {
  visitAll(state, Make(ages), [](Person* person) { return send<int>(person, "age"_sel); });
}

template <auto Make>
void callAge(benchmark::State& state) {
  visitAll(state, Make(ages), [](plain::Person* person) { return person->age(); });
}

template <auto Make>
void performCompare(benchmark::State& state) {
  auto other = make<Person>(50);
  visitAll(state, Make(ages), [&other](Person* person) {
    return static_cast<std::int32_t>(
        person->performSelector_withObject("compareByAge:"_sel, other).word());
  });
}

template <auto Make>
void callCompare(benchmark::State& state) {
  plain::Person other(50);
  visitAll(state, Make(ages),
           [&other](plain::Person* person) { return person->compareByAge(other); });
}

void callImplementation(benchmark::State& state) {
  const People people = makePeople(ages);
  const Implementation age = people[0]->methodForSelector("age"_sel);
  visitAll(state, people, [&age](Person* person) { return age.call<int>(person); });
}

// Half of the names belong to operations that a Person has.
constexpr std::array<std::string_view, 16> names{
    "age",       "setAge:", "employer",     "compareByAge:",  "description", "hash",
    "isEqual:",  "copy",    "characterAt:", "count",          "lastObject",  "objectForKey:",
    "allValues", "length",  "doubleValue",  "lowercaseString"};

void respondsToSelector(benchmark::State& state) {
  const People people = makePeople(ages);
  std::array<Selector, names.size()> selectors;
  for (std::size_t i = 0; i < names.size(); ++i) selectors[i] = Selector::named(names[i]);
  std::size_t i = 0;
  visitAll(state, people, [&](Person* person) {
    return person->respondsToSelector(selectors[i++ % selectors.size()]) ? 1 : 0;
  });
}

void findInMap(benchmark::State& state) {
  const plain::People people = plain::makePeople(ages);
  std::unordered_map<std::string_view, Selector> operations;
  for (const Class* aClass = classOf<Person>(); aClass != nullptr;
       aClass = aClass->superclassObject())
    for (const Selector selector : aClass->instanceSelectors())
      operations[selector.name()] = selector;
  std::size_t i = 0;
  visitAll(state, people, [&](plain::Person*) {
    return operations.find(names[i++ % names.size()]) != operations.end() ? 1 : 0;
  });
}

}  // namespace

void compareDispatch() {
  compare("SendOneClass", {"send by Selector, one class", "virtual call", 2}, &sendAge<&makePeople>,
          &callAge<&plain::makePeople>);
  compare("SendEightClasses",
          {"send by Selector, eight classes at random", "virtual call, the same classes", 1.5},
          &sendAge<&makeMixedPeople>, &callAge<&plain::makeMixedPeople>);
  compare("PerformOneClass", {"performSelector_withObject, one class", "virtual call", 2},
          &performCompare<&makePeople>, &callCompare<&plain::makePeople>);
  compare("PerformEightClasses",
          {"performSelector_withObject, eight classes at random", "virtual call, the same classes",
           1.5},
          &performCompare<&makeMixedPeople>, &callCompare<&plain::makeMixedPeople>);
  compare("MethodForSelector", {"call through methodForSelector", "virtual call", 1.3},
          &callImplementation, &callAge<&plain::makePeople>);
  compare("RespondsToSelector",
          {"respondsToSelector", "find in unordered_map of the operations' names", 0.3},
          &respondsToSelector, &findInMap);
}

}  // namespace qz::bench
