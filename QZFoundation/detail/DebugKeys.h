/// @file
/// Private: which lines of logs the user wants.
#pragma once

#include "Platform/Collections/NSArray.h"

namespace qz::detail {

/// The Strings under the user default "QZDebug", which is one String or an Array of them; what else
/// stands there is left out. Never nil.
Ref<NSArray> debugKeys();

}  // namespace qz::detail
