/// @file
/// Which platform this is.
#pragma once

#pragma GCC visibility push(default)

namespace qz {

/// Grows with every release of the platform. What is above 677 counts storage in powers of 1000.
inline constexpr double NSFoundationVersionNumber = 1000.0;

}  // namespace qz

#pragma GCC visibility pop
