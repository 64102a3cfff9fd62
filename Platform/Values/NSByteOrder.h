/// @file
/// The order of the bytes of integers.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>

#pragma GCC visibility push(default)

namespace qz {

/// Which byte of an integer comes first.
enum NSByteOrder : std::int32_t {
  NS_UnknownByteOrder = 0,
  NS_LittleEndian = 1,  ///< the lowest
  NS_BigEndian = 2,     ///< the highest
};

/// This machine's order.
constexpr NSByteOrder NSHostByteOrder() noexcept {
  return std::endian::native == std::endian::big ? NS_BigEndian : NS_LittleEndian;
}

/// The integer with its bytes the other way round.
template <std::integral T>
constexpr T NSSwapBytes(T value) noexcept {
  auto bytes = std::bit_cast<std::array<std::byte, sizeof(T)>>(value);
  std::ranges::reverse(bytes);
  return std::bit_cast<T>(bytes);
}

/// From this machine's order to `order` and back, which is the same. Only NS_BigEndian means the
/// highest byte first; any other value means the lowest.
template <std::integral T>
constexpr T NSSwapHost(T value, NSByteOrder order) noexcept {
  return (order == NS_BigEndian) == (NSHostByteOrder() == NS_BigEndian) ? value
                                                                        : NSSwapBytes(value);
}

}  // namespace qz

#pragma GCC visibility pop
