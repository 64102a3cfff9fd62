#include "Platform/System/detail/TreeEvents.h"

#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "Platform/System/detail/DirectoryReader.h"

namespace qz::detail {
namespace {

constexpr std::uint32_t namesMoved = IN_MOVED_FROM | IN_MOVED_TO;

// A file system may be slow to make up its mind; after so many tries the rest waits for a while.
constexpr std::uint8_t mostFailures = 3;

bool isMissingFile(int error) noexcept {
  return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

bool isShortage(int error) noexcept {
  return error == EMFILE || error == ENFILE || error == ENOMEM || error == EIO;
}

bool tellsOfChanges(int directory) noexcept {
  struct ::statfs system {};
  return ::fstatfs(directory, &system) != 0 ||
         isToldOfChanges(static_cast<std::uint32_t>(system.f_type));
}

// Changes with every change of contents or attributes, unless two fall into one tick of the file
// system's clock and leave the size alone.
std::uint64_t stampOf(const struct ::statx& is) noexcept {
  const auto time =
      static_cast<std::uint64_t>(is.stx_ctime.tv_sec) * 1'000'000'000u + is.stx_ctime.tv_nsec;
  return (time * 0x9E3779B97F4A7C15u) ^ is.stx_size;
}

}  // namespace

TreeEvents::TreeEvents(std::string path, Options options)
    : path_(std::move(path)), options_(std::move(options)) {}

TreeEvents::~TreeEvents() = default;

int TreeEvents::start() {
  refusal_ = queue_.open();
  if (!queue_.canBeWoken()) return refusal_;
  if (const int error = openTop(); error != 0) return error;
  TreeChanges known;
  settle(known);
  if (top_ == nullptr) return ENOENT;
  return closed_.contains(top_) ? EACCES : 0;
}

// News --------------------------------------------------------------------------------------------

bool TreeEvents::wait(int milliseconds) {
  if (queue_.wait(milliseconds)) {
    // A busy queue is not drained for ever.
    for (int reads = 0; reads < 64; ++reads)
      if (!queue_.read([&](const NotifyQueue::Notice& notice) { take(notice); })) break;
  }
  return !dirty_.empty() || isToLookForTop_ || topKinds_ != 0;
}

void TreeEvents::poll() {
  if (queue_.descriptor() < 0) refusal_ = queue_.open();
  isToLookForTop_ = top_ == nullptr;
  for (Folder* folder : polled_) listAnew(*folder);
}

void TreeEvents::take(const NotifyQueue::Notice& notice) {
  if ((notice.bits & IN_Q_OVERFLOW) != 0) {
    topKinds_ |= treeRescan;
    hasLost_ = true;
    for (const auto& [folder, owned] : folders_) listAnew(*folder);
    return;
  }
  const auto found = byNumber_.find(notice.number);
  if (found == byNumber_.end()) return;  // late news of a folder that has been dropped
  Folder& folder = *found->second;
  if ((notice.bits & IN_IGNORED) != 0) {
    // The folder is no more, or its file system is not mounted any longer. What is there instead
    // is another one, even if the file system gives it the same inode.
    byNumber_.erase(found);
    folder.number = -1;
    folder.identity = {};
    if (folder.parent != nullptr) touch(*folder.parent, folder.name);
    markDirty(folder);
  } else if (notice.name.empty()) {
    if (&folder != top_) return;
    if ((notice.bits & IN_ATTRIB) != 0) topKinds_ |= treeAttributes;
    if ((notice.bits & (IN_MOVE_SELF | IN_DELETE_SELF)) != 0) markDirty(folder);
  } else if (!isLeftOut(notice.name.data())) {
    note(folder, notice);
  }
}

void TreeEvents::note(Folder& folder, const NotifyQueue::Notice& notice) {
  Touch& touched = touch(folder, notice.name);
  if ((notice.bits & (IN_MODIFY | IN_CLOSE_WRITE)) != 0) touched.kinds |= treeChanged;
  if ((notice.bits & IN_ATTRIB) != 0) touched.kinds |= treeAttributes;
  if ((notice.bits & (IN_CREATE | IN_DELETE | namesMoved)) == 0) return;
  if ((notice.bits & IN_MOVED_FROM) != 0) {
    Touch& moving = moving_[notice.cookie] = touched;
    if (touched.contents == Contents::original) {
      const auto known = folder.entries.find(notice.name);
      const bool isKnown = known != folder.entries.end();
      moving.contents = isKnown ? Contents::moved : Contents::fresh;
      if (isKnown) moving.origin = pathOf(folder, notice.name);
      if (isKnown) moving.inode = known->second.inode;
    }
  }
  const bool wasReplaced = touched.wasReplaced || (notice.bits & (IN_DELETE | IN_MOVED_FROM)) != 0;
  touched = Touch{Contents::fresh, 0, wasReplaced, 0, {}};
  if ((notice.bits & IN_MOVED_TO) == 0) return;
  const auto moved = moving_.find(notice.cookie);
  if (moved == moving_.end()) return;  // from outside
  touched = std::move(moved->second);
  touched.wasReplaced = wasReplaced;
  moving_.erase(moved);
}

TreeEvents::Touch& TreeEvents::touch(Folder& folder, std::string_view name) {
  markDirty(folder);
  const auto found = folder.touches.find(name);
  return found != folder.touches.end() ? found->second : folder.touches[std::string(name)];
}

void TreeEvents::markDirty(Folder& folder) {
  if (std::exchange(folder.isDirty, true)) return;
  dirty_.push_back(&folder);
}

void TreeEvents::listAnew(Folder& folder) {
  folder.isToBeListed = true;
  markDirty(folder);
}

bool TreeEvents::isLeftOut(const char* name) const noexcept {
  return std::any_of(
      options_.leaveOut.begin(), options_.leaveOut.end(),
      [&](const std::string& pattern) { return ::fnmatch(pattern.c_str(), name, 0) == 0; });
}

// Looking -----------------------------------------------------------------------------------------

void TreeEvents::settle(TreeChanges& changes) {
  changes_ = &changes;
  if (std::exchange(isToLookForTop_, false) && top_ == nullptr && openTop() == 0)
    changes.come(path_, true);
  if ((topKinds_ & treeAttributes) != 0) lookIntoClosed();
  while (!dirty_.empty())
    for (Folder* folder : std::exchange(dirty_, {})) {
      folder->isDirty = false;
      if (isInTree(*folder)) look(*folder);
    }
  if (top_ != nullptr && topKinds_ != 0) changes.touched(path_, true, topKinds_);
  topKinds_ = 0;
  dropWhatIsOut();
  for (Folder* folder : std::exchange(later_, {})) markDirty(*folder);
  moving_.clear();
  hasLost_ = false;
  changes_ = nullptr;
}

int TreeEvents::openTop() {
  const Descriptor found(os::openat(AT_FDCWD, path_.c_str(), O_PATH | O_DIRECTORY));
  struct ::statx is {};
  if (!found || os::statx(found.number(), "", AT_EMPTY_PATH, STATX_INO, &is) != 0) return errno;
  top_ = &newFolder(nullptr, path_,
                    {::makedev(is.stx_dev_major, is.stx_dev_minor), static_cast<ino_t>(is.stx_ino)},
                    tellsOfChanges(found.number()));
  markDirty(*top_);
  return 0;
}

void TreeEvents::look(Folder& folder) {
  const Descriptor found = open(folder);
  if (!found) return cannotLook(folder, errno);
  // The news that it is another folder by now, with the same inode, may have been lost.
  if (hasLost_ && &folder == top_ && folder.number >= 0 &&
      addWatch(found.number(), true) != folder.number)
    return cannotLook(folder, ENOENT);
  folder.failures = 0;
  if (folder.number < 0 && watch(folder, found.number())) folder.isToBeListed = true;
  ByName<Touch> touches = std::exchange(folder.touches, {});
  if (std::exchange(folder.isToBeListed, false)) list(folder, found.number(), touches);
  for (const auto& [name, touched] : touches) lookAt(folder, found.number(), name, touched);
}

// The folder is not where it was, which those above it must know; or we may not look into it.
void TreeEvents::cannotLook(Folder& folder, int error) {
  const bool isShort = isShortage(error);
  if (&folder == top_ && !isShort) {
    takeOut(folder);
    changes_->gone(path_, true);
    top_ = nullptr;
    if (openTop() == 0) changes_->come(path_, true);
  } else if (isShort || (isMissingFile(error) && ++folder.failures > mostFailures)) {
    folder.failures = 0;
    later_.push_back(&folder);
  } else if (isMissingFile(error)) {
    touch(*folder.parent, folder.name);
    markDirty(folder);
  } else {
    folder.touches.clear();
    folder.isToBeListed = true;
    closed_.insert(&folder);
  }
}

void TreeEvents::list(Folder& folder, int directory, ByName<Touch>& touches) {
  Descriptor readable(os::openat(directory, ".", O_RDONLY | O_DIRECTORY | O_NONBLOCK));
  if (!readable) {
    folder.isToBeListed = true;
    if (isShortage(errno))
      later_.push_back(&folder);
    else if (!isMissingFile(errno))
      closed_.insert(&folder);
    return;
  }
  const std::uint32_t listing = ++listings_;
  DirectoryReader reader(std::move(readable));
  while (const auto* entry = reader.next()) {
    if (isLeftOut(entry->text)) continue;
    const std::string name(entry->name());
    const auto touched = touches.extract(name);
    const Touch& touch = touched.empty() ? Touch{} : touched.mapped();
    if (folder.hasStamps || entry->type == DT_UNKNOWN)
      lookAt(folder, directory, name, touch);
    else
      isThere(folder, directory, name, {entry->inode, 0, entry->type == DT_DIR}, touch);
    if (const auto known = folder.entries.find(name); known != folder.entries.end())
      known->second.listing = listing;
  }
  if (reader.error() != 0) {  // what was not listed may be there
    folder.isToBeListed = true;
    if (!isMissingFile(reader.error())) later_.push_back(&folder);
    return;
  }
  folder.hasStamps = polled_.contains(&folder);
  std::vector<std::string> missing;
  for (const auto& [name, entry] : folder.entries)
    if (entry.listing != listing) missing.push_back(name);
  for (const std::string& name : missing) isMissing(folder, name);
}

void TreeEvents::lookAt(Folder& folder, int directory, const std::string& name,
                        const Touch& touched) {
  struct ::statx is {};
  constexpr unsigned wanted = STATX_TYPE | STATX_INO | STATX_CTIME | STATX_SIZE;
  if (os::statx(directory, name.c_str(), AT_SYMLINK_NOFOLLOW, wanted, &is) == 0) {
    const bool isFolder = S_ISDIR(is.stx_mode);
    // A folder's times change with the names in it, which are told by themselves.
    const std::uint64_t stamp = folder.hasStamps && !isFolder ? stampOf(is) : 0;
    isThere(folder, directory, name, {static_cast<ino_t>(is.stx_ino), stamp, isFolder}, touched);
  } else if (isMissingFile(errno)) {
    isMissing(folder, name);
  } else if (isShortage(errno)) {
    folder.touches.emplace(name, touched);
    later_.push_back(&folder);
  } else {
    folder.isToBeListed = true;
    closed_.insert(&folder);
  }
}

void TreeEvents::isThere(Folder& folder, int directory, const std::string& name, const Found& found,
                         const Touch& touched) {
  const auto [at, isNew] = folder.entries.try_emplace(name);
  Entry& entry = at->second;
  const Entry before = entry;
  entry.inode = found.inode;
  entry.stamp = found.stamp;
  entry.isFolder = found.isFolder;
  const std::string path = pathOf(folder, name);
  // Names are looked at when there may be more news of them to come: those of what has been seen
  // already mean the same file still, and those of what was there before mean another one. Whether
  // a folder that was entered is the same is found out when it is entered again.
  const bool isSame = !isNew && !touched.wasReplaced && before.isFolder == found.isFolder &&
                      (before.child != nullptr || before.inode == found.inode);
  const bool isMoved = !touched.origin.empty() && touched.inode == found.inode;
  const std::string origin = isMoved ? touched.origin : std::string();
  if (isSame) {
    std::uint32_t kinds = touched.kinds;
    if (before.stamp != found.stamp && before.stamp != 0 && found.stamp != 0) kinds |= treeChanged;
    if (kinds != 0) changes_->touched(path, found.isFolder, kinds);
  } else {
    // Also when it is the same folder, for what is in it was away: then it is put in again.
    if (before.child != nullptr) takeOut(*before.child);
    if (!isNew) changes_->gone(path, before.isFolder);
    changes_->come(path, found.isFolder, origin, touched.kinds);
  }
  if (!found.isFolder) return;
  enter(folder, directory, name, entry);
  if ((touched.kinds & treeAttributes) != 0) lookIntoClosed();
}

void TreeEvents::lookIntoClosed() {
  for (Folder* closed : std::exchange(closed_, {})) listAnew(*closed);
}

void TreeEvents::isMissing(Folder& folder, const std::string& name) {
  const auto found = folder.entries.find(name);
  if (found == folder.entries.end()) return;
  if (found->second.child != nullptr) takeOut(*found->second.child);
  changes_->gone(pathOf(folder, name), found->second.isFolder);
  folder.entries.erase(found);
}

// Makes sure that the folder with that name is watched, as the folder it is.
void TreeEvents::enter(Folder& in, int directory, const std::string& name, Entry& entry) {
  if (!options_.deep) return;
  const Descriptor found(os::openat(directory, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW));
  struct ::statx is {};
  if (!found || os::statx(found.number(), "", AT_EMPTY_PATH, STATX_INO, &is) != 0) {
    if (!isShortage(errno)) return;  // gone meanwhile
    in.touches.try_emplace(name);
    later_.push_back(&in);
    return;
  }
  const Identity identity{::makedev(is.stx_dev_major, is.stx_dev_minor),
                          static_cast<ino_t>(is.stx_ino)};
  bool isKnown = entry.child != nullptr && entry.child->identity == identity;
  if (isKnown && !hasLost_ && (entry.child->number >= 0 || polled_.contains(entry.child))) return;

  // A watch on a folder that has one already has its number, wherever the folder has come from.
  const bool isTold =
      identity.device == in.identity.device ? in.isTold : tellsOfChanges(found.number());
  const int number = isTold ? addWatch(found.number(), false) : -1;
  const auto holder = number < 0 ? byNumber_.end() : byNumber_.find(number);
  Folder* const moved = holder == byNumber_.end() ? nullptr : holder->second;
  if (isKnown && moved == entry.child) return;
  isKnown = isKnown && entry.child->number < 0;
  if (entry.child != nullptr && !isKnown) {
    const std::string path = pathOf(in, name);
    takeOut(*entry.child);
    changes_->gone(path, true);
    changes_->come(path, true);
  }
  if (moved != nullptr) {
    if (!isSecondFaceOf(*moved, in)) putIn(*moved, in, name, entry);
    return;
  }
  if (entry.child == nullptr) entry.child = &newFolder(&in, name, identity, isTold);
  Folder& folder = *entry.child;
  if (number >= 0) {
    folder.number = number;
    byNumber_[number] = &folder;
    polled_.erase(&folder);
  }
  listAnew(folder);
}

}  // namespace qz::detail
