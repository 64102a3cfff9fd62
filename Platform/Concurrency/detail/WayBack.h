/// @file
/// Private: how what was suspended goes on. Knows coroutines as an address and a function only, so
/// that the library is the same whether or not its compiler has them.
#pragma once

#include <atomic>
#include <memory>
#include <optional>

#include "Platform/Concurrency/NSThread.h"
#include "Platform/Concurrency/NSTimer.h"
#include "Platform/Runtime/WeakRef.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// A suspended function. Whoever calls `resume` does so once, and must not use what belongs to the
/// function afterwards.
struct Suspended {
  void (*function)(void* frame);
  void* frame;

  void resume() const { function(frame); }
};

/// Resumes on `thread` when that runs its loop. When its loop has ended, or ends before, `*ended`
/// becomes true and the function goes on at once, wherever that is noticed: it is then told by an
/// exception, and nothing that it owns is lost.
void resumeOn(NSThread* thread, Suspended what, bool* ended);

/// Resumes on a new thread, which stays while the function waits there for something. Raises
/// NSGenericException when the system has no thread to give.
void resumeOnNewThread(Suspended what);

/// Waits for one thing and brings a suspended function back to the thread on which it was
/// suspended. While it waits, that thread's loop has something to wait for: a timer, which is the
/// limit as well, and whose loss tells that the loop has ended.
class WayBack : public std::enable_shared_from_this<WayBack> {
 public:
  /// What the loop's end means: that the function goes on with it, or that it has to wait all the
  /// same because what it waits for uses its variables.
  enum class Leave { WithLoop, WhenCome };

  /// To the calling thread.
  explicit WayBack(Suspended what);

  /// Lets the waiting begin. The last thing to do: where the loop has ended, the function has gone
  /// on when this returns.
  void wait(std::optional<NSTimeInterval> limit, Leave leave = Leave::WithLoop);

  /// Whether this caller is the one that ends the waiting. Any thread; true for the first, who then
  /// may use what belongs to the function, and calls one of the following.
  bool claim() noexcept { return !isClaimed_.exchange(true, std::memory_order_acq_rel); }

  /// Goes on in the loop's next turn, or at once when this is the thread.
  void comeBack();
  void comeBackAtOnce();

  /// For the function once it goes on: throws RunLoopEnded when the loop has ended.
  void throwIfLoopEnded() const;

 private:
  enum class Outcome { Came, TimedOut, LoopEnded };
  class Hold;
  struct Return;

  void goOn(Outcome outcome);

  const Suspended what_;
  const Ref<NSThread> thread_;
  std::atomic<bool> isClaimed_{false};
  Outcome outcome_ = Outcome::Came;
  WeakRef<NSTimer> timer_;  // weak, so that it goes with its loop
};

/// Where something that ends and the one that waits for its end meet, whoever comes first.
class Meeting {
 public:
  /// Whether it has ended; asked before anybody waits.
  bool hasEnded() const noexcept { return hasMet_.load(std::memory_order_acquire); }

  /// Waits for the end. False when it has come: then nobody is to be resumed. Sets `back` first,
  /// and like WayBack::wait may have gone on when it returns.
  bool wait(Suspended what, WayBack::Leave leave, std::shared_ptr<WayBack>& back) noexcept;

  /// Tells the end, once; any thread. Who waits has gone on when this returns, if this is their
  /// thread, and may have taken this Meeting along.
  void end();

 private:
  std::atomic<bool> hasMet_{false};
  std::shared_ptr<WayBack> back_;
};

}  // namespace qz::detail

#pragma GCC visibility pop
