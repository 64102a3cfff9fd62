/// @file
/// Coroutines that belong to this library's threads. Offers nothing where the compiler has none
/// (`__cpp_impl_coroutine`).
#pragma once

#include <version>

#if defined(__cpp_impl_coroutine) && __has_include(<coroutine>)

#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Concurrency/detail/WayBack.h"

#pragma GCC visibility push(default)

namespace qz {

template <class T>
class Async;

namespace detail {

inline Suspended suspended(std::coroutine_handle<> frame) noexcept {
  return {[](void* address) { std::coroutine_handle<>::from_address(address).resume(); },
          frame.address()};
}

/// What an Async becomes, whatever it answers.
class AsyncPromiseBase {
 public:
  std::suspend_always initial_suspend() const noexcept { return {}; }
  auto final_suspend() const noexcept { return Ending(); }
  void unhandled_exception() noexcept { thrown_ = std::current_exception(); }

  /// Runs `frame` up to its first wait. Whether the caller has to wait for its end; then it is
  /// `waiting` that goes on, and `back` says how it came to that.
  bool startFor(std::coroutine_handle<> frame, std::coroutine_handle<> waiting,
                std::shared_ptr<WayBack>& back) {
    frame.resume();
    return end_.wait(suspended(waiting), WayBack::Leave::WhenCome, back);
  }

 protected:
  void rethrow() const {
    if (thrown_) std::rethrow_exception(thrown_);
  }

 private:
  struct Ending {
    bool await_ready() const noexcept { return false; }
    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> frame) const noexcept {
      AsyncPromiseBase& promise = frame.promise();
      promise.end_.end();
    }
    void await_resume() const noexcept {}
  };

  std::exception_ptr thrown_;
  Meeting end_;
};

template <class T>
class AsyncPromise : public AsyncPromiseBase {
 public:
  Async<T> get_return_object() noexcept;
  template <class V>
  requires std::is_convertible_v<V&&, T>
  void return_value(V&& value) { value_.emplace(std::forward<V>(value)); }
  T take() {
    rethrow();
    return std::move(*value_);
  }

 private:
  std::optional<T> value_;
};

template <>
class AsyncPromise<void> : public AsyncPromiseBase {
 public:
  Async<void> get_return_object() noexcept;
  void return_void() const noexcept {}
  void take() const { rethrow(); }
};

template <class T>
class AsyncAwaiter;

[[noreturn]] inline void raiseNoAsync() {
  raise(NSInvalidArgumentException, "there is no function to wait for: it was started already");
}

}  // namespace detail

/// What a coroutine answers that may wait: a T, later; T is a value or void.
///
///     Async<Ref<NSString>> titleOf(Ref<NSString> path) {
///       co_await onNewThread();
///       co_return parse(path)->title();        // on the new thread
///     }
///     Async<> show(Ref<Window> window, Ref<NSString> path) {
///       window->setTitle(co_await titleOf(path));  // on the thread of `show`
///     }
///     …
///     start(show(window, path));
///
/// **It stays on its thread.** After `co_await` a function goes on where it waited, whatever the
/// thread on which the awaited one ended; only `onMainThread`, `onThread` and `onNewThread` move
/// it. Threads get their functions back in their run loops, which have something to wait for
/// meanwhile. When a loop ends, functions that are to return to it go on all the same, wherever
/// that is noticed, with RunLoopEnded thrown by the `co_await`: so they are unwound, and leave
/// nothing behind.
///
/// **Lazy.** Nothing runs until the function is awaited, started, or run a loop for; so nothing
/// runs of which nobody gets the answer and the exceptions, which `co_await` throws on. An Async
/// that is dropped before has done nothing. Each is awaited or started once; again raises
/// NSInvalidArgumentException.
///
/// **Ownership.** A running function is owned by the one that awaits it, and the first by itself:
/// it ends with its end, not from outside. What may have to stop early looks for that after each
/// wait (a flag, `std::stop_token`, `QZThreadedTask::abortRequestReceived`), and what may never
/// come is awaited with a limit (`nextNotification`). Coroutines of other libraries may await all
/// of this, and must not be destroyed while they do.
///
/// **Arguments.** A coroutine keeps its parameters, not what they point to: take Objects as `Ref`.
/// A lambda's captures are the lambda's, which may be gone: take parameters there as well.
template <class T = void>
class [[nodiscard]] Async {
  static_assert(std::is_void_v<T> || std::is_object_v<T>, "an Async answers a value, or void");

 public:
  using promise_type = detail::AsyncPromise<T>;  ///< for the compiler

  /// The other one has nothing to await afterwards.
  Async(Async&& other) noexcept : frame_(std::exchange(other.frame_, nullptr)) {}
  Async& operator=(Async&& other) noexcept {
    Async(std::move(other)).swap(*this);
    return *this;
  }
  ~Async() {
    if (frame_) frame_.destroy();
  }

  void swap(Async& other) noexcept { std::swap(frame_, other.frame_); }

  /// False once it was awaited or started.
  explicit operator bool() const noexcept { return static_cast<bool>(frame_); }

  /// `co_await std::move(async)`, or `co_await function(…)`.
  detail::AsyncAwaiter<T> operator co_await() && noexcept {
    return detail::AsyncAwaiter<T>(std::move(*this));
  }

 private:
  friend promise_type;
  friend detail::AsyncAwaiter<T>;
  explicit Async(std::coroutine_handle<promise_type> frame) noexcept : frame_(frame) {}

  std::coroutine_handle<promise_type> frame_;
};

namespace detail {

/// Runs an Async for the coroutine that awaits it, and owns it meanwhile.
template <class T>
class AsyncAwaiter {
 public:
  explicit AsyncAwaiter(Async<T>&& awaited) noexcept : awaited_(std::move(awaited)) {}

  bool await_ready() const {
    if (!awaited_) raiseNoAsync();
    return false;
  }
  bool await_suspend(std::coroutine_handle<> waiting) {
    return awaited_.frame_.promise().startFor(awaited_.frame_, waiting, back_);
  }
  T await_resume() {
    if (back_) back_->throwIfLoopEnded();
    return awaited_.frame_.promise().take();
  }

 private:
  Async<T> awaited_;
  std::shared_ptr<WayBack> back_;
};

template <class T>
Async<T> AsyncPromise<T>::get_return_object() noexcept {
  return Async<T>(std::coroutine_handle<AsyncPromise>::from_promise(*this));
}
inline Async<void> AsyncPromise<void>::get_return_object() noexcept {
  return Async<void>(std::coroutine_handle<AsyncPromise>::from_promise(*this));
}

}  // namespace detail

}  // namespace qz

#pragma GCC visibility pop

#endif
