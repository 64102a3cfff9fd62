/// @file
/// Watching one file, which need not exist yet.
///
///     watcher_ = QZFileWatcher::initWithPath(path);
///     watcher_->setDelegate(this);                     // fileWatcherDidDetectChange:
#pragma once

#include "Platform/Runtime/Derives.h"
#include "Platform/Runtime/WeakRef.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSNotification;
class NSTimer;

/// Posted on the main thread by a QZFileWatcher, which is its object, for each change it detects.
inline NSString* const QZFileDidChangeNotification =
    detail::literal<"QZFileDidChangeNotification">();

/// Tells when something happens to the file at a path: it is written to, deleted, replaced, or
/// comes into being.
///
/// While the file is missing, the nearest folder above it that exists is watched, and every change
/// of a name in that folder is reported, whatever it has to do with the file.
///
/// Most paths are polled: once a second a thread that all watchers share compares the time of the
/// last modification, to the nanosecond. The kernel's events are used where `QZDisk` finds a local
/// disk for the path, which it does for mount points only, and for every path of a local file
/// system by a watcher that was asked to use them.
///
/// A path is polled once, however many watchers want it, and no longer when one of them stops.
///
/// Made, used and let go of on the main thread, where all reports arrive.
class QZFileWatcher : public Derives<QZFileWatcher, NSObject> {
 public:
  static void describe(ClassDescription<QZFileWatcher>& is);

  /// Watches from now on, until it is destroyed. Raises NSInvalidArgumentException for nil, and
  /// NSGenericException when the system has no thread to give.
  static Ref<QZFileWatcher> initWithPath(NSString* path);

  /// The same, with the kernel's events wherever they tell all that happens to the file: on file
  /// systems of this machine. Falls back to polling when the system has no watches left. That the
  /// file system is unmounted is a change, too.
  static Ref<QZFileWatcher> initWithPath_usingKernelEvents(NSString* path, bool useThem);

  /// Use `initWithPath`.
  QZFileWatcher(NSString* path, bool useKernelEvents);
  ~QZFileWatcher() override;

  /// What was asked for, and what is watched now: that, or the nearest folder above it that exists.
  Ref<NSString> filePath() const { return filePath_; }
  Ref<NSString> watchingPath() const { return watchingPath_; }

  /// Whether the path that is watched now is polled.
  bool usesTimer() const noexcept { return usesTimer_; }

  /// Is sent `fileWatcherDidDetectChange:` with this watcher, before the Notification is posted.
  /// Not retained.
  Ref<NSObject> delegate() const { return delegate_.load(); }
  void setDelegate(NSObject* delegate);

  /// Looks anew for what to watch; done by itself at first and after each change.
  void watchFile();

  /// Stops until `watchFile`.
  void unwatchFile();

  /// Polls the path that is watched now, unless there is none or it is polled already.
  void watchPathUsingTimer();

  /// Receives what is reported for all watchers, and takes its own.
  void fileDidChange(NSNotification* notification);

  /// What the polling thread does: a pass a second while there is something to poll.
  static void watchFilesInBackground();

  /// One pass: reports each polled path whose time of modification has changed, or which is gone.
  static void checkFiles(NSTimer* timer);

  /// "<QZFileWatcher: 0x…>: {filePath = …, watchingPath = …, isTimer = 1}"
  Ref<NSString> description() const override;

 private:
  void letGo();
  void watchWatchingPath();
  bool kernelTellsAll() const;

  Ref<NSString> filePath_;
  Ref<NSString> watchingPath_;
  WeakRef<NSObject> delegate_;
  bool usesTimer_ = false;
  const bool useKernelEvents_;
};

}  // namespace qz

#pragma GCC visibility pop
