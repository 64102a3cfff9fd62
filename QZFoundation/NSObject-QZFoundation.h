/// @file
/// Operations of every Object: comparing by key path, dispatch over Arrays, deep copies.
///
///     auto order = compare_usingKeyPath(a, b, "name"_ns);
///     Ref<NSMutableArray> replies =
///         performSelector_withObjectsInArray(target, "take:"_sel, items);
#pragma once

#include <cstdint>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/NSObject.h"
#include "Platform/Runtime/Send.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// Reads the receiver's value at `keyPath`, then `other`'s, and answers what the first answers to
/// `compare:` with the second; "same" when the receiver's value is nil, whatever the other's is.
/// Raises NSUndefinedKeyException for an unknown key, and NSInvalidArgumentException for values
/// that cannot be compared.
NSComparisonResult compare_usingKeyPath(NSObject* self, NSObject* other, NSString* keyPath);

/// The same with `caseInsensitiveCompare:`.
NSComparisonResult caseInsensitiveCompare_usingKeyPath(NSObject* self, NSObject* other,
                                                       NSString* keyPath);

/// An Array holding the receiver alone; an Array answers itself, so that one Object or many can be
/// handled alike. Sends the Selector: a class may answer otherwise.
Ref<NSArray> objectAsArray(NSObject* self);

/// A copy that shares no container with the receiver: for a plain Object its `copy`. Sends the
/// Selector, so that containers answer in their own way; nil for nil.
Ref<NSObject> deepCopy(NSObject* self);

/// A copy whose containers can be changed; a plain Object (a leaf) answers its `copy`. Sends the
/// Selector; nil for nil.
Ref<NSObject> copyMutableContainers(NSObject* self);

/// Sends `selector` with `object` and answers a truth value without boxing: of an integer answer
/// the low byte counts, of an Object whether there is one. False for nil.
bool performBoolSelector_withObject(NSObject* self, Selector selector, NSObject* object);

/// Sends `selector` with `object` and answers its integer, cut to 32 bits. 0 for nil. An operation
/// that answers an Object raises NSInvalidArgumentException.
std::int32_t performIntSelector_withObject(NSObject* self, Selector selector, NSObject* object);

/// Sends `selector` to the receiver once for each element of `array`, in order, and answers the
/// answers: one for each element, Null for nil. Nil for a nil receiver; a nil Array has no
/// elements.
Ref<NSMutableArray> performSelector_withObjectsInArray(NSObject* self, Selector selector,
                                                       NSArray* array);

/// The same; answers nil when `returnValues` is false, and then the operation may answer anything.
/// Otherwise an operation that answers a scalar raises NSInvalidArgumentException.
Ref<NSMutableArray> performSelector_withObjectsInArray_returnValues(NSObject* self,
                                                                    Selector selector,
                                                                    NSArray* array,
                                                                    bool returnValues);

/// Sends `selector` on the main thread, waits, and answers the Object it answers; nil for nil. What
/// it throws is thrown here; an operation that answers a scalar raises NSInvalidArgumentException.
/// On the main thread it is sent at once. Raises NSRunLoopEndedException when the main thread's
/// loop ends first.
Ref<NSObject> performSelectorOnMainThreadReturningValue_withObject_withObject(NSObject* self,
                                                                              Selector selector,
                                                                              NSObject* first,
                                                                              NSObject* second);
Ref<NSObject> performSelectorOnMainThreadReturningValue_withObject(NSObject* self,
                                                                   Selector selector,
                                                                   NSObject* object);

/// Sets the value, which may be nil, under the key on the main thread, and waits until that is done
/// unless told not to. Raises NSInvalidArgumentException for a nil key, on the calling thread.
void setValueOnMainThread_forKey_waitUntilDone(NSObject* self, NSObject* value, NSString* key,
                                               bool wait);
void setValueOnMainThread_forKey(NSObject* self, NSObject* value, NSString* key);

/// Compares two Objects by their values at a key path, which is what `keyPath` points to: a
/// function for `sortedArrayUsingFunction:context:`.
NSComparisonResult QZCompareByKeyPath(NSObject* first, NSObject* second, void* keyPath);

}  // namespace qz

#pragma GCC visibility pop
