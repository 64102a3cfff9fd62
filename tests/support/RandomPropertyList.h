/// @file
/// Property lists made up at random, for what has to hold of all of them.
#pragma once

#include <random>

#include "Platform/Runtime/NSObject.h"

namespace qz::test {

/// A list with values of every kind that XML holds, of a few levels and some dozen values. Dates
/// are whole seconds, reals are doubles without NaN and -0. The same for the same state of the
/// generator.
Ref<NSObject> randomPropertyList(std::mt19937_64& random, int levels = 4);

}  // namespace qz::test
