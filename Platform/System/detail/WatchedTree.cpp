// The tree of folders behind TreeEvents: what is where, and what is watched.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <utility>

#include "Platform/System/detail/TreeEvents.h"

namespace qz::detail {
namespace {

constexpr std::uint32_t ofFolder = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_MODIFY |
                                   IN_CLOSE_WRITE | IN_ATTRIB | IN_EXCL_UNLINK | IN_ONLYDIR |
                                   IN_MASK_ADD;  // a second face takes nothing away

}  // namespace

template <class F>
void TreeEvents::visit(Folder& top, F function) {
  std::vector<Folder*> open{&top};
  while (!open.empty()) {
    Folder* folder = open.back();
    open.pop_back();
    function(*folder);
    for (const auto& [name, entry] : folder->entries)
      if (entry.child != nullptr) open.push_back(entry.child);
  }
}

TreeEvents::Folder& TreeEvents::newFolder(Folder* parent, std::string name, Identity identity,
                                          bool isTold) {
  auto folder = std::make_unique<Folder>();
  folder->parent = parent;
  folder->name = std::move(name);
  folder->identity = identity;
  folder->isTold = isTold;
  Folder* const key = folder.get();
  return *folders_.emplace(key, std::move(folder)).first->second;
}

// Watches a folder that is not, or leaves it to be polled. Whether it is watched now.
bool TreeEvents::watch(Folder& folder, int directory) {
  const int number = folder.isTold ? addWatch(directory, &folder == top_) : -1;
  if (number < 0 && folder.isTold && errno == EACCES) {
    closed_.insert(&folder);
    return false;
  }
  if (number < 0 || !byNumber_.try_emplace(number, &folder).second) {
    polled_.insert(&folder);
    folder.hasStamps = true;
    return false;
  }
  folder.number = number;
  polled_.erase(&folder);
  return true;
}

// By way of the descriptor, so that what is watched is what was looked at, wherever it is by now.
int TreeEvents::addWatch(int directory, bool isTop) {
  char path[32];
  std::snprintf(path, sizeof path, "/proc/self/fd/%d", directory);
  const std::uint32_t bits = isTop ? ofFolder | IN_MOVE_SELF | IN_DELETE_SELF : ofFolder;
  const int number = queue_.add(path, bits);
  if (number < 0 && errno != EACCES && queue_.descriptor() >= 0) refusal_ = errno;
  return number;
}

// A folder can be seen in two places when a file system is mounted twice. It is entered in one.
bool TreeEvents::isSecondFaceOf(const Folder& folder, const Folder& in) {
  for (const Folder* at = &in; at != nullptr; at = at->parent)
    if (at == &folder) return true;
  return isInTree(folder) && open(folder);
}

void TreeEvents::takeOut(Folder& folder) {
  const std::string path = pathOf(folder);
  folder.isNew = changes_->stateOf(path).isNew;
  visit(folder, [&](Folder& each) {
    const std::string at = pathOf(each);
    for (auto& [name, entry] : each.entries) {
      const std::string member = joined(at, name);
      const TreeChanges::State state = changes_->stateOf(member);
      entry.kinds = static_cast<std::uint8_t>(state.kinds);
      entry.isNew = state.isNew;
      changes_->gone(member, entry.isFolder);
    }
  });
  if (folder.parent != nullptr) {
    const auto entry = folder.parent->entries.find(folder.name);
    if (entry != folder.parent->entries.end()) entry->second.child = nullptr;
  }
  folder.parent = nullptr;
  folder.name = path;
  out_.push_back(&folder);
}

void TreeEvents::putIn(Folder& folder, Folder& in, const std::string& name, Entry& entry) {
  if (isInTree(folder)) {
    // Something else may be by now where it was.
    Folder& from = *folder.parent;
    const std::string old = folder.name;
    touch(from, old);
    isMissing(from, old);
  } else if (folder.parent != nullptr) {  // taken out with those above it
    Entry& old = folder.parent->entries.find(folder.name)->second;
    old.child = nullptr;
    folder.isNew = old.isNew;
    folder.name = pathOf(folder);
  }
  const std::string oldTop = folder.name;
  std::erase(out_, &folder);
  folder.parent = &in;
  folder.name = name;
  entry.child = &folder;
  const std::string newTop = pathOf(folder);
  // Paths at which things were for a moment only have not been told to anybody.
  changes_->come(newTop, true, folder.isNew ? std::string() : oldTop);
  visit(folder, [&](Folder& each) {
    const std::string at = pathOf(each);
    const std::string from = oldTop + at.substr(newTop.size());
    for (const auto& [member, known] : each.entries)
      changes_->come(joined(at, member), known.isFolder,
                     known.isNew ? std::string() : joined(from, member), known.kinds);
    if (each.isToBeListed || !each.touches.empty()) markDirty(each);
  });
}

void TreeEvents::dropWhatIsOut() {
  if (out_.empty()) return;
  std::vector<Folder*> dropped;
  for (Folder* top : std::exchange(out_, {}))
    visit(*top, [&](Folder& each) {
      each.isDropped = true;
      dropped.push_back(&each);
    });
  std::erase_if(dirty_, [](const Folder* folder) { return folder->isDropped; });
  std::erase_if(later_, [](const Folder* folder) { return folder->isDropped; });
  for (Folder* folder : dropped) {
    if (folder->number >= 0) {
      byNumber_.erase(folder->number);
      queue_.remove(folder->number);
    }
    polled_.erase(folder);
    closed_.erase(folder);
    folders_.erase(folder);
  }
}

// As a place to look from, and only if it is the folder that is meant: every name in the path may
// mean another one by now.
Descriptor TreeEvents::open(const Folder& folder) const {
  constexpr int flags = O_PATH | O_DIRECTORY;
  Descriptor found;
  if (const std::string path = pathOf(folder); path.size() < PATH_MAX) {
    const int follow = folder.parent == nullptr ? 0 : O_NOFOLLOW;
    found = Descriptor(os::openat(AT_FDCWD, path.c_str(), flags | follow));
  } else {
    std::vector<const Folder*> way;
    for (const Folder* at = &folder; at->parent != nullptr; at = at->parent) way.push_back(at);
    found = Descriptor(os::openat(AT_FDCWD, path_.c_str(), flags));
    for (auto at = way.rbegin(); found && at != way.rend(); ++at)
      found = Descriptor(os::openat(found.number(), (*at)->name.c_str(), flags | O_NOFOLLOW));
  }
  struct ::statx is {};
  if (!found || os::statx(found.number(), "", AT_EMPTY_PATH, STATX_INO, &is) != 0) return {};
  const Identity identity{::makedev(is.stx_dev_major, is.stx_dev_minor),
                          static_cast<ino_t>(is.stx_ino)};
  if (identity == folder.identity) return found;
  found.close();
  errno = ENOENT;
  return {};
}

bool TreeEvents::isInTree(const Folder& folder) const noexcept {
  const Folder* at = &folder;
  while (at->parent != nullptr) at = at->parent;
  return at == top_;
}

std::string TreeEvents::joined(const std::string& path, std::string_view name) {
  std::string whole;
  whole.reserve(path.size() + 1 + name.size());
  whole = path;
  if (path != "/") whole += '/';
  whole += name;
  return whole;
}

std::string TreeEvents::pathOf(const Folder& folder) const {
  std::vector<const Folder*> way;
  const Folder* at = &folder;
  for (; at->parent != nullptr; at = at->parent) way.push_back(at);
  std::string path = at->name;
  for (auto each = way.rbegin(); each != way.rend(); ++each) {
    if (path != "/") path += '/';
    path += (*each)->name;
  }
  return path;
}

std::string TreeEvents::pathOf(const Folder& folder, std::string_view name) const {
  return joined(pathOf(folder), name);
}

}  // namespace qz::detail
