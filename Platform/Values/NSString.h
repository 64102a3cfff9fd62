/// @file
/// Strings: immutable UTF-16 text.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSRange.h"
#include "Platform/Values/NSStringCompareOptions.h"
#include "Platform/Values/NSStringEncoding.h"
#include "Platform/Values/NSStringFormat.h"

#pragma GCC visibility push(default)

namespace qz {

class NSCharacterSet;
class NSData;
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

  /// The order as NSStringCompareOptions ask, of this String or of the units in `range` against all
  /// of `other`. Texts that the options make no difference between are the same. Raise
  /// NSInvalidArgumentException for nil, NSRangeException.
  NSComparisonResult compare_options(NSString* other, std::uint32_t options) const;
  NSComparisonResult compare_options_range(NSString* other, std::uint32_t options,
                                           NSRange range) const;

  /// The order in which a reader of the user's language expects texts, with case as the last
  /// difference or none. Raise NSInvalidArgumentException for nil.
  NSComparisonResult localizedCompare(NSString* other) const;
  NSComparisonResult localizedCaseInsensitiveCompare(NSString* other) const;

  /// Whether the String starts with, ends with or has the units of `part`. It starts and ends with
  /// an empty part, and contains none. Raise NSInvalidArgumentException for nil.
  bool hasPrefix(NSString* part) const;
  bool hasSuffix(NSString* part) const;
  bool containsString(NSString* part) const;

  // Searching -------------------------------------------------------------------------------------
  // Ranges beyond the length raise NSRangeException, nil raises NSInvalidArgumentException.

  /// Where `part` occurs; {NSNotFound, 0} when it does not or is empty. Without options the units
  /// have to be the same, so half a surrogate pair is found like any unit. With an option that
  /// overlooks something, whole characters match, and the answer may be longer or shorter than
  /// `part`; accents behind its last character belong to it.
  NSRange rangeOfString(NSString* part) const;
  NSRange rangeOfString_options(NSString* part, std::uint32_t options) const;
  NSRange rangeOfString_options_range(NSString* part, std::uint32_t options, NSRange range) const;

  /// Where the first member of `set` is: one unit, or two for a surrogate pair; {NSNotFound, 0} for
  /// none. Of the options, backwards and anchored count.
  NSRange rangeOfCharacterFromSet(NSCharacterSet* set) const;
  NSRange rangeOfCharacterFromSet_options(NSCharacterSet* set, std::uint32_t options) const;
  NSRange rangeOfCharacterFromSet_options_range(NSCharacterSet* set, std::uint32_t options,
                                                NSRange range) const;

  /// What both begin with, as it stands here; whole characters only.
  Ref<NSString> commonPrefixWithString_options(NSString* other, std::uint32_t options) const;

  // Lines -----------------------------------------------------------------------------------------
  // A line ends with LF, CR, CR LF (which is one), U+0085, U+2028 or U+2029, or with the text.

  /// The lines, terminators included, that `range` touches; for an empty range the line it is on,
  /// which behind the last terminator is an empty one. Raise NSRangeException.
  NSRange lineRangeForRange(NSRange range) const;

  /// The same for paragraphs, which a line separator (U+2028) does not end.
  NSRange paragraphRangeForRange(NSRange range) const;

  /// Where the first of these lines starts, where the last one ends, and where its text ends before
  /// the terminator. Each place may be null.
  void getLineStart_end_contentsEnd_forRange(std::uint32_t* start, std::uint32_t* end,
                                             std::uint32_t* contentsEnd, NSRange range) const;

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

  /// Each occurrence of `part` replaced, from the left, or from the right with the backwards
  /// option; with the anchored one, that at the range's edge alone. What is searched is this text,
  /// not what it becomes. Raise NSRangeException, NSInvalidArgumentException for nil.
  Ref<NSString> stringByReplacingOccurrencesOfString_withString(NSString* part,
                                                                NSString* replacement) const;
  Ref<NSString> stringByReplacingOccurrencesOfString_withString_options_range(NSString* part,
                                                                              NSString* replacement,
                                                                              std::uint32_t options,
                                                                              NSRange range) const;

