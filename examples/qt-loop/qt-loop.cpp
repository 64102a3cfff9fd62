// A program whose main loop is Qt's: the library's loop for the main thread rides along behind a
// socket notifier. Functions posted from other threads, timers and main-thread messages all work as
// if the library's own loop were running.
#include <QCoreApplication>
#include <QSocketNotifier>
#include <iostream>

#include "Platform/Concurrency/MainThread.h"
#include "Platform/Concurrency/NSThread.h"

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  const auto loop = qz::NSRunLoop::mainRunLoop();
  QSocketNotifier notifier(loop->fileDescriptor(), QSocketNotifier::Read);
  QObject::connect(&notifier, &QSocketNotifier::activated, &application, [&loop] {
    // An exception must not cross Qt's loop: it is dealt with here.
    try {
      loop->runPending();
    } catch (const std::exception& error) {
      std::cerr << "in the main loop: " << error.what() << '\n';
    }
  });

  int ticks = 0;
  const auto timer = qz::NSTimer::scheduledTimer(0.01, true, [&](qz::NSTimer* due) {
    if (++ticks == 3) due->invalidate();
  });
  qz::NSThread::detachNewThread([&] {
    while (qz::callOnMainThread([&] { return ticks; }) < 3)
      qz::NSThread::sleepForTimeInterval(0.005);
    qz::postToMainThread([&] {
      std::cout << ticks << " ticks, told by a helper\n";
      QCoreApplication::quit();
    });
  });

  return application.exec();
}
