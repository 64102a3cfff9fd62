/// @file
/// Coding of an Object's values by their keys. The receiver must not be nil.
#pragma once

#include "Platform/Text/NSCoder.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// Encodes the value that `object` has for each key, under the same key, in order. `keys` is an
/// Array or Set of Strings, or anything that answers `objectEnumerator`; nil has none.
void encodeValuesOfObject_forKeys(NSCoder* self, NSObject* object, NSObject* keys);

/// Sets, for each key, what is stored under it on `object`; nil for what is not stored.
void decodeValuesToObject_forKeys(NSCoder* self, NSObject* object, NSObject* keys);

}  // namespace qz

#pragma GCC visibility pop
