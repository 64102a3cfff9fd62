/// @file
/// Private: the paths that are polled for all file watchers, and the thread that does it.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "Platform/Concurrency/NSTimer.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

/// When a file's contents last changed, to the nanosecond; none when it cannot be told.
struct ModificationTime {
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;
  bool operator==(const ModificationTime&) const = default;
};

/// Any thread. The thread exists exactly while there is a path.
class PolledPaths {
 public:
  static PolledPaths& shared();

  /// Adds a path unless it is there already, and has `startThread` called when nobody polls yet.
  /// What that throws passes through; the path stays, for the next one that has a thread started.
  void add(NSString* path, void (*startThread)());

  /// Removes a path; nothing when it is not there.
  void remove(NSString* path);

  /// Wakes the thread to end when no path is left. Apart from removing, so that a path that comes
  /// back at once does not disturb the beat.
  void endIfEmpty();

  /// The thread's body: runs its loop, with the timer made for it, until no path is left.
  void run(const std::function<Ref<NSTimer>()>& makeTimer);

  enum class Change { written, deleted };

  /// One pass over the paths as they are at its start: calls `report` for each change.
  void check(const std::function<void(NSString* path, Change change)>& report);

 private:
  using Time = std::optional<ModificationTime>;
  struct Known {
    std::string bytes;  // the path as the system takes it
    Time time;
  };
  static Time timeOf(const std::string& path, bool& exists) noexcept;

  std::mutex mutex_;
  std::unordered_map<std::u16string, Known> known_;  // every path ever polled
  std::unordered_map<std::u16string, Known*> polled_;
  bool running_ = false;
  Ref<NSTimer> timer_;
};

}  // namespace qz::detail
