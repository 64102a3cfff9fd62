/// @file
/// Timers.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>

#include "Platform/Concurrency/detail/Deadline.h"
#include "Platform/Concurrency/detail/LoopTask.h"
#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSDate.h"

#pragma GCC visibility push(default)

namespace qz {

namespace detail {
class LoopCore;
class LoopTimers;
}

/// Does something at a given time, once or again and again, in a run loop.
///
///     timer_ = NSTimer::scheduledTimer(1.0, true, [this](NSTimer*) { poll(); });
///     …
///     timer_->invalidate();
///
/// A timer fires when its time has come and its loop runs in one of its modes, on the loop's
/// thread. A repeating one keeps to its grid: what a busy loop has missed is left out, not caught
/// up with. Times are kept by a clock that nobody sets; a fire date is a Date as the system's clock
/// shows it when the date is given.
///
/// The loop keeps the timer, and the timer keeps its target, argument and function, until it is
/// invalidated; one that does not repeat does that itself after firing. So a target that owns its
/// repeating timer lives until somebody invalidates it.
///
/// `invalidate`, `isValid` and `setFireDate` may be called from any thread.
class NSTimer : public Derives<NSTimer, NSObject> {
 public:
  static void describe(ClassDescription<NSTimer>& is);

  /// What a timer calls in place of an operation; it is handed the timer.
  using Function = std::function<void(NSTimer*)>;

  /// First fires at `fireDate` (nil is now), then every `interval` seconds if it repeats; an
  /// interval that is not above 0.1 ms is 0.1 ms. Raise NSInvalidArgumentException for a nil
  /// target, Selector or function. To be added to a loop.
  NSTimer(NSDate* fireDate, NSTimeInterval interval, NSObject* target, Selector selector,
          NSObject* userInfo, bool repeats);
  NSTimer(NSDate* fireDate, NSTimeInterval interval, bool repeats, Function function);
  ~NSTimer() override;
  static Ref<NSTimer> initWithFireDate_interval_target_selector_userInfo_repeats(
      NSDate* fireDate, NSTimeInterval interval, NSObject* target, Selector selector,
      NSObject* userInfo, bool repeats);

  /// First fires after `seconds`. To be added to a loop.
  static Ref<NSTimer> timerWithTimeInterval_target_selector_userInfo_repeats(NSTimeInterval seconds,
                                                                             NSObject* target,
                                                                             Selector selector,
                                                                             NSObject* userInfo,
                                                                             bool repeats);
  static Ref<NSTimer> timer(NSTimeInterval seconds, bool repeats, Function function);

  /// The same, added to the calling thread's loop in the default mode. The operation is sent with
  /// the timer; one without arguments does too.
  static Ref<NSTimer> scheduledTimerWithTimeInterval_target_selector_userInfo_repeats(
      NSTimeInterval seconds, NSObject* target, Selector selector, NSObject* userInfo,
      bool repeats);
  static Ref<NSTimer> scheduledTimer(NSTimeInterval seconds, bool repeats, Function function);

  /// The same for durations of the C++ library: `scheduledTimer(250ms, true, poll)`.
  template <class Rep, class Period>
  static Ref<NSTimer> timer(std::chrono::duration<Rep, Period> after, bool repeats,
                            Function function) {
    return timer(qz::timeInterval(after), repeats, std::move(function));
  }
  template <class Rep, class Period>
  static Ref<NSTimer> scheduledTimer(std::chrono::duration<Rep, Period> after, bool repeats,
                                     Function function) {
    return scheduledTimer(qz::timeInterval(after), repeats, std::move(function));
  }

  /// Does now what the timer does, on this thread; its times stay. One that does not repeat is
  /// invalid afterwards. Nothing when it is invalid.
  void fire();

  /// Ends it for good and lets go of what it keeps. Its loop forgets it and, if it waited for
  /// nothing else, ends. A function that is running meanwhile is not interrupted.
  void invalidate();
  bool isValid() const noexcept { return valid_.load(std::memory_order_acquire); }

  /// When it fires next.
  Ref<NSDate> fireDate() const;
  void setFireDate(NSDate* date);

  /// Seconds from one time to the next; 0 when it does not repeat.
  NSTimeInterval timeInterval() const noexcept;

  /// What it was made with; nil when that was nothing, and once it is invalid.
  Ref<NSObject> userInfo() const;

 private:
  friend class detail::LoopCore;
  friend class detail::LoopTimers;

  void perform();
  void fireInLoop(detail::SteadyTime due);

  std::atomic<bool> valid_{true};
  bool repeats_;
  detail::SteadyTime::duration interval_;

  mutable std::mutex mutex_;  // guards what follows
  Ref<NSObject> target_;
  Selector selector_;
  Ref<NSObject> userInfo_;
  std::shared_ptr<Function> function_;
  std::shared_ptr<detail::LoopTimers> timers_;  // of the loop it was added to
  detail::SteadyTime time_;                     // the next one, while it is in no loop's list

  // Guarded by the list's lock.
  detail::ModeMask modes_ = 0;
  std::uint64_t order_ = 0;  // with the time, its place in the list
  detail::SteadyTime listed_;
  bool isListed_ = false;
};

}  // namespace qz

#pragma GCC visibility pop
