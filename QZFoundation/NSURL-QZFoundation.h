/// @file
/// Operations of URLs. The receiver must not be nil.
#pragma once

#include "Platform/Values/NSURL.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// The file URL of the receiver's path with the component at its end; never that of a
/// directory, which ends with a slash. Raises NSInvalidArgumentException for nil.
Ref<NSURL> fileURLByAppendingPathComponent(NSURL* self, NSString* component);

}  // namespace qz

#pragma GCC visibility pop
