/// @file
/// Strings: immutable UTF-16 text.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSRange.h"
#include "Platform/Values/NSStringFormat.h"
#include "Platform/Values/detail/LiteralText.h"

namespace qz {

class NSMutableString;

/// Immutable text as 16-bit code units; lengths, indices and Ranges count those units.
///
///     NSString* greeting = "Grüße"_ns;                      // no allocation, lives for ever
///     Ref<NSString> name = NSString::stringWithUTF8String(input);
///     std::string bytes = name->UTF8String();
///     Ref<NSString> line = NSString::stringWithFormat("%@: %d"_ns, name, 42);
///
/// Any sequence of units is a String, lone surrogates and zeros included. The longest has
/// 0x7FFFFFFE units; making a longer one raises NSMallocException. Strings may be read from any
/// number of threads; NSMutableString says what changes.
class NSString : public Derives<NSString, NSObject> {
 public:
  static void describe(ClassDescription<NSString>& is);

  /// The longest String's length.
  static constexpr std::uint32_t maxLength = 0x7FFFFFFE;

  /// An empty String.
  NSString() noexcept : NSString(u"", 0) {}

  // Making ----------------------------------------------------------------------------------------

  /// The empty String.
  static Ref<NSString> string();

  /// Of UTF-8 bytes; each maximal ill-formed part becomes one U+FFFD.
  static Ref<NSString> stringWithUTF8String(std::string_view bytes);

  /// Of UTF-8 bytes; nil when they are ill-formed.
  static Ref<NSString> stringWithValidUTF8String(std::string_view bytes);

  /// A copy of the units.
  static Ref<NSString> stringWithCharacters(std::u16string_view units);
  static Ref<NSString> stringWithCharacters_length(const char16_t* units, std::uint32_t length);

  /// A String with the units of `other`: `other` itself unless it is mutable. Raises
  /// NSInvalidArgumentException for nil.
  static Ref<NSString> stringWithString(NSString* other);

  /// Over a buffer from `malloc`, which the String takes without a copy and frees.
  static Ref<NSString> initWithCharactersNoCopy_length(char16_t* units, std::uint32_t length);

  /// Of a format and its arguments; NSStringFormat.h says what they print. Raises
  /// NSInvalidArgumentException for a nil format.
  template <FormatValue... Args>
  static Ref<NSString> stringWithFormat(NSString* format, const Args&... args) {
    return stringWithFormat_arguments(format, formatArguments(args...));
  }
  static Ref<NSString> stringWithFormat_arguments(NSString* format, FormatArguments arguments);

  /// The same as the forms above, under the names of initialisers.
  template <FormatValue... Args>
  static Ref<NSString> initWithFormat(NSString* format, const Args&... args) {
    return stringWithFormat_arguments(format, formatArguments(args...));
  }
  static Ref<NSString> initWithFormat_arguments(NSString* format, FormatArguments arguments) {
    return stringWithFormat_arguments(format, arguments);
  }

  // Reading ---------------------------------------------------------------------------------------

  /// How many code units. Constant time.
  std::uint32_t length() const noexcept { return length_; }

  /// The units, contiguous, not necessarily followed by a zero. Valid while the String lives and,
  /// for a mutable one, does not change.
  std::u16string_view view() const noexcept QZ_LIFETIME_BOUND { return {units_, length_}; }
  operator std::u16string_view() const noexcept QZ_LIFETIME_BOUND { return view(); }  // NOLINT

  /// The unit at `index`. Raises NSRangeException for an index not below the length.
  char16_t characterAtIndex(std::uint32_t index) const;

  /// Copies the units of `range` to `buffer`. Raises NSRangeException.
  void getCharacters_range(char16_t* buffer, NSRange range) const;

  /// The text as UTF-8; a lone surrogate becomes U+FFFD.
  std::string UTF8String() const;

  // Comparing -------------------------------------------------------------------------------------

  /// The same units. False for nil.
  bool isEqualToString(NSString* other) const noexcept;
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

  /// The order of the code units, and of the lengths when one begins with the other. Raises
  /// NSInvalidArgumentException for nil.
  NSComparisonResult compare(NSString* other) const;

  /// `compare` of what remains of both when case is folded ("Straße" is the same as "STRASSE").
  /// Independent of locale. Raises NSInvalidArgumentException for nil.
  NSComparisonResult caseInsensitiveCompare(NSString* other) const;

