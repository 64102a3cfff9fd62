/// @file
/// Private: what a run loop is made of.
#pragma once

#include <atomic>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

#include "Platform/Concurrency/detail/LoopSignal.h"
#include "Platform/Concurrency/detail/LoopTask.h"
#include "Platform/Concurrency/detail/LoopTimers.h"

namespace qz::detail {

/// The queue has two ends: under a lock, where every thread adds, and the loop's own, to which the
/// whole of the first is moved at once. So serving takes the lock once a turn, not once a task, and
/// not at all while the signal is lowered: nobody has added anything then.
class LoopCore {
 public:
  /// When a run returns, unless it is stopped.
  enum class Until { served, nothingLeft, limit };

  LoopCore();

  /// Any thread. False, with the task destroyed, once the loop has ended.
  bool post(LoopTask&& task);
  void stop() noexcept;

  // The loop's thread only:

  /// Runs in `mode`, at most until `limit`. Whether the last turn served anything.
  bool run(ModeMask mode, std::optional<SteadyTime> limit, Until until);

  /// Serves what is ready, without waiting.
  bool turn(ModeMask mode);

  void end() noexcept;

  void performLater(Selector selector, NSObject* target, NSObject* argument, NSTimeInterval seconds,
                    ModeMask modes);

  /// How long the next timer of the mode is away; none when there is none.
  std::optional<NSTimeInterval> secondsUntilNextTimer(ModeMask mode);

  /// All of the target's without a Selector; else those with it and an equal argument.
  void cancel(NSObject* target, std::optional<Selector> selector, NSObject* argument);

  const std::shared_ptr<LoopSignal> signal;
  const std::shared_ptr<LoopTimers> timers;
  ModeMask commonMask = defaultMode;
  ModeMask currentMode = 0;  // none: it is not running

 private:
  struct Later {
    Selector selector;
    Ref<NSObject> argument;
    Ref<NSTimer> timer;
  };

  bool runsIn(ModeMask mode, ModeMask modes) const noexcept {
    return (modes & mode) != 0 || ((modes & commonModes) != 0 && (commonMask & mode) != 0);
  }
  bool serveQueued();
  bool serveDeferred();
  bool serveTimers();
  void takeIncoming();
  bool isEmpty();
  void forget(NSObject* target, NSTimer* timer);

  std::mutex mutex_;  // guards the tasks, and the writing of what follows them
  std::vector<LoopTask> incoming_;
  std::atomic<bool> ended_{false};

  std::vector<LoopTask> batch_;
  std::size_t next_ = 0;          // the first of the batch that was not served yet
  std::list<LoopTask> deferred_;  // met in a mode that is not theirs; older than the batch
  std::atomic<bool> stop_{false};
  std::unordered_multimap<NSObject*, Later> later_;  // by target, which the timer keeps
};

}  // namespace qz::detail
