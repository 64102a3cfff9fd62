#include "QZFoundation/QZThreadedTask.h"

#include <mutex>
#include <utility>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Concurrency/MainThread.h"
#include "Platform/Concurrency/NSNotificationCenter.h"
#include "Platform/Concurrency/NSThread.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSKeyValueObserving.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSError.h"
#include "QZFoundation/NSError-QZFoundation.h"
#include "QZFoundation/QZDebug.h"

namespace qz {
namespace {

/// "wait" as four characters; says which of a task's observations are for those who wait.
void* const waitContext = reinterpret_cast<void*>(std::uintptr_t{0x77616974});

/// Posts on the main thread and waits. What an observer raises is the main thread's to deal with,
/// not the work's.
void postAndWait(NSString* name, QZThreadedTask* task) {
  const auto notification = NSNotification::notificationWithName_object(name, task);
  try {
    NSNotificationCenter::defaultCenter()->performSelectorOnMainThread_withObject_waitUntilDone(
        "postNotification:"_sel, notification, true);
  } catch (const RunLoopEnded&) {
    throw;  // nobody is left to tell
  } catch (...) {
    postToMainThread([raised = std::current_exception()] { std::rethrow_exception(raised); });
  }
}

}  // namespace

struct QZThreadedTask::Waiter {
  const NSObject* object;
  NSString* keyPath;
  bool isSignalled = false;
};

QZThreadedTask::QZThreadedTask() : taskAttributes_(NSMutableDictionary::dictionary()) {}

QZThreadedTask::QZThreadedTask(std::function<void(QZThreadedTask*)> work) : QZThreadedTask() {
  if (!work) detail::raise(NSInvalidArgumentException, "QZThreadedTask: the function is empty");
  work_ = std::move(work);
}

QZThreadedTask::~QZThreadedTask() = default;

// Life --------------------------------------------------------------------------------------------

void QZThreadedTask::start() {
  NSThread::detachNewThreadSelector_toTarget_withObject("doThreadedOperation"_sel, this, nullptr);
}

void QZThreadedTask::doThreadedOperation() {
  postAndWait(QZThreadedTaskDidBeginNotification, this);
  Ref<NSString> failure;
  try {
    send<void>(this, "performTask"_sel);
  } catch (const Raised& raised) {
    failure = raised->description();
  } catch (const std::exception& raised) {
    failure = NSString::stringWithUTF8String(raised.what());
  }
  if (failure) setTaskError(errorWithDescription(failure));
  postAndWait(QZThreadedTaskDidCompleteNotification, this);
}

void QZThreadedTask::performTask() {
  if (work_) work_(this);
}

void QZThreadedTask::abort() { setAbortRequestReceived(true); }

Ref<NSObject> QZThreadedTask::delegate() const { return delegate_.load(); }

void QZThreadedTask::setDelegate(NSObject* delegate) {
  const Ref<NSObject> before = delegate_.load();
  if (before == delegate) return;
  const auto center = NSNotificationCenter::defaultCenter();
  const std::pair<NSString*, Selector> callbacks[] = {
      {QZThreadedTaskDidBeginNotification, "threadedTaskDidBegin:"_sel},
      {QZThreadedTaskDidCompleteNotification, "threadedTaskDidComplete:"_sel}};
  for (const auto& [name, selector] : callbacks)
    if (before) center->removeObserver_name_object(before, name, this);
  delegate_ = WeakRef<NSObject>(delegate);
  for (const auto& [name, selector] : callbacks)
    if (delegate != nullptr && delegate->respondsToSelector(selector))
      center->addObserver_selector_name_object(delegate, selector, name, this);
}

// Results -----------------------------------------------------------------------------------------

Ref<NSObject> QZThreadedTask::taskAttributeForKey(NSString* key) const {
  return taskAttributes_->objectForKey(key);
}

void QZThreadedTask::setTaskAttribute_forKey(NSObject* value, NSString* key) {
  taskAttributes_->setValue_forKey(value, key);
}

Ref<NSObject> QZThreadedTask::taskResult() const {
  return taskAttributeForKey(QZThreadedTaskResultKey);
}

void QZThreadedTask::setTaskResult(NSObject* result) {
  const KeyValueChange changing(this, QZThreadedTaskResultKey);
  setTaskAttribute_forKey(result, QZThreadedTaskResultKey);
}

Ref<NSError> QZThreadedTask::taskError() const {
  return as<NSError>(taskAttributeForKey(QZThreadedTaskErrorKey));
}

void QZThreadedTask::setTaskError(NSError* error) {
  const KeyValueChange changing(this, QZThreadedTaskErrorKey);
  setTaskAttribute_forKey(error, QZThreadedTaskErrorKey);
}

// Progress on the main thread ---------------------------------------------------------------------

void QZThreadedTask::logProgress() {
  QZDebugLog("progress"_ns, "%@ (%f)"_ns, progressMessage_, static_cast<double>(percentComplete_));
}

Ref<NSString> QZThreadedTask::progressMessage() const { return progressMessage_; }

// Whether it is the same String is asked by identity, so that a message of the same text is logged
// again.
void QZThreadedTask::setProgressMessage(NSString* message) {
  if (progressMessage_ == message) return;
  const KeyValueChange changing(this, "progressMessage"_ns);
  progressMessage_ = Ref<NSString>(message);
  logProgress();
}

Ref<NSString> QZThreadedTask::secondaryProgressMessage() const { return secondaryProgressMessage_; }

void QZThreadedTask::setSecondaryProgressMessage(NSString* message) {
  if (secondaryProgressMessage_ == message) return;
  const KeyValueChange changing(this, "secondaryProgressMessage"_ns);
  secondaryProgressMessage_ = Ref<NSString>(message);
}

void QZThreadedTask::setPercentComplete(float percent) {
  if (percentComplete_ == percent) return;
  const KeyValueChange changing(this, "percentComplete"_ns);
  percentComplete_ = percent;
  logProgress();
}

void QZThreadedTask::setPercentCompleteNumber(NSNumber* percent) {
  setPercentComplete(percent == nullptr ? 0 : percent->floatValue());
}

void QZThreadedTask::setKnowsPercentComplete(bool knows) {
  if (knowsPercentComplete_ == knows) return;
  const KeyValueChange changing(this, "knowsPercentComplete"_ns);
  knowsPercentComplete_ = knows;
}

void QZThreadedTask::setKnowsPercentCompleteNumber(NSNumber* knows) {
  setKnowsPercentComplete(knows != nullptr && knows->boolValue());
}

void QZThreadedTask::setFlag(std::atomic<bool>& flag, bool value, NSString* key) {
  if (flag == value) return;
  const KeyValueChange changing(this, key);
  flag = value;
}

void QZThreadedTask::setCanAbort(bool canAbort) { setFlag(canAbort_, canAbort, "canAbort"_ns); }

void QZThreadedTask::setAbortRequestReceived(bool received) {
  setFlag(abortRequestReceived_, received, "abortRequestReceived"_ns);
}

void QZThreadedTask::setDisplayProgress(bool display) {
  setFlag(displayProgress_, display, "displayProgress"_ns);
}

// Progress from the worker ------------------------------------------------------------------------

namespace {
bool isThere(const Ref<NSString>& value) { return static_cast<bool>(value); }
template <class T>
bool isThere(const T&) {
  return true;
}
}  // namespace

template <class T, class Value>
void QZThreadedTask::hand(Pending<T>& place, const Value& value, bool force, Selector delivery) {
  T exchanged(value);  // what was pending before is let go of without the lock
  std::unique_lock lock(updateLock_, std::defer_lock);
  if (force)
    lock.lock();
  else if (!lock.try_lock())
    return;
  // A delivery that is scheduled takes the newer value. One scheduled for nil does not count: what
  // comes after nil schedules its own, and the delivery too many finds nothing pending.
  const bool isScheduled = place.isPending && isThere(place.value);
  std::swap(place.value, exchanged);
  place.isPending = true;
  if (!isScheduled) performSelectorOnMainThread_withObject_waitUntilDone(delivery, nullptr, false);
}

void QZThreadedTask::updateProgressMessage_force(NSString* message, bool force) {
  hand(pendingProgressMessage_, message, force, "updateProgressMessage"_sel);
}

void QZThreadedTask::updateSecondaryProgressMessage(NSString* message) {
  hand(pendingSecondaryProgressMessage_, message, false, "updateSecondaryProgressMessage"_sel);
}

void QZThreadedTask::updatePercentComplete(float percent) {
  hand(pendingPercentComplete_, percent, false, "updatePercentComplete"_sel);
}

void QZThreadedTask::updateKnowsPercentComplete_force(bool knows, bool force) {
  hand(pendingKnowsPercentComplete_, knows, force, "updateKnowsPercentComplete"_sel);
}

/// The lock is held while the value is set, and so while its observers are told: a worker that
/// forces nothing passes by meanwhile.
template <class T, class Set>
void QZThreadedTask::deliver(Pending<T>& place, const Set& set) {
  const std::lock_guard lock(updateLock_);
  if (!place.isPending) return;
  const T value = std::exchange(place.value, T());
  place.isPending = false;
  set(value);
}

void QZThreadedTask::updateProgressMessage() {
  deliver(pendingProgressMessage_, [this](NSString* message) { setProgressMessage(message); });
}

void QZThreadedTask::updateSecondaryProgressMessage() {
  deliver(pendingSecondaryProgressMessage_,
          [this](NSString* message) { setSecondaryProgressMessage(message); });
}

void QZThreadedTask::updatePercentComplete() {
  deliver(pendingPercentComplete_,
          [this](float percent) { setPercentCompleteNumber(NSNumber::of(percent)); });
}

void QZThreadedTask::updateKnowsPercentComplete() {
  deliver(pendingKnowsPercentComplete_,
          [this](bool knows) { setKnowsPercentCompleteNumber(NSNumber::of(knows)); });
}

// Waiting -----------------------------------------------------------------------------------------

bool QZThreadedTask::waitForChangeInObject_forKeyPath_beforeDate(NSObject* object,
                                                                 NSString* keyPath, NSDate* limit) {
  if (object == nullptr) return false;
  const Ref<NSObject> kept(object);

  // Who waits is known before the change is observed, so that none is missed.
  std::unique_lock lock(keyValueWaitCondition_);
  const auto waiter = waiters_.insert(waiters_.end(), Waiter{object, keyPath});
  lock.unlock();
  try {
    object->addObserver_forKeyPath_options_context(this, keyPath, 0, waitContext);
  } catch (...) {
    lock.lock();
    waiters_.erase(waiter);
    throw;
  }

  lock.lock();
  while (!waiter->isSignalled && keyValueWaitCondition_.waitUntilDate(limit)) {
  }
  const bool isSignalled = waiter->isSignalled;
  waiters_.erase(waiter);
  lock.unlock();
  object->removeObserver_forKeyPath_context(this, keyPath, waitContext);
  return isSignalled;
}

bool QZThreadedTask::waitUntilValueInObject_forKeyPath_equalsObject_beforeDate(NSObject* object,
                                                                               NSString* keyPath,
                                                                               NSObject* expected,
                                                                               NSDate* limit) {
  const auto isExpected = [&] {
    const Ref<NSObject> value = object == nullptr ? nullptr : object->valueForKeyPath(keyPath);
    return equal(value, expected);
  };
  if (isExpected()) return true;
  waitForChangeInObject_forKeyPath_beforeDate(object, keyPath, limit);
  return isExpected();
}

void QZThreadedTask::observeValueForKeyPath_ofObject_change_context(NSString* keyPath,
                                                                    NSObject* object,
                                                                    NSDictionary* change,
                                                                    void* context) {
  if (context != waitContext)
    return Super::observeValueForKeyPath_ofObject_change_context(keyPath, object, change, context);
  const std::lock_guard lock(keyValueWaitCondition_);
  for (Waiter& each : waiters_)
    if (each.object == object && each.keyPath->isEqualToString(keyPath)) each.isSignalled = true;
  keyValueWaitCondition_.broadcast();
}

void QZThreadedTask::describe(ClassDescription<QZThreadedTask>& is) {
  using Task = QZThreadedTask;
  is.named("QZThreadedTask")
      .method<&Task::start>("start")
      .method<&Task::doThreadedOperation>("doThreadedOperation")
      .method<&Task::performTask>("performTask")
      .method<&Task::abort>("abort")
      .property<&Task::delegate, &Task::setDelegate>("delegate")
      .method<&Task::taskAttributeForKey>("taskAttributeForKey:")
      .method<&Task::setTaskAttribute_forKey>("setTaskAttribute:forKey:")
      .property<&Task::taskResult, &Task::setTaskResult>("taskResult")
      .property<&Task::taskError, &Task::setTaskError>("taskError")
      .property<&Task::progressMessage, &Task::setProgressMessage>("progressMessage")
      .property<&Task::secondaryProgressMessage, &Task::setSecondaryProgressMessage>(
          "secondaryProgressMessage")
      .property<&Task::percentComplete, &Task::setPercentComplete>("percentComplete")
      .method<&Task::setPercentCompleteNumber>("setPercentCompleteNumber:")
      .property<&Task::knowsPercentComplete, &Task::setKnowsPercentComplete>("knowsPercentComplete")
      .method<&Task::setKnowsPercentCompleteNumber>("setKnowsPercentCompleteNumber:")
      .property<&Task::canAbort, &Task::setCanAbort>("canAbort")
      .property<&Task::abortRequestReceived, &Task::setAbortRequestReceived>("abortRequestReceived")
      .property<&Task::displayProgress, &Task::setDisplayProgress>("displayProgress")
      .method<&Task::updateProgressMessage_force>("updateProgressMessage:force:")
      .method<static_cast<void (Task::*)(NSString*)>(&Task::updateProgressMessage)>(
          "updateProgressMessage:")
      .method<static_cast<void (Task::*)(NSString*)>(&Task::updateSecondaryProgressMessage)>(
          "updateSecondaryProgressMessage:")
      .method<static_cast<void (Task::*)(float)>(&Task::updatePercentComplete)>(
          "updatePercentComplete:")
      .method<&Task::updateKnowsPercentComplete_force>("updateKnowsPercentComplete:force:")
      .method<static_cast<void (Task::*)(bool)>(&Task::updateKnowsPercentComplete)>(
          "updateKnowsPercentComplete:")
      .method<static_cast<void (Task::*)()>(&Task::updateProgressMessage)>("updateProgressMessage")
      .method<static_cast<void (Task::*)()>(&Task::updateSecondaryProgressMessage)>(
          "updateSecondaryProgressMessage")
      .method<static_cast<void (Task::*)()>(&Task::updatePercentComplete)>("updatePercentComplete")
      .method<static_cast<void (Task::*)()>(&Task::updateKnowsPercentComplete)>(
          "updateKnowsPercentComplete")
      .method<&Task::waitForChangeInObject_forKeyPath_beforeDate>(
          "waitForChangeInObject:forKeyPath:beforeDate:")
      .method<&Task::waitUntilValueInObject_forKeyPath_equalsObject_beforeDate>(
          "waitUntilValueInObject:forKeyPath:equalsObject:beforeDate:");
}

}  // namespace qz
