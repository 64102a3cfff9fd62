#include "QZFoundation/XJKQueue.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Concurrency/NSNotificationCenter.h"
#include "tests/support/Diagnostics.h"
#include "tests/support/FaultySystem.h"
#include "tests/support/ProcessUse.h"
#include "tests/support/Serving.h"

namespace qz::test {
namespace {

class Delegate : public Derives<Delegate, NSObject> {
 public:
  static void describe(ClassDescription<Delegate>& is) {
    is.named("KQueueDelegate").method<&Delegate::receive>("watcher:receivedNotification:forPath:");
  }
  void receive(XJKQueue*, NSString* name, NSString* path) {
    EXPECT_TRUE(NSThread::isMainThread());
    log += "D" + to_string(name).substr(12) + ":" +
           to_string(path).substr(to_string(path).rfind('/')) + " ";
    if (fails) NSException::raise_reason(NSGenericException, "a failing delegate"_ns);
  }
  std::string log;
  bool fails = false;
};

class XJKQueueTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(NSThread::isMainThread());
    ASSERT_NE(queue, nullptr);
    token = NSNotificationCenter::defaultCenter()->observe(
        nullptr, queue, [this](NSNotification* notification) {
          const std::string path = to_string(notification->userInfo()->objectForKey("path"_ns));
          delegate->log +=
              to_string(notification->name()).substr(12) + ":" + path.substr(path.rfind('/')) + " ";
        });
  }
  /// Serves the main thread until the log has as many words, and a moment longer.
  std::string told(int words) {
    const std::string& log = delegate->log;
    serveUntil([&] { return std::count(log.begin(), log.end(), ' ') >= words; });
    NSRunLoop::mainRunLoop()->runUntilDate(inSeconds(0.02));
    return std::exchange(delegate->log, "");
  }
  Ref<NSString> file(const char* name, const char* text = "") {
    return ns(directory.write(name, text));
  }
  static void append(NSString* path) { std::ofstream(path->UTF8String(), std::ios::app) << "more"; }
  std::string toldOfMore(NSString* path, int words) {
    append(path);
    return told(words);
  }
  TemporaryDirectory directory;
  Ref<XJKQueue> queue = XJKQueue::init();
  Ref<Delegate> delegate = make<Delegate>();
  Ref<NSNotificationToken> token;
};

TEST_F(XJKQueueTest, ReportsEachKindInTheFixedOrder) {
  const auto a = file("a");
  const auto b = file("b");
  EXPECT_EQ(queue->addPathToQueue_notifyingAbout(a, 0x7F), 0);
  EXPECT_EQ(queue->addPathToQueue(b), 0);
  EXPECT_EQ(toldOfMore(a, 2), "WrittenToNotification:/a SizeIncreasedNotification:/a ");
  append(b);
  ::chmod(b->UTF8String().c_str(), 0600);
  EXPECT_EQ(told(2), "WrittenToNotification:/b AttributesChangedNotification:/b ");
  ::link(a->UTF8String().c_str(), (directory.path() + "/link").c_str());
  ::link(b->UTF8String().c_str(), (directory.path() + "/link2").c_str());
  EXPECT_EQ(told(1), "LinkCountChangedNotification:/a ");
  ::rename(b->UTF8String().c_str(), (directory.path() + "/c").c_str());
  EXPECT_EQ(told(1), "RenamedNotification:/b ");
  ::unlink((directory.path() + "/link").c_str());
  ::unlink(a->UTF8String().c_str());
  EXPECT_NE(told(1).find("DeletedNotification:/a "), std::string::npos);
}

TEST_F(XJKQueueTest, RefusesWithErrno) {
  EXPECT_EQ(queue->addPathToQueue("/no/such/file"_ns), ENOENT);
  EXPECT_EQ(queue->addPathToQueue(nullptr), ENOENT);
  EXPECT_EQ(queue->addPathToQueue(ns({u"/\0x", 3})), EINVAL);
  queue->addPath("/no/such/file"_ns);
  queue->removePath("/no/such/file"_ns);
  EXPECT_EQ(to_string(queue), "XJKQueue { watchedPaths = (), alwaysNotify = NO }");
  queue->setAlwaysNotify(true);
  queue->addPath("/"_ns);
  EXPECT_EQ(to_string(queue), "XJKQueue { watchedPaths = (\n    /\n), alwaysNotify = YES }");
}

