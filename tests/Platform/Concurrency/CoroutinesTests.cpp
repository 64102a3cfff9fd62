#include "Platform/Concurrency/Coroutines.h"

#include "tests/support/Test.h"

#if defined(__cpp_impl_coroutine) && __has_include(<coroutine>)

#include "tests/support/LoopThread.h"

namespace qz::test {
namespace {

NSString* const wordCame = detail::literal<"wordCame">();

/// The calling thread, to be compared with.
Ref<NSThread> here() { return NSThread::currentThread(); }

/// Counts itself while it lives.
struct Counted {
  explicit Counted(std::atomic<int>& itsCount) : count(itsCount) { ++count; }
  ~Counted() { --count; }
  std::atomic<int>& count;
};

Async<int> answer(int value) { co_return value; }
Async<int> fail() {
  throw std::runtime_error("failed");
  co_return 0;
}
Async<Ref<NSThread>> endOn(Ref<NSThread> thread) {
  co_await onThread(thread);
  co_return here();
}
Async<Ref<NSThread>> endOnNewThread() {
  co_await onNewThread();
  co_return here();
}

Async<> wander(Ref<NSThread> main, Ref<NSThread> other) {
  co_await onMainThread();
  EXPECT_EQ(here(), main);
  EXPECT_EQ(co_await endOn(other), other);
  EXPECT_EQ(here(), main) << "where the awaited one ended does not matter";
  const auto fresh = co_await endOnNewThread();
  EXPECT_NE(fresh, main);
  EXPECT_EQ(here(), main);

  co_await onThread(other);
  EXPECT_EQ(here(), other);
  EXPECT_EQ(co_await endOn(main), main);
  EXPECT_EQ(here(), other);

  // A thread of its own stays while the coroutine waits there, and no longer.
  co_await onNewThread();
  const auto own = here();
  EXPECT_EQ(co_await endOn(main), main);
  co_await afterDelay(0.001);
  EXPECT_EQ(here(), own);
  co_await onMainThread();
  own->waitUntilFinished();
  EXPECT_EQ(here(), main);
}

Async<> awaitWords(Ref<NSNotificationCenter> center, Ref<NSObject> sender,
                   std::function<void()> post) {
  const auto self = here();
  // Others' are not meant, and it does not go on within the post.
  bool isPosting = false;
  const std::function<void()> postHere = [&] {
    isPosting = true;
    center->postNotificationName_object(wordCame, nullptr);
    post();
    post();
    isPosting = false;
  };
  auto told = co_await nextNotification(wordCame, sender, center).onceWaiting(postHere);
  EXPECT_FALSE(isPosting);
  EXPECT_EQ(told->object(), sender);

  const std::function<void()> postThere = [&] { NSThread::detachNewThread(post); };
  told = co_await nextNotification(wordCame, nullptr, center).onceWaiting(postThere);
  EXPECT_EQ(told->name(), wordCame);
  EXPECT_EQ(here(), self);

  EXPECT_EQ(co_await nextNotification("never"_ns, nullptr, center).within(0.001), nullptr);

  // What the function throws comes through, whether or not there was something to wait for.
  for (const bool isPosted : {false, true}) {
    const std::function<void()> throwing = [&] {
      if (isPosted) post();
      throw std::runtime_error("refused");
    };
    std::string reason;
    try {
      co_await nextNotification(wordCame, nullptr, center).onceWaiting(throwing);
    } catch (const std::runtime_error& error) {
      reason = error.what();
    }
    EXPECT_EQ(reason, "refused");
  }
}

Async<> failElsewhere(Ref<NSThread> main) {
  co_await onNewThread();
  EXPECT_NE(here(), main);
  co_await fail();
}

constexpr int steps = 200;

Async<> walk(Ref<NSThread> a, Ref<NSThread> b, std::atomic<int>& count) {
  int sum = 0;
  for (int i = 0; i < steps; ++i) {
    EXPECT_EQ(co_await endOn(i % 2 == 0 ? a : b), i % 2 == 0 ? a : b);
    if (i % 7 == 0) co_await onThread(i % 3 == 0 ? a : b);
    sum += co_await answer(1);
  }
  EXPECT_EQ(sum, steps);
  co_await onMainThread();
  ++count;
}

/// Ends when the thread has.
Async<> outlast(Ref<NSThread> thread) {
  co_await onNewThread();
  thread->waitUntilFinished();
}

Async<> waitForNothing(int kind, std::atomic<int>& count, std::atomic<int>& ended) {
  const Counted counted(count);
  try {
    if (kind == 0) co_await afterDelay(1000);
    if (kind == 1) co_await nextNotification("never"_ns);
    if (kind == 2) co_await nextNotification("never"_ns).within(1000);
    if (kind == 3) co_await outlast(here());
  } catch (const RunLoopEnded&) {
    ++ended;
    throw;  // dropped by `start`
  }
}

Async<> hop(Ref<NSThread> to, std::atomic<int>& count, std::atomic<int>& ended) {
  const Counted counted(count);
  try {
    co_await onThread(to);
  } catch (const RunLoopEnded&) {
    ++ended;
  }
}

class CoroutinesTest : public ::testing::Test {
 protected:
  Ref<NSThread> main = here();
  Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
};

TEST_F(CoroutinesTest, RunsWhenItIsAwaitedAndPassesOnWhatCameOfIt) {
  int ran = 0;
  const auto count = [](int& counter) -> Async<> {
    ++counter;
    co_return;
  };
  { auto dropped = count(ran); }
  EXPECT_EQ(ran, 0) << "lazy";
  const auto all = [](int& counter, auto counting) -> Async<std::string> {
    co_await counting(counter);
    std::string text = std::to_string(co_await answer(20) + co_await answer(22));
    try {
      co_await fail();
    } catch (const std::runtime_error& error) {
      text += error.what();
    }
    Async<int> once = answer(1);
    co_await std::move(once);
    try {
      co_await std::move(once);
    } catch (const Raised& raised) {
      text += raised->name()->UTF8String();
    }
    co_return text;
  };
  EXPECT_EQ(runLoopUntilDone(all(ran, count)), "42failedNSInvalidArgumentException");
  EXPECT_EQ(ran, 1);
  EXPECT_THROW(runLoopUntilDone(fail()), std::runtime_error);

  // What never waits takes no stack, however often.
  const auto often = []() -> Async<int> {
    int sum = 0;
    for (int i = 0; i < 200'000; ++i) sum += co_await answer(1);
    co_return sum;
  };
  EXPECT_EQ(runLoopUntilDone(often()), 200'000);
}

TEST_F(CoroutinesTest, StaysOnItsThreadUnlessItHops) {
  LoopThread other;
  runLoopUntilDone(wander(main, other.thread));

  // Straight on, not in the loop's next turn.
  bool isDone = false;
  start([](bool& done) -> Async<> {
    co_await onMainThread();
    done = true;
  }(isDone));
  EXPECT_TRUE(isDone);
  EXPECT_TRUE(refuses([] { static_cast<void>(onThread(nullptr)); }));
}

TEST_F(CoroutinesTest, GoesOnAfterATime) {
  std::string order;
  const auto wait = [](std::string& text, char name, double seconds) -> Async<> {
    co_await afterDelay(seconds);
    text += name;
  };
  start(wait(order, 'c', 0.1));
  start(wait(order, 'b', 0.005));
  start(wait(order, 'a', -1));
  EXPECT_EQ(order, "") << "a turn of the loop at least";
  while (order.size() < 3) loop->runMode_beforeDate(NSDefaultRunLoopMode, inSeconds(10));
  EXPECT_EQ(order, "abc");
}

TEST_F(CoroutinesTest, AnswersTheNextNotification) {
  const auto center = make<NSNotificationCenter>();
  const auto sender = make<NSMutableString>();
  const auto post = [center, sender] { center->postNotificationName_object(wordCame, sender); };
  runLoopUntilDone(awaitWords(center, sender, post));
  post();  // nobody waits any more
}

// A coroutine that waits is something for its loop to wait for, and goes with it.
TEST_F(CoroutinesTest, IsUnwoundWhereItsLoopEnds) {
  std::atomic<int> alive{0};
  std::atomic<int> told{0};
  for (int kind = 0; kind < 4; ++kind) {
    NSThread::detachNewThread([&] {
      start(waitForNothing(kind, alive, told));
    })->waitUntilFinished();
    // The last one's function still runs on the thread that it was given.
    while (alive > 0) NSThread::sleepForTimeInterval(0.001);
    EXPECT_EQ(told.exchange(0), 1) << kind;
  }

  // Hops to a loop that has ended, or ends without serving them.
  LoopThread gone;
  gone.end();
  start(hop(gone.thread, alive, told));
  EXPECT_EQ(told.exchange(0), 1);
  EXPECT_EQ(alive, 0);
}

TEST_F(CoroutinesTest, TellsTheMainLoopWhatNobodyAwaits) {
  start(failElsewhere(main));
  EXPECT_THROW(loop->runUntilDate(inSeconds(10)), std::runtime_error);

  // An exception of other work leaves the loop; the coroutine goes on.
  bool isDone = false;
  const auto slow = [](bool& done) -> Async<int> {
    co_await afterDelay(0.001);
    done = true;
    co_return 0;
  };
  loop->perform([] { throw std::logic_error("other"); });
  EXPECT_THROW(runLoopUntilDone(slow(isDone)), std::logic_error);
  while (!isDone) loop->runMode_beforeDate(NSDefaultRunLoopMode, inSeconds(10));
}

// Each of the two needs that the other one runs.
Async<> meet() {
  const auto center = make<NSNotificationCenter>();
  auto listening = started([](Ref<NSNotificationCenter> from) -> Async<std::string> {
    const auto told = co_await nextNotification(wordCame, nullptr, from).within(10s);
    co_return told ? "heard" : "missed";
  }(center));
  auto posting = started([](Ref<NSNotificationCenter> to) -> Async<std::unique_ptr<int>> {
    co_await onNewThread();
    to->postNotificationName_object(wordCame, nullptr);
    co_return std::make_unique<int>(7);
  }(center));
  EXPECT_EQ(co_await std::move(listening), "heard");
  co_await afterDelay(1ms);
  EXPECT_EQ(*co_await std::move(posting), 7);

  for (const bool endsFirst : {false, true}) {
    auto failing = started([](bool fails) -> Async<int> {
      if (!fails) co_await afterDelay(1ms);
      co_return co_await fail();
    }(endsFirst));
    bool isCaught = false;
    try {
      co_await std::move(failing);
    } catch (const std::runtime_error&) {
      isCaught = true;
    }
    EXPECT_TRUE(isCaught);
  }
}

TEST_F(CoroutinesTest, RunsSeveralAtATime) {
  runLoopUntilDone(meet());
  EXPECT_FALSE(loop->runPending()) << "what was caught is told to nobody else";
  { auto dropped = started(fail()); }
  EXPECT_THROW(loop->runPending(), std::runtime_error);
}

TEST_F(CoroutinesTest, ManyAtATime) {
  LoopThread first;
  LoopThread second;
  constexpr int walkers = 8;
  std::atomic<int> done{0};
  for (int i = 0; i < walkers; ++i) start(walk(first.thread, second.thread, done));
  while (done < walkers) loop->runMode_beforeDate(NSDefaultRunLoopMode, inSeconds(60));
}

}  // namespace
}  // namespace qz::test

#endif
