/// @file
/// Private: Dates as points of the clock that nobody sets.
#pragma once

#include <algorithm>
#include <chrono>

#include "Platform/Values/NSDate.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// Waits are measured by the steady clock, so that setting the system's clock neither ends nor
/// prolongs one.
using SteadyTime = std::chrono::steady_clock::time_point;

/// `seconds` from now, kept within thirty years, which the arithmetic of every clock can bear. What
/// is not a number is now.
inline SteadyTime steadyIn(NSTimeInterval seconds) {
  constexpr NSTimeInterval farthest = 1e9;
  const auto now = std::chrono::steady_clock::now();
  if (!(seconds > 0)) return now;
  return now + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                   std::chrono::duration<double>(std::min(seconds, farthest)));
}

/// The point that `limit` is now; nil is now.
inline SteadyTime steadyTime(NSDate* limit) {
  return steadyIn(limit == nullptr ? 0 : limit->timeIntervalSinceNow());
}

}  // namespace qz::detail

#pragma GCC visibility pop