  /// Whether the String starts or ends with the units of `part`; always for an empty part. Raises
  /// NSInvalidArgumentException for nil.
  bool hasPrefix(NSString* part) const;
  bool hasSuffix(NSString* part) const;

  /// Where the units of `part` occur first; {NSNotFound, 0} when they do not or `part` is empty.
  /// Raises NSInvalidArgumentException for nil.
  NSRange rangeOfString(NSString* part) const;

  // Parts and combinations ------------------------------------------------------------------------

  /// The units from `index` on, before `index`, or in `range`. Raise NSRangeException for what is
  /// beyond the length.
  Ref<NSString> substringFromIndex(std::uint32_t index) const;
  Ref<NSString> substringToIndex(std::uint32_t index) const;
  Ref<NSString> substringWithRange(NSRange range) const;

  /// This text followed by `other`. Raises NSInvalidArgumentException for nil.
  Ref<NSString> stringByAppendingString(NSString* other) const;

  /// This text followed by a formatted one.
  template <FormatValue... Args>
  Ref<NSString> stringByAppendingFormat(NSString* format, const Args&... args) const {
    return stringByAppendingFormat_arguments(format, formatArguments(args...));
  }
  Ref<NSString> stringByAppendingFormat_arguments(NSString* format,
                                                  FormatArguments arguments) const;

  /// By Unicode's full case mappings, independent of locale: "ß" becomes "SS". In a capitalised
  /// text each word, which is what stands between blanks, starts with a capital and goes on in
  /// lower case: "O'neill And (co-op)" has no further ones, and "1st" has none.
  Ref<NSString> uppercaseString() const;
  Ref<NSString> lowercaseString() const;
  Ref<NSString> capitalizedString() const;

  // Reading numbers -------------------------------------------------------------------------------
  // Blanks, then a sign, then decimal digits; whatever follows is ignored. 0 when there are none.

  /// Values beyond the type answer its nearest limit: 0 for a negative `unsignedLongLongValue`.
  std::int32_t intValue() const noexcept;
  std::int64_t integerValue() const noexcept { return longLongValue(); }
  std::int64_t longLongValue() const noexcept;
  std::uint64_t unsignedLongLongValue() const noexcept;

  /// With "." as the decimal point and an exponent. Correctly rounded; beyond the type's range it
  /// is an infinity or zero.
  double doubleValue() const;
  float floatValue() const;

  /// True when, after blanks, a sign and zeros, comes one of Y y T t 1 … 9.
  bool boolValue() const noexcept;

  // Object ----------------------------------------------------------------------------------------

  /// This very String, unless it is mutable.
  Ref<NSObject> copy() const override;
  Ref<NSObject> mutableCopy() const override;
  Ref<NSString> description() const override;

 protected:
  NSString(const char16_t* units, std::uint32_t length) noexcept : length_(length), units_(units) {}
  constexpr NSString(ImmortalTag tag, const char16_t* units, std::uint32_t length,
                     std::uint32_t hash) noexcept
      : Derives(tag), length_(length), hash_(hash), units_(units) {}

  std::uint32_t length_ = 0;
  mutable std::atomic<std::uint32_t> hash_{0};  // 0: not computed yet
  const char16_t* units_ = nullptr;
};

namespace detail {

/// A String written in the source.
class LiteralString final : public NSString {
 public:
  constexpr LiteralString(const char16_t* units, std::uint32_t length) noexcept
      : NSString(ImmortalTag(), units, length, hashUnits(units, length)) {}
};

/// Holds a literal without ever destroying it. A constexpr variable of this type registers nothing
/// with the end of the program, so literals may be used by the last code to run; what changes in a
/// literal (the flags of its header) is mutable.
union Immortal {
  LiteralString string;
  constexpr Immortal(const char16_t* units, std::uint32_t length) noexcept
      : string(units, length) {}
  constexpr ~Immortal() {}
};

template <FixedText Text>
struct LiteralHolder {
  static constexpr LiteralUnits<sizeof(Text.text)> units{Text};
  static constexpr Immortal holder{units.units, units.count};
};

}  // namespace detail

inline namespace literals {
/// The String written in the source: one immortal Object per text, made while compiling.
template <detail::FixedText Text>
constexpr NSString* operator""_ns() noexcept {
  return const_cast<detail::LiteralString*>(&detail::LiteralHolder<Text>::holder.string);
}
}  // namespace literals

}  // namespace qz
