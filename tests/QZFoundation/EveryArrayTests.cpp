// What every class of Arrays does with the library's operations: those that the platform makes,
// mutable ones, views through a key path, and an application's own with no more than the two
// primitives.

#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Collections/NSPredicate.h"
#include "QZFoundation/QZFoundation.h"
#include "tests/support/Holder.h"
#include "tests/support/Letters.h"

namespace qz::test {
namespace {

/// Views through a key path.
struct View {
  static Ref<NSArray> fromRange(const std::vector<Ref<NSObject>>& objects) {
    auto holders = NSMutableArray::array();
    for (const auto& each : objects) holders->addObject(make<Holder>(each));
    return arrayForKeyPath(holders, "value"_ns);
  }
};

template <class Kind>
class EveryArray : public ::testing::Test {
 public:
  static Ref<NSArray> of(std::string_view text) { return Kind::fromRange(letters(text)); }
};
using Kinds = ::testing::Types<NSArray, NSMutableArray, Computed, View>;
TYPED_TEST_SUITE(EveryArray, Kinds);

TYPED_TEST(EveryArray, MakesOthersOfItself) {
  auto array = this->of("abcab");
  const struct {
    const char* what;
    Ref<NSArray> made;
    std::string expected;
    bool isMutable;
  } cases[] = {
      {"reversed", reversedArray(array), "bacba", true},
      {"inserted", arrayByInsertingObject_atIndex(array, "x"_ns, 5), "abcabx", true},
      {"without one", arrayByRemovingObject(array, "b"_ns), "aca", true},
      {"without some", arrayByRemovingObjectsInArray(array, this->of("ac")), "bb", true},
      {"without the last", arrayByRemovingLastObject(array), "abca", false},
      {"all", allObjects(array), "abcab", false},
      {"at indexes", arrayWithObjectsAtIndexes(array, numbers({2, 0, 2})), "cac", true},
      {"at no indexes", arrayWithObjectsAtIndexes(array, nullptr), "", true},
      {"deep copy", as<NSArray>(deepCopy(array)), "abcab", false},
      {"containers", as<NSArray>(copyMutableContainers(array)), "abcab", true},
      {"containers of none", as<NSArray>(copyMutableContainers(this->of(""))), "", true},
      {"sorted", sortedArrayUsingKeyPath(array, "description"_ns), "aabbc", false},
      {"unequal",
       arrayByFilteringWithSelector_object_matching(array, "isEqual:"_sel, "a"_ns, false), "bcb",
       false},
      {"matching", arrayByMatchingValue_forKeyPath(array, "B"_ns, "uppercaseString"_ns), "bb",
       false},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(text(each.made), each.expected) << each.what;
    EXPECT_EQ(isKind<NSMutableArray>(each.made), each.isMutable) << each.what;
  }
  EXPECT_EQ(text(array), "abcab");
  EXPECT_EQ(to_string(firstObject(array)), "a");
  EXPECT_EQ(firstObject(this->of("")), nullptr);
  EXPECT_EQ(objectAsArray(array), array);
}

TYPED_TEST(EveryArray, IsQueriedByValueAndPredicate) {
  auto array = this->of("xyzy");
  EXPECT_EQ(indexOfObjectMatchingValue_forKeyPath(array, "Y"_ns, "uppercaseString"_ns), 1u);
  auto sorted = this->of("abbbc");
  EXPECT_EQ(indexOfObject_inArraySortedUsingSelector(sorted, "b"_ns, "compare:"_sel), 2u);
  EXPECT_EQ(insertionIndexForObject_sortedUsingSelector(sorted, "b"_ns, "compare:"_sel), 1u);
  auto isZ = NSPredicate::predicateWithBlock([](NSObject* each) { return "z"_ns->isEqual(each); });
  EXPECT_EQ(objectMatchingPredicate(array, isZ), array->objectAtIndex(2));
  EXPECT_EQ(objectMatchingPredicate(array, NSPredicate::predicateWithValue(false)), nullptr);
  EXPECT_TRUE(containsObjectsFromEnumerator(array, this->of("yx")->objectEnumerator()));
  auto some = this->of("xay")->objectEnumerator();
  EXPECT_FALSE(containsObjectsFromEnumerator(array, some));
  EXPECT_EQ(to_string(some->nextObject()), "y");  // it stopped at the first one missing
}

TYPED_TEST(EveryArray, RefusesIndicesBeyondIt) {
  auto array = this->of("abc");
  for (const double bad : {3.0, -1.0, 1e300})
    EXPECT_TRUE(refusesRange([&] {
      arrayWithObjectsAtIndexes(array, NSArray::arrayWithObject(NSNumber::of(bad)));
    })) << bad;
  EXPECT_TRUE(refusesRange([&] { arrayByInsertingObject_atIndex(array, "x"_ns, 4); }));
  auto fraction = NSArray::arrayWithObject(NSNumber::of(1.9));
  EXPECT_EQ(text(arrayWithObjectsAtIndexes(array, fraction)), "b");
}

}  // namespace
}  // namespace qz::test
