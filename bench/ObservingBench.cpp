// What observing costs those who are observed, and those who are not.
#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSKeyValueObserving.h"
#include "Platform/Values/NSString.h"
#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"
#include "bench/support/Observing.h"
#include "bench/support/Plain.h"

namespace qz::bench {
namespace {

class Thermometer : public Derives<Thermometer, NSObject> {
 public:
  static void describe(ClassDescription<Thermometer>& is) {
    is.named("QZBenchThermometer")
        .property<&Thermometer::degrees, &Thermometer::setDegrees>("degrees");
  }
  int degrees() const { return degrees_; }
  [[gnu::noinline]] virtual void setDegrees(int degrees) {
    KeyValueChange changing(this, "degrees"_ns);
    degrees_ = degrees;
  }

 private:
  int degrees_ = 0;
};

class Reader : public Derives<Reader, NSObject> {
 public:
  static void describe(ClassDescription<Reader>& is) { is.named("QZBenchReader"); }
  void observeValueForKeyPath_ofObject_change_context(NSString*, NSObject*, NSDictionary* change,
                                                      void*) override {
    Ref<NSObject> now = change->objectForKey(NSKeyValueChangeNewKey);
    benchmark::DoNotOptimize(now);
  }
};

template <class Object, class Visit>
void visitAll(benchmark::State& state, const std::vector<Object>& objects, Visit visit) {
  for (auto _ : state) {
    int value = 0;
    for (const auto& object : objects) visit(object.get(), ++value);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(objects.size()));
}

void guardedSetter(benchmark::State& state) {
  std::vector<Ref<Thermometer>> all;
  for (std::size_t i = 0; i < visited; ++i) all.push_back(make<Thermometer>());
  visitAll(state, all, [](Thermometer* each, int value) { each->setDegrees(value); });
}

void plainSetter(benchmark::State& state) {
  visitAll(state, plain::makePeople(randomInts(visited, 100)),
           [](plain::Person* each, int value) { each->setAge(value); });
}

void functionTold(benchmark::State& state) {
  auto thermometer = make<Thermometer>();
  int sum = 0;
  auto token = observe<int>(thermometer, "degrees"_ns, [&](int, int now) { sum += now; });
  int value = 1000;
  for (auto _ : state) thermometer->setDegrees(++value);
  benchmark::DoNotOptimize(sum);
}

void callFunction(benchmark::State& state) {
  int sum = 0;
  int degrees = 0;
  std::function<void(int, int)> told = [&](int, int now) { sum += now; };
  benchmark::DoNotOptimize(told);
  for (auto _ : state) {
    const int before = degrees++;
    told(before, degrees);
  }
  benchmark::DoNotOptimize(sum);
}

}  // namespace

void observerToldWithDictionary(benchmark::State& state) {
  auto thermometer = make<Thermometer>();
  auto reader = make<Reader>();
  thermometer->addObserver_forKeyPath_options_context(
      reader, "degrees"_ns, NSKeyValueObservingOptionOld | NSKeyValueObservingOptionNew, nullptr);
  int value = 1000;  // beyond the Numbers that exist already
  for (auto _ : state) thermometer->setDegrees(++value);
}

void addAndRemoveObserver(benchmark::State& state) {
  auto thermometer = make<Thermometer>();
  auto reader = make<Reader>();
  for (auto _ : state) {
    thermometer->addObserver_forKeyPath_options_context(reader, "degrees"_ns, 0, nullptr);
    thermometer->removeObserver_forKeyPath(reader, "degrees"_ns);
  }
}

void compareObserving() {
  compare("SetUnobserved",
          {"a setter with a change guard, nobody observing", "virtual setter", 1.5}, &guardedSetter,
          &plainSetter);
  compare("TellFunction",
          {"set, and a function told the old and the new value", "call a std::function", 0},
          &functionTold, &callFunction);
}

}  // namespace qz::bench
