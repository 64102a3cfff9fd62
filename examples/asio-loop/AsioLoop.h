// Asio and the library's run loops, in either order.
//
// RunLoopInContext: Asio's loop runs, and serves the run loop of the thread as well.
// RunLoopExecutor: the run loop runs, and Asio's handlers are called in it.
#pragma once

#include <functional>
#include <utility>
// After <utility>, which version 1.18 needs and does not include.
#include <boost/asio.hpp>

#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Concurrency/NSThread.h"

/// Has an `io_context` serve the calling thread's run loop for as long as this lives: functions
/// posted from other threads, timers and messages all work as if the loop itself were running.
/// Counts as work, so the context runs until it is stopped. Belongs to the thread that runs the
/// context.
class RunLoopInContext {
 public:
  /// `failed` is told what is thrown in the run loop, which must not leave the context unseen.
  RunLoopInContext(boost::asio::io_context& context, std::function<void(std::exception_ptr)> failed)
      : loop_(qz::NSRunLoop::currentRunLoop()),
        descriptor_(context, loop_->fileDescriptor()),
        failed_(std::move(failed)) {
    await();
  }
  RunLoopInContext(const RunLoopInContext&) = delete;
  RunLoopInContext& operator=(const RunLoopInContext&) = delete;
  ~RunLoopInContext() { descriptor_.release(); }  // the loop owns it

 private:
  void await() {
    descriptor_.async_wait(boost::asio::posix::stream_descriptor::wait_read,
                           [this](const boost::system::error_code& error) {
                             if (error) return;  // let go of
                             serve();
                             await();
                           });
  }

  void serve() {
    try {
      loop_->runPending();
    } catch (...) {
      failed_(std::current_exception());
    }
  }

  qz::Ref<qz::NSRunLoop> loop_;
  boost::asio::posix::stream_descriptor descriptor_;
  std::function<void(std::exception_ptr)> failed_;
};

/// An Asio executor that calls handlers in the run loop of a thread, for programs whose main thread
/// runs the library's loop. Asio has no descriptor to be polled by another loop, so its context
/// runs in a thread of its own, and this brings what it has to tell:
///
///     socket.async_read_some(buffer, boost::asio::bind_executor(RunLoopExecutor(context),
///     handler));
///
/// Once the run loop has ended, handlers are dropped. May be used by any thread.
class RunLoopExecutor {
 public:
  explicit RunLoopExecutor(boost::asio::io_context& context,
                           qz::Ref<qz::NSRunLoop> loop = qz::NSRunLoop::mainRunLoop()) noexcept
      : context_(&context), loop_(std::move(loop)) {}

  template <class F>
  void execute(F&& function) const {
    loop_->perform(std::forward<F>(function));
  }

  boost::asio::execution_context& query(boost::asio::execution::context_t) const noexcept {
    return *context_;
  }
  static constexpr boost::asio::execution::blocking_t query(
      boost::asio::execution::blocking_t) noexcept {
    return boost::asio::execution::blocking.never;
  }

  friend bool operator==(const RunLoopExecutor& a, const RunLoopExecutor& b) noexcept {
    return a.context_ == b.context_ && a.loop_ == b.loop_;
  }
  friend bool operator!=(const RunLoopExecutor& a, const RunLoopExecutor& b) noexcept {
    return !(a == b);
  }

 private:
  boost::asio::io_context* context_;
  qz::Ref<qz::NSRunLoop> loop_;
};
