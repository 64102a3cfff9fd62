#include "Platform/Runtime/detail/ObjectPool.h"

#include <pthread.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <type_traits>
#include <utility>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QZ_POOL_BYPASSED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QZ_POOL_BYPASSED 1
#endif
#endif

namespace qz::detail {
namespace {

// Both stay empty for ever. A thread starts on the first one; it stands on the second one once it
// has given up its cache, so that what it still frees while ending is not cached again.
constinit PoolCache freshCache{};
[[maybe_unused]] constinit PoolCache departedCache{};

}  // namespace

// GCC forgets the model of the declaration unless the definition says it again.
[[gnu::tls_model("initial-exec")]] constinit thread_local PoolCache* currentPoolCache = &freshCache;

#if defined(QZ_POOL_BYPASSED)

void* poolAllocateSlow(std::size_t size) { return ::operator new(size); }

void poolFreeSlow(void* block, [[maybe_unused]] std::size_t size) noexcept {
#if defined(__cpp_sized_deallocation)
  ::operator delete(block, size);
#else
  ::operator delete(block);
#endif
}

std::size_t poolBytesReserved() noexcept { return 0; }

#else

namespace {

// A batch is the unit of exchange with the store; a thread caches at most two of each class.
constexpr std::size_t batchBytes = 32 * 1024;
// Fresh memory is linked into lists a run at a time, so that it is still in the first-level cache
// when its blocks are handed out.
constexpr std::size_t runBytes = 4 * 1024;
constexpr std::size_t minSlabBytes = 64 * 1024;
constexpr std::size_t maxSlabBytes = 2 * 1024 * 1024;  // A huge page on the usual machines.
constexpr std::size_t cacheLine = 64;

constexpr std::size_t blockSize(std::size_t index) {
  return std::max(index * kPoolGranularity, sizeof(PoolBlock));
}

constexpr std::size_t batchCount(std::size_t index) { return batchBytes / blockSize(index); }

struct Batch {
  PoolBlock* head;
  std::size_t count;
};

// What the threads share. Every member function but mutex() expects the mutex to be held.
class Store {
 public:
  std::mutex& mutex() { return mutex_; }
  std::size_t reserved() const { return reserved_; }

  void giveFull(std::size_t index, PoolBlock* head) {
    head->nextBatch = shelves_[index].full;
    shelves_[index].full = head;
  }

  // Joins incomplete batches, lest threads that come and go leave ever smaller ones behind.
  void give(std::size_t index, Batch batch) {
    if (batch.count == batchCount(index)) {
      giveFull(index, batch.head);
      return;
    }
    Batch& loose = shelves_[index].loose;
    if (loose.count == 0) {
      loose = batch;
      return;
    }
    while (batch.head != nullptr) {
      PoolBlock* block = batch.head;
      batch.head = block->next;
      block->next = loose.head;
      loose.head = block;
      if (++loose.count == batchCount(index)) giveFull(index, std::exchange(loose, {}).head);
    }
  }

  // Returns the loose batch first, so that give() seldom has blocks to join.
  Batch take(std::size_t index) {
    Shelf& shelf = shelves_[index];
    if (shelf.loose.count != 0) return std::exchange(shelf.loose, {});
    if (shelf.full == nullptr) return {};
    PoolBlock* head = shelf.full;
    shelf.full = head->nextBatch;
    return {head, batchCount(index)};
  }

  // Returns raw memory for between one and `count` adjacent blocks and sets `count` to the number.
  char* carve(std::size_t size, std::size_t& count) {
    std::size_t left = static_cast<std::size_t>(slabEnd_ - slabNext_);
    if (left < size) {
      addSlab();
      left = static_cast<std::size_t>(slabEnd_ - slabNext_);
    }
    count = std::min(count, left / size);
    char* run = slabNext_;
    // Whole cache lines keep runs aligned and two threads off the same line.
    slabNext_ += (count * size + cacheLine - 1) / cacheLine * cacheLine;
    return run;
  }

  PoolCache* takeCache() {
    if (idle_ != nullptr) return std::exchange(idle_, idle_->nextIdle);
    std::size_t count = 1;
    return ::new (carve(sizeof(PoolCache), count)) PoolCache;
  }

  void giveCache(PoolCache* cache) {
    cache->nextIdle = idle_;
    idle_ = cache;
  }

 private:
  struct Shelf {
    PoolBlock* full;  // Complete batches.
    Batch loose;      // Fewer blocks than a batch.
  };

  // Slabs grow with the pool: a small program stays small and a large one gets huge pages.
  void addSlab() {
    const std::size_t bytes = std::clamp(reserved_, minSlabBytes, maxSlabBytes);
    const bool huge = bytes == maxSlabBytes;
    const std::size_t mapped = huge ? 2 * bytes : bytes;
    void* memory =
        ::mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    char* slab = static_cast<char*>(memory);
    if (huge) {
      const std::size_t lead = -reinterpret_cast<std::uintptr_t>(slab) % bytes;
      if (lead != 0) ::munmap(slab, lead);
      slab += lead;
      ::munmap(slab + bytes, bytes - lead);
      ::madvise(slab, bytes, MADV_HUGEPAGE);
    }
    slabNext_ = slab;
    slabEnd_ = slab + bytes;
    reserved_ += bytes;
  }

