/// @file
/// Mounted disks.
#pragma once

#include <array>
#include <cstdint>

#include "Platform/Runtime/Derives.h"
#include "Platform/System/NSMountTable.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;

/// A file system's identifier: the numbers of its device, major and minor.
using QZFileSystemID = std::array<std::int32_t, 2>;

/// A record of one mounted volume, as the mount table had it when the record was made.
///
///     for (QZDisk* disk : elements<QZDisk>(QZDisk::mountedDisks()))
///       show(disk->mountPath(), disk->availableFreeSpace());
///
/// What the system refuses is nil, or 0 for the free space; nothing raises. Once made, a record may
/// be read from any number of threads.
class QZDisk : public Derives<QZDisk, NSObject> {
 public:
  static void describe(ClassDescription<QZDisk>& is);

  // Looking up ------------------------------------------------------------------------------------

  /// The disk mounted at "/", and those whose mount path begins with the text "/Volumes", in the
  /// order of the mount table. Nil when it cannot be read.
  static Ref<NSArray> mountedDisks();

  /// The disk mounted at just this path. Nil for a path inside a volume, for one that does not
  /// exist, and for nil.
  static Ref<QZDisk> diskForMountPath(NSString* path);

  /// The first of `mountedDisks` whose mount path begins with `path`: for "/" the first one, for a
  /// mount point the first mounted there or below. Nil for an ordinary file, and callers count on
  /// that: it tells a file watcher to poll. Nil for nil and for the empty path.
  static Ref<QZDisk> diskForFilePath(NSString* path);

  /// Of a record of the mount table.
  static Ref<QZDisk> initWithStat(const NSMountRecord& record);

  // Reading ---------------------------------------------------------------------------------------

  /// What is mounted ("/dev/sda1"), and where.
  Ref<NSString> devicePath() const { return devicePath_; }
  Ref<NSString> mountPath() const { return mountPath_; }

  /// The volume's label, which ends in a zero unit, as the terminator is counted as part of it; nil
  /// where it has none. The times are whole seconds: when the file system was made, and when its
  /// root directory changed.
  Ref<NSString> volumeName() const { return volumeName_; }
  Ref<NSDate> creationDate() const { return creationDate_; }
  Ref<NSDate> modificationDate() const { return modificationDate_; }

  /// Reads the name and the times again; making a record has done that once. A volume that does
  /// not tell leaves them as they are.
  void getAttrInfo();

  /// Whether `getAttrInfo` has run.
  bool getAttrInfoCached() const noexcept { return getAttrInfoCached_; }

  /// True.
  bool isMounted() const noexcept { return isMounted_; }

  /// Part of the record, but nothing fills them in: false for every disk.
  bool isWritable() const noexcept { return isWritable_; }
  bool isRemovable() const noexcept { return isRemovable_; }

  /// Whether the files' owners mean nothing.
  bool ignoresPermissions() const noexcept { return ignoresPermissions_; }

  /// The numbers of its device, as the mount table has them.
  QZFileSystemID fileSystemID() const noexcept { return fileSystemID_; }

  /// Whether the device's path begins with "/dev".
  bool isLocalVolume() const;

  /// In bytes, asked anew each time; 0 when it cannot be told.
  std::int64_t availableFreeSpace() const;

  /// "<QZDisk: 0xaddress> /dev/sda1 on /"
  Ref<NSString> description() const override;

 private:
  NSMountRecord record_;
  Ref<NSString> devicePath_;
  Ref<NSString> mountPath_;
  bool isWritable_ = false;
  Ref<NSString> volumeName_;
  bool isRemovable_ = false;
  Ref<NSDate> creationDate_;
  Ref<NSDate> modificationDate_;
  bool isMounted_ = false;
  bool getAttrInfoCached_ = false;
  bool ignoresPermissions_ = false;
  QZFileSystemID fileSystemID_{};
};

}  // namespace qz

#pragma GCC visibility pop
