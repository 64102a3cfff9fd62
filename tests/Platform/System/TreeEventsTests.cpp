#include "Platform/System/detail/TreeEvents.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "tests/support/FaultySystem.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

using namespace detail;

std::string described(TreeChanges& changes, const std::string& root) {
  static const char letters[] = "cxdras";  // created, changed, deleted, renamed, attributes, rescan
  std::string all;
  const auto below = [&](const std::string& path) {
    return path == root ? std::string(".") : path.substr(root.size() + 1);
  };
  for (const TreeChanges::Change& each : changes.take()) {
    for (int i = 0; i < 6; ++i)
      if ((each.kinds >> i & 1) != 0) all += letters[i];
    all += ':' + below(each.path) + (each.isFolder ? "/" : "");
    if (!each.other.empty()) all += '=' + below(each.other);
    all += ' ';
  }
  return all;
}

class TreeEventsTest : public ::testing::Test {
 protected:
  void start(TreeEvents::Options options = {}) {
    events.emplace(root, std::move(options));
    ASSERT_EQ(events->start(), 0);
  }
  /// What has happened since the last time.
  std::string news() {
    TreeChanges all;
    for (int i = 0; i < 3 && events->wait(0); ++i) {
      TreeChanges changes;
      events->settle(changes);
      all.merge(std::move(changes));
    }
    return described(all, root);
  }
  std::string at(const std::string& name) const { return root + "/" + name; }
  void write(const std::string& name, std::string_view text = "") {
    directory.write("root/" + name, text);
  }
  void move(const std::string& from, const std::string& to) {
    ASSERT_EQ(std::rename(at(from).c_str(), at(to).c_str()), 0) << from << ' ' << to;
  }
  TemporaryDirectory directory;
  const std::string root = [&] {
    fs::create_directory(directory.path() + "/root");
    return directory.path() + "/root";
  }();
  std::optional<TreeEvents> events;
};

TEST_F(TreeEventsTest, TellsWhatCameOfIt) {
  fs::create_directories(at("d/deep"));
  for (const char* name : {"a", "b", "d/x", "d/deep/y"}) write(name, "text");
  start();
  EXPECT_EQ(news(), "");
  const std::pair<std::function<void()>, const char*> cases[] = {
      {[&] { write("new", "text"); }, "c:new "},
      {[&] { write("new", "other"), write("d/deep/y", "other"); }, "x:d/deep/y x:new "},
      {[&] { ::chmod(at("new").c_str(), 0600); }, "a:new "},
      {[&] { write("brief"), fs::remove(at("brief")); }, ""},
      {[&] { fs::remove(at("new")), write("new", "third"); }, "x:new "},
      {[&] { move("new", "old"); }, "dr:new=old cr:old=new "},
      {[&] { move("old", "b"); }, "xr:b=old dr:old=b "},
      {[&] { move("a", "a1"), move("a1", "a2"), write("a2", "more"); }, "dr:a=a2 cxr:a2=a "},
      {[&] { move("a2", "t"), move("b", "a2"), move("t", "b"); }, "xr:a2=b xr:b=a2 "},
      {[&] { move("b", "t"), move("t", "b"); }, "x:b "},
      {[&] { move("d", "t"), move("t", "d"); }, "x:d/ x:d/deep/ x:d/deep/y x:d/x "},
      {[&] { fs::create_directories(at("n/m")), write("n/m/file"); }, "c:n/ c:n/m/ c:n/m/file "},
      {[&] { write("n/m/file", "1"), move("n/m/file", "n/moved"); },
       "dr:n/m/file=n/moved cxr:n/moved=n/m/file "},
      // A folder that moves takes everything along, also what happens in it at the same time.
      {[&] { move("d", "e"), write("e/x", "more"), move("e/deep", "n/deep"), write("e/z"); },
       "dr:d/=e d:d/deep/ d:d/deep/y dr:d/x=e/x cr:e/=d cxr:e/x=d/x c:e/z c:n/deep/ c:n/deep/y "},
      {[&] { write("e/z", "still told"); }, "x:e/z "},
      {[&] { fs::rename(at("e"), directory.path() + "/outside"); }, "d:e/ d:e/x d:e/z "},
      {[&] { write("../outside/x", "unseen"); }, ""},
      {[&] { fs::rename(directory.path() + "/outside", at("e")); }, "c:e/ c:e/x c:e/z "},
      {[&] { write("e/x", "seen"); }, "x:e/x "},
      {[&] { fs::remove_all(at("e")), write("e", "a file"); }, "x:e d:e/x d:e/z "},
      {[&] { fs::remove(at("e")), fs::create_directory(at("e")), write("e/x"); }, "x:e/ c:e/x "},
      {[&] { fs::remove_all(at("n")), fs::create_directories(at("n/k")); },
       "x:n/ d:n/deep/ d:n/deep/y c:n/k/ d:n/m/ d:n/moved "},
      {[&] { write("n/k/\xFF\xFE"); }, "c:n/k/\xFF\xFE "},
      {[&] { fs::create_directory_symlink(root, at("link")); }, "c:link "},
      {[&] { ::chmod(root.c_str(), 0750); }, "a:./ "},
  };
  for (const auto& [happens, told] : cases) {
    happens();
    EXPECT_EQ(news(), told);
  }
  EXPECT_EQ(events->polledFolders(), 0u);
}

