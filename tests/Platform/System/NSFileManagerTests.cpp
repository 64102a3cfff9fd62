#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "Platform/System/FileProgress.h"
#include "Platform/Values/NSPathUtilities.h"
#include "tests/support/FaultySystem.h"
#include "tests/support/FileTest.h"

namespace qz::test {
namespace {

using ::testing::AnyOf;

class Handler : public Derives<Handler, NSObject> {
 public:
  static void describe(ClassDescription<Handler>& is) {
    is.named("NSFileManagerTestHandler")
        .method<&Handler::fileManager_shouldProceedAfterError>(
            "fileManager:shouldProceedAfterError:");
  }

  bool fileManager_shouldProceedAfterError(NSFileManager*, NSDictionary* failure) {
    numbers.push_back(errno);
    texts.push_back(to_string(failure->objectForKey("Error"_ns)));
    paths.push_back(as<NSString>(failure->objectForKey("Path"_ns))->fileSystemRepresentation());
    return proceeds;
  }

  bool proceeds = false;
  std::vector<int> numbers;
  std::vector<std::string> texts;
  std::vector<std::string> paths;
};

class FileManagerTest : public FileTest {
 protected:
  using FileTest::FileTest;

  int moveError(const std::string& from, const std::string& to) {
    Ref<NSError> error;
    return codeOf(manager->moveItemAtPath_toPath_error(path(from), path(to), &error), error);
  }
  int removeError(const std::string& name) {
    Ref<NSError> error;
    return codeOf(manager->removeItemAtPath_error(path(name), &error), error);
  }
};

void writeSparse(const std::string& path) {
  std::ofstream file(path, std::ios::binary);
  file << "start";
  file.seekp(3 << 16);
  file << "middle";
  file.close();
  fs::resize_file(path, 8 << 16);
}

std::uint64_t allocated(const std::string& path) {
  struct ::stat status {};
  ::stat(path.c_str(), &status);
  return static_cast<std::uint64_t>(status.st_blocks) * 512;
}

// user::rw-, user:1:r--, group::r--, mask::r--, other::---
constexpr std::string_view accessList(
    "\x02\0\0\0\x01\0\x06\0\xff\xff\xff\xff\x02\0\x04\0\x01\0\0\0\x04\0\x04\0\xff\xff\xff\xff"
    "\x10\0\x04\0\xff\xff\xff\xff\x20\0\0\0\xff\xff\xff\xff",
    44);

// Something of everything that a copy has to keep.
void makeTree(const TemporaryDirectory& directory) {
  const std::string top = directory.path() + "/tree";
  for (int i = 0; i < 300; ++i)
    directory.write("tree/many " + std::to_string(i % 7) + "/" + std::to_string(i),
                    std::string(static_cast<std::size_t>(i), 'x'));
  directory.write("tree/large", std::string(300 * 1024 + 1, 'l'));
  directory.write("tree/empty", "");
  directory.write("tree/names/a:b\nc", "newline");
  directory.write("tree/names/caf\xE9 \xFF", "no text");
  directory.write("tree/names/\xE2\x82\xAC", "euro");
  writeSparse(top + "/sparse");
  fs::create_hard_link(top + "/large", top + "/names/large too");
  fs::create_symlink("../large", top + "/names/link");
  fs::create_symlink("nowhere", top + "/dangling");
  fs::create_directory_symlink("..", top + "/names/loop");
  ::mkfifo((top + "/pipe").c_str(), 0620);
  fs::create_directory(top + "/nothing in it");
  ::setxattr((top + "/empty").c_str(), "user.colour", "blue", 4, 0);
  ::setxattr((top + "/names").c_str(), "user.kind", "folder", 6, 0);
  ::setxattr((top + "/many 1/1").c_str(), "system.posix_acl_access", accessList.data(),
             accessList.size(), 0);
  if (::geteuid() == 0) {
    EXPECT_EQ(::chown((top + "/many 2/2").c_str(), 12, 34), 0);
  }
  ::chmod((top + "/many 2/2").c_str(), 06711);
  setTime(top + "/dangling", 1234567890, 123456789);
  setTime(top + "/many 3/3", -5, 1);
  setTime(top + "/pipe", 7, 8);
  setTime(top + "/names", 1000000000, 987654321);
  ::chmod((top + "/nothing in it").c_str(), 0500);
  setTime(top, 99, 1);
}

TEST_F(FileManagerTest, ACopyKeepsEverything) {
  makeTree(directory);
  const Snapshot original = snapshot(at("tree"));
  ASSERT_EQ(copyError("tree", "copy/"), 0);
  EXPECT_EQ(snapshot(at("copy")), original);
  EXPECT_LT(allocated(at("copy/sparse")), 1u << 16);
  EXPECT_TRUE(manager->contentsEqualAtPath_andPath(path("tree"), path("copy")));

  // However little the system does at a time, and whatever it cannot do.
  FaultySystem system;
  system.shortenTo(777);
  ASSERT_EQ(copyError("tree", "bit by bit"), 0);
  EXPECT_EQ(snapshot(at("bit by bit")), original);
  system.failAll(SystemCall::Clone, EOPNOTSUPP);
  system.failAll(SystemCall::CopyRange, EOPNOTSUPP);
  ASSERT_EQ(copyError("tree", "by hand"), 0);
  EXPECT_EQ(snapshot(at("by hand")), original);
  EXPECT_LT(allocated(at("by hand/sparse")), 1u << 16);

  for (const char* each : {"tree", "copy", "bit by bit", "by hand"})
    EXPECT_EQ(removeError(each), 0) << each;
  EXPECT_TRUE(fs::is_empty(directory.path()));
}

TEST_F(FileManagerTest, ASingleFileIsCopiedAsItIs) {
  directory.write("file", "text");
  ::chmod(at("file").c_str(), 0640);
  setTime(at("file"), 100, 200);
  writeSparse(at("sparse"));
  fs::create_symlink("file", at("link"));
  for (const char* name : {"file", "sparse", "link"}) {
    ASSERT_EQ(copyError(name, "copy"), 0) << name;
    EXPECT_EQ(snapshot(at("copy")), snapshot(at(name))) << name;
    EXPECT_EQ(removeError("copy"), 0);
  }
  // Where a file cannot be without a name, or be given one later.
  for (int number : {EOPNOTSUPP, EISDIR}) {
    FaultySystem system;
    system.listener = [&](SystemCall kind, const char* path) {
      if (kind == SystemCall::Open && path == directory.path()) system.failCall(1, number);
    };
    ASSERT_EQ(copyError("file", "copy"), 0);
    EXPECT_EQ(snapshot(at("copy")), snapshot(at("file")));
    EXPECT_EQ(removeError("copy"), 0);
  }
  FaultySystem system;
  system.failAll(SystemCall::Link, ENOENT);
  ASSERT_EQ(copyError("file", "copy"), 0);
  EXPECT_EQ(snapshot(at("copy")), snapshot(at("file")));
}

TEST_F(FileManagerTest, CopiesAndComparisonsTellHowFarTheyAreAndMayEndEarly) {
  const std::string bytes(10 << 20, 'x');
  directory.write("file", bytes);
  directory.write("sparse", bytes);
  fs::resize_file(at("sparse"), 2 * bytes.size());
  directory.write("tree/file", bytes);
  for (const std::string name : {"file", "sparse", "tree"}) {
    std::uint64_t told = 0;
    int parts = 0;
    std::uint64_t limit = UINT64_MAX;
    const FileProgress outer([](std::uint64_t) { return false; });
    const FileProgress progress([&](std::uint64_t count) {
      ++parts;
      return (told += count) < limit;
    });
    EXPECT_EQ(copyError(name, "copy"), 0);
    EXPECT_EQ(told, bytes.size()) << name;
    EXPECT_GT(parts, 2);
    EXPECT_TRUE(manager->contentsEqualAtPath_andPath(path("file"), path("tree/file")));
    EXPECT_EQ(told, 2 * bytes.size());

    limit = told + 1;
    EXPECT_FALSE(manager->contentsEqualAtPath_andPath(path("file"), path("tree/file")));
    EXPECT_EQ(errno, ECANCELED);
    fs::remove_all(at("copy"));
    limit = told + 1;
    EXPECT_EQ(copyError(name, "copy"), ECANCELED);
    EXPECT_FALSE(fs::is_regular_file(at("copy")) || fs::exists(at("copy/file")));
    fs::remove_all(at("copy"));
  }
  EXPECT_EQ(copyError("file", "copy"), 0);
}

TEST_F(FileManagerTest, WhatCannotBeCopiedMovedLinkedOrRemovedSaysWhy) {
  directory.write("file", "text");
  directory.write("folder/inner/file", "text");
  fs::create_symlink("loop", at("loop"));
  const std::string tooLong(300, 'n');
  const Snapshot before = snapshot(directory.path());
  using Case = std::tuple<std::string, std::string, int>;
  for (const auto& [from, to, number] : std::vector<Case>{
           {at("missing"), at("new"), ENOENT},
           {at("file"), at("no/such/folder"), ENOENT},
           {at("file"), at("folder"), EEXIST},
           {at("file"), at("file"), EEXIST},
           {at("file"), at("loop"), EEXIST},
           {at("file"), at("file/below"), ENOTDIR},
           {at("folder"), at("folder/inner/copy"), EINVAL},
           {at("file"), at(tooLong), ENAMETOOLONG},
           {at("loop/x"), at("new"), ELOOP},
           {"", at("new"), ENOENT},
           {at("file"), "", ENOENT},
           {at(std::string("ze\0ro", 5)), at("new"), EINVAL},
       }) {
    EXPECT_EQ(copyError(from, to), number) << from << " to " << to;
    EXPECT_EQ(moveError(from, to), number) << from << " to " << to;
    EXPECT_EQ(snapshot(directory.path()), before) << from << " to " << to;
  }
  Ref<NSError> error;
  EXPECT_FALSE(manager->linkItemAtPath_toPath_error(path("file"), path("folder"), &error));
  EXPECT_EQ(error->code(), EEXIST);
  EXPECT_EQ(textOf(error), at("folder") + ": File exists");
  EXPECT_FALSE(manager->linkItemAtPath_toPath_error(path("folder"), path("new"), &error));
  EXPECT_EQ(error->code(), EPERM);
  for (const auto& [path, number] : std::map<std::string, int>{{at("missing"), ENOENT},
                                                               {"/", EBUSY},
                                                               {at("folder/."), EINVAL},
                                                               {at("folder/../.."), EINVAL},
                                                               {"", ENOENT},
                                                               {at("file/x"), ENOTDIR}})
    EXPECT_EQ(removeError(path), number) << path;
  EXPECT_EQ(snapshot(directory.path()), before);
}

TEST_F(FileManagerTest, AHandlerHearsOfFailuresAndDecides) {
  for (const char* name : {"a", "b", "c"}) directory.write(std::string("tree/") + name, name);
  auto handler = make<Handler>();
  EXPECT_FALSE(manager->removeFileAtPath_handler(path("missing"), handler));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_THAT(handler->numbers, ElementsAre(ENOENT));
  EXPECT_THAT(handler->texts, ElementsAre(at("missing") + ": No such file or directory"));
  EXPECT_THAT(handler->paths, ElementsAre(at("missing")));

  // One file cannot be opened.
  FaultySystem system;
  std::size_t opened = 0;
  system.listener = [&](SystemCall kind, const char* path) {
    if (kind == SystemCall::Open && std::string_view(path) == "b" && opened++ == 0)
      system.failCall(1, EACCES);
  };
  handler = make<Handler>();
  handler->proceeds = true;
  EXPECT_FALSE(manager->copyPath_toPath_handler(path("tree"), path("copy"), handler));
  EXPECT_EQ(errno, EACCES);
  EXPECT_THAT(handler->paths, ElementsAre(at("tree/b")));
  EXPECT_EQ(contentsOf(at("copy/a")) + contentsOf(at("copy/c")), "ac");
  EXPECT_FALSE(fs::exists(at("copy/b")));

  // Who says nothing stops it, and so does a handler that does not answer.
  for (NSObject* silent : {static_cast<NSObject*>(nullptr), static_cast<NSObject*>("x"_ns)})
    EXPECT_FALSE(manager->movePath_toPath_handler(path("missing"), path("new"), silent));
}

TEST_F(FileManagerTest, RemovingStaysInTheDirectory) {
  directory.write("keep/file", "kept");
  directory.write("tree/sub/file", "text");
  fs::create_directory_symlink(at("keep"), at("tree/link"));
  fs::create_directory_symlink(at("keep"), at("top link"));
  EXPECT_EQ(removeError("top link/"), 0);
  // Somebody adds a file while the directory is removed.
  FaultySystem system;
  int added = 0;
  system.listener = [&](SystemCall kind, const char* path) {
    if (kind == SystemCall::Unlink && std::string_view(path) == "sub" && added++ < 2)
      directory.write("tree/sub/late " + std::to_string(added), "late");
  };
  EXPECT_EQ(removeError("tree"), 0);
  EXPECT_EQ(added, 3);
  EXPECT_THAT(snapshot(directory.path()), ::testing::SizeIs(3));
  EXPECT_EQ(contentsOf(at("keep/file")), "kept");
}

// Deeper than there are descriptors, and longer than a path may be.
TEST_F(FileManagerTest, DeepTreesAreCopiedAndRemoved) {
  constexpr int levels = 300;
  const std::string name(20, 'd');
  ::rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  const ::rlimit few{220, before.rlim_max};
  int folder = ::open(directory.path().c_str(), O_RDONLY | O_DIRECTORY);
  for (int i = 0; i < levels; ++i) {
    const char* each = i == 0 ? "deep" : name.c_str();
    ASSERT_EQ(::mkdirat(folder, each, 0755), 0);
    const int below = ::openat(folder, each, O_RDONLY | O_DIRECTORY);
    ::close(folder);
    folder = below;
  }
  ::close(::openat(folder, "bottom", O_CREAT | O_WRONLY, 0600));
  ::close(folder);
  ::setrlimit(RLIMIT_NOFILE, &few);
  FaultySystem system;
  ASSERT_EQ(copyError("deep", "copy"), 0);
  const auto calls = system.calls();
  EXPECT_EQ(std::ranges::count(calls, SystemCall::MakeDirectory), levels);
  EXPECT_EQ(removeError("deep"), 0);
  EXPECT_EQ(removeError("copy"), 0);
  ::setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_TRUE(fs::is_empty(directory.path()));
}

TEST_F(FileManagerTest, MovingToAnotherFileSystemIsAllOrNothing) {
  makeTree(directory);
  const Snapshot original = snapshot(at("tree"));
  FaultySystem system;
  system.listener = [&](SystemCall kind, const char* path) {
    if (kind == SystemCall::Rename && std::string_view(path) == at("tree"))
      system.failCall(1, EXDEV);
  };
  EXPECT_EQ(moveError("tree", "moved"), 0);
  EXPECT_EQ(snapshot(at("moved")), original);
  EXPECT_FALSE(fs::exists(at("tree")));
  fs::rename(at("moved"), at("tree"));

  // Half way the disk is full, and then a directory cannot be read.
  for (const auto kind : {SystemCall::CopyRange, SystemCall::SymbolicLink}) {
    system.failAll(kind, ENOSPC);
    Ref<NSError> error;
    EXPECT_FALSE(manager->moveItemAtPath_toPath_error(path("tree"), path("moved"), &error));
    EXPECT_EQ(error->code(), ENOSPC);
    EXPECT_THAT(textOf(error), HasSubstr(at("moved/")));
    EXPECT_EQ(snapshot(at("tree")), original);
    EXPECT_THAT(snapshot(directory.path()), ::testing::SizeIs(original.size() + 1));
    system.heal();
  }
  // A file system that does not know how to refuse what is there.
  directory.write("there", "old");
  system.listener = nullptr;
  for (const char* to : {"there", "moved"}) {
    system.failCall(1, EINVAL);
    EXPECT_EQ(moveError("tree", to), std::string(to) == "there" ? EEXIST : 0) << to;
  }
  EXPECT_EQ(contentsOf(at("there")), "old");
  EXPECT_EQ(snapshot(at("moved")), original);
}

TEST_F(FileManagerTest, AttributesAreReadAndChanged) {
  directory.write("file", "12345");
  ::chmod(at("file").c_str(), 0640);
  setTime(at("file"), 1700000000, 500000000);
  fs::create_symlink("file", at("link"));
  auto about = manager->fileAttributesAtPath_traverseLink(path("link"), true);
  struct ::stat status {};
  ASSERT_EQ(::stat(at("file").c_str(), &status), 0);
  EXPECT_EQ(fileType(about), NSFileTypeRegular);
  EXPECT_EQ(fileSize(about), 5u);
  EXPECT_EQ(filePosixPermissions(about), 0640u);
  EXPECT_EQ(about->fileModificationDate()->timeIntervalSince1970(), 1700000000.5);
  EXPECT_TRUE(equal(fileOwnerAccountName(about), NSUserName()));
  EXPECT_TRUE(equal(about->objectForKey(NSFileSystemNumber), NSNumber::of(status.st_dev)));
  EXPECT_TRUE(equal(about->objectForKey(NSFileSystemFileNumber), NSNumber::of(status.st_ino)));
  EXPECT_EQ(fileType(manager->attributesOfItemAtPath_error(path("link"), nullptr)),
            NSFileTypeSymbolicLink);

  auto created = dateAt(-86400.25);
  auto modified = dateAt(1e9 + 0.75);
  auto changes = NSDictionary::of({{NSFilePosixPermissions, NSNumber::of(0600)},
                                   {NSFileCreationDate, created},
                                   {NSFileModificationDate, modified},
                                   {NSFileSize, NSNumber::of(1)},
                                   {"unknown"_ns, created}});
  ASSERT_TRUE(manager->changeFileAttributes_atPath(changes, path("link"))) << errno;
  about = manager->fileAttributesAtPath_traverseLink(path("file"), false);
  EXPECT_EQ(filePosixPermissions(about), 0600u);
  EXPECT_TRUE(equal(fileCreationDate(about), created));
  EXPECT_TRUE(equal(about->fileModificationDate(), modified));
  EXPECT_EQ(fileSize(about), 5u);
  ASSERT_EQ(copyError("file", "copy"), 0);
  about = manager->fileAttributesAtPath_traverseLink(path("copy"), false);
  EXPECT_TRUE(equal(fileCreationDate(about), created));
  // What somebody else wrote there is no date, and the file system's own counts.
  for (const char* wrong :
       {"", "x", "1.5", "1.0000000000", "1.00000000x", "9999999999999999999.0"}) {
    ::setxattr(at("copy").c_str(), "user.qz.creation-date", wrong, std::string(wrong).size(), 0);
    about = manager->fileAttributesAtPath_traverseLink(path("copy"), false);
    EXPECT_GT(fileCreationDate(about)->timeIntervalSince1970(), 1.7e9) << wrong;
  }

  FaultySystem system;
  for (const auto& [kind, key, value] :
       std::vector<std::tuple<SystemCall, NSString*, Ref<NSObject>>>{
           {SystemCall::SetAttribute, NSFileCreationDate, created},
           {SystemCall::ChangeTimes, NSFileModificationDate, modified},
           {SystemCall::ChangeMode, NSFilePosixPermissions, NSNumber::of(0)},
           {SystemCall::ChangeOwner, NSFileGroupOwnerAccountName, "root"_ns}}) {
    system.failAll(kind, EOPNOTSUPP);
    auto change = NSDictionary::dictionaryWithObject_forKey(value, key);
    EXPECT_FALSE(manager->changeFileAttributes_atPath(change, path("file"))) << key;
    EXPECT_EQ(errno, EOPNOTSUPP) << key;
    system.heal();
  }
  // Who may write to the file either before or afterwards can set its date.
  for (const bool mayBefore : {false, true}) {
    if (!mayBefore) system.failAll(SystemCall::SetAttribute, EACCES);
    system.listener = [&](SystemCall kind, const char*) {
      if (kind != SystemCall::ChangeMode) return;
      system.heal();
      if (mayBefore) system.failAll(SystemCall::SetAttribute, EACCES);
    };
    EXPECT_TRUE(manager->changeFileAttributes_atPath(changes, path("file"))) << mayBefore;
    system.listener = nullptr;
    system.heal();
  }
  auto nearly = NSDictionary::of({{NSFileModificationDate, make<NSDate>(-1e-20)}});
  EXPECT_TRUE(manager->changeFileAttributes_atPath(nearly, path("file"))) << errno;
  auto never = NSDictionary::of({{NSFileModificationDate, make<NSDate>(1e300)}});
  EXPECT_FALSE(manager->changeFileAttributes_atPath(never, path("file")));
}

std::vector<std::string> texts(NSArray* array) {
  std::vector<std::string> all;
  for (NSString* each : elements<NSString>(array)) all.push_back(each->fileSystemRepresentation());
  return all;
}

TEST_F(FileManagerTest, DirectoriesAreListed) {
  directory.write("a/b/file", "");
  directory.write("a/\xFE\n", "");
  fs::create_directory_symlink("b", at("a/link"));
  EXPECT_THAT(texts(manager->directoryContentsAtPath(path("a"))),
              UnorderedElementsAre("b", "\xFE\n", "link"));
  EXPECT_THAT(texts(manager->subpathsAtPath(path("a"))),
              UnorderedElementsAre("b", "b/file", "\xFE\n", "link"));
  auto walk = manager->enumeratorAtPath(ns(directory.path()));
  EXPECT_EQ(to_string(walk->nextObject()), "a");
  EXPECT_EQ(fileType(walk->fileAttributes()), NSFileTypeDirectory);
  walk->skipDescendents();
  EXPECT_FALSE(walk->nextObject());
  EXPECT_FALSE(walk->nextObject());
  EXPECT_EQ(fileType(walk->directoryAttributes()), NSFileTypeDirectory);

  for (const std::string& wrong : {at("missing"), at("a/b/file"), std::string()}) {
    EXPECT_FALSE(manager->directoryContentsAtPath(ns(wrong))) << wrong;
    EXPECT_FALSE(manager->enumeratorAtPath(ns(wrong))) << wrong;
  }
  FaultySystem system;
  system.failAll(SystemCall::ListDirectory, EIO);
  Ref<NSError> error;
  EXPECT_FALSE(manager->contentsOfDirectoryAtPath_error(path("a"), &error));
  EXPECT_EQ(error->code(), EIO);
}

TEST_F(FileManagerTest, AWalkTellsWhatItCouldNotRead) {
  directory.write("a/file", "");
  directory.write("b/file", "");
  FaultySystem system;
  const auto walked = [&](SystemCall broken, int number) {
    auto walk = manager->enumeratorAtPath(ns(directory.path()));
    system.failAll(broken, number);
    const auto entries = texts(walk->allObjects());
    system.heal();
    EXPECT_THAT(entries, UnorderedElementsAre("a", "b"));
    return walk->error();
  };
  for (const SystemCall broken : {SystemCall::Open, SystemCall::ListDirectory}) {
    const Ref<NSError> error = walked(broken, EIO);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), EIO);
    EXPECT_THAT(to_string(error->userInfo()->objectForKey(NSFilePathErrorKey)),
                AnyOf(at("a"), at("b")));
    EXPECT_FALSE(walked(broken, ENOENT));  // gone meanwhile
  }
  system.failAll(SystemCall::ListDirectory, EIO);
  EXPECT_FALSE(manager->enumeratorAtPath(ns(directory.path())));
  EXPECT_EQ(errno, EIO);
  EXPECT_FALSE(manager->subpathsAtPath(ns(directory.path())));
}

