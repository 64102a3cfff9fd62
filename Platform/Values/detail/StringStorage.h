/// @file
/// Private: the kinds of immutable Strings on the heap, and how they are made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string_view>
#include <utility>

#include "Platform/Runtime/detail/ObjectPool.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// A String whose units follow it in one block: `sizeof(NSString)` and two bytes for each unit.
class InlineString final : public NSString {
 public:
  /// The units are yet to be written, before anybody else sees the String.
  static Ref<InlineString> make(std::uint32_t length) {
    void* block = poolAllocate(blockSize(length));
    auto* units = reinterpret_cast<char16_t*>(static_cast<char*>(block) + sizeof(NSString));
    return {new (block) InlineString(units, length), adopt};
  }

  char16_t* buffer() noexcept { return reinterpret_cast<char16_t*>(this + 1); }

  /// Frees the block by its true size, which the length tells while the String still stands.
  static void operator delete(InlineString* self, std::destroying_delete_t) noexcept {
    const std::size_t size = blockSize(self->length_);
    self->~InlineString();
    poolFree(self, size);
  }

 private:
  InlineString(char16_t* units, std::uint32_t length) noexcept : NSString(units, length) {}

  static constexpr std::size_t blockSize(std::uint32_t length) noexcept {
    return sizeof(NSString) + std::size_t{length} * sizeof(char16_t);
  }
};
static_assert(sizeof(InlineString) == sizeof(NSString));

/// A String over a buffer from `malloc`, which it frees.
class BufferString final : public NSString {
 public:
  BufferString(char16_t* units, std::uint32_t length) noexcept : NSString(units, length) {}
  ~BufferString() override { std::free(const_cast<char16_t*>(units_)); }
};

/// Refuses a length no String can have: raises NSMallocException.
[[noreturn]] void refuseLength(std::uint64_t length);

/// The sum, if a String may be that long; raises NSMallocException otherwise.
inline std::uint32_t checkedLength(std::uint64_t a, std::uint64_t b = 0) {
  const std::uint64_t sum = a + b;
  if (sum < a || sum > NSString::maxLength) [[unlikely]]
    refuseLength(sum < a ? UINT64_MAX : sum);
  return static_cast<std::uint32_t>(sum);
}

/// `realloc` for units. Raises NSMallocException when there is no memory, and `units` stays.
char16_t* reallocateUnits(char16_t* units, std::size_t count);

/// Gives back what lies behind the first `count` units; never fails.
char16_t* shrinkUnits(char16_t* units, std::size_t count) noexcept;

/// A copy of `units`; the empty one is always the same Object.
Ref<NSString> makeString(std::u16string_view units);

/// A String that takes over `units`, from `malloc`.
Ref<NSString> adoptUnits(char16_t* units, std::size_t count);

/// A new String of `length` units that `fill` writes.
template <class Fill>
Ref<NSString> fillString(std::uint64_t length, Fill fill) {
  if (length == 0) return ""_ns;
  auto string = InlineString::make(checkedLength(length));
  fill(string->buffer());
  return string;
}

/// `argument`, which must not be nil: raises NSInvalidArgumentException naming the operation.
NSString& requireString(NSString* argument, const char* operation);

}  // namespace qz::detail

#pragma GCC visibility pop
