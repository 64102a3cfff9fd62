#include "QZFoundation/QZDisk.h"

#include "QZFoundation/NSFileManager-QZVolumes.h"
#include "tests/support/MountTable.h"

namespace qz::test {
namespace {

constexpr const char* mounts =
    "20 1 0:5 / /dev rw - devtmpfs udev rw\n"
    "27 1 254:0 / / rw,relatime - ext4 /dev/vda rw\n"
    "28 27 8:1 / /Volumes/Data rw - vfat /dev/sda1 rw\n"
    "29 27 0:40 / /Volumes/Data/Inner rw - nfs server:/export rw\n"
    "30 27 0:41 / /VolumesX rw - tmpfs tmpfs rw\n"
    "31 27 0:42 / /home rw - ext4 /dev/vdb rw\n";

std::string mountPath(QZDisk* disk) {
  return disk != nullptr ? disk->mountPath()->UTF8String() : "nil";
}

TEST(QZDisk, ListsTheRootAndWhatBeginsWithVolumes) {
  const MountTable table(mounts);
  const auto paths = as<NSArray>(QZDisk::mountedDisks()->valueForKey("mountPath"_ns));
  EXPECT_EQ(to_string(paths->componentsJoinedByString(" "_ns)),
            "/ /Volumes/Data /Volumes/Data/Inner /VolumesX");
}

TEST(QZDisk, FoundByItsMountPathAlone) {
  const MountTable table(mounts);
  EXPECT_EQ(mountPath(QZDisk::diskForMountPath("/home"_ns)), "/home");
  EXPECT_EQ(QZDisk::diskForMountPath("/home/folder"_ns), nullptr);
  EXPECT_EQ(QZDisk::diskForMountPath("/home/"_ns), nullptr);
  EXPECT_EQ(QZDisk::diskForMountPath(nullptr), nullptr);
  for (const std::u16string_view noPath : {u"/\0x"sv, u"/\xD800"sv})
    EXPECT_EQ(QZDisk::diskForMountPath(ns(noPath)), nullptr);
}

TEST(QZDisk, FoundByAFilePathThatTheMountPathBeginsWith) {
  const MountTable table(mounts);
  const std::pair<NSString*, const char*> cases[] = {
      {"/"_ns, "/"},
      {"/Volumes"_ns, "/Volumes/Data"},
      {"/Volumes/Data/I"_ns, "/Volumes/Data/Inner"},
      {"/VolumesX"_ns, "/VolumesX"},
      {"/Volumes/Data/file"_ns, "nil"},
      {""_ns, "nil"},
      {nullptr, "nil"},
  };
  for (const auto& [path, expected] : cases)
    EXPECT_EQ(mountPath(QZDisk::diskForFilePath(path)), expected) << path;
}

TEST(QZDisk, TellsWhatTheTableAndTheVolumeSay) {
  MountTable table(mounts);
  table.setAttributes("/Volumes/Data", {"Dätä", 1000, 2000});
  table.setFreeBytes("/Volumes/Data", 5'000'000'000);
  auto disk = QZDisk::diskForMountPath("/Volumes/Data"_ns);
  EXPECT_TRUE(equal(disk->devicePath(), "/dev/sda1"_ns));
  EXPECT_EQ(disk->volumeName()->UTF8String(), std::string("Dätä\0", 7));
  EXPECT_TRUE(equal(disk->creationDate(), dateAt(1000)));
  EXPECT_TRUE(equal(disk->modificationDate(), dateAt(2000)));
  EXPECT_EQ(disk->availableFreeSpace(), 5'000'000'000);
  EXPECT_EQ(send<QZFileSystemID>(disk, "fileSystemID"_sel), (QZFileSystemID{8, 1}));
  EXPECT_TRUE(disk->ignoresPermissions());
  EXPECT_TRUE(disk->isLocalVolume());
  EXPECT_FALSE(disk->isWritable());
  EXPECT_FALSE(disk->isRemovable());
  table.setFreeBytes("/Volumes/Data", std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(disk->availableFreeSpace(), std::numeric_limits<std::int64_t>::max());

  // A volume that says nothing, on another machine.
  auto remote = QZDisk::diskForMountPath("/Volumes/Data/Inner"_ns);
  EXPECT_FALSE(remote->isLocalVolume());
  EXPECT_FALSE(remote->ignoresPermissions());
  EXPECT_EQ(remote->volumeName(), nullptr);
  EXPECT_EQ(remote->availableFreeSpace(), 0);
}

TEST(NSFileManagerQZVolumes, VolumeOfAFile) {
  MountTable table(mounts);
  const auto manager = NSFileManager::defaultManager();
  const std::pair<NSString*, const char*> cases[] = {{"/etc"_ns, "/"},
                                                     {"/dev/null"_ns, "/dev"},
                                                     {"/no/such/file"_ns, "(null)"},
                                                     {nullptr, "(null)"}};
  for (const auto& [path, expected] : cases)
    EXPECT_EQ(to_string(volumeMountPathForFilePath(manager, path)), expected) << path;
  const auto attributesOf = [&](NSString* path) {
    return send<Ref<NSDictionary>>(manager, "volumeAttributesForPath:"_sel, path);
  };
  EXPECT_EQ(attributesOf("/etc"_ns), nullptr);
  table.setAttributes("/", {"Root", 1000, 2000});
  const auto name = ns({u"Root\0", 5});
  const auto made = dateAt(1000);
  EXPECT_TRUE(attributesOf("/etc"_ns)->isEqual(NSDictionary::of(
      {{QZVolumeMountPath, "/"_ns}, {QZVolumeName, name}, {QZVolumeCreationDate, made}})));
  // Nothing behind what is missing.
  table.setAttributes("/", {std::nullopt, 1000, 2000});
  EXPECT_TRUE(equal(attributesOf("/etc"_ns), NSDictionary::of({{QZVolumeMountPath, "/"_ns}})));
  EXPECT_EQ(attributesOf("/no/such/file"_ns), nullptr);
}

TEST(QZDisk, NothingWhereTheSystemRefuses) {
  MountTable table(mounts);
  table.fail();
  EXPECT_EQ(QZDisk::mountedDisks(), nullptr);
  EXPECT_EQ(QZDisk::diskForFilePath("/"_ns), nullptr);
}

TEST(QZDisk, OfTheMachine) {
  const auto root = QZDisk::diskForMountPath("/"_ns);
  ASSERT_NE(root, nullptr);
  EXPECT_GT(root->availableFreeSpace(), 0);
  EXPECT_EQ(mountPath(QZDisk::diskForFilePath("/"_ns)), "/");
}

}  // namespace
}  // namespace qz::test
