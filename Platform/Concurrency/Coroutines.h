/// @file
/// How a coroutine begins, and what it can await: other threads, time, and Notifications. Offers
/// nothing where the compiler has no coroutines. See Async.h for what a coroutine is here,
/// NSTaskExit.h for the end of other programs.
///
///     Async<> import(Ref<NSString> path) {
///       co_await onNewThread();
///       auto rows = read(path);
///       co_await onMainThread();
///       table->setRows(rows);
///       if (!co_await nextNotification(TableWasSaved, table).within(60)) remind();
///     }
///
/// Coroutines of other libraries may await these as well. None may be awaited twice.
#pragma once

#include "Platform/Concurrency/Async.h"

#if defined(__cpp_impl_coroutine) && __has_include(<coroutine>)

#include <chrono>
#include <functional>

#include "Platform/Concurrency/NSNotificationCenter.h"
#include "Platform/Concurrency/detail/AsyncRun.h"
#include "Platform/Concurrency/detail/Awaitables.h"

#pragma GCC visibility push(default)

namespace qz {

/// Starts a coroutine on this thread and returns when it first waits, or has ended. It owns itself
/// from here on. What it answers is dropped. What it throws is thrown in the main thread's loop;
/// RunLoopEnded, and everything once that loop has ended, is dropped. Raises
/// NSInvalidArgumentException for one that was started before.
template <class T>
void start(Async<T> work) {
  detail::run(std::move(work));
}

/// The same, with an Async for its end: so several run at a time. What is thrown is thrown to who
/// awaits that, and as by `start` when nobody does.
///
///     auto left = started(sizeOf(a));
///     auto right = started(sizeOf(b));
///     auto sum = co_await std::move(left) + co_await std::move(right);
template <class T>
Async<T> started(Async<T> work) {
  return detail::awaited(detail::run(std::move(work)));
}

/// Starts it, and runs this thread's loop until it has ended: for `main`, and for threads that have
/// nothing else to do. What it answers, or what it throws. A `stop` of the loop does not end this;
/// an exception of other work in the loop does, and the coroutine goes on as if started. Raises
/// NSInvalidArgumentException for one that was started before.
template <class T>
T runLoopUntilDone(Async<T> work) {
  const auto outcome = detail::run(std::move(work));
  const auto loop = NSRunLoop::currentRunLoop();
  while (!outcome->isThere())
    loop->runMode_beforeDate(NSDefaultRunLoopMode, NSDate::distantFuture());
  return outcome->take();
}

/// `co_await onThread(thread)` goes on there, in the next turn of the thread's run loop, which it
/// has to run; straight on when it is that thread already. A thread that is not started yet has
/// the coroutine wait until it is. Throws RunLoopEnded, on any thread, when the loop has ended or
/// ends before. Raises NSInvalidArgumentException for nil.
inline detail::ThreadHop onThread(NSThread* thread) { return detail::ThreadHop(thread); }

/// The same for the main thread.
inline detail::ThreadHop onMainThread() { return detail::ThreadHop(NSThread::mainThread()); }

/// `co_await onNewThread()` goes on in a thread of its own, for work that takes long or blocks.
/// While the coroutine waits for something there, the thread's run loop runs; the thread ends when
/// the coroutine has ended or moved on. Raises NSGenericException, and stays where it is, when the
/// system has no thread to give.
inline detail::NewThreadHop onNewThread() noexcept { return {}; }

/// `co_await afterDelay(0.5)`, or `afterDelay(500ms)`, goes on after so many seconds, on the same
/// thread, in its run loop; 0 or less lets the loop have a turn. Throws RunLoopEnded when the loop
/// ends before.
inline detail::Delay afterDelay(NSTimeInterval seconds) noexcept { return detail::Delay(seconds); }

template <class Rep, class Period>
detail::Delay afterDelay(std::chrono::duration<Rep, Period> duration) noexcept {
  return detail::Delay(timeInterval(duration));
}

/// What `nextNotification` answers, to be awaited.
class [[nodiscard]] NextNotification {
 public:
  /// See `nextNotification`.
  NextNotification(NSString* name, NSObject* object, NSNotificationCenter* center)
      : name_(name),
        object_(object),
        center_(center != nullptr ? Ref<NSNotificationCenter>(center)
                                  : NSNotificationCenter::defaultCenter()) {}

  /// Waits for so many seconds at most; the answer is then nil.
  NextNotification within(NSTimeInterval seconds) && {
    limit_ = seconds;
    return std::move(*this);
  }
  template <class Rep, class Period>
  NextNotification within(std::chrono::duration<Rep, Period> duration) && {
    return std::move(*this).within(timeInterval(duration));
  }

  /// Calls a function once it is waiting: one that leads to the Notification, which is not missed
  /// then. What it throws is thrown by the `co_await`.
  NextNotification onceWaiting(std::function<void()> function) && {
    onceWaiting_ = std::move(function);
    return std::move(*this);
  }

  /// Called by `co_await`.
  bool await_ready() const noexcept { return false; }
  /// Called by `co_await`: observes the centre.
  void await_suspend(std::coroutine_handle<> waiting) {
    const auto back = std::make_shared<detail::WayBack>(detail::suspended(waiting));
    const auto limit = limit_;
    back_ = back;
    // Only the first Notification finds `this` waiting; others are too late, maybe for it too.
    token_ = center_->observe(name_, object_, [this, back](NSNotification* notification) {
      if (!back->claim()) return;
      notification_ = Ref<NSNotification>(notification);
      back->comeBack();
    });
    try {
      if (onceWaiting_) onceWaiting_();
    } catch (...) {
      if (back->claim()) throw;
      thrown_ = std::current_exception();  // the Notification came first, and the coroutine with it
    }
    back->wait(limit);
  }
  /// Called by `co_await`: the Notification, or nil.
  Ref<NSNotification> await_resume() {
    token_ = nullptr;
    back_->throwIfLoopEnded();
    if (thrown_) std::rethrow_exception(thrown_);
    return std::move(notification_);
  }

 private:
  Ref<NSString> name_;
  Ref<NSObject> object_;
  Ref<NSNotificationCenter> center_;
  std::optional<NSTimeInterval> limit_;
  std::function<void()> onceWaiting_;
  std::shared_ptr<detail::WayBack> back_;
  Ref<NSNotificationToken> token_;
  Ref<NSNotification> notification_;
  std::exception_ptr thrown_;
};

/// `co_await nextNotification(name, sender)` waits for the first Notification with that name and
/// that sender (nil for any), posted from now on to the centre (nil for the default one), by any
/// thread. Goes on on the same thread, in a later turn of its run loop, and not within the post:
/// what is posted meanwhile is missed, so for all of them use an observer. Sender and centre are
/// kept alive.
///
/// Where the Notification never comes, the coroutine waits until this thread's loop ends, which
/// throws RunLoopEnded, or until the time of `within` is over, which answers nil.
inline NextNotification nextNotification(NSString* name, NSObject* object = nullptr,
                                         NSNotificationCenter* center = nullptr) {
  return NextNotification(name, object, center);
}

}  // namespace qz

#pragma GCC visibility pop

#endif
