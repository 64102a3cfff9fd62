/// @file
/// Operations of every Object that observes: following the members of a to-many property.
///
///     // In an Object that shows the names of a team's members:
///     startObservationsForObject_key_forKeyPaths_options_context(
///         this, team, "members"_ns, NSArray::arrayWithObject("name"_ns), 0, nullptr);
///     …
///     void observeValueForKeyPath_ofObject_change_context(…) {
///       if (keyPath->isEqualToString("members"_ns))
///         updateObservationsWithChange_forKeyPaths_options_context(this, change, …);
///
/// The receiver, `self`, is the observer throughout. Key paths come as an Array, a Set, or another
/// Object with an `objectEnumerator`; nil stands for none.
#pragma once

#include "Platform/Runtime/NSKeyValueObserving.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// Observes `key` of `owner`, with old and new values and a null context, and the key paths of each
/// member of the value that is there now, with the given options and context.
void startObservationsForObject_key_forKeyPaths_options_context(NSObject* self, NSObject* owner,
                                                                NSString* key, NSObject* keyPaths,
                                                                NSKeyValueObservingOptions options,
                                                                void* context);

/// To be called when the property changed: members that left are no longer observed, those that
/// came are. Members are told apart by equality; a missing entry of `change` counts as empty.
void updateObservationsWithChange_forKeyPaths_options_context(NSObject* self, NSDictionary* change,
                                                              NSObject* keyPaths,
                                                              NSKeyValueObservingOptions options,
                                                              void* context);

/// Stops observing `key` of `owner` and the key paths of each member that is there now. Raises
/// NSInvalidArgumentException for what is not observed.
void endObservationsForObject_key_forKeyPaths(NSObject* self, NSObject* owner, NSString* key,
                                              NSObject* keyPaths);

/// Sends `selector` to the receiver with as many of (object, key path, change) as the operation
/// takes; nothing when the receiver has no such operation.
void dispatchKVOWithSelector_object_keyPath_change(NSObject* self, Selector selector,
                                                   NSObject* object, NSString* keyPath,
                                                   NSDictionary* change);

}  // namespace qz

#pragma GCC visibility pop
