// Notifications, and work handed from thread to thread.
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "Platform/Concurrency/NSNotificationCenter.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Values/NSString.h"
#include "bench/support/Comparison.h"
#include "bench/support/Families.h"
#include "bench/support/Servers.h"

namespace qz::bench {
namespace {

class Listener : public Derives<Listener, NSObject> {
 public:
  static void describe(ClassDescription<Listener>& is) {
    is.named("BenchListener").method<&Listener::hear>("hear:");
  }
  void hear(NSNotification*) { ++heard; }
  std::int64_t heard = 0;
};

constexpr int names = 1000;

void postNotification(benchmark::State& state) {
  auto center = make<NSNotificationCenter>();
  std::vector<Ref<Listener>> listeners;
  std::vector<Ref<NSString>> texts;
  for (int i = 0; i < names; ++i) {
    texts.push_back(NSString::stringWithFormat("SomethingDidChange%dNotification"_ns, i));
    listeners.push_back(make<Listener>());
    center->addObserver_selector_name_object(listeners.back(), "hear:"_sel, texts.back(), nullptr);
  }
  std::size_t i = 0;
  for (auto _ : state) {
    center->postNotificationName_object(texts[i], nullptr);
    i = (i + 7) % names;
  }
}

void callThroughMap(benchmark::State& state) {
  std::unordered_map<std::string, std::function<void(const std::string&)>> functions;
  std::vector<std::string> texts;
  std::int64_t heard = 0;
  for (int i = 0; i < names; ++i) {
    texts.push_back("SomethingDidChange" + std::to_string(i) + "Notification");
    functions[texts.back()] = [&heard](const std::string&) { ++heard; };
  }
  std::size_t i = 0;
  for (auto _ : state) {
    functions.find(texts[i])->second(texts[i]);
    benchmark::DoNotOptimize(heard);
    i = (i + 7) % names;
  }
}

void addAndRemoveObserver(benchmark::State& state) {
  auto center = make<NSNotificationCenter>();
  auto listener = make<Listener>();
  for (auto _ : state) {
    center->addObserver_selector_name_object(listener, "hear:"_sel, "Changed"_ns, nullptr);
    center->removeObserver(listener);
  }
}

void addAndRemoveFunction(benchmark::State& state) {
  std::mutex mutex;
  std::unordered_map<std::string, std::vector<std::function<void()>>> functions;
  const std::string name = "Changed";
  for (auto _ : state) {
    {
      std::lock_guard lock(mutex);
      functions[name].emplace_back([&mutex] { benchmark::DoNotOptimize(mutex); });
    }
    std::lock_guard lock(mutex);
    functions[name].pop_back();
  }
}

template <class Of>
void callIdle(benchmark::State& state) {
  Of server;
  std::int64_t calls = 0;
  const std::function<void()> count = [&calls] { ++calls; };
  for (auto _ : state) {
    state.PauseTiming();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    state.ResumeTiming();
    server.call(count);
  }
  benchmark::DoNotOptimize(calls);
}

template <class Of>
void callBurst(benchmark::State& state) {
  Of server;
  std::int64_t calls = 0;
  const std::function<void()> count = [&calls] { ++calls; };
  for (auto _ : state)
    for (int i = 0; i < 200; ++i) server.call(count);
  state.SetItemsProcessed(state.iterations() * 200);
  benchmark::DoNotOptimize(calls);
}

template <class Of>
void postMany(benchmark::State& state) {
  Of server;
  std::int64_t calls = 0;
  constexpr int posts = 10'000;
  for (auto _ : state) {
    for (int i = 0; i < posts; ++i) server.post([&calls] { ++calls; });
    server.call([] {});
  }
  state.SetItemsProcessed(state.iterations() * posts);
  benchmark::DoNotOptimize(calls);
}

}  // namespace

void compareThreads() {
  compare("PostNotification",
          {"post a Notification, 1,000 names, one observer each",
           "find and call in a std::unordered_map of functions", 3},
          &postNotification, &callThroughMap);
  compare("AddObserver",
          {"add an observer and remove it", "the same in a map of vectors of functions", 0},
          &addAndRemoveObserver, &addAndRemoveFunction);
  compare("CallIdle",
          {"call a loop that sleeps, and wait", "mutex and condition variables", 1.05, true},
          &callIdle<Server>, &callIdle<PlainServer>);
  compare("CallBurst",
          {"call a loop again and again, and wait", "mutex and condition variables", 0.2, true},
          &callBurst<Server>, &callBurst<PlainServer>);
  compare("PostedCalls", {"have a loop call a function", "mutex and std::deque", 0.5, true},
          &postMany<Server>, &postMany<PlainServer>);
  compareWaitingPeer("CallIdle", "futex", &callIdle<FutexServer>);
  compareWaitingPeer("CallBurst", "futex", &callBurst<FutexServer>);
  compareWaitingPeer("PostedCalls", "futex", &postMany<FutexServer>);
}

}  // namespace qz::bench
