/// @file
/// Watching a folder with everything in it.
///
///     watcher_ = QZTreeWatcher::initWithPath(folder, [](NSArray* changes) {
///       for (NSObject* each : *changes) update(as<QZTreeChange>(each)->path());
///     });
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;
class NSError;
namespace detail {
struct TreeWatcherState;
}

/// What has happened to a path, as bits. Exactly one of the first three is set, or none where only
/// attributes changed or a rescan is asked for.
enum QZTreeChangeKind : std::uint32_t {
  /// It is there and was not.
  QZTreeChangeCreated = 0x01,
  /// It was there and is; its contents changed, or for a moment or for good its name was another
  /// file's or nobody's.
  QZTreeChangeChanged = 0x02,
  /// It was there and is not.
  QZTreeChangeDeleted = 0x04,
  /// Beside one of the above, which alone tell what is there now: of a new path, that its contents
  /// were under the `otherPath` before, and are the same still unless "changed" is set, too; of a
  /// deleted one, that its contents are under the `otherPath` now. What is in a folder that was
  /// renamed is told like the folder itself. Not set where the connection was lost, as when a
  /// folder and one in it are moved in the same moment.
  QZTreeChangeRenamed = 0x08,
  /// Its mode, owner, times or number of links changed.
  QZTreeChangeAttributes = 0x10,
  /// Of the watched folder itself: the kernel has lost events. Names that came or went meanwhile
  /// are told, but any file may have been written to.
  QZTreeChangeRescan = 0x20,
};

/// What has happened to one path. Immutable; any thread.
class QZTreeChange : public Derives<QZTreeChange, NSObject> {
 public:
  static void describe(ClassDescription<QZTreeChange>& is);

  /// What a watcher tells; the arguments are what the members answer.
  QZTreeChange(NSString* top, NSString* path, std::uint32_t kinds, bool isFolder,
               NSString* otherPath);

  /// Absolute: begins with the path of the watcher.
  Ref<NSString> path() const { return path_; }

  /// The same from the watched folder on, "sub/file"; empty for that folder itself.
  Ref<NSString> relativePath() const;

  /// Bits of QZTreeChangeKind.
  std::uint32_t kinds() const noexcept { return kinds_; }
  bool isCreated() const noexcept { return (kinds_ & QZTreeChangeCreated) != 0; }
  bool isChanged() const noexcept { return (kinds_ & QZTreeChangeChanged) != 0; }
  bool isDeleted() const noexcept { return (kinds_ & QZTreeChangeDeleted) != 0; }
  bool isRenamed() const noexcept { return (kinds_ & QZTreeChangeRenamed) != 0; }

  /// Whether a folder is there, or was before it was deleted. A link to a folder is none.
  bool isFolder() const noexcept { return isFolder_; }

  /// Nil unless it was renamed.
  Ref<NSString> otherPath() const { return otherPath_; }

  /// "created renamed /tmp/b (/tmp/a)"
  Ref<NSString> description() const override;

 private:
  Ref<NSString> path_;
  Ref<NSString> otherPath_;
  std::uint32_t topLength_;
  std::uint32_t kinds_;
  bool isFolder_;
};

/// How a tree is watched.
struct QZTreeWatcherOptions {
  /// In seconds: how long changes are collected before they are told. 0 tells them at once.
  NSTimeInterval latency = 0.2;
  /// In seconds: how often is looked at what cannot be watched, and again at what could not be
  /// looked at for want of descriptors or memory. At least 0.01.
  NSTimeInterval pollInterval = 1;
  /// Whether the folders in the folder are watched, too, and those in them.
  bool deep = true;
  /// Strings: names of files and folders that are ignored wherever they are, and all that is in
  /// them. "*", "?" and "[…]" stand for other characters. May be nil.
  Ref<NSArray> namesToLeaveOut{};
};

/// Tells on the main thread what has changed in a folder and, on request, in everything below it.
///
/// Changes are collected for a while, and while the main thread is busy, and told as what came of
/// them: each path once, in the order of their bytes. What came and went in between is not told.
/// Whoever starts from a listing made after the watcher and applies what it is told, has what is
/// there. A file is told of before it is read, and may be another one by then: whoever moves what
/// was read instead of reading a renamed file must know that it was that one, by its inode or date.
/// Symbolic links are told of and never followed, except for the watched path itself.
///
/// What is put into a new folder is found, however soon. A folder that cannot be watched, because
/// the system has no more watches to give or its file system does not tell of changes, is polled:
/// `polledFolders` and `error` tell of it. Where nobody may read, nothing is known until that
/// changes. When the watched folder is deleted or renamed, everything in it is told as deleted, and
/// when there is a folder with its path again, which is looked for each `pollInterval`, everything
/// in that as created. A file system that is mounted over a folder is noticed when something else
/// happens to that folder.
///
/// Costs one inotify instance, of which a user has 128 by default, one watch for each folder, a
/// thread, and memory for each name. What its listener raises as an NSException goes to the
/// diagnostic stream (Diagnostics.h) and no further; another exception leaves the main thread's
/// loop.
///
/// All members may be called from any thread. The last owner may let go anywhere, also from within
/// the listener or the delegate, which are not called again after that; on another thread, while
/// one is being called, it is not waited for.
class QZTreeWatcher : public Derives<QZTreeWatcher, NSObject> {
 public:
  static void describe(ClassDescription<QZTreeWatcher>& is);

  /// Is called with QZTreeChanges, at least one.
  using Listener = std::function<void(NSArray* changes)>;

  /// Lists the tree, which takes its time, and watches it from then on, as long as the watcher has
  /// an owner. Nil and an Error, whose `localizedFailureReason` says why, when there is no folder
  /// with that path, it may not be read, or there are no more descriptors. Raises
  /// NSGenericException when the system has no thread to give.
  [[nodiscard]] static Ref<QZTreeWatcher> initWithPath(NSString* path, Listener listener,
                                                       const QZTreeWatcherOptions& options = {},
                                                       Ref<NSError>* error = nullptr);

  /// The same with the usual options, for a delegate.
  [[nodiscard]] static Ref<QZTreeWatcher> initWithPath_error(NSString* path, Ref<NSError>* error);

  /// Use `initWithPath`.
  QZTreeWatcher(NSString* path, std::shared_ptr<detail::TreeWatcherState> state);
  ~QZTreeWatcher() override;

  /// The watched folder, as an absolute path without a slash at its end.
  Ref<NSString> path() const { return path_; }

  /// Is sent `treeWatcher:didDetectChanges:` with this watcher and an Array of QZTreeChanges, after
  /// the listener. Not retained.
  Ref<NSObject> delegate() const;
  void setDelegate(NSObject* delegate);

  /// How many folders are polled now, for want of watches. A first look at them comes with
  /// `pollInterval`.
  std::uint32_t polledFolders() const;

  /// Why folders are polled: in NSPOSIXErrorDomain, ENOSPC when the user has no watches left. Nil
  /// while none is, or because their file systems do not tell of changes.
  Ref<NSError> error() const;

 private:
  Ref<NSString> path_;
  std::shared_ptr<detail::TreeWatcherState> state_;
};

}  // namespace qz

#pragma GCC visibility pop
