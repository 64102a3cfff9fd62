/// @file
/// Dictionaries: turned round, matched by key path, read as scalars, copied in depth.
///
///     Ref<NSDictionary> names = inverseDictionary(numbers);
///     Ref<NSMutableDictionary> adults = dictionaryByMatchingValue_forKeyPath(people, yes,
///                                                                            "adult"_ns);
///     bool isQuiet = boolForKey(settings, "quiet"_ns);
///
/// Receivers must not be nil.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Runtime/Selector.h"
#include "QZFoundation/NSObject-QZFoundation.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// Each value with its key under it. Of several keys with equal values the last one stays.
Ref<NSDictionary> inverseDictionary(NSDictionary* self);

/// Whether a value answers true to `isEqual:` with `object`; false for nil. Linear.
bool containsObject(NSDictionary* self, NSObject* object);

/// The values, in the order of their keys.
Ref<NSArray> allObjects(NSDictionary* self);

/// What the value under `key` answers to `boolValue` and `intValue`; false and 0 when there is
/// none.
bool boolForKey(NSDictionary* self, NSObject* key);
std::int32_t integerForKey(NSDictionary* self, NSObject* key);

/// Sends `selector` with `value` to each value's own value at `keyPath`, which is read twice, until
/// one answers true. Values without that key are passed over; any other exception passes through.
///
/// Answers nil whatever it finds, and so do the operations below: deliberate, because callers rely
/// on it. To find entries, use `dictionaryByMatchingValue_forKeyPath`.
Ref<NSObject> keyOfObjectMatchingValue_forKeyPath_usingSelector(NSDictionary* self, NSObject* value,
                                                                NSString* keyPath,
                                                                Selector selector);
Ref<NSObject> objectMatchingValue_forKeyPath_usingSelector(NSDictionary* self, NSObject* value,
                                                           NSString* keyPath, Selector selector);
Ref<NSObject> objectMatchingValue_forKeyPath(NSDictionary* self, NSObject* value,
                                             NSString* keyPath);
Ref<NSObject> objectMatchingValue_forKey(NSDictionary* self, NSObject* value, NSString* key);

/// The entries whose value has, under `key` (one key, no path), `value` itself or one to which
/// `value` is equal.
Ref<NSMutableDictionary> dictionaryByMatchingValue_forKeyPath(NSDictionary* self, NSObject* value,
                                                              NSString* key);

/// The entries under the keys that are left in `keys`, in their order. Keys without a value are
/// left out.
Ref<NSMutableDictionary> dictionaryWithObjectsForKeys(NSDictionary* self, NSEnumerator* keys);

/// The entries, and those of a list (Object, key, Object, key, …), which ends at the first nil,
/// wherever it stands, or where it has no more. By Selector the list is one Array.
Ref<NSMutableDictionary> dictionaryByAddingObjectsAndKeys(
    NSDictionary* self, std::span<NSObject* const> objectsAndKeys);
template <class... Objects>
Ref<NSMutableDictionary> dictionaryByAddingObjectsAndKeys(NSDictionary* self,
                                                          const Objects&... objectsAndKeys) {
  const std::array<NSObject*, sizeof...(Objects)> list{objectsAndKeys...};
  return dictionaryByAddingObjectsAndKeys(self, std::span<NSObject* const>(list));
}

// `deepCopy` and `copyMutableContainers` of NSObject-QZFoundation.h answer an NSDictionary and an
// NSMutableDictionary with the same keys and what the values answer to the same Selector.
// Collections nested deeper than 1000 levels, as one that holds itself is, raise
// NSInternalInconsistencyException.

}  // namespace qz

#pragma GCC visibility pop
