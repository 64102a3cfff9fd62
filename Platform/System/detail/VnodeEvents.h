/// @file
/// Private: what happens to single files and folders, as the kernel tells it. Over inotify(7).
#pragma once

#include <sys/stat.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Platform/System/detail/NotifyQueue.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// Kinds of events, as bits. A folder is written to when a name in it comes, goes or changes.
enum VnodeKind : std::uint32_t {
  vnodeDeleted = 0x01,     ///< Its name is gone, or names another file.
  vnodeWritten = 0x02,     ///< Contents changed.
  vnodeExtended = 0x04,    ///< It grew.
  vnodeAttributes = 0x08,  ///< Mode, owner or times changed.
  vnodeLinked = 0x10,      ///< Its number of names changed.
  vnodeRenamed = 0x20,     ///< It has another name now; it is watched on.
  vnodeRevoked = 0x40,     ///< Its file system was unmounted.
};

/// Any number of watches behind one descriptor.
///
/// Each watch is of its own, also when several are on one file or one path. What happened to a
/// watch between two reads is one event with several bits. When the kernel has lost events, every
/// watch reports that it was written to. A watch that was removed reports nothing more.
///
/// `wait` belongs to one thread; all else may be called from any thread.
class VnodeEvents {
 public:
  using Watch = std::uint64_t;  // never 0, growing, never used again

  struct Event {
    Watch watch;
    std::uint32_t kinds;
  };

  /// Null and `errno` when the system has no descriptor to give.
  static std::unique_ptr<VnodeEvents> open();
  VnodeEvents(const VnodeEvents&) = delete;
  VnodeEvents& operator=(const VnodeEvents&) = delete;

  int descriptor() const noexcept { return queue_.descriptor(); }

  /// Watches what is at `path` now for the kinds in `mask`; links are followed. 0 and `errno` when
  /// it cannot be watched.
  Watch add(std::string path, std::uint32_t mask);

  /// Ends a watch; nothing for one that has ended.
  void remove(Watch watch);

  /// Whether the watch has not been removed.
  bool has(Watch watch);

  /// Waits for events, at most so long, and answers them in the order of their first cause; empty
  /// when the time ran out or `wake` was called.
  std::vector<Event> wait(std::chrono::milliseconds longest);

  /// Ends the wait in progress, or else the next one.
  void wake() noexcept { queue_.wake(); }

 private:
  /// What is known of a file, to tell what has changed.
  struct Known {
    bool exists = false;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    nlink_t links = 0;  // 0 while the path does not lead to it
    mode_t mode = 0;
    uid_t owner = 0;
    gid_t group = 0;

    bool isSameFile(const Known& other) const noexcept {
      return exists && other.exists && device == other.device && inode == other.inode;
    }
  };

  struct Entry {
    std::string path;
    std::uint32_t mask;
    int number;  // the kernel's; -1 once it has ended the watch
    Known known;
    bool isDeleted = false;  // reported already
    bool isRenamed = false;  // so its path says nothing about it
  };

  explicit VnodeEvents(NotifyQueue queue) noexcept : queue_(std::move(queue)) {}

  static Known look(const std::string& path) noexcept;
  bool readOnce();
  void take(int number, std::uint32_t bits, bool isOfMember);
  void report(Watch watch, std::uint32_t kinds);
  std::uint32_t kindsOf(Watch watch, Entry& entry, std::uint32_t bits, bool isOfMember);
  std::uint32_t attributeKinds(Watch watch, Entry& entry);
  void settleDoubts();
  void lost();
  void forgetNumber(int number);

  NotifyQueue queue_;
  bool hasRemoved_ = false;  // the last wait met the end of a removed watch; its thread's own

  std::mutex mutex_;  // guards what follows
  Watch last_ = 0;
  std::map<Watch, Entry> entries_;
  std::unordered_map<int, std::vector<Watch>> byNumber_;
  std::vector<Event> pending_;
  std::unordered_map<Watch, std::size_t> places_;  // in `pending_`
  std::vector<Watch> doubtful_;  // lost their name, to a deletion or to a renaming to be told yet
};

}  // namespace qz::detail

#pragma GCC visibility pop
