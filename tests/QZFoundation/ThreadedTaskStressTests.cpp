// Tasks, observers, progress and proxies all at once: for the thread sanitizer. A second and two
// workers by default; QZ_STRESS_SECONDS=120, QZ_STRESS_WORKERS=8 and QZ_STRESS_UPDATES=10000000 (at
// least so many) make it a long run.

#include "Platform/Concurrency/MainThread.h"
#include "Platform/Concurrency/NSNotificationCenter.h"
#include "QZFoundation/QZThreadedTask.h"
#include "QZFoundation/XJMainThreadProxy.h"
#include "tests/support/Observers.h"

namespace qz::test {
namespace {

int setting(const char* name, int otherwise) {
  const char* text = std::getenv(name);
  return text == nullptr ? otherwise : std::max(1, std::atoi(text));
}

/// What all runs together have done.
struct Totals {
  std::atomic<std::int64_t> updates{0};
  std::atomic<int> started{0};
  std::atomic<int> completed{0};
  std::atomic<int> disorder{0};
  std::atomic<int> lastMissing{0};
};

/// Reports progress until it is told to stop; the last message always arrives.
class Busy : public Derives<Busy, QZThreadedTask> {
 public:
  static void describe(ClassDescription<Busy>& is) {
    is.named("BusyTask").method<&Busy::begin>("begin:").method<&Busy::complete>("complete:");
  }
  Busy(Totals* totals, unsigned seed) : totals_(totals), random_(seed) {
    // The task itself observes its notifications, on the main thread.
    const auto center = NSNotificationCenter::defaultCenter();
    center->addObserver_selector_name_object(this, "begin:"_sel, QZThreadedTaskDidBeginNotification,
                                             this);
    center->addObserver_selector_name_object(this, "complete:"_sel,
                                             QZThreadedTaskDidCompleteNotification, this);
  }

  void performTask() override {
    const int updates = 2000 + static_cast<int>(random_() % 4000);
    for (int i = 0; i < updates && !abortRequestReceived(); ++i) {
      updatePercentComplete(static_cast<float>(i));
      if (i % 64 == 0) updateSecondaryProgressMessage(ns("s"));
      ++totals_->updates;
    }
    updateProgressMessage("last"_ns);
    updateKnowsPercentComplete(true);
    if (random_() % 4 == 0) throw std::runtime_error("on purpose");
  }

 private:
  void begin(NSNotification*) { isBegun_ = true; }
  void complete(NSNotification*) {
    if (!isBegun_) ++totals_->disorder;
    // What was forced before the end came into the queue before the notification.
    if (to_string(progressMessage()) != "last" || !knowsPercentComplete()) ++totals_->lastMissing;
    ++totals_->completed;
  }

  Totals* totals_;
  std::mt19937 random_;
  bool isBegun_ = false;
};

TEST(ThreadedTaskStress, TasksObserversAndProgress) {
  const int workers = setting("QZ_STRESS_WORKERS", 2);
  const int updates = setting("QZ_STRESS_UPDATES", 1);
  const auto end = inSeconds(setting("QZ_STRESS_SECONDS", 1));
  const auto loop = NSRunLoop::mainRunLoop();
  Totals totals;
  std::atomic<bool> isOver{false};
  std::atomic<int> running{workers};
  std::vector<std::thread> threads;
  for (int i = 0; i < workers; ++i)
    threads.emplace_back([&, seed = static_cast<unsigned>(i)] {
      std::mt19937 random(seed);
      while (!isOver) {
        auto task = make<Busy>(&totals, static_cast<unsigned>(random()));
        auto recorder = make<Recorder>();
        std::atomic<int> told{0};
        auto token = observe(task, "percentComplete"_ns, 0, [&](const ObservedChange&) { ++told; });
        task->addObserver_forKeyPath_options_context(recorder, "abortRequestReceived"_ns, 0,
                                                     nullptr);
        ++totals.started;
        task->start();
        if (random() % 3 == 0) task->abort();
        const auto asking = mainThreadProxy(task);
        const auto posting = mainThreadProxyAsync(task);
        send<void>(posting, "updateKnowsPercentComplete:"_sel, true);
        if (random() % 16 == 0) send<bool>(asking, "canAbort"_sel);
        while (totals.started - totals.completed > 2 * workers && !isOver)
          std::this_thread::yield();
        // The main thread may be in the middle of telling what is taken off now, and what the
        // function uses is gone after it: so this is done there.
        callOnMainThread([&] { token.invalidate(); });
        // The task may end at any moment now, and its proxies outlive it.
        task = nullptr;
        send<void>(posting, "abort"_sel);
        if (random() % 16 == 0) send<Ref<NSString>>(asking, "progressMessage"_sel);
      }
      --running;
      loop->perform([] {});
    });
  while (running > 0 || totals.completed < totals.started) {
    loop->runMode_beforeDate(NSDefaultRunLoopMode, inSeconds(0.05));
    if (NSDate::date()->compare(end) != NSOrderedAscending && totals.updates >= updates)
      isOver = true;
  }
  for (std::thread& each : threads) each.join();
  EXPECT_GT(totals.started, 0);
  EXPECT_EQ(totals.completed, totals.started);
  EXPECT_EQ(totals.disorder, 0);
  EXPECT_EQ(totals.lastMissing, 0);
  RecordProperty("updates", std::to_string(totals.updates));
  RecordProperty("tasks", totals.started);
}

}  // namespace
}  // namespace qz::test
