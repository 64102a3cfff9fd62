#include "Platform/System/detail/NotifyQueue.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>

namespace qz::detail {

int NotifyQueue::open() {
  if (!wake_) wake_ = Descriptor(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
  if (!wake_) return errno;
  if (!notify_) notify_ = Descriptor(os::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  return notify_ ? 0 : errno;
}

bool NotifyQueue::wait(int milliseconds) {
  pollfd ready[] = {{descriptor(), POLLIN, 0}, {wake_.number(), POLLIN, 0}};
  if (::poll(ready, 2, milliseconds) <= 0) return false;
  if (ready[1].revents != 0) waitForWake(0);
  return ready[0].revents != 0;
}

bool NotifyQueue::waitForWake(int milliseconds) {
  pollfd ready{wake_.number(), POLLIN, 0};
  if (::poll(&ready, 1, milliseconds) <= 0) return false;
  std::uint64_t count = 0;
  [[maybe_unused]] const auto bytes = ::read(wake_.number(), &count, sizeof count);
  return true;
}

void NotifyQueue::wake() noexcept {
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto bytes = ::write(wake_.number(), &one, sizeof one);
}

bool isToldOfChanges(std::uint32_t fileSystemType) noexcept {
  switch (fileSystemType) {
    case 0x6969:      // nfs
    case 0xFF534D42:  // cifs
    case 0xFE534D42:  // smb2
    case 0x517B:      // smb
    case 0x65735546:  // fuse
    case 0x01021997:  // 9p
    case 0x5346414F:  // afs
    case 0x00C36400:  // ceph
    case 0x9FA0:      // proc
    case 0x62656572:  // sysfs
    case 0x64626720:  // debugfs
    case 0x63677270:  // cgroup2
      return false;
    default:
      return true;
  }
}

}  // namespace qz::detail