TEST_F(FileManagerTest, ThingsAreMadeAndAsked) {
  Ref<NSError> error;
  auto secret = NSDictionary::of({{NSFilePosixPermissions, NSNumber::of(0700)}});
  EXPECT_TRUE(manager->createDirectoryAtPath_withIntermediateDirectories_attributes_error(
      path("a//b/c/"), true, secret, &error));
  EXPECT_EQ(fs::status(at("a/b/c")).permissions(), fs::perms::owner_all);
  EXPECT_TRUE(manager->createDirectoryAtPath_withIntermediateDirectories_attributes_error(
      path("a/b/c"), true, nullptr, &error));
  EXPECT_FALSE(manager->createDirectoryAtPath_attributes(path("a/b/c"), nullptr));
  EXPECT_EQ(errno, EEXIST);
  EXPECT_TRUE(manager->createFileAtPath_contents_attributes(
      path("a/file"), NSData::dataWithBytes(std::string_view("bytes")), secret));
  EXPECT_EQ(contentsOf(at("a/file")), "bytes");
  EXPECT_FALSE(manager->createDirectoryAtPath_withIntermediateDirectories_attributes_error(
      path("a/file/x/y"), true, nullptr, &error));
  EXPECT_EQ(error->code(), ENOTDIR);
  // A directory that could not be given its attributes does not stay.
  auto wrong = NSDictionary::of({{NSFileOwnerAccountName, "no such user"_ns}});
  EXPECT_FALSE(manager->createDirectoryAtPath_attributes(path("half"), wrong));
  EXPECT_FALSE(fs::exists(at("half")));

  EXPECT_TRUE(manager->createSymbolicLinkAtPath_withDestinationPath_error(path("link"),
                                                                          "nowhere"_ns, nullptr));
  EXPECT_TRUE(equal(manager->pathContentOfSymbolicLinkAtPath(path("link")), "nowhere"_ns));
  EXPECT_FALSE(manager->destinationOfSymbolicLinkAtPath_error(path("a"), &error));
  EXPECT_EQ(error->code(), EINVAL);
  bool isFolder = true;
  EXPECT_FALSE(manager->fileExistsAtPath_isDirectory(path("link"), &isFolder));
  EXPECT_FALSE(isFolder);
  EXPECT_TRUE(manager->fileExistsAtPath_isDirectory(path("a"), &isFolder) && isFolder);

  // Equal means everything below.
  EXPECT_EQ(copyError("a", "b"), 0);
  EXPECT_TRUE(manager->contentsEqualAtPath_andPath(path("a"), path("b")));
  directory.write("b/file", "bytex");
  EXPECT_FALSE(manager->contentsEqualAtPath_andPath(path("a"), path("b")));
}

