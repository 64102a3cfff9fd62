#include "Platform/Concurrency/NSThread.h"

#include <pthread.h>

#include "Platform/Concurrency/NSNotificationCenter.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

class Job : public Derives<Job, NSObject> {
 public:
  static void describe(ClassDescription<Job>& is) { is.named("Job").method<&Job::run>("run:"); }
  ~Job() override { ++gone; }
  void run(NSObject* argument) {
    given = Ref<NSObject>(argument);
    onMain = NSThread::isMainThread();
    done = true;
  }
  Ref<NSObject> given;
  bool onMain = true;
  std::atomic<bool> done{false};
  static inline std::atomic<int> gone{0};
};

class Counter : public Derives<Counter, NSThread> {
 public:
  static void describe(ClassDescription<Counter>& is) { is.named("Counter"); }
  void main() override {
    while (!isCancelled()) ++turns;
  }
  std::atomic<int> turns{0};
};

TEST(NSThread, KnowsItselfAndTheMainThread) {
  EXPECT_TRUE(NSThread::isMainThread());
  EXPECT_EQ(NSThread::currentThread(), NSThread::mainThread());
  Ref<NSThread> met;
  std::thread([&] {
    met = NSThread::currentThread();
    EXPECT_FALSE(NSThread::isMainThread());
    EXPECT_TRUE(raises(NSInternalInconsistencyException, [] { NSThread::becomeMainThread(); }));
  }).join();
  EXPECT_TRUE(met->isFinished());
}

TEST(NSThread, DetachesAndKeepsTargetAndArgument) {
  const int gone = Job::gone;
  auto argument = make<NSObject>();
  auto job = make<Job>();
  auto thread = NSThread::initWithTarget_selector_object(job, "run:"_sel, argument);
  thread->start();
  thread->waitUntilFinished();
  EXPECT_TRUE(job->done);
  EXPECT_FALSE(job->onMain);
  EXPECT_EQ(job->given, argument);
  EXPECT_EQ(job->retainCount(), 1u);
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [&] { thread->start(); }));
  job = nullptr;
  EXPECT_EQ(Job::gone, gone + 1);

  NSThread::detachNewThreadSelector_toTarget_withObject("run:"_sel, make<Job>(), nullptr);
  while (Job::gone != gone + 2) std::this_thread::yield();
  EXPECT_TRUE(refuses([] { NSThread::detachNewThread(nullptr); }));
}

TEST(NSThread, RunsASubclassUntilItIsCancelled) {
  auto counter = make<Counter>();
  counter->start();
  while (counter->turns == 0) std::this_thread::yield();
  EXPECT_FALSE(counter->waitUntilFinishedBeforeDate(inSeconds(0.01)));
  EXPECT_TRUE(counter->isExecuting());
  counter->cancel();
  EXPECT_TRUE(counter->waitUntilFinishedBeforeDate(NSDate::distantFuture()));
}

TEST(NSThread, HasANameThatTheSystemKnows) {
  std::string shown;
  auto thread = make<NSThread>([&] {
    char name[16];
    ::pthread_getname_np(::pthread_self(), name, sizeof name);
    shown = name;
  });
  // A character that would be cut in two is left out.
  thread->setName("watching filesä 12"_ns);
  thread->start();
  thread->waitUntilFinished();
  EXPECT_EQ(shown, "watching files");
  EXPECT_EQ(to_string(thread->name()), "watching filesä 12");
}

TEST(NSThread, TellsOfItsEndAndTakesItsDictionaryAlong) {
  const int gone = Job::gone;
  Ref<NSThread> told;
  auto token = NSNotificationCenter::defaultCenter()->observe(
      NSThreadWillExitNotification, nullptr, [&](NSNotification* notification) {
        EXPECT_EQ(notification->object(), NSThread::currentThread());
        told = NSThread::currentThread();
      });
  auto thread = NSThread::detachNewThread([] {
    NSThread::currentThread()->threadDictionary()->setObject_forKey(make<Job>(), "job"_ns);
    EXPECT_TRUE(NSThread::currentThread()->threadDictionary()->objectForKey("job"_ns));
  });
  thread->waitUntilFinished();
  EXPECT_EQ(told, thread);
  EXPECT_EQ(Job::gone, gone + 1);
}

TEST(NSThread, TakesAStackSizeOrSaysWhyNot) {
  auto large = make<NSThread>([] {
    volatile char room[24 * 1024 * 1024];
    room[0] = 1;
    room[sizeof room - 1] = 1;
  });
  large->setStackSize(32 * 1024 * 1024);
  large->start();
  large->waitUntilFinished();
  auto tiny = make<NSThread>([] {});
  tiny->setStackSize(1);
  EXPECT_TRUE(raises(NSGenericException, [&] { tiny->start(); }, {"Invalid argument"}));
}

}  // namespace
}  // namespace qz::test
