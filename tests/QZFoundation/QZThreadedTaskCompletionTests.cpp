#include "QZFoundation/QZThreadedTaskCompletion.h"

#include "Platform/Concurrency/NSThread.h"
#include "tests/support/Test.h"

#if defined(__cpp_impl_coroutine) && __has_include(<coroutine>)

namespace qz::test {
namespace {

Ref<QZThreadedTask> answering(int value) {
  return make<QZThreadedTask>([value](QZThreadedTask* task) {
    if (value == 0) throw std::runtime_error("nothing");
    task->setTaskResult(number(value));
  });
}

TEST(QZThreadedTaskCompletionTest, IsAwaitedOnTheMainThreadAndOnOthers) {
  const auto work = []() -> Async<> {
    const auto main = NSThread::currentThread();
    EXPECT_EQ(to_string(co_await runToCompletion(answering(7))), "7");
    EXPECT_EQ(NSThread::currentThread(), main);

    const auto started = answering(8);
    started->start();
    EXPECT_EQ(to_string(co_await completionOf(started)), "8");

    co_await onNewThread();
    const auto own = NSThread::currentThread();
    EXPECT_EQ(to_string(co_await runToCompletion(answering(9))), "9");
    EXPECT_EQ(NSThread::currentThread(), own);

    const auto failing = answering(0);
    EXPECT_EQ(co_await runToCompletion(failing), nullptr);
    EXPECT_EQ(textOf(failing->taskError()), "nothing");
  };
  runLoopUntilDone(work());
  EXPECT_TRUE(refuses([] { runLoopUntilDone(runToCompletion(nullptr)); }));
  EXPECT_TRUE(refuses([] { runLoopUntilDone(completionOf(nullptr)); }));
}

}  // namespace
}  // namespace qz::test

#endif
