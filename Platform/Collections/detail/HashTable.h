/// @file
/// Private: the ordered hash table behind Dictionaries and Sets.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "Platform/Collections/detail/ArrayIterator.h"
#include "Platform/Collections/detail/HashSupport.h"
#include "Platform/Collections/detail/ReleaseElements.h"
#include "Platform/Runtime/NSObject.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// A place of a Set. `count` is a counted Set's.
struct SetEntry {
  Ref<NSObject> key;
  std::uint32_t hash = 0;
  std::uint32_t count = 1;

  std::array<NSObject*, 1> leak() noexcept { return {key.leak()}; }
};

/// A place of a Dictionary.
struct DictionaryEntry {
  Ref<NSObject> key;
  Ref<NSObject> value;
  std::uint32_t hash = 0;

  std::array<NSObject*, 2> leak() noexcept { return {key.leak(), value.leak()}; }
};

/// How far a walk over a table has come, and the table it was begun on.
struct HashCursor {
  std::uint32_t position = 0;
  std::uint32_t stamp = 0;
};

/// Entries in the order in which they were added, found by hash in constant time.
///
/// One block of memory holds the entries, dense and in order, and behind them an open-addressed
/// index of entry numbers. The low bits of a hash say where in the index to look; the others stand
/// in the slot beside the number, so that a search seldom looks at an entry in vain. A removed
/// entry leaves a hole (a null key) that the next rebuilding squeezes out. Up to eight entries need
/// no index: their hashes lie close together.
///
/// Hashing, comparing and destroying keys run code of the application, which may come back to this
/// very table. So whatever leaves the table is handed to the caller, to be released once the table
/// is whole again; and a search notices when a comparison changed the table, and raises.
template <class Entry>
class HashTable {
 public:
  HashTable() noexcept = default;

  /// The same entries, without holes. Calls no code of the application.
  HashTable(const HashTable& other) {
    if (other.count_ == 0) return;
    block_ = Block::make(other.count_);
    std::uint32_t position = 0;
    while (const Entry* entry = other.next(position)) {
      std::construct_at(block_->entries() + block_->used, *entry);
      block_->index(block_->used++, entry->hash);
    }
    count_ = other.count_;
  }
  HashTable(HashTable&& other) noexcept
      : block_(std::exchange(other.block_, nullptr)), count_(std::exchange(other.count_, 0)) {
    ++other.stamp_;
  }
  HashTable& operator=(const HashTable&) = delete;

  ~HashTable() {
    if (block_ == nullptr) return;
    // What the entries' ends bring about finds an empty table.
    Block* const block = std::exchange(block_, nullptr);
    count_ = 0;
    ++stamp_;
    block->releaseEntries();
    block->free();
  }

  std::uint32_t count() const noexcept { return count_; }

  /// Changes whenever an entry is added or removed.
  std::uint32_t stamp() const noexcept { return stamp_; }

  /// Makes room for `count` entries in all. Raises NSMallocException beyond what there can be.
  void reserve(std::uint32_t count) {
    if (count > (block_ == nullptr ? 0 : block_->capacity)) rebuild(count);
  }

  /// Empty, with room for `capacity` entries; a hint.
  static HashTable withRoomFor(std::uint32_t capacity) {
    HashTable table;
    table.reserve(std::min(capacity, largestHint));
    return table;
  }

