#include <limits.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Platform/Runtime/detail/Sanitizers.h"
#include "tests/support/Test.h"
#include "tests/support/Threads.h"

namespace qz::detail {
namespace {

constexpr bool isBypassed = watchesAddresses || watchesThreads;

constexpr std::size_t kilobyte = 1024;
constexpr std::size_t megabyte = 1024 * kilobyte;

struct Block {
  unsigned char* bytes;
  std::size_t size;
  unsigned char pattern;
};

Block makeBlock(std::size_t size, unsigned char pattern) {
  auto* bytes = static_cast<unsigned char*>(poolAllocate(size));
  std::memset(bytes, pattern, size);
  return {bytes, size, pattern};
}

bool intact(const Block& block) {
  return std::all_of(block.bytes, block.bytes + block.size,
                     [&](unsigned char byte) { return byte == block.pattern; });
}

// Whether nobody has written to it meanwhile.
bool isIntactAndFreed(const Block& block) {
  const bool isIntact = intact(block);
  poolFree(block.bytes, block.size);
  return isIntact;
}

bool areIntactAndFreed(const std::vector<Block>& blocks) {
  return std::ranges::count_if(blocks, isIntactAndFreed) == std::ssize(blocks);
}

using Pointers = std::vector<void*>;

void allocateAll(Pointers& blocks, std::size_t size) {
  for (void*& block : blocks) block = poolAllocate(size);
}

void freeAll(const Pointers& blocks, std::size_t size) {
  for (void* block : blocks) poolFree(block, size);
}

// Made before main, freed after it.
struct StaticHolder {
  StaticHolder() : block(makeBlock(40, 0x5a)) {}
  ~StaticHolder() {
    if (!isIntactAndFreed(block)) std::abort();
  }
  Block block;
};
StaticHolder staticHolder;

TEST(ObjectPoolTest, WorksBeforeMain) { EXPECT_TRUE(intact(staticHolder.block)); }

TEST(ObjectPoolTest, BlocksOfEverySizeAreAlignedAndDoNotOverlap) {
  std::vector<Block> blocks;
  for (int round = 0; round < 50; ++round) {
    for (std::size_t size = 1; size <= 600; ++size) {
      blocks.push_back(makeBlock(size, static_cast<unsigned char>(blocks.size() % 251)));
      const auto address = reinterpret_cast<std::uintptr_t>(blocks.back().bytes);
      ASSERT_EQ(address % (size % 16 == 0 ? 16 : 8), 0u) << size;
    }
  }
  std::vector<std::pair<std::uintptr_t, std::size_t>> extents;
  for (const Block& block : blocks)
    extents.emplace_back(reinterpret_cast<std::uintptr_t>(block.bytes), block.size);
  std::sort(extents.begin(), extents.end());
  for (std::size_t i = 1; i < extents.size(); ++i)
    ASSERT_LE(extents[i - 1].first + extents[i - 1].second, extents[i].first);
  EXPECT_TRUE(areIntactAndFreed(blocks));
}

TEST(ObjectPoolTest, ABlockOf24BytesCosts24BytesHoweverOftenItIsMade) {
  if (isBypassed) GTEST_SKIP() << "blocks come from operator new";
  constexpr std::size_t count = 1'000'000;
  const std::size_t before = poolBytesReserved();
  Pointers blocks(count);
  allocateAll(blocks, 24);
  const std::size_t grown = poolBytesReserved() - before;
  // One slab may be unfinished, and a run of 4 KiB ends with a few bytes of padding.
  EXPECT_LE(grown, 24 * count * 102 / 100 + 2 * megabyte);
  EXPECT_GE(poolBytesReserved(), 24 * count);
  const std::size_t reserved = poolBytesReserved();
  for (int round = 0; round < 5; ++round) {
    freeAll(blocks, 24);
    allocateAll(blocks, 24);
  }
  EXPECT_EQ(poolBytesReserved(), reserved);
  freeAll(blocks, 24);
}

TEST(ObjectPoolTest, ThreadsExchangeBlocksThroughASharedTable) {
  constexpr std::size_t slots = 512;
  static constexpr std::array<std::size_t, 5> sizes = {16, 24, 48, 120, 500};
  static std::array<std::atomic<unsigned char*>, slots> table{};
  std::atomic<int> damaged{0};
  // A slot always holds blocks of one size filled with the number of that slot.
  const auto freeChecked = [&damaged](unsigned char* bytes, std::size_t slot) {
    const auto pattern = static_cast<unsigned char>(slot);
    if (!isIntactAndFreed({bytes, sizes[slot % sizes.size()], pattern})) ++damaged;
  };
  test::inThreads(4, [&](int seed) {
    auto random = static_cast<std::uint32_t>(seed);
    for (int i = 0; i < 200'000; ++i) {
      random = random * 1664525u + 1013904223u;
      const std::size_t slot = (random >> 8) % slots;
      const Block made = makeBlock(sizes[slot % sizes.size()], static_cast<unsigned char>(slot));
      unsigned char* old = table[slot].exchange(made.bytes, std::memory_order_acq_rel);
      if (old != nullptr) freeChecked(old, slot);
    }
  });
  for (std::size_t slot = 0; slot < slots; ++slot)
    if (unsigned char* bytes = table[slot].exchange(nullptr)) freeChecked(bytes, slot);
  EXPECT_EQ(damaged.load(), 0);
}

// Passes about 150 MB of blocks from this thread to one that frees them. Both threads live on
// throughout, so nothing flows back by a thread ending.
void expectConsumerHandsBlocksBack(std::size_t size) {
  constexpr std::size_t perRound = 1'000;
  const int rounds = static_cast<int>(150'000'000 / size / perRound);
  const std::size_t before = poolBytesReserved();
  Pointers blocks(perRound);
  std::atomic<int> turn{-1};
  std::thread consumer([&] {
    // Takes what earlier threads left behind, and must not mistake how much that is.
    void* own = poolAllocate(size);
    turn.store(0, std::memory_order_release);
    for (int round = 0; round < rounds; ++round) {
      while (turn.load(std::memory_order_acquire) != 2 * round + 1) std::this_thread::yield();
      freeAll(blocks, size);
      turn.store(2 * round + 2, std::memory_order_release);
    }
    poolFree(own, size);
  });
  for (int round = 0; round < rounds; ++round) {
    while (turn.load(std::memory_order_acquire) != 2 * round) std::this_thread::yield();
    allocateAll(blocks, size);
    turn.store(2 * round + 1, std::memory_order_release);
  }
  consumer.join();
  EXPECT_LE(poolBytesReserved() - before, 4 * megabyte);
}

TEST(ObjectPoolTest, ThreadsReturnTheirBlocksWhenTheyEnd) {
  if (isBypassed) GTEST_SKIP() << "blocks come from operator new";
  const auto live = [] {
    Pointers blocks(1000);
    allocateAll(blocks, 88);
    freeAll(blocks, 88);
  };
  std::thread(live).join();
  const std::size_t before = poolBytesReserved();
  for (int i = 0; i < 2'000; ++i) std::thread(live).join();
  EXPECT_EQ(poolBytesReserved(), before);
}

TEST(ObjectPoolTest, ThreadsThatOnlyFreeReturnWhatTheyFreed) {
  if (isBypassed) GTEST_SKIP() << "blocks come from operator new";
  Pointers blocks(37);
  std::size_t before = 0;
  for (int i = 0; i < 3'000; ++i) {
    if (i == 200) before = poolBytesReserved();
    allocateAll(blocks, 104);
    std::thread([&blocks] { freeAll(blocks, 104); }).join();
  }
  EXPECT_EQ(poolBytesReserved(), before);
}

TEST(ObjectPoolTest, ThreadsMayEndWhileOthersStartAndEnd) {
  std::atomic<int> damaged{0};
  test::inThreads(4, [&](int spawner) {
    for (int i = 0; i < 2'000; ++i) {
      std::thread([&damaged, pattern = static_cast<unsigned char>(spawner)] {
        std::vector<Block> blocks;
        for (std::size_t j = 0; j < 40; ++j) blocks.push_back(makeBlock(16 + j * 8, pattern));
        if (!areIntactAndFreed(blocks)) ++damaged;
      }).join();
    }
  });
  EXPECT_EQ(damaged.load(), 0);
}

// A complete list goes back another way than an incomplete one when the thread ends. How long a
// complete one is has been tuned by measuring, so every likely length is tried, each with blocks
// of a size that no earlier round has left behind.
TEST(ObjectPoolTest, AThreadMayEndWithACompleteList) {
  if (isBypassed) GTEST_SKIP() << "blocks come from operator new";
  std::size_t size = 504;
  for (std::size_t bytes = 4 * kilobyte; bytes <= 256 * kilobyte; bytes *= 2, size -= 8) {
    Pointers blocks(bytes / size);
    Pointers others(40);
    allocateAll(blocks, size);
    allocateAll(others, size);
    for (const auto* freed : {&blocks, &others})
      std::thread([freed, size] { freeAll(*freed, size); }).join();
    expectConsumerHandsBlocksBack(size);
  }
}

struct LateUser {
  ~LateUser() {
    if (early.bytes == nullptr) return;
    const bool isGood = isIntactAndFreed(early);
    if (isIntactAndFreed(makeBlock(early.size, 0x33)) && isGood) ++*passed;
  }
  Block early{};
  std::atomic<int>* passed = nullptr;
};

TEST(ObjectPoolTest, ThreadLocalDestructorsMayAllocateAndFree) {
  std::atomic<int> passed{0};
  for (int i = 0; i < 50; ++i) {
    std::thread([&passed] {
      thread_local LateUser user;
      user.passed = &passed;
      user.early = makeBlock(64, 0x77);
    }).join();
  }
  EXPECT_EQ(passed.load(), 50);
}

// The last things to run in a thread are the destructors of its keys, in no settled order; they
// run again and again while a destructor sets its key anew.
struct KeyUser {
  pthread_key_t key;
  int roundsLeft;
  bool good;
  std::vector<Block> blocks;
};

void runKeyUser(void* value) {
  auto* user = static_cast<KeyUser*>(value);
  user->good = areIntactAndFreed(user->blocks) && user->good;
  // More than were freed just now, so that some come from elsewhere.
  const std::size_t count = user->blocks.size() + 100;
  user->blocks.clear();
  for (std::size_t i = 0; i < count; ++i)
    user->blocks.push_back(makeBlock(16 + i % 3 * 8, static_cast<unsigned char>(i)));
  if (--user->roundsLeft > 0) pthread_setspecific(user->key, user);
}

TEST(ObjectPoolTest, AThreadWhoseCacheIsGoneMayAllocateAndFree) {
  KeyUser user{};
  user.good = true;
  ASSERT_EQ(pthread_key_create(&user.key, runKeyUser), 0);
  std::size_t before = 0;
  for (int i = 0; i < 1'000; ++i) {
    if (i == 10) before = poolBytesReserved();
    std::thread([&user] {
      for (std::size_t j = 0; j < 600; ++j)
        user.blocks.push_back(makeBlock(16 + j % 3 * 8, static_cast<unsigned char>(j)));
      // ThreadSanitizer has done with the thread itself in the last round.
      user.roundsLeft = isBypassed ? 1 : PTHREAD_DESTRUCTOR_ITERATIONS;
      pthread_setspecific(user.key, &user);
    }).join();
    ASSERT_EQ(user.roundsLeft, 0);
    // A block that is in use must not reach a thread which takes all its blocks from the store.
    std::thread([] {
      std::vector<Block> others;
      for (std::size_t j = 0; j < 600; ++j) others.push_back(makeBlock(16 + j % 3 * 8, 0xee));
      EXPECT_TRUE(areIntactAndFreed(others));
    }).join();
    EXPECT_TRUE(areIntactAndFreed(std::exchange(user.blocks, {})));
  }
  pthread_key_delete(user.key);
  EXPECT_TRUE(user.good);
  // Holds trivially where the blocks come from operator new.
  EXPECT_EQ(poolBytesReserved(), before);
}

// Forks while other threads keep the shared store busy; a child that inherited its lock in a
// locked state would hang and be ended by its alarm.
TEST(ObjectPoolTest, AForkedChildMayAllocate) {
  if (isBypassed) GTEST_SKIP() << "blocks come from operator new";
  std::atomic<bool> stop{false};
  const auto keepBusy = [&stop] {
    Pointers blocks(256);
    while (!stop.load(std::memory_order_relaxed)) {
      allocateAll(blocks, 496);
      freeAll(blocks, 496);
    }
  };
  std::jthread one(keepBusy), two(keepBusy);
  int failures = 0;
  for (int i = 0; i < 200 && failures == 0; ++i) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      alarm(10);
      std::vector<Block> blocks;
      for (int j = 0; j < 512; ++j) blocks.push_back(makeBlock(496, static_cast<unsigned char>(j)));
      _exit(areIntactAndFreed(blocks) ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    if (status != 0) ++failures;
  }
  stop = true;
  EXPECT_EQ(failures, 0);
}

}  // namespace
}  // namespace qz::detail
