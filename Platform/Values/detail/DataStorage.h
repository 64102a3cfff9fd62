/// @file
/// Private: the kinds of immutable Data on the heap, and how they are made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "Platform/Runtime/detail/ObjectPool.h"
#include "Platform/Values/NSData.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// Data whose bytes follow it in one block.
class InlineData final : public NSData {
 public:
  /// The bytes are yet to be written, before anybody else sees the Data.
  static Ref<InlineData> make(std::uint32_t length) {
    void* block = poolAllocate(blockSize(length));
    auto* bytes = static_cast<std::byte*>(block) + sizeof(NSData);
    return {new (block) InlineData(bytes, length), adopt};
  }

  std::byte* buffer() noexcept { return reinterpret_cast<std::byte*>(this + 1); }

  /// Frees the block by its true size, which the length tells while the Data still stands.
  static void operator delete(InlineData* self, std::destroying_delete_t) noexcept {
    const std::size_t size = blockSize(self->length_);
    self->~InlineData();
    poolFree(self, size);
  }

 private:
  InlineData(std::byte* bytes, std::uint32_t length) noexcept : NSData(bytes, length) {}

  static constexpr std::size_t blockSize(std::uint32_t length) noexcept {
    return sizeof(NSData) + std::size_t{length};
  }
};
static_assert(sizeof(InlineData) == sizeof(NSData));

/// Data over a buffer from `malloc`, which it frees.
class BufferData final : public NSData {
 public:
  BufferData(const std::byte* bytes, std::uint32_t length) noexcept : NSData(bytes, length) {}
  ~BufferData() override { std::free(const_cast<std::byte*>(bytes_)); }
};

/// `length`, if Data may be that long; raises NSMallocException otherwise.
std::uint32_t checkedDataLength(std::uint64_t length);

/// `*data`; raises NSInvalidArgumentException for nil.
NSData& requireData(NSData* data, const char* operation);

/// New Data of `length` bytes that `fill` writes.
template <class Fill>
Ref<NSData> fillData(std::uint64_t length, Fill fill) {
  if (length == 0) return NSData::data();
  auto data = InlineData::make(checkedDataLength(length));
  fill(data->buffer());
  return data;
}

}  // namespace qz::detail

#pragma GCC visibility pop
