#include "Platform/System/detail/FileCopy.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/System/FileProgress.h"

namespace qz::detail {
namespace {

constexpr std::size_t bufferSize = 256 * 1024;
constexpr std::size_t smallFile = 64 * 1024;  // below: one read and one write are quicker
constexpr std::size_t rangeSize = 1024 * 1024 * 1024;
constexpr std::size_t rangeSizeIfHeard = 4 * 1024 * 1024;

// One for each thread that copies; the pages are touched as far as files are long.
char* buffer() {
  thread_local const std::unique_ptr<char[]> bytes(new char[bufferSize]);
  return bytes.get();
}

bool writeWhole(int out, const char* bytes, std::size_t size) {
  while (size != 0) {
    const ssize_t count = os::write(out, bytes, size);
    if (count < 0) return false;
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

// Until the end, or `most` bytes. `expected` bytes in one go are taken for the whole file.
CopyOutcome copyBytes(int in, int out, std::uint64_t most, std::uint64_t expected) {
  while (most != 0) {
    const std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(bufferSize, most));
    const ssize_t count = os::read(in, buffer(), wanted);
    if (count < 0) return CopyOutcome::source();
    if (count == 0) break;
    const auto size = static_cast<std::size_t>(count);
    if (!writeWhole(out, buffer(), size)) return CopyOutcome::target();
    if (!FileProgress::tell(size)) return CopyOutcome::source();
    if (size == expected && size < wanted) break;
    most -= size;
  }
  return {};
}

// What says "not this way" rather than "this file cannot be copied".
bool isRefusal(int number) noexcept {
  switch (number) {
    case EOPNOTSUPP:
    case ENOSYS:
    case EXDEV:
    case EINVAL:
    case ENOTTY:
    case EBADF:
    case EPERM:
    case EACCES:
    case ETXTBSY:
      return true;
    default:
      return false;
  }
}

bool cloned(int in, int out, CopyAbilities& abilities) {
  if (!abilities.clones.load(std::memory_order_relaxed)) return false;
  if (os::clone(in, out) == 0) return true;
  if (isRefusal(errno)) abilities.clones.store(false, std::memory_order_relaxed);
  return false;
}

// From where both stand, `most` bytes or to the end.
CopyOutcome copyRange(int in, int out, std::uint64_t most, CopyAbilities& abilities) {
  const std::size_t part = FileProgress::isHeard() ? rangeSizeIfHeard : rangeSize;
  bool hasCopied = false;
  while (most != 0 && abilities.copiesRanges.load(std::memory_order_relaxed)) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(part, most));
    const ssize_t count = os::copy_file_range(in, out, wanted);
    if (count > 0) {
      hasCopied = true;
      most -= static_cast<std::uint64_t>(count);
      if (!FileProgress::tell(static_cast<std::uint64_t>(count))) return CopyOutcome::source();
      continue;
    }
    // Some file systems answer 0 where they cannot say more; reading finds the end for sure.
    if (count == 0 && hasCopied) return {};
    if (count == 0) break;
    // Which side it was is unknown, but a full device can only be the target.
    if (!isRefusal(errno)) return errno == EIO ? CopyOutcome::source() : CopyOutcome::target();
    abilities.copiesRanges.store(false, std::memory_order_relaxed);
  }
  return copyBytes(in, out, most, UINT64_MAX);
}

// Data between holes; the file's end may lie in a hole.
CopyOutcome copySparse(int in, int out, std::uint64_t size, CopyAbilities& abilities) {
  off_t place = 0;
  const auto end = static_cast<off_t>(size);
  while (place < end) {
    const off_t data = os::lseek(in, place, SEEK_DATA);
    if (data < 0 && errno == ENXIO) break;
    // A file system that knows no holes says so at the first question.
    if (data < 0 && place == 0 && isRefusal(errno))
      return copyRange(in, out, UINT64_MAX, abilities);
    if (data < 0) return CopyOutcome::source();
    const off_t hole = os::lseek(in, data, SEEK_HOLE);
    if (hole < 0 || os::lseek(in, data, SEEK_SET) < 0) return CopyOutcome::source();
    if (os::lseek(out, data, SEEK_SET) < 0) return CopyOutcome::target();
    const auto outcome = copyRange(in, out, static_cast<std::uint64_t>(hole - data), abilities);
    if (outcome.failed()) return outcome;
    place = hole;
  }
  // The file may have become shorter since it was asked.
  struct ::statx now;
  if (os::statx(in, "", AT_EMPTY_PATH, STATX_SIZE, &now) != 0) return CopyOutcome::source();
  const auto length = static_cast<off_t>(std::min<std::uint64_t>(now.stx_size, size));
  if (os::ftruncate(out, length) != 0) return CopyOutcome::target();
  return {};
}

// Attributes that this system or user may not have on this file; not having them is no failure.
bool canBeLeftOut(int number) noexcept {
  return number == EOPNOTSUPP || number == ENOSYS || number == EPERM || number == EACCES ||
         number == ENODATA || number == EINVAL;
}

// Calls again with more room as long as there is too little. False with `errno` when it fails.
template <class Fetch>
bool fetch(std::vector<char>& room, std::size_t& size, Fetch call) {
  for (;;) {
    ssize_t count = call(room.data(), room.size());
    if (count >= 0) {
      size = static_cast<std::size_t>(count);
      return true;
    }
    if (errno != ERANGE) return false;
    if ((count = call(nullptr, 0)) < 0) return false;
    room.resize(std::max(room.size() * 2, static_cast<std::size_t>(count)));
  }
}

CopyOutcome copyAttribute(int in, int out, const char* name) {
  thread_local std::vector<char> value(4096);
  std::size_t size = 0;
  if (!fetch(value, size,
             [&](char* room, std::size_t length) { return os::fgetxattr(in, name, room, length); }))
    return canBeLeftOut(errno) ? CopyOutcome() : CopyOutcome::source();
  if (os::fsetxattr(out, name, value.data(), size) != 0 && !canBeLeftOut(errno))
    return CopyOutcome::target();
  return {};
}

CopyOutcome copyAttributes(int in, int out) {
  thread_local std::vector<char> names(4096);
  std::size_t size = 0;
  if (!fetch(names, size,
             [&](char* room, std::size_t length) { return os::flistxattr(in, room, length); }))
    return canBeLeftOut(errno) ? CopyOutcome() : CopyOutcome::source();
  for (std::size_t at = 0; at < size; at += std::string_view(names.data() + at).size() + 1) {
    const auto outcome = copyAttribute(in, out, names.data() + at);
    if (outcome.failed()) return outcome;
  }
  return {};
}

::timespec timeOf(const struct ::statx_timestamp& stamp) noexcept {
  ::timespec time{};
  time.tv_sec = stamp.tv_sec;
  time.tv_nsec = stamp.tv_nsec;
  return time;
}

// Whether the file belongs to whom it should.
bool changeOwner(int out, const struct ::statx& about, FileOwner owner) {
  if (owner.user == about.stx_uid && owner.group == about.stx_gid) return true;
  if (os::fchownat(out, "", about.stx_uid, about.stx_gid, AT_EMPTY_PATH) == 0) return true;
  if (!canBeLeftOut(errno)) return false;
  // The group alone may be allowed; the user is not ours to give.
  os::fchownat(out, "", static_cast<uid_t>(-1), about.stx_gid, AT_EMPTY_PATH);
  errno = 0;
  return false;
}

}  // namespace

