#include "Platform/Values/NSIndexPath.h"

#include "tests/support/Test.h"

namespace qz::test {
namespace {

using Indexes = std::vector<std::uint32_t>;

Ref<NSIndexPath> path(const Indexes& indexes) {
  return NSIndexPath::indexPathWithIndexes(std::span(indexes));
}

TEST(NSIndexPath, HoldsWhatItWasMadeOf) {
  for (const Indexes& indexes :
       {Indexes{}, Indexes{7}, Indexes{0, 0xFFFFFFFF, 3}, Indexes(500, 9)}) {
    const auto made = path(indexes);
    const auto sent =
        send<Ref<NSIndexPath>>(classOf<NSIndexPath>()->newObject(), "initWithIndexes:length:"_sel,
                               indexes.data(), static_cast<std::uint32_t>(indexes.size()));
    EXPECT_TRUE(made->isEqual(sent));
    EXPECT_EQ(made->hash(), sent->hash());
    Indexes read(made->length());
    made->getIndexes(read.data());
    EXPECT_EQ(read, indexes);
    EXPECT_EQ(made->indexAtPosition(made->length()), NSNotFound);
    const auto deeper = made->indexPathByAddingIndex(5);
    EXPECT_EQ(deeper->indexAtPosition(made->length()), 5u);
    EXPECT_FALSE(deeper->isEqual(made));
    EXPECT_TRUE(deeper->indexPathByRemovingLastIndex()->isEqual(made));
    EXPECT_EQ(made->copy(), made);
  }
  EXPECT_EQ(path({1, 4, 3})->description()->UTF8String(), "1.4.3");
  EXPECT_TRUE(raises(NSMallocException, [] {
    NSIndexPath::indexPathWithIndexes_length(nullptr, NSIndexPath::maxLength + 1);
  }));
}

TEST(NSIndexPath, OrdersAsTheTreeIsRead) {
  std::mt19937 random(11);
  const auto any = [&] {
    Indexes indexes(random() % 4);
    for (auto& each : indexes)
      each = static_cast<std::uint32_t>(random() % 3 + (random() % 2) * 0xFFFFFFF0u);
    return indexes;
  };
  for (int i = 0; i < 500; ++i) {
    const Indexes a = any(), b = any();
    const auto expected = a < b ? NSOrderedAscending : b < a ? NSOrderedDescending : NSOrderedSame;
    ASSERT_EQ(send<NSComparisonResult>(path(a), "compare:"_sel, path(b).get()), expected);
    ASSERT_EQ(path(a)->isEqual(path(b)), a == b);
  }
  EXPECT_TRUE(refuses([] { path({1})->compare(nullptr); }));
}

}  // namespace
}  // namespace qz::test
