#include "Platform/System/detail/BaseDirectory.h"

#include <cstdlib>

#include "Platform/Values/NSPathUtilities.h"

namespace qz::detail {

std::string baseDirectory(const char* variable, const char* underHome) {
  const char* given = std::getenv(variable);
  if (given != nullptr && given[0] == '/') return given;
  return NSHomeDirectory()->fileSystemRepresentation() + underHome;
}

}  // namespace qz::detail
