#include "QZFoundation/NSMutableArray-QZFoundation.h"

#include "Platform/Collections/NSEnumerator.h"
#include "tests/support/Holder.h"
#include "tests/support/Letters.h"

namespace qz::test {
namespace {

/// Uses the primitives that it inherits, one by one.
class Pile : public Derives<Pile, NSMutableArray> {
 public:
  static void describe(ClassDescription<Pile>& is) { is.named("Pile"); }
};

using Kinds = ::testing::Types<NSMutableArray, Pile>;
TYPED_TEST_SUITE(MutableArrayOf, Kinds);

TYPED_TEST(MutableArrayOf, RemovesAtIndices) {
  using Case = std::pair<Ref<NSArray>, std::string>;
  // Where an index occurs again, the one that moved there goes too.
  const Case cases[] = {{numbers({}), "abcd"},    {numbers({0, 2}), "bd"},
                        {numbers({2, 0}), "bd"},  {numbers({3, 1, 2, 0}), ""},
                        {numbers({1, 1}), "ad"},  {numbers({0, 0, 1}), "d"},
                        {numbers({1, 2, 1}), "a"}};
  for (const auto& [indices, left] : cases) {
    auto array = this->of("abcd");
    removeObjectsAtIndices(array, indices);
    EXPECT_EQ(text(array), left) << indices;
  }
  auto array = this->of("abcd");
  removeObjectsAtIndices(array, nullptr);
  for (auto bad : {numbers({4}), numbers({0, -1}), numbers({3, 3}), numbers({2, 2, 2}),
                   NSArray::arrayWithObject(NSNumber::of(-1e30))})
    EXPECT_TRUE(refusesRange([&] { removeObjectsAtIndices(array, bad); })) << bad;
  EXPECT_EQ(text(array), "abcd");
  // As 32-bit integers these stand in another order: 1 and 2.
  removeObjectsAtIndices(array, arrayOf({number(2), NSNumber::of(1LL << 32 | 1)}));
  EXPECT_EQ(text(array), "ac");
}

TYPED_TEST(MutableArrayOf, ReversesAndRefusesToReverseNothing) {
  for (std::string each : {"a", "ab", "abc", "abcd", "abcde"}) {
    auto array = this->of(each);
    reverseOrder(array);
    EXPECT_EQ(text(array), std::string(each.rbegin(), each.rend()));
  }
  EXPECT_TRUE(refusesRange([&] { reverseOrder(this->of("")); }));
}

TYPED_TEST(MutableArrayOf, AddsFiltersAndSorts) {
  auto array = this->of("quick");
  addObjectsFromEnumerator(array, this->of("xyz")->reverseObjectEnumerator());
  addObjectsFromEnumerator(array, nullptr);
  EXPECT_EQ(text(array), "quickzyx");
  sortByKey(array, "self"_ns);
  insertObject_sortedBySelector(array, "m"_ns, "compare:"_sel);
  EXPECT_EQ(text(array), "cikmquxyz");
  filterObjectsWithSelector_object(array, "isEqual:"_sel, "q"_ns);
  EXPECT_EQ(text(array), "q");
}

TYPED_TEST(MutableArrayOf, IsAsItWasWhenAnElementRaises) {
  auto array = this->of("ab");
  array->addObject(number(1));
  EXPECT_TRUE(refuses([&] { filterObjectsWithSelector(array, "hasPrefix:"_sel); }));
  EXPECT_TRUE(refuses([&] { sortByKey(array, "self"_ns); }));
  EXPECT_TRUE(refuses([&] { insertObject_sortedBySelector(array, nullptr, "compare:"_sel); }));
  EXPECT_EQ(text(array), "ab1");
  auto holder = make<Holder>(nullptr, 1);
  holder->whenRead = [&] { array->addObject("c"_ns); };
  array->addObject(holder);
  EXPECT_TRUE(raises(NSGenericException, [&] {
    array->filterUsingPredicate([&](NSObject* each) { return each == holder && holder->number(); });
  }));
  EXPECT_EQ(array->count(), 5u);
}

}  // namespace
}  // namespace qz::test
