/// @file
/// Delimited text into Objects.
#pragma once

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// New Objects of `objectClass`, one for each record of `text`, with the fields of the record set
/// under `keys` in order:
///
///     Ref<NSArray> keys = NSArray::arrayWithObjects({"x"_ns, "y"_ns});
///     Ref<NSMutableArray> points =
///         arrayWithDelimitedText_objectDelimiter_fieldDelimiter_keys_objectClass(
///             "1,2,\n3,4,\n"_ns, "\n"_ns, ","_ns, keys, classOf<Point>());
///
/// The delimiters end records and fields rather than part them: what stands behind the last object
/// delimiter is no record, and what stands behind the last field delimiter of a record is no field,
/// so text that was cut off never makes a half-read Object. Delimiters are found literally, units
/// and case alike, and mean nothing else: there are no quotation marks or escapes.
///
/// Fields are Strings, empty ones included, and are set with `setValue:forKey:`, which turns them
/// into numbers for scalar properties. Keys without a field are not set; fields beyond the keys are
/// ignored. An empty record makes an Object with nothing set.
///
/// Nil text gives an empty Array and nil keys set nothing. Raises NSInvalidArgumentException for a
/// nil or empty delimiter, which would end everything everywhere, for keys that are no Strings and
/// for a class that is nil or cannot make Objects; NSUndefinedKeyException when the class does not
/// have a key. Linear; takes no memory beyond the Objects and their Strings.
Ref<NSMutableArray> arrayWithDelimitedText_objectDelimiter_fieldDelimiter_keys_objectClass(
    NSString* text, NSString* objectDelimiter, NSString* fieldDelimiter, NSArray* keys,
    Class* objectClass);

}  // namespace qz

#pragma GCC visibility pop
