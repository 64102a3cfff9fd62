#include "Platform/Concurrency/detail/LoopTimers.h"

namespace qz::detail {

bool LoopTimers::attach(NSTimer* timer, ModeMask modes) {
  SteadyTime time;
  {
    std::lock_guard lock(timer->mutex_);
    if (timer->timers_ && timer->timers_.get() != this) return false;
    if (timer->isValid()) timer->timers_ = shared_from_this();
    time = timer->time_;
  }
  bool closed = false;
  bool isKnown = false;
  {
    std::lock_guard lock(mutex_);
    timer->modes_ |= modes;
    closed = closed_;
    isKnown = timer->isListed_ || firing_.contains(timer);
    arm();
  }
  if (closed)
    timer->invalidate();
  else if (isKnown)
    signal_->raise();
  else
    put(timer, time);
  return true;
}

void LoopTimers::put(NSTimer* timer, SteadyTime time) {
  Ref<NSTimer> kept;
  {
    std::lock_guard lock(mutex_);
    // An invalid one was removed already, or is going to be: both under this lock.
    if (closed_ || !timer->isValid()) return;
    kept = unlist(timer);
    firing_.erase(timer);
    list(timer, time);
  }
  signal_->raise();  // the loop may be waiting for a later one
}

void LoopTimers::putBack(NSTimer* timer, SteadyTime time) {
  {
    std::lock_guard lock(mutex_);
    if (firing_.erase(timer) == 0) return;
    list(timer, time);
  }
  signal_->raise();
}

void LoopTimers::remove(NSTimer* timer) {
  Ref<NSTimer> kept;
  {
    std::lock_guard lock(mutex_);
    kept = unlist(timer);
    const bool fired = firing_.erase(timer) != 0;
    if (!kept && !fired) return;
    arm();
  }
  // A loop may have been waiting for this one alone.
  signal_->raise();
}

void LoopTimers::list(NSTimer* timer, SteadyTime time) {
  timer->listed_ = time;
  timer->order_ = nextOrder_++;
  timer->isListed_ = true;
  byTime_.emplace(Place(time, timer->order_), Ref<NSTimer>(timer));
  arm();
}

Ref<NSTimer> LoopTimers::unlist(NSTimer* timer) {
  if (!timer->isListed_) return nullptr;
  timer->isListed_ = false;
  auto place = byTime_.find({timer->listed_, timer->order_});
  Ref<NSTimer> kept = std::move(place->second);
  byTime_.erase(place);
  return kept;
}

// A timer of another mode would make the descriptor ready with nothing to serve.
void LoopTimers::arm() noexcept {
  if (!armed_) return;
  std::optional<SteadyTime> next;
  for (const auto& [place, timer] : byTime_)
    if ((timer->modes_ & (defaultMode | commonModes)) != 0) {
      next = place.first;
      break;
    }
  signal_->arm(next);
}

std::pair<Ref<NSTimer>, SteadyTime> LoopTimers::takeDue(SteadyTime now, std::uint64_t before,
                                                        const std::function<bool(ModeMask)>& runs) {
  std::lock_guard lock(mutex_);
  for (auto it = byTime_.begin(); it != byTime_.end() && it->first.first <= now; ++it) {
    if (it->first.second >= before || !runs(it->second->modes_)) continue;
    Ref<NSTimer> due = std::move(it->second);
    const SteadyTime time = it->first.first;
    byTime_.erase(it);
    due->isListed_ = false;
    firing_.insert(due.get());
    arm();
    return {std::move(due), time};
  }
  return {};
}

std::uint64_t LoopTimers::nextOrder() {
  std::lock_guard lock(mutex_);
  return nextOrder_;
}

std::optional<SteadyTime> LoopTimers::first(const std::function<bool(ModeMask)>& runs) {
  std::lock_guard lock(mutex_);
  for (const auto& [place, timer] : byTime_)
    if (runs(timer->modes_)) return place.first;
  return std::nullopt;
}

std::optional<SteadyTime> LoopTimers::timeOf(const NSTimer* timer) {
  std::lock_guard lock(mutex_);
  return timer->isListed_ ? std::optional(timer->listed_) : std::nullopt;
}

bool LoopTimers::isEmpty() {
  std::lock_guard lock(mutex_);
  return byTime_.empty() && firing_.empty();
}

void LoopTimers::armAlways() {
  std::lock_guard lock(mutex_);
  armed_ = true;
  arm();
}

void LoopTimers::close() {
  std::map<Place, Ref<NSTimer>> all;
  {
    std::lock_guard lock(mutex_);
    closed_ = true;
    all.swap(byTime_);
    for (auto& [place, timer] : all) timer->isListed_ = false;
    firing_.clear();
  }
  for (auto& [place, timer] : all) timer->invalidate();
}

}  // namespace qz::detail