  /// What stands between separators, empty pieces included: one more than there are separators, so
  /// an empty String gives an Array of one. An empty separator separates nothing. Raise
  /// NSInvalidArgumentException for nil.
  Ref<NSArray> componentsSeparatedByString(NSString* separator) const;
  Ref<NSArray> componentsSeparatedByCharactersInSet(NSCharacterSet* set) const;

  /// Without the members of `set` at both ends. Raises NSInvalidArgumentException for nil.
  Ref<NSString> stringByTrimmingCharactersInSet(NSCharacterSet* set) const;

  /// Cut to `length`, or filled up to it with `padding` over and over, from its unit at `index` on.
  /// Raises NSInvalidArgumentException for a nil or empty padding, NSRangeException for an index
  /// not below its length.
  Ref<NSString> stringByPaddingToLength_withString_startingAtIndex(std::uint32_t length,
                                                                   NSString* padding,
                                                                   std::uint32_t index) const;

  /// In Unicode's normal forms: C and D, and KC and KD, which also undo differences of style.
  Ref<NSString> precomposedStringWithCanonicalMapping() const;
  Ref<NSString> decomposedStringWithCanonicalMapping() const;
  Ref<NSString> precomposedStringWithCompatibilityMapping() const;
  Ref<NSString> decomposedStringWithCompatibilityMapping() const;

  // Encodings -------------------------------------------------------------------------------------
  // NSStringEncoding.h tells which there are. An unknown one raises NSInvalidArgumentException.

  /// Of bytes in an encoding; nil when they are not well-formed in it, and for nil.
  static Ref<NSString> initWithData_encoding(NSData* data, std::uint32_t encoding);
  static Ref<NSString> initWithBytes_length_encoding(const void* bytes, std::uint32_t length,
                                                     std::uint32_t encoding);

  /// The text in an encoding. What cannot be told in it, lone surrogates included, makes the answer
  /// nil, or is replaced if loss is allowed: by U+FFFD in Unicode's encodings, else by "?".
  Ref<NSData> dataUsingEncoding(std::uint32_t encoding) const;
  Ref<NSData> dataUsingEncoding_allowLossyConversion(std::uint32_t encoding, bool lossy) const;

  /// Whether nothing would be lost, and how many bytes it would take: 0 when it cannot be told.
  bool canBeConvertedToEncoding(std::uint32_t encoding) const;
  std::uint32_t lengthOfBytesUsingEncoding(std::uint32_t encoding) const;

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

  /// True when, after blanks, a sign and zeros, comes one of Y y T t 1 … 9. Sends the Selector, so
  /// that a library which reads truth values otherwise is heard everywhere.
  bool boolValue() const;

  // Paths -----------------------------------------------------------------------------------------
  // A path is names with slashes between them. Where one slash may stand, several mean the same;
  // those at the end mean nothing, and operations that answer a path take them away. A slash at the
  // start makes the path absolute and counts as the component "/". All of this is done by the text
  // alone; only the tilde and NSPathUtilities.h ask the system.

  /// "/a//b/" has the components "/", "a" and "b"; "//" has "/"; "" has none.
  Ref<NSArray> pathComponents() const;

  /// The Strings in `components` as a path, the opposite of `pathComponents`: absolute when the
  /// first begins with "/". Empty ones add nothing. The empty String for nil.
  static Ref<NSString> pathWithComponents(NSArray* components);

  /// Whether it begins with "/"; "~" does not count.
  bool isAbsolutePath() const noexcept;

  /// "b" of "/a/b/", "/" of "/", "" of "".
  Ref<NSString> lastPathComponent() const;

  /// What leads to the last component: "/a" of "/a/b", "/" of "/a" and of "/", "" of "a".
  Ref<NSString> stringByDeletingLastPathComponent() const;

