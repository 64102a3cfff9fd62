#include "Platform/System/detail/TreeRemoval.h"

#include <dirent.h>

#include <memory>
#include <string_view>
#include <vector>

#include "Platform/System/detail/DirectoryReader.h"

namespace qz::detail {
namespace {

std::string_view lastName(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  return path == "/" ? path : path.substr(path.rfind('/') + 1);
}

class Removal {
 public:
  explicit Removal(const FailureListener& onFailure) : onFailure_(onFailure) {}

  bool remove(const std::string& path);

 private:
  struct Level {
    OpenFolder folder;
    std::vector<std::string> subfolders;
    bool hasFailures = false;
    int passes = 0;
  };

  bool isDirectory(int folder, const char* name, const std::string& path);
  void enter(std::unique_ptr<Level> level);
  void enterSubfolder();
  void leave();
  void unlinkFiles(Level& level);
  void fail(const std::string& path, int number);

  const FailureListener& onFailure_;
  std::vector<std::unique_ptr<Level>> levels_;
  bool succeeded_ = true;
  bool goesOn_ = true;
};

void Removal::fail(const std::string& path, int number) {
  succeeded_ = false;
  for (auto& level : levels_) level->hasFailures = true;
  errno = number;
  if (!onFailure_(path, number)) goesOn_ = false;
}

bool Removal::remove(const std::string& path) {
  const std::string_view name = lastName(path);
  if (name == "/" || name == "." || name == "..") {
    fail(path, name == "/" ? EBUSY : EINVAL);
    return false;
  }
  if (os::unlinkat(AT_FDCWD, path.c_str(), 0) == 0) return true;
  if (errno != EISDIR) {
    fail(path, errno);
    return false;
  }
  Descriptor top(os::openat(AT_FDCWD, path.c_str(), OpenFolder::flags));
  if (!top) {
    const int number = errno;
    // An empty directory needs no look into it.
    if (number == EACCES && os::unlinkat(AT_FDCWD, path.c_str(), AT_REMOVEDIR) == 0) return true;
    fail(path, number);
    return false;
  }
  enter(std::unique_ptr<Level>(new Level{OpenFolder(path, std::move(top)), {}}));
  while (!levels_.empty()) {
    if (goesOn_ && !levels_.back()->subfolders.empty())
      enterSubfolder();
    else
      leave();
  }
  return succeeded_;
}

void Removal::enter(std::unique_ptr<Level> level) {
  if (levels_.size() > OpenFolder::levelsOpen)
    levels_[levels_.size() - OpenFolder::levelsOpen]->folder.park();
  levels_.push_back(std::move(level));
  unlinkFiles(*levels_.back());
}

void Removal::enterSubfolder() {
  Level& level = *levels_.back();
  std::string name = std::move(level.subfolders.back());
  level.subfolders.pop_back();
  const int folder = level.folder.number();
  Descriptor below(folder < 0 ? -1 : os::openat(folder, name.c_str(), OpenFolder::flags));
  if (below) {
    enter(std::unique_ptr<Level>(
        new Level{OpenFolder(level.folder, std::move(name), std::move(below)), {}}));
    return;
  }
  const int number = errno;
  if (number == ENOENT) return;
  if (folder >= 0 && os::unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0) return;
  fail(level.folder.path(name), number);
}

// Files go at once; directories are for later, when this one's listing is closed.
void Removal::unlinkFiles(Level& level) {
  ++level.passes;
  const int folder = level.folder.number();
  DirectoryReader reader(folder);
  while (const auto* entry = goesOn_ ? reader.next() : nullptr) {
    if (entry->type == DT_DIR) {
      level.subfolders.emplace_back(entry->name());
    } else if (os::unlinkat(folder, entry->text, 0) != 0 && errno != ENOENT) {
      const int number = errno;
      if (number == EISDIR)
        level.subfolders.emplace_back(entry->name());
      else
        fail(level.folder.path(entry->name()), number);
    }
  }
  if (reader.error() != 0 && reader.error() != ENOENT) fail(level.folder.path(), reader.error());
}

void Removal::leave() {
  constexpr int mostPasses = 8;
  Level& level = *levels_.back();
  if (!level.hasFailures && goesOn_) {
    OpenFolder* parent = level.folder.parent();
    const int above = parent == nullptr ? AT_FDCWD : parent->number();
    const bool isGone =
        above != -1 && os::unlinkat(above, level.folder.name().c_str(), AT_REMOVEDIR) == 0;
    const int number = isGone ? 0 : errno;
    // Somebody put something into it, or the listing missed what moved while it was read.
    if (number == ENOTEMPTY && level.passes < mostPasses && level.folder.number() >= 0 &&
        os::lseek(level.folder.number(), 0, SEEK_SET) == 0) {
      unlinkFiles(level);
      return;
    }
    if (number != 0 && (number != ENOENT || parent == nullptr)) fail(level.folder.path(), number);
  }
  levels_.pop_back();
}

}  // namespace

bool removeTree(const std::string& path, const FailureListener& onFailure) {
  return Removal(onFailure).remove(path);
}

}  // namespace qz::detail
