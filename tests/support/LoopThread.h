// A thread to send things to.
#pragma once

#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Concurrency/NSThread.h"
#include "Platform/Values/NSDate.h"

namespace qz::test {

/// Runs its loop for as long as this lives, or until `end`.
class LoopThread {
 public:
  LoopThread()
      : thread(NSThread::detachNewThread(
            [] { NSRunLoop::currentRunLoop()->runUntilDate(NSDate::distantFuture()); })) {}
  ~LoopThread() { end(); }
  LoopThread(const LoopThread&) = delete;
  LoopThread& operator=(const LoopThread&) = delete;

  void end() {
    loop->stop();
    thread->waitUntilFinished();
  }

  const Ref<NSThread> thread;
  const Ref<NSRunLoop> loop = thread->runLoop();
};

}  // namespace qz::test
