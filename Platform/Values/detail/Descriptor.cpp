#include "Platform/Values/detail/Descriptor.h"

#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "Platform/Values/detail/SystemCalls.h"

namespace qz::detail {
namespace {

/// After a failed call: whether it is worth another turn. Waits where the descriptor does not.
bool isWorthRetrying(int descriptor, short event) noexcept {
  if (errno != EAGAIN) return false;
  pollfd waiting{descriptor, event, 0};
  while (::poll(&waiting, 1, -1) < 0)
    if (errno != EINTR) return false;
  return true;
}

/// Keeps the SIGPIPE of a write from reaching anybody: the thread blocks it, and takes away the one
/// that came, unless one was waiting already.
class PipeSignalHeld {
 public:
  PipeSignalHeld() noexcept {
    ::sigemptyset(&signal_);
    ::sigaddset(&signal_, SIGPIPE);
    sigset_t pending;
    ::sigpending(&pending);
    wasPending_ = ::sigismember(&pending, SIGPIPE) == 1;
    if (!wasPending_) ::pthread_sigmask(SIG_BLOCK, &signal_, &before_);
  }
  PipeSignalHeld(const PipeSignalHeld&) = delete;
  PipeSignalHeld& operator=(const PipeSignalHeld&) = delete;
  ~PipeSignalHeld() {
    if (wasPending_) return;
    if (broken_) {
      const timespec atOnce{0, 0};
      while (::sigtimedwait(&signal_, nullptr, &atOnce) < 0 && errno == EINTR) {
      }
    }
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

  void noteBroken() noexcept { broken_ = true; }

 private:
  sigset_t signal_;
  sigset_t before_;
  bool wasPending_ = false;
  bool broken_ = false;
};

}  // namespace

void Descriptor::close() noexcept {
  if (number_ < 0) return;
  const int kept = errno;
  os::close(std::exchange(number_, -1));
  errno = kept;
}

int Descriptor::closeWritten() noexcept {
  return number_ < 0 ? 0 : os::close(std::exchange(number_, -1));
}

std::ptrdiff_t readSome(int descriptor, void* buffer, std::size_t length) noexcept {
  for (;;) {
    const ssize_t count = os::read(descriptor, buffer, length);
    if (count >= 0 || !isWorthRetrying(descriptor, POLLIN)) return count;
  }
}

int writeAllToFile(int descriptor, std::span<const std::byte> bytes) noexcept {
  while (!bytes.empty()) {
    const ssize_t count = os::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && !isWorthRetrying(descriptor, POLLOUT)) return errno;
    if (count > 0) bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return 0;
}

int writeAll(int descriptor, std::span<const std::byte> bytes) noexcept {
  PipeSignalHeld held;
  const int problem = writeAllToFile(descriptor, bytes);
  if (problem == EPIPE) held.noteBroken();
  return problem;
}

bool canBreak(int descriptor) noexcept {
  struct stat about;
  return ::fstat(descriptor, &about) != 0 || S_ISFIFO(about.st_mode) || S_ISSOCK(about.st_mode);
}

}  // namespace qz::detail
