/// @file
/// Run loops: where a thread waits for its work.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "Platform/Concurrency/NSTimer.h"
#include "Platform/Concurrency/detail/BlockingCall.h"
#include "Platform/Concurrency/detail/LoopTask.h"
#include "Platform/Runtime/NSException.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;
class NSThread;
namespace detail {
class LoopCore;
}  // namespace detail

/// The mode in which a loop runs unless told otherwise.
inline NSString* const NSDefaultRunLoopMode = detail::literal<"NSDefaultRunLoopMode">();
/// Stands for all modes that a loop has been told are common; the default mode is one.
inline NSString* const NSRunLoopCommonModes = detail::literal<"NSRunLoopCommonModes">();

/// Raised in a caller that waits for a loop which ends without serving it.
inline NSString* const NSRunLoopEndedException = detail::literal<"NSRunLoopEndedException">();

/// What flies then.
class RunLoopEnded : public Raised {
 public:
  RunLoopEnded();
};

/// A thread's queue of work, timers, and the wait for both.
///
///     auto loop = NSRunLoop::mainRunLoop();
///     loop->perform([document] { document->save(); });                  // from any thread
///     int pages = loop->performAndWait([&] { return document->pages(); });
///     …
///     NSRunLoop::currentRunLoop()->run();                               // on the main thread
///
/// A loop runs in one mode at a time. Work and timers belong to modes, and wait while the loop runs
/// in another: so an inner loop can serve a question to the user and leave the rest for later. Work
/// is served in the order in which it came, timers by their times; neither keeps the other from its
/// turn. What they throw leaves the call that runs the loop, and the next call goes on with the
/// rest.
///
/// A loop ends with its thread. Work that it has not served is dropped, and callers that wait for
/// such work get NSRunLoopEndedException.
///
/// A program that has an event loop of its own drives the main thread's loop from there instead of
/// running it: it polls `fileDescriptor`, or is told by `setWakeUpFunction`, and calls
/// `runPending`. `examples/` shows it with GLib, Qt and Asio.
///
/// What says so may be called from any thread; everything else belongs to the loop's own.
class NSRunLoop final : public Derives<NSRunLoop, NSObject> {
 public:
  static void describe(ClassDescription<NSRunLoop>& is);

  /// Made by NSThread.
  explicit NSRunLoop(const NSThread* owner);
  ~NSRunLoop() override;

  /// The calling thread's loop, and the main thread's. Any thread.
  static Ref<NSRunLoop> currentRunLoop();
  static Ref<NSRunLoop> mainRunLoop();

  /// Whether it is the calling thread's. Any thread.
  bool isCurrent() const noexcept;

  // Work. Any thread.

  /// Queues a function without parameters: for the common modes, or for those in `modes`. False
  /// when the loop has ended, and then the function is dropped.
  template <class F>
  bool perform(F&& function) {
    return post(detail::LoopTask(std::forward<F>(function), detail::commonModes));
  }
  template <class F>
  bool performInModes(NSArray* modes, F&& function) {
    return post(detail::LoopTask(std::forward<F>(function), modesOf(modes)));
  }

  /// Queues the function, waits until it has run, and answers what it answers; what it throws is
  /// thrown here. On the loop's own thread it is called at once. Raises NSRunLoopEndedException.
  /// Two threads that wait for each other wait for ever.
  template <class F>
  auto performAndWait(F&& function) -> std::invoke_result_t<F&> {
    return waitFor(function, detail::commonModes);
  }
  template <class F>
  auto performInModesAndWait(NSArray* modes, F&& function) -> std::invoke_result_t<F&> {
    return waitFor(function, modesOf(modes));
  }

  // Timers and modes.

  /// Adds a timer, or adds a mode to one that was added before. Raises NSInvalidArgumentException
  /// for nil, and for a timer of another loop; an invalid timer is ignored. Any thread.
  void addTimer_forMode(NSTimer* timer, NSString* mode);

  /// Makes `mode` one of the common modes.
  void addCommonMode(NSString* mode);

