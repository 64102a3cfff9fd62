#include "QZFoundation/XJKQueue.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Concurrency/NSNotificationCenter.h"
#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Concurrency/NSThread.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/Send.h"
#include "tests/support/TemporaryDirectory.h"

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
    const auto loop = NSRunLoop::mainRunLoop();
    const auto has = [&] { return std::count(delegate->log.begin(), delegate->log.end(), ' '); };
    const auto limit = NSDate::dateWithTimeIntervalSinceNow(20);
    while (has() < words && limit->timeIntervalSinceNow() > 0)
      loop->runMode_beforeDate(NSDefaultRunLoopMode, limit);
    loop->runUntilDate(NSDate::dateWithTimeIntervalSinceNow(0.02));
    return std::exchange(delegate->log, "");
  }
  Ref<NSString> file(const char* name, const char* text = "") {
    return NSString::stringWithUTF8String(directory.write(name, text));
  }
  static void append(NSString* path) {
    const int descriptor = ::open(path->UTF8String().c_str(), O_WRONLY | O_APPEND);
    EXPECT_EQ(::write(descriptor, "more", 4), 4);
    ::close(descriptor);
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
  append(a);
  EXPECT_EQ(told(2), "WrittenToNotification:/a SizeIncreasedNotification:/a ");
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
  queue->addPath(NSString::stringWithUTF8String(a->UTF8String()));
  append(a);
  EXPECT_EQ(told(2), "WrittenToNotification:/a WrittenToNotification:/a ");
  queue->removePath(a);
  append(a);
  EXPECT_EQ(told(1), "WrittenToNotification:/a ");
  queue->removePath(a);
  queue->removePath(a);
  append(a);
  EXPECT_EQ(told(0), "");
  queue->addPath(a);
  queue->removeAllPathsFromQueue();
  append(a);
  EXPECT_EQ(told(0), "");
}

TEST_F(XJKQueueTest, TellsTheDelegateAndTheObserversAsAsked) {
  const auto a = file("a");
  queue->addPath(a);
  queue->setDelegate(delegate);
  EXPECT_EQ(queue->delegate(), delegate);
  append(a);
  EXPECT_EQ(told(1), "DWrittenToNotification:/a ");
  queue->setAlwaysNotify(true);
  append(a);
  EXPECT_EQ(told(2), "DWrittenToNotification:/a WrittenToNotification:/a ");
  // One that fails, or dies, does not end the watching.
  delegate->fails = true;
  append(a);
  EXPECT_EQ(told(1), "DWrittenToNotification:/a ");
  queue->setDelegate(make<Delegate>());
  EXPECT_EQ(queue->delegate(), nullptr);
  append(a);
  EXPECT_EQ(told(1), "WrittenToNotification:/a ");
  queue->setDelegate(nullptr);
  queue->setAlwaysNotify(false);
  append(a);
  EXPECT_EQ(told(1), "WrittenToNotification:/a ");
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
  const auto loop = NSRunLoop::mainRunLoop();
  for (const auto& thread : threads)
    while (!thread->isFinished()) loop->runUntilDate(NSDate::dateWithTimeIntervalSinceNow(0.005));
  told(0);
  append(a);
  EXPECT_EQ(told(0), "");
}

}  // namespace
}  // namespace qz::test
