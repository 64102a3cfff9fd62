// The example backup, through its command line.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/Command.h"
#include "tests/support/Files.h"

namespace qz::test {
namespace {

class Backup : public CommandTest {
 protected:
  Backup() : CommandTest("examples/backup") { fs::create_directory(source); }

  void write(const std::string& name, std::string_view bytes) const {
    directory_.write(name, bytes);
  }
  /// Another process with the command, whose errors go to a descriptor.
  pid_t start(const char* option, int errors = STDERR_FILENO) const {
    const pid_t child = ::fork();
    if (child != 0) return child;
    ::dup2(errors, STDERR_FILENO);
    ::execl(program().c_str(), "backup", "--quiet", option, source.c_str(), copy.c_str(), nullptr);
    ::_exit(127);
  }

  const std::string source = directory_.path() + "/source";
  const std::string copy = directory_.path() + "/to/copy";
};

ino_t numberOf(const std::string& path) {
  struct ::stat about;
  return ::lstat(path.c_str(), &about) == 0 ? about.st_ino : 0;
}

TEST_F(Backup, CopiesEverythingAndOverwrites) {
  write("source/a/b/file", "contents");
  write("source/a/\xff\n", "a name that is no text");
  write("source/large", std::string(30'000, 'x'));
  write("source/closed/file", "in a folder that cannot be written to");
  fs::create_symlink("nowhere", source + "/a/link");
  fs::permissions(source + "/large", fs::perms(0640));
  fs::permissions(source + "/closed", fs::perms(0555));
  // Where the file system has such attributes.
  for (const char* name : {"/a", "/large"})
    ::setxattr((source + name).c_str(), "user.colour", "red", 3, 0);
  for (const char* name : {"/a/b/file", "/large", "/closed", "/a/b", "/a", ""})
    setTime(source + name, 1'000'000'000, 0);

  const Outcome first = run("--verify source to/copy");
  EXPECT_EQ(first.status, 0) << first.output;
  EXPECT_EQ(snapshot(copy), snapshot(source));
  EXPECT_EQ(first.output.find_first_of("\r\x1b"), std::string::npos);  // not for a terminal
  EXPECT_THAT(first.output, HasSubstr("30.0 KB  large\n"));
  EXPECT_THAT(first.output, HasSubstr("8.0 bytes  file  (b)\n"));

  // What is at the destination gives way, but is not followed; only what changed is copied.
  const ino_t unchanged = numberOf(copy + "/large");
  write("outside", "not to be touched");
  fs::remove(copy + "/a/b/file");
  fs::create_symlink("../../../../outside", copy + "/a/b/file");
  fs::remove(source + "/a/link");
  fs::create_symlink("elsewhere", source + "/a/link");
  setTime(source + "/a", 1'000'000'000, 0);
  const Outcome second = run("--update --verify --quiet source to/copy");
  EXPECT_EQ(second.status, 0) << second.output;
  EXPECT_EQ(second.output, "");
  Snapshot expected = snapshot(source), there = snapshot(copy);
  expected[""] = there[""];  // the folders' own times differ
  EXPECT_EQ(there, expected);
  EXPECT_EQ(contentsOf(directory_.path() + "/outside"), "not to be touched");
  EXPECT_EQ(numberOf(copy + "/large"), unchanged);
  EXPECT_EQ(run("--quiet source to/copy").status, 0);
  EXPECT_NE(numberOf(copy + "/large"), unchanged);
  for (const std::string& top : {source, copy}) fs::permissions(top + "/closed", fs::perms(0755));
}

TEST_F(Backup, ListsWhatFailedAndGoesOn) {
  write("source/a/same", "1234");
  write("source/a/taken", "x");
  write("source/closed/file", "x");
  write("source/z", "x");
  write("to/copy/a/taken/kept", "all that is left");
  write("to/copy/a/same", "4321");
  for (const std::string& top : {source, copy}) setTime(top + "/a/same", 1'000'000'000, 0);
  // Nothing is closed to root.
  const bool isRoot = ::geteuid() == 0;
  if (!isRoot) fs::permissions(source + "/closed", fs::perms(0));

  const Outcome outcome = run("--update --verify --quiet source to/copy");
  fs::permissions(source + "/closed", fs::perms(0755));
  EXPECT_EQ(outcome.status, 1);
  std::vector<std::string> failures{"failed: a/same: The copy differs",
                                    "failed: a/taken: The copy has a folder in its place",
                                    "failed: a/taken: The copy is of another kind"};
  if (!isRoot) failures.push_back("failed: closed: Permission denied");
  for (const std::string& each : failures) EXPECT_THAT(outcome.output, HasSubstr(each + "\n"));
  EXPECT_EQ(std::ranges::count(outcome.output, '\n'), std::ssize(failures)) << outcome.output;
  EXPECT_EQ(contentsOf(copy + "/z"), "x");
  EXPECT_EQ(contentsOf(copy + "/a/taken/kept"), "all that is left");
}

// More failures than its pipe has room for: it cannot come to an end before they are read.
TEST_F(Backup, CtrlCEndsItBetweenTwoFiles) {
  for (int i = 0; i < 400; ++i) {
    const std::string name = std::to_string(i);
    write("source/" + name, std::string(200'000, static_cast<char>('a' + i % 26)));
    if (i % 2 == 0) fs::create_directories(copy + '/' + name);
  }
  int output[2];
  ASSERT_EQ(::pipe(output), 0);
  ASSERT_GE(::fcntl(output[0], F_SETPIPE_SZ, 4096), 0);
  const pid_t child = start("--quiet", output[1]);
  ::close(output[1]);
  for (int waiting = 0; waiting < 3000; ::usleep(1000)) ::ioctl(output[0], FIONREAD, &waiting);
  ::kill(child, SIGINT);
  std::array<char, 4096> buffer;
  while (::read(output[0], buffer.data(), buffer.size()) > 0) {
  }
  ::close(output[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 128 + SIGINT) << status;

  int copies = 0;
  for (const fs::directory_entry& each : fs::directory_iterator(copy)) {
    if (each.is_directory()) continue;
    ++copies;
    const std::string name = each.path().filename();
    EXPECT_TRUE(contentsOf(each.path()) == contentsOf(source + '/' + name)) << name;
  }
  EXPECT_LT(copies, 200);
}

TEST_F(Backup, WatchesUntilCtrlC) {
  write("source/a/old", "old");
  write("source/closed/old", "old");
  fs::permissions(source + "/closed", fs::perms(0555));
  const pid_t child = start("--watch");
  const auto waitFor = [](const std::string& path, const std::string& bytes) {
    for (int i = 0; i < 5000 && contentsOf(path) != bytes; ++i) ::usleep(1000);
    EXPECT_EQ(contentsOf(path), bytes) << path;
  };
  waitFor(copy + "/a/old", "old");
  write("source/new/deep/file", "new");
  write("source/a/old", "changed");
  waitFor(copy + "/new/deep/file", "new");
  waitFor(copy + "/a/old", "changed");
  fs::rename(source + "/new", source + "/renamed");
  fs::remove(source + "/a/old");
  waitFor(copy + "/renamed/deep/file", "new");
  EXPECT_EQ(contentsOf(copy + "/a/old"), "changed");  // nothing is removed
  ::kill(child, SIGINT);
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status)) << status;
  for (const std::string& top : {source, copy}) fs::permissions(top + "/closed", fs::perms(0755));
}

TEST_F(Backup, TakesUserDefaultsAndRefusesWrongUse) {
  write("source/file", "x");
  fs::create_directory(directory_.path() + "/Desktop");
  ::setenv("HOME", directory_.path().c_str(), 1);
  EXPECT_EQ(run("-QZDebug '(progress)' --quiet source copy").status, 0);
  EXPECT_THAT(contents("Desktop/backup.log"), HasSubstr("(100.000000)\n"));

  // A destination in the source is left out, again and again.
  for (int i = 0; i < 2; ++i) EXPECT_EQ(run("--quiet source source/copy").status, 0);
  EXPECT_EQ(snapshot(source + "/copy").size(), 2u);

  EXPECT_EQ(run("--help").status, 0);
  expect("none copy", 1,
         "from " + directory_.path() + "/none\nto   " + directory_.path() +
             "/copy\nbackup: " + directory_.path() + "/none: No such file or directory\n");
  for (const char* arguments : {"--frob", "--largest=x source copy", "a b c", "--watch source",
                                "source source/../source", "source/.. .", "source ."})
    EXPECT_EQ(run(arguments).status, 2) << arguments;
}

}  // namespace
}  // namespace qz::test