  /// The mode in which it is running; nil when it is not.
  Ref<NSString> currentMode() const;

  /// When the next timer of the mode fires; nil when it has none.
  Ref<NSDate> limitDateForMode(NSString* mode);

  // Running. A loop may be run again from what it serves.

  /// Runs in the default mode until it is stopped or nothing is left to wait for: no work and no
  /// timer of any mode. The main thread's loop always has something to wait for, namely what other
  /// threads send.
  void run();

  /// Runs in the default mode until the date has come (serving at least what is ready), or until it
  /// is stopped, whether there is something to wait for or not. nil is now.
  void runUntilDate(NSDate* limit);

  /// Waits until something of that mode can be served, and serves what is ready; at most until
  /// `limit`. False when the date came first, or the loop was stopped with nothing to serve.
  bool runMode_beforeDate(NSString* mode, NSDate* limit);

  /// Makes the innermost call that runs the loop return as soon as it has served what is queued by
  /// now; the next one when none is running. Any thread, but not from a signal handler: let a
  /// thread wait for signals (sigwait(3)) and call it.
  void stop() noexcept;

  /// Serves what is ready in the default mode and does not wait. Whether there was anything.
  bool runPending();

  /// Ends it for good, as the end of its thread does.
  void end() noexcept;

  // Driven by another event loop.

  /// A descriptor that is ready for reading when `runPending` has something to do; made on first
  /// use, owned by the loop. -1 and `errno` when the system has none to give. Never read it.
  int fileDescriptor();

  /// Has `function` called, on any thread and with no lock held, when `runPending` has something to
  /// do or the answer of `secondsUntilNextTimer` has become shorter; null for none. It must not
  /// throw.
  void setWakeUpFunction(std::function<void()> function);

  /// How long the next timer of the default mode is away (not negative); none when there is none.
  std::optional<NSTimeInterval> secondsUntilNextTimer();

  // Later. See also NSObject.

  /// Sends `target` the Selector after `seconds`, in the modes given; `argument` may be nil.
  void performSelector_target_argument_afterDelay_modes(Selector selector, NSObject* target,
                                                        NSObject* argument, NSTimeInterval seconds,
                                                        NSArray* modes);

  /// Forgets what was to be sent to the target, with this Selector and an equal argument.
  void cancelPerformSelectorsWithTarget(NSObject* target);
  void cancelPerformSelector_target_argument(Selector selector, NSObject* target,
                                             NSObject* argument);

 private:
  bool post(detail::LoopTask&& task);
  static detail::ModeMask modesOf(NSArray* modes);
  void callAndWait(void (*function)(void* context), void* context, detail::ModeMask modes);

  template <class F>
  auto waitFor(F& function, detail::ModeMask modes) -> std::invoke_result_t<F&>;

  const NSThread* owner_;  // to compare with; never followed
  std::unique_ptr<detail::LoopCore> core_;
};

template <class F>
auto NSRunLoop::waitFor(F& function, detail::ModeMask modes) -> std::invoke_result_t<F&> {
  using Result = std::invoke_result_t<F&>;
  if constexpr (std::is_void_v<Result>) {
    F* called = &function;
    callAndWait([](void* context) { (**static_cast<F**>(context))(); }, &called, modes);
  } else {
    using Kept = std::conditional_t<std::is_reference_v<Result>,
                                    std::reference_wrapper<std::remove_reference_t<Result>>,
                                    std::remove_cv_t<Result>>;
    struct Call {
      F* function;
      std::optional<Kept> result;
    } call{&function, std::nullopt};
    callAndWait(
        [](void* context) {
          auto* inner = static_cast<Call*>(context);
          inner->result.emplace((*inner->function)());
        },
        &call, modes);
    return static_cast<Result>(std::move(*call.result));
  }
}

namespace detail {
/// The main thread's loop, which lives for ever; costs a load.
NSRunLoop* mainLoop();
}  // namespace detail

}  // namespace qz

#pragma GCC visibility pop
