/// @file
/// Private: bytes of unknown number, read straight to where they stay.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "Platform/Values/NSData.h"
#include "Platform/Values/detail/DataStorage.h"

namespace qz::detail {

/// Grows a buffer by doubling, which moves large ones without copying, and becomes Data without a
/// copy.
class ByteCollector {
 public:
  ByteCollector() noexcept = default;
  ByteCollector(const ByteCollector&) = delete;
  ByteCollector& operator=(const ByteCollector&) = delete;
  ~ByteCollector() { std::free(bytes_); }

  std::size_t length() const noexcept { return length_; }

  /// Room for at least `least` bytes more; raises NSMallocException where Data cannot be so long.
  std::byte* room(std::size_t least) {
    if (capacity_ - length_ < least) grow(std::size_t{checkedDataLength(length_ + least)});
    return bytes_ + length_;
  }
  std::size_t roomLength() const noexcept { return capacity_ - length_; }
  void added(std::size_t count) noexcept { length_ += count; }

  /// The bytes as Data; empty afterwards.
  Ref<NSData> take() {
    if (length_ == 0) return NSData::data();
    if (void* fitting = std::realloc(bytes_, length_)) bytes_ = static_cast<std::byte*>(fitting);
    const auto length = static_cast<std::uint32_t>(std::exchange(length_, 0));
    capacity_ = 0;
    return NSData::dataWithBytesNoCopy_length(std::exchange(bytes_, nullptr), length);
  }

 private:
  void grow(std::size_t least) {
    const std::size_t wanted =
        std::min<std::size_t>(std::max(least, capacity_ * 2), NSData::maxLength);
    void* larger = std::realloc(bytes_, wanted);
    if (larger == nullptr) throw std::bad_alloc();
    bytes_ = static_cast<std::byte*>(larger);
    capacity_ = wanted;
  }

  std::byte* bytes_ = nullptr;
  std::size_t length_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace qz::detail
