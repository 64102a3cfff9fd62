// What every class of Arrays does with the library's operations: those that the platform makes,
// mutable ones, views through a key path, and an application's own with no more than the two
// primitives.

#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Collections/NSPredicate.h"
#include "QZFoundation/QZFoundation.h"
#include "tests/support/Holding.h"
#include "tests/support/Letters.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

using Objects = std::vector<Ref<NSObject>>;

struct Immutable {
  static Ref<NSArray> of(const Objects& objects) { return NSArray::fromRange(objects); }
};
struct Mutable {
  static Ref<NSArray> of(const Objects& objects) { return NSMutableArray::fromRange(objects); }
};
struct Own {
  static Ref<NSArray> of(const Objects& objects) { return make<Computed>(objects); }
};
struct View {
  static Ref<NSArray> of(const Objects& objects) {
    auto holders = NSMutableArray::array();
    for (const auto& each : objects) holders->addObject(make<Holder>(each));
    return arrayForKeyPath(holders, "value"_ns);
  }
};

template <class Maker>
class EveryArray : public ::testing::Test {
 public:
  static Ref<NSArray> of(std::string_view text) { return Maker::of(letters(text)); }
  static Ref<NSArray> of(std::initializer_list<int> values) {
    return Maker::of(numbers(values)->toVector());
  }
};
using Makers = ::testing::Types<Immutable, Mutable, Own, View>;
TYPED_TEST_SUITE(EveryArray, Makers);

std::string joined(NSArray* array) { return to_string(array->componentsJoinedByString(" "_ns)); }

TYPED_TEST(EveryArray, IsWhatThePlatformTakesForAnArray) {
  auto array = this->of("abcb");
  auto b = NSString::stringWithUTF8String("b");
  EXPECT_TRUE(array->isEqual(Immutable::of(letters("abcb"))));
  EXPECT_TRUE(Mutable::of(letters("abcb"))->isEqual(array));
  EXPECT_EQ(array->indexOfObject_inRange(b, {2, 2}), 3u);
  EXPECT_EQ(array->indexOfObject_inRange("a"_ns, {1, 3}), NSNotFound);
  EXPECT_TRUE(refusesRange([&] { array->indexOfObject_inRange(b, {3, 2}); }));
  EXPECT_EQ(text(array->subarrayWithRange({1, 2})), "bc");
  EXPECT_EQ(to_string(as<NSArray>(array->valueForKey("length"_ns))->lastObject()), "1");
  EXPECT_EQ(text(arrayUsingMap(array, sortMapUsingSelector(array, "compare:"_sel))), "abbc");
  EXPECT_TRUE(refusesRange([&] { array->objectAtIndex(4); }));
}

TYPED_TEST(EveryArray, FindsInSortedOnes) {
  struct Case {
    std::initializer_list<int> elements;
    int sought;
    std::uint32_t found;
    std::uint32_t insertion;
  };
  const Case cases[] = {{{}, 1, NSNotFound, 0},
                        {{1}, 1, 0, 0},
                        {{1}, 0, NSNotFound, 0},
                        {{1, 2, 2, 2, 3}, 2, 2, 1},
                        {{1, 3, 5, 7}, 4, NSNotFound, 2},
                        {{5, 5, 5, 5}, 5, 2, 0},
                        {{1, 2, 3, 4, 5, 6, 7, 8}, 1, 0, 0},
                        {{1, 2, 3, 4, 5, 6, 7, 8}, 9, NSNotFound, 8}};
  for (const Case& each : cases) {
    auto array = this->of(each.elements);
    auto sought = number(each.sought);
    EXPECT_EQ(indexOfObject_inArraySortedUsingSelector(array, sought, "compare:"_sel), each.found)
        << joined(array) << ": " << sought;
    EXPECT_EQ(insertionIndexForObject_sortedUsingSelector(array, sought, "compare:"_sel),
              each.insertion)
        << joined(array) << ": " << sought;
  }
}

