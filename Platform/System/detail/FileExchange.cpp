#include "Platform/System/detail/FileExchange.h"

#include <string>

#include "Platform/System/detail/FileBytes.h"
#include "Platform/Values/detail/SystemCalls.h"

namespace qz::detail {
namespace {

mode_t kindOf(const char* path, int flags) {
  struct ::statx about;
  const bool isThere = os::statx(AT_FDCWD, path, flags, STATX_TYPE, &about) == 0;
  return isThere ? about.stx_mode & S_IFMT : 0;
}

}  // namespace

bool exchangeFiles(const char* other, const char* path) {
  std::string target;
  mode_t kind = kindOf(path, AT_SYMLINK_NOFOLLOW);
  if (kind == S_IFLNK) {
    kind = kindOf(path, 0);
    if (kindOf(other, AT_SYMLINK_NOFOLLOW) == S_IFREG) target = realPath(path);
    if (!target.empty()) path = target.c_str();
  }
  if (kind == S_IFDIR) {
    errno = EISDIR;
    return false;
  }
  if (os::renameat2(other, path, RENAME_EXCHANGE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP) return false;
  return os::renameat2(other, path, 0) == 0;
}

}  // namespace qz::detail
