#include "Platform/System/detail/VnodeEvents.h"

#include <cerrno>
#include <utility>

namespace qz::detail {
namespace {

// What to ask the kernel for. Losing a name and getting it back come as a change of attributes, and
// without them the size that growing is told by would not be known.
std::uint32_t kernelMask(std::uint32_t kinds) noexcept {
  std::uint32_t bits = IN_DELETE_SELF | IN_MOVE_SELF;
  if ((kinds & (vnodeWritten | vnodeExtended | vnodeLinked)) != 0)
    bits |= IN_MODIFY | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
  if ((kinds & (vnodeAttributes | vnodeLinked | vnodeDeleted | vnodeExtended)) != 0)
    bits |= IN_ATTRIB;
  return bits;
}

}  // namespace

std::unique_ptr<VnodeEvents> VnodeEvents::open() {
  NotifyQueue queue;
  if (const int error = queue.open(); error != 0) {
    errno = error;
    return nullptr;
  }
  return std::unique_ptr<VnodeEvents>(new VnodeEvents(std::move(queue)));
}

VnodeEvents::Known VnodeEvents::look(const std::string& path) noexcept {
  struct stat is {};
  if (::stat(path.c_str(), &is) != 0) return {};
  return {true, is.st_dev, is.st_ino, is.st_size, is.st_nlink, is.st_mode, is.st_uid, is.st_gid};
}

VnodeEvents::Watch VnodeEvents::add(std::string path, std::uint32_t mask) {
  if (path.find('\0') != std::string::npos) {
    errno = ENOENT;
    return 0;
  }
  std::lock_guard lock(mutex_);
  // Another watch on the same file keeps what it asked for.
  const int number = queue_.add(path.c_str(), kernelMask(mask) | IN_MASK_ADD);
  if (number < 0) return 0;
  const Watch watch = ++last_;
  // What was watched may have been replaced since: then it was deleted, which is on its way here.
  const Known known = look(path);
  entries_.emplace_hint(entries_.end(), watch, Entry{std::move(path), mask, number, known});
  byNumber_[number].push_back(watch);
  return watch;
}

void VnodeEvents::remove(Watch watch) {
  std::lock_guard lock(mutex_);
  const auto found = entries_.find(watch);
  if (found == entries_.end()) return;
  const int number = found->second.number;
  entries_.erase(found);
  if (number < 0) return;
  const auto sharing = byNumber_.find(number);
  std::erase(sharing->second, watch);
  if (!sharing->second.empty()) return;
  byNumber_.erase(sharing);
  queue_.remove(number);
}

bool VnodeEvents::has(Watch watch) {
  std::lock_guard lock(mutex_);
  return entries_.contains(watch);
}

std::vector<VnodeEvents::Event> VnodeEvents::wait(std::chrono::milliseconds longest) {
  // The last word on a removed watch wakes this thread for nothing. More removals tend to follow:
  // a moment later theirs come all at once.
  const auto moment = std::min(longest, std::chrono::milliseconds(1));
  if (std::exchange(hasRemoved_, false) && queue_.waitForWake(static_cast<int>(moment.count())))
    return {};
  if (!queue_.wait(static_cast<int>(longest.count()))) return {};
  std::lock_guard lock(mutex_);
  readOnce();
  // A renaming that explains a lost name is queued by now; a busy queue is not drained for ever.
  for (int reads = 0; !doubtful_.empty() && reads < 64 && readOnce(); ++reads) {
  }
  settleDoubts();
  places_.clear();
  return std::exchange(pending_, {});
}

bool VnodeEvents::readOnce() {
  return queue_.read([&](const NotifyQueue::Notice& notice) {
    if ((notice.bits & IN_Q_OVERFLOW) != 0)
      lost();
    else
      take(notice.number, notice.bits, !notice.name.empty());
  });
}

void VnodeEvents::take(int number, std::uint32_t bits, bool isOfMember) {
  const auto sharing = byNumber_.find(number);
  if (sharing == byNumber_.end()) {
    // Late news of a removed watch: the kernel counts its numbers up, so this is no other one's.
    if ((bits & IN_IGNORED) != 0) hasRemoved_ = true;
    return;
  }
  if ((bits & IN_IGNORED) != 0) {
    forgetNumber(number);
    return;
  }
  for (const Watch watch : sharing->second) {
    Entry& entry = entries_.find(watch)->second;
    report(watch, kindsOf(watch, entry, bits, isOfMember) & entry.mask);
  }
}

// The kernel has ended the watch, because there is nothing left to watch.
void VnodeEvents::forgetNumber(int number) {
  for (const Watch watch : byNumber_[number]) entries_.find(watch)->second.number = -1;
  byNumber_.erase(number);
}

void VnodeEvents::report(Watch watch, std::uint32_t kinds) {
  if (kinds == 0) return;
  const auto [place, isNew] = places_.try_emplace(watch, pending_.size());
  if (isNew) pending_.push_back({watch, 0});
  pending_[place->second].kinds |= kinds;
}

std::uint32_t VnodeEvents::kindsOf(Watch watch, Entry& entry, std::uint32_t bits, bool isOfMember) {
  std::uint32_t kinds = 0;
  if ((bits & (IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO)) != 0) {
    // A folder among the members counts as a link to this one.
    kinds |= vnodeWritten;
    if ((bits & IN_ISDIR) != 0) kinds |= vnodeLinked;
    return kinds;
  }
  if (isOfMember) return 0;  // what happens to a member's contents is not the folder's
  if ((bits & IN_MODIFY) != 0) {
    kinds |= vnodeWritten;
    const Known now = look(entry.path);
    if (now.isSameFile(entry.known)) {
      if (now.size > entry.known.size) kinds |= vnodeExtended;
      entry.known.size = now.size;
    }
  }
  if ((bits & IN_ATTRIB) != 0) kinds |= attributeKinds(watch, entry);
  if ((bits & IN_MOVE_SELF) != 0) {
    kinds |= vnodeRenamed;
    if (std::erase(doubtful_, watch) != 0) kinds |= vnodeAttributes;
    const Known now = look(entry.path);
    entry.isRenamed = !now.isSameFile(entry.known);
    if (entry.isRenamed) {
      entry.known.links = 0;
    } else {  // back where it was
      entry.known = now;
      entry.isDeleted = false;
    }
  }
  if ((bits & IN_DELETE_SELF) != 0 && !std::exchange(entry.isDeleted, true)) kinds |= vnodeDeleted;
  if ((bits & IN_UNMOUNT) != 0) kinds |= vnodeRevoked;
  return kinds;
}

// A file that loses a name while it is open somewhere, or has another name, says so only here.
std::uint32_t VnodeEvents::attributeKinds(Watch watch, Entry& entry) {
  const Known now = look(entry.path);
  if (!now.isSameFile(entry.known)) {
    entry.known.links = 0;
    if (entry.isRenamed || !entry.known.exists) return vnodeAttributes;
    if (!entry.isDeleted) doubtful_.push_back(watch);
    return 0;
  }
  const Known before = std::exchange(entry.known, now);
  entry.isRenamed = false;
  entry.isDeleted = false;
  if (before.links == 0) return vnodeLinked;  // the name is back, by a new link
  entry.known.size = before.size;             // growing is a matter of writing
  if (now.links == before.links) return vnodeAttributes;
  const bool others =
      now.mode != before.mode || now.owner != before.owner || now.group != before.group;
  return vnodeLinked | (others ? vnodeAttributes : 0u);
}

void VnodeEvents::settleDoubts() {
  for (const Watch watch : std::exchange(doubtful_, {})) {
    Entry& entry = entries_.find(watch)->second;
    if (!std::exchange(entry.isDeleted, true)) report(watch, vnodeDeleted & entry.mask);
  }
}

void VnodeEvents::lost() {
  for (auto& [watch, entry] : entries_) report(watch, vnodeWritten & entry.mask);
}

}  // namespace qz::detail
