/// @file
/// Work on a thread of its own, whose progress the main thread shows.
#pragma once

#include <atomic>
#include <functional>
#include <list>

#include "Platform/Concurrency/NSLock.h"
#include "Platform/Concurrency/NSNotification.h"
#include "Platform/Runtime/Derives.h"
#include "Platform/Runtime/WeakRef.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSDate;
class NSError;
class NSMutableDictionary;

/// Posted on the main thread before the work begins, and when it has returned or raised; the sender
/// is the task, without user information.
inline NSString* const QZThreadedTaskDidBeginNotification =
    detail::literal<"QZThreadedTaskDidBeginNotification">();
inline NSString* const QZThreadedTaskDidCompleteNotification =
    detail::literal<"QZThreadedTaskDidCompleteNotification">();

/// Keys of task attributes; the first and the last are for the application's own use.
inline NSString* const QZThreadedTaskNameKey = detail::literal<"taskName">();
inline NSString* const QZThreadedTaskResultKey = detail::literal<"taskResult">();
inline NSString* const QZThreadedTaskErrorKey = detail::literal<"taskError">();
inline NSString* const QZThreadedTaskCompletionMessageKey = detail::literal<"taskMessage">();

/// A task: derive from it and override `performTask`, or give it a function.
///
///     auto task = make<QZThreadedTask>([](QZThreadedTask* task) {
///       for (int i = 0; i < 100 && !task->abortRequestReceived(); ++i) {
///         copyFile(i);
///         task->updatePercentComplete(static_cast<float>(i));
///       }
///     });
///     task->setDelegate(window);   // threadedTaskDidBegin:, threadedTaskDidComplete:
///     task->start();
///
/// A run of the task, on its thread:
/// 1. posts the begin notification on the main thread, and waits until it has been delivered;
/// 2. does the work. A platform exception or `std::exception` that escapes from it becomes the
///    task's error; anything else that is thrown ends the run without step 3, and the program;
/// 3. posts the complete notification on the main thread, and waits.
/// What an observer raises in steps 1 and 3 is raised in the main thread's loop, and the run goes
/// on. When that loop has ended, so does the thread, quietly. A main thread that waits for the task
/// waits for ever, because steps 1 and 3 need it.
///
/// Progress: the main thread reads and sets the properties, and observers of their keys are told
/// there. The worker hands values over with `update…`, which never wait for the main thread unless
/// forced; of many between two turns of the main thread's loop the last one is delivered, once.
/// While a value is delivered, a lock is held that updates take: one that is not forced is dropped
/// then, even the last; so what must arrive is forced or set on the main thread (`onMainThread`).
/// An observer of progress must not force an update, which raises NSInternalInconsistencyException.
///
/// Operations may be overridden in C++, or by Selector in the class's description.
class QZThreadedTask : public Derives<QZThreadedTask, NSObject> {
 public:
  static void describe(ClassDescription<QZThreadedTask>& is);

  QZThreadedTask();

  /// A task whose work is this function; raises NSInvalidArgumentException for an empty one.
  explicit QZThreadedTask(std::function<void(QZThreadedTask* task)> work);
  ~QZThreadedTask() override;

  // Life. Any thread.

  /// Runs the task on a new thread, which keeps it alive, and returns at once. Calling it again
  /// runs the task again, on another thread: nothing keeps two runs apart. Raises
  /// NSGenericException when the system has no thread to give.
  virtual void start();

  /// What the thread does; see above. Not meant to be called.
  virtual void doThreadedOperation();

  /// The work; on the task's thread. Does nothing unless the task was made with a function.
  virtual void performTask();

  /// Asks the work to end: sets `abortRequestReceived`, which the work has to look for.
  virtual void abort();

  /// Who is told of begin and end; not kept alive. A delegate that has `threadedTaskDidBegin:` or
  /// `threadedTaskDidComplete:` is sent it with the Notification, on the main thread; set a
  /// delegate before the task starts.
  Ref<NSObject> delegate() const;
  virtual void setDelegate(NSObject* delegate);

  // Results. Unguarded: the worker writes them, and the main thread reads them once the task is
  // complete.

  /// The value under a key; nil when there is none. Setting nil removes the key.
  virtual Ref<NSObject> taskAttributeForKey(NSString* key) const;
  virtual void setTaskAttribute_forKey(NSObject* value, NSString* key);
  Ref<NSObject> taskResult() const;
  virtual void setTaskResult(NSObject* result);
  Ref<NSError> taskError() const;
  virtual void setTaskError(NSError* error);

  // Progress as the main thread sees it; main thread only. Setting what is there does nothing:
  // the very same String, an equal number.

  /// Writes "MESSAGE (PERCENT)" to the debug log under the key "progress", as `setPercentComplete`.
  Ref<NSString> progressMessage() const;
  virtual void setProgressMessage(NSString* message);

