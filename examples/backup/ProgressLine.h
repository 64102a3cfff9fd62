// How far the running step is, on the screen.
#pragma once

#include <deque>
#include <string>

#include "BackupTask.h"
#include "Platform/Concurrency/NSTimer.h"
#include "Platform/Runtime/NSKeyValueObserving.h"

namespace backup {

/// How fast the work has been in the last seconds.
class Pace {
 public:
  struct Rate {
    double bytes = 0;  // per second
    double work = 0;
  };

  void note(double second, const Amount& done);

  /// When something has been noted.
  Rate rate() const;

 private:
  struct Sample {
    double second;
    Amount done;
  };
  std::deque<Sample> samples_;
};

/// Observes a task's percentage and message and shows them: on a terminal in one line that is
/// written again and again, elsewhere in a line every few seconds. Main thread only.
class ProgressLine {
 public:
  ProgressLine(std::string title, BackupTask* task);
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  /// Makes room for another line; this one comes back by itself.
  void clear();

 private:
  void tick();
  std::string figures() const;
  std::string bar() const;
  void draw();

  const std::string title_;
  const Ref<BackupTask> task_;
  const bool isTerminal_;
  const double start_;
  double shown_;
  float percent_ = 0;
  Ref<NSString> message_;
  Pace pace_;
  qz::KeyValueObservation percentObservation_;
  qz::KeyValueObservation messageObservation_;
  Ref<qz::NSTimer> timer_;
};

}  // namespace backup