TYPED_TEST(EveryArray, MakesOthersOfItself) {
  auto array = this->of("abcab");
  struct Case {
    const char* what;
    Ref<NSArray> made;
    std::string expected;
    bool isMutable;
  };
  const Case cases[] = {
      {"reversed", reversedArray(array), "bacba", true},
      {"inserted", arrayByInsertingObject_atIndex(array, "x"_ns, 5), "abcabx", true},
      {"without one", arrayByRemovingObject(array, "b"_ns), "aca", true},
      {"without some", arrayByRemovingObjectsInArray(array, this->of("ac")), "bb", true},
      {"without the last", arrayByRemovingLastObject(array), "abca", false},
      {"without its only one", arrayByRemovingLastObject(this->of("a")), "", false},
      {"all", allObjects(array), "abcab", false},
      {"at indexes", arrayWithObjectsAtIndexes(array, numbers({2, 0, 2})), "cac", true},
      {"at no indexes", arrayWithObjectsAtIndexes(array, nullptr), "", true},
      {"deep copy", as<NSArray>(deepCopy(array)), "abcab", false},
      {"containers", as<NSArray>(copyMutableContainers(array)), "abcab", true},
      {"containers of none", as<NSArray>(copyMutableContainers(this->of(""))), "", true},
      {"sorted", sortedArrayUsingKeyPath(array, "description"_ns), "aabbc", false},
      {"uppercase", arrayByPerformingSelector(array, "uppercaseString"_sel), "ABCAB", false},
      {"appended", arrayByPerformingSelector_object(array, "stringByAppendingString:"_sel, "."_ns),
       "a.b.c.a.b.", false},
      {"equal", arrayByFilteringWithSelector_object(array, "isEqual:"_sel, "a"_ns), "aa", false},
      {"unequal",
       arrayByFilteringWithSelector_object_matching(array, "isEqual:"_sel, "a"_ns, false), "bcb",
       false},
      {"with a length", arrayByFilteringWithSelector(array, "length"_sel), "abcab", false},
      {"matching", arrayByMatchingValue_forKeyPath(array, "B"_ns, "uppercaseString"_ns), "bb",
       false},
  };
  for (const Case& each : cases) {
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
  EXPECT_EQ(objectMatchingValue_forKey(array, "Z"_ns, "uppercaseString"_ns),
            array->objectAtIndex(2));
  EXPECT_EQ(objectMatchingValue_forKeyPath(array, "y"_ns, "uppercaseString"_ns), nullptr);
  auto isZ = NSPredicate::predicateWithBlock([](NSObject* each) { return "z"_ns->isEqual(each); });
  EXPECT_EQ(objectMatchingPredicate(array, isZ), array->objectAtIndex(2));
  EXPECT_EQ(objectMatchingPredicate(array, NSPredicate::predicateWithValue(false)), nullptr);
  EXPECT_TRUE(containsObjectsFromEnumerator(array, this->of("yx")->objectEnumerator()));
  auto some = this->of("xay")->objectEnumerator();
  EXPECT_FALSE(containsObjectsFromEnumerator(array, some));
  EXPECT_EQ(to_string(some->nextObject()), "y");  // it stopped at the first one missing
  EXPECT_TRUE(containsObjectsFromEnumerator(this->of(""), this->of("")->objectEnumerator()));
  auto upper =
      dictionaryWithKeyPathForKeys_keyPathForValues(array, "self"_ns, "uppercaseString"_ns);
  EXPECT_EQ(upper->count(), 3u);
  EXPECT_EQ(to_string(upper->objectForKey("z"_ns)), "Z");
  EXPECT_TRUE(dictionaryIndexedByKeyPath(array->objectEnumerator(), "uppercaseString"_ns)
                  ->objectForKey("Y"_ns)
                  ->isEqual("y"_ns));
}

TYPED_TEST(EveryArray, RefusesIndicesBeyondIt) {
  auto array = this->of("abc");
  const std::function<void()> refused[] = {
      [&] { arrayWithObjectsAtIndexes(array, numbers({3})); },
      [&] { arrayWithObjectsAtIndexes(array, numbers({-1})); },
      [&] { arrayByInsertingObject_atIndex(array, "x"_ns, 4); },
  };
  for (const auto& each : refused) EXPECT_TRUE(refusesRange(each));
  auto fraction = NSArray::arrayWithObject(NSNumber::numberWithDouble(1.9));
  EXPECT_EQ(text(arrayWithObjectsAtIndexes(array, fraction)), "b");
  auto huge = NSArray::arrayWithObject(NSNumber::numberWithDouble(1e300));
  EXPECT_TRUE(refusesRange([&] { arrayWithObjectsAtIndexes(array, huge); }));
}

}  // namespace
}  // namespace qz::test
