/// @file
/// Private: coroutines that run by themselves. Offers nothing where the compiler has none.
#pragma once

#include "Platform/Concurrency/Async.h"

#if defined(__cpp_impl_coroutine) && __has_include(<coroutine>)

#include "Platform/Concurrency/MainThread.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// The outermost coroutine, which owns itself.
struct Detached {
  struct promise_type {
    Detached get_return_object() const noexcept { return {}; }
    std::suspend_never initial_suspend() const noexcept { return {}; }
    std::suspend_never final_suspend() const noexcept { return {}; }
    void return_void() const noexcept {}
    void unhandled_exception() const noexcept { std::terminate(); }
  };
};

/// What came of a coroutine that runs by itself. An exception that nobody takes is thrown in the
/// main thread's loop.
template <class T>
class Outcome {
 public:
  using Value = std::conditional_t<std::is_void_v<T>, bool, T>;

  Outcome() = default;
  Outcome(const Outcome&) = delete;
  Outcome& operator=(const Outcome&) = delete;
  ~Outcome() {
    if (thrown_) tellMainThread(thrown_);
  }

  template <class V>
  void set(V&& value) {
    value_.emplace(std::forward<V>(value));
  }
  void setThrown(std::exception_ptr thrown) noexcept { thrown_ = std::move(thrown); }

  bool isThere() const noexcept { return value_ || thrown_; }
  T take() {
    if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
    if constexpr (!std::is_void_v<T>) return std::move(*value_);
  }

  Meeting end;

 private:
  static void tellMainThread(const std::exception_ptr& thrown) {
    try {
      std::rethrow_exception(thrown);
    } catch (const RunLoopEnded&) {
      // Nobody is left to tell.
    } catch (...) {
      postToMainThread([thrown] { std::rethrow_exception(thrown); });
    }
  }

  std::optional<Value> value_;
  std::exception_ptr thrown_;
};

template <class T>
Detached run(Async<T> work, std::shared_ptr<Outcome<T>> outcome) {
  try {
    if constexpr (std::is_void_v<T>) {
      co_await std::move(work);
      outcome->set(true);
    } else {
      outcome->set(co_await std::move(work));
    }
  } catch (...) {
    outcome->setThrown(std::current_exception());
  }
  outcome->end.end();
}

template <class T>
std::shared_ptr<Outcome<T>> run(Async<T> work) {
  if (!work) raiseNoAsync();
  auto outcome = std::make_shared<Outcome<T>>();
  run(std::move(work), outcome);
  return outcome;
}

/// Awaits a Meeting, which must outlive it.
class EndOf {
 public:
  explicit EndOf(Meeting& end) noexcept : end_(end) {}
  bool await_ready() const noexcept { return end_.hasEnded(); }
  bool await_suspend(std::coroutine_handle<> waiting) {
    return end_.wait(suspended(waiting), WayBack::Leave::WithLoop, back_);
  }
  void await_resume() const {
    if (back_) back_->throwIfLoopEnded();
  }

 private:
  Meeting& end_;
  std::shared_ptr<WayBack> back_;
};

template <class T>
Async<T> awaited(std::shared_ptr<Outcome<T>> outcome) {
  co_await EndOf(outcome->end);
  co_return outcome->take();
}

}  // namespace qz::detail

#pragma GCC visibility pop

#endif
