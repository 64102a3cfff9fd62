#include "Platform/Concurrency/detail/LoopCore.h"

#include <algorithm>
#include <iterator>

#include "Platform/Runtime/Send.h"

namespace qz::detail {

LoopCore::LoopCore()
    : signal(std::make_shared<LoopSignal>()), timers(std::make_shared<LoopTimers>(signal)) {}

bool LoopCore::post(LoopTask&& task) {
  {
    std::lock_guard lock(mutex_);
    if (ended_) return false;
    incoming_.push_back(std::move(task));
    // Whoever added the first one raises the signal for all.
    if (incoming_.size() != 1) return true;
  }
  signal->raise();
  return true;
}

void LoopCore::stop() noexcept {
  stop_.store(true);
  signal->raise();
}

bool LoopCore::run(ModeMask mode, std::optional<SteadyTime> limit, Until until) {
  for (;;) {
    const bool served = turn(mode);
    if (stop_.exchange(false) || (served && until == Until::served)) return served;
    if (limit && std::chrono::steady_clock::now() >= *limit) return served;
    if (ended_ || (until == Until::nothingLeft && isEmpty())) return served;
    if (served) continue;  // something may have become ready meanwhile
    std::optional<SteadyTime> wake =
        timers->first([&](ModeMask modes) { return runsIn(mode, modes); });
    if (limit && (!wake || *limit < *wake)) wake = limit;
    signal->wait(wake);
  }
}

bool LoopCore::turn(ModeMask mode) {
  // However the turn ends: an inner loop gives the mode back to the outer one, and what an
  // exception leaves behind, or an inner loop has put off, is announced again.
  struct Scope {
    LoopCore& core;
    const ModeMask outer;
    bool isWhole = false;
    bool leavesWork() const noexcept {
      const auto runsHere = [&](const LoopTask& task) {
        return core.runsIn(core.currentMode, task.modes());
      };
      return core.next_ < core.batch_.size() ||
             std::any_of(core.deferred_.begin(), core.deferred_.end(), runsHere);
    }
    ~Scope() {
      if (!isWhole || leavesWork()) core.signal->raise();
      core.currentMode = outer;
    }
  } scope{*this, std::exchange(currentMode, mode)};
  if (signal->lower()) takeIncoming();
  bool served = serveDeferred();
  served = serveQueued() || served;
  served = serveTimers() || served;
  scope.isWhole = true;
  return served;
}

void LoopCore::takeIncoming() {
  if (next_ == batch_.size()) {
    batch_.clear();
    next_ = 0;
  }
  std::lock_guard lock(mutex_);
  if (batch_.empty()) {
    batch_.swap(incoming_);
  } else {
    batch_.insert(batch_.end(), std::make_move_iterator(incoming_.begin()),
                  std::make_move_iterator(incoming_.end()));
    incoming_.clear();
  }
}

// As many as there were at first, so that timers get their turn. Each task is moved out before it
// runs, because an inner loop goes on with the batch.
bool LoopCore::serveQueued() {
  bool served = false;
  for (std::size_t left = batch_.size() - next_; left > 0 && next_ < batch_.size(); --left) {
    LoopTask task = std::move(batch_[next_++]);
    if (runsIn(currentMode, task.modes())) {
      served = true;
      task();
    } else {
      deferred_.push_back(std::move(task));
    }
  }
  return served;
}

bool LoopCore::serveDeferred() {
  bool served = false;
  for (std::size_t left = deferred_.size(); left > 0; --left) {
    const auto place =
        std::find_if(deferred_.begin(), deferred_.end(),
                     [this](const LoopTask& task) { return runsIn(currentMode, task.modes()); });
    if (place == deferred_.end()) break;
    LoopTask task = std::move(*place);
    deferred_.erase(place);
    served = true;
    task();
  }
  return served;
}

bool LoopCore::serveTimers() {
  bool served = false;
  const auto now = std::chrono::steady_clock::now();
  const std::uint64_t before = timers->nextOrder();
  for (;;) {
    auto [timer, time] =
        timers->takeDue(now, before, [this](ModeMask modes) { return runsIn(currentMode, modes); });
    if (!timer) return served;
    served = true;
    timer->fireInLoop(time);
  }
}

bool LoopCore::isEmpty() {
  {
    std::lock_guard lock(mutex_);
    if (!incoming_.empty()) return false;
  }
  return next_ == batch_.size() && deferred_.empty() && timers->isEmpty();
}

void LoopCore::end() noexcept {
  std::vector<LoopTask> dropped;
  {
    std::lock_guard lock(mutex_);
    ended_ = true;
    dropped.swap(incoming_);
  }
  timers->close();
  // Whatever goes with these may come back here, and finds nothing.
  const auto later = std::exchange(later_, {});
  std::vector<LoopTask> batch = std::exchange(batch_, {});
  next_ = 0;
  std::list<LoopTask> deferred = std::exchange(deferred_, {});
  signal->raise();
}

std::optional<NSTimeInterval> LoopCore::secondsUntilNextTimer(ModeMask mode) {
  const auto next = timers->first([&](ModeMask modes) { return runsIn(mode, modes); });
  if (!next) return std::nullopt;
  return std::max(0.0, std::chrono::duration<double>(*next - SteadyTime::clock::now()).count());
}

void LoopCore::performLater(Selector selector, NSObject* target, NSObject* argument,
                            NSTimeInterval seconds, ModeMask modes) {
  auto timer = NSTimer::timer(
      seconds, false,
      [this, selector, kept = Ref<NSObject>(target), with = Ref<NSObject>(argument)](NSTimer* due) {
        forget(kept, due);
        kept->performSelector_withObject(selector, with);
      });
  later_.emplace(target, Later{selector, Ref<NSObject>(argument), timer});
  timers->attach(timer, modes);
}

void LoopCore::forget(NSObject* target, NSTimer* timer) {
  auto [it, end] = later_.equal_range(target);
  while (it != end && it->second.timer != timer) ++it;
  if (it != end) later_.erase(it);
}

void LoopCore::cancel(NSObject* target, std::optional<Selector> selector, NSObject* argument) {
  // Letting go of them may end the target, and with it do anything, so it comes last; and so may
  // comparing arguments, so the entries are looked at one by one from a list of our own.
  std::vector<Later> candidates;
  auto [first, last] = later_.equal_range(target);
  for (auto it = first; it != last; ++it)
    if (!selector || it->second.selector == *selector) candidates.push_back(it->second);
  for (const Later& later : candidates)
    if (!selector || equal(later.argument, argument)) {
      forget(target, later.timer);
      later.timer->invalidate();
    }
}

}  // namespace qz::detail
