/// @file
/// Points, sizes and rectangles in a plane.
#pragma once

#pragma GCC visibility push(default)

namespace qz {

struct NSPoint {
  float x = 0;
  float y = 0;

  friend constexpr bool operator==(NSPoint, NSPoint) noexcept = default;
};

struct NSSize {
  float width = 0;
  float height = 0;

  friend constexpr bool operator==(NSSize, NSSize) noexcept = default;
};

struct NSRect {
  NSPoint origin;
  NSSize size;

  friend constexpr bool operator==(const NSRect&, const NSRect&) noexcept = default;
};

constexpr NSPoint NSMakePoint(float x, float y) noexcept { return {x, y}; }
constexpr NSSize NSMakeSize(float width, float height) noexcept { return {width, height}; }
constexpr NSRect NSMakeRect(float x, float y, float width, float height) noexcept {
  return {{x, y}, {width, height}};
}

}  // namespace qz

#pragma GCC visibility pop
