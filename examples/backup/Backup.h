// A backup from its first step to its last, as the main thread sees it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Options.h"
#include "ProgressLine.h"
#include "Report.h"
#include "SourceWatch.h"

namespace backup {

/// Has the steps done one after the other, each by a task, and says what becomes of them. It is the
/// tasks' delegate. Main thread only.
class Backup : public qz::Derives<Backup, NSObject> {
 public:
  static void describe(qz::ClassDescription<Backup>& is);

  explicit Backup(const Options& options);
  ~Backup() override;

  /// Runs the main thread's loop until everything is done; answers the exit status. Throws a
  /// UsageError for folders that cannot be copied into each other.
  int run();

  /// Has the work end early, because of a signal.
  void interrupt(int signal);

  void threadedTaskDidBegin(qz::NSNotification* notification);
  void threadedTaskDidComplete(qz::NSNotification* notification);

 private:
  void findFolders();
  void planSteps();
  bool watchSource();
  void startNext();
  void afterLastStep();
  void tellFailure(NSString* entry, NSError* error);
  void removeTrial();
  void report() const;
  void tellBatch(BackupTask* task);
  void tellDebugLog() const;
  Step& current() { return steps_[next_ - 1]; }

  const Options options_;
  BackupTask::Settings settings_;
  std::vector<Step> steps_;
  std::size_t next_ = 0;
  Ref<BackupTask> task_;  // the one that is running
  std::optional<ProgressLine> line_;
  Ref<SourceWatch> watch_;  // nil unless changes are wanted
  bool hasFailed_ = false;
  int signal_ = 0;
};

}  // namespace backup
