/// @file
/// Private: whether two files or directories hold the same.
#pragma once

#include <string>

namespace qz::detail {

/// Files with the same bytes, links to the same text, devices of the same number, or directories
/// with the same names and equal contents under them. False also when one cannot be read.
bool haveEqualContents(const std::string& path, const std::string& other);

}  // namespace qz::detail
