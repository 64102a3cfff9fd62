/// @file
/// Mutable data: bytes that grow and change.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "Platform/Values/NSData.h"

#pragma GCC visibility push(default)

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

  /// The counterparts of NSData's, answering a Data of the caller's own.
  static Ref<NSMutableData> data();
  static Ref<NSMutableData> dataWithBytes_length(const void* bytes, std::uint32_t length);
  static Ref<NSMutableData> dataWithBytes(std::span<const std::byte> bytes);
  static Ref<NSMutableData> dataWithBytes(std::string_view bytes);
  static Ref<NSMutableData> dataWithBytesNoCopy_length(void* bytes, std::uint32_t length);
  static Ref<NSMutableData> dataWithData(NSData* other);
  static Ref<NSMutableData> initWithBytes_length(const void* bytes, std::uint32_t length);
  static Ref<NSMutableData> initWithBytesNoCopy_length(void* bytes, std::uint32_t length);
  static Ref<NSMutableData> initWithData(NSData* other);
  static Ref<NSMutableData> initWithBase64EncodedString_options(NSString* text,
                                                                std::uint32_t options);
  static Ref<NSMutableData> initWithBase64EncodedData_options(NSData* text, std::uint32_t options);
  static Ref<NSMutableData> dataWithContentsOfFile(NSString* path);
  static Ref<NSMutableData> dataWithContentsOfFile_options_error(NSString* path,
                                                                 std::uint32_t options,
                                                                 Ref<NSError>* error);
  static Ref<NSMutableData> initWithContentsOfFile(NSString* path);
  static Ref<NSMutableData> initWithContentsOfFile_options_error(NSString* path,
                                                                 std::uint32_t options,
                                                                 Ref<NSError>* error);
  static Ref<NSMutableData> dataWithContentsOfURL(NSURL* url);
  static Ref<NSMutableData> dataWithContentsOfURL_options_error(NSURL* url, std::uint32_t options,
                                                                Ref<NSError>* error);

  /// Empty, with room for `capacity` bytes before it has to grow.
  static Ref<NSMutableData> dataWithCapacity(std::uint32_t capacity);
  static Ref<NSMutableData> initWithCapacity(std::uint32_t capacity);

  /// Of `length` zeros.
  static Ref<NSMutableData> dataWithLength(std::uint32_t length);
  static Ref<NSMutableData> initWithLength(std::uint32_t length);

  /// The bytes, to be written to.
  void* mutableBytes() noexcept QZ_LIFETIME_BOUND { return buffer(); }
  std::span<std::byte> mutableSpan() noexcept QZ_LIFETIME_BOUND { return {buffer(), length_}; }

  /// Adds at the end; the bytes may be this Data's own.
  void appendBytes_length(const void* bytes, std::uint32_t length);
  void appendBytes(std::span<const std::byte> bytes);
  void appendData(NSData* other);

  /// Adds the bytes of an integer.
  template <std::integral T>
  void appendInteger(T value, NSByteOrder order) {
    const T ordered = NSSwapHost(value, order);
    appendBytes(std::as_bytes(std::span(&ordered, 1)));
  }

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

#pragma GCC visibility pop
