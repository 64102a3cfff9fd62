/// @file
/// Sets: compared with what an enumerator walks over.
#pragma once

#include "Platform/Collections/NSSet.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// Whether all Objects that are left in `enumerator` are members; stops at the first that is not.
/// True when there are none, and for nil. The receiver must not be nil.
bool containsObjectsFromEnumerator(NSSet* self, NSEnumerator* enumerator);

}  // namespace qz

#pragma GCC visibility pop
