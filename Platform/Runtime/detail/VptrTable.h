/// @file
/// Private: the look-up table behind dispatch and key-value access.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace qz {
class NSObject;
}

namespace qz::detail {

/// What tells an Object's class at the price of one load: the address of its virtual table. Each
/// described class has its own, and every C++ ABI used on Linux keeps it in the first word.
inline std::uintptr_t vptrOf(const NSObject* object) noexcept {
  std::uintptr_t vptr;
  std::memcpy(&vptr, static_cast<const void*>(object), sizeof vptr);
  return vptr;
}

/// An immutable open-addressed table from a word to an entry.
///
/// Readers take no lock: a table that has been published is never changed or freed; an addition
/// publishes a larger copy. `Entry` has a member `key`, 0 in free places. The table is at most
/// half full, and its multiplier is picked so that nearly every key stands at its first place.
template <class Entry>
struct VptrTable {
  std::uint64_t multiplier = 0;
  std::uint32_t shift = 0;
  std::uint32_t mask = 0;
  std::uint32_t count = 0;
  Entry* entries = nullptr;

  const Entry* find(std::uintptr_t key) const noexcept {
    std::size_t i = static_cast<std::size_t>((key * multiplier) >> shift);
    for (;;) {
      const Entry& entry = entries[i];
      if (entry.key == key) [[likely]]
        return &entry;
      if (entry.key == 0) return nullptr;
      i = (i + 1) & mask;
    }
  }

  /// A copy with one more entry. Its entries are meant to be published and kept for ever.
  static VptrTable with(const VptrTable& old, const Entry& added) {
    VptrTable table;
    table.count = old.count + 1;
    std::uint32_t bits = 1;
    while ((1u << bits) < 2 * table.count) ++bits;
    table.mask = (1u << bits) - 1;
    table.shift = 64 - bits;
    auto best = std::make_unique<Entry[]>(table.mask + 1);
    std::uint32_t bestCost = ~0u;
    std::uint64_t candidate = 0x9E3779B97F4A7C15u;
    for (int attempt = 0; attempt < 24 && bestCost != 0; ++attempt) {
      auto trial = std::make_unique<Entry[]>(table.mask + 1);
      std::uint32_t cost = 0;
      auto place = [&](const Entry& entry) {
        std::size_t i = static_cast<std::size_t>((entry.key * candidate) >> table.shift);
        for (; trial[i].key != 0; i = (i + 1) & table.mask) ++cost;
        trial[i] = entry;
      };
      for (std::uint32_t i = 0; i <= old.mask && old.count != 0; ++i)
        if (old.entries[i].key != 0) place(old.entries[i]);
      place(added);
      if (cost < bestCost) {
        bestCost = cost;
        best.swap(trial);
        table.multiplier = candidate;
      }
      candidate = candidate * 6364136223846793005u + 1442695040888963407u;
      candidate |= 1;
    }
    table.entries = best.release();
    return table;
  }
};

}  // namespace qz::detail
