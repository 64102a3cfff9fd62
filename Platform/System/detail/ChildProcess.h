/// @file
/// Private: programs that this process starts, and how they end.
#pragma once

#include <sys/types.h>

#include <array>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace qz::detail {

/// What to start. Descriptors are borrowed; -1 leaves the stream as this process has it.
struct ChildRequest {
  std::string path;
  std::vector<std::string> arguments;    // without the program's own name
  std::vector<std::string> environment;  // "NAME=value"
  std::string directory;                 // empty: this process's
  std::array<int, 3> streams{-1, -1, -1};
};

/// A program that was started. Whoever holds one may forget it at any time: a thread that all of
/// them share waits for its end and collects it, so none is left a zombie. Only the children
/// started here are waited for. Any thread.
class ChildProcess {
 public:
  struct Ending {
    bool bySignal = false;
    int code = 0;  // what it exited with, or the signal; -1 when somebody else collected it
  };

  /// Starts a program with the standard streams alone, no other descriptor. 0, or the `errno` that
  /// says why not; then there is no child. `atEnd` is called by the waiting thread, without locks.
  static int start(const ChildRequest& request, std::function<void()> atEnd,
                   std::shared_ptr<ChildProcess>& child);

  pid_t identifier() const noexcept { return identifier_; }
  bool isRunning() const;
  void wait() const;

  /// Calls `function` as `atEnd` is called; at once when it has ended.
  void whenEnded(std::function<void()> function);
  Ending ending() const;

  /// Sends a signal unless it has ended; never hits another process that got its number.
  void sendSignal(int signal) const;

 private:
  class Watcher;

  void collect();

  mutable std::mutex mutex_;
  mutable std::condition_variable ended_;
  pid_t identifier_ = 0;
  bool hasEnded_ = false;
  Ending ending_;
  std::vector<std::function<void()>> atEnd_;
};

}  // namespace qz::detail
