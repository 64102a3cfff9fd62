/// @file
/// Private: threads that take no signals meant for the program.
#pragma once

#include <pthread.h>
#include <signal.h>

namespace qz::detail {

/// While it lives, this thread blocks all signals; threads that it starts meanwhile go on doing so.
class SignalsHeldBack {
 public:
  SignalsHeldBack() noexcept {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  SignalsHeldBack(const SignalsHeldBack&) = delete;
  SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;
  ~SignalsHeldBack() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};

}  // namespace qz::detail
