// Unsigned keys whose plain `<` orders like the value they were made from.
#pragma once

#include <bit>
#include <cstdint>

namespace qz::detail {

inline constexpr std::uint64_t sortKeySignBit = std::uint64_t{1} << 63;

// Moves the negative half below the positive half.
constexpr std::uint64_t sortKey(std::int64_t value) {
  return static_cast<std::uint64_t>(value) ^ sortKeySignBit;
}

// Both zeros share one key. Every NaN maps to 0, which no number uses (negative infinity is the
// lowest number at 0x000FFFFFFFFFFFFF), so NaNs are equal to each other and come first.
constexpr std::uint64_t sortKey(double value) {
  if (value != value) return 0;
  if (value == 0.0) return sortKeySignBit;
  const std::uint64_t bits = std::bit_cast<std::uint64_t>(value);
  // The magnitude of a negative number grows away from zero, so all its bits turn over.
  return (bits & sortKeySignBit) != 0 ? ~bits : bits | sortKeySignBit;
}

}  // namespace qz::detail
