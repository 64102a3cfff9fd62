/// @file
/// Operations of bundles. The receiver must not be nil.
#pragma once

#include "Platform/System/NSBundle.h"
#include "QZFoundation/QZVersionNumber.h"

#pragma GCC visibility push(default)

namespace qz {

/// The version that the bundle's information gives under "CFBundleVersion"; nil when there is none.
Ref<QZVersionNumber> versionNumber(NSBundle* self);

}  // namespace qz

#pragma GCC visibility pop
