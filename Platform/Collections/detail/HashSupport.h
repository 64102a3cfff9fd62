/// @file
/// Private: what the hash table needs to know of its keys.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Platform/Runtime/NSObject.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// As many entries as a count can say and still differ from NSNotFound.
inline constexpr std::uint32_t maximumCount = NSNotFound - 1;

/// A hint of room for more than these is not believed until they come.
inline constexpr std::uint32_t largestHint = 1U << 24;

/// Spreads a hash over 32 bits, all of which then depend on all of its bits: the hashes of Numbers
/// and addresses differ in few places, and often in the highest or lowest only.
constexpr std::uint32_t mixHash(std::size_t hash) noexcept {
  std::uint64_t bits = hash;
  bits ^= bits >> 32;
  bits *= 0xD6E8FEB86659FD93u;
  bits ^= bits >> 32;
  bits *= 0xD6E8FEB86659FD93u;
  return static_cast<std::uint32_t>(bits >> 32);
}

/// The hash under which `key` is kept.
inline std::uint32_t hashOfKey(const NSObject* key) { return mixHash(key->hash()); }

/// Whether comparing `key` with another Object runs no code of the application: it is a String or
/// a Number.
bool comparesQuietly(const NSObject* key);

/// Tells the system that a block, if it is a large one, had better lie in large pages: a table is
/// looked into all over, and each small page has to be found first.
void useLargePages(void* block, std::size_t size) noexcept;

/// Raises NSMallocException.
[[noreturn]] void raiseTooMany();

}  // namespace qz::detail

#pragma GCC visibility pop
