#include "Platform/System/detail/SingleCopy.h"

#include <sys/sysmacros.h>

#include <vector>

namespace qz::detail {
namespace {

constexpr int newFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;

// Takes a name away that is not to stay, and answers what the copy failed with.
CopyOutcome withdraw(const CopyStep& step, CopyOutcome outcome) {
  os::unlinkat(step.toFolder, step.to, 0);
  return outcome;
}

// Gives an unnamed file its name. By descriptor where the kernel allows that, else through the
// list of the process's own descriptors.
bool publish(int file, const CopyStep& step) {
  if (os::linkat(file, "", step.toFolder, step.to, AT_EMPTY_PATH) == 0) return true;
  if (errno != ENOENT && errno != EPERM) return false;
  char self[64];
  std::snprintf(self, sizeof self, "/proc/self/fd/%d", file);
  return os::linkat(AT_FDCWD, self, step.toFolder, step.to, AT_SYMLINK_FOLLOW) == 0;
}

CopyOutcome copySymbolicLink(const CopyStep& step, const struct ::statx& about) {
  std::vector<char> text(about.stx_size + 1);
  for (;;) {
    const ssize_t size = os::readlinkat(step.fromFolder, step.from, text.data(), text.size());
    if (size < 0) return CopyOutcome::source();
    if (static_cast<std::size_t>(size) < text.size()) {
      text[static_cast<std::size_t>(size)] = '\0';
      break;
    }
    text.resize(text.size() * 2);
  }
  if (os::symlinkat(text.data(), step.toFolder, step.to) != 0) return CopyOutcome::target();
  return {};
}

dev_t deviceOf(const struct ::statx& about) {
  return makedev(about.stx_rdev_major, about.stx_rdev_minor);
}

}  // namespace

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  return path.substr(0, slash == 0 ? 1 : slash);
}

const std::string* SharedFiles::find(const Key& key) const {
  const auto found = copied_.find(key);
  return found == copied_.end() ? nullptr : &found->second.path;
}

void SharedFiles::add(const Key& key, std::string path, std::uint32_t names) {
  copied_.insert_or_assign(key, Copied{std::move(path), names - 1});
}

void SharedFiles::used(const Key& key) {
  const auto found = copied_.find(key);
  if (found != copied_.end() && --found->second.namesLeft == 0) copied_.erase(found);
}

Descriptor openToCopy(const CopyStep& step, struct ::statx& about, CopyOutcome& outcome) {
  // A pipe in the file's place must not make anybody wait.
  Descriptor in(os::openat(step.fromFolder, step.from, O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
  if (!in && errno != ELOOP && errno != ENXIO) {
    outcome = CopyOutcome::source();
    return in;
  }
  const int refusal = errno;
  bool isAsked =
      in ? statusOf(in.number(), about)
         : os::statx(step.fromFolder, step.from, AT_SYMLINK_NOFOLLOW, statusMask, &about) == 0;
  if (!in && isAsked && S_ISREG(about.stx_mode)) {  // and was a link or a socket a moment ago
    errno = refusal;
    isAsked = false;
  }
  if (!isAsked) outcome = CopyOutcome::source();
  if (outcome.failed() || !S_ISREG(about.stx_mode)) in.close();
  return in;
}

CopyOutcome copyRegular(const CopyStep& step, int in, const struct ::statx& about, FileOwner owner,
                        CopyAbilities& abilities) {
  Descriptor out(os::openat(step.toFolder, step.to, newFile, S_IRUSR | S_IWUSR));
  if (!out) return CopyOutcome::target();
  CopyOutcome outcome = copyContents(in, out.number(), about, abilities);
  if (!outcome.failed()) outcome = copyProperties(in, out.number(), about, owner);
  if (!outcome.failed() && out.closeWritten() != 0) outcome = CopyOutcome::target();
  return outcome.failed() ? withdraw(step, outcome) : outcome;
}

CopyOutcome copyRegularAtOnce(const CopyStep& step, int in, const struct ::statx& about,
                              CopyAbilities& abilities) {
  constexpr std::uint64_t worthAsking = 1024 * 1024;
  struct ::statx there;
  // Giving the name refuses one that is taken; a large file is not copied first.
  if (about.stx_size > worthAsking &&
      os::statx(step.toFolder, step.to, AT_SYMLINK_NOFOLLOW, STATX_TYPE, &there) == 0) {
    errno = EEXIST;
    return CopyOutcome::target();
  }
  Descriptor out(os::openat(step.toFolder, folderOf(step.to).c_str(), O_TMPFILE | O_WRONLY,
                            S_IRUSR | S_IWUSR));
  const bool canBeUnnamed =
      out || (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL && errno != ENOSYS);
  if (!out && canBeUnnamed) return CopyOutcome::target();
  if (!out) {
    // No such user and group: everything is set.
    const FileOwner nobody{static_cast<uid_t>(-1), static_cast<gid_t>(-1)};
    return copyRegular(step, in, about, nobody, abilities);
  }
  if (!statusOf(out.number(), there)) return CopyOutcome::target();
  CopyOutcome outcome = copyContents(in, out.number(), about, abilities);
  if (!outcome.failed())
    outcome = copyProperties(in, out.number(), about, {there.stx_uid, there.stx_gid});
  if (outcome.failed()) return outcome;
  if (!publish(out.number(), step)) {
    // Without the list of descriptors there is no way to name it: copied again, in the open.
    const bool isUnable = errno == ENOENT || errno == EPERM || errno == EOPNOTSUPP;
    if (!isUnable || os::lseek(in, 0, SEEK_SET) != 0) return CopyOutcome::target();
    return copyRegular(step, in, about, {there.stx_uid, there.stx_gid}, abilities);
  }
  if (out.closeWritten() == 0) return {};
  return withdraw(step, CopyOutcome::target());
}

CopyOutcome copySpecial(const CopyStep& step, const struct ::statx& about) {
  if (S_ISLNK(about.stx_mode)) {
    const auto outcome = copySymbolicLink(step, about);
    if (outcome.failed()) return outcome;
  } else if (os::mknodat(step.toFolder, step.to, about.stx_mode & (S_IFMT | S_IRWXU),
                         deviceOf(about)) != 0) {
    return CopyOutcome::target();
  }
  struct ::statx made;
  if (os::statx(step.toFolder, step.to, AT_SYMLINK_NOFOLLOW, STATX_UID | STATX_GID, &made) != 0)
    return withdraw(step, CopyOutcome::target());
  const bool isOwners = made.stx_uid == about.stx_uid && made.stx_gid == about.stx_gid;
  if (!isOwners &&
      os::fchownat(step.toFolder, step.to, about.stx_uid, about.stx_gid, AT_SYMLINK_NOFOLLOW) !=
          0 &&
      errno != EPERM && errno != EOPNOTSUPP)
    return withdraw(step, CopyOutcome::target());
  if (!S_ISLNK(about.stx_mode) && os::fchmodat(step.toFolder, step.to, about.stx_mode & 0777) != 0)
    return withdraw(step, CopyOutcome::target());
  const FileTimes times(about);
  if (os::utimensat(step.toFolder, step.to, times.times, AT_SYMLINK_NOFOLLOW) != 0)
    return withdraw(step, CopyOutcome::target());
  return {};
}

}  // namespace qz::detail
