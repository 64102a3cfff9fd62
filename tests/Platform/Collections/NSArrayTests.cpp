// What every kind of Array does: those made by the library, mutable ones, and a derived class that
// overrides nothing but the two primitives.
#include "Platform/Collections/NSPredicate.h"
#include "tests/support/Letters.h"
#include "tests/support/Person.h"

namespace qz::test {
namespace {

template <class Kind>
class EveryArray : public ::testing::Test {
 public:
  static Ref<NSArray> of(std::string_view text) { return Kind::fromRange(letters(text)); }
};
using Kinds = ::testing::Types<NSArray, NSMutableArray, Computed>;
TYPED_TEST_SUITE(EveryArray, Kinds);

TYPED_TEST(EveryArray, IsReadByIndexAndInRanges) {
  auto array = this->of("abcde");
  EXPECT_EQ(array->count(), 5u);
  EXPECT_EQ(to_string(array->lastObject()), "e");
  EXPECT_EQ(this->of("")->lastObject(), nullptr);
  EXPECT_TRUE(refusesRange([&] { array->objectAtIndex(5); }, {"5", "count"}));
  EXPECT_EQ(text(array->subarrayWithRange({1, 3})), "bcd");
  EXPECT_TRUE(refusesRange([&] { array->subarrayWithRange({3, 3}); }, {"{3, 3}"}));
  EXPECT_TRUE(refusesRange([&] { array->subarrayWithRange({1, 0xFFFFFFFF}); }));
  NSObject* buffer[6] = {};
  array->getObjects(buffer);
  EXPECT_EQ(to_string(buffer[4]), "e");
  EXPECT_EQ(buffer[5], nullptr);
}

TYPED_TEST(EveryArray, IsWalkedBothWays) {
  auto array = this->of("abc");
  std::string walked;
  for (NSObject* each : array) walked += to_string(each);
  for (NSString* each : elements<NSString>(array)) walked += each->UTF8String();
  EXPECT_EQ(walked, "abcabc");
  EXPECT_EQ(text(array->reverseObjectEnumerator()->allObjects()), "cba");
  Ref<NSEnumerator> enumerator = array->objectEnumerator();
  array = nullptr;  // the enumerator keeps it
  EXPECT_EQ(to_string(enumerator->nextObject()), "a");
  EXPECT_EQ(text(enumerator->allObjects()), "bc");
  EXPECT_EQ(enumerator->nextObject(), nullptr);
  EXPECT_EQ(enumerator->nextObject(), nullptr);
  EXPECT_TRUE(refuses(
      [&] {
        for ([[maybe_unused]] NSNumber* each : elements<NSNumber>(this->of("a"))) continue;
      },
      {"NSString", "NSNumber"}));
}

TYPED_TEST(EveryArray, FindsTheFirstEqualOne) {
  auto array = this->of("abcb");
  auto b = ns("b");
  EXPECT_EQ(array->indexOfObject(b), 1u);
  EXPECT_EQ(array->indexOfObjectIdenticalTo(b), NSNotFound);
  EXPECT_EQ(array->indexOfObjectIdenticalTo(array->objectAtIndex(3)), 3u);
  EXPECT_FALSE(array->containsObject(nullptr));
  const auto isB = [&](NSObject* each, std::uint32_t) { return b->isEqual(each); };
  EXPECT_EQ(array->indexOfObjectPassingTest(isB), 1u);
  EXPECT_EQ(array->indexesOfObjectsPassingTest(isB), (std::vector<std::uint32_t>{1, 3}));
  EXPECT_EQ(to_string(array->firstObjectCommonWithArray(this->of("xcb"))), "b");
}

TYPED_TEST(EveryArray, MakesOtherArrays) {
  auto array = this->of("abc");
  EXPECT_EQ(text(array->arrayByAddingObject("d"_ns)), "abcd");
  EXPECT_EQ(text(array->arrayByAddingObjectsFromArray(array)), "abcabc");
  EXPECT_EQ(text(array->arrayByAddingObjectsFromArray(nullptr)), "abc");
  EXPECT_TRUE(refuses([&] { array->arrayByAddingObject(nullptr); }));
  auto notB =
      NSPredicate::predicateWithBlock([](NSObject* each) { return to_string(each) != "b"; });
  EXPECT_EQ(text(array->filteredArrayUsingPredicate(notB)), "ac");
  EXPECT_EQ(to_string(array->componentsJoinedByString(", "_ns)), "a, b, c");
  EXPECT_TRUE(isKind<NSMutableArray>(array->mutableCopy().get()));
  EXPECT_TRUE(array->copy()->isEqual(array));
}

TYPED_TEST(EveryArray, SortsAndKeepsTheOrderOfEquals) {
  std::vector<Ref<NSObject>> people;
  for (int i = 0; i < 300; ++i) people.push_back(make<Person>(ns(std::to_string(i)), i * 7 % 10));
  auto sorted = TypeParam::fromRange(people)->sortedArrayUsingSelector("compareByAge:"_sel);
  std::ranges::stable_sort(people, {}, [](auto& each) { return as<Person>(each)->age; });
  EXPECT_EQ(sorted->toVector(), people);
}

TYPED_TEST(EveryArray, EqualsAnyArrayOfEqualElements) {
  auto array = this->of("abc");
  const auto abc = letters("abc");
  for (const Ref<NSArray>& same :
       {NSArray::fromRange(abc), Ref<NSArray>(NSMutableArray::fromRange(abc)),
        Computed::fromRange(abc)}) {
    EXPECT_TRUE(array->isEqual(same));
    EXPECT_TRUE(same->isEqualToArray(array));
    EXPECT_EQ(array->hash(), same->hash());
  }
  EXPECT_FALSE(array->isEqual(this->of("abd")));
  EXPECT_FALSE(array->isEqual(this->of("ab")));
  EXPECT_FALSE(array->isEqualToArray(nullptr));
  EXPECT_EQ(to_string(array), "(\n    a,\n    b,\n    c\n)");
}

TYPED_TEST(EveryArray, ReadsAndSetsKeysOfItsElements) {
  auto ann = make<Person>("Ann"_ns, 30);
  auto bob = make<Person>(nullptr, 40);
  ann->partner = bob;
  auto people = TypeParam::fromRange(std::vector<Ref<NSObject>>{ann, bob});
  EXPECT_EQ(to_string(people->valueForKey("age"_ns)), "(\n    30,\n    40\n)");
  EXPECT_EQ(as<NSArray>(people->valueForKey("name"_ns))->objectAtIndex(1), NSNull::null());
  EXPECT_EQ(to_string(people->valueForKeyPath("partner.age"_ns)), "(\n    40,\n    <null>\n)");
  people->setValue_forKey(number(5), "age"_ns);
  people->setValue_forKeyPath("X"_ns, "partner.name"_ns);
  EXPECT_EQ(ann->age + bob->age, 10);
  EXPECT_EQ(to_string(bob->name()), "X");
}

TEST(NSArray, IsMadeInOneBlockAndSharesTheEmptyOne) {
  EXPECT_EQ(NSArray::array(), NSArray::arrayWithObjects({}));
  EXPECT_EQ(NSArray::array(), NSArray::array()->subarrayWithRange({0, 0}));
  EXPECT_TRUE(make<NSArray>()->isEqual(NSArray::array()));
  EXPECT_TRUE(refuses([] { NSArray::arrayWithObjects({"a"_ns, nullptr}); }));
  auto array = NSArray::arrayWithObjects({"a"_ns, "b"_ns});
  EXPECT_EQ(array->copy(), array);
  auto mutableOne = send<Ref<NSArray>>(classOf<NSMutableArray>(), "arrayWithArray:"_sel, array);
  EXPECT_TRUE(isKind<NSMutableArray>(mutableOne.get()));
}

TEST(NSArray, OwnsItsElementsOnce) {
  const int before = Person::alive;
  {
    detail::ArrayBuilder abandoned;
    for (int i = 0; i < 1000; ++i) abandoned.take(make<Person>());
    detail::ArrayBuilder builder(3);
    for (int i = 0; i < 1000; ++i) builder.take(make<Person>());
    EXPECT_THROW(builder.add(nullptr), Raised);
    auto array = builder.finish();
    EXPECT_EQ(array->objectAtIndex(999)->retainCount(), 2u);
    auto part = array->subarrayWithRange({998, 2});
    array = nullptr;
    EXPECT_EQ(Person::alive - before, 1002);
    EXPECT_EQ(part->lastObject()->retainCount(), 2u);
  }
  EXPECT_EQ(Person::alive, before);
}

TEST(NSArray, KeepsAComputedElementAliveWhileItIsLookedAt) {
  auto squares = make<Computed>(
      5u, [](std::uint32_t i) { return NSNumber::numberWithUnsignedInt(10000 + i * i); });
  std::uint32_t sum = 0;
  for (NSNumber* each : elements<NSNumber>(squares)) sum += each->unsignedIntValue() - 10000;
  EXPECT_EQ(sum, 30u);
  EXPECT_EQ(squares->indexOfObject(number(10009)), 3u);
  auto falling = squares->sortedArrayUsingComparator(
      [](NSObject* a, NSObject* b) { return as<NSNumber>(b)->compare(as<NSNumber>(a)); });
  EXPECT_EQ(to_string(falling->componentsJoinedByString(" "_ns)), "10016 10009 10004 10001 10000");
  NSObject* buffer[5];
  EXPECT_TRUE(refuses([&] { squares->getObjects(buffer); }));
}

TEST(NSArray, SurvivesAComparisonWithoutReason) {
  std::vector<Ref<NSObject>> objects;
  for (int i = 0; i < 1000; ++i) objects.push_back(number(i));
  unsigned seed = 1;
  auto shuffled =
      NSArray::fromRange(objects)->sortedArrayUsingComparator([&](NSObject*, NSObject*) {
        seed = seed * 1664525 + 1013904223;
        return static_cast<NSComparisonResult>(static_cast<int>(seed >> 30) - 1);
      });
  auto again = shuffled->sortedArrayUsingSelector("compare:"_sel);
  EXPECT_EQ(again->toVector(), objects);
}

/// An Array that holds only itself.
Ref<NSMutableArray> makeLoop() {
  auto loop = NSMutableArray::array();
  loop->addObject(loop);
  return loop;
}

TEST(NSArray, PrintsComparesAndHashesCycles) {
  auto loop = makeLoop();
  auto other = NSMutableArray::arrayWithObject(makeLoop());
  EXPECT_EQ(to_string(loop), "(\n    (...)\n)");
  EXPECT_EQ(to_string(NSArray::arrayWithObjects({"a b"_ns, "\"\n\x01"_ns, ""_ns, loop})),
            "(\n    \"a b\",\n    \"\\\"\\n\\u0001\",\n    \"\",\n    (\n        (...)\n    )\n)");
  EXPECT_TRUE(loop->isEqual(other));
  EXPECT_EQ(loop->hash(), other->hash());
  auto different = NSMutableArray::arrayWithObject("x"_ns);
  EXPECT_FALSE(loop->isEqual(different));
  as<NSMutableArray>(other->objectAtIndex(0))->removeAllObjects();
  EXPECT_FALSE(loop->isEqual(other));
  loop->removeAllObjects();
}

TEST(NSArray, StandsAnyDepthOfNesting) {
  constexpr int depth = 200000;
  const int before = Person::alive;
  const auto nest = [](bool inMutable) {
    Ref<NSArray> array = NSArray::arrayWithObject(make<Person>());
    for (int i = 0; i < depth; ++i)
      array = inMutable ? NSMutableArray::arrayWithObject(array) : NSArray::arrayWithObject(array);
    return array;
  };
  std::thread([&] {
    auto a = nest(false);
    auto b = nest(true);
    EXPECT_NE(to_string(a).find("(...)"), std::string::npos);
    EXPECT_EQ(a->hash(), b->hash());
    EXPECT_TRUE(raises(NSInternalInconsistencyException, [&] { a->isEqual(b); }));
    EXPECT_TRUE(raises(NSInternalInconsistencyException, [&] { a->isEqual(b); }));
  }).join();
  EXPECT_EQ(Person::alive, before);
}

}  // namespace
}  // namespace qz::test
