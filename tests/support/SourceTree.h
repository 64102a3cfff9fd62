// Where the project's own files lie, for tests that read them. The one source file behind it knows
// the path, so that all others compile to the same bytes wherever the project was cloned to.
#pragma once

#include <string>

namespace qz::test {

/// A path under the root of the project: "resources/QZFoundation".
std::string sourcePath(const std::string& relative);

}  // namespace qz::test
