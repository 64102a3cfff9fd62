/// @file
/// Operations of Strings: building them from parts, editing them, paths, and reading scalars.
///
///     Ref<NSString> list = stringWithStrings_separator(names, ", "_ns);
///     Ref<NSString> title = stringByDeletingNumberFromEnd("Copy 12"_ns);   // "Copy"
///
/// Receivers must not be nil. Other Strings that are nil raise NSInvalidArgumentException. An
/// operation that answers its receiver or argument answers that very Object, also a mutable one.
#pragma once

#include <cstdint>
#include <type_traits>

#include "Platform/Collections/NSArray.h"
#include "Platform/Values/NSRange.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSCharacterSet;
class NSData;

/// A file name in a record of fixed size: the first `length` units count.
struct HFSUniStr255 {
  std::uint16_t length;   ///< At most 255.
  char16_t unicode[255];  ///< UTF-16; what is behind the length means nothing.
};
static_assert(sizeof(HFSUniStr255) == 512);

// Building ----------------------------------------------------------------------------------------

/// The Strings of `strings` one after the other, with the separator between neighbours. The empty
/// String for nil and for no Strings; a nil separator is the empty one. Raises
/// NSInvalidArgumentException for an element that is no String, NSMallocException for more units
/// than a String can have. Linear; one allocation for the text.
Ref<NSString> stringWithStrings(NSArray* strings);
Ref<NSString> stringWithStrings_separator(NSArray* strings, NSString* separator);
Ref<NSString> initWithStrings(NSArray* strings);
Ref<NSString> initWithStrings_separator(NSArray* strings, NSString* separator);

/// The units of the record. A length above 255 is a failed assertion, "Illegal HFS string length
/// 0x…"; with a handler that returns, the 255 units there are.
Ref<NSString> stringWithHFSUniStr255(const HFSUniStr255& record);
Ref<NSString> initWithHFSUniStr255(const HFSUniStr255& record);

/// Of bytes in an encoding; nil when they are not well-formed in it.
Ref<NSString> stringWithData_encoding(NSData* data, std::uint32_t encoding);

/// A String of one unit.
Ref<NSString> stringWithCharacter(char16_t character);

/// "…", "—" and "⌘": always the same Objects.
Ref<NSString> horizontalEllipsisString();
Ref<NSString> longDashString();
Ref<NSString> commandSymbolString();

/// A new universally unique identifier, such as "E621E1F8-C36C-495A-93FC-0C247A3E6E5F".
Ref<NSString> UUIDString();

/// `base` unless `strings`, anything that answers `containsObject:`, contains it; nil contains
/// nothing. Otherwise the first text not contained of those that `base` and `format`, as one
/// format, give for 2, 3, …: "Untitled" and " %d" give "Untitled 2". A "%" in `base` counts as the
/// format's. Raises NSInvalidArgumentException when a contained text does not change with the
/// number.
Ref<NSString> uniqueStringWithBaseString_appendFormatString_inStrings(NSString* base,
                                                                      NSString* format,
                                                                      NSObject* strings);

// Editing -----------------------------------------------------------------------------------------

/// `prefix` followed by the receiver.
Ref<NSString> stringByPrependingString(NSString* self, NSString* prefix);

/// With `replacement` in the place of the prefix; the receiver when it does not begin with that,
/// and `replacement` when it is the prefix.
Ref<NSString> stringByReplacingPrefix_withString(NSString* self, NSString* prefix,
                                                 NSString* replacement);

/// With `replacement` in the place of each code unit that is a member of `set`. Raises
/// NSInvalidArgumentException for a nil set.
Ref<NSString> stringByReplacingCharactersInSet_withString(NSString* self, NSCharacterSet* set,
                                                          NSString* replacement);

/// With the first unit in lower or upper case, which may be several units ("ß"). An empty receiver
/// raises NSRangeException.
Ref<NSString> lowercaseFirst(NSString* self);
Ref<NSString> uppercaseFirst(NSString* self);

/// Without a blank and a positive number at the end; the receiver when it does not end so. Of
/// several blanks the last one goes: "Copy  4" gives "Copy ".
Ref<NSString> stringByDeletingNumberFromEnd(NSString* self);

/// With all percent escapes replaced. Nil for an escape that is not well formed, and for bytes that
/// are not UTF-8.
Ref<NSString> stringByReplacingPercentEscapes(NSString* self);

// Paths -------------------------------------------------------------------------------------------

/// "/" and the component for each of `components` that is not "/". The empty String for nil and
/// where there is nothing else.
Ref<NSString> stringWithPathComponents(NSArray* components);

/// The receiver with each String appended by `stringByAppendingPathComponent`, in order; the
/// receiver itself for none. The list of arguments ends early at a nil.
///
///     auto path = stringByAppendingPathComponents("/usr"_ns, "lib"_ns, "qt"_ns);
Ref<NSString> stringByAppendingPathComponents(NSString* self, NSArray* components);
template <class... Strings>
requires(std::is_convertible_v<const Strings&, NSString*>&&...)
    Ref<NSString> stringByAppendingPathComponents(NSString* self, const Strings&... components) {
  Ref<NSString> path(self);
  [[maybe_unused]] bool isOpen = true;
  [[maybe_unused]] const auto append = [&](NSString* component) {
    isOpen = isOpen && component != nullptr;
    if (isOpen) path = path->stringByAppendingPathComponent(component);
  };
  (append(components), ...);
  return path;
}

/// `component` with the receiver appended to it.
Ref<NSString> stringByPrependingPathComponent(NSString* self, NSString* component);

/// "a/b.txt" and "-1" give "a/b-1.txt"; without an extension the text goes at the end.
Ref<NSString> stringByAppendingStringBeforePathExtension(NSString* self, NSString* string);

/// Whether the path extension is exactly this.
bool hasPathExtension(NSString* self, NSString* extension);

/// Whether the receiver is the same path as `path`, or one that leads to it: "/a/b" contains
/// "/a/b/c" and not "/a/bc". The empty path contains every path. False for nil.
bool containsPath(NSString* self, NSString* path);

/// The receiver, a classic path ("Root:usr:lib"), as a POSIX path, and the other way round; NSURL.h
/// has the rule. Nil for an empty path, one with a zero, and a classic one with a name "." or "..".
Ref<NSString> POSIXPathFromCarbonPath(NSString* self);
Ref<NSString> carbonPathFromPOSIXPath(NSString* self);

/// Fills the record with the first 255 units at most, and zeros. Longer names are cut without a
/// word. Raises NSInvalidArgumentException for null.
void getHFSUniStr255(NSString* self, HFSUniStr255* record);

// Scalars -----------------------------------------------------------------------------------------

/// True for "YES" and nothing else. This is also what Objects answer to the Selector and what
/// setting a truth value by key takes from a String.
bool boolValue(NSString* self);

/// {0, length}.
NSRange fullRange(NSString* self);

/// `intValue`, with 0 for what is negative: at most 2147483647.
std::uint32_t unsignedIntValue(NSString* self);

/// The integer that the receiver begins with, behind blanks; 0 when there is none, and the nearest
/// limit for one that is too large.
std::int64_t longLongValue(NSString* self);

/// The codes of the first four characters, the first one highest: 0x61626364 for "abcd". Characters
/// that are missing count as 0; the code is 0 when any of the receiver's is not ASCII.
std::uint32_t fourCharCode(NSString* self);

}  // namespace qz

#pragma GCC visibility pop
