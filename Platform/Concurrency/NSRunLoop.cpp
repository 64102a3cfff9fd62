#include "Platform/Concurrency/NSRunLoop.h"

#include "Platform/Collections/NSArray.h"
#include "Platform/Concurrency/NSThread.h"
#include "Platform/Concurrency/detail/LoopCore.h"
#include "Platform/Concurrency/detail/LoopModes.h"
#include "Platform/Runtime/Describe.h"

namespace qz {

using Until = detail::LoopCore::Until;

RunLoopEnded::RunLoopEnded()
    : Raised(make<NSException>(NSRunLoopEndedException,
                               "the run loop ended before it could serve this call"_ns)) {}

NSRunLoop::NSRunLoop(const NSThread* owner)
    : owner_(owner), core_(std::make_unique<detail::LoopCore>()) {}

NSRunLoop::~NSRunLoop() { end(); }

Ref<NSRunLoop> NSRunLoop::currentRunLoop() { return NSThread::currentThread()->runLoop(); }
Ref<NSRunLoop> NSRunLoop::mainRunLoop() { return Ref<NSRunLoop>(detail::mainLoop()); }
bool NSRunLoop::isCurrent() const noexcept { return detail::isCurrentThread(owner_); }

bool NSRunLoop::post(detail::LoopTask&& task) { return core_->post(std::move(task)); }

detail::ModeMask NSRunLoop::modesOf(NSArray* modes) { return detail::modeBits(modes); }

void NSRunLoop::callAndWait(void (*function)(void* context), void* context,
                            detail::ModeMask modes) {
  if (isCurrent()) {
    function(context);
    return;
  }
  detail::BlockingCall call(function, context);
  post(detail::LoopTask(detail::BlockingCall::Task(call), modes));
  call.wait();
}

void NSRunLoop::addTimer_forMode(NSTimer* timer, NSString* mode) {
  const detail::ModeMask modes = detail::modeBit(mode);
  if (timer == nullptr) detail::raise(NSInvalidArgumentException, "nil is no timer to add");
  if (!core_->timers->attach(timer, modes))
    detail::raise(NSInvalidArgumentException, "the timer belongs to another run loop");
}

void NSRunLoop::addCommonMode(NSString* mode) { core_->commonMask |= detail::modeBit(mode); }

Ref<NSString> NSRunLoop::currentMode() const {
  return core_->currentMode == 0 ? nullptr : detail::modeName(core_->currentMode);
}

Ref<NSDate> NSRunLoop::limitDateForMode(NSString* mode) {
  const auto seconds = core_->secondsUntilNextTimer(detail::modeBit(mode));
  return seconds ? NSDate::dateWithTimeIntervalSinceNow(*seconds) : nullptr;
}

void NSRunLoop::run() {
  const bool isMain = this == detail::mainLoop();
  core_->run(detail::defaultMode, std::nullopt, isMain ? Until::limit : Until::nothingLeft);
}

void NSRunLoop::runUntilDate(NSDate* limit) {
  core_->run(detail::defaultMode, detail::steadyTime(limit), Until::limit);
}

bool NSRunLoop::runMode_beforeDate(NSString* mode, NSDate* limit) {
  const detail::ModeMask bit = detail::modeBit(mode);
  if (bit == detail::commonModes)
    detail::raise(NSInvalidArgumentException,
                  "a run loop runs in one mode, not in the common ones");
  return core_->run(bit, detail::steadyTime(limit), Until::served);
}

void NSRunLoop::stop() noexcept { core_->stop(); }
bool NSRunLoop::runPending() { return core_->turn(detail::defaultMode); }
void NSRunLoop::end() noexcept { core_->end(); }

int NSRunLoop::fileDescriptor() {
  const int descriptor = core_->signal->descriptor();
  if (descriptor >= 0) core_->timers->armAlways();
  return descriptor;
}

void NSRunLoop::setWakeUpFunction(std::function<void()> function) {
  core_->signal->setHost(std::move(function));
}

std::optional<NSTimeInterval> NSRunLoop::secondsUntilNextTimer() {
  return core_->secondsUntilNextTimer(detail::defaultMode);
}

void NSRunLoop::performSelector_target_argument_afterDelay_modes(Selector selector,
                                                                 NSObject* target,
                                                                 NSObject* argument,
                                                                 NSTimeInterval seconds,
                                                                 NSArray* modes) {
  if (target == nullptr || !selector)
    detail::raise(NSInvalidArgumentException, "a delayed message needs a target and a Selector");
  core_->performLater(selector, target, argument, seconds, detail::modeBits(modes));
}

void NSRunLoop::cancelPerformSelectorsWithTarget(NSObject* target) {
  core_->cancel(target, std::nullopt, nullptr);
}

void NSRunLoop::cancelPerformSelector_target_argument(Selector selector, NSObject* target,
                                                      NSObject* argument) {
  core_->cancel(target, selector, argument);
}

void NSRunLoop::describe(ClassDescription<NSRunLoop>& is) {
  using Self = NSRunLoop;
  is.named("NSRunLoop")
      .classMethod<&Self::currentRunLoop>("currentRunLoop")
      .classMethod<&Self::mainRunLoop>("mainRunLoop")
      .method<&Self::addTimer_forMode>("addTimer:forMode:")
      .method<&Self::addCommonMode>("addCommonMode:")
      .method<&Self::currentMode>("currentMode")
      .method<&Self::limitDateForMode>("limitDateForMode:")
      .method<&Self::run>("run")
      .method<&Self::runUntilDate>("runUntilDate:")
      .method<&Self::runMode_beforeDate>("runMode:beforeDate:")
      .method<&Self::stop>("stop")
      .method<&Self::runPending>("runPending")
      .method<&Self::fileDescriptor>("fileDescriptor")
      .method<&Self::performSelector_target_argument_afterDelay_modes>(
          "performSelector:target:argument:afterDelay:modes:")
      .method<&Self::cancelPerformSelectorsWithTarget>("cancelPerformSelectorsWithTarget:")
      .method<&Self::cancelPerformSelector_target_argument>(
          "cancelPerformSelector:target:argument:");
}

}  // namespace qz
