/// @file
/// Operations of attributed Strings. The receiver must not be nil.
#pragma once

#include "Platform/Values/NSAttributedString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// {0, length}.
NSRange fullRange(NSAttributedString* self);

}  // namespace qz

#pragma GCC visibility pop
