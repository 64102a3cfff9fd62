#include "Platform/Concurrency/detail/BlockingCall.h"

#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Concurrency/detail/AdaptiveSpin.h"
#include "Platform/Concurrency/detail/Futex.h"

namespace qz::detail {

void BlockingCall::wait() {
  thread_local AdaptiveSpin spin;
  const auto isOver = [this] { return state_.load(std::memory_order_acquire) >= done; };
  const auto start = AdaptiveSpin::Clock::now();
  if (!spin.until(isOver)) {
    std::uint32_t expected = pending;
    if (state_.compare_exchange_strong(expected, asleep))
      while (!isOver()) futexWait(state_, asleep, std::nullopt);
  }
  spin.took(AdaptiveSpin::Clock::now() - start);
  if (state_.load() == abandoned) throw RunLoopEnded();
  if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
}

void BlockingCall::Task::operator()() {
  BlockingCall* call = std::exchange(call_, nullptr);
  try {
    call->function_(call->context_);
  } catch (...) {
    call->thrown_ = std::current_exception();
  }
  // Only now: the caller may be gone right after, and the exception belongs to it alone.
  call->finish(done);
}

void BlockingCall::finish(State state) noexcept {
  if (state_.exchange(state) == asleep) futexWake(state_);
}

}  // namespace qz::detail
