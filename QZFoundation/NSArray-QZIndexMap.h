/// @file
/// Sorting Arrays into permutation maps, and rearranging Arrays by such maps.
///
///     Ref<QZIndexMap> bySize = sortMapUsingKeyPath(packages, "installedSize"_ns);
///     Ref<NSArray> sorted = arrayUsingMap(packages, bySize);
///     Ref<NSArray> names = arrayUsingMap(packageNames, bySize);
///
/// Receivers must not be nil.
#pragma once

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Selector.h"
#include "QZFoundation/QZIndexMap.h"

#pragma GCC visibility push(default)

namespace qz {

/// The map that sorts the receiver, which stays as it is: each comparison sends `selector` to one
/// element with another element and `object`. A Selector of one argument does not see `object`.
/// Exactly -1 orders before and +1 after; any other answer counts as "same".
///
/// The sort is not stable, but it is repeatable: one partition scheme decides the order of equal
/// elements. It takes n log n comparisons for all but contrived orders and logarithmic memory
/// beside the map. Numbers and Strings under their own `compare:` are not sent anything: their
/// keys are read once and the same map is made several times faster.
///
/// Raises what a comparison raises, NSInvalidArgumentException for an unknown Selector.
Ref<QZIndexMap> sortMapUsingSelector_withObject(NSArray* self, Selector selector, NSObject* object);

/// The same with nil as the extra Object.
Ref<QZIndexMap> sortMapUsingSelector(NSArray* self, Selector selector);

/// The same with the key path as the extra Object: `selector` takes (other, key path), as
/// `compare:usingKeyPath:` does.
Ref<QZIndexMap> sortMapUsingKeyPath_selector(NSArray* self, NSString* keyPath, Selector selector);

/// Sorts by the values at a key path under `compare:`. Where these are all Numbers or all Strings,
/// each is read once; otherwise at every comparison.
Ref<QZIndexMap> sortMapUsingKeyPath(NSArray* self, NSString* keyPath);

/// The Array R with R[i] = receiver[map entry i], as long as the receiver. A map with fewer entries
/// or with one not below the receiver's count raises NSRangeException; a nil map
/// NSInvalidArgumentException.
Ref<NSArray> arrayUsingMap(NSArray* self, QZIndexMap* map);
Ref<NSMutableArray> mutableArrayUsingMap(NSArray* self, QZIndexMap* map);

/// Element i becomes the old element at map entry i, in place. Raises as `arrayUsingMap` does, and
/// then nothing has changed.
void reorderUsingMap(NSMutableArray* self, QZIndexMap* map);

/// Sorts in place, as `sortMapUsingSelector_withObject` orders.
void sortUsingSelector_withObject(NSMutableArray* self, Selector selector, NSObject* object);

/// Sorts in place and answers the map that did it.
Ref<QZIndexMap> mapFromSortingUsingSelector_withObject(NSMutableArray* self, Selector selector,
                                                       NSObject* object);
Ref<QZIndexMap> mapFromSortingUsingSelector(NSMutableArray* self, Selector selector);

}  // namespace qz

#pragma GCC visibility pop
