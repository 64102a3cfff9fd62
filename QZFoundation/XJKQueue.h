/// @file
/// Changes of files and folders, told by the kernel.
///
///     auto queue = XJKQueue::sharedFileWatcher();
///     queue->setDelegate(this);                        // watcher:receivedNotification:forPath:
///     if (int error = queue->addPathToQueue(path)) report(error);
#pragma once

#include <cstdint>
#include <memory>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

// Names of the notifications, in the order in which the kinds of one event are reported; behind
// each the bit that stands for it in a mask.

/// 0x20: the file has another name now, under which it is watched on.
inline NSString* const XJFileWatcherRenameNotification =
    detail::literal<"XJKQueueFileRenamedNotification">();
/// 0x02: its contents changed; of a folder, a name in it came or went.
inline NSString* const XJFileWatcherWriteNotification =
    detail::literal<"XJKQueueFileWrittenToNotification">();
/// 0x01: it was deleted, or another file took its place.
inline NSString* const XJFileWatcherDeleteNotification =
    detail::literal<"XJKQueueFileDeletedNotification">();
/// 0x08: its mode, owner or times changed.
inline NSString* const XJFileWatcherAttributeChangeNotification =
    detail::literal<"XJKQueueFileAttributesChangedNotification">();
/// 0x04: it grew.
inline NSString* const XJFileWatcherSizeIncreaseNotification =
    detail::literal<"XJKQueueFileSizeIncreasedNotification">();
/// 0x10: its number of hard links changed.
inline NSString* const XJFileWatcherLinkCountChangeNotification =
    detail::literal<"XJKQueueFileLinkCountChangedNotification">();
/// 0x40: its file system was unmounted.
inline NSString* const XJFileWatcherAccessRevocationNotification =
    detail::literal<"XJKQueueFileAccessRevocationNotification">();

namespace detail {
struct KQueueState;
}

/// Watches any number of paths and reports on the main thread: to its delegate, or as Notifications
/// when it has none, or as both.
///
/// A watch is on what the path names when it is added. It follows the file through renamings and is
/// over when the file is deleted; the entry stays until it is removed. What happens to one watch in
/// short succession is one event, whose kinds are reported one after the other, each once. When the
/// kernel has lost events, every path is reported as written to.
///
/// A thread of its own waits for the kernel, and for the main thread while it reports; it ends at
/// once when the last owner lets go of the queue. What a delegate or observer raises as an
/// NSException goes to the diagnostic stream (Diagnostics.h) and no further; another exception ends
/// the program.
///
/// All members may be called from any thread.
class XJKQueue : public Derives<XJKQueue, NSObject> {
 public:
  static void describe(ClassDescription<XJKQueue>& is);

  /// Use `init`.
  explicit XJKQueue(std::shared_ptr<detail::KQueueState> state);
  ~XJKQueue() override;

  /// The queue that everybody may share; lives for ever. Nil when the system has none to give.
  static Ref<XJKQueue> sharedFileWatcher();

  /// A queue of its own. Nil when the system has none to give: each takes one of the user's inotify
  /// instances, of which there are 128 by default. Raises NSGenericException when it has no thread
  /// to give.
  static Ref<XJKQueue> init();

  /// The descriptor behind it.
  int queueFD() const noexcept;

  /// Watches a path for being deleted, written to or renamed and for changes of attributes, or for
  /// the kinds in `mask`. 0, or the `errno` of the failure, and then nothing has changed: ENOENT
  /// for nil, EINVAL for what can be no path. Adding a path again makes another watch, which
  /// reports by itself.
  void addPath(NSString* path);
  std::int32_t addPathToQueue(NSString* path);
  std::int32_t addPathToQueue_notifyingAbout(NSString* path, std::uint32_t mask);

  /// Ends the first watch of an equal path; nothing when there is none. A report that is on its way
  /// to the main thread still arrives.
  void removePath(NSString* path);
  void removePathFromQueue(NSString* path);
  void removeAllPathsFromQueue();

  /// Is sent `watcher:receivedNotification:forPath:` with this queue, the name and the path. Not
  /// retained.
  Ref<NSObject> delegate() const;
  void setDelegate(NSObject* delegate);

  /// Whether Notifications are posted even when there is a delegate, after it was told. Their
  /// object is this queue, and the path is under "path". False at first.
  bool alwaysNotify() const noexcept;
  void setAlwaysNotify(bool always) noexcept;

  /// Reports one kind of event; waits until the main thread has been told.
  void postNotification_forFile(NSString* name, NSString* path);

  /// What the queue's thread does: reports until the queue ends. Not to be called.
  void watcherThread(NSObject* ignored);

  /// "XJKQueue { watchedPaths = (…), alwaysNotify = NO }"
  Ref<NSString> description() const override;

 private:
  std::shared_ptr<detail::KQueueState> state_;
};

}  // namespace qz

#pragma GCC visibility pop
