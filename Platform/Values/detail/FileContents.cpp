#include "Platform/Values/detail/FileContents.h"

#include <linux/limits.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <random>
#include <string_view>
#include <utility>

#include "Platform/Values/detail/Descriptor.h"
#include "Platform/Values/detail/SystemCalls.h"

namespace qz::detail {
namespace {

Descriptor open(const std::string& path, int flags, mode_t mode = 0666) {
  return Descriptor(os::openat(AT_FDCWD, path.c_str(), flags, mode));
}

bool stat(const Descriptor& file, struct statx& about) {
  return os::statx(file.number(), "", AT_EMPTY_PATH, STATX_BASIC_STATS, &about) == 0;
}

bool grow(FileContents& contents, std::size_t capacity) {
  void* memory = std::realloc(contents.bytes.get(), capacity);
  if (memory == nullptr) return false;
  static_cast<void>(contents.bytes.release());
  contents.bytes.reset(static_cast<std::byte*>(memory));
  return true;
}

/// What the chain of links at `path` leads to, which need not exist.
int followLinks(std::string& path) {
  constexpr int mostLinks = 40;  // as the system counts
  char target[PATH_MAX];
  for (int links = 0; links < mostLinks; ++links) {
    const ssize_t length = os::readlinkat(AT_FDCWD, path.c_str(), target, sizeof target);
    if (length < 0) return errno == EINVAL || errno == ENOENT ? 0 : errno;
    const std::string_view leads(target, static_cast<std::size_t>(length));
    const std::size_t name = leads.starts_with('/') ? 0 : path.rfind('/') + 1;
    path.replace(name, path.npos, leads);
  }
  return ELOOP;
}

std::string directoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == path.npos ? "." : path.substr(0, std::max<std::size_t>(slash, 1));
}

/// A new file beside `path`, whose name nobody else has.
class Replacement {
 public:
  Replacement(const std::string& directory, mode_t mode) {
    constexpr int attempts = 100;
    std::random_device random;
    for (int attempt = 0; attempt < attempts; ++attempt) {
      char name[32];
      std::snprintf(name, sizeof name, "/.write-%08x%08x", random(), random());
      path_ = directory + name;
      file_ = open(path_, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
      error_ = file_ ? 0 : errno;
      if (error_ != EEXIST) return;
    }
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  ~Replacement() {
    if (error_ == 0 && !isPlaced_) os::unlinkat(AT_FDCWD, path_.c_str(), 0);
  }

  int error() const { return error_; }

  /// The mode and, if that is allowed, the owner of the file to be replaced. Without its owner the
  /// file does not run under another's name.
  int resemble(const struct statx& old) {
    const bool hasOwner =
        os::fchownat(file_.number(), "", old.stx_uid, old.stx_gid, AT_EMPTY_PATH) == 0;
    const mode_t mode = old.stx_mode & (hasOwner ? 07777u : 0777u);
    return os::fchmod(file_.number(), mode) == 0 ? 0 : errno;
  }

  int fill(std::span<const std::byte> bytes) {
    if (const int error = writeAllToFile(file_.number(), bytes)) return error;
    // EINVAL is a file system that does not do it.
    if (os::fsync(file_.number()) != 0 && errno != EINVAL) return errno;
    return file_.closeWritten() == 0 ? 0 : errno;
  }

  int place(const std::string& path, bool isExclusive) {
    const unsigned flags = isExclusive ? RENAME_NOREPLACE : 0u;
    if (os::renameat2(path_.c_str(), path.c_str(), flags) != 0) {
      // A file system without that flag knows links, which do not replace either.
      if (!isExclusive || errno != EINVAL) return errno;
      if (os::linkat(AT_FDCWD, path_.c_str(), AT_FDCWD, path.c_str()) != 0) return errno;
      os::unlinkat(AT_FDCWD, path_.c_str(), 0);
    }
    isPlaced_ = true;
    return 0;
  }

 private:
  std::string path_;
  Descriptor file_;
  int error_ = 0;
  bool isPlaced_ = false;
};

}  // namespace

int readFile(const std::string& path, std::uint64_t limit, bool isUncached,
             FileContents& contents) {
  const Descriptor file = open(path, O_RDONLY);
  struct statx about;
  if (!file || !stat(file, about)) return errno;
  if (S_ISDIR(about.stx_mode)) return EISDIR;
  const std::uint64_t told = S_ISREG(about.stx_mode) ? about.stx_size : 0;
  if (told > limit) return EFBIG;
  // One byte more than the size that was told finds the end without another turn. Files that the
  // system makes up tell none.
  std::size_t capacity = told == 0 ? 4096 : static_cast<std::size_t>(told) + 1;
  FileContents read;
  for (;;) {
    if (!grow(read, capacity)) return ENOMEM;
    const ssize_t count =
        os::read(file.number(), read.bytes.get() + read.length, capacity - read.length);
    if (count < 0) return errno;
    if (count == 0) break;
    read.length += static_cast<std::size_t>(count);
    if (read.length > limit) return EFBIG;
    if (read.length == capacity) capacity *= 2;
  }
  if (isUncached) ::posix_fadvise(file.number(), 0, 0, POSIX_FADV_DONTNEED);
  if (read.length + 1 < capacity) grow(read, std::max<std::size_t>(read.length, 1));
  contents = std::move(read);
  return 0;
}

int writeFile(const std::string& path, std::span<const std::byte> bytes, bool isExclusive) {
  const int flags = O_WRONLY | O_CREAT | (isExclusive ? O_EXCL : O_TRUNC);
  Descriptor file = open(path, flags);
  if (!file) return errno;
  if (const int error = writeAll(file.number(), bytes)) return error;
  return file.closeWritten() == 0 ? 0 : errno;
}

int replaceFile(const std::string& path, std::span<const std::byte> bytes, bool isExclusive) {
  std::string place = path;
  if (!isExclusive)
    if (const int error = followLinks(place)) return error;
  struct statx old;
  const bool isThere =
      os::statx(AT_FDCWD, place.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &old) == 0;
  if (!isThere && errno != ENOENT) return errno;
  if (isThere && isExclusive) return EEXIST;
  if (isThere && S_ISDIR(old.stx_mode)) return EISDIR;
  if (isThere && !S_ISREG(old.stx_mode)) return writeFile(place, bytes, false);

  const std::string directory = directoryOf(place);
  Replacement replacement(directory, isThere ? 0600 : 0666);
  int error = replacement.error();
  if (error == 0 && isThere) error = replacement.resemble(old);
  if (error == 0) error = replacement.fill(bytes);
  if (error == 0) error = replacement.place(place, isExclusive);
  if (error != 0) return error;
  // The name has to reach the disk too. The file is whole either way, so a directory that cannot be
  // synchronised is no failure.
  const Descriptor names = open(directory, O_RDONLY | O_DIRECTORY);
  if (names) static_cast<void>(os::fsync(names.number()));
  return 0;
}

}  // namespace qz::detail
