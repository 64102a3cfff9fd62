// Every Object on another thread, and later.
#include "Platform/Concurrency/detail/NSObjectThreads.h"
#include "Platform/Collections/NSArray.h"
#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Concurrency/NSThread.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"

namespace qz {
namespace {

// A message that keeps what it is about, for loops that serve it later.
auto keptMessage(NSObject* receiver, Selector selector, NSObject* object) {
  return [kept = Ref<NSObject>(receiver), selector, with = Ref<NSObject>(object)] {
    kept->performSelector_withObject(selector, with);
  };
}

void performOn(NSRunLoop* loop, NSObject* receiver, Selector selector, NSObject* object,
               bool wait) {
  if (wait)
    loop->performAndWait([&] { receiver->performSelector_withObject(selector, object); });
  else
    loop->perform(keptMessage(receiver, selector, object));
}

void cancelAll(Class*, NSObject* target) {
  NSObject::cancelPreviousPerformRequestsWithTarget(target);
}
void cancelOne(Class*, NSObject* target, Selector selector, NSObject* object) {
  NSObject::cancelPreviousPerformRequestsWithTarget_selector_object(target, selector, object);
}

}  // namespace

void NSObject::performSelectorOnMainThread_withObject_waitUntilDone(Selector selector,
                                                                    NSObject* object, bool wait) {
  performOn(detail::mainLoop(), this, selector, object, wait);
}

void NSObject::performSelectorOnMainThread_withObject_waitUntilDone_modes(Selector selector,
                                                                          NSObject* object,
                                                                          bool wait,
                                                                          NSArray* modes) {
  NSRunLoop* const loop = detail::mainLoop();
  if (wait)
    loop->performInModesAndWait(modes, [&] { performSelector_withObject(selector, object); });
  else
    loop->performInModes(modes, keptMessage(this, selector, object));
}

void NSObject::performSelector_onThread_withObject_waitUntilDone(Selector selector,
                                                                 NSThread* thread, NSObject* object,
                                                                 bool wait) {
  if (thread == nullptr) detail::raise(NSInvalidArgumentException, "nil is no thread");
  const Ref<NSRunLoop> loop = thread->runLoop();
  performOn(loop, this, selector, object, wait);
}

void NSObject::performSelectorInBackground_withObject(Selector selector, NSObject* object) {
  NSThread::detachNewThreadSelector_toTarget_withObject(selector, this, object);
}

void NSObject::performSelector_withObject_afterDelay(Selector selector, NSObject* object,
                                                     double seconds) {
  performSelector_withObject_afterDelay_inModes(selector, object, seconds,
                                                NSArray::arrayWithObject(NSDefaultRunLoopMode));
}

void NSObject::performSelector_withObject_afterDelay_inModes(Selector selector, NSObject* object,
                                                             double seconds, NSArray* modes) {
  NSRunLoop::currentRunLoop()->performSelector_target_argument_afterDelay_modes(
      selector, this, object, seconds, modes);
}

void NSObject::cancelPreviousPerformRequestsWithTarget(NSObject* target) {
  NSRunLoop::currentRunLoop()->cancelPerformSelectorsWithTarget(target);
}

void NSObject::cancelPreviousPerformRequestsWithTarget_selector_object(NSObject* target,
                                                                       Selector selector,
                                                                       NSObject* object) {
  NSRunLoop::currentRunLoop()->cancelPerformSelector_target_argument(selector, target, object);
}

void detail::registerNSObjectThreads() {
  extend<NSObject>("Concurrency")
      .method<&NSObject::performSelectorOnMainThread_withObject_waitUntilDone>(
          "performSelectorOnMainThread:withObject:waitUntilDone:")
      .method<&NSObject::performSelectorOnMainThread_withObject_waitUntilDone_modes>(
          "performSelectorOnMainThread:withObject:waitUntilDone:modes:")
      .method<&NSObject::performSelector_onThread_withObject_waitUntilDone>(
          "performSelector:onThread:withObject:waitUntilDone:")
      .method<&NSObject::performSelectorInBackground_withObject>(
          "performSelectorInBackground:withObject:")
      .method<&NSObject::performSelector_withObject_afterDelay>(
          "performSelector:withObject:afterDelay:")
      .method<&NSObject::performSelector_withObject_afterDelay_inModes>(
          "performSelector:withObject:afterDelay:inModes:")
      .classMethod<&cancelAll>("cancelPreviousPerformRequestsWithTarget:")
      .classMethod<&cancelOne>("cancelPreviousPerformRequestsWithTarget:selector:object:");
}

}  // namespace qz
