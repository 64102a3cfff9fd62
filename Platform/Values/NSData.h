/// @file
/// Data: bytes as an Object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSRange.h"

namespace qz {

class NSMutableData;

/// Immutable bytes.
///
///     Ref<NSData> data = NSData::dataWithBytes(std::string_view("abc"));
///     std::span<const std::byte> bytes = data->span();
///
/// The longest has 0x7FFFFFFE bytes; making a longer one raises NSMallocException. Data may be read
/// from any number of threads; NSMutableData says what changes.
class NSData : public Derives<NSData, NSObject> {
 public:
  static void describe(ClassDescription<NSData>& is);

  /// The greatest length.
  static constexpr std::uint32_t maxLength = 0x7FFFFFFE;

  /// Without bytes.
  NSData() noexcept = default;

  // Making ----------------------------------------------------------------------------------------

  /// The empty Data.
  static Ref<NSData> data();

  /// A copy of the bytes, which may be null when there are none.
  static Ref<NSData> dataWithBytes_length(const void* bytes, std::uint32_t length);
  static Ref<NSData> dataWithBytes(std::span<const std::byte> bytes);
  static Ref<NSData> dataWithBytes(std::string_view bytes);
  static Ref<NSData> initWithBytes_length(const void* bytes, std::uint32_t length);

  /// Over a buffer from `malloc`, which the Data takes without a copy and frees.
  static Ref<NSData> dataWithBytesNoCopy_length(void* bytes, std::uint32_t length);

  /// `other` itself unless it is mutable. Raises NSInvalidArgumentException for nil.
  static Ref<NSData> dataWithData(NSData* other);

  // Reading ---------------------------------------------------------------------------------------

  std::uint32_t length() const noexcept { return length_; }

  /// The bytes, side by side; null is possible when there are none. Valid while the Data lives and,
  /// for a mutable one, does not change.
  const void* bytes() const noexcept QZ_LIFETIME_BOUND { return bytes_; }
  std::span<const std::byte> span() const noexcept QZ_LIFETIME_BOUND { return {bytes_, length_}; }
  std::string_view view() const noexcept QZ_LIFETIME_BOUND {
    return {reinterpret_cast<const char*>(bytes_), length_};
  }

  /// Copies all bytes, as many as there are of the first `length`, or those of `range`, to a buffer
  /// with room for them. A range beyond the length raises NSRangeException.
  void getBytes(void* buffer) const noexcept;
  void getBytes_length(void* buffer, std::uint32_t length) const noexcept;
  void getBytes_range(void* buffer, NSRange range) const;

  /// The bytes of `range`. Raises NSRangeException.
  Ref<NSData> subdataWithRange(NSRange range) const;

  // As an Object ----------------------------------------------------------------------------------

  /// The same bytes. False for nil.
  bool isEqualToData(NSData* other) const noexcept;
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

  /// In hexadecimal, four bytes together: "<48656c6c 6f>".
  Ref<NSString> description() const override;

  /// This very Data, unless it is mutable.
  Ref<NSObject> copy() const override;
  Ref<NSObject> mutableCopy() const override;

 protected:
  NSData(const std::byte* bytes, std::uint32_t length) noexcept : length_(length), bytes_(bytes) {}

  std::uint32_t length_ = 0;
  const std::byte* bytes_ = nullptr;
};

}  // namespace qz
