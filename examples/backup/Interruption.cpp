#include "Interruption.h"

#include <csignal>
#include <utility>

#include "Platform/Concurrency/MainThread.h"
#include "Platform/Concurrency/NSThread.h"

namespace backup {

using namespace qz;

namespace {

bool isIgnored(int signal) {
  struct sigaction action;
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

int waitFor(const sigset_t& signals) {
  int signal = 0;
  while (::sigwait(&signals, &signal) != 0) {
  }
  return signal;
}

[[noreturn]] void dieOf(int signal, const sigset_t& signals) {
  ::signal(signal, SIG_DFL);
  ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
  ::raise(signal);
  ::_exit(128 + signal);
}

}  // namespace

// The signals are blocked in every thread, and one thread waits for them: nothing of ours runs in a
// signal handler, where hardly anything is allowed.
void handleInterruptions(std::function<void(int signal)> onSignal) {
  sigset_t signals;
  ::sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    if (!isIgnored(signal)) ::sigaddset(&signals, signal);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  NSThread::detachNewThread([signals, onSignal = std::move(onSignal)] {
    const int signal = waitFor(signals);
    postToMainThread([&onSignal, signal] { onSignal(signal); });
    dieOf(waitFor(signals), signals);
  });
}

}  // namespace backup
