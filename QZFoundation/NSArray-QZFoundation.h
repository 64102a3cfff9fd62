/// @file
/// Finding elements by what they answer, and Arrays made from Arrays.
///
///     auto editor = objectMatchingValue_forKeyPath(packages, "editors"_ns, "section.name"_ns);
///     Ref<NSArray> essential = arrayByFilteringWithSelector(packages, "isEssential"_sel);
///     Ref<NSMutableDictionary> sizes =
///         dictionaryWithKeyPathForKeys_keyPathForValues(packages, "name"_ns, "size"_ns);
///
/// A failed search of an index answers NSNotFound. Indices out of range raise NSRangeException.
/// Elements are visited in order; what they raise passes through. Receivers must not be nil.
#pragma once

#include <cstdint>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Runtime/Selector.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSEnumerator;
class NSPredicate;

// Searching and matching.

/// The first index whose element's value at `keyPath` answers `selector` with `value` by something
/// true (of an integer the low byte counts). The element's value is the receiver of `selector`; a
/// value of nil matches nothing.
///
/// Each value is read twice and the first answer discarded, as clients with values made on demand
/// rely on. An element whose reading raises NSUndefinedKeyException is skipped; everything else
/// that is raised passes through.
std::uint32_t indexOfObjectMatchingValue_forKeyPath_usingSelector(NSArray* self, NSObject* value,
                                                                  NSString* keyPath,
                                                                  Selector selector);

/// The same with `isEqual:`; the key is used as a key path.
std::uint32_t indexOfObjectMatchingValue_forKeyPath(NSArray* self, NSObject* value,
                                                    NSString* keyPath);
std::uint32_t indexOfObjectMatchingValue_forKey(NSArray* self, NSObject* value, NSString* key);

/// The element at the index that the functions above answer; nil when there is none.
Ref<NSObject> objectMatchingValue_forKeyPath_usingSelector(NSArray* self, NSObject* value,
                                                           NSString* keyPath, Selector selector);
Ref<NSObject> objectMatchingValue_forKeyPath(NSArray* self, NSObject* value, NSString* keyPath);
Ref<NSObject> objectMatchingValue_forKey(NSArray* self, NSObject* value, NSString* key);

/// The first element for which the predicate is true; nil for none. A nil predicate raises
/// NSInvalidArgumentException.
Ref<NSObject> objectMatchingPredicate(NSArray* self, NSPredicate* predicate);

/// The elements whose value at `keyPath` is `value` itself or which `value` is equal to: here the
/// sought value is the receiver of `isEqual:`, and the element's is read again for it. Nil matches
/// nil. An element without the key raises NSUndefinedKeyException.
Ref<NSArray> arrayByMatchingValue_forKeyPath(NSArray* self, NSObject* value, NSString* keyPath);

/// Whether the receiver contains every Object that the enumerator has left; stops at the first one
/// that is missing. True when there are none, and for nil. Linear in both.
bool containsObjectsFromEnumerator(NSArray* self, NSEnumerator* enumerator);

/// Where `object` is in a receiver that is sorted under `selector`, which is sent to `object` with
/// an element: exactly 0 says found, exactly +1 further on, anything else further back. The very
/// Object is found whatever the comparison says. Of several that compare as the same, the one that
/// the probes meet first. At most log2(count) + 1 comparisons.
std::uint32_t indexOfObject_inArraySortedUsingSelector(NSArray* self, NSObject* object,
                                                       Selector selector);

/// Where `object` goes in a receiver that is sorted under `selector`: before every element that it
/// compares as the same with, at the count when it orders after all. Only exactly +1 means "after".
std::uint32_t insertionIndexForObject_sortedUsingSelector(NSArray* self, NSObject* object,
                                                          Selector selector);

/// Element 0; nil for an empty Array.
Ref<NSObject> firstObject(NSArray* self);

// Derived Arrays.

/// `object`, `count` times; empty for a count below 1. Nil raises NSInvalidArgumentException.
Ref<NSMutableArray> arrayWithObject_repeatedNumberOfTimes(NSObject* object, std::int32_t count);

/// What each element answers to `selector` with `object`, with `placeholder` for nil. Nil as a
/// whole when an element answers nil and there is no placeholder; no further element is asked then.
/// An operation that answers a scalar raises NSInvalidArgumentException.
Ref<NSArray> arrayByPerformingSelector_object_nilPlaceholder(NSArray* self, Selector selector,
                                                             NSObject* object,
                                                             NSObject* placeholder);
Ref<NSArray> arrayByPerformingSelector_object(NSArray* self, Selector selector, NSObject* object);
Ref<NSArray> arrayByPerformingSelector(NSArray* self, Selector selector);

/// The elements whose answer to `selector` with `object` is as true as `matching`: of an integer
/// the low byte counts, so 256 is false, and of an Object whether there is one. The forms without
/// `matching` keep those that answer true.
Ref<NSArray> arrayByFilteringWithSelector_object_matching(NSArray* self, Selector selector,
                                                          NSObject* object, bool matching);
Ref<NSArray> arrayByFilteringWithSelector_object(NSArray* self, Selector selector,
                                                 NSObject* object);
Ref<NSArray> arrayByFilteringWithSelector(NSArray* self, Selector selector);

/// The elements at the `intValue` of each Number, in the order given, repeated ones included.
/// Negative ones raise NSRangeException as those beyond the count do; nil gives an empty Array.
Ref<NSMutableArray> arrayWithObjectsAtIndexes(NSArray* self, NSArray* indexes);

/// Sorted by the values at a key path under `compare:`, stably. Each value is read once, unless one
/// of them is nil: nil compares as the same with anything, and then values are read anew for each
/// comparison.
Ref<NSArray> sortedArrayUsingKeyPath(NSArray* self, NSString* keyPath);

/// The elements from last to first.
Ref<NSMutableArray> reversedArray(NSArray* self);

/// The receiver's elements with one more; without those that `object` is equal to; without those
/// that are equal to one of `others`. An index above the count raises NSRangeException, a nil
/// object to insert NSInvalidArgumentException.
Ref<NSMutableArray> arrayByInsertingObject_atIndex(NSArray* self, NSObject* object,
                                                   std::uint32_t index);
Ref<NSMutableArray> arrayByRemovingObject(NSArray* self, NSObject* object);
Ref<NSMutableArray> arrayByRemovingObjectsInArray(NSArray* self, NSArray* others);

/// All elements but the last; empty when there are fewer than two.
Ref<NSArray> arrayByRemovingLastObject(NSArray* self);

/// The elements as they are now, immutable.
Ref<NSArray> allObjects(NSArray* self);

/// For each element its value at the second key path under its value at the first: no entry for a
/// nil key, Null for a nil value. Of several equal keys the last element's value stays.
Ref<NSMutableDictionary> dictionaryWithKeyPathForKeys_keyPathForValues(NSArray* self,
                                                                       NSString* keyPathForKeys,
                                                                       NSString* keyPathForValues);

// `deepCopy` and `copyMutableContainers` of NSObject-QZFoundation.h answer an NSArray and an
// NSMutableArray of what the elements answer to the same Selector. Arrays nested deeper than 1000
// levels, as one that holds itself is, raise NSInternalInconsistencyException.

}  // namespace qz

#pragma GCC visibility pop
