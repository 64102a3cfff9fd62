#include "Platform/Concurrency/detail/LoopSignal.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/Concurrency/detail/Futex.h"

namespace qz::detail {
namespace {

void closeAll(std::initializer_list<int> descriptors) noexcept {
  const int error = errno;
  for (const int descriptor : descriptors)
    if (descriptor >= 0) ::close(descriptor);
  errno = error;
}

// Whether it can be counted down is all that matters; the counts themselves say nothing.
void drain(int descriptor) noexcept {
  std::uint64_t count = 0;
  [[maybe_unused]] const auto bytes = ::read(descriptor, &count, sizeof count);
}

}  // namespace

LoopSignal::~LoopSignal() { closeAll({poll_, event_.load(), timer_.load()}); }

void LoopSignal::raise() noexcept {
  const auto before = state_.exchange(raised);
  if (before == raised) return;
  if (before == asleep) futexWake(state_);
  if (hasHost()) tellHost();
}

void LoopSignal::wait(std::optional<SteadyTime> limit) noexcept {
  const auto isRaised = [this] { return state_.load(std::memory_order_acquire) == raised; };
  const auto start = AdaptiveSpin::Clock::now();
  if (!spin_.until(isRaised, limit.value_or(SteadyTime::max()))) {
    std::uint32_t expected = lowered;
    if (state_.compare_exchange_strong(expected, asleep)) {
      while (state_.load() == asleep && futexWait(state_, asleep, limit)) {
      }
      expected = asleep;
      state_.compare_exchange_strong(expected, lowered);
    }
  }
  spin_.took(AdaptiveSpin::Clock::now() - start);
}

// The descriptors come first: one that is raised in between then still reads as ready. The other
// way round it would stay raised while nothing says so, and raising it again would tell nobody.
bool LoopSignal::lower() noexcept {
  if (const int event = event_.load(); event >= 0) drain(event);
  if (const int timer = timer_.load(); timer >= 0) drain(timer);
  return state_.exchange(lowered) == raised;
}

int LoopSignal::descriptor() {
  if (poll_ >= 0) return poll_;
  const int poll = ::epoll_create1(EPOLL_CLOEXEC);
  const int event = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  const int timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
  epoll_event readable{};
  readable.events = EPOLLIN;
  if (poll < 0 || event < 0 || timer < 0 ||
      ::epoll_ctl(poll, EPOLL_CTL_ADD, event, &readable) != 0 ||
      ::epoll_ctl(poll, EPOLL_CTL_ADD, timer, &readable) != 0) {
    closeAll({poll, event, timer});
    return -1;
  }
  poll_ = poll;
  timer_.store(timer);
  event_.store(event);
  hosted_.store(true);
  // Whoever raised it before found nobody to tell.
  if (state_.load() == raised) tellHost();
  return poll_;
}

void LoopSignal::setHost(std::function<void()> function) {
  {
    std::lock_guard lock(hostMutex_);
    host_ = function ? std::make_shared<std::function<void()>>(std::move(function)) : nullptr;
    hosted_.store(host_ != nullptr || poll_ >= 0);
  }
  if (state_.load() == raised) tellHost();
}

void LoopSignal::tellHost() noexcept {
  if (const int event = event_.load(); event >= 0) {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto bytes = ::write(event, &one, sizeof one);
  }
  std::shared_ptr<std::function<void()>> host;
  {
    std::lock_guard lock(hostMutex_);
    host = host_;
  }
  if (host) (*host)();
}

void LoopSignal::arm(std::optional<SteadyTime> time) noexcept {
  const int timer = timer_.load();
  if (timer < 0) return;
  itimerspec when{};
  if (time) {
    // Zero would disarm it.
    const auto since =
        std::max<std::int64_t>(1, std::chrono::nanoseconds(time->time_since_epoch()).count());
    when.it_value.tv_sec = static_cast<std::time_t>(since / 1'000'000'000);
    when.it_value.tv_nsec = static_cast<long>(since % 1'000'000'000);
  }
  ::timerfd_settime(timer, TFD_TIMER_ABSTIME, &when, nullptr);
}

}  // namespace qz::detail
