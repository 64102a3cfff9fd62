/// @file
/// Private: every call that file operations make into the system, in one place.
///
/// The functions of `qz::detail::os` have the names and the answers of the system's own. A test may
/// put a `SystemTap` before them, which sees each call, makes it fail with an `errno` of its
/// choice, or shortens what is read and written. Without one, a call costs one load more.
///
/// Calls that the system breaks off with EINTR are made again here, so no caller has to.
#pragma once

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#pragma GCC visibility push(default)

namespace qz::detail {

enum class SystemCall : std::uint8_t {
  Open,
  Close,
  Statx,
  ListDirectory,
  Read,
  Write,
  CopyRange,
  Clone,
  Seek,
  Truncate,
  Synchronize,
  MakeDirectory,
  MakeNode,
  Link,
  SymbolicLink,
  ReadLink,
  Unlink,
  Rename,
  ChangeMode,
  ChangeOwner,
  ChangeTimes,
  ListAttributes,
  GetAttribute,
  SetAttribute,
  RemoveAttribute,
  Access,
  OpenQueue,
  AddWatch,
};

/// What a test puts before the system. Called by whichever thread makes the call, several at a
/// time.
class SystemTap {
 public:
  virtual ~SystemTap() = default;

  /// The `errno` with which the call is to fail, or 0 to make it. `path` is that of the call, or
  /// "" for a call on a descriptor.
  virtual int before(SystemCall call, const char* path) = 0;

  /// How many of `size` bytes the call may read, write or copy; at least 1.
  virtual std::size_t limit(SystemCall call, std::size_t size) {
    static_cast<void>(call);
    return size;
  }
};

/// Null but in tests.
inline std::atomic<SystemTap*> systemTap{nullptr};

}  // namespace qz::detail

