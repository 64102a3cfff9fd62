// A disk without room.
#pragma once

#include <signal.h>
#include <sys/resource.h>

namespace qz::test {

/// While it lives, files cannot grow beyond so many bytes.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) : signal_(::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit little{bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &little);
  }
  ~FullDisk() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    ::signal(SIGXFSZ, signal_);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  ::sighandler_t signal_;
  rlimit before_;
};

}  // namespace qz::test