TEST_F(XJKQueueTest, EqualPathsAreWatchedEach) {
  const auto a = file("a");
  queue->addPath(a);
  queue->addPath(ns(a->UTF8String()));
  EXPECT_EQ(toldOfMore(a, 2), "WrittenToNotification:/a WrittenToNotification:/a ");
  queue->removePath(a);
  EXPECT_EQ(toldOfMore(a, 1), "WrittenToNotification:/a ");
  queue->removePath(a);
  queue->removePath(a);
  EXPECT_EQ(toldOfMore(a, 0), "");
}

TEST_F(XJKQueueTest, NamesNeedNotBeUtf8) {
  std::vector<Ref<NSString>> paths;
  for (const char* name : {"a\xFE", "a\xFF"}) {
    const auto path = ns(directory.write(name, ""));
    EXPECT_EQ(queue->addPathToQueue(path), 0);
    paths.push_back(path);
  }
  queue->removePath(paths[1]);  // and not the one whose name shows alike
  ::chmod(paths[0]->fileSystemRepresentation().c_str(), 0600);
  EXPECT_EQ(told(1), "AttributesChangedNotification:/a\uFFFD ");
}

TEST_F(XJKQueueTest, TellsTheDelegateAndTheObserversAsAsked) {
  const auto a = file("a");
  queue->addPath(a);
  queue->setDelegate(delegate);
  EXPECT_EQ(toldOfMore(a, 1), "DWrittenToNotification:/a ");
  queue->setAlwaysNotify(true);
  EXPECT_EQ(toldOfMore(a, 2), "DWrittenToNotification:/a WrittenToNotification:/a ");
  // One that fails, or dies, does not end the watching.
  delegate->fails = true;
  const Diagnostics diagnostics;
  EXPECT_EQ(toldOfMore(a, 1), "DWrittenToNotification:/a ");
  queue->setDelegate(make<Delegate>());
  EXPECT_EQ(queue->delegate(), nullptr);
  EXPECT_EQ(toldOfMore(a, 1), "WrittenToNotification:/a ");
  EXPECT_NE(diagnostics.said().find("NSGenericException: a failing delegate"), std::string::npos);
}

TEST_F(XJKQueueTest, EndsAtOnceWithItsLastOwner) {
  const int descriptor = queue->queueFD();
  EXPECT_NE(::fcntl(descriptor, F_GETFD), -1);
  const auto start = NSDate::date();
  token = nullptr;
  queue = nullptr;
  while (::fcntl(descriptor, F_GETFD) != -1 && start->timeIntervalSinceNow() > -3)
    NSThread::sleepForTimeInterval(0.001);
  EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
  EXPECT_EQ(XJKQueue::sharedFileWatcher(), XJKQueue::sharedFileWatcher());
}

/// Watches that the kernel knows of.
int kernelWatches(int descriptor) {
  std::ifstream about("/proc/self/fdinfo/" + std::to_string(descriptor));
  int found = 0;
  for (std::string line; std::getline(about, line);) found += line.starts_with("inotify wd:");
  return found;
}

// A million pairs when QZ_STRESS_PAIRS=1000000 says so.
TEST_F(XJKQueueTest, AddingAndRemovingLosesNothing) {
  const char* stress = std::getenv("QZ_STRESS_PAIRS");
  const int pairs = stress != nullptr ? std::atoi(stress) : 20'000;
  const auto a = file("a");
  const auto top = ns(directory.path());
  const auto addAndRemove = [&](int count) {
    for (int i = 0; i < count; ++i) {
      NSString* const path = i % 3 == 0 ? top : a;
      ASSERT_EQ(queue->addPathToQueue(path), 0);
      queue->removePathFromQueue(path);
    }
  };
  addAndRemove(pairs / 10);
  const long open = openDescriptors();
  const long pages = residentPages();
  addAndRemove(pairs);
  EXPECT_EQ(openDescriptors(), open);
  EXPECT_EQ(kernelWatches(queue->queueFD()), 0);
  EXPECT_LT(residentPages() - pages, 512);
  queue->addPath(a);
  EXPECT_EQ(toldOfMore(a, 1), "WrittenToNotification:/a ");
}