namespace qz::detail::os {

template <class Call>
auto made(SystemCall kind, const char* path, Call call) -> decltype(call()) {
  for (;;) {
    SystemTap* tap = systemTap.load(std::memory_order_acquire);
    decltype(call()) answer{};
    if (tap == nullptr) [[likely]] {
      answer = call();
    } else if (const int number = tap->before(kind, path); number != 0) {
      errno = number;
      answer = -1;
    } else {
      answer = call();
    }
    if (answer != -1 || errno != EINTR) [[likely]]
      return answer;
  }
}

inline std::size_t limited(SystemCall kind, std::size_t size) {
  SystemTap* tap = systemTap.load(std::memory_order_acquire);
  return tap == nullptr ? size : tap->limit(kind, size);
}

// Descriptors -------------------------------------------------------------------------------------

inline int openat(int directory, const char* path, int flags, mode_t mode = 0) {
  return made(SystemCall::Open, path,
              [&] { return ::openat(directory, path, flags | O_CLOEXEC, mode); });
}

/// The descriptor is closed whatever the answer, so an interruption is none.
inline int close(int descriptor) {
  const int answer = ::close(descriptor);
  SystemTap* tap = systemTap.load(std::memory_order_acquire);
  if (tap != nullptr) {
    const int kept = errno;
    const int number = tap->before(SystemCall::Close, "");
    errno = number != 0 ? number : kept;
    if (number != 0) return number == EINTR ? 0 : -1;
  }
  return answer == -1 && errno == EINTR ? 0 : answer;
}

inline ssize_t read(int descriptor, void* bytes, std::size_t size) {
  size = limited(SystemCall::Read, size);
  return made(SystemCall::Read, "", [&] { return ::read(descriptor, bytes, size); });
}

inline ssize_t pread(int descriptor, void* bytes, std::size_t size, off_t place) {
  size = limited(SystemCall::Read, size);
  return made(SystemCall::Read, "", [&] { return ::pread(descriptor, bytes, size, place); });
}

inline ssize_t write(int descriptor, const void* bytes, std::size_t size) {
  size = limited(SystemCall::Write, size);
  return made(SystemCall::Write, "", [&] { return ::write(descriptor, bytes, size); });
}

/// From and to where both descriptors stand.
inline ssize_t copy_file_range(int in, int out, std::size_t size) {
  size = limited(SystemCall::CopyRange, size);
  return made(SystemCall::CopyRange, "",
              [&] { return ::copy_file_range(in, nullptr, out, nullptr, size, 0); });
}

/// Makes `out` share the blocks of `in`.
inline int clone(int in, int out) {
  return made(SystemCall::Clone, "", [&] { return ::ioctl(out, FICLONE, in); });
}

inline off_t lseek(int descriptor, off_t place, int whence) {
  return made(SystemCall::Seek, "", [&] { return ::lseek(descriptor, place, whence); });
}

inline int ftruncate(int descriptor, off_t size) {
  return made(SystemCall::Truncate, "", [&] { return ::ftruncate(descriptor, size); });
}

inline int fsync(int descriptor) {
  return made(SystemCall::Synchronize, "", [&] { return ::fsync(descriptor); });
}

/// Raw directory entries (`struct linux_dirent64`); 0 at the end.
inline ssize_t getdents64(int descriptor, void* entries, std::size_t size) {
  return made(SystemCall::ListDirectory, "", [&] {
    return static_cast<ssize_t>(::syscall(SYS_getdents64, descriptor, entries, size));
  });
}

// Names -------------------------------------------------------------------------------------------

inline int statx(int directory, const char* path, int flags, unsigned int mask,
                 struct ::statx* about) {
  return made(SystemCall::Statx, path,
              [&] { return ::statx(directory, path, flags, mask, about); });
}

inline int mkdirat(int directory, const char* path, mode_t mode) {
  return made(SystemCall::MakeDirectory, path, [&] { return ::mkdirat(directory, path, mode); });
}

inline int mknodat(int directory, const char* path, mode_t mode, dev_t device) {
  return made(SystemCall::MakeNode, path, [&] { return ::mknodat(directory, path, mode, device); });
}

inline int linkat(int fromDirectory, const char* from, int toDirectory, const char* to,
                  int flags = 0) {
  return made(SystemCall::Link, to,
              [&] { return ::linkat(fromDirectory, from, toDirectory, to, flags); });
}

inline int symlinkat(const char* destination, int directory, const char* path) {
  return made(SystemCall::SymbolicLink, path,
              [&] { return ::symlinkat(destination, directory, path); });
}

inline ssize_t readlinkat(int directory, const char* path, char* bytes, std::size_t size) {
  return made(SystemCall::ReadLink, path,
              [&] { return ::readlinkat(directory, path, bytes, size); });
}

inline int unlinkat(int directory, const char* path, int flags) {
  return made(SystemCall::Unlink, path, [&] { return ::unlinkat(directory, path, flags); });
}

inline int renameat2(const char* from, const char* to, unsigned int flags) {
  return made(SystemCall::Rename, from,
              [&] { return ::renameat2(AT_FDCWD, from, AT_FDCWD, to, flags); });
}

inline int access(const char* path, int mode) {
  return made(SystemCall::Access, path,
              [&] { return ::faccessat(AT_FDCWD, path, mode, AT_EACCESS); });
}

// What belongs to a file --------------------------------------------------------------------------

inline int fchmod(int descriptor, mode_t mode) {
  return made(SystemCall::ChangeMode, "", [&] { return ::fchmod(descriptor, mode); });
}

inline int fchmodat(int directory, const char* path, mode_t mode) {
  return made(SystemCall::ChangeMode, path, [&] { return ::fchmodat(directory, path, mode, 0); });
}

inline int fchownat(int directory, const char* path, uid_t user, gid_t group, int flags) {
  return made(SystemCall::ChangeOwner, path,
              [&] { return ::fchownat(directory, path, user, group, flags); });
}

/// Times of access and modification; a null path means the descriptor itself.
inline int utimensat(int directory, const char* path, const ::timespec* times, int flags) {
  return made(SystemCall::ChangeTimes, path == nullptr ? "" : path, [&] {
    return path == nullptr ? ::futimens(directory, times)
                           : ::utimensat(directory, path, times, flags);
  });
}

inline ssize_t flistxattr(int descriptor, char* names, std::size_t size) {
  return made(SystemCall::ListAttributes, "",
              [&] { return ::flistxattr(descriptor, names, size); });
}

inline ssize_t fgetxattr(int descriptor, const char* name, void* value, std::size_t size) {
  return made(SystemCall::GetAttribute, name,
              [&] { return ::fgetxattr(descriptor, name, value, size); });
}

inline int fsetxattr(int descriptor, const char* name, const void* value, std::size_t size) {
  return made(SystemCall::SetAttribute, name,
              [&] { return ::fsetxattr(descriptor, name, value, size, 0); });
}

/// Links followed.
inline ssize_t getxattr(const char* path, const char* name, void* value, std::size_t size) {
  return made(SystemCall::GetAttribute, path, [&] { return ::getxattr(path, name, value, size); });
}

inline int setxattr(const char* path, const char* name, const void* value, std::size_t size) {
  return made(SystemCall::SetAttribute, path,
              [&] { return ::setxattr(path, name, value, size, 0); });
}

// News of files -----------------------------------------------------------------------------------

inline int inotify_init1(int flags) {
  return made(SystemCall::OpenQueue, "", [&] { return ::inotify_init1(flags); });
}

inline int inotify_add_watch(int queue, const char* path, std::uint32_t mask) {
  return made(SystemCall::AddWatch, path, [&] { return ::inotify_add_watch(queue, path, mask); });
}

}  // namespace qz::detail::os

#pragma GCC visibility pop
