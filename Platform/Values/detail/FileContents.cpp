#include "Platform/Values/detail/FileContents.h"

#include <fcntl.h>
#include <linux/limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <random>
#include <string_view>
#include <utility>

namespace qz::detail {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  int number() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }

  /// 0, or what closing reports: some file systems tell only then that the bytes found no room.
  int close() {
    const int number = std::exchange(number_, -1);
    return ::close(number) == 0 || errno == EINTR ? 0 : errno;
  }

 private:
  int number_;
};

int openRetrying(const char* path, int flags, mode_t mode = 0666) {
  int number;
  do number = ::open(path, flags | O_CLOEXEC, mode);
  while (number < 0 && errno == EINTR);
  return number;
}

bool grow(FileContents& contents, std::size_t capacity) {
  void* memory = std::realloc(contents.bytes.get(), capacity);
  if (memory == nullptr) return false;
  static_cast<void>(contents.bytes.release());
  contents.bytes.reset(static_cast<std::byte*>(memory));
  return true;
}

int writeAll(int file, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) return errno;
    if (count > 0) bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return 0;
}

/// What the chain of links at `path` leads to, which need not exist.
int followLinks(std::string& path) {
  constexpr int mostLinks = 40;  // as the system counts
  char target[PATH_MAX];
  for (int links = 0; links < mostLinks; ++links) {
    const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
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
      file_ = openRetrying(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
      error_ = file_ < 0 ? errno : 0;
      if (error_ != EEXIST) return;
    }
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  ~Replacement() {
    if (file_ >= 0) ::close(file_);
    if (error_ == 0 && !isPlaced_) ::unlink(path_.c_str());
  }

  int error() const { return error_; }

  /// The mode and, if that is allowed, the owner of the file to be replaced. Without its owner the
  /// file does not run under another's name.
  int resemble(const struct stat& old) {
    const bool hasOwner = ::fchown(file_, old.st_uid, old.st_gid) == 0;
    const mode_t mode = old.st_mode & (hasOwner ? 07777u : 0777u);
    return ::fchmod(file_, mode) == 0 ? 0 : errno;
  }

  int fill(std::span<const std::byte> bytes) {
    if (const int error = writeAll(file_, bytes)) return error;
    // EINVAL is a file system that does not do it.
    while (::fsync(file_) != 0 && errno != EINVAL)
      if (errno != EINTR) return errno;
    Descriptor closing(std::exchange(file_, -1));
    return closing.close();
  }

  int place(const std::string& path, bool isExclusive) {
    const unsigned flags = isExclusive ? RENAME_NOREPLACE : 0u;
    if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, path.c_str(), flags) != 0) {
      // A file system without that flag knows links, which do not replace either.
      if (!isExclusive || errno != EINVAL) return errno;
      if (::link(path_.c_str(), path.c_str()) != 0) return errno;
      ::unlink(path_.c_str());
    }
    isPlaced_ = true;
    return 0;
  }

 private:
  std::string path_;
  int file_ = -1;
  int error_ = 0;
  bool isPlaced_ = false;
};

}  // namespace

int readFile(const std::string& path, std::uint64_t limit, bool isUncached,
             FileContents& contents) {
  const Descriptor file(openRetrying(path.c_str(), O_RDONLY));
  struct stat about;
  if (!file || ::fstat(file.number(), &about) != 0) return errno;
  if (S_ISDIR(about.st_mode)) return EISDIR;
  const auto told = S_ISREG(about.st_mode) ? static_cast<std::uint64_t>(about.st_size) : 0;
  if (told > limit) return EFBIG;
  // One byte more than the size that was told finds the end without another turn. Files that the
  // system makes up tell none.
  std::size_t capacity = told == 0 ? 4096 : static_cast<std::size_t>(told) + 1;
  FileContents read;
  for (;;) {
    if (!grow(read, capacity)) return ENOMEM;
    const ssize_t count =
        ::read(file.number(), read.bytes.get() + read.length, capacity - read.length);
    if (count < 0 && errno == EINTR) continue;
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
  Descriptor file(openRetrying(path.c_str(), flags));
  if (!file) return errno;
  if (const int error = writeAll(file.number(), bytes)) return error;
  return file.close();
}

int replaceFile(const std::string& path, std::span<const std::byte> bytes, bool isExclusive) {
  std::string place = path;
  if (!isExclusive)
    if (const int error = followLinks(place)) return error;
  struct stat old;
  const bool isThere = ::lstat(place.c_str(), &old) == 0;
  if (!isThere && errno != ENOENT) return errno;
  if (isThere && isExclusive) return EEXIST;
  if (isThere && S_ISDIR(old.st_mode)) return EISDIR;
  if (isThere && !S_ISREG(old.st_mode)) return writeFile(place, bytes, false);

  const std::string directory = directoryOf(place);
  Replacement replacement(directory, isThere ? 0600 : 0666);
  int error = replacement.error();
  if (error == 0 && isThere) error = replacement.resemble(old);
  if (error == 0) error = replacement.fill(bytes);
  if (error == 0) error = replacement.place(place, isExclusive);
  if (error != 0) return error;
  // The name has to reach the disk too. The file is whole either way, so a directory that cannot be
  // synchronised is no failure.
  const Descriptor names(openRetrying(directory.c_str(), O_RDONLY | O_DIRECTORY));
  if (names) static_cast<void>(::fsync(names.number()));
  return 0;
}

}  // namespace qz::detail
