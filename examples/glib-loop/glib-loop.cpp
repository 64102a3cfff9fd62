// A program whose main loop is GLib's: the library's loop for the main thread rides along as one
// more source. Functions posted from other threads, timers and main-thread messages all work as if
// the library's own loop were running.
#include <glib-unix.h>
#include <glib.h>

#include <iostream>

#include "Platform/Concurrency/MainThread.h"
#include "Platform/Concurrency/NSThread.h"

namespace {

// An exception must not cross a C library: it is dealt with here.
gboolean servePending(gint, GIOCondition, gpointer loop) {
  try {
    static_cast<qz::NSRunLoop*>(loop)->runPending();
  } catch (const std::exception& error) {
    std::cerr << "in the main loop: " << error.what() << '\n';
  }
  return G_SOURCE_CONTINUE;
}

}  // namespace

int main() {
  const auto loop = qz::NSRunLoop::mainRunLoop();
  GMainLoop* main = g_main_loop_new(nullptr, FALSE);
  g_unix_fd_add(loop->fileDescriptor(), G_IO_IN, &servePending, loop.get());

  int ticks = 0;
  const auto timer = qz::NSTimer::scheduledTimer(0.01, true, [&](qz::NSTimer* due) {
    if (++ticks == 3) due->invalidate();
  });
  qz::NSThread::detachNewThread([&] {
    while (qz::callOnMainThread([&] { return ticks; }) < 3)
      qz::NSThread::sleepForTimeInterval(0.005);
    qz::postToMainThread([&] {
      std::cout << ticks << " ticks, told by a helper\n";
      g_main_loop_quit(main);
    });
  });

  g_main_loop_run(main);
  g_main_loop_unref(main);
}
