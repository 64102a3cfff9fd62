/// @file
/// Private: one inotify(7) descriptor, and a wait for it that can be ended.
#pragma once

#include <sys/inotify.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "Platform/Values/detail/Descriptor.h"
#include "Platform/Values/detail/SystemCalls.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// The waits and `read` belong to one thread; the rest may be called from any thread.
class NotifyQueue {
 public:
  /// What the kernel tells of a watch, or, with a name, of a member of a watched folder.
  struct Notice {
    int number;
    std::uint32_t bits;
    std::uint32_t cookie;
    std::string_view name;
  };

  /// 0, or the `errno` of what the system refused; what it gave is kept, so that a queue without
  /// notices can still be woken.
  int open();

  /// Of the kernel's queue; -1 while there is none.
  int descriptor() const noexcept { return notify_.number(); }
  bool canBeWoken() const noexcept { return wake_.number() >= 0; }

  /// The number of the watch, or -1 and `errno`.
  int add(const char* path, std::uint32_t mask) {
    return os::inotify_add_watch(descriptor(), path, mask);
  }
  bool remove(int number) { return ::inotify_rm_watch(descriptor(), number) == 0; }

  /// Waits until there is something to read, for ever when `milliseconds` is negative. Whether
  /// there is.
  bool wait(int milliseconds);

  /// Waits for `wake` alone. Whether it was called.
  bool waitForWake(int milliseconds);

  /// Ends the wait in progress, or else the next one.
  void wake() noexcept;

  /// Hands over the notices of one read; false when there were none.
  template <class F>
  bool read(F&& take) {
    alignas(inotify_event) char buffer[16 * 1024];
    const ssize_t size = ::read(descriptor(), buffer, sizeof buffer);
    for (ssize_t at = 0; at < size;) {
      inotify_event event;
      std::memcpy(&event, buffer + at, sizeof event);
      const char* name = event.len == 0 ? "" : buffer + at + sizeof event;  // ended by zeros
      take(Notice{event.wd, event.mask, event.cookie, name});
      at += static_cast<ssize_t>(sizeof event + event.len);
    }
    return size > 0;
  }

 private:
  Descriptor notify_;
  Descriptor wake_;
};

/// Whether what happens to a file system of this type (`f_type` of statfs(2)) is told: not on one
/// that other machines change, or that makes its files up.
bool isToldOfChanges(std::uint32_t fileSystemType) noexcept;

}  // namespace qz::detail

#pragma GCC visibility pop
