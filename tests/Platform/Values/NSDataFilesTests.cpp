#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Values/NSMutableData.h"
#include "Platform/Values/NSURL.h"
#include "tests/support/FaultySystem.h"
#include "tests/support/FileTest.h"
#include "tests/support/FullDisk.h"

namespace qz::test {
namespace {

std::ptrdiff_t filesIn(const std::string& path) {
  return std::distance(fs::directory_iterator(path), fs::directory_iterator());
}

// The code of the Error that writing reports; 0 for none.
int writing(const std::string& bytes, const std::string& path, std::uint32_t options) {
  Ref<NSError> error;
  const bool isDone =
      NSData::dataWithBytes(bytes)->writeToFile_options_error(ns(path), options, &error);
  EXPECT_EQ(isDone, error == nullptr);
  if (!error) return 0;
  EXPECT_TRUE(equal(error->domain(), NSPOSIXErrorDomain));
  return error->code();
}

using NSDataFiles = FileTest;

TEST_F(NSDataFiles, ReadBackWhatWasWritten) {
  const std::string path = at("bytes");
  for (std::size_t length : {0u, 1u, 4096u, 200000u}) {
    for (std::uint32_t options : {0u, unsigned{NSDataWritingAtomic}}) {
      std::string bytes(length, '\x01');
      for (std::size_t i = 0; i < length; ++i) bytes[i] = static_cast<char>(i * i / 7);
      ASSERT_EQ(writing(bytes, path, options), 0);
      ASSERT_EQ(contentsOf(path), bytes);
      const Ref<NSData> all[] = {
          NSData::dataWithContentsOfFile(ns(path)),
          NSMutableData::dataWithContentsOfFile(ns(path)),
          NSData::dataWithContentsOfURL(NSURL::fileURLWithPath(ns(path))),
          NSData::initWithContentsOfFile_options_error(ns(path), NSDataReadingMapped, nullptr),
          NSData::dataWithContentsOfFile_options_error(ns(path), NSDataReadingUncached, nullptr),
          send<Ref<NSData>>(classOf<NSMutableData>(), "dataWithContentsOfFile:"_sel,
                            ns(path).get())};
      for (const auto& each : all) ASSERT_EQ(each->view(), bytes);
      EXPECT_TRUE(all[5]->isKindOfClass(classOf<NSMutableData>()));
    }
  }
  // Files that the system makes up tell no length.
  EXPECT_EQ(NSData::dataWithContentsOfFile("/proc/self/cmdline"_ns)->view(),
            contentsOf("/proc/self/cmdline"));
}

TEST_F(NSDataFiles, ReadAPipeToItsEnd) {
  const std::string path = at("pipe");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  const std::string bytes(150000, 'p');
  std::thread writer([&] { EXPECT_EQ(writing(bytes, path, NSDataWritingAtomic), 0); });
  const auto data = NSData::dataWithContentsOfFile(ns(path));
  writer.join();
  EXPECT_EQ(data->view(), bytes);
  EXPECT_EQ(fs::status(path).type(), fs::file_type::fifo);
}

TEST_F(NSDataFiles, SayWhatIsWrong) {
  const std::string there = directory.write("there", "old");
  const std::string here = directory.path();
  fs::create_symlink("loop", here + "/loop");
  const std::pair<Ref<NSString>, int> cases[] = {
      {ns(here + "/none/file"), ENOENT},
      {ns(here), EISDIR},
      {ns(there + "/below"), ENOTDIR},
      {ns(here + "/loop"), ELOOP},
      {ns(std::string(300, 'n')), ENAMETOOLONG},
      {nullptr, EINVAL},
      {""_ns, EINVAL},
      {"a\0b"_ns, EINVAL},
      {ns(u"\xD800"), EINVAL},
  };
  for (const auto& [path, code] : cases) {
    for (std::uint32_t options : {0u, unsigned{NSDataReadingMapped}}) {
      Ref<NSError> error;
      EXPECT_FALSE(NSData::dataWithContentsOfFile_options_error(path, options, &error));
      ASSERT_TRUE(error) << path;
      EXPECT_EQ(error->code(), code) << path;
      EXPECT_TRUE(equal(error->userInfo()->valueForKey(NSFilePathErrorKey), path));
    }
    for (std::uint32_t options : {0u, unsigned{NSDataWritingAtomic}}) {
      Ref<NSError> error;
      EXPECT_FALSE(NSData::data()->writeToFile_options_error(path, options, &error));
      ASSERT_TRUE(error) << path;
      EXPECT_EQ(error->code(), code) << path << options;
    }
  }
  Ref<NSError> error;
  EXPECT_FALSE(NSMutableData::dataWithContentsOfURL_options_error(
      NSURL::URLWithString("https://example.com/there"_ns), 0, &error));
  EXPECT_EQ(error->code(), EINVAL);
  for (std::uint32_t atomic : {0u, unsigned{NSDataWritingAtomic}}) {
    EXPECT_EQ(writing("new", there, atomic | NSDataWritingWithoutOverwriting), EEXIST);
    EXPECT_EQ(writing("new", here + "/" + std::to_string(atomic),
                      atomic | NSDataWritingWithoutOverwriting),
              0);
  }
  EXPECT_EQ(contentsOf(there), "old");
  EXPECT_EQ(filesIn(here), 4);  // there, loop, 0 and 1: nothing else is left behind
}

TEST_F(NSDataFiles, AreWholeOrAsTheyWere) {
  const std::string path = directory.write("file", "old");
  {
    const FullDisk full(100);
    EXPECT_EQ(writing(std::string(1000, 'x'), path, NSDataWritingAtomic), EFBIG);
  }
  EXPECT_EQ(contentsOf(path), "old");
  EXPECT_EQ(filesIn(directory.path()), 1);
  {
    const FullDisk full(100);
    EXPECT_EQ(writing(std::string(1000, 'x'), path, 0), EFBIG);
  }
  EXPECT_EQ(contentsOf(path), std::string(100, 'x'));
}

TEST_F(NSDataFiles, AreWholeOrAsTheyWereWhateverCallFails) {
  const std::string path = directory.write("file", "old");
  const std::string link = at("link");
  fs::create_symlink("file", link);
  ASSERT_EQ(writing("new", link, NSDataWritingAtomic), 0);
  int result = 0;
  std::size_t failed = 0;
  std::size_t failedWrites = 0;
  sweepFailures([&] { directory.write("file", "old"); },
                [&] { result = writing("new", link, NSDataWritingAtomic); },
                [&](SystemCall kind, int number) {
                  failed += result != 0;
                  failedWrites += result != 0 && kind == SystemCall::Write;
                  EXPECT_EQ(contentsOf(path), result == 0 ? "new" : "old");
                  EXPECT_TRUE(number != EINTR || result == 0);
                  EXPECT_EQ(filesIn(directory.path()), 2);
                });
  EXPECT_GT(failed, 20u);
  EXPECT_GT(failedWrites, 2u);
}

TEST_F(NSDataFiles, AReaderThatWentAwayIsAnErrorAndNoSignal) {
  const std::string path = at("pipe");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  std::thread reader([&] { ::close(::open(path.c_str(), O_RDONLY | O_CLOEXEC)); });
  EXPECT_EQ(writing(std::string(1000000, 'p'), path, 0), EPIPE);
  reader.join();
}

TEST_F(NSDataFiles, KeepPermissionsAndLinks) {
  const std::string path = directory.write("deep/file", "old");
  const std::string link = at("link");
  const std::string dangling = at("dangling");
  fs::create_symlink("deep/../link2", link);
  fs::create_symlink(path, at("link2"));
  fs::create_symlink("deep/new", dangling);
  ::chmod(path.c_str(), 0641);
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);

  ASSERT_EQ(writing("new", link, NSDataWritingAtomic), 0);
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(contentsOf(path), "new");
  struct stat about;
  ::stat(path.c_str(), &about);
  EXPECT_EQ(about.st_mode & 07777u, 0641u);
  // Who had the old file open still reads the old bytes.
  char bytes[4] = "";
  EXPECT_EQ(::read(descriptor, bytes, 3), 3);
  EXPECT_STREQ(bytes, "old");
  ::close(descriptor);

  ASSERT_EQ(writing("made", dangling, NSDataWritingAtomic), 0);
  EXPECT_EQ(contentsOf(at("deep/new")), "made");
  const mode_t mask = ::umask(0);
  ::umask(mask);
  ::stat(dangling.c_str(), &about);
  EXPECT_EQ(about.st_mode & 0777u, 0666u & ~mask);
}

}  // namespace
}  // namespace qz::test
