/// @file
/// Points, sizes and rectangles in a plane.
#pragma once

#include <iosfwd>

#pragma GCC visibility push(default)

namespace qz {

/// A place; x to the right.
struct NSPoint {
  /// Its distances from the origin.
  float x = 0;
  float y = 0;

  friend constexpr bool operator==(NSPoint, NSPoint) noexcept = default;
};

/// An extent.
struct NSSize {
  /// In the units of the coordinates; nothing is said about negative ones.
  float width = 0;
  float height = 0;

  friend constexpr bool operator==(NSSize, NSSize) noexcept = default;
};

/// A rectangle with upright sides.
struct NSRect {
  /// The corner with the least coordinates, and the extent from there.
  NSPoint origin;
  NSSize size;

  friend constexpr bool operator==(const NSRect&, const NSRect&) noexcept = default;
};

/// A value of these parts.
constexpr NSPoint NSMakePoint(float x, float y) noexcept { return {x, y}; }
constexpr NSSize NSMakeSize(float width, float height) noexcept { return {width, height}; }
constexpr NSRect NSMakeRect(float x, float y, float width, float height) noexcept {
  return {{x, y}, {width, height}};
}

/// "{1, 2}", "{3, 4}" and "{{1, 2}, {3, 4}}".
std::ostream& operator<<(std::ostream& out, NSPoint point);
std::ostream& operator<<(std::ostream& out, NSSize size);
std::ostream& operator<<(std::ostream& out, const NSRect& rect);

}  // namespace qz

#pragma GCC visibility pop
