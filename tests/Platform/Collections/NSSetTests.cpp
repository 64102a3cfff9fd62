#include "Platform/Collections/NSCountedSet.h"
#include "Platform/Collections/NSMutableSet.h"
#include "Platform/Collections/NSPredicate.h"
#include "Platform/Collections/NSSortDescriptor.h"
#include "tests/Platform/Collections/HashedKeys.h"
#include "tests/support/Person.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

using Members = std::initializer_list<NSObject*>;

/// A Set of an application that keeps its members in a list.
class ListSet : public Derives<ListSet, NSSet> {
 public:
  static void describe(ClassDescription<ListSet>& is) { is.named("ListSet"); }

  static Ref<NSSet> setWithObjects(Members members) { return make<ListSet>(members); }
  explicit ListSet(Members members) : members_(members.begin(), members.end()) {}
  std::uint32_t count() const override { return static_cast<std::uint32_t>(members_.size()); }
  Ref<NSObject> member(NSObject* object) const override {
    for (const auto& each : members_)
      if (each->isEqual(object)) return each;
    return nullptr;
  }
  Ref<NSEnumerator> objectEnumerator() const override {
    return NSEnumerator::enumeratorWithBlock([this, i = std::size_t{0}]() mutable {
      return i < members_.size() ? members_[i++] : nullptr;
    });
  }

 private:
  std::vector<Ref<NSObject>> members_;
};

template <class Kind>
class AnySet : public testing::Test {};
using Kinds = testing::Types<NSSet, NSMutableSet, NSCountedSet, ListSet>;
TYPED_TEST_SUITE(AnySet, Kinds);

TYPED_TEST(AnySet, KnowsItsMembersAndTheirOrder) {
  auto three = NSNumber::of(3.0);
  Ref<NSSet> set = TypeParam::setWithObjects({"z"_ns, "a"_ns, three});
  EXPECT_EQ(set->count(), 3u);
  EXPECT_TRUE(set->containsObject(ns("a")));
  EXPECT_EQ(set->member(number(3)), three);
  EXPECT_EQ(to_string(set->anyObject()), "z");
  EXPECT_FALSE(TypeParam::setWithObjects({})->anyObject());
  auto inOrder = arrayOf({"z"_ns, "a"_ns, three});
  EXPECT_TRUE(set->allObjects()->isEqual(inOrder));
  std::string walked;
  for (NSObject* each : set) walked += to_string(each);
  EXPECT_EQ(walked, "za3");
}

TYPED_TEST(AnySet, ComparesWithOtherSets) {
  Ref<NSSet> set = TypeParam::setWithObjects({"a"_ns, "b"_ns});
  const Ref<NSSet> equals[] = {NSSet::setWithObjects({"b"_ns, "a"_ns}),
                               NSMutableSet::setWithObjects({"b"_ns, "a"_ns}),
                               NSCountedSet::setWithObjects({"b"_ns, "a"_ns, "a"_ns}),
                               ListSet::setWithObjects({"b"_ns, "a"_ns})};
  for (const auto& same : equals) {
    EXPECT_TRUE(set->isEqual(same));
    EXPECT_EQ(set->hash(), same->hash());
    EXPECT_TRUE(set->isSubsetOfSet(same));
    EXPECT_TRUE(set->intersectsSet(same));
  }
  auto larger = NSSet::setWithObjects({"a"_ns, "b"_ns, "c"_ns});
  EXPECT_TRUE(set->isSubsetOfSet(larger));
  EXPECT_FALSE(larger->isSubsetOfSet(set));
  EXPECT_FALSE(set->isEqual(NSSet::setWithObjects({"a"_ns, "c"_ns})));
  EXPECT_FALSE(set->intersectsSet(NSSet::setWithObjects({"c"_ns})));
  EXPECT_FALSE(set->isSubsetOfSet(nullptr));
  EXPECT_TRUE(TypeParam::setWithObjects({})->isSubsetOfSet(nullptr));
}

TYPED_TEST(AnySet, MakesOtherSets) {
  Ref<NSSet> set = TypeParam::setWithObjects({number(1), number(2)});
  EXPECT_TRUE(set->setByAddingObject(number(3))->isEqual(
      NSSet::setWithObjects({number(1), number(2), number(3)})));
  EXPECT_TRUE(set->setByAddingObjectsFromArray(NSArray::arrayWithObject(number(2)))->isEqual(set));
  auto isTwo = NSPredicate::predicateWithBlock(
      [](NSObject* each) { return static_cast<NSNumber*>(each)->intValue() == 2; });
  EXPECT_TRUE(set->filteredSetUsingPredicate(isTwo)->isEqual(NSSet::setWithObjects({number(2)})));
  EXPECT_TRUE(refuses([&] { set->objectsPassingTest({}); }));
  auto backwards = NSSortDescriptor::initWithKey_ascending("intValue"_ns, false);
  EXPECT_TRUE(set->sortedArrayUsingDescriptors(arrayOf({backwards}))
                  ->isEqual(arrayOf({number(2), number(1)})));
  as<NSMutableSet>(set->mutableCopy())->addObject("new"_ns);
  EXPECT_EQ(set->count(), 2u);
  EXPECT_TRUE(set->copy()->isEqual(set));
  EXPECT_EQ(set->copy() == set, (std::is_same_v<TypeParam, NSSet>));
}

