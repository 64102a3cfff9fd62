#include "QZFoundation/QZFileWatcher.h"

#include <sys/mount.h>

#include "Platform/Concurrency/NSNotificationCenter.h"
#include "tests/support/Diagnostics.h"
#include "tests/support/FaultySystem.h"
#include "tests/support/Files.h"
#include "tests/support/Serving.h"

namespace qz::test {
namespace {

class WatcherDelegate : public Derives<WatcherDelegate, NSObject> {
 public:
  static void describe(ClassDescription<WatcherDelegate>& is) {
    is.named("WatcherDelegate").method<&WatcherDelegate::changed>("fileWatcherDidDetectChange:");
  }
  void changed(QZFileWatcher* watcher) {
    EXPECT_TRUE(NSThread::isMainThread());
    ++changes;
    if (fails) NSException::raise_reason(NSGenericException, "a failing delegate"_ns);
    last = Ref<QZFileWatcher>(watcher);
  }
  int changes = 0;
  bool fails = false;
  Ref<QZFileWatcher> last;
};

class QZFileWatcherTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(NSThread::isMainThread()); }
  void TearDown() override {
    delegate->last = nullptr;
    watcher = nullptr;
  }
  Ref<NSString> path(const char* name) { return ns(directory.path() + "/" + name); }
  void watch(NSString* of, bool kernel = false) {
    watcher = QZFileWatcher::initWithPath_usingKernelEvents(of, kernel);
    watcher->setDelegate(delegate);
  }
  static void setTime(const std::string& of, long nanoseconds) {
    test::setTime(of, 1'700'000'000, nanoseconds);
  }
  /// A pass here and now, for the polling thread's second is long.
  int polled() {
    delegate->changes = 0;
    QZFileWatcher::checkFiles(nullptr);
    return delegate->changes;
  }
  int served(int atLeast) {
    delegate->changes = 0;
    serveUntil([&] { return delegate->changes >= atLeast; });
    NSRunLoop::mainRunLoop()->runUntilDate(inSeconds(0.02));
    return delegate->changes;
  }
  TemporaryDirectory directory;
  Ref<WatcherDelegate> delegate = make<WatcherDelegate>();
  Ref<QZFileWatcher> watcher;
};

TEST_F(QZFileWatcherTest, ComparesTimesToTheNanosecond) {
  const std::string file = directory.write("a", "");
  setTime(file, 1);
  watch(path("a"));
  EXPECT_TRUE(watcher->usesTimer());
  EXPECT_EQ(polled(), 0);
  setTime(file, 2);
  EXPECT_EQ(polled(), 1);
  EXPECT_EQ(polled(), 0);
  setTime(file, 1);  // a clock that was set back
  EXPECT_EQ(polled(), 1);
  EXPECT_THAT(to_string(watcher), testing::ContainsRegex("/a, watchingPath = .*isTimer = 1}"));
}

TEST_F(QZFileWatcherTest, FollowsAFileThatComesAndGoes) {
  for (const bool kernel : {false, true}) {
    const auto change = [&](const std::function<void()>& what) {
      NSThread::sleepForTimeInterval(0.02);  // a folder's time moves in steps
      what();
      return kernel ? served(1) : polled();
    };
    const std::string top = directory.path(), file = top + "/sub/file";
    watch(path("sub/file"), kernel);
    EXPECT_EQ(watcher->usesTimer(), !kernel);
    EXPECT_EQ(to_string(watcher->watchingPath()), directory.path());
    EXPECT_GE(change([&] { fs::create_directory(top + "/sub"); }), 1);
    EXPECT_EQ(to_string(watcher->watchingPath()), top + "/sub");
    EXPECT_GE(change([&] { directory.write("sub/file", "x"); }), 1);
    EXPECT_EQ(to_string(watcher->watchingPath()), file);
    // As editors do: another file takes the place.
    const auto replace = [&] { fs::rename(directory.write("new", "longer"), file); };
    EXPECT_GE(change(replace), 1);
    EXPECT_GE(change([&] { directory.write("sub/file", "again"); }), 1);
    EXPECT_GE(change([&] { fs::remove_all(top + "/sub"); }), 1);
    if (kernel) servePending();
    EXPECT_EQ(to_string(watcher->watchingPath()), directory.path());
    EXPECT_EQ(delegate->last, watcher);
  }
}

TEST_F(QZFileWatcherTest, NamesNeedNotBeUtf8) {
  for (const bool kernel : {false, true}) {
    const std::string file = directory.write("a\xFF", "");
    watch(path("a\xFF"), kernel);
    EXPECT_TRUE(equal(watcher->watchingPath(), path("a\xFF")));
    EXPECT_EQ(watcher->usesTimer(), !kernel);
    setTime(file, 1);
    if (kernel) directory.write("a\xFF", "more");
    EXPECT_GE(kernel ? served(1) : polled(), 1);
  }
  watch(ns({u"/\0x", 3}));
  EXPECT_TRUE(equal(watcher->watchingPath(), "/"_ns));
}

TEST_F(QZFileWatcherTest, GoesOnWhenTheDelegateFails) {
  const std::string file = directory.write("a", "");
  delegate->fails = true;
  const Diagnostics diagnostics;
  for (const bool kernel : {false, true}) {
    watch(path("a"), kernel);
    for (long i = 1; i < 4; ++i) {
      setTime(file, i + (kernel ? 10 : 0));
      if (kernel) directory.write("a", "more");
      EXPECT_GE(kernel ? served(1) : polled(), 1);
    }
  }
}

TEST_F(QZFileWatcherTest, PollsWhenTheSystemHasNoWatchToGive) {
  directory.write("a", "");
  FaultySystem system;
  system.failAll(SystemCall::AddWatch, ENOSPC);
  watch(path("a"), true);
  EXPECT_TRUE(watcher->usesTimer());
  directory.write("a", "more");
  EXPECT_EQ(polled(), 1);
  system.heal();
  watcher->watchFile();
  EXPECT_FALSE(watcher->usesTimer());
}

TEST_F(QZFileWatcherTest, NoticesThatTheFileSystemIsUnmounted) {
  for (const bool kernel : {false, true}) {
    const std::string mount = directory.path() + "/mount";
    fs::create_directories(mount);
    if (::mount("none", mount.c_str(), "tmpfs", 0, nullptr) != 0) GTEST_SKIP() << "may not mount";
    directory.write("mount/a", "");
    watch(path("mount/a"), kernel);
    EXPECT_EQ(watcher->usesTimer(), !kernel);
    EXPECT_EQ(::umount(mount.c_str()), 0);
    EXPECT_GE(kernel ? served(1) : polled(), 1);
    EXPECT_EQ(to_string(watcher->watchingPath()), mount);
  }
}

TEST_F(QZFileWatcherTest, TellsObserversAndLeavesOthersAlone) {
  const std::string a = directory.write("a", "");
  const std::string b = directory.write("b", "");
  auto other = QZFileWatcher::initWithPath(path("b"));
  int told = 0;
  auto token = NSNotificationCenter::defaultCenter()->observe(
      QZFileDidChangeNotification, nullptr, [&](NSNotification* notification) {
        EXPECT_EQ(notification->object(), other);
        ++told;
      });
  watch(path("a"));
  setTime(b, 77);
  EXPECT_EQ(polled(), 0);
  EXPECT_EQ(told, 1);
  EXPECT_TRUE(refuses([] { (void)QZFileWatcher::initWithPath(nullptr); }));
}

TEST_F(QZFileWatcherTest, APathIsPolledOnceForAll) {
  const std::string a = directory.write("a", "");
  watch(path("a"));
  auto other = QZFileWatcher::initWithPath(path("a"));
  setTime(a, 5);
  EXPECT_EQ(polled(), 1);
  other = nullptr;  // takes the polling along
  setTime(a, 6);
  EXPECT_EQ(polled(), 0);
  watcher->watchFile();
  EXPECT_EQ(polled(), 1);
  watcher->unwatchFile();
  watcher->watchPathUsingTimer();  // there is none now
  setTime(a, 7);
  EXPECT_EQ(polled(), 0);
}

TEST_F(QZFileWatcherTest, AHundredShareOneQueueOfTheKernel) {
  const auto queues = [] {
    int found = 0;
    for (const auto& each : fs::directory_iterator("/proc/self/fd")) {
      std::error_code gone;  // the one that reads the folder
      found += fs::read_symlink(each, gone).string().ends_with("inotify") ? 1 : 0;
    }
    return found;
  };
  const int before = queues();  // of which one may be theirs already
  std::vector<Ref<QZFileWatcher>> watchers;
  for (int i = 0; i < 100; ++i) {
    const std::string file = directory.write(std::to_string(i), "");
    watchers.push_back(QZFileWatcher::initWithPath_usingKernelEvents(ns(file), true));
    ASSERT_FALSE(watchers.back()->usesTimer());
  }
  EXPECT_GE(queues(), 1);
  EXPECT_LE(queues(), before + 1);
}

TEST_F(QZFileWatcherTest, OneThreadPollsWhileThereIsSomethingToPoll) {
  const auto settle = [](int expected) {
    for (int i = 0; i < 2000 && threadsNamed("QZFileWatcher") != expected; ++i)
      NSThread::sleepForTimeInterval(0.001);
    return threadsNamed("QZFileWatcher");
  };
  EXPECT_EQ(settle(0), 0);
  const std::string a = directory.write("a", "");
  watch(path("a"));
  for (int i = 0; i < 100; ++i) watcher->watchFile();
  EXPECT_EQ(settle(1), 1);
  auto other = QZFileWatcher::initWithPath(path("b"));
  setTime(a, 9);
  EXPECT_GE(served(1), 1);  // by the thread itself, within about a second
  other = nullptr;
  EXPECT_EQ(settle(1), 1);
  watcher->unwatchFile();
  EXPECT_EQ(settle(0), 0);
  watcher->watchFile();
  EXPECT_EQ(settle(1), 1);
  delegate->last = watcher = nullptr;
  EXPECT_EQ(settle(0), 0);
}

}  // namespace
}  // namespace qz::test