  /// The path with `component` at its end, one slash between them: "/a/" and "/b" give "/a/b". The
  /// empty path gives the component as it is. Raises NSInvalidArgumentException for nil.
  Ref<NSString> stringByAppendingPathComponent(NSString* component) const;

  /// What follows the last "." of the last component: "b" of "x.y/a.b/". Empty where there is no
  /// "." or nothing follows it, and where nothing but dots goes before: ".hidden", "..", "a.".
  Ref<NSString> pathExtension() const;

  /// Without the extension and its ".", if there is one: "a" of "a.b/", ".hidden" of ".hidden".
  Ref<NSString> stringByDeletingPathExtension() const;

  /// "a/" and "b" give "a.b". The path itself when it has no name to extend ("" and "/"), and for
  /// the empty extension. Raises NSInvalidArgumentException for nil and for one with a slash.
  Ref<NSString> stringByAppendingPathExtension(NSString* extension) const;

  /// "~" in place of the user's home directory at the start, and back: "~" or "~name" as the first
  /// component becomes the home directory of the user, or of the one named. Unchanged when there
  /// is no such user or when the home directory is "/".
  Ref<NSString> stringByAbbreviatingWithTildeInPath() const;
  Ref<NSString> stringByExpandingTildeInPath() const;

  /// With the tilde expanded, without "." components, and without ".." and the component before
  /// it: "~/a/../b/." and "/../x". By the text alone, which is another place than the system finds
  /// where a component is a symbolic link. A path that comes to nothing is ".", the empty one "".
  Ref<NSString> stringByStandardizingPath() const;

  /// The bytes by which the system knows the path: UTF-8. File names may have other bytes; from
  /// those, `stringWithFileSystemRepresentation` makes the units U+DC80 to U+DCFF, lone surrogates
  /// which no text has, and which become the same bytes again here. Raises
  /// NSInvalidArgumentException for a zero in the path, and for any other lone surrogate.
  std::string fileSystemRepresentation() const;
  static Ref<NSString> stringWithFileSystemRepresentation(std::string_view bytes);

  // Percent escapes -------------------------------------------------------------------------------

  /// The text's UTF-8 with each byte that is no member of `allowed` written as "%" and two
  /// hexadecimal digits; only ASCII characters can be allowed. Nil when the text has a lone
  /// surrogate; raises NSInvalidArgumentException for a nil set.
  Ref<NSString> stringByAddingPercentEncodingWithAllowedCharacters(NSCharacterSet* allowed) const;

  /// The same with letters, digits and "-._~" allowed, which mean themselves all over a URL.
  Ref<NSString> stringByAddingPercentEncoding() const;

  /// The text with its escapes replaced by the characters whose UTF-8 they are. Nil for a "%"
  /// without two hexadecimal digits behind it, and for bytes that are not UTF-8.
  Ref<NSString> stringByRemovingPercentEncoding() const;

  // Object ----------------------------------------------------------------------------------------

  /// This very String, unless it is mutable.
  Ref<NSObject> copy() const override;
  Ref<NSObject> mutableCopy() const override;
  Ref<NSString> description() const override;

 protected:
  /// Over units that the class keeps, or that live for ever with a hash that has been computed.
  NSString(const char16_t* units, std::uint32_t length) noexcept : length_(length), units_(units) {}
  constexpr NSString(ImmortalTag tag, const char16_t* units, std::uint32_t length,
                     std::uint32_t hash) noexcept
      : Derives(tag), length_(length), hash_(hash), units_(units) {}

  /// The text. The hash is 0 until it is asked for.
  std::uint32_t length_ = 0;
  mutable std::atomic<std::uint32_t> hash_{0};
  const char16_t* units_ = nullptr;
};

}  // namespace qz

#pragma GCC visibility pop

#include "Platform/Values/detail/StringLiteral.h"  // defines ""_ns
