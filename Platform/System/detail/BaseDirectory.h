/// @file
/// Private: the XDG base directories.
#pragma once

#include <string>

namespace qz::detail {

/// The value of an environment variable such as "XDG_CONFIG_HOME"; where it is not set, or
/// relative, which the standard has count for nothing, `underHome` ("/.config") in the home
/// directory.
std::string baseDirectory(const char* variable, const char* underHome);

}  // namespace qz::detail
