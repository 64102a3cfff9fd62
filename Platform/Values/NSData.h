/// @file
/// Data: bytes as an Object.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSByteOrder.h"
#include "Platform/Values/NSRange.h"

#pragma GCC visibility push(default)

namespace qz {

class NSError;
class NSMutableData;
class NSURL;

/// How a file is read.
enum NSDataReadingOptions : std::uint32_t {
  /// A file of more than some pages is mapped instead of copied. Whoever shortens it while the Data
  /// lives takes the bytes away, and touching them then ends the program: for files that nobody
  /// else writes.
  NSDataReadingMapped = 1u << 0,
  /// The system need not keep the file's pages in memory afterwards.
  NSDataReadingUncached = 1u << 1,
};

/// How a file is written.
enum NSDataWritingOptions : std::uint32_t {
  /// All or nothing: see NSData::writeToFile_atomically.
  NSDataWritingAtomic = 1u << 0,
  /// Fails with EEXIST where there is a file already.
  NSDataWritingWithoutOverwriting = 1u << 1,
};

/// Where a search looks.
enum NSDataSearchOptions : std::uint32_t {
  NSDataSearchBackwards = 1u << 0,  ///< from the end
  NSDataSearchAnchored = 1u << 1,   ///< only at the start; with Backwards only at the end
};

/// Base64 (RFC 4648, section 4): the length of the lines, and what stands between two of them
/// (both when both or neither are asked for).
enum NSDataBase64Options : std::uint32_t {
  NSDataBase64Encoding64CharacterLineLength = 1u << 0,
  NSDataBase64Encoding76CharacterLineLength = 1u << 1,
  NSDataBase64EncodingEndLineWithCarriageReturn = 1u << 4,
  NSDataBase64EncodingEndLineWithLineFeed = 1u << 5,
  /// When decoding: skip what is not of the alphabet, line ends above all.
  NSDataBase64DecodingIgnoreUnknownCharacters = 1u << 0,
};

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
  static Ref<NSData> initWithBytesNoCopy_length(void* bytes, std::uint32_t length);

  /// `other` itself unless it is mutable. Raises NSInvalidArgumentException for nil.
  static Ref<NSData> dataWithData(NSData* other);
  static Ref<NSData> initWithData(NSData* other);

  /// The bytes that the text or the Data says in Base64, its padding included; nil when it is not
  /// well formed, and for nil. `options` of NSDataBase64Options.
  static Ref<NSData> initWithBase64EncodedString_options(NSString* text, std::uint32_t options);
  static Ref<NSData> initWithBase64EncodedData_options(NSData* text, std::uint32_t options);

  // Files -----------------------------------------------------------------------------------------
  // `error` may be null; it is set when the answer is nil or false, in NSPOSIXErrorDomain with the
  // path under NSFilePathErrorKey, and left alone otherwise. A nil path, or one that the system
  // cannot have, is the error EINVAL.

  /// All bytes of a file, links followed; pipes and devices are read to their end. Nil when that
  /// fails, for a directory (EISDIR) and beyond the greatest length (EFBIG). `options` of
  /// NSDataReadingOptions; 0 copies the bytes.
  static Ref<NSData> dataWithContentsOfFile(NSString* path);
  static Ref<NSData> dataWithContentsOfFile_options_error(NSString* path, std::uint32_t options,
                                                          Ref<NSError>* error);
  static Ref<NSData> initWithContentsOfFile(NSString* path);
  static Ref<NSData> initWithContentsOfFile_options_error(NSString* path, std::uint32_t options,
                                                          Ref<NSError>* error);

  /// The same of a "file" URL; any other is the error EINVAL.
  static Ref<NSData> dataWithContentsOfURL(NSURL* url);
  static Ref<NSData> dataWithContentsOfURL_options_error(NSURL* url, std::uint32_t options,
                                                         Ref<NSError>* error);

  /// Writes all bytes to a file; false when that fails.
  ///
  /// Atomically, the bytes go to a new file beside it, which takes the old one's place when
  /// everything is on the disk. Whatever fails, and when the machine stops, the old file is there
  /// as it was, and nothing else; others read the old file or the new one, never half of it. A new
  /// file gets the old one's permissions, and its owner if the system allows it; a link stays, and
  /// what it leads to is replaced. A pipe or a device, which nothing can take the place of, is
  /// written to.
  ///
  /// Not atomically, the file is emptied and then written, so a failure leaves the part that was
  /// written. `options` of NSDataWritingOptions.
  bool writeToFile_atomically(NSString* path, bool atomically) const;
  bool writeToFile_options_error(NSString* path, std::uint32_t options, Ref<NSError>* error) const;
  bool writeToURL_atomically(NSURL* url, bool atomically) const;
  bool writeToURL_options_error(NSURL* url, std::uint32_t options, Ref<NSError>* error) const;

  // Reading ---------------------------------------------------------------------------------------

  /// The number of bytes.
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

  /// The integer at `location`, which need not be aligned. Raises NSRangeException.
  template <std::integral T>
  T integerAtLocation(std::uint32_t location, NSByteOrder order) const {
    T value;
    getBytes_range(&value, {location, sizeof value});
    return NSSwapHost(value, order);
  }

  /// Where `data` first occurs within `range`; {NSNotFound, 0} when it does not or is empty.
  /// `options` of NSDataSearchOptions. Raises NSRangeException, NSInvalidArgumentException for nil.
  NSRange rangeOfData_options_range(NSData* data, std::uint32_t options, NSRange range) const;

  /// In Base64, with padding. `options` of NSDataBase64Options; 0 gives one line.
  Ref<NSString> base64EncodedStringWithOptions(std::uint32_t options) const;
  Ref<NSData> base64EncodedDataWithOptions(std::uint32_t options) const;

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
  /// Over bytes that the class below keeps.
  NSData(const std::byte* bytes, std::uint32_t length) noexcept : length_(length), bytes_(bytes) {}

  /// The bytes, for the class below to keep in step with what it has.
  std::uint32_t length_ = 0;
  const std::byte* bytes_ = nullptr;
};

}  // namespace qz

#pragma GCC visibility pop
