/// @file
/// Private: the allocator behind every reference-counted object.
///
/// Objects are small, numerous and short-lived, so blocks carry no header: the caller says how
/// large a block was when freeing it. Each thread keeps one free list per size class and takes or
/// returns whole batches of blocks through a store shared by all threads. Memory taken from the
/// system is never given back; a freed block serves any later object of its size class.
///
/// When the library is built for AddressSanitizer or ThreadSanitizer every block comes from
/// ::operator new, so that the sanitizer sees the lifetime of each object. That choice is made in
/// the library alone: callers compiled with or without a sanitizer may be mixed with it freely.
#pragma once

#include <cstddef>
#include <new>

#pragma GCC visibility push(default)

namespace qz::detail {

// Larger blocks go straight to ::operator new.
inline constexpr std::size_t kPoolMaxSize = 512;
inline constexpr std::size_t kPoolGranularity = 8;
inline constexpr std::size_t kPoolClassCount = kPoolMaxSize / kPoolGranularity + 1;

struct PoolBlock {
  PoolBlock* next;
  PoolBlock* nextBatch;  // Used only by the first block of a batch held in the shared store.
};

struct PoolBin {
  PoolBlock* head;
  std::size_t room;  // How many more blocks fit before a batch is complete.
};

struct PoolCache {
  PoolBin bins[kPoolClassCount];
  PoolBlock* spares[kPoolClassCount];  // A complete batch, or null.
  PoolCache* nextIdle;
};

// Never null: a thread without a cache points at an empty one with no room, which sends both
// allocation and release to the slow path without a test of its own. The initial-exec model and
// constant initialisation keep each access to a single instruction in a shared object.
[[gnu::visibility("default"),
  gnu::tls_model("initial-exec")]] extern constinit thread_local PoolCache* currentPoolCache;

[[gnu::visibility("default"), gnu::noinline]] void* poolAllocateSlow(std::size_t size);
[[gnu::visibility("default"), gnu::noinline]] void poolFreeSlow(void* block,
                                                                std::size_t size) noexcept;

// Bytes taken from the system for pooled blocks so far; blocks above kPoolMaxSize do not count.
[[gnu::visibility("default")]] std::size_t poolBytesReserved() noexcept;

constexpr std::size_t poolClassOf(std::size_t size) noexcept {
  return (size + kPoolGranularity - 1) / kPoolGranularity;
}

// Returns a block aligned to 16 when `size` is a multiple of 16 and to 8 otherwise. `size` must
// not be zero. Throws std::bad_alloc.
[[nodiscard]] inline void* poolAllocate(std::size_t size) {
  if (size > kPoolMaxSize) return ::operator new(size);
  PoolBin& bin = currentPoolCache->bins[poolClassOf(size)];
  PoolBlock* block = bin.head;
  if (block == nullptr) [[unlikely]]
    return poolAllocateSlow(size);
  bin.head = block->next;
  ++bin.room;
  return block;
}

// Takes back a block from any thread. `size` must be the one the block was asked for with.
inline void poolFree(void* block, std::size_t size) noexcept {
  if (size > kPoolMaxSize) {
#if defined(__cpp_sized_deallocation)
    ::operator delete(block, size);
#else
    ::operator delete(block);
#endif
    return;
  }
  PoolBin& bin = currentPoolCache->bins[poolClassOf(size)];
  if (bin.room == 0) [[unlikely]] {
    poolFreeSlow(block, size);
    return;
  }
  PoolBlock* freed = ::new (block) PoolBlock;
  freed->next = bin.head;
  bin.head = freed;
  --bin.room;
}

}  // namespace qz::detail

#pragma GCC visibility pop
