#include "QZFoundation/NSFileManager-QZCopy.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "QZFoundation/NSFileManager-QZFoundation.h"
#include "QZFoundation/QZFileManagerErrorHandler.h"
#include "tests/support/FaultySystem.h"
#include "tests/support/FileTest.h"

namespace qz::test {
namespace {

class CarefulCopyTest : public FileTest {
 protected:
  using FileTest::FileTest;
  Ref<NSError> copy(const std::string& from, const std::string& to, std::int32_t options) {
    return copyPath_toPath_withOptions(manager, ns(at(from)), ns(at(to)), options);
  }
};

TEST_F(CarefulCopyTest, ChecksSayWhyNothingIsCopied) {
  directory.write("file", "new");
  directory.write("there", "old");
  directory.write("folder/inner", "inner");
  const Snapshot before = snapshot(directory.path());
  const struct {
    std::string from, to;
    std::int32_t options, code;
    std::string reason;
  } cases[] = {{"missing", "new", 0, 2, "Source file does not exist"},
               {"file", "no/new", 1, 2, "Destination folder does not exist"},
               {"file", "there/new", 0, 20, "Destination parent is not a folder"},
               {"file", "there", 0, 17, "File already exists at destination"},
               {"file", "there", 4, 17, "File already exists at destination"},
               {"file", "folder", 1, 17, "Cannot overwrite a folder with a file"},
               {"folder", "folder/inner/x", 2, 20, "Destination parent is not a folder"}};
  for (const auto& each : cases) {
    auto error = copy(each.from, each.to, each.options);
    ASSERT_TRUE(error) << each.from << " to " << each.to;
    EXPECT_EQ(error->code(), each.code) << each.reason;
    EXPECT_EQ(error->domain(), NSPOSIXErrorDomain);
    EXPECT_EQ(error->userInfo()->count(), 1u);
    EXPECT_EQ(textOf(error), "Unable to copy from " + at(each.from) + " to " + at(each.to) + " (" +
                                 each.reason + ")");
    EXPECT_EQ(snapshot(directory.path()), before);
  }
  auto error = copy("file", "there/below/new", 2);
  EXPECT_EQ(error->code(), ENOTDIR);
  EXPECT_THAT(textOf(error),
              HasSubstr("(Could not create directory at " + at("there/below") + ")"));
  EXPECT_EQ(textOf(copyPath_toPath(manager, nullptr, nullptr)),
            "Unable to copy from  to  (Source file does not exist)");
  EXPECT_TRUE(copyPath_toPath(manager, ns(at("file")), nullptr));
  EXPECT_EQ(snapshot(directory.path()), before);
}

TEST_F(CarefulCopyTest, CopiesAndReplaces) {
  for (Ref<NSFileManager> each :
       {manager, Ref<NSFileManager>(make<PlainManager>()), currentThreadFileManager()}) {
    manager = each;
    directory.write("file", "new");
    directory.write("there", "old");
    directory.write("there 2", "in the way");
    directory.write("folder/new", "new");
    directory.write("old folder/old", "old");
    fs::create_symlink(at("there"), at("link"));
    fs::create_symlink("folder", at("folder link"));
    EXPECT_EQ(textOf(copy("file", "deep/er/copy", 2)), "");
    EXPECT_EQ(contentsOf(at("deep/er/copy")), "new");
    EXPECT_EQ(textOf(copyPath_toPath_overwrite(manager, ns(at("file")), ns(at("there")), false)),
              "");
    EXPECT_EQ(contentsOf(at("there")), "new");
    // What a link leads to is replaced, and the link stays; a link that is copied stays one.
    directory.write("there", "old");
    EXPECT_EQ(textOf(copy("file", "link", 1)), "");
    EXPECT_TRUE(fs::is_symlink(at("link")));
    EXPECT_EQ(contentsOf(at("there")), "new");
    EXPECT_EQ(textOf(copy("link", "deep/er/copy", 1)), "");
    EXPECT_EQ(fs::read_symlink(at("deep/er/copy")), at("there"));
    EXPECT_EQ(contentsOf(at("file")), "new");
    // A folder over a folder, over a file, and over what it lies in.
    EXPECT_EQ(textOf(copy("folder", "old folder", 1)), "");
    EXPECT_EQ(contentsOf(at("old folder/new")) + contentsOf(at("old folder/old")), "new(missing)");
    EXPECT_EQ(textOf(copy("folder", "deep/er/copy", 1)), "");
    EXPECT_EQ(textOf(copy("deep/er", "deep", 1)), "");
    EXPECT_EQ(contentsOf(at("deep/copy/new")), "new");
    EXPECT_EQ(textOf(copy("file", "file", 1)), "");
    EXPECT_EQ(contentsOf(at("file")) + contentsOf(at("there 2")), "newin the way");
    // A name without room for a number, and one that is no text.
    for (const std::string& name : {std::string(255, 'n'), std::string("\xFF\n:")}) {
      directory.write(name, "old");
      EXPECT_EQ(textOf(copy("file", name, 1)), "");
      EXPECT_EQ(contentsOf(at(name)), "new");
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(directory.path()), {}), 10);
    fs::remove_all(at("deep"));
    fs::remove(at("link"));
    fs::remove(at("folder link"));
  }
}

TEST_F(CarefulCopyTest, RelativePathsBeginAtTheCurrentFolder) {
  const std::string before = fs::current_path();
  fs::current_path(directory.path());
  directory.write("file", "new");
  EXPECT_EQ(textOf(copyPath_toPath(manager, "file"_ns, "copy"_ns)), "");
  EXPECT_EQ(textOf(copyPath_toPath_withOptions(manager, "file"_ns, "a/b/copy"_ns, 2)), "");
  EXPECT_EQ(textOf(copyPath_toPath_withOptions(manager, "file"_ns, "copy"_ns, 1)), "");
  fs::current_path(before);
  EXPECT_EQ(contentsOf(at("copy")) + contentsOf(at("a/b/copy")), "newnew");
  EXPECT_FALSE(fs::exists(at("copy 2")));
}

TEST_F(CarefulCopyTest, AFallBackReplacesWhatCannotBeExchanged) {
  directory.write("file", "new");
  directory.write("there", "old");
  FaultySystem system;
  // The first time the exchange fails, the second time every renaming.
  std::size_t renames = 0;
  system.listener = [&](SystemCall kind, const char*) {
    if (kind == SystemCall::Rename && renames++ == 0) system.failCall(1, EIO);
  };
  EXPECT_EQ(textOf(copy("file", "there", 1)), "");
  EXPECT_EQ(contentsOf(at("there")), "new");
  system.listener = nullptr;
  system.failAll(SystemCall::Rename, EIO);
  auto error = copy("file", "there", 1);
  EXPECT_EQ(error->code(), EIO);
  EXPECT_THAT(textOf(error),
              HasSubstr("(Unable to move from " + at("there 2") + " to " + at("there") + " ("));
  // Neither is left, as is told.
  EXPECT_THAT(snapshot(directory.path()), ::testing::SizeIs(2));
  system.heal();

  // An Error that nobody fetched does not cost the folder that it has nothing to do with.
  directory.write("folder/new", "new");
  directory.write("there/old", "old");
  auto stale = NSError::errorWithDomain_code_userInfo("x"_ns, 1, nullptr);
  QZFileManagerErrorHandler::sharedHandler()->setLastError(stale);
  EXPECT_EQ(copy("folder", "there", 1)->code(), 1);
  EXPECT_EQ(contentsOf(at("there/new")), "new");
}

class OverwriteSweep : public CarefulCopyTest {
 protected:
  OverwriteSweep() : CarefulCopyTest(true) {}
};

// Whatever fails: the old file or the new one, and nothing else, unless it could not be removed.
TEST_F(OverwriteSweep, AFileIsTheOldOrTheNewOne) {
  const std::string fresh(70 * 1024, 'n');
  directory.write("file", fresh);
  ::chmod(at("file").c_str(), 0640);
  directory.write("there", "old");
  EXPECT_EQ(textOf(copy("file", "there", 3)), "");
  Ref<NSError> error;
  std::size_t failures = 0;
  sweepFailures([&] { directory.write("there", "old"); }, [&] { error = copy("file", "there", 3); },
                [&](SystemCall kind, int number) {
                  EXPECT_EQ(contentsOf(at("there")), error ? "old" : fresh);
                  if (error) {
                    ++failures;
                    EXPECT_EQ(error->domain(), NSPOSIXErrorDomain);
                    EXPECT_THAT(textOf(error), HasSubstr("Unable to copy from"));
                  }
                  EXPECT_FALSE(number == EINTR && error);
                  EXPECT_EQ(fs::exists(at("there 2")), kind == SystemCall::Unlink);
                  fs::remove(at("there 2"));
                  EXPECT_THAT(snapshot(directory.path()), ::testing::SizeIs(3));
                });
  EXPECT_GT(failures, 40u);
  EXPECT_EQ(contentsOf(at("file")), fresh);
}

// Until it is removed, the old folder is untouched; after that, the new one is whole or the Error
// says that it could not be put in place.
TEST_F(OverwriteSweep, AFolderIsNeverMixed) {
  directory.write("folder/sub/new", "new");
  directory.write("folder/large", std::string(70 * 1024, 'n'));
  directory.write("there/sub/old", "old");
  directory.write("there/older", "older");
  const Snapshot fresh = snapshot(at("folder"));
  fs::copy(at("there"), at("spare"), fs::copy_options::recursive);
  const auto isLike = [&](const char* name) {
    return manager->contentsEqualAtPath_andPath(path(name), path("there"));
  };
  EXPECT_EQ(textOf(copy("folder", "there", 3)), "");
  Ref<NSError> error;
  bool isRemoving = false;
  sweepFailures(
      [&] {
        fs::remove_all(at("there"));
        fs::remove_all(at("there 2"));
        fs::copy(at("spare"), at("there"), fs::copy_options::recursive);
      },
      [&] { error = copy("folder", "there", 3); },
      [&](SystemCall kind, int) {
        isRemoving = isRemoving || kind == SystemCall::Unlink;
        if (!error) {
          EXPECT_TRUE(isLike("folder"));
        } else if (!isRemoving) {
          EXPECT_TRUE(isLike("spare"));
        } else {
          EXPECT_FALSE(fs::exists(at("there/sub/new")));
        }
      });
  EXPECT_TRUE(isRemoving);
  EXPECT_EQ(snapshot(at("folder")), fresh);
}

class KilledCopy : public CarefulCopyTest {
 protected:
  const std::string contents[2] = {std::string(200 * 1024, 'a'), std::string(150 * 1024, 'b')};