// The tree does not stand still while it is looked at.
TEST_F(TreeEventsTest, FoldersMayMoveMeanwhile) {
  write("d/x", "text");
  write("d/deep/y");
  start();
  write("d/x", "more");  // looked at first, and what was found must move along
  fs::create_directory(at("e"));
  fs::remove(at("e"));
  FaultySystem system;
  system.listener = [&](SystemCall call, const char* path) {
    if (call != SystemCall::Statx || path != std::string("e")) return;
    system.listener = nullptr;
    move("d", "e");
    write("e/deep/y", "more");
  };
  EXPECT_EQ(news(),
            "dr:d/=e dr:d/deep/=e/deep dr:d/deep/y=e/deep/y dr:d/x=e/x cr:e/=d cr:e/deep/=d/deep "
            "cxr:e/deep/y=d/deep/y cxr:e/x=d/x ");
}

TEST_F(TreeEventsTest, LeavesOutWhatItIsTold) {
  start({true, {".git", "*.o"}});
  write(".git/config");
  write("a.o");
  write("sub/.git/config");
  write("sub/b");
  EXPECT_EQ(news(), "c:sub/ c:sub/b ");
  move("sub/b", "sub/b.o");
  move("a.o", "a");
  EXPECT_EQ(news(), "c:a d:sub/b ");
  start({false, {}});
  write("sub/c");
  write("a", "x");
  ::rmdir(at("none").c_str());
  fs::create_directory(at("none"));
  EXPECT_EQ(news(), "x:a c:none/ ");
}

TEST_F(TreeEventsTest, FollowsTheFolderThatIsWatched) {
  write("sub/a");
  start();
  fs::rename(root, directory.path() + "/elsewhere");
  EXPECT_EQ(news(), "d:./ d:sub/ d:sub/a ");
  EXPECT_TRUE(events->needsPolling());
  write("b");
  events->poll();
  EXPECT_EQ(news(), "c:./ c:b ");
  write("b", "x");
  EXPECT_EQ(news(), "x:b ");
  // Another folder takes its place at once.
  write("../other/c");
  fs::remove_all(root);
  fs::rename(directory.path() + "/other", root);
  EXPECT_EQ(news(), "x:./ d:b c:c ");
  write("c", "x");
  EXPECT_EQ(news(), "x:c ");
  TreeEvents missing(at("missing"), {});
  EXPECT_EQ(missing.start(), ENOENT);
  TreeEvents file(at("c"), {});
  EXPECT_EQ(file.start(), ENOTDIR);
}

