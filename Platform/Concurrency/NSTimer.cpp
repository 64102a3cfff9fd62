#include "Platform/Concurrency/NSTimer.h"

#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Concurrency/detail/LoopTimers.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSDate.h"

namespace qz {
namespace {

// A repeating timer that needs no time at all would leave its loop none for anything else.
detail::SteadyTime::duration intervalOf(NSTimeInterval seconds, bool repeats) {
  constexpr NSTimeInterval shortest = 0.0001;
  if (!repeats) return {};
  constexpr NSTimeInterval longest = 1e9;
  const NSTimeInterval kept = seconds > shortest ? std::min(seconds, longest) : shortest;
  return std::chrono::duration_cast<detail::SteadyTime::duration>(
      std::chrono::duration<double>(kept));
}

Ref<NSDate> dateOf(NSTimeInterval seconds) { return NSDate::dateWithTimeIntervalSinceNow(seconds); }

}  // namespace

NSTimer::NSTimer(NSDate* fireDate, NSTimeInterval interval, NSObject* target, Selector selector,
                 NSObject* userInfo, bool repeats)
    : repeats_(repeats),
      interval_(intervalOf(interval, repeats)),
      target_(target),
      selector_(selector),
      userInfo_(userInfo),
      time_(detail::steadyTime(fireDate)) {
  if (target == nullptr || !selector)
    detail::raise(NSInvalidArgumentException, "a timer needs a target and a Selector");
}

NSTimer::NSTimer(NSDate* fireDate, NSTimeInterval interval, bool repeats, Function function)
    : repeats_(repeats),
      interval_(intervalOf(interval, repeats)),
      time_(detail::steadyTime(fireDate)) {
  if (!function) detail::raise(NSInvalidArgumentException, "a timer needs a function");
  function_ = std::make_shared<Function>(std::move(function));
}

NSTimer::~NSTimer() = default;

Ref<NSTimer> NSTimer::initWithFireDate_interval_target_selector_userInfo_repeats(
    NSDate* fireDate, NSTimeInterval interval, NSObject* target, Selector selector,
    NSObject* userInfo, bool repeats) {
  return make<NSTimer>(fireDate, interval, target, selector, userInfo, repeats);
}

Ref<NSTimer> NSTimer::timerWithTimeInterval_target_selector_userInfo_repeats(
    NSTimeInterval seconds, NSObject* target, Selector selector, NSObject* userInfo, bool repeats) {
  return make<NSTimer>(dateOf(seconds), seconds, target, selector, userInfo, repeats);
}

Ref<NSTimer> NSTimer::timer(NSTimeInterval seconds, bool repeats, Function function) {
  return make<NSTimer>(dateOf(seconds), seconds, repeats, std::move(function));
}

Ref<NSTimer> NSTimer::scheduledTimerWithTimeInterval_target_selector_userInfo_repeats(
    NSTimeInterval seconds, NSObject* target, Selector selector, NSObject* userInfo, bool repeats) {
  auto timer = timerWithTimeInterval_target_selector_userInfo_repeats(seconds, target, selector,
                                                                      userInfo, repeats);
  NSRunLoop::currentRunLoop()->addTimer_forMode(timer, NSDefaultRunLoopMode);
  return timer;
}

Ref<NSTimer> NSTimer::scheduledTimer(NSTimeInterval seconds, bool repeats, Function function) {
  auto made = timer(seconds, repeats, std::move(function));
  NSRunLoop::currentRunLoop()->addTimer_forMode(made, NSDefaultRunLoopMode);
  return made;
}

// What it does may invalidate it, here or on another thread, and so is kept for as long as it runs.
void NSTimer::perform() {
  Ref<NSObject> target;
  std::shared_ptr<Function> function;
  {
    std::lock_guard lock(mutex_);
    target = target_;
    function = function_;
  }
  if (function)
    (*function)(this);
  else if (target)
    target->performSelector_withObject(selector_, this);
}

void NSTimer::fire() {
  if (!isValid()) return;
  const Ref<NSTimer> self(this);  // what it does may let go of it
  perform();
  if (!repeats_) invalidate();
}

// The loop has taken it off its list, so that a loop run meanwhile does not fire it again.
void NSTimer::fireInLoop(detail::SteadyTime due) {
  struct Afterwards {
    NSTimer* timer;
    detail::SteadyTime time;
    ~Afterwards() {
      if (timer->isValid()) timer->repeats_ ? again() : timer->invalidate();
    }
    void again() const {
      const auto now = std::chrono::steady_clock::now();
      const auto missed = now < time ? 0 : (now - time) / timer->interval_;
      std::shared_ptr<detail::LoopTimers> timers;
      {
        std::lock_guard lock(timer->mutex_);
        timers = timer->timers_;
      }
      if (timers) timers->putBack(timer, time + (missed + 1) * timer->interval_);
    }
  } afterwards{this, due};
  if (isValid()) perform();
}

void NSTimer::invalidate() {
  if (!valid_.exchange(false)) return;
  Ref<NSTimer> self(this);
  Ref<NSObject> target;
  Ref<NSObject> userInfo;
  std::shared_ptr<Function> function;
  std::shared_ptr<detail::LoopTimers> timers;
  {
    std::lock_guard lock(mutex_);
    target.swap(target_);
    userInfo.swap(userInfo_);
    function.swap(function_);
    timers.swap(timers_);
  }
  if (timers) timers->remove(this);
}

Ref<NSDate> NSTimer::fireDate() const {
  std::optional<detail::SteadyTime> time;
  {
    std::lock_guard lock(mutex_);
    if (timers_) time = timers_->timeOf(this);
    if (!time) time = time_;
  }
  return dateOf(std::chrono::duration<double>(*time - std::chrono::steady_clock::now()).count());
}

void NSTimer::setFireDate(NSDate* date) {
  const detail::SteadyTime time = detail::steadyTime(date);
  std::shared_ptr<detail::LoopTimers> timers;
  {
    std::lock_guard lock(mutex_);
    time_ = time;
    timers = timers_;
  }
  if (timers) timers->put(this, time);
}

NSTimeInterval NSTimer::timeInterval() const noexcept {
  return std::chrono::duration<double>(interval_).count();
}

Ref<NSObject> NSTimer::userInfo() const {
  std::lock_guard lock(mutex_);
  return userInfo_;
}

void NSTimer::describe(ClassDescription<NSTimer>& is) {
  using Self = NSTimer;
  is.named("NSTimer")
      .initializer<&Self::initWithFireDate_interval_target_selector_userInfo_repeats>(
          "initWithFireDate:interval:target:selector:userInfo:repeats:")
      .classMethod<&Self::timerWithTimeInterval_target_selector_userInfo_repeats>(
          "timerWithTimeInterval:target:selector:userInfo:repeats:")
      .classMethod<&Self::scheduledTimerWithTimeInterval_target_selector_userInfo_repeats>(
          "scheduledTimerWithTimeInterval:target:selector:userInfo:repeats:")
      .method<&Self::fire>("fire")
      .method<&Self::invalidate>("invalidate")
      .method<&Self::isValid>("isValid")
      .property<&Self::fireDate, &Self::setFireDate>("fireDate")
      .method<&Self::timeInterval>("timeInterval")
      .property<&Self::userInfo>("userInfo");
}

}  // namespace qz
