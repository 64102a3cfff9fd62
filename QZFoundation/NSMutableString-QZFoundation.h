/// @file
/// Operations of mutable Strings. The receiver must not be nil.
#pragma once

#include "Platform/Values/NSMutableString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// Adds one code unit at the end.
void appendCharacter(NSMutableString* self, char16_t character);

/// Takes the last code unit away; nothing when there is none.
void deleteLastCharacter(NSMutableString* self);

}  // namespace qz

#pragma GCC visibility pop
