#include "Platform/Concurrency/NSRunLoop.h"

#include <poll.h>

#include "Platform/Concurrency/MainThread.h"
#include "tests/support/LoopThread.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

using Clock = std::chrono::steady_clock;

class LoopRecorder : public Derives<LoopRecorder, NSObject> {
 public:
  static void describe(ClassDescription<LoopRecorder>& is) {
    is.named("LoopRecorder")
        .method<&LoopRecorder::write>("write:")
        .method<&LoopRecorder::tick>("tick")
        .method<&LoopRecorder::fail>("fail:");
  }
  void write(NSObject* what) {
    thread = NSThread::currentThread();
    text += to_string(what);
    ++written;
  }
  void tick() { ++ticks; }
  void fail(NSObject*) { throw std::runtime_error("failed"); }
  std::string text;
  int ticks = 0;
  std::atomic<int> written{0};
  Ref<NSThread> thread;
};

// Each test has a loop of its own on the test's thread: what is left in it is dropped.
class NSRunLoopTest : public ::testing::Test {
 protected:
  void TearDown() override {
    NSObject::cancelPreviousPerformRequestsWithTarget(recorder);
    while (loop->runPending()) {
    }
  }
  Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
  Ref<LoopRecorder> recorder = make<LoopRecorder>();
};

TEST_F(NSRunLoopTest, ServesInOrderWhateverThreadItComesFrom) {
  std::string text;
  EXPECT_FALSE(loop->runPending());
  EXPECT_EQ(loop, NSRunLoop::mainRunLoop());
  for (char c : {'a', 'b', 'c'}) loop->perform([&text, c] { text += c; });
  std::thread([&] {
    loop->perform([&text, big = std::string(100, 'd')] { text += big.size() == 100 ? 'd' : '?'; });
  }).join();
  // What is queued meanwhile has to wait for the next turn.
  loop->perform([&] { loop->perform([&] { text += 'f'; }); });
  loop->perform([&text, owned = std::make_unique<char>('e')] { text += *owned; });
  EXPECT_TRUE(loop->runPending());
  EXPECT_EQ(text, "abcde");
  EXPECT_TRUE(loop->runPending());
  EXPECT_EQ(text, "abcdef");
  EXPECT_FALSE(loop->runPending());
}

TEST_F(NSRunLoopTest, AnswersAndThrowsWhereItIsCalled) {
  LoopThread other;
  const auto here = std::this_thread::get_id();
  EXPECT_NE(other.loop->performAndWait([] { return std::this_thread::get_id(); }), here);
  EXPECT_EQ(loop->performAndWait([] { return std::this_thread::get_id(); }), here);
  auto text = other.loop->performAndWait([] { return std::make_unique<std::string>("moved"); });
  EXPECT_EQ(*text, "moved");
  int variable = 1;
  int& reference = other.loop->performAndWait([&]() -> int& { return variable; });
  EXPECT_EQ(&reference, &variable);
  EXPECT_THROW(other.loop->performAndWait([] { throw std::out_of_range("x"); }), std::out_of_range);
  // Calls that cross: the main thread is served while the other waits for it.
  std::string order;
  other.loop->perform([&] {
    order += callOnMainThread([] { return NSThread::isMainThread() ? "main" : "?"; });
    loop->stop();
  });
  loop->run();
  EXPECT_EQ(order, "main");
}

TEST_F(NSRunLoopTest, RunsUntilTheDateOrUntilStopped) {
  const auto start = Clock::now();
  loop->runUntilDate(inSeconds(0.02));
  EXPECT_GE(Clock::now() - start, 19ms);
  EXPECT_FALSE(loop->runMode_beforeDate(NSDefaultRunLoopMode, inSeconds(0.01)));
  // A date that has come does not keep back what is ready.
  int served = 0;
  loop->perform([&] { ++served; });
  loop->runUntilDate(NSDate::distantPast());
  EXPECT_EQ(served, 1);
  std::thread later([&] {
    std::this_thread::sleep_for(5ms);
    loop->perform([&] { ++served; });
  });
  EXPECT_TRUE(loop->runMode_beforeDate(NSDefaultRunLoopMode, NSDate::distantFuture()));
  later.join();
  EXPECT_EQ(served, 2);
  // A stop that comes early is not lost, and what was queued before it is served.
  loop->perform([&] { ++served; });
  loop->stop();
  loop->run();
  EXPECT_EQ(served, 3);
  EXPECT_EQ(loop->currentMode(), nullptr);
}