TEST_F(TreeEventsTest, ListsAnewWhenTheKernelHasLostEvents) {
  std::size_t limit = 0;
  std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit;
  if (limit == 0 || limit > 200'000) GTEST_SKIP() << "the queue is too long to overflow here";
  write("sub/gone");
  write("sub/one");
  start();
  for (std::size_t i = 0; i < (limit / 4 + 1) * 2; ++i)
    move(i % 2 == 0 ? "sub/one" : "sub/two", i % 2 == 0 ? "sub/two" : "sub/one");
  fs::remove(at("sub/gone"));
  fs::rename(at("sub"), at("moved"));
  write("moved/later");
  write("new/folder/file");
  EXPECT_EQ(news(),
            "s:./ cr:moved/=sub c:moved/later cr:moved/one=sub/one c:new/ c:new/folder/ "
            "c:new/folder/file dr:sub/=moved d:sub/gone dr:sub/one=moved/one ");
  write("moved/later", "x");
  write("new/folder/file", "x");
  EXPECT_EQ(news(), "x:moved/later x:new/folder/file ");
}

TEST_F(TreeEventsTest, PollsWhatCannotBeWatched) {
  for (const bool hasQueue : {true, false}) {
    FaultySystem system;
    write("sub/a", "1");
    write("b");
    if (hasQueue)
      system.failAll(SystemCall::AddWatch, ENOSPC);
    else
      system.failAll(SystemCall::OpenQueue, EMFILE);
    start();
    EXPECT_EQ(events->polledFolders(), 2u);
    EXPECT_EQ(events->refusal(), hasQueue ? ENOSPC : EMFILE);
    const auto polled = [&] {
      events->poll();
      return news();
    };
    EXPECT_EQ(polled(), "");
    write("sub/a", "22");
    fs::remove(at("b"));
    write("c/d");
    EXPECT_EQ(polled(), "d:b c:c/ c:c/d x:sub/a ");
    EXPECT_EQ(events->polledFolders(), 3u);
    system.heal();
    EXPECT_EQ(polled(), "");
    EXPECT_EQ(events->polledFolders(), 0u);
    EXPECT_FALSE(events->needsPolling());
    write("sub/a", "333");
    fs::remove_all(at("c"));
    EXPECT_EQ(news(), "d:c/ d:c/d x:sub/a ");
  }
}

// Whatever call fails while it looks, for want of descriptors or memory, is made up for later.
TEST_F(TreeEventsTest, AnyCallMayFail) {
  const auto busy = [&](int i) {
    write("a/" + std::to_string(i));
    fs::create_directories(at("b" + std::to_string(i) + "/c"));
    if (i > 0) move("b" + std::to_string(i - 1) + "/c", "a/c" + std::to_string(i));
  };
  start();
  for (int failing = 1; failing < 60; ++failing) {
    for (int i = 0; i < 2; ++i) busy(i);
    {
      FaultySystem system;
      system.failCall(static_cast<std::size_t>(failing), failing % 2 == 0 ? EMFILE : ENOMEM);
      TreeChanges first;
      if (events->wait(0)) events->settle(first);
    }
    TreeChanges rest;
    events->poll();
    for (int i = 0; i < 5 && events->wait(0); ++i) events->settle(rest);
    ASSERT_FALSE(events->isUnsettled());
    // What is known now is what is there: when all of it goes, all of it is told.
    std::string expected = "d:a/ d:a/0 d:a/1 d:a/c1/ d:b0/ d:b1/ d:b1/c/ ";
    for (const auto& each : fs::directory_iterator(root)) fs::remove_all(each);
    ASSERT_EQ(news(), expected) << failing;
  }
}

TEST_F(TreeEventsTest, SurvivesAMountAndItsEnd) {
  fs::create_directory(at("mount"));
  if (::mount("none", at("mount").c_str(), "tmpfs", 0, nullptr) != 0)
    GTEST_SKIP() << "may not mount";
  write("mount/sub/file");
  start();
  write("mount/sub/file", "x");
  EXPECT_EQ(news(), "x:mount/sub/file ");
  ASSERT_EQ(::umount(at("mount").c_str()), 0);
  EXPECT_EQ(news(), "x:mount/ d:mount/sub/ d:mount/sub/file ");
  write("mount/below");
  EXPECT_EQ(news(), "c:mount/below ");
  // The same folder in two places, one of them in itself: it is entered once.
  fs::create_directory(at("mount/again"));
  if (::mount(root.c_str(), at("mount/again").c_str(), nullptr, MS_BIND, nullptr) != 0) return;
  start();
  write("mount/below", "x");
  const std::string told = news();
  ::umount(at("mount/again").c_str());
  EXPECT_EQ(told, "x:mount/below ");
}

TEST(TreeChanges, AddsUpAcrossTimes) {
  const auto told = [](std::vector<std::function<void(TreeChanges&)>> steps) {
    TreeChanges all;
    for (const auto& step : steps) {
      TreeChanges news;
      step(news);
      all.merge(std::move(news));
    }
    return described(all, "");
  };
  const auto moved = [](const char* from, const char* to) {
    return [=](TreeChanges& news) {
      news.gone(from, false);
      news.come(to, false, from);
    };
  };
  const auto touched = [](const char* path) {
    return [=](TreeChanges& news) { news.touched(path, false, treeChanged); };
  };
  EXPECT_EQ(told({moved("/a", "/b"), moved("/b", "/c")}), "dr:a=c cr:c=a ");
  EXPECT_EQ(told({touched("/a"), moved("/a", "/b")}), "dr:a=b cxr:b=a ");
  EXPECT_EQ(told({moved("/a", "/b"), touched("/b"), moved("/b", "/a")}), "x:a ");
  EXPECT_EQ(told({moved("/a", "/b"), moved("/b", "/a")}), "x:a ");
  EXPECT_EQ(told({[](TreeChanges& news) { news.come("/n", false); }, moved("/n", "/m")}), "c:m ");
  EXPECT_EQ(told({moved("/a", "/b"), [](TreeChanges& news) { news.gone("/b", false); }}), "d:a ");
}

}  // namespace
}  // namespace qz::test