  /// A further line, for details; nil at first, and not logged.
  Ref<NSString> secondaryProgressMessage() const;
  virtual void setSecondaryProgressMessage(NSString* message);

  /// In whatever the application takes for percent; not clamped.
  float percentComplete() const noexcept { return percentComplete_; }
  virtual void setPercentComplete(float percent);
  virtual void setPercentCompleteNumber(NSNumber* percent);

  /// Whether the percentage means anything; at first it does not.
  bool knowsPercentComplete() const noexcept { return knowsPercentComplete_; }
  virtual void setKnowsPercentComplete(bool knows);
  virtual void setKnowsPercentCompleteNumber(NSNumber* knows);

  // Flags. Any thread; observers are told in the thread that sets them.

  /// Whether the task looks for `abortRequestReceived`, so that a stop control makes sense.
  bool canAbort() const noexcept { return canAbort_; }
  virtual void setCanAbort(bool canAbort);
  bool abortRequestReceived() const noexcept { return abortRequestReceived_; }
  virtual void setAbortRequestReceived(bool received);

  /// Whether progress should be shown at all; at first it should.
  bool displayProgress() const noexcept { return displayProgress_; }
  virtual void setDisplayProgress(bool display);

  /// Progress from the worker. With `force` (the default of those that have it) the update waits
  /// for its turn and arrives; without, it is dropped when the lock is busy. Takes about as long as
  /// locking and unlocking a mutex.
  void updateProgressMessage_force(NSString* message, bool force);
  void updateProgressMessage(NSString* message) { updateProgressMessage_force(message, true); }
  void updateSecondaryProgressMessage(NSString* message);
  void updatePercentComplete(float percent);
  void updateKnowsPercentComplete_force(bool knows, bool force);
  void updateKnowsPercentComplete(bool knows) { updateKnowsPercentComplete_force(knows, true); }

  /// Deliveries; scheduled on the main thread by the updates. Without a pending value they do
  /// nothing, so one that came late never undoes a newer value.
  virtual void updateProgressMessage();
  virtual void updateSecondaryProgressMessage();
  virtual void updatePercentComplete();
  virtual void updateKnowsPercentComplete();

  // Waiting, on the worker's side. The Object is kept alive meanwhile.

  /// Waits for a change of the value at `keyPath`, at most until `limit` (nil: it is past). Whether
  /// there was one: any that is announced after this began counts. False for a nil Object.
  virtual bool waitForChangeInObject_forKeyPath_beforeDate(NSObject* object, NSString* keyPath,
                                                           NSDate* limit);

  /// Whether the value is `expected`, or equal to it, now or after at most one change until
  /// `limit`. A change to a third value answers false, with time left: callers who want to wait on
  /// do so.
  virtual bool waitUntilValueInObject_forKeyPath_equalsObject_beforeDate(NSObject* object,
                                                                         NSString* keyPath,
                                                                         NSObject* expected,
                                                                         NSDate* limit);

  /// Wakes those who wait for this change; other contexts go to the inherited operation.
  void observeValueForKeyPath_ofObject_change_context(NSString* keyPath, NSObject* object,
                                                      NSDictionary* change, void* context) override;

 private:
  /// A value on its way to the main thread. What is nil can be pending too.
  template <class T>
  struct Pending {
    T value{};
    bool isPending = false;
  };
  struct Waiter;

  /// Has the value delivered, or not when the lock is busy and nothing is forced.
  template <class T, class Value>
  void hand(Pending<T>& place, const Value& value, bool force, Selector delivery);
  template <class T, class Set>
  void deliver(Pending<T>& place, const Set& set);
  void setFlag(std::atomic<bool>& flag, bool value, NSString* key);
  void logProgress();

  std::function<void(QZThreadedTask*)> work_;
  WeakRef<NSObject> delegate_;
  Ref<NSString> progressMessage_;
  Ref<NSString> secondaryProgressMessage_;
  float percentComplete_ = 0;
  bool knowsPercentComplete_ = false;
  std::atomic<bool> canAbort_{false};
  std::atomic<bool> abortRequestReceived_{false};
  std::atomic<bool> displayProgress_{true};
  const Ref<NSMutableDictionary> taskAttributes_;

  NSLock updateLock_;  // guards the pending values
  Pending<Ref<NSString>> pendingProgressMessage_;
  Pending<Ref<NSString>> pendingSecondaryProgressMessage_;
  Pending<float> pendingPercentComplete_;
  Pending<bool> pendingKnowsPercentComplete_;

  NSCondition keyValueWaitCondition_;  // guards the list
  std::list<Waiter> waiters_;
};

}  // namespace qz

#pragma GCC visibility pop