  /// The entry with that key, or null. Raises NSGenericException when the keys' comparison changes
  /// this table. The entry stays put until the next `append`.
  Entry* find(NSObject* key, std::uint32_t hash) const {
    if (count_ == 0) return nullptr;
    Entry* entries = block_->entries();
    if (block_->mask == 0) {
      for (std::uint32_t i = block_->first; i < block_->used; ++i)
        if (entries[i].hash == hash && matches(entries[i].key, key)) return &entries[i];
      return nullptr;
    }
    const std::uint32_t* slots = block_->slots();
    const std::uint32_t mask = block_->mask;
    for (std::uint32_t place = hash & mask;; place = (place + 1) & mask) {
      const std::uint32_t slot = slots[place];
      if (slot == emptySlot) return nullptr;
      if (((slot ^ hash) & ~mask) != 0 || slot == removedSlot) continue;
      Entry& entry = entries[slot & mask];
      if (entry.hash == hash && matches(entry.key, key)) return &entry;
    }
  }
  Entry* find(NSObject* key) const { return count_ == 0 ? nullptr : find(key, hashOfKey(key)); }

  /// Adds an entry behind all others; the table must not have one with that key.
  Entry& append(Ref<NSObject>&& key, std::uint32_t hash) {
    if (block_ == nullptr || block_->used == block_->capacity) makeRoom();
    Entry* entry = std::construct_at(block_->entries() + block_->used);
    entry->key = std::move(key);
    entry->hash = hash;
    block_->index(block_->used++, hash);
    ++count_;
    ++stamp_;
    return *entry;
  }

  /// Takes `entry`, one of this table's, out of it.
  [[nodiscard]] Entry remove(Entry* entry) noexcept {
    const auto number = static_cast<std::uint32_t>(entry - block_->entries());
    if (block_->mask != 0) {
      const std::uint32_t wanted = block_->slotFor(number, entry->hash);
      std::uint32_t place = entry->hash & block_->mask;
      while (block_->slots()[place] != wanted) place = (place + 1) & block_->mask;
      block_->slots()[place] = removedSlot;
    }
    Entry removed = std::move(*entry);
    --count_;
    ++stamp_;
    // Emptying a table from the front, entry by entry, must not walk the holes again and again.
    while (block_->first < block_->used && !block_->entries()[block_->first].key) ++block_->first;
    return removed;
  }

  /// Takes all entries out.
  [[nodiscard]] HashTable removeAll() noexcept { return std::move(*this); }

  /// A walk from the first entry on.
  HashCursor begin() const noexcept { return {0, stamp_}; }

  /// The next entry of a walk, null at the end. Raises NSGenericException when entries were added
  /// or removed since `begin`.
  Entry* next(HashCursor& cursor) const {
    if (cursor.stamp != stamp_) raiseChanged();
    return next(cursor.position);
  }

  /// Exchanges the entries.
  void swap(HashTable& other) noexcept {
    std::swap(block_, other.block_);
    std::swap(count_, other.count_);
    ++stamp_;
    ++other.stamp_;
  }

  /// The first entry at or behind `position`, which is moved past it; null at the end. For loops
  /// that run no code of the application.
  Entry* next(std::uint32_t& position) const noexcept {
    if (block_ == nullptr) return nullptr;
    Entry* entries = block_->entries();
    if (position < block_->first) position = block_->first;
    while (position < block_->used) {
      Entry& entry = entries[position++];
      if (entry.key) return &entry;
    }
    return nullptr;
  }

 private:
  static constexpr std::uint32_t emptySlot = 0xFFFFFFFF;
  static constexpr std::uint32_t removedSlot = 0xFFFFFFFE;
  static constexpr std::uint32_t withoutIndex = 8;
  static constexpr std::size_t largeBlock = std::size_t{8} << 20;

  struct Block {
    std::uint32_t capacity;
    std::uint32_t used = 0;   // entries in use, holes included
    std::uint32_t first = 0;  // all before it are holes
    std::uint32_t mask;       // slots less one; 0 when there is no index

