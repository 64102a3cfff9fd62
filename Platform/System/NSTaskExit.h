/// @file
/// The end of another program, to be awaited by a coroutine. Offers nothing where the compiler has
/// no coroutines; see Async.h.
#pragma once

#include "Platform/Concurrency/Async.h"

#if defined(__cpp_impl_coroutine) && __has_include(<coroutine>)

#include "Platform/System/NSTask.h"

#pragma GCC visibility push(default)

namespace qz {
namespace detail {

/// What `exitOf` answers, to be awaited once, by a coroutine of any type.
class [[nodiscard]] TaskExit {
 public:
  explicit TaskExit(NSTask* task) : task_(task) {
    if (task == nullptr) raise(NSInvalidArgumentException, "nil is no task to wait for");
  }

  bool await_ready() const { return !task_->isRunning(); }
  void await_suspend(std::coroutine_handle<> waiting) {
    const auto back = std::make_shared<WayBack>(suspended(waiting));
    back_ = back;
    task_->callWhenEnded([back] {
      if (back->claim()) back->comeBack();
    });
    back->wait(std::nullopt);
  }
  std::int32_t await_resume() const {
    if (back_) back_->throwIfLoopEnded();
    return task_->terminationStatus();
  }

 private:
  Ref<NSTask> task_;
  std::shared_ptr<WayBack> back_;
};

}  // namespace detail

///     task->launch();
///     if (co_await exitOf(task) != 0) …
///
/// Waits for the end of a launched task and answers its `terminationStatus`. Goes on on the same
/// thread, in its run loop; straight on when the program has ended already. The task is kept alive.
/// Throws RunLoopEnded when the loop ends before the program. Raises NSInvalidArgumentException for
/// nil, and for a task that was not launched.
inline detail::TaskExit exitOf(NSTask* task) { return detail::TaskExit(task); }

}  // namespace qz

#pragma GCC visibility pop

#endif
