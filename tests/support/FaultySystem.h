// A system that fails on demand, for tests of what happens then.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <vector>

#include "Platform/Values/detail/SystemCalls.h"

namespace qz::test {

using detail::SystemCall;

/// Stands before the system while it lives; one at a time.
class FaultySystem final : public detail::SystemTap {
 public:
  FaultySystem();
  ~FaultySystem() override;

  /// The n-th call from now on, counted from 1, fails with `number`.
  void failCall(std::size_t n, int number);

  /// Each call of a kind fails, until `heal`.
  void failAll(SystemCall kind, int number);
  void heal();

  /// Reads, writes and copies at most so many bytes at a time.
  void shortenTo(std::size_t size) { most_ = size; }

  /// Is called before each call.
  std::function<void(SystemCall kind, const char* path)> listener;

  /// The kinds of the calls so far.
  std::vector<SystemCall> calls() const;

  int before(SystemCall call, const char* path) override;
  std::size_t limit(SystemCall call, std::size_t size) override;

 private:
  mutable std::mutex mutex_;
  std::vector<SystemCall> calls_;
  std::size_t failingCall_ = 0;
  int failure_ = 0;
  std::set<SystemCall> broken_;
  int brokenWith_ = 0;
  std::atomic<std::size_t> most_{SIZE_MAX};
};

/// What a call of a kind can fail with on a file system in trouble.
const std::vector<int>& troubles(SystemCall kind);

/// Lets each call that `work` makes fail in each way it can, one at a time, each time having
/// prepared for it; `check` is told what has failed.
void sweepFailures(const std::function<void()>& prepare, const std::function<void()>& work,
                   const std::function<void(SystemCall kind, int number)>& check);

}  // namespace qz::test
