/// @file
/// Private: sleeping until a word changes, straight from the kernel.
#pragma once

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <optional>

namespace qz::detail {

/// Sleeps while `word` is `expected`, at most until `limit`. May return early. False when the limit
/// has passed.
inline bool futexWait(std::atomic<std::uint32_t>& word, std::uint32_t expected,
                      std::optional<std::chrono::steady_clock::time_point> limit) noexcept {
  static_assert(sizeof word == 4 && std::atomic<std::uint32_t>::is_always_lock_free);
  timespec time{};
  if (limit) {
    const auto since = std::chrono::nanoseconds(limit->time_since_epoch()).count();
    time.tv_sec = static_cast<std::time_t>(since / 1'000'000'000);
    time.tv_nsec = static_cast<long>(since % 1'000'000'000);
  }
  // The "bitset" form takes a point in time where the plain one takes a length.
  return ::syscall(SYS_futex, &word, FUTEX_WAIT_BITSET | FUTEX_PRIVATE_FLAG, expected,
                   limit ? &time : nullptr, nullptr, FUTEX_BITSET_MATCH_ANY) == 0 ||
         errno != ETIMEDOUT;
}

/// Wakes one sleeper. The word may be gone already: then nobody sleeps there.
inline void futexWake(std::atomic<std::uint32_t>& word) noexcept {
  ::syscall(SYS_futex, &word, FUTEX_WAKE | FUTEX_PRIVATE_FLAG, 1, nullptr, nullptr, 0);
}

}  // namespace qz::detail