TYPED_TEST(AnySet, SendsToItsMembersAndCopiesThem) {
  auto ann = make<Person>("Ann"_ns, 30), bob = make<Person>("Bob"_ns, 40);
  Ref<NSSet> set = TypeParam::setWithObjects({ann, bob});
  set->makeObjectsPerformSelector_withObject("setName:"_sel, "Cid"_ns);
  EXPECT_EQ(to_string(ann->name()) + to_string(bob->name()), "CidCid");
  auto text = NSMutableString::stringWithString("text"_ns);
  Ref<NSSet> texts = TypeParam::setWithObjects({text});
  for (const Ref<NSSet>& copies : {NSSet::initWithSet_copyItems(texts, true),
                                   Ref<NSSet>(NSMutableSet::initWithSet_copyItems(texts, true)),
                                   Ref<NSSet>(NSCountedSet::initWithSet_copyItems(texts, true))}) {
    EXPECT_TRUE(copies->isEqual(texts));
    EXPECT_NE(copies->anyObject(), text);
  }
  EXPECT_EQ(NSMutableSet::initWithSet_copyItems(texts, false)->anyObject(), text);
}

TYPED_TEST(AnySet, CollectsTheValuesOfItsMembers) {
  Ref<NSSet> set = TypeParam::setWithObjects(
      {make<Person>("Ann"_ns, 30), make<Person>("Bob"_ns, 30), make<Person>(nullptr, 31)});
  EXPECT_TRUE(set->valueForKey("age"_ns)->isEqual(NSSet::setWithObjects({number(30), number(31)})));
  EXPECT_TRUE(set->valueForKey("name"_ns)->isEqual(NSSet::setWithObjects({"Ann"_ns, "Bob"_ns})));
  set->setValue_forKey(number(1), "age"_ns);
  EXPECT_TRUE(set->valueForKey("age"_ns)->isEqual(NSSet::setWithObjects({number(1)})));
}

TEST(NSSet, AnswersBySelectorAndRefusesNil) {
  EXPECT_EQ(to_string(NSSet::setWithObjects({"a"_ns, "b"_ns})), "{(\n    a,\n    b\n)}");
  auto set = send<Ref<NSMutableSet>>(classOf<NSMutableSet>(), "setWithArray:"_sel,
                                     arrayOf({"a"_ns, "b"_ns, "a"_ns}));
  EXPECT_EQ(send<std::uint32_t>(set, "count"_sel), 2u);
  EXPECT_TRUE(refuses([&] { set->addObject(nullptr); }));
  EXPECT_TRUE(refuses([&] { set->setByAddingObject(nullptr); }));
}

TEST(NSMutableSet, CombinesWithOtherSets) {
  auto set = NSMutableSet::setWithObjects({number(1), number(2), number(3), number(4)});
  set->minusSet(ListSet::setWithObjects({number(2), number(9)}));
  set->intersectSet(ListSet::setWithObjects({number(4), number(3), number(9)}));
  set->unionSet(ListSet::setWithObjects({number(4), number(5)}));
  EXPECT_EQ(to_string(set->allObjects()->componentsJoinedByString(""_ns)), "345");
  set->intersectSet(set);
  set->unionSet(set);
  set->setSet(set);
  EXPECT_EQ(set->count(), 3u);
  set->minusSet(set);
  EXPECT_EQ(set->count(), 0u);
  set->setSet(ListSet::setWithObjects({number(1)}));
  EXPECT_EQ(set->count(), 1u);
  set->intersectSet(nullptr);
  EXPECT_EQ(set->count(), 0u);
}

// Looking for the first member again and again must not walk over all that are gone; walking over
// them would take 10^10 steps here.
TEST(NSMutableSet, CanBeUsedAsAQueue) {
  constexpr int count = 200'000;
  auto set = make<NSMutableSet>();
  for (int i = 0; i < count; ++i) set->addObject(number(i));
  for (int i = 0; i < 2 * count; ++i) {
    Ref<NSObject> first = set->anyObject();
    ASSERT_EQ(static_cast<NSNumber*>(first.get())->intValue(), i);
    set->removeObject(first);
    if (i < count) set->addObject(number(count + i));
  }
  EXPECT_EQ(set->count(), 0u);
}

TEST(NSMutableSet, ChangingItStopsAWalk) {
  auto set = NSMutableSet::setWithObjects({"a"_ns, "b"_ns});
  auto members = set->objectEnumerator();
  EXPECT_TRUE(members->nextObject());
  set->addObject("a"_ns);
  EXPECT_TRUE(members->nextObject());
  EXPECT_TRUE(raises(NSGenericException, [&] {
    for (NSObject* each : set) {
      set->removeObject(each);
      EXPECT_TRUE(each->isEqual("a"_ns));  // still alive
    }
  }));
  EXPECT_TRUE(raises(NSGenericException, [&] { members->nextObject(); }));
}

TEST(NSMutableSet, IsWholeWhenAMemberIsDestroyed) {
  auto set = make<NSMutableSet>();
  std::vector<std::uint32_t> counts;
  NSObject* added = nullptr;
  const auto addFarewell = [&] {
    auto last = make<Farewell>([&] {
      counts.push_back(set->count());
      for (int i = 0; i < 30; ++i) set->addObject(number(i));
    });
    set->addObject(last);
    added = last;
  };
  addFarewell();
  set->removeObject(added);
  addFarewell();
  set->intersectSet(NSSet::setWithObjects({number(1), number(2)}));
  addFarewell();
  set->removeAllObjects();
  EXPECT_EQ(counts, (std::vector<std::uint32_t>{0, 2, 0}));
  EXPECT_EQ(set->count(), 30u);
}

}  // namespace
}  // namespace qz::test
