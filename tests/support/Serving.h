// The main thread's loop, served until something is so, and this process's threads.
#pragma once

#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Concurrency/NSThread.h"
#include "tests/support/Test.h"

namespace qz::test {

/// Serves the main thread; whether it was so within 20 seconds.
inline bool serveUntil(const std::function<bool()>& isSo) {
  const auto limit = inSeconds(20);
  while (!isSo() && limit->timeIntervalSinceNow() > 0)
    NSRunLoop::mainRunLoop()->runUntilDate(inSeconds(0.005));
  return isSo();
}

/// Serves what the main thread has to do now.
inline void servePending() {
  while (NSRunLoop::mainRunLoop()->runPending()) {
  }
}

/// How many threads have the name.
inline int threadsNamed(const std::string& wanted) {
  int found = 0;
  for (const auto& task : fs::directory_iterator("/proc/self/task")) {
    std::string name;
    std::getline(std::ifstream(task.path() / "comm"), name);
    found += name == wanted ? 1 : 0;
  }
  return found;
}

}  // namespace qz::test
