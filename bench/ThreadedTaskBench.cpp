// What reporting progress costs the work.
#include <mutex>

#include "Platform/Concurrency/NSRunLoop.h"
#include "QZFoundation/QZThreadedTask.h"
#include "bench/support/Comparison.h"
#include "bench/support/Families.h"

namespace qz::bench {
namespace {

void updatePercent(benchmark::State& state) {
  auto task = make<QZThreadedTask>();
  float percent = 0;
  for (auto _ : state) task->updatePercentComplete(percent += 1);
  while (NSRunLoop::mainRunLoop()->runPending()) {
  }
}

void lockAndUnlock(benchmark::State& state) {
  std::mutex mutex;
  for (auto _ : state) {
    mutex.lock();
    benchmark::ClobberMemory();
    mutex.unlock();
  }
}

}  // namespace

void compareThreadedTask() {
  compare(
      "UpdatePercentComplete",
      {"updatePercentComplete: between two turns of the main thread", "lock and unlock a mutex", 2},
      &updatePercent, &lockAndUnlock);
}

}  // namespace qz::bench
