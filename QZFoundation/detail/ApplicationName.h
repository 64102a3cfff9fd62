/// @file
/// Private: what the running application is called.
#pragma once

#include "Platform/Values/NSString.h"

namespace qz::detail {

/// The main bundle's "CFBundleName"; the process's name for a program without a bundle. Never
/// empty, and without slashes: it becomes the name of files.
Ref<NSString> applicationName();

}  // namespace qz::detail
