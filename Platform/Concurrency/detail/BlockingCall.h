/// @file
/// Private: a caller that waits until another thread has done something for it.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <utility>

#pragma GCC visibility push(default)

namespace qz::detail {

/// Lies on the waiting thread's stack.
class BlockingCall {
 public:
  BlockingCall(void (*function)(void* context), void* context) noexcept
      : function_(function), context_(context) {}
  BlockingCall(const BlockingCall&) = delete;
  BlockingCall& operator=(const BlockingCall&) = delete;

  /// Waits until the task has run or was destroyed. What the function threw is thrown here; raises
  /// NSRunLoopEndedException when it never ran.
  void wait();

  /// What is handed to the other thread: runs the function, then wakes the caller. Destroyed
  /// without having run, it wakes the caller as well.
  class Task {
   public:
    explicit Task(BlockingCall& call) noexcept : call_(&call) {}
    Task(Task&& other) noexcept : call_(std::exchange(other.call_, nullptr)) {}
    Task& operator=(Task&&) = delete;
    ~Task() {
      if (call_ != nullptr) call_->finish(abandoned);
    }
    void operator()();

   private:
    BlockingCall* call_;
  };

 private:
  enum State : std::uint32_t { pending, asleep, done, abandoned };

  void finish(State state) noexcept;

  void (*function_)(void* context);
  void* context_;
  std::exception_ptr thrown_;
  std::atomic<std::uint32_t> state_{pending};
};

}  // namespace qz::detail

#pragma GCC visibility pop
