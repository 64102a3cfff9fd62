#include "Platform/System/detail/TreeMove.h"

#include <atomic>

#include "Platform/System/detail/SingleCopy.h"
#include "Platform/System/detail/TreeCopy.h"
#include "Platform/System/detail/TreeRemoval.h"

namespace qz::detail {
namespace {

bool exists(const std::string& path) {
  struct ::statx about;
  return os::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &about) == 0;
}

bool renameUnlessThere(const std::string& from, const std::string& to) {
  if (os::renameat2(from.c_str(), to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // Either it is to go into itself, which the plain call refuses as well, or this file system knows
  // the plain call alone.
  if (exists(to)) {
    errno = EEXIST;
    return false;
  }
  return os::renameat2(from.c_str(), to.c_str(), 0) == 0;
}

// A name in the same directory that nobody else uses.
std::string besides(const std::string& path) {
  static std::atomic<unsigned int> count{0};
  const std::size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
  for (;;) {
    std::string name = folder + ".qz-move-" + std::to_string(::getpid()) + '-' +
                       std::to_string(count.fetch_add(1));
    if (!exists(name)) return name;
  }
}

bool ignoreFailures(const std::string&, int) { return true; }

bool moveByCopying(const std::string& from, const std::string& to,
                   const FailureListener& onFailure) {
  const std::string copy = besides(to);
  const auto tell = [&](const std::string& path, int number) {
    const bool isInCopy = path.starts_with(copy);
    const std::string meant = isInCopy ? to + path.substr(copy.size()) : path;
    errno = number;
    onFailure(meant, number);
    return false;  // without one of its files it is not moved
  };
  bool isMoved = false;
  try {
    isMoved = copyTree(from, copy, tell);
    if (isMoved && !renameUnlessThere(copy, to)) {
      isMoved = false;
      tell(to, errno);
    }
  } catch (...) {  // of the listener
    removeTree(copy, ignoreFailures);
    throw;
  }
  if (isMoved) return removeTree(from, onFailure);
  removeTree(copy, ignoreFailures);
  return false;
}

}  // namespace

bool moveTree(const std::string& from, const std::string& to, const FailureListener& onFailure) {
  if (renameUnlessThere(from, to)) return true;
  const int number = errno;
  if (number == EXDEV && !exists(to)) return moveByCopying(from, to, onFailure);
  const int told = number == EXDEV ? EEXIST : number;
  // Which of the two names is meant, the system does not say.
  const std::string path = told == ENOENT && exists(from) ? folderOf(to)
                           : told == EEXIST               ? to
                                                          : from;
  errno = told;
  onFailure(path, told);
  return false;
}

}  // namespace qz::detail