TEST_F(NSRunLoopTest, AnInnerLoopServesItsModeAndLeavesTheRest) {
  std::string text;
  NSString* const asking = "Asking"_ns;
  const auto add = [&](char c, std::initializer_list<NSObject*> modes) {
    loop->performInModes(NSArray::arrayWithObjects(modes), [&text, c] { text += c; });
  };
  loop->perform([&] {
    text += '(';
    EXPECT_TRUE(loop->runMode_beforeDate(asking, NSDate::distantFuture()));
    EXPECT_EQ(to_string(loop->currentMode()), "NSDefaultRunLoopMode");
    text += ')';
  });
  add('a', {NSDefaultRunLoopMode});
  add('b', {asking, NSDefaultRunLoopMode});
  add('c', {NSRunLoopCommonModes});
  add('d', {asking});
  while (loop->runPending()) {
  }
  EXPECT_EQ(text, "(bd)ac");
  text.clear();
  loop->addCommonMode("Tracking"_ns);
  add('a', {NSDefaultRunLoopMode});
  add('b', {NSRunLoopCommonModes});
  EXPECT_TRUE(loop->runMode_beforeDate("Tracking"_ns, nullptr));
  EXPECT_EQ(text, "b");
  loop->runPending();
  EXPECT_EQ(text, "ba");
  EXPECT_TRUE(refuses([&] { loop->runMode_beforeDate(NSRunLoopCommonModes, nullptr); }));
}

TEST_F(NSRunLoopTest, TimersFireInOrderAndKeepToTheirGrid) {
  std::string text;
  std::vector<Ref<NSTimer>> timers;
  Ref<NSDate> now = NSDate::date();
  for (const auto& [seconds, c] : {std::pair{0.03, 'c'}, {0.01, 'a'}, {0.02, 'b'}}) {
    timers.push_back(NSTimer::scheduledTimer(100, false, [&text, c = c](NSTimer*) { text += c; }));
    timers.back()->setFireDate(now->dateByAddingTimeInterval(seconds));
  }
  EXPECT_TRUE(loop->limitDateForMode(NSDefaultRunLoopMode)->isEarlierThanDate(inSeconds(0.0101)));
  loop->runUntilDate(inSeconds(0.05));
  EXPECT_EQ(text, "abc");
  EXPECT_FALSE(timers[0]->isValid());
  EXPECT_EQ(loop->limitDateForMode(NSDefaultRunLoopMode), nullptr);

  // A busy loop misses times; the grid stays, and they are not made up for.
  const auto start = Clock::now();
  int count = 0;
  auto repeating = NSTimer::scheduledTimer(0.02, true, [&](NSTimer* timer) {
    if (++count == 1) std::this_thread::sleep_for(50ms);
    if (count == 3) timer->invalidate();
  });
  while (repeating->isValid()) loop->runMode_beforeDate(NSDefaultRunLoopMode, inSeconds(1));
  EXPECT_GE(Clock::now() - start, 99ms);  // 20, then 80 and 100, or later ones
}

TEST_F(NSRunLoopTest, AFunctionMayLetGoOfItsTimer) {
  Ref<NSTimer> timer;
  timer = NSTimer::timer(60, false, [&timer](NSTimer*) { timer = nullptr; });
  timer->fire();
  EXPECT_EQ(timer, nullptr);
}

TEST_F(NSRunLoopTest, TimersSendAndKeepTheirTarget) {
  auto timer = send<Ref<NSTimer>>(
      classOf<NSTimer>(), "scheduledTimerWithTimeInterval:target:selector:userInfo:repeats:"_sel,
      0.001, recorder, "tick"_sel, "info"_ns, true);
  EXPECT_EQ(recorder->retainCount(), 2u);
  while (recorder->ticks < 3) loop->runMode_beforeDate(NSDefaultRunLoopMode, inSeconds(1));
  timer->fire();
  EXPECT_EQ(recorder->ticks, 4);
  timer->invalidate();
  timer->fire();
  EXPECT_EQ(recorder->ticks, 4);
  EXPECT_EQ(recorder->retainCount(), 1u);
  loop->addTimer_forMode(timer, NSDefaultRunLoopMode);
  EXPECT_EQ(loop->secondsUntilNextTimer(), std::nullopt);

  LoopThread other;
  auto mine = NSTimer::scheduledTimer(1000, false, [](NSTimer*) {});
  EXPECT_TRUE(refuses([&] { other.loop->addTimer_forMode(mine, NSDefaultRunLoopMode); }));
  mine->setFireDate(nullptr);
  EXPECT_TRUE(loop->runPending());
  EXPECT_FALSE(mine->isValid());
  EXPECT_TRUE(refuses([] { NSTimer::timer(1, true, nullptr); }));
}

