/// @file
/// Private: what happens in a tree of folders, as the kernel tells it. Over inotify(7).
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Platform/System/detail/NotifyQueue.h"
#include "Platform/System/detail/TreeChanges.h"
#include "Platform/Values/detail/Descriptor.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// Knows the names in a tree and keeps that knowledge up to date.
///
/// The kernel's news only say where to look. What is there is then asked of the file system, and
/// what differs from what was known is a change: so news that come late, twice or out of order do
/// no harm, and lost ones are made up for by listing everything anew. A new folder is watched
/// first and listed afterwards, so nothing is put into it unseen.
///
/// A folder that cannot be watched is polled: `poll` has its names and times compared.
///
/// Belongs to one thread, but for `wake`.
class TreeEvents {
 public:
  struct Options {
    bool deep = true;                   ///< Else only the names in the top folder.
    std::vector<std::string> leaveOut;  ///< Patterns of names, for fnmatch(3).
  };

  /// `path` is absolute and has no slash at its end.
  TreeEvents(std::string path, Options options);
  ~TreeEvents();
  TreeEvents(const TreeEvents&) = delete;
  TreeEvents& operator=(const TreeEvents&) = delete;

  /// Learns what is there. 0, or the `errno` because of which nothing can be watched.
  int start();

  /// Waits for news, for ever when `milliseconds` is negative, and takes them in. Whether there is
  /// something to settle.
  bool wait(int milliseconds);

  /// Ends the wait in progress, or else the next one.
  void wake() noexcept { queue_.wake(); }

  /// Has the next `settle` look at what the kernel tells nothing of, and for a top folder that is
  /// missing.
  void poll();
  bool needsPolling() const noexcept { return top_ == nullptr || !polled_.empty(); }

  /// Looks wherever there were news, and adds what has changed.
  void settle(TreeChanges& changes);

  /// Whether something could not be looked at just now and has to be settled again.
  bool isUnsettled() const noexcept { return !dirty_.empty(); }

  /// How many folders are polled, and the `errno` of the last watch that the system refused.
  std::size_t polledFolders() const noexcept { return polled_.size(); }
  int refusal() const noexcept { return refusal_; }

 private:
  struct Folder;
  struct Identity {
    dev_t device = 0;
    ino_t inode = 0;
    bool operator==(const Identity&) const = default;
  };

  struct Entry {
    ino_t inode = 0;
    std::uint64_t stamp = 0;  // of its times and size, where it is polled
    std::uint32_t listing = 0;
    std::uint8_t kinds = 0;  // of what is out of the tree: what happened to it before
    bool isFolder = false;
    bool isNew = false;       // and that it came where it was not long before
    Folder* child = nullptr;  // none for a folder that is not entered
  };

  /// What the news say of the file that a name stands for.
  enum class Contents : std::uint8_t { original, moved, fresh };
  struct Touch {
    Contents contents = Contents::original;
    std::uint32_t kinds = 0;
    bool wasReplaced = false;
    ino_t inode = 0;     // of what was moved, as far as is known
    std::string origin;  // and its path at the beginning
  };

  struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const noexcept {
      return std::hash<std::string_view>()(name);
    }
  };
  template <class T>
  using ByName = std::unordered_map<std::string, T, NameHash, std::equal_to<>>;

  struct Folder {
    Folder* parent;    // null for the top, and for one that was taken out of the tree
    std::string name;  // a whole path without a parent
    Identity identity;
    int number = -1;  // the kernel's; -1 when it is not watched
    bool isTold = true;
    bool isDirty = false;
    bool isToBeListed = true;
    bool isDropped = false;
    bool isNew = false;      // as in Entry
    bool hasStamps = false;  // has been polled until it was listed last
    std::uint8_t failures = 0;
    ByName<Entry> entries;
    ByName<Touch> touches;
  };
  struct Found {
    ino_t inode;
    std::uint64_t stamp;
    bool isFolder;
  };

  // News.
  void take(const NotifyQueue::Notice& notice);
  void note(Folder& folder, const NotifyQueue::Notice& notice);
  Touch& touch(Folder& folder, std::string_view name);
  void markDirty(Folder& folder);
  void listAnew(Folder& folder);
  bool isLeftOut(const char* name) const noexcept;

  // Looking.
  int openTop();
  void look(Folder& folder);
  void cannotLook(Folder& folder, int error);
  void list(Folder& folder, int directory, ByName<Touch>& touches);
  void lookAt(Folder& folder, int directory, const std::string& name, const Touch& touch);
  void isThere(Folder& folder, int directory, const std::string& name, const Found& found,
               const Touch& touch);
  void isMissing(Folder& folder, const std::string& name);
  void enter(Folder& in, int directory, const std::string& name, Entry& entry);
  void lookIntoClosed();

  // The tree.
  Folder& newFolder(Folder* parent, std::string name, Identity identity, bool isTold);
  bool watch(Folder& folder, int directory);
  int addWatch(int directory, bool isTop);
  bool isSecondFaceOf(const Folder& folder, const Folder& in);
  void takeOut(Folder& folder);
  void putIn(Folder& folder, Folder& in, const std::string& name, Entry& entry);
  void dropWhatIsOut();
  template <class F>
  static void visit(Folder& top, F function);
  static std::string joined(const std::string& path, std::string_view name);
  Descriptor open(const Folder& folder) const;
  bool isInTree(const Folder& folder) const noexcept;
  std::string pathOf(const Folder& folder) const;
  std::string pathOf(const Folder& folder, std::string_view name) const;

  const std::string path_;
  const Options options_;
  NotifyQueue queue_;
  int refusal_ = 0;
  std::unordered_map<Folder*, std::unique_ptr<Folder>> folders_;
  std::unordered_map<int, Folder*> byNumber_;
  std::unordered_set<Folder*> polled_;
  std::unordered_set<Folder*> closed_;  // that we may not look into, until somebody's mode changes
  Folder* top_ = nullptr;
  std::uint32_t topKinds_ = 0;
  bool isToLookForTop_ = false;
  bool hasLost_ = false;
  std::uint32_t listings_ = 0;

  std::vector<Folder*> dirty_;
  std::vector<Folder*> later_;
  std::vector<Folder*> out_;  // taken out of the tree; those not put in again are dropped
  std::unordered_map<std::uint32_t, Touch> moving_;  // by the cookie of a renaming
  TreeChanges* changes_ = nullptr;                   // while settling
};

}  // namespace qz::detail

#pragma GCC visibility pop
