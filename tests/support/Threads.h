// Several threads at the same thing.
#pragma once

#include <barrier>
#include <functional>
#include <thread>
#include <vector>

namespace qz::test {

/// Runs `work` in so many threads, which begin together, with 0, 1 …; until all have ended.
inline void inThreads(int count, const std::function<void(int)>& work) {
  std::barrier start(count);
  std::vector<std::jthread> threads;
  for (int i = 0; i < count; ++i)
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      work(i);
    });
}

}  // namespace qz::test
