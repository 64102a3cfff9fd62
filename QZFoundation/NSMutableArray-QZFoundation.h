/// @file
/// Changing Arrays in place: sorted insertion, filters, removal by indices, reversal.
///
///     insertObject_sortedBySelector(names, "Grace"_ns, "compare:"_sel);
///     filterObjectsWithSelector(packages, "isInstalled"_sel);
///     reverseOrder(packages);
///
/// Receivers must not be nil.
#pragma once

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Selector.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSEnumerator;

/// Inserts where `insertionIndexForObject:sortedUsingSelector:` says.
void insertObject_sortedBySelector(NSMutableArray* self, NSObject* object, Selector selector);

/// Removes every element whose answer to `selector` with `object` is not as true as `matching`; the
/// forms without it keep what answers true. Every answer that is not nil or zero is true here, 256
/// too, which is false to `arrayByFilteringWithSelector:`.
///
/// All elements are asked first: one that raises leaves the Array as it was, and one that changes
/// the Array makes this raise NSGenericException. Linear.
void filterObjectsWithSelector_object_matching(NSMutableArray* self, Selector selector,
                                               NSObject* object, bool matching);
void filterObjectsWithSelector_object(NSMutableArray* self, Selector selector, NSObject* object);
void filterObjectsWithSelector(NSMutableArray* self, Selector selector);

/// Appends the Objects that the enumerator has left, one by one; nothing for nil.
void addObjectsFromEnumerator(NSMutableArray* self, NSEnumerator* enumerator);

/// Sorts in place as `sortedArrayUsingKeyPath:` does.
void sortByKey(NSMutableArray* self, NSString* keyPath);

/// Removes the elements at the `intValue` of each Number, from the largest down, so that no removal
/// shifts those to come. A number that is given twice removes two elements: the one at its index,
/// and the one that moves there. An index out of range raises NSRangeException, and then nothing
/// has changed.
void removeObjectsAtIndices(NSMutableArray* self, NSArray* indices);

/// Reverses in place. An empty Array raises NSRangeException: this is what the operation promises,
/// and callers depend on it to notice an Array that should not have been empty.
void reverseOrder(NSMutableArray* self);

}  // namespace qz

#pragma GCC visibility pop