  void SetUp() override {
    directory.write("a", contents[0]);
    directory.write("b", contents[1]);
    directory.write("there", contents[0]);
  }

  void overwriteForEver() {
    for (int turn = 0;; ++turn)
      if (copy(turn % 2 == 0 ? "b" : "a", "there", 1)) ::_exit(1);
  }

  void checkAndTidy(pid_t child, const std::string& where) {
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << where;
    const std::string found = contentsOf(at("there"));
    ASSERT_TRUE(found == contents[0] || found == contents[1]) << where << ": " << found.size();
    std::size_t others = 0;
    for (const auto& entry : fs::directory_iterator(directory.path()))
      if (entry.path().filename().string().starts_with("there ")) {
        const std::string left = contentsOf(entry.path());
        EXPECT_TRUE(left == contents[0] || left == contents[1]) << where;
        fs::remove(entry.path());
        ++others;
      }
    ASSERT_LE(others, 1u) << where;
  }
};

/// Ends the process at the n-th call.
class Killer final : public detail::SystemTap {
 public:
  explicit Killer(std::size_t calls) : left_(calls) { detail::systemTap = this; }
  int before(SystemCall, const char*) override {
    if (left_-- == 0) ::raise(SIGKILL);
    return 0;
  }

 private:
  std::size_t left_;
};

TEST_F(KilledCopy, LeavesAWholeFileAtEachCall) {
  for (std::size_t n = 0; n < 60; ++n) {
    const pid_t child = ::fork();
    if (child == 0) {
      Killer killer(n);
      overwriteForEver();
    }
    checkAndTidy(child, "call " + std::to_string(n));
    if (HasFatalFailure()) return;
  }
}

// As often as three seconds allow, or as often as QZ_KILLS says.
TEST_F(KilledCopy, LeavesAWholeFileAtAnyMoment) {
  const char* wanted = std::getenv("QZ_KILLS");
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  std::mt19937 random(20240229);
  std::uniform_int_distribution<int> microseconds(0, 4000);
  int done = 0;
  while (wanted == nullptr ? std::chrono::steady_clock::now() < end : done < std::atoi(wanted)) {
    const pid_t child = ::fork();
    if (child == 0) overwriteForEver();
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
    ::kill(child, SIGKILL);
    checkAndTidy(child, "kill " + std::to_string(done++));
    if (HasFatalFailure()) return;
  }
}

TEST_F(CarefulCopyTest, UnusedNamesAreNumberedFromTwo) {
  const auto unique = [&](NSString* name) {
    auto path = uniqueFilePathForName_inDirectory(manager, name, ns(directory.path()));
    return path->lastPathComponent()->UTF8String();
  };
  EXPECT_EQ(unique("a.txt"_ns), "a.txt");
  for (const char* each : {"a.txt", "a 2.txt", "notes"}) directory.write(each, "");
  EXPECT_EQ(unique("a.txt"_ns), "a 3.txt");
  EXPECT_EQ(unique("notes"_ns), "notes 2");
  EXPECT_FALSE(uniqueFilePathForName_inDirectory(manager, nullptr, ""_ns));
}

class Progress : public Derives<Progress, NSObject> {
 public:
  static void describe(ClassDescription<Progress>& is) {
    is.named("QZCopyTestProgress")
        .method<&Progress::fileManager_willChangePath_percentComplete>(
            "fileManager:willChangePath:percentComplete:");
  }
  void fileManager_willChangePath_percentComplete(NSFileManager*, NSString* path, float fraction) {
    EXPECT_TRUE(path->isAbsolutePath());
    fractions.push_back(fraction);
  }
  std::vector<float> fractions;
};

TEST_F(CarefulCopyTest, AttributesOfATreeAreChanged) {
  for (int i = 0; i < 40; ++i) directory.write("tree/file " + std::to_string(i), "");
  for (int i = 0; i < 4; ++i) fs::create_directory(at("tree/folder " + std::to_string(i)));
  fs::create_symlink("nowhere", at("tree/dangling"));
  auto mode = [](int bits) { return NSDictionary::of({{NSFilePosixPermissions, number(bits)}}); };
  auto progress = make<Progress>();
  auto failures = changeFileAttributes_directoryAttributes_inDirectory_handler(
      manager, mode(0600), mode(0710), ns(at("tree")), progress);
  EXPECT_THAT(progress->fractions, ElementsAre(0.0f, 20.0f / 45.0f, 40.0f / 45.0f));
  ASSERT_EQ(failures->count(), 1u);
  EXPECT_EQ(to_string(failures->objectAtIndex(0)), at("tree/dangling"));
  for (const auto& [path, about] : snapshot(at("tree"))) {
    if (path == "dangling") continue;
    const bool isFolder = path.empty() || path.starts_with("folder");
    EXPECT_THAT(about, HasSubstr(isFolder ? "40710 " : "100600 ")) << path;
  }
  failures = changeFileAttributes_directoryAttributes_inDirectory_handler(
      manager, nullptr, nullptr, ns(at("missing")), "no handler"_ns);
  EXPECT_EQ(failures->count(), 0u);
}

TEST_F(CarefulCopyTest, FoldersAreEmptyButForWhatIsIgnored) {
  const auto isEmpty = [&](const char* name, NSObject* paths, NSObject* names) {
    return isDirectoryEmpty_ignoringPaths_ignoringFilesNamed(manager, ns(at(name)), paths, names);
  };
  directory.write("a/b/.cache", "");
  fs::create_directories(at("a/c/d"));
  auto names = NSSet::setWithObject(".cache"_ns);
  EXPECT_FALSE(isEmpty("a", nullptr, nullptr));
  EXPECT_TRUE(isEmpty("a", nullptr, names));
  EXPECT_TRUE(isEmpty("a", arrayOf({ns(at("a/b/.cache"))}), nullptr));
  EXPECT_FALSE(isEmpty("a/b/.cache", nullptr, names));
  fs::create_directory_symlink("c", at("a/link"));
  EXPECT_FALSE(isEmpty("a", nullptr, names));
  EXPECT_FALSE(isEmpty("a/link", nullptr, nullptr));
  FaultySystem system;
  system.failAll(SystemCall::ListDirectory, EACCES);
  EXPECT_FALSE(isEmpty("a/c/d", nullptr, nullptr));
}

}  // namespace
}  // namespace qz::test
