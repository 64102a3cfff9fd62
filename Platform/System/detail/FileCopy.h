/// @file
/// Private: what one file holds and what belongs to it, copied from descriptor to descriptor.
#pragma once

#include <sys/stat.h>

#include <atomic>
#include <cstdint>

#include "Platform/Values/detail/Descriptor.h"
#include "Platform/Values/detail/SystemCalls.h"

namespace qz::detail {

/// How a step of a copy went.
struct CopyOutcome {
  enum class Side : std::uint8_t { Source, Target };

  int number = 0;  ///< 0, or the `errno` of what failed.
  Side side = Side::Source;

  static CopyOutcome source() noexcept { return {errno, Side::Source}; }
  static CopyOutcome target() noexcept { return {errno, Side::Target}; }
  bool failed() const noexcept { return number != 0; }
};

/// What a copy has found out about the file systems it works on. Any thread.
struct CopyAbilities {
  std::atomic<bool> clones{true};        ///< Blocks may be shared.
  std::atomic<bool> copiesRanges{true};  ///< The kernel may copy.
};

/// To whom a new file belongs before anything is done about it.
struct FileOwner {
  uid_t user;
  gid_t group;
};

/// What a copy asks of each file.
inline constexpr unsigned int statusMask = STATX_BASIC_STATS;

/// The same of an open one. False with `errno`.
inline bool statusOf(int descriptor, struct ::statx& about) noexcept {
  return os::statx(descriptor, "", AT_EMPTY_PATH, statusMask, &about) == 0;
}

/// Copies all that can be read from `in`, to the empty file `out`; both stand at their start.
/// Blocks are shared where the file system can; holes stay holes.
CopyOutcome copyContents(int in, int out, const struct ::statx& about, CopyAbilities& abilities);

/// Copies owner, extended attributes (access control lists are some of them), permissions and
/// times. Who may not give files away keeps them, without the bits that would let others act as
/// him. Attributes that the file system or the user may not have are left out.
CopyOutcome copyProperties(int in, int out, const struct ::statx& about, FileOwner owner);

/// The times of access and modification, as the system takes them.
struct FileTimes {
  explicit FileTimes(const struct ::statx& about) noexcept;
  ::timespec times[2];
};

}  // namespace qz::detail