TEST_F(NSRunLoopTest, ALoopWithoutWorkEndsAndATimerCanBeTakenFromOutside) {
  Ref<NSTimer> timer;
  std::atomic<bool> running{false};
  auto thread = NSThread::detachNewThread([&] {
    NSRunLoop::currentRunLoop()->run();  // nothing to wait for
    timer = NSTimer::scheduledTimer(1000, true, [](NSTimer*) {});
    running = true;
    NSRunLoop::currentRunLoop()->run();
  });
  while (!running) std::this_thread::yield();
  EXPECT_FALSE(thread->waitUntilFinishedBeforeDate(inSeconds(0.01)));
  timer->invalidate();
  EXPECT_TRUE(thread->waitUntilFinishedBeforeDate(inSeconds(60)));
}

TEST_F(NSRunLoopTest, SendsLaterUnlessCancelled) {
  recorder->performSelector_withObject_afterDelay("write:"_sel, "a"_ns, 0.3);
  recorder->performSelector_withObject_afterDelay("write:"_sel, "b"_ns, 0);
  recorder->performSelector_withObject_afterDelay("write:"_sel, "c"_ns, 0.001);
  recorder->performSelector_withObject_afterDelay("write:"_sel, nullptr, 0.001);
  recorder->performSelector_withObject_afterDelay("tick"_sel, nullptr, 0.001);
  EXPECT_EQ(recorder->text, "");
  NSObject::cancelPreviousPerformRequestsWithTarget_selector_object(recorder, "write:"_sel,
                                                                    ns("c"));
  NSObject::cancelPreviousPerformRequestsWithTarget_selector_object(recorder, "write:"_sel,
                                                                    nullptr);
  while (recorder->written < 2) loop->runMode_beforeDate(NSDefaultRunLoopMode, inSeconds(60));
  EXPECT_EQ(recorder->text, "ba");
  EXPECT_EQ(recorder->ticks, 1);
  for (int i = 0; i < 100; ++i)
    recorder->performSelector_withObject_afterDelay("tick"_sel, nullptr, 0);
  EXPECT_GT(recorder->retainCount(), 100u);
  send<void>(classOf<NSObject>(), "cancelPreviousPerformRequestsWithTarget:"_sel, recorder);
  EXPECT_EQ(recorder->retainCount(), 1u);
  loop->runUntilDate(inSeconds(0.001));
  EXPECT_EQ(recorder->ticks, 1);
}

TEST_F(NSRunLoopTest, SendsToTheMainThreadAndToOthers) {
  LoopThread other;
  auto onMain = "performSelectorOnMainThread:withObject:waitUntilDone:"_sel;
  // From the main thread: at once when it waits, later when it does not.
  recorder->performSelectorOnMainThread_withObject_waitUntilDone("write:"_sel, "b"_ns, false);
  send<void>(recorder, onMain, "write:"_sel, "a"_ns, true);
  EXPECT_EQ(recorder->text, "a");
  loop->runPending();
  EXPECT_EQ(recorder->text, "ab");

  other.loop->perform([&] {
    recorder->performSelectorOnMainThread_withObject_waitUntilDone("write:"_sel, "c"_ns, false);
    recorder->performSelectorOnMainThread_withObject_waitUntilDone("write:"_sel, "d"_ns, true);
    EXPECT_EQ(recorder->text, "abcd");
    EXPECT_THROW(
        recorder->performSelectorOnMainThread_withObject_waitUntilDone("fail:"_sel, nullptr, true),
        std::runtime_error);
    loop->stop();
  });
  loop->run();
  EXPECT_EQ(recorder->thread, NSThread::mainThread());
  recorder->performSelector_onThread_withObject_waitUntilDone("write:"_sel, other.thread, "e"_ns,
                                                              true);
  EXPECT_EQ(recorder->thread, other.thread);
  EXPECT_EQ(recorder->text, "abcde");
  recorder->performSelectorInBackground_withObject("write:"_sel, "f"_ns);
  while (recorder->written != 6) std::this_thread::yield();
  EXPECT_EQ(recorder->text, "abcdef");
}

TEST_F(NSRunLoopTest, ItsEndWakesWhoeverWaitsAndDropsTheRest) {
  auto idle = make<NSThread>([] { NSThread::sleepForTimeInterval(0.02); });  // never runs its loop
  auto timer = NSTimer::timer(1000, true, [](NSTimer*) {});
  idle->runLoop()->addTimer_forMode(timer, NSDefaultRunLoopMode);
  recorder->performSelector_onThread_withObject_waitUntilDone("write:"_sel, idle, nullptr, false);
  idle->start();
  EXPECT_TRUE(raises(NSRunLoopEndedException, [&] {
    recorder->performSelector_onThread_withObject_waitUntilDone("write:"_sel, idle, nullptr, true);
  }));
  idle->waitUntilFinished();
  EXPECT_EQ(recorder->text, "");
  EXPECT_EQ(recorder->retainCount(), 1u);
  EXPECT_FALSE(timer->isValid());
  EXPECT_FALSE(idle->runLoop()->perform([] {}));
  EXPECT_THROW(idle->runLoop()->performAndWait([] {}), RunLoopEnded);
  // A thread whose caller is gone ends quietly.
  auto helper = NSThread::detachNewThread([&] { idle->runLoop()->performAndWait([] {}); });
  EXPECT_TRUE(helper->waitUntilFinishedBeforeDate(inSeconds(60)));
}

