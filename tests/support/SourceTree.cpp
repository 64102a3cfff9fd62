#include "tests/support/SourceTree.h"

namespace qz::test {

std::string sourcePath(const std::string& relative) { return QZ_SOURCE_DIR "/" + relative; }

}  // namespace qz::test
