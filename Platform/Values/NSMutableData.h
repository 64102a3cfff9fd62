/// @file
/// Mutable data: bytes that grow and change.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "Platform/Values/NSData.h"

namespace qz {

/// Data whose bytes can be changed. Appending takes constant time per byte in the long run. What
/// changes it must not run while another thread uses it, and invalidates `bytes`, `span` and
/// `view`. Ranges beyond the length raise NSRangeException, nil raises NSInvalidArgumentException,
/// a length beyond the greatest NSMallocException; then nothing has changed.
class NSMutableData final : public Derives<NSMutableData, NSData> {
 public:
  static void describe(ClassDescription<NSMutableData>& is);

  NSMutableData() noexcept = default;
  ~NSMutableData() override;

  // The counterparts of NSData's, answering a Data of the caller's own.
  static Ref<NSMutableData> data();
  static Ref<NSMutableData> dataWithBytes_length(const void* bytes, std::uint32_t length);
  static Ref<NSMutableData> dataWithBytes(std::span<const std::byte> bytes);
  static Ref<NSMutableData> dataWithBytes(std::string_view bytes);
  static Ref<NSMutableData> dataWithData(NSData* other);

  /// Empty, with room for `capacity` bytes before it has to grow.
  static Ref<NSMutableData> dataWithCapacity(std::uint32_t capacity);

  /// Of `length` zeros.
  static Ref<NSMutableData> dataWithLength(std::uint32_t length);

  /// The bytes, to be written to.
  void* mutableBytes() noexcept QZ_LIFETIME_BOUND { return buffer(); }

  /// Adds at the end; the bytes may be this Data's own.
  void appendBytes_length(const void* bytes, std::uint32_t length);
  void appendBytes(std::span<const std::byte> bytes);
  void appendData(NSData* other);

  /// Cuts the end off, or fills up with zeros.
  void setLength(std::uint32_t length);
  void increaseLengthBy(std::uint32_t more);

  /// Zeros for the bytes of `range`.
  void resetBytesInRange(NSRange range);

  /// Other bytes for those of `range`: as many, or `length`. They may be this Data's own.
  void replaceBytesInRange_withBytes(NSRange range, const void* bytes);
  void replaceBytesInRange_withBytes_length(NSRange range, const void* bytes, std::uint32_t length);

  /// Replaces all bytes.
  void setData(NSData* other);

  /// Immutable Data of the bytes there are now.
  Ref<NSObject> copy() const override;

 private:
  std::byte* buffer() noexcept { return const_cast<std::byte*>(bytes_); }
  void reserve(std::uint64_t length);
  void replace(NSRange range, std::span<const std::byte> bytes);

  std::uint32_t capacity_ = 0;
};

}  // namespace qz
