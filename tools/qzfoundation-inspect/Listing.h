/// @file
/// What the run-time knows of a class, as text.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include "Platform/Runtime/Class.h"

namespace qz::tool {

/// "a:b:" as it is called in C++: "a_b".
std::string cppName(std::string_view selector);

/// The class, what it descends from, its properties and its operations, each with its types.
void list(std::ostream& out, Class* aClass);

/// The same as a chapter of a page: a table of the operations with their Selectors and C++ names.
void listAsMarkdown(std::ostream& out, Class* aClass);

/// All known classes, each below the one that it descends from.
void listTree(std::ostream& out);

}  // namespace qz::tool