  std::mutex mutex_;
  Shelf shelves_[kPoolClassCount]{};
  PoolCache* idle_ = nullptr;
  char* slabNext_ = nullptr;
  char* slabEnd_ = nullptr;
  std::size_t reserved_ = 0;
};

// Objects are made by static initialisers and freed by static destructors, in any order.
static_assert(std::is_trivially_destructible_v<Store>);
constinit Store store;

pthread_once_t setUpOnce = PTHREAD_ONCE_INIT;
pthread_key_t threadEndKey;
bool threadEndKeyMade = false;

// Runs after the destructors of thread_local objects, all of which can thus still use the cache.
void threadEnds(void* value) {
  auto* cache = static_cast<PoolCache*>(value);
  currentPoolCache = &departedCache;
  std::lock_guard lock(store.mutex());
  for (std::size_t index = 1; index < kPoolClassCount; ++index) {
    const PoolBin& bin = cache->bins[index];
    if (bin.head != nullptr) store.give(index, {bin.head, batchCount(index) - bin.room});
    if (cache->spares[index] != nullptr) store.giveFull(index, cache->spares[index]);
  }
  store.giveCache(cache);
}

void setUp() {
  threadEndKeyMade = ::pthread_key_create(&threadEndKey, threadEnds) == 0;
  // A child must not inherit the store half changed by a thread it does not have.
  ::pthread_atfork([] { store.mutex().lock(); }, [] { store.mutex().unlock(); },
                   [] { store.mutex().unlock(); });
}

// Gives the thread a cache. Returns null for an ending thread, and when a cache could not be had
// or could not be collected at the end of the thread.
PoolCache* attach() noexcept {
  if (currentPoolCache != &freshCache) {
    return currentPoolCache == &departedCache ? nullptr : currentPoolCache;
  }
  ::pthread_once(&setUpOnce, setUp);
  if (!threadEndKeyMade) return nullptr;
  std::lock_guard lock(store.mutex());
  PoolCache* cache = nullptr;
  try {
    cache = store.takeCache();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  if (::pthread_setspecific(threadEndKey, cache) != 0) {
    store.giveCache(cache);
    return nullptr;
  }
  for (std::size_t index = 1; index < kPoolClassCount; ++index) {
    cache->bins[index] = {nullptr, batchCount(index)};
    cache->spares[index] = nullptr;
  }
  currentPoolCache = cache;
  return cache;
}

// Returns at least one block and at most a batch, from the store or else from fresh memory.
Batch fetch(std::size_t index) {
  const std::size_t size = blockSize(index);
  // Eight blocks of any size end where a cache line does, so that runs leave no gaps.
  static_assert(8 * kPoolGranularity == cacheLine && runBytes / kPoolMaxSize >= 8);
  std::size_t count = runBytes / size / 8 * 8;
  char* run = nullptr;
  {
    std::lock_guard lock(store.mutex());
    const Batch batch = store.take(index);
    if (batch.head != nullptr) return batch;
    run = store.carve(size, count);
  }
  PoolBlock* head = nullptr;
  for (std::size_t i = count; i-- > 0;) {
    auto* block = ::new (run + i * size) PoolBlock;
    block->next = head;
    head = block;
  }
  return {head, count};
}

}  // namespace

void* poolAllocateSlow(std::size_t size) {
  const std::size_t index = poolClassOf(size);
  PoolCache* cache = attach();
  Batch batch{};
  if (cache != nullptr && cache->spares[index] != nullptr) {
    batch = {std::exchange(cache->spares[index], nullptr), batchCount(index)};
  } else {
    batch = fetch(index);
  }
  PoolBlock* block = batch.head;
  const Batch rest{block->next, batch.count - 1};
  if (cache != nullptr) {
    cache->bins[index] = {rest.head, batchCount(index) - rest.count};
  } else if (rest.count != 0) {
    std::lock_guard lock(store.mutex());
    store.give(index, rest);
  }
  return block;
}

void poolFreeSlow(void* block, std::size_t size) noexcept {
  const std::size_t index = poolClassOf(size);
  auto* freed = ::new (block) PoolBlock;
  PoolCache* cache = attach();
  if (cache == nullptr) {
    freed->next = nullptr;
    std::lock_guard lock(store.mutex());
    store.give(index, {freed, 1});
    return;
  }
  PoolBin& bin = cache->bins[index];
  if (bin.room == 0) {
    PoolBlock* surplus = std::exchange(cache->spares[index], bin.head);
    bin = {nullptr, batchCount(index)};
    if (surplus != nullptr) {
      std::lock_guard lock(store.mutex());
      store.giveFull(index, surplus);
    }
  }
  freed->next = bin.head;
  bin.head = freed;
  --bin.room;
}

std::size_t poolBytesReserved() noexcept {
  std::lock_guard lock(store.mutex());
  return store.reserved();
}

#endif

}  // namespace qz::detail
