// Two programs in one: first Asio's loop runs and the library's rides along, in one thread; then
// the library's loop runs, and what Asio does in a thread of its own is told to it. Each shows
// timers of both.
#include "AsioLoop.h"

#include <chrono>
#include <iostream>
#include <thread>

#include "Platform/Concurrency/MainThread.h"

using namespace std::chrono_literals;
namespace asio = boost::asio;

namespace {

/// Counts to three with each of two timers, whatever loop runs, and then calls `done`.
class Clocks {
 public:
  explicit Clocks(std::function<void()> done) : done_(std::move(done)) {}

  template <class Executor>
  void startAsio(asio::steady_timer& timer, const Executor& executor) {
    timer.expires_after(10ms);
    timer.async_wait(asio::bind_executor(
        executor, [this, &timer, executor](const boost::system::error_code& error) {
          if (error) return;
          std::cout << "Asio's timer " << ++asio_ << '\n';
          if (asio_ < 3)
            startAsio(timer, executor);
          else
            finishOne();
        }));
  }

  void startOurs() {
    qz::NSTimer::scheduledTimer(0.012, true, [this](qz::NSTimer* timer) {
      std::cout << "the library's timer " << ++ours_ << '\n';
      if (ours_ < 3) return;
      timer->invalidate();
      finishOne();
    });
  }

 private:
  // Both kinds of handlers come here, and no lock is needed: it is one thread.
  void finishOne() {
    if (!qz::NSThread::isMainThread()) std::terminate();
    if (++finished_ == 2) done_();
  }

  std::function<void()> done_;
  int asio_ = 0;
  int ours_ = 0;
  int finished_ = 0;
};

void runAsio() {
  asio::io_context context;
  const RunLoopInContext loop(context, [](std::exception_ptr thrown) {
    try {
      std::rethrow_exception(thrown);
    } catch (const std::exception& error) {
      std::cout << "caught: " << error.what() << '\n';
    }
  });
  Clocks clocks([&] {
    // What others post arrives, and what it throws stays in the loop.
    qz::NSThread::detachNewThread([&context] {
      qz::postToMainThread([] { throw std::runtime_error("told by a helper"); });
      qz::postToMainThread([&context] { context.stop(); });
    });
  });
  asio::steady_timer timer(context);
  clocks.startAsio(timer, context.get_executor());
  clocks.startOurs();
  context.run();
}

void runOurs() {
  asio::io_context context;
  const auto work = asio::make_work_guard(context);
  std::thread worker([&context] { context.run(); });
  Clocks clocks([] { qz::NSRunLoop::mainRunLoop()->stop(); });
  asio::steady_timer timer(context);
  clocks.startAsio(timer, RunLoopExecutor(context));
  clocks.startOurs();
  qz::NSRunLoop::mainRunLoop()->run();
  context.stop();
  worker.join();
}

}  // namespace

int main() {
  qz::NSThread::becomeMainThread();
  std::cout << "Asio's loop runs:\n";
  runAsio();
  std::cout << "The library's loop runs:\n";
  runOurs();
}
