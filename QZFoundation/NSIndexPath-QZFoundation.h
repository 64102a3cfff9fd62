/// @file
/// Index paths: joined and shortened. Receivers must not be nil.
#pragma once

#include "Platform/Values/NSIndexPath.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// The receiver's indices, then `path`'s; nil has none.
Ref<NSIndexPath> indexPathByAppendingPath(NSIndexPath* self, NSIndexPath* path);

/// All indices but the first; the empty path stays empty.
Ref<NSIndexPath> indexPathByRemovingFirstIndex(NSIndexPath* self);

}  // namespace qz

#pragma GCC visibility pop