TEST_F(NSRunLoopTest, AnotherEventLoopDrivesIt) {
  LoopThread other;
  const int descriptor = loop->fileDescriptor();
  ASSERT_GE(descriptor, 0);
  const auto isReady = [descriptor](int milliseconds) {
    pollfd wanted{descriptor, POLLIN, 0};
    return ::poll(&wanted, 1, milliseconds) == 1;
  };
  while (isReady(0)) loop->runPending();
  int served = 0;
  other.loop->perform([&] { loop->perform([&] { ++served; }); });
  EXPECT_TRUE(isReady(60'000));
  EXPECT_TRUE(loop->runPending());
  EXPECT_FALSE(isReady(0));
  EXPECT_EQ(served, 1);
  auto timer = NSTimer::scheduledTimer(0.01, false, [&](NSTimer*) { ++served; });
  const auto serveOne = [&] {
    for (const int before = served; served == before; loop->runPending())
      ASSERT_TRUE(isReady(60'000));
  };
  serveOne();
  // A timer of another mode is not in the way.
  auto elsewhere = NSTimer::timer(0.001, false, [](NSTimer*) {});
  loop->addTimer_forMode(elsewhere, "Elsewhere"_ns);
  timer = NSTimer::scheduledTimer(0.01, false, [&](NSTimer*) { ++served; });
  NSThread::sleepForTimeInterval(0.002);
  serveOne();
  EXPECT_TRUE(elsewhere->isValid());
  elsewhere->invalidate();
  while (isReady(0)) loop->runPending();
  EXPECT_EQ(std::exchange(served, 2), 3);
  // What an exception leaves behind is announced again.
  loop->perform([] { throw std::runtime_error("no"); });
  loop->perform([&] { ++served; });
  EXPECT_THROW(loop->runPending(), std::runtime_error);
  EXPECT_EQ(loop->currentMode(), nullptr);
  EXPECT_TRUE(isReady(0));
  loop->runPending();
  EXPECT_EQ(served, 3);
  // So are a timer that has not had its turn, and what an inner loop has put off.
  timer = NSTimer::scheduledTimer(0, false, [&](NSTimer*) { ++served; });
  loop->perform([] { throw std::runtime_error("no"); });
  ASSERT_TRUE(isReady(60'000));
  EXPECT_THROW(loop->runPending(), std::runtime_error);
  serveOne();
  loop->perform([&] {
    loop->perform([&] { ++served; });
    loop->runMode_beforeDate("Elsewhere"_ns, nullptr);
  });
  EXPECT_TRUE(loop->runPending());
  EXPECT_EQ(std::exchange(served, 0), 4);
  serveOne();
  EXPECT_FALSE(isReady(0));

  std::atomic<int> called{0};
  loop->setWakeUpFunction([&] { ++called; });
  loop->perform([] {});
  loop->perform([] {});
  EXPECT_EQ(called, 1);
  loop->runPending();
  loop->perform([] {});
  EXPECT_EQ(called, 2);
  loop->setWakeUpFunction(nullptr);
  loop->runPending();
}

// Eight threads post, call and start timers while the loop runs; the thread sanitizer watches.
TEST_F(NSRunLoopTest, AnyThreadSends) {
  constexpr int threads = 8;
  constexpr int rounds = 300;
  int posted = 0;
  int answered = 0;
  std::atomic<int> left{threads};
  std::vector<std::jthread> senders;
  for (int t = 0; t < threads; ++t)
    senders.emplace_back([&] {
      for (int i = 0; i < rounds; ++i) {
        postToMainThread([&] { ++posted; });
        const int seen = callOnMainThread([&] { return ++answered; });
        EXPECT_GT(seen, i);
        if (i % 10 == 0) {
          auto timer = NSTimer::timer(0.0001, true, [](NSTimer*) {});
          loop->addTimer_forMode(timer, NSDefaultRunLoopMode);
          timer->setFireDate(nullptr);
          timer->invalidate();
        }
      }
      if (--left == 0) loop->stop();
    });
  loop->run();
  senders.clear();
  EXPECT_EQ(posted, threads * rounds);
  EXPECT_EQ(answered, threads * rounds);
  EXPECT_EQ(loop->secondsUntilNextTimer(), std::nullopt);
}

}  // namespace
}  // namespace qz::test
