/// @file
/// Private: where bytes are put together before their number is known.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "Platform/Runtime/Ref.h"

#pragma GCC visibility push(default)
namespace qz {
class NSData;
}
#pragma GCC visibility pop

namespace qz::detail {

/// Growing bytes. Raises NSMallocException beyond what Data can hold.
class ByteBuffer {
 public:
  ByteBuffer() noexcept = default;
  ByteBuffer(const ByteBuffer&) = delete;
  ByteBuffer& operator=(const ByteBuffer&) = delete;
  ~ByteBuffer();

  std::size_t size() const noexcept { return size_; }

  /// Makes room for `count` more bytes and answers where they go; `commit` says how many came.
  char* room(std::size_t count) {
    if (count > capacity_ - size_) grow(count);
    return bytes_ + size_;
  }
  std::size_t roomLength() const noexcept { return capacity_ - size_; }
  void commit(const char* end) noexcept { size_ = static_cast<std::size_t>(end - bytes_); }

  void append(char byte) {
    *room(1) = byte;
    ++size_;
  }
  void append(std::string_view bytes) {
    if (bytes.empty()) return;
    std::memcpy(room(bytes.size()), bytes.data(), bytes.size());
    size_ += bytes.size();
  }
  void append(std::size_t count, char byte) {
    std::memset(room(count), byte, count);
    size_ += count;
  }

  /// The lowest `count` bytes of `value`, the highest first.
  void appendBigEndian(std::uint64_t value, unsigned count) {
    char* out = room(count);
    for (unsigned i = 0; i < count; ++i) out[i] = static_cast<char>(value >> (8 * (count - 1 - i)));
    size_ += count;
  }

  /// Data that takes the bytes over, which leaves this empty.
  Ref<NSData> toData();

 private:
  void grow(std::size_t count);

  char* bytes_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace qz::detail
