/// @file
/// Threads that do what others ask them to: the library's, and two as one writes them without it.
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Concurrency/NSThread.h"
#include "Platform/Concurrency/detail/Futex.h"

namespace qz::bench {

/// A thread that runs its loop.
class Server {
 public:
  Server()
      : thread_(NSThread::detachNewThread(
            [] { NSRunLoop::currentRunLoop()->runUntilDate(NSDate::distantFuture()); })) {}
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  ~Server() {
    loop_->stop();
    thread_->waitUntilFinished();
  }

  NSThread* thread() const { return thread_; }
  void call(const std::function<void()>& function) { loop_->performAndWait(function); }
  template <class F>
  void post(F function) {
    loop_->perform(std::move(function));
  }

 private:
  Ref<NSThread> thread_;
  Ref<NSRunLoop> loop_ = thread_->runLoop();
};

/// A loop as one writes it with a mutex, a condition variable and a deque.
class PlainLoop {
 public:
  /// Any thread.
  template <class F>
  void post(F function) {
    {
      std::lock_guard lock(mutex_);
      queue_.emplace_back(std::move(function));
    }
    wake_.notify_one();
  }

  /// Any thread but the loop's: posts, and waits until the function has been called.
  void call(const std::function<void()>& function) {
    bool isDone = false;
    std::mutex mutex;
    std::condition_variable done;
    post([&] {
      function();
      std::lock_guard lock(mutex);
      isDone = true;
      done.notify_one();
    });
    std::unique_lock lock(mutex);
    done.wait(lock, [&] { return isDone; });
  }

  /// Calls what is posted, until `stop`.
  void run() {
    for (;;) {
      std::function<void()> next;
      {
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [this] { return !queue_.empty(); });
        next = std::move(queue_.front());
        queue_.pop_front();
      }
      if (!next) return;
      next();
    }
  }
  void stop() { post(std::function<void()>()); }

 private:
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> queue_;
};

/// The same by the system's own means: posts are pushed onto a list without a lock, and who has to
/// wait sleeps in futex(2) at once. A post asks the kernel for something only when the loop sleeps.
class FutexLoop {
 public:
  template <class F>
  void post(F function) {
    auto* const post = new Post{std::move(function), newest_.load(std::memory_order_relaxed)};
    while (!newest_.compare_exchange_weak(post->next, post)) {
    }
    // Either this sees that the loop is about to sleep, or the loop sees the post before it does.
    if (isAsleep_.load() != 0 && isAsleep_.exchange(0) != 0) detail::futexWake(isAsleep_);
  }

  void call(const std::function<void()>& function) {
    std::atomic<std::uint32_t> isDone{0};
    post([&] {
      function();
      // The waiting thread may be gone with its variable by the second line, which then wakes
      // nobody: the kernel looks the address up, and does not read what is there.
      isDone.store(1);
      detail::futexWake(isDone);
    });
    while (isDone.load() == 0) detail::futexWait(isDone, 0, std::nullopt);
  }

  void run() {
    for (bool isRunning = true; isRunning;) {
      for (Post* each = takeOldestFirst(); each != nullptr;) {
        const std::unique_ptr<Post> post(each);
        each = post->next;
        if (post->function)
          post->function();
        else
          isRunning = false;
      }
    }
  }
  void stop() { post(std::function<void()>()); }

 private:
  struct Post {
    std::function<void()> function;
    Post* next;
  };

  Post* takeOldestFirst() {
    Post* newest = nullptr;
    while ((newest = newest_.exchange(nullptr)) == nullptr) {
      isAsleep_.store(1);
      if (newest_.load() == nullptr) detail::futexWait(isAsleep_, 1, std::nullopt);
      isAsleep_.store(0);
    }
    Post* oldest = nullptr;
    while (newest != nullptr) {
      Post* const next = std::exchange(newest->next, oldest);
      oldest = std::exchange(newest, next);
    }
    return oldest;
  }

  std::atomic<Post*> newest_{nullptr};
  std::atomic<std::uint32_t> isAsleep_{0};
};

/// A thread that runs such a loop.
template <class Loop>
class ServerOf : public Loop {
 public:
  ServerOf() : thread_([this] { this->run(); }) {}
  ServerOf(const ServerOf&) = delete;
  ServerOf& operator=(const ServerOf&) = delete;
  ~ServerOf() {
    this->stop();
    thread_.join();
  }

 private:
  std::thread thread_;
};

using PlainServer = ServerOf<PlainLoop>;
using FutexServer = ServerOf<FutexLoop>;

}  // namespace qz::bench
