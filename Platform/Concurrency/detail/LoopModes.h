/// @file
/// Private: the names of run-loop modes, as bits.
#pragma once

#include "Platform/Concurrency/detail/LoopTask.h"
#include "Platform/Runtime/Ref.h"

#pragma GCC visibility push(default)
namespace qz {
class NSArray;
class NSString;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

/// The bit of a mode, for ever the same; a new name takes the next free one. Raises
/// NSInvalidArgumentException for nil and when there are more than 63 modes. Any thread.
ModeMask modeBit(NSString* name);

/// The bits of an Array of names. Raises NSInvalidArgumentException for nil or an empty one.
ModeMask modeBits(NSArray* names);

/// The name behind a bit.
Ref<NSString> modeName(ModeMask bit);

}  // namespace qz::detail
