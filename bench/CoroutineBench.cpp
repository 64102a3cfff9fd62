// Coroutines: to another thread and back, and what awaiting costs where nothing has to wait.
#include "Platform/Concurrency/Coroutines.h"
#include "bench/support/Comparison.h"
#include "bench/support/Families.h"

#if defined(__cpp_impl_coroutine) && __has_include(<coroutine>)

#include <coroutine>
#include <exception>
#include <future>
#include <utility>

#include "bench/support/Servers.h"

namespace qz::bench {
namespace {

using State = benchmark::State;

// There and back ----------------------------------------------------------------------------------

Async<> hop(State& state, Ref<NSThread> away) {
  for (auto _ : state) {
    co_await onThread(away);
    co_await onMainThread();
  }
}

void hopThereAndBack(State& state) {
  const Server away;
  runLoopUntilDone(hop(state, Ref<NSThread>(away.thread())));
}

/// A coroutine by hand: runs from its call on, and takes itself away at its end.
struct Running {
  struct promise_type {
    Running get_return_object() const noexcept { return {}; }
    std::suspend_never initial_suspend() const noexcept { return {}; }
    std::suspend_never final_suspend() const noexcept { return {}; }
    void return_void() const noexcept {}
    void unhandled_exception() const noexcept { std::terminate(); }
  };
};

/// Goes on in a loop.
template <class Loop>
class In {
 public:
  explicit In(Loop& loop) noexcept : loop_(loop) {}
  bool await_ready() const noexcept { return false; }
  void await_suspend(std::coroutine_handle<> waiting) const {
    loop_.post([waiting] { waiting.resume(); });
  }
  void await_resume() const noexcept {}

 private:
  Loop& loop_;
};

template <class Loop>
Running hopByHand(State& state, Loop& away, Loop& home) {
  for (auto _ : state) {
    co_await In<Loop>(away);
    co_await In<Loop>(home);
  }
  home.stop();
}

template <class Loop>
void hopThereAndBackByHand(State& state) {
  ServerOf<Loop> away;
  Loop home;
  hopByHand<Loop>(state, away, home);
  home.run();
}

void callAndWait(State& state) {
  PlainServer away;
  std::int64_t calls = 0;
  for (auto _ : state) away.call([&calls] { ++calls; });
  benchmark::DoNotOptimize(calls);
}

// Answers that are there at once ------------------------------------------------------------------

// Not inlined, so that no compiler may leave a frame out.
[[gnu::noinline]] Async<int> answer(int value) { co_return value; }

Async<> awaitAnswers(State& state) {
  int value = 0;
  for (auto _ : state) {
    value = co_await answer(value + 1);
    benchmark::DoNotOptimize(value);
  }
}

void awaitAsync(State& state) { runLoopUntilDone(awaitAnswers(state)); }

/// The least that a lazy coroutine with an answer takes: it goes straight back to the one that
/// waits, on whichever thread, and knows no exceptions.
class Answer {
 public:
  struct promise_type {
    struct Back {
      bool await_ready() const noexcept { return false; }
      std::coroutine_handle<> await_suspend(
          std::coroutine_handle<promise_type> frame) const noexcept {
        return frame.promise().waiting;
      }
      void await_resume() const noexcept {}
    };
    Answer get_return_object() noexcept {
      return Answer(std::coroutine_handle<promise_type>::from_promise(*this));
    }
    std::suspend_always initial_suspend() const noexcept { return {}; }
    Back final_suspend() const noexcept { return {}; }
    void return_value(int itsValue) noexcept { value = itsValue; }
    void unhandled_exception() const noexcept { std::terminate(); }

    int value = 0;
    std::coroutine_handle<> waiting;
  };

  explicit Answer(std::coroutine_handle<promise_type> frame) noexcept : frame_(frame) {}
  Answer(const Answer&) = delete;
  Answer& operator=(const Answer&) = delete;
  ~Answer() { frame_.destroy(); }

  bool await_ready() const noexcept { return false; }
  std::coroutine_handle<> await_suspend(std::coroutine_handle<> waiting) const noexcept {
    frame_.promise().waiting = waiting;
    return frame_;
  }
  int await_resume() const noexcept { return frame_.promise().value; }

 private:
  std::coroutine_handle<promise_type> frame_;
};

[[gnu::noinline]] Answer answerByHand(int value) { co_return value; }

Running awaitAnswersByHand(State& state) {
  int value = 0;
  for (auto _ : state) {
    value = co_await answerByHand(value + 1);
    benchmark::DoNotOptimize(value);
  }
}

void awaitByHand(State& state) { awaitAnswersByHand(state); }

[[gnu::noinline]] std::future<int> answerByPromise(int value) {
  std::promise<int> promise;
  promise.set_value(value);
  return promise.get_future();
}

void waitForFuture(State& state) {
  int value = 0;
  for (auto _ : state) {
    value = answerByPromise(value + 1).get();
    benchmark::DoNotOptimize(value);
  }
}

}  // namespace

void compareCoroutines() {
  compare("HopThereAndBack",
          {"co_await onThread and back onMainThread",
           "a coroutine by hand, loops of mutex and condition variable", 0, true},
          &hopThereAndBack, &hopThereAndBackByHand<PlainLoop>);
  compareWaitingPeer("HopThereAndBack", "futex", &hopThereAndBackByHand<FutexLoop>);
  compareWaitingPeer("HopThereAndBack", "posted call, waited for", &callAndWait);
  compare("AwaitAsync",
          {"co_await an Async that answers at once", "the least of a coroutine, by hand", 0},
          &awaitAsync, &awaitByHand);
  comparePeer("AwaitAsync", "std::promise", &waitForFuture);
}

}  // namespace qz::bench

#else

namespace qz::bench {
void compareCoroutines() {}
}  // namespace qz::bench

#endif
