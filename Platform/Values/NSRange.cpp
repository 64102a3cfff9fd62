#include "Platform/Values/NSRange.h"

#include <ostream>
#include <string>

#include "Platform/Runtime/NSException.h"

namespace qz {

std::ostream& operator<<(std::ostream& out, NSRange range) {
  return out << '{' << range.location << ", " << range.length << '}';
}

void detail::raiseRange(const char* operation, NSRange range, std::uint32_t available) {
  raise(NSRangeException, std::string(operation) + ": range {" + std::to_string(range.location) +
                              ", " + std::to_string(range.length) + "} beyond length " +
                              std::to_string(available));
}

}  // namespace qz
