#include <unordered_map>

#include "tests/Platform/Collections/HashedKeys.h"
#include "tests/support/Letters.h"
#include "tests/support/ListDictionary.h"

namespace qz::test {
namespace {

template <class Kind>
class AnyDictionary : public testing::Test {};
using Kinds = testing::Types<NSDictionary, NSMutableDictionary, ListDictionary>;
TYPED_TEST_SUITE(AnyDictionary, Kinds);

TYPED_TEST(AnyDictionary, AnswersByKeyAndKeepsItsOrder) {
  Ref<NSDictionary> d =
      TypeParam::of({{"z"_ns, number(1)}, {"a"_ns, number(2)}, {number(7), number(1)}});
  EXPECT_EQ(d->count(), 3u);
  EXPECT_EQ(to_string(d->objectForKey(ns("a"))), "2");
  EXPECT_EQ(to_string(d->objectForKey(NSNumber::of(7.0))), "1");
  EXPECT_FALSE(d->objectForKey("b"_ns));
  EXPECT_EQ(text(d->allKeys()), "za7");
  EXPECT_EQ(text(d->allValues()), "121");
  EXPECT_EQ(text(d->allKeysForObject(number(1))), "z7");
  std::string walked;
  for (const auto& [key, value] : d) walked += to_string(key) + to_string(value);
  EXPECT_EQ(walked, "z1a271");
  EXPECT_EQ(to_string(d), "{\n    z = 1;\n    a = 2;\n    7 = 1;\n}");
}

TYPED_TEST(AnyDictionary, EqualityGoesByEntriesNotByOrderOrClass) {
  Ref<NSDictionary> d = TypeParam::of({{"a"_ns, number(1)}, {"b"_ns, number(2)}});
  for (const Ref<NSDictionary>& same :
       {NSDictionary::of({{"b"_ns, number(2)}, {"a"_ns, number(1)}}),
        Ref<NSDictionary>(
            NSMutableDictionary::of({{"b"_ns, NSNumber::of(2.0)}, {"a"_ns, number(1)}})),
        ListDictionary::of({{"b"_ns, number(2)}, {"a"_ns, number(1)}})}) {
    EXPECT_TRUE(d->isEqual(same));
    EXPECT_EQ(d->hash(), same->hash());
  }
  EXPECT_FALSE(d->isEqual(NSDictionary::of({{"a"_ns, number(1)}})));
  EXPECT_FALSE(d->isEqual(NSDictionary::of({{"a"_ns, number(1)}, {"b"_ns, number(3)}})));
  EXPECT_FALSE(d->isEqual(NSDictionary::of({{"a"_ns, number(1)}, {"c"_ns, number(2)}})));
}

TYPED_TEST(AnyDictionary, CopiesAreIndependent) {
  Ref<NSDictionary> d = TypeParam::of({{"a"_ns, number(1)}});
  auto changed = as<NSMutableDictionary>(d->mutableCopy());
  auto kept = as<NSDictionary>(d->copy());
  ASSERT_TRUE(changed && kept);
  EXPECT_FALSE(isKind<NSMutableDictionary>(kept.get()));
  changed->setObject_forKey(number(2), "b"_ns);
  EXPECT_EQ(d->count(), 1u);
  EXPECT_EQ(changed->count(), 2u);
  EXPECT_TRUE(NSDictionary::dictionaryWithDictionary(d)->isEqual(kept));
  EXPECT_EQ(kept == d, (std::is_same_v<TypeParam, NSDictionary>));
}

TYPED_TEST(AnyDictionary, ReadsByKeyPath) {
  auto inner = TypeParam::of({{"count"_ns, "mine"_ns}});
  Ref<NSDictionary> d = TypeParam::of({{"inner"_ns, inner}, {"other"_ns, number(1)}});
  EXPECT_EQ(to_string(d->valueForKeyPath("inner.count"_ns)), "mine");
  EXPECT_EQ(to_string(d->valueForKey("@count"_ns)), "2");
  EXPECT_FALSE(d->valueForKey("count"_ns));
  const auto keys = arrayOf({"none"_ns, "other"_ns});
  EXPECT_EQ(text(d->objectsForKeys_notFoundMarker(keys, "-"_ns)), "-1");
  EXPECT_TRUE(refuses([&] { d->objectsForKeys_notFoundMarker(keys, nullptr); }));
}

TYPED_TEST(AnyDictionary, SortsItsKeysByTheirValues) {
  Ref<NSDictionary> d = TypeParam::of(
      {{"c"_ns, number(3)}, {"a"_ns, number(1)}, {"x"_ns, number(3)}, {"b"_ns, number(2)}});
  EXPECT_EQ(text(d->keysSortedByValueUsingSelector("compare:"_sel)), "abcx");
  const auto backwards = [](NSObject* a, NSObject* b) {
    return as<NSNumber>(b)->compare(as<NSNumber>(a));
  };
  EXPECT_EQ(text(d->keysSortedByValueUsingComparator(backwards)), "cxba");
  EXPECT_TRUE(refuses([&] { d->keysSortedByValueUsingComparator({}); }));
  EXPECT_TRUE(d->keysOfEntriesPassingTest([](NSObject*, NSObject* value) {
                 return as<NSNumber>(value)->intValue() == 3;
               })->isEqual(NSSet::setWithObjects({"x"_ns, "c"_ns})));
}

TEST(NSDictionary, HandsItsEntriesOut) {
  auto held = NSMutableString::stringWithString("text"_ns);
  auto d = NSDictionary::of({{"a"_ns, held}, {"b"_ns, number(2)}});
  NSObject *keys[2], *objects[2];
  d->getObjects_andKeys(objects, keys);
  EXPECT_EQ(objects[0], held);
  EXPECT_EQ(to_string(objects[1]) + to_string(keys[0]) + to_string(keys[1]), "2ab");
  EXPECT_EQ(NSMutableDictionary::initWithDictionary(d)->objectForKey("a"_ns), held);
  for (const Ref<NSDictionary>& copies :
       {NSDictionary::initWithDictionary_copyItems(d, true),
        Ref<NSDictionary>(NSMutableDictionary::initWithDictionary_copyItems(d, true))}) {
    EXPECT_TRUE(copies->isEqual(d));
    EXPECT_NE(copies->objectForKey("a"_ns), held);
  }
}

TEST(NSDictionary, ConstructorsAgreeAndTheLastOfEqualKeysWins) {
  auto expected = NSDictionary::of({{"a"_ns, number(3)}, {"b"_ns, number(2)}});
  NSObject* objects[] = {"x"_ns, "y"_ns, "z"_ns};
  NSObject* keys[] = {"a"_ns, "b"_ns, "a"_ns};
  auto values = arrayOf({number(1), number(2), number(3)});
  auto names = NSArray::arrayWithObjects_count(keys, 3);
  EXPECT_EQ(to_string(NSDictionary::initWithObjects_forKeys(values, names)), to_string(expected));
  EXPECT_EQ(to_string(NSMutableDictionary::initWithObjects_forKeys_count(objects, keys, 3)),
            "{\n    a = z;\n    b = y;\n}");
  EXPECT_EQ(to_string(NSDictionary::dictionaryWithObjectsAndKeys(number(3), "a"_ns, number(2),
                                                                 "b"_ns, nullptr, "c"_ns)),
            to_string(expected));
  const Ref<NSMutableDictionary> changing =
      NSMutableDictionary::initWithObjectsAndKeys(number(3), "a"_ns, number(2), "b"_ns);
  EXPECT_EQ(to_string(changing), to_string(expected));
  EXPECT_TRUE(refuses([&] { NSDictionary::initWithObjects_forKeys(values, NSArray::array()); }));
  EXPECT_TRUE(refuses([] { NSDictionary::dictionaryWithObjectsAndKeys("object"_ns); }));
  EXPECT_TRUE(refuses([] { NSDictionary::of({{"key"_ns, nullptr}}); }));
  EXPECT_TRUE(refuses([] { NSDictionary::of({{nullptr, "object"_ns}}); }));
  const auto list = arrayOf({number(3), "a"_ns, number(2), "b"_ns});
  for (Class* aClass : {classOf<NSDictionary>(), classOf<NSMutableDictionary>()}) {
    const auto listed = send<Ref<NSDictionary>>(aClass, "initWithObjectsAndKeys:"_sel, list.get());
    EXPECT_EQ(to_string(listed), to_string(expected));
    EXPECT_TRUE(listed->isKindOfClass(aClass));
  }
}

TEST(NSMutableDictionary, CopiesItsKeys) {
  auto d = make<NSMutableDictionary>();
  auto key = NSMutableString::stringWithString("a"_ns);
  d->setObject_forKey(number(1), key);
  key->appendString("b"_ns);
  EXPECT_TRUE(d->objectForKey("a"_ns));
  EXPECT_FALSE(d->objectForKey(key));
}

TEST(NSMutableDictionary, SetsAndRemovesByKeyValueAccess) {
  auto d = NSMutableDictionary::of({{"a"_ns, number(1)}, {"b"_ns, number(2)}});
  d->setValue_forKey(nullptr, "a"_ns);
  d->setValue_forKey(number(3), "c"_ns);
  d->removeObjectsForKeys(arrayOf({"b"_ns, "missing"_ns}));
  EXPECT_TRUE(d->isEqual(NSDictionary::of({{"c"_ns, number(3)}})));
  d->addEntriesFromDictionary(ListDictionary::of({{"d"_ns, number(4)}, {"c"_ns, number(5)}}));
  EXPECT_EQ(to_string(d), "{\n    c = 5;\n    d = 4;\n}");
  d->addEntriesFromDictionary(d);
  d->setDictionary(d);
  EXPECT_EQ(d->count(), 2u);
  EXPECT_TRUE(refuses([&] { d->setObject_forKey(nullptr, "a"_ns); }));
  EXPECT_TRUE(refuses([&] { d->setObject_forKey("a"_ns, nullptr); }));
  EXPECT_TRUE(raises(NSUndefinedKeyException,
                     [] { NSDictionary::dictionary()->setValue_forKey("a"_ns, "key"_ns); }));
}

// Every operation against a map that is known to be right. The order of insertion is checked too;
// a narrow hash makes long chains in which removals leave their traces.
TEST(NSMutableDictionary, BehavesLikeAMapUnderRandomOperations) {
  for (const std::size_t hashes : {std::size_t{3}, std::size_t{1} << 40}) {
    std::mt19937 random(static_cast<unsigned>(hashes));
    auto d = make<NSMutableDictionary>();
    struct Expected {
      int value;
      int since;
    };
    std::unordered_map<int, Expected> oracle;
    const int range = hashes == 3 ? 60 : 3000;
    for (int step = 0; step < 40 * range; ++step) {
      const int name = static_cast<int>(random() % static_cast<unsigned>(range));
      auto key = make<Key>(name, static_cast<std::size_t>(name) % hashes << 40);
      const auto found = oracle.find(name);
      const Ref<NSObject> value = d->objectForKey(key);
      ASSERT_EQ(bool(value), found != oracle.end());
      if (value) {
        ASSERT_EQ(static_cast<NSNumber*>(value.get())->intValue(), found->second.value);
      }
      // Growing and shrinking take turns.
      if (random() % 100 < (step / range % 2 != 0 ? 35u : 65u)) {
        d->setObject_forKey(number(step), key);
        oracle.try_emplace(name, Expected{0, step}).first->second.value = step;
      } else {
        d->removeObjectForKey(key);
        oracle.erase(name);
      }
      ASSERT_EQ(d->count(), oracle.size());
      if (step % (5 * range) != 0) continue;
      std::map<int, int> inOrder;
      for (const auto& [known, expected] : oracle) inOrder[expected.since] = expected.value;
      auto next = inOrder.begin();
      for (const auto& [each, object] : d) {
        ASSERT_NE(next, inOrder.end());
        ASSERT_EQ(static_cast<NSNumber*>(object.get())->intValue(), next++->second);
      }
      ASSERT_EQ(next, inOrder.end());
      key = nullptr;
      ASSERT_EQ(Key::alive, static_cast<int>(oracle.size()));
      ASSERT_TRUE(d->isEqual(d->copy()));
    }
  }
  EXPECT_EQ(Key::alive, 0);
}

TEST(NSMutableDictionary, ChangingItStopsAWalkAndReplacingDoesNot) {
  auto d = NSMutableDictionary::of({{"a"_ns, number(1)}, {"b"_ns, number(2)}});
  for (const auto& [key, value] : d) d->setObject_forKey(number(9), key);
  EXPECT_EQ(to_string(d->allValues()->lastObject()), "9");
  auto keys = d->keyEnumerator();
  auto objects = d->objectEnumerator();
  EXPECT_TRUE(keys->nextObject());
  d->removeObjectForKey("a"_ns);
  EXPECT_TRUE(raises(NSGenericException, [&] { keys->nextObject(); }));
  EXPECT_TRUE(raises(NSGenericException, [&] { objects->nextObject(); }));
  EXPECT_TRUE(raises(NSGenericException, [&] {
    for ([[maybe_unused]] const auto& pair : d) d->removeAllObjects();
  }));
  EXPECT_TRUE(raises(NSGenericException, [&] {
    d->setObject_forKey(number(1), "a"_ns);
    for (const auto& [key, value] : d)
      for (int i = 0; i < 100; ++i) d->setObject_forKey(value, number(i));
  }));
}

TEST(NSMutableDictionary, EnumeratorsKeepItAlive) {
  auto keys = NSMutableDictionary::of({{"a"_ns, make<Key>(1, 1)}})->keyEnumerator();
  EXPECT_EQ(Key::alive, 1);
  EXPECT_TRUE(keys->nextObject());
  EXPECT_FALSE(keys->nextObject());
  EXPECT_FALSE(keys->nextObject());
  EXPECT_EQ(Key::alive, 0);
}

TEST(NSMutableDictionary, IsWholeWhenWhatItHeldIsDestroyed) {
  auto d = make<NSMutableDictionary>();
  std::vector<std::uint32_t> counts;
  const auto farewell = [&] {
    return make<Farewell>([&] {
      counts.push_back(d->count());
      d->setObject_forKey("seen"_ns, number(static_cast<int>(counts.size())));
      for (int i = 100; i < 150; ++i) d->setObject_forKey("new"_ns, number(i));
    });
  };
  d->setObject_forKey(farewell(), "a"_ns);
  d->setObject_forKey("other"_ns, "a"_ns);
  EXPECT_EQ(counts, (std::vector<std::uint32_t>{1}));
  EXPECT_EQ(to_string(d->objectForKey("a"_ns)), "other");
  d->setObject_forKey(farewell(), "b"_ns);
  d->removeObjectForKey("b"_ns);
  EXPECT_EQ(counts.back(), 52u);
  d->setObject_forKey(farewell(), "b"_ns);
  d->removeAllObjects();
  EXPECT_EQ(counts.back(), 0u);
  EXPECT_EQ(d->count(), 51u);
  d->setObject_forKey(farewell(), "b"_ns);
  d->setDictionary(NSDictionary::of({{"only"_ns, "one"_ns}}));
  EXPECT_EQ(counts.back(), 1u);
  EXPECT_EQ(counts.size(), 4u);
}

TEST(NSDictionary, IsEmptyForWhatGoesWithIt) {
  NSDictionary* dying = nullptr;
  std::uint32_t count = 1;
  auto held = make<Farewell>([&] { count = dying->count() + dying->allKeys()->count(); });
  Ref<NSDictionary> d = NSDictionary::of({{"a"_ns, held}, {"b"_ns, "other"_ns}});
  dying = d;
  held = nullptr;
  d = nullptr;
  EXPECT_EQ(count, 0u);
}

TEST(NSMutableDictionary, TakesAnyHint) {
  auto hinted = NSMutableDictionary::dictionaryWithCapacity(0xFFFFFFFF);
  hinted->setObject_forKey("b"_ns, "a"_ns);
  EXPECT_EQ(hinted->count(), 1u);
}

TEST(NSMutableDictionary, NoticesAComparisonThatChangesIt) {
  for (const int others : {1, 100}) {  // without and with an index
    auto d = make<NSMutableDictionary>();
    for (int i = 0; i < others; ++i) d->setObject_forKey("value"_ns, make<Key>(i, 5));
    auto hostile = make<Key>(-1, 5);
    hostile->whenCompared = [&] { d->removeAllObjects(); };
    EXPECT_TRUE(raises(NSGenericException, [&] { d->objectForKey(hostile); }));
    EXPECT_EQ(d->count(), 0u);
    EXPECT_EQ(Key::alive, 1);
  }
}

TEST(NSMutableDictionary, MayContainItself) {
  auto a = make<NSMutableDictionary>();
  auto b = make<NSMutableDictionary>();
  a->setObject_forKey(a, "self"_ns);
  b->setObject_forKey(b, "self"_ns);
  EXPECT_TRUE(a->isEqual(b));
  EXPECT_EQ(a->hash(), b->hash());
  EXPECT_EQ(to_string(a), "{\n    self = {...};\n}");
  b->setObject_forKey(number(1), "self"_ns);
  EXPECT_FALSE(a->isEqual(b));
  a->removeAllObjects();
}

TEST(NSDictionary, ADeepChainIsDestroyedWithLittleStack) {
  Ref<NSDictionary> chain = NSDictionary::dictionary();
  for (int i = 0; i < 300'000; ++i)
    chain = NSDictionary::dictionaryWithObject_forKey(chain, "next"_ns);
  chain = nullptr;
}

TEST(HashSupport, SpreadsHashesThatDifferInFewBits) {
  for (int shift = 0; shift <= 48; ++shift) {
    std::vector<int> buckets(1 << 16);
    int fullest = 0;
    for (std::size_t i = 0; i < buckets.size(); ++i)
      fullest = std::max(fullest, ++buckets[detail::mixHash(i << shift) & 0xFFFF]);
    EXPECT_LE(fullest, 16) << "shifted by " << shift;  // a random spread gives 8 or 9
  }
}

}  // namespace
}  // namespace qz::test
