/// @file
/// Short makers of sort descriptors.
#pragma once

#include "Platform/Collections/NSSortDescriptor.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// A sort descriptor that compares the values at the key path `key` with `compare:`.
Ref<NSSortDescriptor> sortDescriptorWithKey_ascending(NSString* key, bool ascending);

/// The same with another comparison.
Ref<NSSortDescriptor> sortDescriptorWithKey_ascending_selector(NSString* key, bool ascending,
                                                               Selector selector);

}  // namespace qz

#pragma GCC visibility pop