    /// Room for exactly `capacity` entries; at most 5/8 of the slots will be taken.
    static Block* make(std::uint32_t capacity) {
      const std::uint64_t slots =
          capacity <= withoutIndex ? 0 : std::bit_ceil((std::uint64_t{capacity} * 8 + 4) / 5);
      const std::size_t bytes = size(capacity, slots);
      void* memory = poolAllocate(bytes);
      if (bytes >= largeBlock) useLargePages(memory, bytes);
      auto* block = std::construct_at(static_cast<Block*>(memory));
      block->capacity = capacity;
      block->mask = slots == 0 ? 0 : static_cast<std::uint32_t>(slots - 1);
      if (slots != 0) std::uninitialized_fill_n(block->slots(), slots, emptySlot);
      return block;
    }
    void free() noexcept {
      poolFree(this, size(capacity, mask == 0 ? 0 : std::uint64_t{mask} + 1));
    }
    static std::size_t size(std::uint32_t capacity, std::uint64_t slots) noexcept {
      return sizeof(Block) + capacity * sizeof(Entry) + slots * sizeof(std::uint32_t);
    }

    // An entry is larger than the references in it, so these can gather at the block's front.
    void releaseEntries() noexcept {
      auto* const gathered = reinterpret_cast<NSObject**>(entries());
      std::size_t count = 0;
      for (std::uint32_t i = first; i < used; ++i) {
        const auto references = entries()[i].leak();
        std::destroy_at(&entries()[i]);
        for (NSObject* each : references) std::construct_at(gathered + count++, each);
      }
      releaseElements(gathered, count);
    }

    Entry* entries() noexcept { return reinterpret_cast<Entry*>(this + 1); }
    std::uint32_t* slots() noexcept {
      return reinterpret_cast<std::uint32_t*>(entries() + capacity);
    }

    void index(std::uint32_t number, std::uint32_t hash) noexcept {
      if (mask == 0) return;
      std::uint32_t place = hash & mask;
      while (slots()[place] < removedSlot) place = (place + 1) & mask;
      slots()[place] = slotFor(number, hash);
    }

    // Never one of the two special values: numbers stay below 5/8 of the mask.
    std::uint32_t slotFor(std::uint32_t number, std::uint32_t hash) const noexcept {
      return (hash & ~mask) | number;
    }
  };
  static_assert(alignof(Entry) <= 8 && sizeof(Block) == 16);

  bool matches(const Ref<NSObject>& mine, NSObject* key) const {
    if (mine == key) return true;
    if (!mine) return false;
    if (comparesQuietly(key)) return key->isEqual(mine);
    const Ref<NSObject> kept = mine;  // NOLINT(performance-*): may leave the table meanwhile
    const std::uint32_t before = stamp_;
    const bool same = key->isEqual(kept);
    if (stamp_ != before) raiseChanged();
    return same;
  }

  // A table that is mostly holes keeps its size or shrinks, any other doubles: either way at least
  // half of the new entries are free, which pays for the work.
  void makeRoom() {
    if (count_ >= maximumCount) raiseTooMany();
    const std::uint64_t wanted = std::uint64_t{count_} * 2;
    if (wanted <= 4) return rebuild(4);
    if (wanted <= withoutIndex) return rebuild(withoutIndex);
    const std::uint64_t slots = std::bit_ceil(wanted * 8 / 5);
    rebuild(static_cast<std::uint32_t>(std::min<std::uint64_t>(slots / 8 * 5, maximumCount)));
  }

  void rebuild(std::uint32_t capacity) {
    if (capacity > maximumCount) raiseTooMany();
    Block* block = Block::make(capacity);
    std::uint32_t position = 0;
    while (Entry* entry = next(position)) {
      block->index(block->used, entry->hash);
      std::construct_at(block->entries() + block->used++, std::move(*entry));
    }
    if (block_ != nullptr) {
      std::destroy_n(block_->entries(), block_->used);
      block_->free();
    }
    block_ = block;
    ++stamp_;
  }

  Block* block_ = nullptr;
  std::uint32_t count_ = 0;
  std::uint32_t stamp_ = 0;
};

using DictionaryTable = HashTable<DictionaryEntry>;
using SetTable = HashTable<SetEntry>;

}  // namespace qz::detail

#pragma GCC visibility pop
