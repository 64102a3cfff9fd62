/// @file
/// Private: the lock around the run-time's tables. Look-ups that hit a published table never take
/// it; describing, extending, replacing and first look-ups do. Recursive, because describing one
/// class may mention another.
#pragma once

#include <mutex>

#pragma GCC visibility push(default)

namespace qz::detail {

std::recursive_mutex& runtimeMutex() noexcept;

class RuntimeGuard {
 public:
  RuntimeGuard() : lock_(runtimeMutex()) {}

 private:
  std::unique_lock<std::recursive_mutex> lock_;
};

}  // namespace qz::detail

#pragma GCC visibility pop
