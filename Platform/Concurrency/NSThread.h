/// @file
/// Threads.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSMutableDictionary;
class NSRunLoop;
namespace detail {
struct ThreadAccess;
}

/// A thread, made here or met here: every thread that asks for itself has an Object.
///
///     NSThread::detachNewThreadSelector_toTarget_withObject("work:"_sel, worker, job);
///     Ref<NSThread> thread = NSThread::detachNewThread([job] { job->run(); });
///
/// **The main thread** is the one that first asks who it is or who the main thread is, asks for a
/// run loop, or starts another thread through this class; or the one that says so with
/// `becomeMainThread`, as a program does early whose first question could come from a helper.
///
/// A thread that runs keeps its Object alive, and with it target and argument. What escapes from
/// its work ends the program, as with `std::thread`, except the exception that tells a waiting
/// caller of a run loop's end: it ends the thread quietly, so that helpers may outlive the main
/// thread's loop.
///
/// Members may be called from any thread unless they say otherwise.
class NSThread : public Derives<NSThread, NSObject> {
 public:
  static void describe(ClassDescription<NSThread>& is);

  /// A thread that is not started yet: of a class that overrides `main`, of an operation to send
  /// (whose argument may be nil), or of a function.
  NSThread();
  NSThread(NSObject* target, Selector selector, NSObject* argument);
  explicit NSThread(std::function<void()> function);
  ~NSThread() override;
  static Ref<NSThread> initWithTarget_selector_object(NSObject* target, Selector selector,
                                                      NSObject* argument);

  /// Make one and start it. Raise NSInvalidArgumentException for a nil target, Selector or
  /// function, and NSGenericException when the system has no thread to give.
  static void detachNewThreadSelector_toTarget_withObject(Selector selector, NSObject* target,
                                                          NSObject* argument);
  static Ref<NSThread> detachNewThread(std::function<void()> function);

  /// The calling thread.
  static Ref<NSThread> currentThread();

  /// The main thread: the calling one if there was none.
  static Ref<NSThread> mainThread();

  /// Whether the calling thread is the main thread.
  static bool isMainThread();

  /// Makes the calling thread the main one. Raises NSInternalInconsistencyException when another
  /// one is it already, unless that one has ended.
  static void becomeMainThread();

  /// Stops the calling thread for a while; not at all when the time is not positive or past.
  static void sleepForTimeInterval(NSTimeInterval seconds);
  static void sleepUntilDate(NSDate* date);

  /// Begins. Raises NSInternalInconsistencyException when it was started before, and
  /// NSGenericException when the system has no thread to give.
  void start();

  /// The work: sends the operation or calls the function it was made with. Called on the thread;
  /// override it, do not call it.
  virtual void main();

  /// Asks the thread to end early, which its work has to look for by itself.
  void cancel() noexcept { cancelled_.store(true); }
  bool isCancelled() const noexcept { return cancelled_.load(); }

  /// Whether it has begun and not ended, and whether it has ended.
  bool isExecuting() const noexcept { return state_.load() == executing; }
  bool isFinished() const noexcept { return state_.load() == finished; }

  /// Whether this is the main thread.
  bool isMain() const;

  /// Waits until the work is done and the thread's run loop has ended; at most until `limit`.
  /// Whether it is done. A thread cannot wait for itself: NSInternalInconsistencyException.
  void waitUntilFinished();
  bool waitUntilFinishedBeforeDate(NSDate* limit);

  /// For people who debug. The system shows the first 15 bytes. A thread that was met has the name
  /// that the system knows; never nil.
  Ref<NSString> name() const;
  void setName(NSString* name);

  /// In bytes; 0 for the system's default. To be set before `start`.
  std::size_t stackSize() const noexcept { return stackSize_; }
  void setStackSize(std::size_t bytes) noexcept { stackSize_ = bytes; }

  /// A Dictionary for what belongs to this thread, emptied when the thread ends. The thread itself
  /// only.
  Ref<NSMutableDictionary> threadDictionary();

  /// The thread's run loop, made on first use. Work may be given to it before the thread starts;
  /// that of a thread that has ended takes none.
  Ref<NSRunLoop> runLoop();

  /// "<NSThread: 0x…>{name = …}"
  Ref<NSString> description() const override;

 private:
  friend struct detail::ThreadAccess;
  enum State : int { ready, executing, finished };

  void finish() noexcept;

  Ref<NSObject> target_;
  Selector selector_;
  Ref<NSObject> argument_;
  std::function<void()> function_;
  std::atomic<int> state_{ready};
  std::atomic<bool> cancelled_{false};
  std::size_t stackSize_ = 0;

  mutable std::mutex mutex_;  // guards what follows
  std::condition_variable end_;
  Ref<NSString> name_;
  Ref<NSRunLoop> runLoop_;
  std::uintptr_t handle_ = 0;  // the system's, while it runs

  Ref<NSMutableDictionary> dictionary_;
};

/// Posted on a thread that was started here, when its work is done; its sender is the NSThread.
inline NSString* const NSThreadWillExitNotification =
    detail::literal<"NSThreadWillExitNotification">();

namespace detail {
/// Whether `thread` is the calling one; costs a load.
bool isCurrentThread(const NSThread* thread) noexcept;
}  // namespace detail

}  // namespace qz

#pragma GCC visibility pop
