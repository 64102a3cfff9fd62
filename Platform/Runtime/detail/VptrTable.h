/// @file
/// Private: the look-up table behind dispatch and key-value access.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#pragma GCC visibility push(default)

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
  static_assert((sizeof(Entry) & (sizeof(Entry) - 1)) == 0, "places are found by masking bytes");

  std::uint64_t multiplier = 0;
  std::uint64_t byteMask = 0;  // of an entry's distance from the first
  std::uint32_t count = 0;
  Entry* entries = nullptr;

  /// Where `key` stands, if it stands at its first place; else some other entry.
  const Entry& first(std::uintptr_t key) const noexcept {
    const std::uint64_t offset = ((key * multiplier) >> 32) & byteMask;
    return *reinterpret_cast<const Entry*>(reinterpret_cast<const std::byte*>(entries) + offset);
  }

  const Entry* find(std::uintptr_t key) const noexcept {
    const auto mask = static_cast<std::size_t>(byteMask / sizeof(Entry));
    auto i = static_cast<std::size_t>(&first(key) - entries);
    for (;;) {
      const Entry& entry = entries[i];
      if (entry.key == key) return &entry;
      if (entry.key == 0) return nullptr;
      i = (i + 1) & mask;
    }
  }

  /// A copy with one more entry. Its entries are meant to be published and kept for ever.
  static VptrTable with(const VptrTable& old, const Entry& added) {
    VptrTable table;
    table.count = old.count + 1;
    std::size_t places = 2;
    while (places < 2 * std::size_t{table.count}) places *= 2;
    const std::size_t mask = places - 1;
    table.byteMask = mask * sizeof(Entry);
    auto best = std::make_unique<Entry[]>(places);
    std::uint32_t bestCost = ~0u;
    std::uint64_t candidate = 0x9E3779B97F4A7C15u;
    std::uint64_t bestMultiplier = candidate;
    for (int attempt = 0; attempt < 24 && bestCost != 0; ++attempt) {
      auto trial = std::make_unique<Entry[]>(places);
      table.entries = trial.get();
      table.multiplier = candidate;
      std::uint32_t cost = 0;
      auto place = [&](const Entry& entry) {
        auto i = static_cast<std::size_t>(&table.first(entry.key) - trial.get());
        for (; trial[i].key != 0; i = (i + 1) & mask) ++cost;
        trial[i] = entry;
      };
      for (std::size_t i = 0; i * sizeof(Entry) <= old.byteMask; ++i)
        if (old.entries[i].key != 0) place(old.entries[i]);
      place(added);
      if (cost < bestCost) {
        bestCost = cost;
        best.swap(trial);
        bestMultiplier = candidate;
      }
      candidate = candidate * 6364136223846793005u + 1442695040888963407u;
      candidate |= 1;
    }
    table.multiplier = bestMultiplier;
    table.entries = best.release();
    return table;
  }
};

}  // namespace qz::detail

#pragma GCC visibility pop
