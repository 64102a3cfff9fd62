// What the file manager does when the system refuses: failures that need a user, a kind of file or
// a moment of their own. NSFileManagerTests.cpp fails each call of a whole copy in turn.
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/System/NSFileManager.h"
#include "tests/support/FaultySystem.h"
#include "tests/support/FileTest.h"

namespace qz::test {
namespace {

class FileFaults : public FileTest {
 protected:
  mode_t mode(const std::string& name) {
    struct ::stat status {};
    EXPECT_EQ(::lstat(at(name).c_str(), &status), 0) << name;
    return status.st_mode & 07777;
  }
  void expectNothingBut(const std::vector<std::string>& names) {
    std::vector<std::string> there;
    for (const auto& each : fs::directory_iterator(directory.path()))
      there.push_back(each.path().filename());
    EXPECT_THAT(there, ::testing::UnorderedElementsAreArray(names));
  }
};

// A copy that cannot have the owner of what it was made from runs under nobody's name, and any
// other refusal leaves no copy.
TEST_F(FileFaults, OwnersThatCannotBeGivenAreLeftOut) {
  if (::geteuid() != 0) GTEST_SKIP() << "files of another user take root";
  directory.write("file", "program");
  fs::create_symlink("file", at("link"));
  ::mkfifo(at("pipe").c_str(), 0600);
  for (const char* name : {"file", "link", "pipe"})
    ASSERT_EQ(::lchown(at(name).c_str(), 12, 34), 0);
  ::chmod(at("file").c_str(), 06755);
  FaultySystem system;
  for (const std::string name : {"file", "link", "pipe"}) {
    system.failAll(SystemCall::ChangeOwner, EPERM);
    EXPECT_EQ(copyError(name, "copy"), 0) << name;
    if (name == "file") {
      EXPECT_EQ(mode("copy"), 0755u);
    }
    fs::remove(at("copy"));
    system.failAll(SystemCall::ChangeOwner, EIO);
    EXPECT_EQ(copyError(name, "copy"), EIO) << name;
    system.heal();
  }
  expectNothingBut({"file", "link", "pipe"});
}

TEST_F(FileFaults, LargeFilesDoNotReplaceWhatIsThere) {
  directory.write("large", std::string((1 << 20) + 1, 'l'));
  directory.write("there", "old");
  EXPECT_EQ(copyError("large", "there"), EEXIST);
  EXPECT_EQ(contentsOf(at("there")), "old");
}

// It is copied as what it is when it is opened.
TEST_F(FileFaults, AFileMayBecomeALinkMeanwhile) {
  directory.write("file", "bytes");
  FaultySystem system;
  system.listener = [&](SystemCall kind, const char* opened) {
    if (kind != SystemCall::Open || opened != at("file")) return;
    fs::remove(at("file"));
    fs::create_symlink("elsewhere", at("file"));
  };
  EXPECT_EQ(copyError("file", "copy"), 0);
  system.listener = nullptr;
  EXPECT_EQ(fs::read_symlink(at("copy")), "elsewhere");
}

// A directory far above is opened again on the way back. When that fails, so has the copy.
TEST_F(FileFaults, TheWayBackMayBeBarred) {
  std::string deep = "deep";
  for (int i = 0; i < 120; ++i) deep += "/d";
  directory.write(deep + "/bottom", "bottom");
  FaultySystem system;
  system.listener = [&](SystemCall kind, const char* path) {
    if (kind == SystemCall::Open && std::string_view(path) == "bottom")
      system.failAll(SystemCall::Open, EIO);
  };
  EXPECT_EQ(copyError("deep", "copy"), EIO);
  system.listener = nullptr;
  system.heal();
  EXPECT_EQ(contentsOf(at(deep + "/bottom")), "bottom");
}

class Thrower : public Derives<Thrower, NSObject> {
 public:
  static void describe(ClassDescription<Thrower>& is) {
    is.named("FileFaultsThrower")
        .method<&Thrower::shouldProceed>("fileManager:shouldProceedAfterError:");
  }
  bool shouldProceed(NSFileManager*, NSDictionary*) { throw std::runtime_error("enough"); }
};

// A move between file systems that comes to nothing leaves what was there, and nothing else.
TEST_F(FileFaults, AMoveThatIsBrokenOffLeavesNothingBehind) {
  directory.write("tree/file", "kept");
  fs::create_symlink("file", at("tree/link"));
  FaultySystem system;
  const auto otherFileSystem = [&](SystemCall kind, const char* path) {
    if (kind == SystemCall::Rename && std::string_view(path) == at("tree"))
      system.failCall(1, EXDEV);
  };
  // Somebody else takes the name in the meantime.
  system.listener = [&](SystemCall kind, const char* path) {
    otherFileSystem(kind, path);
    if (kind == SystemCall::SymbolicLink) directory.write("moved", "somebody's");
  };
  Ref<NSError> error;
  EXPECT_FALSE(manager->moveItemAtPath_toPath_error(path("tree"), path("moved"), &error));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), EEXIST);
  EXPECT_EQ(contentsOf(at("moved")), "somebody's");
  expectNothingBut({"tree", "moved"});
  fs::remove(at("moved"));

  // Whoever is told of a failure throws.
  system.listener = otherFileSystem;
  system.failAll(SystemCall::SymbolicLink, EIO);
  const auto handler = make<Thrower>();
  EXPECT_THROW(manager->movePath_toPath_handler(path("tree"), path("moved"), handler),
               std::runtime_error);
  system.heal();
  system.listener = nullptr;
  expectNothingBut({"tree"});
  EXPECT_EQ(contentsOf(at("tree/file")), "kept");
}

TEST_F(FileFaults, EveryKindOfFileIsTold) {
  ::mkfifo(at("pipe").c_str(), 0600);
  makeSocket(at("socket"));
  const auto typeOf = [&](const std::string& name) {
    return fileType(manager->attributesOfItemAtPath_error(path(name), nullptr));
  };
  EXPECT_TRUE(equal(typeOf("pipe"), NSFileTypePipe));
  EXPECT_TRUE(equal(typeOf("socket"), NSFileTypeSocket));
  EXPECT_TRUE(equal(typeOf(directory.path()), NSFileTypeDirectory));
  const auto null = manager->attributesOfItemAtPath_error("/dev/null"_ns, nullptr);
  EXPECT_TRUE(equal(fileType(null), NSFileTypeCharacterSpecial));
  struct ::stat status {};
  ASSERT_EQ(::stat("/dev/null", &status), 0);
  EXPECT_EQ(as<NSNumber>(null->objectForKey(NSFileDeviceIdentifier))->unsignedLongLongValue(),
            status.st_rdev);
  EXPECT_EQ(fileGroupOwnerAccountID(null), status.st_gid);
  EXPECT_TRUE(fileGroupOwnerAccountName(null));
}

}  // namespace
}  // namespace qz::test
