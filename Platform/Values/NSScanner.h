/// @file
/// Scanners: reading a text piece by piece.
#pragma once

#include <cstdint>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSCharacterSet.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

/// Reads numbers, texts and runs of characters one after the other.
///
///     auto scanner = NSScanner::scannerWithString("12 apples"_ns);
///     std::int32_t count = 0;
///     Ref<NSString> what;
///     if (scanner->scanInt(&count) &&
///         scanner->scanCharactersFromSet_intoString(NSCharacterSet::letterCharacterSet(), &what))
///
/// Each reading first skips characters that do not count, by default blanks and line ends. It then
/// answers true and moves the location behind what it took, or answers false and leaves the
/// location and the caller's place as they are. The place for a result may be null. Numbers are
/// written the same way everywhere, whatever the user's language: an optional sign, then at once
/// digits 0 … 9. A number beyond its type is taken whole and reads as the nearest the type has.
///
/// One thread at a time may use a Scanner.
class NSScanner final : public Derives<NSScanner, NSObject> {
 public:
  static void describe(ClassDescription<NSScanner>& is);

  /// At the start of a copy of `string`. Nil raises NSInvalidArgumentException.
  explicit NSScanner(NSString* string);
  static Ref<NSScanner> scannerWithString(NSString* string);
  static Ref<NSScanner> initWithString(NSString* string);

  /// What is being read.
  Ref<NSString> string() const { return string_; }

  /// The unit that is read next. Setting raises NSRangeException beyond the String's length.
  std::uint32_t scanLocation() const noexcept { return location_; }
  void setScanLocation(std::uint32_t location);

  /// What is skipped before each reading; nil for nothing. A copy is kept.
  Ref<NSCharacterSet> charactersToBeSkipped() const { return skipped_; }
  void setCharactersToBeSkipped(NSCharacterSet* set);

  /// Whether texts have to be found letter by letter. False unless set: then case is overlooked as
  /// NSCaseInsensitiveSearch does.
  bool caseSensitive() const noexcept { return caseSensitive_; }
  void setCaseSensitive(bool caseSensitive) noexcept { caseSensitive_ = caseSensitive; }

  /// Whether there is nothing left but characters to be skipped.
  bool isAtEnd() const noexcept;

  // Numbers ---------------------------------------------------------------------------------------

  /// In decimal, with the limits of 32 or 64 bits.
  bool scanInt(std::int32_t* value);
  bool scanInteger(std::int64_t* value);
  bool scanLongLong(std::int64_t* value);

  /// A negative number reads as 0.
  bool scanUnsignedLongLong(std::uint64_t* value);

  /// Without a sign, with "0x" or "0X" in front or not.
  bool scanHexInt(std::uint32_t* value);
  bool scanHexLongLong(std::uint64_t* value);

  /// With "." as the decimal point and an exponent. Correctly rounded; beyond the type's range the
  /// value is an infinity or zero.
  bool scanDouble(double* value);
  bool scanFloat(float* value);

  // Texts -----------------------------------------------------------------------------------------
  // Nil raises NSInvalidArgumentException.

  /// `text`, when it comes next; what is handed out is the text as it stands in the String. An
  /// empty one never does.
  bool scanString_intoString(NSString* text, Ref<NSString>* found);

  /// All up to `text`, or to the end when it does not come; false when it comes at once.
  bool scanUpToString_intoString(NSString* text, Ref<NSString>* found);

  /// The members of `set` that come next, or the others.
  bool scanCharactersFromSet_intoString(NSCharacterSet* set, Ref<NSString>* found);
  bool scanUpToCharactersFromSet_intoString(NSCharacterSet* set, Ref<NSString>* found);

 private:
  std::uint32_t searchOptions() const noexcept {
    return caseSensitive_ ? 0u : NSCaseInsensitiveSearch;
  }
  std::uint32_t runFrom(std::uint32_t location, const NSCharacterSet& set,
                        bool ofMembers) const noexcept;
  std::uint32_t start() const noexcept;
  bool take(std::uint32_t from, std::uint32_t to, Ref<NSString>* found);
  template <class T, class Read>
  bool scanNumber(T* value, bool isSigned, Read read);

  bool caseSensitive_ = false;
  std::uint32_t location_ = 0;
  Ref<NSString> string_;
  Ref<NSCharacterSet> skipped_;
};

}  // namespace qz

#pragma GCC visibility pop
