/// @file
/// Property lists: Strings, Numbers, Dates, Data, Arrays and Dictionaries as bytes.
#pragma once

#include <cstdint>

#include "Platform/Runtime/Derives.h"

#pragma GCC visibility push(default)

namespace qz {

class NSData;
class NSError;
class NSString;

/// How a property list stands in a file.
enum NSPropertyListFormat : std::uint32_t {
  /// Text in braces and parentheses: `{ name = "Ada"; marks = (1, 2); key = <0fbd77>; }`. Holds
  /// Strings, Data, Arrays and Dictionaries only, and tells no Number from its text.
  NSPropertyListOldStyleFormat = 1,
  /// XML, in UTF-8: `<plist version="1.0"><dict>…`.
  NSPropertyListXMLFormat = 100,
  /// Binary, version "00": compact, equal values once.
  NSPropertyListBinaryFormat = 200,
};

/// What of a list that is read can be changed afterwards. Keys never can.
enum NSPropertyListMutabilityOptions : std::uint32_t {
  NSPropertyListImmutable = 0,
  /// Arrays and Dictionaries.
  NSPropertyListMutableContainers = 1,
  /// Strings and Data too.
  NSPropertyListMutableContainersAndLeaves = 2,
};

/// Writes and reads property lists.
///
///     Ref<NSString> problem;
///     NSPropertyListFormat format;
///     auto settings =
///         NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
///             data, NSPropertyListImmutable, &format, &problem);
///     if (!settings) log(problem);   // "line 3, column 9: the dictionary has no end"
///
/// A list is a String, Number, Date, Data or NSPropertyListUID, or an Array or Dictionary (its keys
/// Strings) of lists. What is written and read in one format is equal to what it was, with these
/// limits:
///
/// - XML holds Dates by the second, from the year 1 to 9999: fractions are cut off. It holds no
///   UIDs, and no String with what XML has no room for (U+0000 to U+001F except tab, LF and CR,
///   U+FFFE, U+FFFF, half a surrogate pair).
/// - Binary lists count Dates from 2001, so that a Date before that may change by less than a
///   microsecond. No format holds one that is infinite or no number.
/// - Integers go from -2^63 to 2^64 - 1. They are read as Int, LongLong or UnsignedLongLong, the
///   first that has room; truth values stay truth values. The other kind of number is read as
///   Double, four-byte ones in a binary list as Float. Infinities and NaN are values like others.
/// - Nesting goes down to 512 levels.
///
/// Anything else, a container within itself and a key that stands twice in one Dictionary make no
/// list: reading and writing answer nil and say why and where, by line and column, by the offset of
/// a byte, or by the path from the root. No input makes them raise or take time or memory out of
/// proportion; document types with entities of their own are refused, and nothing is ever fetched.
///
/// Dictionaries are written with their keys in the order of `compare:`, so that files of equal
/// lists are equal. An Object that stands in a binary list several times is read as one Object,
/// also when it can be changed.
///
/// Reads and writes in linear time. Any thread, as long as nobody changes what is written.
class NSPropertyListSerialization : public Derives<NSPropertyListSerialization, NSObject> {
 public:
  static void describe(ClassDescription<NSPropertyListSerialization>& is);

  /// The list in `data`, whose format is recognised; text is UTF-8, UTF-16 or UTF-32 by its mark,
  /// or in the encoding that an XML declaration names. Nil for anything else, and then
  /// `errorDescription` says why and where; on success that becomes nil. `format` says what was
  /// found, also where what follows is broken. Both places may be null. An unknown mutability
  /// option counts as immutable.
  static Ref<NSObject> propertyListFromData_mutabilityOption_format_errorDescription(
      NSData* data, std::uint32_t mutabilityOption, NSPropertyListFormat* format,
      Ref<NSString>* errorDescription);

  /// The list as bytes; nil for what the format cannot hold, and then `errorDescription`, which may
  /// be null, says what and where; on success that becomes nil.
  static Ref<NSData> dataFromPropertyList_format_errorDescription(NSObject* propertyList,
                                                                  NSPropertyListFormat format,
                                                                  Ref<NSString>* errorDescription);

  /// The same with Errors, in NSCocoaErrorDomain with the codes below. `error` may be null and is
  /// left alone on success. `options` of the second are not used yet.
  static Ref<NSObject> propertyListWithData_options_format_error(NSData* data,
                                                                 std::uint32_t mutabilityOption,
                                                                 NSPropertyListFormat* format,
                                                                 Ref<NSError>* error);
  static Ref<NSData> dataWithPropertyList_format_options_error(NSObject* propertyList,
                                                               NSPropertyListFormat format,
                                                               std::uint32_t options,
                                                               Ref<NSError>* error);

  /// Whether the list could be written in the format. As much work as writing it.
  static bool propertyList_isValidForFormat(NSObject* propertyList, NSPropertyListFormat format);
};

/// Codes in NSCocoaErrorDomain: bytes that are no property list, and Objects that make none.
inline constexpr std::int32_t NSPropertyListReadCorruptError = 3840;
inline constexpr std::int32_t NSPropertyListWriteInvalidError = 3851;

}  // namespace qz

#pragma GCC visibility pop
