// Boost.Signals2: a signal with the new value.
#include <boost/signals2.hpp>

#include "bench/support/Comparison.h"
#include "bench/support/Families.h"

namespace qz::bench {
namespace {

void emitToOne(benchmark::State& state) {
  boost::signals2::signal<void(int)> changed;
  changed.connect([](int degrees) { benchmark::DoNotOptimize(degrees); });
  int value = 0;
  for (auto _ : state) changed(++value);
}

void connectAndDisconnect(benchmark::State& state) {
  boost::signals2::signal<void(int)> changed;
  for (auto _ : state) changed.connect([](int) {}).disconnect();
}

}  // namespace

void compareBoostObserving() {
  comparePeer("TellObserver", "Boost, no Dictionary", &emitToOne);
  comparePeer("AddAndRemoveObserver", "Boost", &connectAndDisconnect);
}

}  // namespace qz::bench
