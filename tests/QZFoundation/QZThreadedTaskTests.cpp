#include "QZFoundation/QZThreadedTask.h"

#include "Platform/Concurrency/MainThread.h"
#include "Platform/Concurrency/NSNotificationCenter.h"
#include "tests/support/Observers.h"
#include "tests/support/Serving.h"

namespace qz::test {
namespace {

/// Writes down what it is told of a task, and on which thread.
class Delegate : public Derives<Delegate, NSObject> {
 public:
  static void describe(ClassDescription<Delegate>& is) {
    is.named("TaskDelegate")
        .method<&Delegate::begin>("threadedTaskDidBegin:")
        .method<&Delegate::complete>("threadedTaskDidComplete:");
  }
  void begin(NSNotification* notification) { note("begin", notification); }
  void complete(NSNotification* notification) { note("complete", notification); }

  Lines lines;
  Ref<NSObject> sender;

 private:
  void note(const char* what, NSNotification* notification) {
    lines.push_back(std::string(what) + (NSThread::isMainThread() ? "" : " elsewhere"));
    sender = notification->object();
    EXPECT_EQ(notification->userInfo(), nullptr);
  }
};

class LateDelegate : public Derives<LateDelegate, NSObject> {
 public:
  static void describe(ClassDescription<LateDelegate>& is) {
    is.named("LateTaskDelegate").method<&LateDelegate::complete>("threadedTaskDidComplete:");
  }
  void complete(NSNotification*) { ++times; }
  int times = 0;
};

/// A task as applications derive it, that counts what reaches the main thread.
class Copying : public Derives<Copying, QZThreadedTask> {
 public:
  static void describe(ClassDescription<Copying>& is) { is.named("CopyingTask"); }
  using Derives::Derives;

