/// @file
/// Ranges of indices.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iosfwd>

#include "Platform/Runtime/NSObject.h"

#pragma GCC visibility push(default)

namespace qz {

/// A location and a length, in elements or code units.
struct NSRange {
  std::uint32_t location = 0;  ///< The first index.
  std::uint32_t length = 0;    ///< How many from there on; 0 is an empty range.

  friend constexpr bool operator==(NSRange, NSRange) noexcept = default;
};

/// A range of these parts.
constexpr NSRange NSMakeRange(std::uint32_t location, std::uint32_t length) noexcept {
  return {location, length};
}

/// The first index after the range; 64 bits wide, so it never wraps.
constexpr std::uint64_t NSMaxRange(NSRange range) noexcept {
  return std::uint64_t{range.location} + range.length;
}

/// Whether the index is one of those in the range.
constexpr bool NSLocationInRange(std::uint32_t location, NSRange range) noexcept {
  return location >= range.location && location < NSMaxRange(range);
}

/// The same parts; empty ranges elsewhere differ.
constexpr bool NSEqualRanges(NSRange a, NSRange b) noexcept { return a == b; }

/// What both share; {0, 0} when that is nothing.
constexpr NSRange NSIntersectionRange(NSRange a, NSRange b) noexcept {
  const std::uint64_t from = std::max(a.location, b.location);
  const std::uint64_t to = std::min(NSMaxRange(a), NSMaxRange(b));
  if (to <= from) return {};
  return {static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to - from)};
}

/// The smallest range that holds both.
constexpr NSRange NSUnionRange(NSRange a, NSRange b) noexcept {
  const std::uint64_t from = std::min(a.location, b.location);
  const std::uint64_t to = std::max(NSMaxRange(a), NSMaxRange(b));
  return {static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to - from)};
}

/// "{3, 5}": location and length.
std::ostream& operator<<(std::ostream& out, NSRange range);

/// The range that a failed search answers.
inline constexpr NSRange notFoundRange{NSNotFound, 0};

namespace detail {

/// Raises NSRangeException: "<operation>: range {5, 4} beyond length 3".
[[noreturn]] void raiseRange(const char* operation, NSRange range, std::uint32_t available);

/// Raises it unless `range` lies within `available`.
inline void requireRange(const char* operation, NSRange range, std::uint32_t available) {
  if (NSMaxRange(range) > available) raiseRange(operation, range, available);
}

}  // namespace detail

}  // namespace qz

#pragma GCC visibility pop
