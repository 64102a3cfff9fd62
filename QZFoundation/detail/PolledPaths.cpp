#include "QZFoundation/detail/PolledPaths.h"

#include <vector>

#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/System/detail/PathBytes.h"

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

void PolledPaths::add(NSString* path, void (*startThread)()) {
  const std::u16string text(path->view());
  {
    std::lock_guard lock(mutex_);
    if (polled_.contains(text)) return;
    Known& known = known_[text];
    if (known.bytes.empty()) known.bytes = PathBytes(path).view();
    // What was seen before counts on, so that a change between two watches is not missed.
    bool exists = false;
    if (!known.time) known.time = timeOf(known.bytes, exists);
    polled_.emplace(text, &known);
    if (running_) return;
    running_ = true;
  }
  try {
    startThread();
  } catch (...) {
    std::lock_guard lock(mutex_);
    running_ = false;
    throw;
  }
}

void PolledPaths::remove(NSString* path) {
  std::lock_guard lock(mutex_);
  polled_.erase(std::u16string(path->view()));
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

void PolledPaths::check(const std::function<void(NSString* path, Change change)>& report) {
  std::vector<std::pair<std::u16string, Known*>> paths;
  {
    std::lock_guard lock(mutex_);
    paths.assign(polled_.begin(), polled_.end());
  }
  for (const auto& [path, known] : paths) {
    bool exists = false;
    const Time now = timeOf(known->bytes, exists);
    if (exists) {
      std::lock_guard lock(mutex_);
      if (known->time == now) continue;
      known->time = now;
    }
    report(NSString::stringWithCharacters(path), exists ? Change::written : Change::deleted);
  }
}

}  // namespace qz::detail
