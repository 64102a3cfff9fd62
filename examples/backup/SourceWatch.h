// Copying what changes in the source.
#pragma once

#include <functional>

#include "BackupTask.h"
#include "Platform/Collections/NSMutableSet.h"
#include "QZFoundation/QZTreeWatcher.h"

namespace backup {

/// Watches the source from the moment it is made, and once it has begun copies whatever changes,
/// one task after the other; what changes meanwhile is for the next one. Nothing is removed from
/// the destination. It is the tasks' delegate. Main thread only.
class SourceWatch : public qz::Derives<SourceWatch, NSObject> {
 public:
  static void describe(qz::ClassDescription<SourceWatch>& is);

  /// Nil and an Error when the source cannot be watched.
  static Ref<SourceWatch> start(const BackupTask::Settings& settings, Ref<NSError>* error);

  explicit SourceWatch(const BackupTask::Settings& settings);
  ~SourceWatch() override;

  /// Called for each entry that failed, and for each task that is done. To be set before `begin`.
  std::function<void(NSString* entry, NSError* error)> onFailure;
  std::function<void(BackupTask* task)> onEnd;

  /// Begins to copy, also what has changed since this was made.
  void begin();

  /// Copies nothing more. Answers the task that is still at work, and asks it to end; nil when
  /// there is none.
  Ref<BackupTask> end();

  void threadedTaskDidComplete(qz::NSNotification* notification);

 private:
  void note(qz::NSArray* changes);
  void noteOne(qz::QZTreeChange* change);
  void copyNoted();

  BackupTask::Settings settings_;
  Ref<qz::QZTreeWatcher> watcher_;
  Ref<qz::NSMutableSet> noted_;
  bool isAllNoted_ = false;
  bool isCopying_ = false;  // between begin and end
  Ref<BackupTask> task_;
};

}  // namespace backup
