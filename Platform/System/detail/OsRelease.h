/// @file
/// Private: what the operating system says of itself, in os-release(5).
#pragma once

#include <string>
#include <string_view>

#include "Platform/Runtime/Ref.h"

#pragma GCC visibility push(default)

namespace qz {
class NSString;
}  // namespace qz

namespace qz::detail {

/// The value of a field in the operating system's release file; nil when there is no such file or
/// field, and when it is empty.
Ref<NSString> osReleaseField(std::string_view name);

/// The same from the text of such a file, which is a list of shell assignments: NAME=value, in
/// single or double quotes or none, with a backslash before what would mean something to a shell.
std::string osReleaseValue(std::string_view file, std::string_view name);

}  // namespace qz::detail

#pragma GCC visibility pop
