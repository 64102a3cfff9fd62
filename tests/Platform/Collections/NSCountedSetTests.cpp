#include "Platform/Collections/NSCountedSet.h"

#include "tests/Platform/Collections/HashedKeys.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

TEST(NSCountedSet, CountsWhatIsAddedAndRemoved) {
  auto set =
      NSCountedSet::setWithArray(arrayOf({"a"_ns, "b"_ns, "a"_ns, number(1), NSNumber::of(1.0)}));
  EXPECT_EQ(set->countForObject(nullptr), 0u);
  EXPECT_EQ(to_string(set), "{(\n    a [2],\n    b [1],\n    1 [2]\n)}");
  set->removeObject("a"_ns);
  EXPECT_TRUE(set->containsObject("a"_ns));
  set->removeObject("a"_ns);
  set->removeObject("a"_ns);
  EXPECT_FALSE(set->containsObject("a"_ns));
  set->addObject("a"_ns);
  EXPECT_EQ(send<std::uint32_t>(set, "countForObject:"_sel, "a"_ns), 1u);
  EXPECT_EQ(to_string(set->allObjects()->lastObject()), "a");
}

TEST(NSCountedSet, CopiesKeepCountsAndOtherSetsForgetThem) {
  auto set = NSCountedSet::setWithObjects({"a"_ns, "a"_ns, "b"_ns});
  for (const Ref<NSObject>& copied :
       {set->copy(), set->mutableCopy(), Ref<NSObject>(NSCountedSet::setWithSet(set))}) {
    auto counted = as<NSCountedSet>(copied);
    ASSERT_TRUE(counted);
    EXPECT_EQ(counted->countForObject("a"_ns), 2u);
    counted->addObject("a"_ns);
    EXPECT_EQ(set->countForObject("a"_ns), 2u);
  }
  auto plain = NSSet::setWithSet(set);
  EXPECT_TRUE(plain->isEqual(set));
  EXPECT_EQ(NSCountedSet::setWithSet(plain)->countForObject("a"_ns), 1u);
  auto other = NSCountedSet::setWithObject("c"_ns);
  other->setSet(set);
  EXPECT_EQ(other->countForObject("a"_ns), 2u);
}

TEST(NSCountedSet, CombinesByCounts) {
  auto set = NSCountedSet::setWithObjects({"a"_ns, "a"_ns, "a"_ns, "b"_ns, "b"_ns, "c"_ns});
  set->minusSet(NSSet::setWithObjects({"a"_ns, "c"_ns}));
  EXPECT_EQ(set->countForObject("a"_ns), 2u);
  EXPECT_FALSE(set->containsObject("c"_ns));
  set->minusSet(set);
  EXPECT_EQ(set->countForObject("a"_ns), 1u);
  set->unionSet(set);
  EXPECT_EQ(set->countForObject("b"_ns), 2u);
  set->intersectSet(NSSet::setWithObject("a"_ns));
  EXPECT_EQ(set->countForObject("a"_ns), 2u);
  EXPECT_EQ(set->countForObject("b"_ns), 0u);
}

}  // namespace
}  // namespace qz::test
