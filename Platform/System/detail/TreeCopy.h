/// @file
/// Private: copying a file, or a directory with everything in it.
#pragma once

#include <string>

#include "Platform/System/detail/OpenFolder.h"

namespace qz::detail {

/// Copies what is at `from` to the name `to`, at which there must be nothing yet. Kept are contents
/// with their holes, permissions, times to the nanosecond, owner and group where the user may give
/// them, extended attributes and access control lists; links stay links, and names that shared one
/// file in the tree share one in the copy.
///
/// A single file appears under its name when it is whole. A file in a directory that cannot be
/// copied is left out, and told to `onFailure`, always on the calling thread with `errno` set; what
/// it answers is whether to go on. Large trees are copied by several threads. Answers whether
/// nothing failed.
bool copyTree(const std::string& from, const std::string& to, const FailureListener& onFailure);

}  // namespace qz::detail
