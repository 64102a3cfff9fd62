/// @file
/// Further searches in Strings: placement, numbers in names, lines, splitting, query strings.
///
///     NSRange extension = rangeOfString_options_range_searchKind(
///         name, ".txt"_ns, NSCaseInsensitiveSearch, NSMakeRange(0, name->length()),
///         QZSearchAtEnd);
///     Ref<NSDictionary> fields = parseQueryString("q=maps&page=2"_ns);
///
/// The receiver is never changed. A nil receiver answers nil, 0, false or a Range that is not
/// found.
#pragma once

#include <cstdint>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Values/NSCharacterSet.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// Where a match must lie. The values are fixed; 4 is none of them.
enum QZSearchKind : std::uint32_t {
  QZSearchAtStart = 0,   ///< begins at index 0 of the receiver
  QZSearchAtEnd = 1,     ///< ends where the receiver ends
  QZSearchAnywhere = 2,  ///< whatever the search finds
  QZSearchAbsent = 3,    ///< no match: answers the whole receiver's Range
  QZSearchWhole = 5,     ///< begins and ends with the receiver
};

/// What `rangeOfString_options_range` answers, when the match lies as `kind` asks; otherwise the
/// location is NSNotFound and the length that of the match. Start and end are the receiver's, not
/// the Range's. Raises what that search raises, and NSInternalInconsistencyException for an unknown
/// kind.
NSRange rangeOfString_options_range_searchKind(NSString* self, NSString* part,
                                               std::uint32_t options, NSRange range,
                                               std::uint32_t kind);

/// Whether `other` is a String that `caseInsensitiveCompare` calls the same; for another Object
/// what `isEqual` says.
bool isEqualCaseInsensitive(NSString* self, NSObject* other);

/// The order in which runs of digits count as numbers: "file9" before "file10". The second ignores
/// case too. Raise NSInvalidArgumentException for nil.
NSComparisonResult numericCompare(NSString* self, NSString* other);
NSComparisonResult numericCaseInsensitiveCompare(NSString* self, NSString* other);

/// The longest of the enumerator's Strings with which the receiver begins, the earlier one of two
/// equally long; nil when there is none. Uses the enumerator up.
Ref<NSString> longestPrefixInStrings(NSString* self, NSEnumerator* strings);

/// How many lines there are, as far as they leave two units or more: a last line of one unit does
/// not count, nor does what comes behind the last line end. A text of one unit has none. Linear.
std::uint32_t numberOfLines(NSString* self);

/// The Range of line `number`, counted from 0, with its end; {NSNotFound, 0} for a number not below
/// `numberOfLines`. Linear.
NSRange rangeForLineNumber(NSString* self, std::uint32_t number);

/// The pieces that each begin at the start or with a unit that is in `set`: "someWordsHere" split
/// at capitals is "some", "Words", "Here". Only an empty receiver has an empty piece. A nil set has
/// no members.
Ref<NSMutableArray> stringsBySeparatingAtCharactersInSet(NSString* self, NSCharacterSet* set);

/// The text before the first `separator`, and in `remaining`, unless that is null, the text behind
/// it. Both nil when there is none. Raises NSInvalidArgumentException for a nil separator.
Ref<NSString> substringUpToString_remainingString(NSString* self, NSString* separator,
                                                  Ref<NSString>* remaining);

/// The pairs of a query such as "a=1&b=2", as they stand: nothing is unescaped. The first "=" cuts
/// a piece into key and value; a piece without one is left out, and of equal keys the last counts.
Ref<NSDictionary> parseQueryString(NSString* self);

}  // namespace qz

#pragma GCC visibility pop
