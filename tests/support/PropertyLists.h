/// @file
/// Property lists as bytes, and ones made up at random, for what has to hold of all of them.
#pragma once

#include "Platform/System/NSPropertyListSerialization.h"
#include "tests/support/Test.h"

namespace qz::test {

/// What the bytes hold, in whatever format.
Ref<NSObject> read(std::string_view bytes, std::uint32_t mutability = NSPropertyListImmutable);

/// Bytes, or "refused: " and why.
std::string written(NSObject* list, NSPropertyListFormat format);

/// A list with values of every kind that XML holds, of a few levels and some dozen values. Dates
/// are whole seconds, reals are doubles without NaN and -0. The same for the same state of the
/// generator.
Ref<NSObject> randomPropertyList(std::mt19937_64& random, int levels = 4);

}  // namespace qz::test
