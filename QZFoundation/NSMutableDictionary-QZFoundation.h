/// @file
/// Dictionaries that change: merged, and rid of values. Receivers must not be nil.
#pragma once

#include <cstdint>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Runtime/Selector.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// For each key of `other` that the receiver has too, its value becomes what it answers to
/// `selector` with the other value; a nil answer removes the entry. Keys that only one of both has
/// are left as they are, so nothing is added. An operation that answers a scalar raises
/// NSInvalidArgumentException. Nil has no keys.
///
///     mergeWithDictionary_usingSelector(totals, day, "numberByAddingNumber:"_sel);
void mergeWithDictionary_usingSelector(NSMutableDictionary* self, NSDictionary* other,
                                       Selector selector);

/// Removes every entry whose value is equal to `object`; nothing for nil. Linear.
void removeObject(NSMutableDictionary* self, NSObject* object);

/// Keeps the integer, as a Number of kind Int, under `key`.
void setInteger_forKey(NSMutableDictionary* self, std::int32_t integer, NSObject* key);

}  // namespace qz

#pragma GCC visibility pop
