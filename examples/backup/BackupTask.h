// The work of a backup, done on a thread of its own.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Values/NSError.h"
#include "QZFoundation/QZFoundation.h"

namespace backup {

using qz::NSArray;
using qz::NSError;
using qz::NSFileManager;
using qz::NSObject;
using qz::NSString;
using qz::Ref;

/// A file worth mentioning.
class File : public qz::Derives<File, NSObject> {
 public:
  static void describe(qz::ClassDescription<File>& is);

  File(NSString* itsPath, std::uint64_t itsSize) : path(itsPath), size(itsSize) {}

  Ref<NSString> path;
  std::uint64_t size;
};

/// How far a step has come. Written by the task, read by whoever shows it.
struct Progress {
  std::atomic<std::uint64_t> files{0};
  std::atomic<std::uint64_t> bytes{0};
  std::atomic<std::uint64_t> allFiles{0};
  std::atomic<std::uint64_t> allBytes{0};
  std::atomic<std::uint64_t> failures{0};
};

/// One walk over the source that does something to each entry.
class BackupTask : public qz::Derives<BackupTask, NSObject> {
 public:
  static void describe(qz::ClassDescription<BackupTask>& is);

  enum class Step { Count, Copy, Verify };

  /// `onFailure` is called on the main thread, for each entry that failed.
  using OnFailure = std::function<void(NSString* path, NSString* reason)>;
  BackupTask(Step step, NSString* source, NSString* destination, OnFailure onFailure);

  /// The whole work. Memory does not grow with the number of files.
  void performTask();

  /// Has it stop after the file it is at. Any thread, also a signal's.
  void abort() noexcept { isAborted_ = true; }
  bool isAborted() const noexcept { return isAborted_; }

  Progress progress;

  /// The largest files that were met, in no particular order. When the work is done.
  Ref<NSArray> largestFiles() const { return largest_; }

 private:
  void visit(NSString* entry);
  Ref<NSError> copy(NSString* from, NSString* to, std::uint32_t type);
  void finishDirectories();
  void noteSize(NSString* entry, std::uint64_t size);
  void fail(NSString* path, NSString* reason);

  Step step_;
  Ref<NSString> source_;
  Ref<NSString> destination_;
  OnFailure onFailure_;
  Ref<NSFileManager> manager_;
  Ref<qz::NSMutableArray> largest_ = qz::make<qz::NSMutableArray>();
  std::atomic<bool> isAborted_{false};
};

}  // namespace backup
