/// @file
/// Mutable strings: text that grows and changes.
#pragma once

#include <cstdint>
#include <string_view>

#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

/// A String whose units can be changed.
///
///     auto text = NSMutableString::string();
///     text->appendFormat("%d files"_ns, count);
///     Ref<NSString> kept = as<NSString>(text->copy());
///
/// Appending takes constant time per unit in the long run. What changes a MutableString must not
/// run while another thread uses it, and invalidates its `view()`. A change that fails with an
/// exception changes nothing. A change that would exceed the longest String raises
/// NSMallocException.
class NSMutableString final : public Derives<NSMutableString, NSString> {
 public:
  static void describe(ClassDescription<NSMutableString>& is);

  NSMutableString() noexcept = default;
  ~NSMutableString() override;

  /// The counterparts of NSString's, answering a String of the caller's own.
  static Ref<NSMutableString> string();
  static Ref<NSMutableString> stringWithUTF8String(std::string_view bytes);
  static Ref<NSMutableString> stringWithCharacters(std::u16string_view units);
  static Ref<NSMutableString> stringWithCharacters_length(const char16_t* units,
                                                          std::uint32_t length);
  static Ref<NSMutableString> stringWithString(NSString* other);
  template <FormatValue... Args>
  static Ref<NSMutableString> stringWithFormat(NSString* format, const Args&... args) {
    return stringWithFormat_arguments(format, formatArguments(args...));
  }
  static Ref<NSMutableString> stringWithFormat_arguments(NSString* format,
                                                         FormatArguments arguments);

  /// Empty, with room for `capacity` units before it has to grow.
  static Ref<NSMutableString> stringWithCapacity(std::uint32_t capacity);

  /// Adds at the end. `string` may be this String. Raises NSInvalidArgumentException for nil.
  void appendString(NSString* string);
  void appendCharacters(std::u16string_view units);

  /// Adds a formatted text at the end; this String may be among the arguments. Raises
  /// NSInvalidArgumentException for a nil format.
  template <FormatValue... Args>
  void appendFormat(NSString* format, const Args&... args) {
    appendFormat_arguments(format, formatArguments(args...));
  }
  void appendFormat_arguments(NSString* format, FormatArguments arguments);

  /// Puts `string` before the unit at `index`, or at the end when that is the length. Raises
  /// NSRangeException beyond it, NSInvalidArgumentException for nil.
  void insertString_atIndex(NSString* string, std::uint32_t index);

  /// Raise NSRangeException for a range beyond the length, NSInvalidArgumentException for nil.
  void deleteCharactersInRange(NSRange range);
  void replaceCharactersInRange_withString(NSRange range, NSString* string);

  /// As NSString's `stringByReplacingOccurrences…`; answers how many were replaced.
  std::uint32_t replaceOccurrencesOfString_withString_options_range(NSString* part,
                                                                    NSString* replacement,
                                                                    std::uint32_t options,
                                                                    NSRange range);

  /// Replaces the whole text. Raises NSInvalidArgumentException for nil.
  void setString(NSString* string);

  /// Of the units there are now; not remembered.
  std::size_t hash() const override;

  /// An immutable String of the units there are now.
  Ref<NSObject> copy() const override;
  Ref<NSString> description() const override;

 private:
  char16_t* buffer() noexcept { return const_cast<char16_t*>(units_); }
  void reserve(std::uint64_t length);
  void replace(NSRange range, std::u16string_view units);
  void replaceForeign(NSRange range, std::u16string_view units);

  std::uint32_t capacity_ = 0;  // 0: the units are not ours
};

}  // namespace qz

#pragma GCC visibility pop
