#include "QZFoundation/detail/PolledPaths.h"

#include <vector>

#include "Platform/Concurrency/NSRunLoop.h"

namespace qz::detail {

PolledPaths& PolledPaths::shared() {
  static auto* const paths = new PolledPaths();
  return *paths;
}

PolledPaths::Time PolledPaths::timeOf(const std::string& path, bool& exists) noexcept {
  struct stat is {};
  exists = ::stat(path.c_str(), &is) == 0;
  if (!exists) return std::nullopt;
  return ModificationTime{is.st_mtim.tv_sec, is.st_mtim.tv_nsec};
}

void PolledPaths::add(const std::string& path, void (*startThread)()) {
  {
    std::lock_guard lock(mutex_);
    if (polled_.contains(path)) return;
    // What was seen before counts on, so that a change between two watches is not missed.
    const auto [known, isNew] = times_.try_emplace(path);
    bool exists = false;
    if (isNew || !known->second) known->second = timeOf(path, exists);
    polled_.emplace(path, &known->second);
    if (running_) return;
    running_ = true;
  }
  startThread();
}

void PolledPaths::remove(const std::string& path) {
  std::lock_guard lock(mutex_);
  polled_.erase(path);
}

void PolledPaths::endIfEmpty() {
  Ref<NSTimer> timer;
  {
    std::lock_guard lock(mutex_);
    if (polled_.empty()) timer = timer_;
  }
  if (timer) timer->invalidate();
}

// A path may come while the thread is about to end: then it goes on with a new timer. Whether it
// ends is decided under the lock, and so there is never a second one.
void PolledPaths::run(const std::function<Ref<NSTimer>()>& makeTimer) {
  for (;;) {
    {
      std::lock_guard lock(mutex_);
      timer_ = nullptr;
      if (polled_.empty()) {
        running_ = false;
        return;
      }
      timer_ = makeTimer();
    }
    NSRunLoop::currentRunLoop()->run();
  }
}

void PolledPaths::check(const std::function<void(const std::string& path, Change change)>& report) {
  std::vector<std::pair<std::string, Time*>> paths;
  {
    std::lock_guard lock(mutex_);
    paths.assign(polled_.begin(), polled_.end());
  }
  for (const auto& [path, known] : paths) {
    bool exists = false;
    const Time now = timeOf(path, exists);
    if (exists) {
      std::lock_guard lock(mutex_);
      if (*known == now) continue;
      *known = now;
    }
    report(path, exists ? Change::written : Change::deleted);
  }
}

}  // namespace qz::detail
