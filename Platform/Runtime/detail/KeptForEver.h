/// @file
/// Private: what has been published without a lock and is then replaced.
#pragma once

#include "Platform/Runtime/NSObject.h"
#include "Platform/Runtime/Ref.h"

namespace qz::detail {

/// Keeps the Object until the process ends, because a reader may have loaded its address and be
/// about to retain it. For what programs replace seldom: each replacement stays. Answers it. Any
/// thread; nil is not kept.
NSObject* keepForEver(Ref<NSObject> object);

}  // namespace qz::detail
