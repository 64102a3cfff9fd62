/// @file
/// Private: removing a file, or a directory with everything in it.
#pragma once

#include <string>

#include "Platform/System/detail/OpenFolder.h"

namespace qz::detail {

/// Removes what is at `path`: a link itself, a directory with everything in it, whatever the names.
/// Never leaves the directory through a link, also when somebody changes the tree meanwhile; what
/// others removed first counts as removed. "/", and paths that end with "." or "..", are refused.
/// Answers whether nothing failed; each failure is told with `errno` set.
bool removeTree(const std::string& path, const FailureListener& onFailure);

}  // namespace qz::detail
