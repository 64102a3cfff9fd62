#include "Platform/Concurrency/detail/WayBack.h"

#include <utility>

#include "Platform/Concurrency/NSRunLoop.h"

namespace qz::detail {
namespace {

/// What travels to a loop. Destroyed without having been called, it says that the loop has ended.
class Arrival {
 public:
  Arrival(Suspended what, bool* ended) noexcept : what_(what), ended_(ended) {}
  Arrival(Arrival&& other) noexcept
      : what_(other.what_), ended_(std::exchange(other.ended_, nullptr)) {}
  Arrival& operator=(Arrival&&) = delete;
  ~Arrival() {
    if (bool* ended = std::exchange(ended_, nullptr)) {
      *ended = true;
      what_.resume();
    }
  }
  void operator()() {
    ended_ = nullptr;
    what_.resume();
  }

 private:
  Suspended what_;
  bool* ended_;
};

}  // namespace

void resumeOn(NSThread* thread, Suspended what, bool* ended) {
  thread->runLoop()->perform(Arrival(what, ended));
}

void resumeOnNewThread(Suspended what) {
  NSThread::detachNewThread([what] {
    what.resume();
    NSRunLoop::currentRunLoop()->run();
  });
}

/// Kept by the timer alone: it goes when the timer is invalidated, and when the loop drops it.
class WayBack::Hold {
 public:
  Hold(std::shared_ptr<WayBack> back, Leave leave) : back_(std::move(back)), leave_(leave) {}
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;
  ~Hold() { leave(Outcome::LoopEnded); }

  void leave(Outcome outcome) {
    if (leave_ == Leave::WithLoop && back_->claim()) back_->goOn(outcome);
  }

 private:
  const std::shared_ptr<WayBack> back_;
  const Leave leave_;
};

struct WayBack::Return {
  std::shared_ptr<WayBack> back;

  explicit Return(std::shared_ptr<WayBack> itsBack) noexcept : back(std::move(itsBack)) {}
  Return(Return&&) noexcept = default;
  Return& operator=(Return&&) = delete;
  ~Return() {
    if (back) back->goOn(Outcome::LoopEnded);
  }
  void operator()() { std::exchange(back, nullptr)->goOn(Outcome::Came); }
};

WayBack::WayBack(Suspended what) : what_(what), thread_(NSThread::currentThread()) {}

void WayBack::wait(std::optional<NSTimeInterval> limit, Leave leave) {
  const auto date = limit ? NSDate::dateWithTimeIntervalSinceNow(*limit) : NSDate::distantFuture();
  const auto timer = make<NSTimer>(
      date, 0, false, [hold = std::make_shared<Hold>(shared_from_this(), leave)](NSTimer*) {
        hold->leave(Outcome::TimedOut);
      });
  timer_ = timer;
  const Ref<NSRunLoop> loop = thread_->runLoop();
  loop->addTimer_forMode(timer, NSRunLoopCommonModes);
}

void WayBack::comeBack() { thread_->runLoop()->perform(Return(shared_from_this())); }

void WayBack::comeBackAtOnce() {
  if (isCurrentThread(thread_))
    goOn(Outcome::Came);
  else
    comeBack();
}

void WayBack::throwIfLoopEnded() const {
  if (outcome_ == Outcome::LoopEnded) throw RunLoopEnded();
}

void WayBack::goOn(Outcome outcome) {
  const auto kept = shared_from_this();
  outcome_ = outcome;
  if (const auto timer = timer_.load()) timer->invalidate();
  what_.resume();
}

bool Meeting::wait(Suspended what, WayBack::Leave leave, std::shared_ptr<WayBack>& back) noexcept {
  if (hasEnded()) return false;
  const auto way = std::make_shared<WayBack>(what);
  back = way;
  back_ = way;
  if (hasMet_.exchange(true, std::memory_order_acq_rel)) return false;
  way->wait(std::nullopt, leave);
  return true;
}

void Meeting::end() {
  if (!hasMet_.exchange(true, std::memory_order_acq_rel)) return;
  const auto back = std::move(back_);
  if (back->claim()) back->comeBackAtOnce();
}

}  // namespace qz::detail
