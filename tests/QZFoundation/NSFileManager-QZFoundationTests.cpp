#include "QZFoundation/NSFileManager-QZFoundation.h"

#include <sys/stat.h>
#include <unistd.h>

#include "QZFoundation/QZFileManagerErrorHandler.h"
#include "tests/support/FaultySystem.h"
#include "tests/support/FileTest.h"

namespace qz::test {
namespace {

class FileOperationsTest : public FileTest {
 protected:
  FileOperationsTest() { manager = currentThreadFileManager(); }
};

TEST_F(FileOperationsTest, TheHandlerKeepsOneErrorUntilItIsRead) {
  auto handler = QZFileManagerErrorHandler::sharedHandler();
  auto failure = NSDictionary::of({{"Error"_ns, "why"_ns}});
  errno = EACCES;
  EXPECT_FALSE(send<bool>(handler, "fileManager:shouldProceedAfterError:"_sel, manager, failure));
  errno = EBUSY;
  handler->fileManager_shouldProceedAfterError(manager, failure);
  auto error = handler->lastError();
  EXPECT_EQ(error->domain(), NSPOSIXErrorDomain);
  EXPECT_EQ(error->code(), EBUSY);
  EXPECT_EQ(textOf(error), "why");
  EXPECT_EQ(error->userInfo()->count(), 1u);
  EXPECT_FALSE(handler->lastError());
  for (const Ref<NSDictionary>& none : {Ref<NSDictionary>(), NSDictionary::dictionary()}) {
    handler->fileManager_shouldProceedAfterError(nullptr, none);
    EXPECT_EQ(handler->lastError()->userInfo()->count(), 0u);
  }
  handler->setLastError(error);
  // What nobody read is told by the next operation that asks.
  directory.write("file", "");
  EXPECT_EQ(removeFileAtPath(manager, path("file")), error);
  EXPECT_FALSE(fs::exists(at("file")));
}

TEST_F(FileOperationsTest, FailuresAreErrorsInTheirWords) {
  directory.write("file", "");
  directory.write("folder/inner", "");
  const std::string missing = at("missing") + ": No such file or directory";
  const Ref<NSFileManager> plain = make<PlainManager>();
  struct Case {
    Ref<NSError> error;
    int code;
    std::string text;
  };
  for (const Case& each : std::vector<Case>{
           {removeFileAtPath(manager, path("missing")), ENOENT, missing},
           {removeFileAtPath(manager, nullptr), ENOENT, ": No such file or directory"},
           {movePath_toPath(manager, path("missing"), path("new")), ENOENT,
            "Unable to move from " + at("missing") + " to " + at("new") + " (" + missing + ")"},
           {movePath_toPath(manager, path("file"), path("folder")), EEXIST,
            "Unable to move from " + at("file") + " to " + at("folder") + " (" + at("folder") +
                ": File exists)"},
           {linkPath_toPath(manager, path("missing"), path("new")), ENOENT, missing},
           {linkPath_toPath(plain, path("missing"), path("new")), ENOENT,
            "Could not link " + at("new") + " to " + missing + " ()"},
           {touchFileAtPath(manager, path("missing")), ENOENT,
            "Could not change mod date of flie at " + at("missing")},
           {setCreationDate_forFileAtPath(manager, nullptr, path("file")), EINVAL,
            "Could not set creation date for file " + at("file")},
           {createDirectoryAtPath(manager, path("folder")), EEXIST,
            "Could not create directory at " + at("folder")},
           {createDirectoryAtPath(manager, path("file/a/b")), ENOTDIR,
            "Could not create directory at " + at("file/a")},
           {createDirectoryAtPath(manager, path(std::string(5000, 'x') + "/y")), ENAMETOOLONG,
            "Could not create directory at " + at(std::string(5000, 'x') + "/y")},
           {createDirectoryAtPath(manager, nullptr), ENOENT, "Could not create directory at "},
       }) {
    ASSERT_TRUE(each.error) << each.text;
    EXPECT_EQ(each.error->code(), each.code) << each.text;
    EXPECT_EQ(each.error->domain(), NSPOSIXErrorDomain);
    EXPECT_EQ(textOf(each.error), each.text);
  }
  EXPECT_FALSE(QZFileManagerErrorHandler::sharedHandler()->lastError());
}

TEST_F(FileOperationsTest, WhatSucceedsAnswersNil) {
  const Ref<NSFileManager> plain = make<PlainManager>();
  directory.write("file", "text");
  setTime(at("file"), 1, 0);
  EXPECT_EQ(textOf(touchFileAtPath(manager, path("file"))), "");
  struct ::stat status {};
  ::stat(at("file").c_str(), &status);
  EXPECT_LT(std::abs(status.st_mtim.tv_sec - ::time(nullptr)), 100);
  EXPECT_EQ(textOf(movePath_toPath(manager, path("file"), path("moved"))), "");
  EXPECT_EQ(textOf(linkPath_toPath(manager, path("moved"), path("linked"))), "");
  EXPECT_EQ(textOf(linkPath_toPath(plain, path("moved"), path("linked too"))), "");
  ::stat(at("linked").c_str(), &status);
  EXPECT_EQ(status.st_nlink, 3u);
  auto long_ago = dateAt(-5e9);
  EXPECT_EQ(textOf(setCreationDate_forFileAtPath(manager, long_ago, path("moved"))), "");
  EXPECT_TRUE(equal(
      fileCreationDate(manager->fileAttributesAtPath_traverseLink(path("moved"), true)), long_ago));
  auto secret = NSDictionary::of({{NSFilePosixPermissions, number(0700)}});
  EXPECT_FALSE(createDirectoryAtPath_attributes_createParents(manager, path("a/b"), secret, false));
  EXPECT_TRUE(createDirectoryAtPath_attributes_createParents(manager, path("a/b"), secret, true));
  EXPECT_EQ(fs::status(at("a")).permissions(), fs::perms::owner_all);
  EXPECT_FALSE(
      createDirectoryAtPath_attributes_createParents(manager, path("moved/b/c"), secret, true));
  const std::string before = fs::current_path();
  fs::current_path(directory.path());
  EXPECT_TRUE(createDirectoryAtPath_attributes_createParents(manager, "r/s/t"_ns, nullptr, true));
  EXPECT_EQ(textOf(createDirectoryAtPath(manager, "relative/too"_ns)), "");
  fs::current_path(before);
  EXPECT_TRUE(fs::is_directory(at("r/s/t")) && fs::is_directory(at("relative/too")));
}

TEST_F(FileOperationsTest, EachThreadHasAManager) {
  EXPECT_EQ(manager, currentThreadFileManager());
  std::thread([&] { EXPECT_NE(currentThreadFileManager(), manager); }).join();
}

TEST_F(FileOperationsTest, PathsAreShownAsTheyLeadThere) {
  directory.write("a:b/c", "");
  for (const std::string& each : {at("a:b/c"), std::string("/"), at("missing")})
    EXPECT_EQ(to_string(displayPathForPath(manager, ns(each))), each);
  EXPECT_EQ(to_string(displayPathForPath(manager, ns(at("a:b//c/")))), at("a:b/c"));
  auto odd = path("a:b//c");
  EXPECT_EQ(displayPathForPath(make<PlainManager>(), odd), odd);
}

TEST_F(FileOperationsTest, TypesAndSizes) {
  directory.write("file", std::string(10000, 'x'));
  fs::create_symlink("file", at("link"));
  fs::create_directory_symlink(".", at("folder link"));
  fs::create_symlink("nowhere", at("dangling"));
  ::mkfifo(at("pipe").c_str(), 0600);
  makeSocket(at("socket"));
  std::ofstream(at("sparse"));
  fs::resize_file(at("sparse"), 1 << 20);
  const struct {
    std::string path;
    std::uint32_t type, followed;
    std::uint64_t size;
  } cases[] = {
      {"file", 1, 1, 10000},    {"sparse", 1, 1, 1 << 20}, {".", 2, 2, 0},    {"link", 5, 1, 0},
      {"folder link", 5, 2, 0}, {"dangling", 5, 0, 0},     {"pipe", 7, 7, 0}, {"socket", 6, 6, 0},
      {"/dev/null", 4, 4, 0},   {"missing", 0, 0, 0},      {"", 0, 0, 0}};
  for (const auto& each : cases) {
    auto name = path(each.path);
    EXPECT_EQ(objectTypeAtPath(manager, name), each.type) << each.path;
    EXPECT_EQ(objectTypeAtPath_traverseLink(manager, name, true), each.followed) << each.path;
    EXPECT_EQ(isDirectoryAtPath(manager, name), each.followed == 2) << each.path;
    EXPECT_EQ(isDirectoryAtPath_traverseLink(manager, name, false), each.type == 2) << each.path;
    EXPECT_EQ(totalSizeOfFileAtPath(manager, name), each.size) << each.path;
    EXPECT_EQ(dataForkSizeOfFileAtPath(manager, name), each.size) << each.path;
    // How much room a file takes is the file system's affair.
    struct ::stat about {};
    ::lstat(at(each.path).c_str(), &about);
    const auto room =
        S_ISREG(about.st_mode) ? 512 * static_cast<std::uint64_t>(about.st_blocks) : 0;
    EXPECT_EQ(physicalSizeOfFileAtPath(manager, name), room) << each.path;
  }
  EXPECT_FALSE(isDirectoryAtPath(manager, nullptr));
}

/// Notes what a walk tells it, and stops it at one of the paths.
class Visitor : public Derives<Visitor, NSObject> {
 public:
  static void describe(ClassDescription<Visitor>& is) {
    is.named("QZFileTestVisitor").method<&Visitor::visit_with>("visit:with:");
  }
  Ref<NSObject> visit_with(NSString* path, NSObject* object) {
    const std::string bytes = path->fileSystemRepresentation();
    seen.push_back(bytes.substr(std::min(bytes.size(), top.size())));
    return bytes == top + stop ? Ref<NSObject>(object) : nullptr;
  }
  std::vector<std::string> seen;
  std::string top;
  std::string stop = "(nowhere)";
};

class WalkTest : public FileOperationsTest {
 protected:
  Ref<NSObject> walk(int type, const std::string& top) {
    visitor = make<Visitor>();
    visitor->top = directory.path();
    visitor->stop = stop;
    return iterateDirectory_recursionType_target_selector_withObject(
        manager, ns(top), type, visitor, "visit:with:"_sel, "found"_ns);
  }
  Ref<Visitor> visitor;
  std::string stop = "(nowhere)";
};

TEST_F(WalkTest, TellsOfEntriesInTheOrderAskedFor) {
  directory.write("f/g/h", "");
  fs::create_symlink("nowhere", at("f/dangling"));
  EXPECT_FALSE(walk(0, at("f")));
  EXPECT_THAT(visitor->seen, ElementsAre("/f/g"));
  EXPECT_FALSE(walk(1, at("f/")));
  EXPECT_THAT(visitor->seen, ElementsAre("/f/", "/f/g", "/f/g/h"));
  EXPECT_FALSE(walk(2, at("f")));
  EXPECT_THAT(visitor->seen, ElementsAre("/f/g/h", "/f/g", "/f"));
  EXPECT_FALSE(walk(3, at("f")));
  EXPECT_THAT(visitor->seen, ElementsAre("/f/g/h"));
  // The first answer ends it, and no folder is told of after that.
  stop = "/f/g/h";
  for (int type : {1, 2}) {
    EXPECT_EQ(to_string(walk(type, at("f"))), "found");
    EXPECT_EQ(visitor->seen.back(), "/f/g/h");
  }
  stop = "(nowhere)";
  // Links to folders are gone through, until there are too many in a path.
  fs::create_directory_symlink(".", at("f/g/loop"));
  EXPECT_FALSE(walk(1, at("f")));
  EXPECT_GT(visitor->seen.size(), 40u);
  EXPECT_LT(visitor->seen.size(), 200u);
  EXPECT_FALSE(iterateDirectory_recursively_target_selector_withObject(
      manager, path("f"), false, nullptr, "visit:with:"_sel, nullptr));
}

TEST_F(WalkTest, NamesOfAnyBytesComeBack) {
  for (const char* name : {"n/caf\xE9", "n/caf\xC3\xA9", "n/\n:", "n/\xED\xB2\x80"})
    directory.write(name, "");
  EXPECT_FALSE(walk(0, at("n")));
  EXPECT_THAT(visitor->seen,
              UnorderedElementsAre("/n/caf\xE9", "/n/caf\xC3\xA9", "/n/\n:", "/n/\xED\xB2\x80"));
  auto paths = pathsOfDirectoryContentsAtPath(manager, path("n"));
  ASSERT_EQ(paths->count(), 4u);
  for (NSString* each : elements<NSString>(paths))
    EXPECT_EQ(textOf(removeFileAtPath(manager, each)), "");
  EXPECT_TRUE(fs::is_empty(at("n")));
  EXPECT_FALSE(pathsOfDirectoryContentsAtPath(manager, path("missing")));
}

TEST_F(WalkTest, AnUnreadableDirectoryEndsItWithAnError) {
  auto error = as<NSError>(walk(1, at("missing")));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_EQ(textOf(error), "The directory " + at("missing") + " could not be read");
  EXPECT_THAT(visitor->seen, ElementsAre("/missing"));
  EXPECT_TRUE(as<NSError>(walk(0, "")));
  directory.write("f/g/h", "");
  FaultySystem system;
  system.listener = [&](SystemCall kind, const char* path) {
    if (kind == SystemCall::Open && std::string_view(path).ends_with("/g"))
      system.failCall(1, EACCES);
  };
  error = as<NSError>(walk(2, at("f")));
  EXPECT_EQ(error->code(), EACCES);
  EXPECT_EQ(textOf(error), "The directory " + at("f/g") + " could not be read");
  EXPECT_THAT(visitor->seen, ElementsAre());
  system.listener = nullptr;
  system.failAll(SystemCall::ListDirectory, EIO);
  EXPECT_EQ(as<NSError>(walk(0, at("f")))->code(), EIO);
}

}  // namespace
}  // namespace qz::test
