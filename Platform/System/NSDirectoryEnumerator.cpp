#include "Platform/System/NSDirectoryEnumerator.h"

#include <string>
#include <vector>

#include "Platform/Runtime/Describe.h"
#include "Platform/System/detail/DirectoryReader.h"
#include "Platform/System/detail/FileAttributes.h"
#include "Platform/System/detail/FileErrors.h"
#include "Platform/System/detail/PathBytes.h"

namespace qz {

using detail::Descriptor;
using detail::DirectoryReader;
namespace os = detail::os;

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK;

struct Entry {
  std::string name;
  bool isFolder;
};

// Read in one go, so that a walk needs no descriptor while it stands still. `error` becomes 0, or
// the `errno` because of which there may be more.
std::vector<Entry> entriesOf(Descriptor folder, int& error) {
  std::vector<Entry> entries;
  const int number = folder.number();
  DirectoryReader reader(std::move(folder));
  while (const auto* each = reader.next()) {
    entries.push_back({std::string(each->name()), isFolderIn(number, *each)});
  }
  error = reader.error();
  return entries;
}

// Somebody has removed it, or put something else in its place, since it was listed.
bool isGone(int number) noexcept {
  return number == ENOENT || number == ENOTDIR || number == ELOOP;
}

}  // namespace

struct NSDirectoryEnumerator::Walk {
  struct Level {
    std::vector<Entry> entries;
    std::size_t next = 0;
    std::size_t pathLength = 0;  // of the directory, relative
  };

  std::string top;
  std::string path;  // of the entry answered last, relative
  std::vector<Level> levels;
  bool goesBelow = false;   // the entry answered last is a directory yet to be read
  std::uint32_t depth = 0;  // of the entry answered last

  std::string absolute() const { return path.empty() ? top : top + '/' + path; }

  // Goes into the directory answered last. 0, or the `errno` of what could not be read in it.
  int enter() {
    goesBelow = false;
    Descriptor folder(os::openat(AT_FDCWD, absolute().c_str(), folderFlags));
    int error = folder ? 0 : errno;
    if (folder) levels.push_back({entriesOf(std::move(folder), error), 0, path.size()});
    return isGone(error) ? 0 : error;
  }
};

NSDirectoryEnumerator::NSDirectoryEnumerator(std::unique_ptr<Walk> walk) : walk_(std::move(walk)) {}
NSDirectoryEnumerator::~NSDirectoryEnumerator() = default;

Ref<NSDirectoryEnumerator> NSDirectoryEnumerator::enumeratorAtPath(NSString* path) {
  const detail::PathBytes bytes(path);
  errno = bytes.error();
  if (errno != 0) return nullptr;
  // The top may be a link: the caller has chosen it.
  Descriptor folder(os::openat(AT_FDCWD, bytes.c_str(), folderFlags & ~O_NOFOLLOW));
  if (!folder) return nullptr;
  int error = 0;
  std::vector<Entry> entries = entriesOf(std::move(folder), error);
  errno = error;
  if (error != 0) return nullptr;
  auto walk = std::make_unique<Walk>();
  walk->top = bytes.view();
  walk->levels.push_back({std::move(entries), 0, 0});
  return Ref<NSDirectoryEnumerator>(new NSDirectoryEnumerator(std::move(walk)), adopt);
}

Ref<NSObject> NSDirectoryEnumerator::nextObject() {
  Walk& walk = *walk_;
  if (walk.goesBelow)
    if (const int number = walk.enter(); number != 0 && !error_)
      error_ =
          detail::fileError(NSString::stringWithFileSystemRepresentation(walk.absolute()), number);
  while (!walk.levels.empty() && walk.levels.back().next == walk.levels.back().entries.size())
    walk.levels.pop_back();
  if (walk.levels.empty()) return nullptr;
  Walk::Level& level = walk.levels.back();
  const Entry& entry = level.entries[level.next++];
  walk.path.resize(level.pathLength);
  if (!walk.path.empty()) walk.path += '/';
  walk.path += entry.name;
  walk.goesBelow = entry.isFolder;
  walk.depth = static_cast<std::uint32_t>(walk.levels.size());
  return NSString::stringWithFileSystemRepresentation(walk.path);
}

void NSDirectoryEnumerator::skipDescendents() { walk_->goesBelow = false; }

std::uint32_t NSDirectoryEnumerator::level() const noexcept { return walk_->depth; }

Ref<NSDictionary> NSDirectoryEnumerator::fileAttributes() const {
  if (walk_->path.empty()) return nullptr;
  return detail::attributesOfFile(walk_->absolute().c_str(), false);
}

Ref<NSDictionary> NSDirectoryEnumerator::directoryAttributes() const {
  return detail::attributesOfFile(walk_->top.c_str(), true);
}

void NSDirectoryEnumerator::describe(ClassDescription<NSDirectoryEnumerator>& is) {
  is.named("NSDirectoryEnumerator")
      .method<&NSDirectoryEnumerator::skipDescendents>("skipDescendents")
      .method<&NSDirectoryEnumerator::error>("error")
      .method<&NSDirectoryEnumerator::level>("level")
      .method<&NSDirectoryEnumerator::fileAttributes>("fileAttributes")
      .method<&NSDirectoryEnumerator::directoryAttributes>("directoryAttributes");
}

}  // namespace qz