FileTimes::FileTimes(const struct ::statx& about) noexcept
    : times{timeOf(about.stx_atime), timeOf(about.stx_mtime)} {}

CopyOutcome copyContents(int in, int out, const struct ::statx& about, CopyAbilities& abilities) {
  const std::uint64_t size = about.stx_size;
  // Files that the kernel makes up have no size, and something in them all the same.
  if (size == 0) return copyBytes(in, out, UINT64_MAX, UINT64_MAX);
  const bool isSparse = about.stx_blocks * 512 < size && size > about.stx_blksize;
  if (size <= smallFile && !isSparse) return copyBytes(in, out, UINT64_MAX, size);
  if (cloned(in, out, abilities)) return {};
  if (isSparse) return copySparse(in, out, size, abilities);
  return copyRange(in, out, UINT64_MAX, abilities);
}

CopyOutcome copyProperties(int in, int out, const struct ::statx& about, FileOwner owner) {
  mode_t mode = about.stx_mode & 07777;
  if (!changeOwner(out, about, owner)) {
    if (errno != 0) return CopyOutcome::target();
    mode &= static_cast<mode_t>(~(S_ISUID | S_ISGID));
  }
  const auto outcome = copyAttributes(in, out);
  if (outcome.failed()) return outcome;
  if (os::fchmod(out, mode) != 0 && errno != EOPNOTSUPP) return CopyOutcome::target();
  const FileTimes times(about);
  if (os::utimensat(out, nullptr, times.times, 0) != 0) return CopyOutcome::target();
  return {};
}

}  // namespace qz::detail
