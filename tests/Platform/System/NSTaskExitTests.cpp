#include "Platform/System/NSTaskExit.h"

#include "Platform/Concurrency/Coroutines.h"
#include "tests/support/Shell.h"

namespace qz::test {
namespace {

TEST(NSTaskEndTest, CallsAllThatWantToKnow) {
  std::atomic<int> called{0};
  const auto task = shell("exit 3"_ns);
  EXPECT_TRUE(refuses([&] { task->callWhenEnded([] {}); }, {"not launched"}));
  task->setTerminationHandler([&](NSTask*) { ++called; });
  task->launch();
  task->callWhenEnded([&] { ++called; });
  task->callWhenEnded([&] {
    ++called;
    throw std::runtime_error("told to the diagnostic stream");
  });
  while (called < 3) std::this_thread::yield();
  int late = 0;
  task->callWhenEnded([&] { late = task->terminationStatus(); });
  EXPECT_EQ(late, 3);
  EXPECT_EQ(called, 3);
}

#if defined(__cpp_impl_coroutine) && __has_include(<coroutine>)

TEST(NSTaskEndTest, IsAwaited) {
  const auto work = []() -> Async<> {
    const auto main = NSThread::currentThread();
    const auto slow = shell("sleep 0.05; exit 5"_ns);
    slow->launch();
    EXPECT_EQ(co_await exitOf(slow), 5);
    EXPECT_EQ(NSThread::currentThread(), main);
    EXPECT_EQ(co_await exitOf(slow), 5) << "again, when it has ended already";

    // On a thread that has nothing else to do.
    co_await onNewThread();
    const auto sleeping = shell("exec sleep 1000"_ns);
    sleeping->launch();
    sleeping->terminate();
    EXPECT_EQ(co_await exitOf(sleeping), SIGTERM);
    EXPECT_NE(NSThread::currentThread(), main);

    bool isRefused = false;
    try {
      co_await exitOf(shell("exit 0"_ns));
    } catch (const Raised& raised) {
      isRefused = raised->name()->isEqualToString(NSInvalidArgumentException);
    }
    EXPECT_TRUE(isRefused) << "it was not launched";
  };
  runLoopUntilDone(work());
}

#endif

}  // namespace
}  // namespace qz::test
