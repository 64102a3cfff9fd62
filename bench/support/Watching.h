/// @file
/// Files to watch, and how long it takes until a change of one is noticed.
#pragma once

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Values/NSString.h"

namespace qz::bench {

/// A folder with that many files.
class Files {
 public:
  explicit Files(int count) {
    std::string folder = "/tmp/qzbenchXXXXXX";
    folder_ = ::mkdtemp(folder.data());
    for (int i = 0; i < count; ++i) {
      paths.push_back(folder_ + "/" + std::to_string(i));
      ::close(::creat(paths.back().c_str(), 0600));
      strings.push_back(NSString::stringWithUTF8String(paths.back()));
    }
  }
  ~Files() { std::filesystem::remove_all(folder_); }
  std::vector<std::string> paths;
  std::vector<Ref<NSString>> strings;

 private:
  std::string folder_;
};

/// How many, where it is many.
constexpr int many = 10'000;

/// From a write here until another thread that waits has seen it and says so. `start` is called on
/// that thread, begins to watch, and answers a function that blocks until there was an event; that
/// one is called once more to end.
template <class Thread = std::thread, class Start>
void writeUntilSeen(benchmark::State& state, const std::string& path, Start start) {
  std::atomic<int> seen{0};
  std::atomic<bool> running{true};
  std::atomic<bool> ready{false};
  Thread watcher([&] {
    auto wait = start();
    ready = true;
    while (running) {
      wait();
      seen.fetch_add(1);
      seen.notify_one();
    }
  });
  while (!ready) std::this_thread::yield();
  const int file = ::open(path.c_str(), O_WRONLY);
  for (auto _ : state) {
    state.PauseTiming();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const int before = seen;
    state.ResumeTiming();
    if (::pwrite(file, "x", 1, 0) != 1) state.SkipWithError("write");
    seen.wait(before);
  }
  running = false;
  if (::pwrite(file, "x", 1, 0) != 1) state.SkipWithError("write");
  watcher.join();
  ::close(file);
}

}  // namespace qz::bench
