#include "Platform/System/NSMountTable.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "Platform/System/detail/MountInfo.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

TEST(MountInfo, LinesAsTheKernelWritesThem) {
  const auto entries = detail::readMountInfo(
      "36 35 98:0 /mnt1 / rw,noatime master:1 - ext3 /dev/root rw,errors=continue\n"
      "37 36 8:17 / /Volumes/My\\040Disk\\134\\012 ro,relatime shared:1 master:2 - vfat /dev/sdb1 "
      "rw,uid=1000\n"
      "18446744073709551615 1 0:22 / /n\\366 rw - cifs //host/share\\040x rw,forceuid,uid=5");
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries[0].identifier, 36u);
  EXPECT_EQ(entries[0].record.type, "ext3");
  EXPECT_EQ(entries[0].record.identifier, (std::array<std::int32_t, 2>{98, 0}));
  EXPECT_EQ(entries[1].record.mountedOn, "/Volumes/My Disk\\\n");
  EXPECT_EQ(entries[1].record.flags, NSMountReadOnly | NSMountIgnoresOwnership);
  EXPECT_EQ(entries[2].record.mountedOn, "/n\xF6");
  EXPECT_EQ(entries[2].record.mountedFrom, "//host/share x");
}

TEST(MountInfo, OtherLinesAreLeftOut) {
  EXPECT_TRUE(detail::readMountInfo("").empty());
  for (const char* line :
       {"36", "x 35 98:0 / / rw - ext3 /dev/root rw", "36 35 98 / / rw - ext3 /dev/root rw",
        "36 35 98:0 / mnt rw - ext3 /dev/root rw", "36 35 98:0 / / rw ext3 /dev/root rw",
        "36 35 98:0 / / rw -", "36 35 99999999999:0 / / rw - ext3 /dev/root rw", "\n\n"})
    EXPECT_TRUE(detail::readMountInfo(line).empty()) << line;
}

TEST(MountInfo, DeepestMountOfAPath) {
  const auto entries = detail::readMountInfo(
      "1 0 1:1 / / rw - ext4 /dev/a rw\n2 1 1:2 / /mnt rw - ext4 /dev/b rw\n"
      "3 2 1:3 / /mnt/deep rw - ext4 /dev/c rw\n4 2 1:4 / /mnt/deep rw - ext4 /dev/d rw\n");
  const auto at = [&](const char* path) { return detail::deepestMount(entries, path)->identifier; };
  EXPECT_EQ(at("/"), 1u);
  EXPECT_EQ(at("/mntx/y"), 1u);
  EXPECT_EQ(at("/mnt"), 2u);
  EXPECT_EQ(at("/mnt/deeper"), 2u);
  EXPECT_EQ(at("/mnt/deep/file"), 4u);
  EXPECT_EQ(detail::deepestMount(entries, "relative"), nullptr);
}

TEST(NSMountTable, TheSystemsOwn) {
  const auto table = NSMountTable::current();
  const auto records = table->records();
  ASSERT_TRUE(records);
  EXPECT_NE(std::ranges::find(*records, "/", &NSMountRecord::mountedOn), records->end());

  const TemporaryDirectory directory;
  const auto record = table->recordForPath(directory.path());
  ASSERT_TRUE(record);
  EXPECT_TRUE(directory.path().starts_with(record->mountedOn));
  struct stat about;
  ASSERT_EQ(::stat(record->mountedOn.c_str(), &about), 0);
  EXPECT_EQ(record->identifier[0], static_cast<std::int32_t>(major(about.st_dev)));
  EXPECT_EQ(record->identifier[1], static_cast<std::int32_t>(minor(about.st_dev)));
  const auto attributes = table->attributes(*record);
  ASSERT_TRUE(attributes);
  EXPECT_EQ(attributes->modified, about.st_mtime);
  EXPECT_GT(table->freeBytes(directory.path()).value_or(0), 0u);

  EXPECT_FALSE(table->recordForPath(directory.path() + "/none"));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(table->attributes({"/dev/x", "/no/such/place", "ext4", 0, {}}));
}

}  // namespace
}  // namespace qz::test
