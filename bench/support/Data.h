/// @file
/// The inputs: the same for every side of a comparison, and in every run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace qz::bench {

/// How many Objects a loop over Objects visits: they fit the first-level cache's reach, while a
/// random pattern of classes this long is beyond what branch prediction learns by heart.
inline constexpr std::size_t visited = 1024;

/// How many classes take part where "eight classes" are promised.
inline constexpr std::size_t classes = 8;

/// How many keys the large tables have.
inline constexpr std::size_t million = 1'000'000;

/// `count` numbers from 0 up to `bound`, exclusive.
std::vector<std::int32_t> randomInts(std::size_t count, std::int32_t bound);

/// Any 32-bit values.
std::vector<std::int32_t> anyInts(std::size_t count);

/// Names of 6 to 20 lower-case letters.
std::vector<std::string> randomNames(std::size_t count);

/// File names in folders: long common beginnings.
std::vector<std::string> randomPaths(std::size_t count);

std::u16string widened(const std::string& ascii);

/// The same in another order: keys are asked for in another than that of the table.
template <class All>
All shuffled(All keys) {
  const auto random = anyInts(keys.size());
  for (std::size_t i = keys.size(); i > 1; --i)
    std::swap(keys[i - 1], keys[static_cast<std::uint32_t>(random[i - 1]) % i]);
  return keys;
}

}  // namespace qz::bench
