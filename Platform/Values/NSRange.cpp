#include "Platform/Values/NSRange.h"

#include <ostream>

namespace qz {

std::ostream& operator<<(std::ostream& out, NSRange range) {
  return out << '{' << range.location << ", " << range.length << '}';
}

}  // namespace qz
