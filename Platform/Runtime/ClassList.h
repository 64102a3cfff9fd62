/// @file
/// Every class that is known.
#pragma once

#include <vector>

#include "Platform/Runtime/Class.h"

#pragma GCC visibility push(default)

namespace qz {

/// The classes known so far, ordered by name: those of this library, and those of the application
/// that have been mentioned. Any thread.
std::vector<Class*> allClasses();

}  // namespace qz

#pragma GCC visibility pop