TEST_F(FileManagerTest, PathsAreShownByNames) {
  const auto shown = [&](const std::string& path) {
    auto components = manager->componentsToDisplayForPath(ns(path));
    return components ? to_string(components->componentsJoinedByString("|"_ns)) : "(none)";
  };
  EXPECT_EQ(shown("/"), "Root");
  EXPECT_EQ(shown("/usr//lib/"), "Root|usr|lib");
  EXPECT_EQ(shown("/no such thing"), "(none)");
  directory.write("a:b", "");
  EXPECT_EQ(to_string(manager->displayNameAtPath(path("a:b"))), "a/b");
  const std::string before = fs::current_path();
  ASSERT_TRUE(manager->changeCurrentDirectoryPath(ns(directory.path())));
  EXPECT_EQ(manager->currentDirectoryPath()->UTF8String(), directory.path());
  EXPECT_EQ(shown("a:b"), shown(at("a:b")));
  fs::current_path(before);
}

// Each call of a copy fails in each way it can: nothing but whole files, and no failure unsaid.
class FaultSweep : public FileManagerTest {
 protected:
  FaultSweep() : FileManagerTest(true) {}
};

TEST_F(FaultSweep, ACopyThatFailsHasNoHalfFiles) {
  directory.write("tree/sub/small", "small");
  directory.write("tree/large", std::string(100 * 1024, 'l'));
  writeSparse(at("tree/sparse"));
  fs::create_hard_link(at("tree/large"), at("tree/sub/again"));
  fs::create_symlink("large", at("tree/link"));
  ::mkfifo(at("tree/pipe").c_str(), 0600);
  ::setxattr(at("tree/sub/small").c_str(), "user.colour", "blue", 4, 0);
  const Snapshot original = snapshot(at("tree"));
  ASSERT_EQ(copyError("tree", "copy"), 0);
  int result = 0;
  std::size_t failed = 0;
  std::size_t survived = 0;
  sweepFailures([&] { fs::remove_all(at("copy")); }, [&] { result = copyError("tree", "copy"); },
                [&](SystemCall, int number) {
                  ++(result == 0 ? survived : failed);
                  EXPECT_TRUE(number != EINTR || result == 0);
                  for (const auto& [path, what] : snapshot(at("copy"))) {
                    const std::string file = at("copy/" + path);
                    const bool isWhole = !fs::is_regular_file(fs::symlink_status(file)) ||
                                         contentsOf(file) == contentsOf(at("tree/" + path));
                    EXPECT_TRUE(isWhole) << path << " result " << result;
                  }
                  EXPECT_TRUE(result != 0 ||
                              manager->contentsEqualAtPath_andPath(path("tree"), path("copy")));
                });
  EXPECT_EQ(snapshot(at("tree")), original);
  EXPECT_GT(failed, 100u);
  EXPECT_GT(survived, 20u);
}

}  // namespace
}  // namespace qz::test
