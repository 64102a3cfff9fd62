/// @file
/// Private: a file descriptor with an owner, and what every caller of read(2) and write(2) needs.
#pragma once

#include <cstddef>
#include <span>
#include <utility>

#pragma GCC visibility push(default)

namespace qz::detail {

/// Owns an open descriptor, or none. Leaves `errno` alone when it closes.
class Descriptor {
 public:
  Descriptor() noexcept = default;
  explicit Descriptor(int number) noexcept : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { close(); }

  int number() const noexcept { return number_; }
  explicit operator bool() const noexcept { return number_ >= 0; }

  /// Gives the descriptor away.
  int release() noexcept { return std::exchange(number_, -1); }
  void close() noexcept;

  /// Closes what was written to: some file systems tell only now that there was no room. Answers as
  /// `::close` does, with `errno`.
  [[nodiscard]] int closeWritten() noexcept;

 private:
  int number_ = -1;
};

/// Reads once, waiting for bytes even where the descriptor is set not to wait. How many; 0 at the
/// end, -1 with `errno` set.
std::ptrdiff_t readSome(int descriptor, void* buffer, std::size_t length) noexcept;

/// Writes all of it. 0, or the `errno` of the write that failed; what was written before stays
/// written. A reader that went away is EPIPE and never a signal.
int writeAll(int descriptor, std::span<const std::byte> bytes) noexcept;

/// The same for a descriptor that is known to be no pipe and no socket, so that no signal has to be
/// held back.
int writeAllToFile(int descriptor, std::span<const std::byte> bytes) noexcept;

/// Whether writing to the descriptor can bring SIGPIPE.
bool canBreak(int descriptor) noexcept;

}  // namespace qz::detail

#pragma GCC visibility pop