TEST_F(XJKQueueTest, WatchesTenThousandFilesWithOneThread) {
  constexpr int count = 10'000;
  const auto first = file("first");
  queue->addPath(first);
  EXPECT_EQ(toldOfMore(first, 1), "WrittenToNotification:/first ");  // so the thread has its name
  queue->removePath(first);
  const int threads = threadsNamed("XJKQueue");
  const long open = openDescriptors();
  std::vector<Ref<NSString>> paths;
  for (int i = 0; i < count; ++i) {
    paths.push_back(file(std::to_string(i).c_str()));
    ASSERT_EQ(queue->addPathToQueue(paths.back()), 0);
  }
  EXPECT_EQ(threadsNamed("XJKQueue"), threads);
  EXPECT_EQ(openDescriptors(), open);
  EXPECT_EQ(kernelWatches(queue->queueFD()), count);
  token = nullptr;
  int told = 0;
  token = NSNotificationCenter::defaultCenter()->observe(nullptr, queue,
                                                         [&](NSNotification*) { ++told; });
  long pages = 0;
  for (int round = 0; round < 3; ++round) {
    told = 0;
    for (int i = round; i < count; i += 10) append(paths[static_cast<std::size_t>(i)]);
    ASSERT_TRUE(serveUntil([&] { return told >= count / 10; }));
    if (round == 0) pages = residentPages();
  }
  EXPECT_LT(residentPages() - pages, 256);
  queue->removeAllPathsFromQueue();
  EXPECT_EQ(kernelWatches(queue->queueFD()), 0);
}

TEST_F(XJKQueueTest, TellsThatThereIsNoWatchLeft) {
  const auto a = file("a");
  FaultySystem system;
  system.failAll(SystemCall::AddWatch, ENOSPC);
  EXPECT_EQ(queue->addPathToQueue(a), ENOSPC);
  system.heal();
  EXPECT_EQ(to_string(queue), "XJKQueue { watchedPaths = (), alwaysNotify = NO }");
  system.failAll(SystemCall::OpenQueue, EMFILE);
  EXPECT_EQ(XJKQueue::init(), nullptr);
}

TEST_F(XJKQueueTest, TellsThatAFileSystemIsUnmounted) {
  const std::string mount = directory.path() + "/mount";
  fs::create_directory(mount);
  if (::mount("none", mount.c_str(), "tmpfs", 0, nullptr) != 0) GTEST_SKIP() << "may not mount";
  const auto a = file("mount/a");
  EXPECT_EQ(queue->addPathToQueue_notifyingAbout(a, 0x7F), 0);
  EXPECT_EQ(::umount(mount.c_str()), 0);
  EXPECT_EQ(told(1), "AccessRevocationNotification:/a ");
  queue->removePath(a);
}

// Threads add, remove and describe while files change; the thread sanitizer watches.
TEST_F(XJKQueueTest, AnyThread) {
  const auto a = file("a");
  std::vector<Ref<NSThread>> threads;
  for (int t = 0; t < 3; ++t)
    threads.push_back(NSThread::detachNewThread([&, t] {
      for (int i = 0; i < 200; ++i) {
        if (t == 0) append(a);
        queue->addPath(a);
        if (i % 20 == 0) queue->description();
        queue->removePath(a);
      }
    }));
  for (const auto& thread : threads) serveUntil([&] { return thread->isFinished(); });
  told(0);
  EXPECT_EQ(toldOfMore(a, 0), "");
}

}  // namespace
}  // namespace qz::test
