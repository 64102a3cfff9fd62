/// @file
/// Private: waiting actively for a moment before sleeping, where that has paid off lately.
#pragma once

#include <sched.h>

#include <algorithm>
#include <chrono>

namespace qz::detail {

inline void pauseProcessor() noexcept {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

/// Whether another processor can do something while this one waits.
inline bool hasSeveralProcessors() noexcept {
  static const bool several = [] {
    cpu_set_t mine;
    return ::sched_getaffinity(0, sizeof mine, &mine) != 0 || CPU_COUNT(&mine) > 1;
  }();
  return several;
}

/// Sleeping and being woken costs tens of microseconds, so a wait that is over sooner is better
/// spent looking. The waits before tell which kind the next one is going to be: their average, in
/// which the last one counts half, bounds the time spent looking. Looking in vain means that
/// waits are long, or that others need the processor: then that many waits go by before the next
/// try, twice as many each time. One thread at a time.
class AdaptiveSpin {
 public:
  using Clock = std::chrono::steady_clock;

  /// Until `done()` or for as long as it is worth, at most until `limit`. Whether it is done.
  template <class Done>
  bool until(Done done, Clock::time_point limit = Clock::time_point::max()) {
    if (done()) return true;
    if (pause_ > 0) {
      --pause_;
      return false;
    }
    if (average_ > longest || !hasSeveralProcessors()) return false;
    const auto worth = std::min<Clock::duration>(2 * average_ + shortest, longest);
    const auto end = std::min(limit, Clock::now() + worth);
    do {
      for (int i = 0; i < 8; ++i) {
        pauseProcessor();
        if (done()) {
          nextPause_ = 1;
          return true;
        }
      }
    } while (Clock::now() < end);
    pause_ = nextPause_;
    nextPause_ = std::min(2 * nextPause_, longestPause);
    return false;
  }

  /// Takes note of how long a wait was, spun or slept.
  void took(Clock::duration wait) noexcept {
    average_ = (average_ + std::min<Clock::duration>(wait, 4 * longest)) / 2;
  }

 private:
  static constexpr Clock::duration shortest = std::chrono::microseconds(1);
  static constexpr Clock::duration longest = std::chrono::microseconds(50);
  static constexpr int longestPause = 64;
  Clock::duration average_ = longest;
  int pause_ = 0;      // waits to go by before the next try
  int nextPause_ = 1;  // and after it, if it is in vain
};

}  // namespace qz::detail