  void setPercentCompleteNumber(NSNumber* percent) override {
    percents.push_back(percent->floatValue());
    Super::setPercentCompleteNumber(percent);
  }
  void setProgressMessage(NSString* message) override {
    messages.push_back(to_string(message));
    Super::setProgressMessage(message);
  }
  std::vector<float> percents;
  Lines messages;
};

/// Overrides by Selector.
class Abortable : public Derives<Abortable, QZThreadedTask> {
 public:
  static void describe(ClassDescription<Abortable>& is) {
    is.named("AbortableTask").method<&Abortable::work>("performTask");
  }
  void work() {
    while (!abortRequestReceived()) std::this_thread::yield();
    setTaskResult("stopped"_ns);
  }
};

TEST(QZThreadedTask, AnnouncesBeginAndEndOnTheMainThread) {
  const auto raising = [](NSString* reason) {
    return [=](QZThreadedTask*) { NSException::raise_reason(NSGenericException, reason); };
  };
  struct {
    std::function<void(QZThreadedTask*)> work;
    const char* result;
    const char* error;
  } const cases[] = {
      {[](QZThreadedTask* task) { task->setTaskResult("done"_ns); }, "done", nullptr},
      {raising("no room"_ns), "(null)", "no room"},
      {raising(nullptr), "(null)", "NSGenericException"},
      {[](QZThreadedTask* task) {
         task->setTaskResult("half"_ns);
         throw std::runtime_error("h\xC3\xA4lf");
       },
       "half", "hälf"},
      {[](QZThreadedTask* task) {
         task->setTaskError(NSError::errorWithDomain_code_userInfo("d"_ns, 3, nullptr));
       },
       "(null)", ""},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.error ? each.error : "no Error");
    Lines* seen = nullptr;
    bool onWorker = false;
    auto task = make<QZThreadedTask>([&](QZThreadedTask* self) {
      onWorker = !NSThread::isMainThread();
      EXPECT_EQ(*seen, Lines{"begin"}) << "before the work";
      each.work(self);
    });
    auto delegate = make<Delegate>();
    seen = &delegate->lines;
    task->setDelegate(delegate);
    task->setDelegate(delegate);  // and is told once
    task->start();
    ASSERT_TRUE(serveUntil([&] { return delegate->lines.size() >= 2; }));
    EXPECT_EQ(delegate->lines, (Lines{"begin", "complete"}));
    EXPECT_EQ(delegate->sender, task);
    EXPECT_TRUE(onWorker);
    EXPECT_EQ(to_string(task->taskResult()), each.result);
    const Ref<NSError> error = task->taskError();
    ASSERT_EQ(static_cast<bool>(error), each.error != nullptr);
    if (error && *each.error != '\0') {
      EXPECT_EQ(error->code(), -1);
      EXPECT_EQ(textOf(error), each.error);
    }
    delegate->sender = nullptr;
  }
}

TEST(QZThreadedTask, WhatIsNoExceptionEndsTheRun) {
  auto task = make<QZThreadedTask>([](QZThreadedTask*) { throw 42; });
  auto delegate = make<Delegate>();
  task->setDelegate(delegate);
  EXPECT_THROW(task->doThreadedOperation(), int);
  EXPECT_EQ(delegate->lines, Lines{"begin"});
  EXPECT_EQ(task->taskError(), nullptr);
}

TEST(QZThreadedTask, AnObserverThatRaisesDoesNotStopTheRun) {
  std::atomic<bool> worked{false};
  auto task = make<QZThreadedTask>([&](QZThreadedTask*) { worked = true; });
  auto token = NSNotificationCenter::defaultCenter()->observe(
      QZThreadedTaskDidBeginNotification, task,
      [](NSNotification*) { NSException::raise_reason(NSGenericException, "observer"_ns); });
  auto delegate = make<LateDelegate>();
  task->setDelegate(delegate);
  task->start();
  // It is the main thread's exception, and gets out of its loop.
  const auto isDone = [&] { return delegate->times > 0; };
  EXPECT_TRUE(raises(NSGenericException, [&] { serveUntil(isDone); }, {"observer"}));
  EXPECT_TRUE(serveUntil(isDone));
  EXPECT_TRUE(worked);
  EXPECT_EQ(task->taskError(), nullptr);
}

TEST(QZThreadedTask, DelegatesComeAndGo) {
  auto task = make<QZThreadedTask>();
  auto first = make<Delegate>();
  auto late = make<LateDelegate>();
  {
    auto gone = make<Delegate>();
    task->setDelegate(gone);
  }
  EXPECT_EQ(task->delegate(), nullptr);
  task->setDelegate(first);
  task->setDelegate(late);
  task->doThreadedOperation();
  EXPECT_EQ(first->lines, Lines());
  EXPECT_EQ(late->times, 1);
  task->setDelegate(nullptr);
  task->doThreadedOperation();  // a task may run again
  EXPECT_EQ(late->times, 1);
}

TEST(QZThreadedTask, AbortAndOverridesBySelector) {
  auto task = make<Abortable>();
  auto recorder = make<Recorder>();
  auto late = make<LateDelegate>();
  task->addObserver_forKeyPath_options_context(recorder, "abortRequestReceived"_ns,
                                               NSKeyValueObservingOptionNew, nullptr);
  task->setDelegate(late);
  WeakRef<QZThreadedTask> weak(task.get());
  task->start();
  send<void>(task, "abort"_sel);
  task->abort();
  EXPECT_EQ(recorder->lines, Lines{"abortRequestReceived setting new=1"});
  task = nullptr;
  ASSERT_TRUE(serveUntil([&] { return late->times > 0; }));
  while (!weak.expired()) std::this_thread::yield();  // nothing but its thread kept it
}

TEST(QZThreadedTask, AttributesAndFlags) {
  auto task = make<QZThreadedTask>();
  task->setTaskResult("r"_ns);
  EXPECT_EQ(to_string(task->taskAttributeForKey(QZThreadedTaskResultKey)), "r");
  auto recorder = make<Recorder>();
  for (NSString* key : {"canAbort"_ns, "displayProgress"_ns, "percentComplete"_ns,
                        "knowsPercentComplete"_ns, "secondaryProgressMessage"_ns, "taskError"_ns})
    task->addObserver_forKeyPath_options_context(recorder, key, 0, nullptr);
  for (int again = 0; again < 2; ++again) {  // the second time nothing changes
    task->setCanAbort(true);
    task->setDisplayProgress(false);
    task->setPercentComplete(12.5F);
    task->setPercentCompleteNumber(NSNumber::of(12.5F));
    task->setKnowsPercentCompleteNumber(NSNumber::of(true));
    task->setSecondaryProgressMessage("two"_ns);
  }
  EXPECT_EQ(recorder->lines,
            (Lines{"canAbort setting", "displayProgress setting", "percentComplete setting",
                   "knowsPercentComplete setting", "secondaryProgressMessage setting"}));
}

/// Runs updates on another thread, which the main thread is not serving meanwhile.
void onWorker(const std::function<void()>& updates) {
  NSThread::mainThread();  // this one, and not the first to ask
  std::thread(updates).join();
}

TEST(QZThreadedTask, UpdatesBetweenTwoTurnsCostOneDelivery) {
  auto task = make<Copying>();
  onWorker([&] {
    for (int i = 1; i <= 1000; ++i) task->updatePercentComplete(static_cast<float>(i));
    for (int i = 1; i <= 10; ++i) {
      task->updateProgressMessage(ns("m" + std::to_string(i)));
      task->updateSecondaryProgressMessage("s"_ns);
      task->updateKnowsPercentComplete(i % 2 == 0);
    }
  });
  EXPECT_EQ(task->percentComplete(), 0);
  servePending();
  EXPECT_EQ(task->percents, std::vector<float>{1000});
  EXPECT_EQ(task->messages, Lines{"m10"});
  EXPECT_EQ(to_string(task->secondaryProgressMessage()), "s");
  EXPECT_TRUE(task->knowsPercentComplete());
}

TEST(QZThreadedTask, NilIsDeliveredAndNeverUndoesWhatCameAfterIt) {
  struct {
    Lines updates;  // "-" for nil
    Lines delivered;
  } const cases[] = {{{"-"}, {"(null)"}},
                     {{"a", "-"}, {"(null)"}},
                     {{"-", "a"}, {"a"}},
                     {{"a", "-", "b", "-", "c"}, {"c"}},
                     {{"-", "-"}, {"(null)"}}};
  for (const auto& each : cases) {
    auto task = make<Copying>();
    onWorker([&] {
      for (const std::string& text : each.updates)
        task->updateProgressMessage(text == "-" ? nullptr : ns(text).get());
    });
    servePending();
    EXPECT_EQ(task->messages, each.delivered);
    task->updateProgressMessage();  // nothing is pending
    EXPECT_EQ(task->messages, each.delivered);
  }
}

TEST(QZThreadedTask, ABusyLockDropsWhatIsNotForced) {
  auto task = make<Copying>();
  std::string raised;
  auto token = observe(task, "progressMessage"_ns, 0, [&](const ObservedChange&) {
    onWorker([&] { task->updatePercentComplete(5); });  // would wait for ever if it waited
    task->updateProgressMessage_force("dropped"_ns, false);
    raised = reasonRaised(NSInternalInconsistencyException,
                          [&] { task->updateProgressMessage("forced"_ns); });
  });
  onWorker([&] { task->updateProgressMessage("first"_ns); });
  servePending();
  EXPECT_NE(raised, "");
  EXPECT_EQ(task->messages, Lines{"first"});
  EXPECT_EQ(task->percents, std::vector<float>());
}

TEST(QZThreadedTask, WaitsForAChange) {
  auto task = make<QZThreadedTask>();
  auto node = make<Node>(1);
  const auto past = NSDate::distantPast();
  const auto changes = [&](Node* watched, NSDate* limit, NSString* path = "value"_ns) {
    return task->waitForChangeInObject_forKeyPath_beforeDate(watched, path, limit);
  };
  for (NSDate* limit : {past.get(), static_cast<NSDate*>(nullptr)})
    EXPECT_FALSE(changes(node, limit));
  EXPECT_TRUE(raises(NSUndefinedKeyException, [&] { changes(node, past, "nothing.value"_ns); }));
  EXPECT_FALSE(detail::isObserved(node));

  const auto waitFor = [&](int value, NSDate* limit) {
    return task->waitUntilValueInObject_forKeyPath_equalsObject_beforeDate(node, "value"_ns,
                                                                           number(value), limit);
  };
  EXPECT_TRUE(waitFor(1, past)) << "it is there";
  EXPECT_FALSE(waitFor(2, inSeconds(0.01)));
  const auto setWhenObserved = [&](int value) {
    return std::thread([&node, value] {
      while (!detail::isObserved(node)) std::this_thread::yield();
      node->setValue(value);
    });
  };
  for (const bool isExpected : {true, false}) {  // at most one change is waited for
    std::thread changer = setWhenObserved(isExpected ? 5 : 6);
    EXPECT_EQ(waitFor(isExpected ? 5 : 7, inSeconds(20)), isExpected);
    changer.join();
  }
  // Two who wait with one task are woken each by its own change.
  auto other = make<Node>(1);
  std::atomic<bool> woken{false};
  std::thread waiter([&] { woken = changes(other, inSeconds(20)); });
  while (!detail::isObserved(other)) std::this_thread::yield();
  std::thread changer = setWhenObserved(8);
  EXPECT_TRUE(changes(node, inSeconds(20)));
  changer.join();
  EXPECT_FALSE(woken);
  other->setValue(2);
  waiter.join();
  EXPECT_TRUE(woken);
  // Other observations are a derived task's own.
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [&] {
    task->observeValueForKeyPath_ofObject_change_context("value"_ns, node, nullptr, nullptr);
  }));
}

}  // namespace
}  // namespace qz::test
