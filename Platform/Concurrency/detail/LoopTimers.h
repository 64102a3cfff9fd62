/// @file
/// Private: the timers of one run loop, by the time at which they fire.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_set>
#include <utility>

#include "Platform/Concurrency/NSTimer.h"
#include "Platform/Concurrency/detail/LoopSignal.h"

namespace qz::detail {

/// Outlives its loop while a timer refers to it. Any thread. No Object is released and no signal
/// raised while the lock is held.
class LoopTimers : public std::enable_shared_from_this<LoopTimers> {
 public:
  explicit LoopTimers(std::shared_ptr<LoopSignal> signal) : signal_(std::move(signal)) {}

  /// Adds a timer, or another mode for it. An invalid one is ignored; a list that is closed
  /// invalidates it. False when it belongs to another list.
  bool attach(NSTimer* timer, ModeMask modes);

  /// Puts it to another time. Nothing for an invalid one.
  void put(NSTimer* timer, SteadyTime time);

  /// Puts a timer that has fired back, unless it was put or removed meanwhile.
  void putBack(NSTimer* timer, SteadyTime time);

  void remove(NSTimer* timer);

  /// Takes the first timer that is due by `now` in the modes for which `runs` holds, and is older
  /// than `before`, off the list, which still counts it, with its time; nil when there is none.
  std::pair<Ref<NSTimer>, SteadyTime> takeDue(SteadyTime now, std::uint64_t before,
                                              const std::function<bool(ModeMask)>& runs);

  /// A number above those of all places that were given.
  std::uint64_t nextOrder();

  /// When the first one fires in such a mode.
  std::optional<SteadyTime> first(const std::function<bool(ModeMask)>& runs);

  /// When the timer fires next, if it is on the list.
  std::optional<SteadyTime> timeOf(const NSTimer* timer);

  bool isEmpty();

  /// Has the descriptor of the signal follow the first timer of the default mode.
  void armAlways();

  /// Invalidates all and takes no more.
  void close();

 private:
  using Place = std::pair<SteadyTime, std::uint64_t>;

  void list(NSTimer* timer, SteadyTime time);
  Ref<NSTimer> unlist(NSTimer* timer);
  void arm() noexcept;

  std::mutex mutex_;
  std::map<Place, Ref<NSTimer>> byTime_;
  std::unordered_set<const NSTimer*> firing_;  // valid, but off the list for now
  std::uint64_t nextOrder_ = 0;
  const std::shared_ptr<LoopSignal> signal_;
  bool armed_ = false;
  bool closed_ = false;
};

}  // namespace qz::detail
