#include "Platform/Values/NSGeometry.h"

#include <ostream>

namespace qz {

std::ostream& operator<<(std::ostream& out, NSPoint point) {
  return out << '{' << point.x << ", " << point.y << '}';
}

std::ostream& operator<<(std::ostream& out, NSSize size) {
  return out << '{' << size.width << ", " << size.height << '}';
}

std::ostream& operator<<(std::ostream& out, const NSRect& rect) {
  return out << '{' << rect.origin << ", " << rect.size << '}';
}

}  // namespace qz
