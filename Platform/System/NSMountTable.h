/// @file
/// The mount table: which file systems are mounted where.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

namespace qz {

/// Bits of a mount's flags.
enum NSMountFlags : std::uint32_t {
  NSMountReadOnly = 0x00000001,
  /// The file system keeps no owners: all its files have the one that it was mounted for.
  NSMountIgnoresOwnership = 0x00200000,
};

/// One mounted file system. Texts are bytes, as the system has them.
struct NSMountRecord {
  std::string mountedFrom;  ///< "/dev/sda1", or whatever its kind puts here: "tmpfs", "host:/home"
  std::string mountedOn;    ///< where its root is
  std::string type;         ///< "ext4"
  std::uint32_t flags = 0;  ///< NSMountFlags
  /// The numbers of its device, major and minor: `st_dev` of the files on it.
  std::array<std::int32_t, 2> identifier{};
};

/// What a file system says of itself.
struct NSVolumeAttributes {
  std::optional<std::string> name;       ///< its label; none where it has or can have none
  std::optional<std::int64_t> created;   ///< seconds since 1970
  std::optional<std::int64_t> modified;  ///< the same, of its root directory
};

/// Where mounts are looked up. The system's table is used unless another one is set, which is for
/// tests: what is mounted on the machine that runs them is not theirs to choose.
///
/// Functions answer nothing when the system refuses, and `errno` says why.
class NSMountTable {
 public:
  NSMountTable() = default;
  NSMountTable(const NSMountTable&) = delete;
  NSMountTable& operator=(const NSMountTable&) = delete;
  virtual ~NSMountTable() = default;

  /// The table in use. Any thread.
  static std::shared_ptr<const NSMountTable> current();

  /// Has that table used from now on; null goes back to the system's. Any thread.
  static void setCurrent(std::shared_ptr<const NSMountTable> table);

  /// All that are mounted where this process can see them, in the order of the table.
  virtual std::optional<std::vector<NSMountRecord>> records() const = 0;

  /// The one that what is at `path` lies on, symbolic links followed.
  virtual std::optional<NSMountRecord> recordForPath(const std::string& path) const = 0;

  /// What the file system mounted there from `mountedFrom` says of itself.
  virtual std::optional<NSVolumeAttributes> attributes(const NSMountRecord& record) const = 0;

  /// The bytes that are free on the file system mounted there, those kept for the superuser
  /// included.
  virtual std::optional<std::uint64_t> freeBytes(const std::string& mountPath) const = 0;
};

}  // namespace qz

#pragma GCC visibility pop
