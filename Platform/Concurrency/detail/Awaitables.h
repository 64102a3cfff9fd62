/// @file
/// Private: what coroutines await. Offers nothing where the compiler has none.
#pragma once

#include "Platform/Concurrency/Async.h"

#if defined(__cpp_impl_coroutine) && __has_include(<coroutine>)

#pragma GCC visibility push(default)

namespace qz::detail {

/// What `onThread` and `onMainThread` answer, to be awaited.
class [[nodiscard]] ThreadHop {
 public:
  explicit ThreadHop(NSThread* thread) : thread_(thread) {
    if (thread == nullptr) raise(NSInvalidArgumentException, "nil is no thread to go to");
  }

  bool await_ready() const noexcept { return isCurrentThread(thread_); }
  void await_suspend(std::coroutine_handle<> waiting) {
    const auto thread = std::move(thread_);
    resumeOn(thread, suspended(waiting), &loopEnded_);
  }
  void await_resume() const {
    if (loopEnded_) throw RunLoopEnded();
  }

 private:
  Ref<NSThread> thread_;
  bool loopEnded_ = false;
};

/// What `onNewThread` answers, to be awaited.
class [[nodiscard]] NewThreadHop {
 public:
  bool await_ready() const noexcept { return false; }
  void await_suspend(std::coroutine_handle<> waiting) const {
    resumeOnNewThread(suspended(waiting));
  }
  void await_resume() const noexcept {}
};

/// What `afterDelay` answers, to be awaited.
class [[nodiscard]] Delay {
 public:
  explicit Delay(NSTimeInterval seconds) noexcept : seconds_(seconds) {}

  bool await_ready() const noexcept { return false; }
  void await_suspend(std::coroutine_handle<> waiting) {
    const auto back = std::make_shared<WayBack>(suspended(waiting));
    back_ = back;
    back->wait(seconds_);
  }
  void await_resume() const { back_->throwIfLoopEnded(); }

 private:
  NSTimeInterval seconds_;
  std::shared_ptr<WayBack> back_;
};

}  // namespace qz::detail

#pragma GCC visibility pop

#endif
