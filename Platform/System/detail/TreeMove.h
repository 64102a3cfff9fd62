/// @file
/// Private: giving what is at a path another one, on whatever file system.
#pragma once

#include <string>

#include "Platform/System/detail/OpenFolder.h"

namespace qz::detail {

/// Moves what is at `from` to the name `to`, at which there must be nothing. On another file system
/// it is copied beside `to`, gets its name when it is whole, and only then goes away at `from`; a
/// copy that fails is removed, and nothing has changed. Answers whether nothing failed; each
/// failure is told with `errno` set.
bool moveTree(const std::string& from, const std::string& to, const FailureListener& onFailure);

}  // namespace qz::detail
