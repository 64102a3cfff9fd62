// What the library adds to Dictionaries, for every class of them.

#include "QZFoundation/NSDictionary-QZFoundation.h"
#include "QZFoundation/NSMutableDictionary-QZFoundation.h"
#include "tests/support/ListDictionary.h"
#include "tests/support/Person.h"
#include "tests/support/PropertyLists.h"

namespace qz::test {
namespace {

template <class Kind>
class EveryDictionary : public testing::Test {};
using Kinds = testing::Types<NSDictionary, NSMutableDictionary, ListDictionary>;
TYPED_TEST_SUITE(EveryDictionary, Kinds);

// Entries in one line, nested ones too.
std::string text(NSObject* object) {
  if (auto* dictionary = as<NSDictionary>(object)) {
    std::string all;
    for (const auto& [key, value] : *dictionary) all += to_string(key) + ":" + text(value) + " ";
    return "{" + all + "}";
  }
  if (auto* array = as<NSArray>(object)) {
    std::string all;
    for (NSObject* each : *array) all += text(each) + " ";
    return "(" + all + ")";
  }
  return to_string(object);
}

/// Equal to everything when it is asked, and to nothing when it is the argument.
class Yes : public Derives<Yes, NSObject> {
 public:
  static void describe(ClassDescription<Yes>& is) { is.named("Yes"); }
  bool isEqual(NSObject*) const override { return true; }
};

TYPED_TEST(EveryDictionary, KnowsItsObjects) {
  Ref<NSDictionary> d = TypeParam::of({{"a"_ns, number(1)}, {"b"_ns, "text"_ns}});
  EXPECT_TRUE(containsObject(d, NSNumber::of(1.0)));
  EXPECT_FALSE(containsObject(d, "a"_ns));
  EXPECT_FALSE(containsObject(d, nullptr));
  // The value is the one that is asked.
  EXPECT_FALSE(containsObject(d, make<Yes>()));
  EXPECT_TRUE(containsObject(TypeParam::of({{"a"_ns, make<Yes>()}}), "other"_ns));
  EXPECT_EQ(text(allObjects(d)), "(1 text )");
}

TYPED_TEST(EveryDictionary, ReadsScalars) {
  Ref<NSDictionary> d = TypeParam::of({{"one"_ns, number(1)},
                                       {"none"_ns, number(0)},
                                       {"half"_ns, NSNumber::of(0.5)},
                                       {"huge"_ns, NSNumber::of(1e18)},
                                       {"words"_ns, "42 of them"_ns},
                                       {number(7), "YES"_ns}});
  const struct {
    Ref<NSObject> key;
    bool truth;
    int integer;
  } cases[] = {{"one"_ns, true, 1},  {"none"_ns, false, 0},
               {"half"_ns, true, 0}, {"huge"_ns, true, 2147483647},
               {number(7), true, 0}, {"absent"_ns, false, 0},
               {nullptr, false, 0}};
  for (const auto& each : cases) {
    EXPECT_EQ(boolForKey(d, each.key), each.truth) << each.key;
    EXPECT_EQ(integerForKey(d, each.key), each.integer) << each.key;
  }
  EXPECT_EQ(integerForKey(d, "words"_ns), 42);
  auto wrong = TypeParam::of({{"date"_ns, make<Yes>()}});
  EXPECT_TRUE(refuses([&] { boolForKey(wrong, "date"_ns); }));
}

/// Counts how often it is asked for a value.
class Asked : public Derives<Asked, NSObject> {
 public:
  explicit Asked(int& count) : count_(count) {}
  static void describe(ClassDescription<Asked>& is) { is.named("Asked"); }
  Ref<NSObject> valueForUndefinedKey(NSString*) override {
    ++count_;
    return "value"_ns;
  }

 private:
  int& count_;
};

TYPED_TEST(EveryDictionary, AnswersNilWhateverMatches) {
  auto ann = make<Person>("Ann"_ns, 30), bob = make<Person>("Bob"_ns, 40);
  Ref<NSDictionary> d =
      TypeParam::of({{"stranger"_ns, make<Yes>()}, {"ann"_ns, ann}, {"bob"_ns, bob}});
  EXPECT_FALSE(objectMatchingValue_forKey(d, "Ann"_ns, "name"_ns));
  EXPECT_FALSE(objectMatchingValue_forKeyPath(d, number(3), "name.length"_ns));
  EXPECT_FALSE(
      objectMatchingValue_forKeyPath_usingSelector(d, "Bob"_ns, "name"_ns, "isEqual:"_sel));
  // It walks as far as the first match, and only an unknown key is passed over.
  int asked = 0;
  auto counting = make<Asked>(asked);
  auto many = TypeParam::of({{"1"_ns, counting}, {"2"_ns, counting}, {"3"_ns, counting}});
  EXPECT_FALSE(keyOfObjectMatchingValue_forKeyPath_usingSelector(many, "value"_ns, "key"_ns,
                                                                 "isEqual:"_sel));
  EXPECT_EQ(asked, 2);  // once for nothing and once for the answer
  keyOfObjectMatchingValue_forKeyPath_usingSelector(many, "other"_ns, "key"_ns, "isEqual:"_sel);
  EXPECT_EQ(asked, 2 + 6);
  EXPECT_TRUE(refuses([&] {
    keyOfObjectMatchingValue_forKeyPath_usingSelector(d, "Ann"_ns, "name"_ns, "unknown:"_sel);
  }));
  EXPECT_TRUE(raises(NSUndefinedKeyException, [&] {  // by the comparison
    objectMatchingValue_forKeyPath_usingSelector(d, "nowhere"_ns, "name"_ns, "valueForKey:"_sel);
  }));
}

TYPED_TEST(EveryDictionary, GivesTheMatchingEntries) {
  auto ann = make<Person>("Ann"_ns, 30), bob = make<Person>(nullptr, 30);
  Ref<NSDictionary> d = TypeParam::of({{"ann"_ns, ann}, {"bob"_ns, bob}});
  EXPECT_EQ(dictionaryByMatchingValue_forKeyPath(d, NSNumber::of(30.0), "age"_ns)->count(), 2u);
  const auto named = [&](NSObject* name) {
    return dictionaryByMatchingValue_forKeyPath(d, name, "name"_ns);
  };
  EXPECT_EQ(named("Ann"_ns)->objectForKey("ann"_ns), ann);
  EXPECT_EQ(named(nullptr)->objectForKey("bob"_ns), bob);
  EXPECT_EQ(named(make<Yes>())->count(), 2u);
  EXPECT_TRUE(raises(NSUndefinedKeyException, [&] {
    dictionaryByMatchingValue_forKeyPath(d, number(3), "name.length"_ns);  // one key, no path
  }));
}

TYPED_TEST(EveryDictionary, DerivesOthers) {
  Ref<NSDictionary> d = TypeParam::of({{"a"_ns, number(1)}, {"b"_ns, number(2)}});
  auto keys = arrayOf({"b"_ns, "x"_ns, "a"_ns, "b"_ns});
  EXPECT_EQ(text(dictionaryWithObjectsForKeys(d, keys->objectEnumerator())), "{b:2 a:1 }");
  EXPECT_EQ(text(dictionaryWithObjectsForKeys(d, nullptr)), "{}");
  auto twice = TypeParam::of({{"a"_ns, number(1)}, {"b"_ns, number(2)}, {"c"_ns, number(1)}});
  EXPECT_EQ(text(inverseDictionary(twice)), "{1:c 2:b }");
  EXPECT_EQ(text(dictionaryByAddingObjectsAndKeys(d, number(3), "c"_ns, number(4), "a"_ns)),
            "{a:4 b:2 c:3 }");
  // It ends at nil, and at an Object without a key.
  NSObject* const nothing = nullptr;
  for (const auto& made :
       {dictionaryByAddingObjectsAndKeys(d, number(3), "c"_ns, number(4), nothing, d, "e"_ns),
        dictionaryByAddingObjectsAndKeys(d, number(3), "c"_ns, number(4))})
    EXPECT_EQ(text(made), "{a:1 b:2 c:3 }");
  auto sent = send<Ref<NSObject>>(d, "dictionaryByAddingObjectsAndKeys:"_sel, keys);
  EXPECT_EQ(text(sent), "{a:1 b:a x:b }");
  EXPECT_EQ(d->count(), 2u);
  EXPECT_FALSE(isKind<NSMutableDictionary>(deepCopy(d)));
  EXPECT_TRUE(isKind<NSMutableDictionary>(copyMutableContainers(d)));
  EXPECT_EQ(text(deepCopy(d)) + text(copyMutableContainers(d)), text(d) + text(d));
}

TEST(NSDictionaryQZFoundation, RefusesToCopyWithoutEnd) {
  auto cycle = make<NSMutableDictionary>();
  auto list = NSMutableArray::arrayWithObject(cycle);
  cycle->setObject_forKey(list, "list"_ns);
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [&] { deepCopy(cycle); }));
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [&] { copyMutableContainers(list); }));
  list->removeAllObjects();
  Ref<NSDictionary> chain = cycle;
  for (int i = 0; i < 900; ++i) chain = NSDictionary::of({{"next"_ns, chain}});
  EXPECT_TRUE(deepCopy(chain)->isEqual(chain));
}

TEST(NSMutableDictionaryQZFoundation, MergesWhatBothHave) {
  auto d = NSMutableDictionary::of({{"x"_ns, number(1)}, {"mine"_ns, number(7)}});
  mergeWithDictionary_usingSelector(d,
                                    ListDictionary::of({{"x"_ns, number(2)}, {"y"_ns, number(3)}}),
                                    "numberByAddingNumber:"_sel);
  EXPECT_EQ(text(d), "{x:3 mine:7 }");
  mergeWithDictionary_usingSelector(d, nullptr, "numberByAddingNumber:"_sel);
  mergeWithDictionary_usingSelector(d, d, "numberByAddingNumber:"_sel);
  EXPECT_EQ(text(d), "{x:6 mine:14 }");
  // A nil answer removes the entry: here, what nobody is under "partner".
  auto people = NSMutableDictionary::of({{"ann"_ns, make<Person>("Ann"_ns)}, {"n"_ns, number(1)}});
  mergeWithDictionary_usingSelector(people, NSDictionary::of({{"ann"_ns, "partner"_ns}}),
                                    "valueForKey:"_sel);
  EXPECT_EQ(text(people), "{n:1 }");
  auto empty = NSDictionary::dictionary();
  auto none = NSMutableDictionary::of({{"a"_ns, empty}, {"b"_ns, empty}});
  mergeWithDictionary_usingSelector(none, none, "objectForKey:"_sel);
  EXPECT_EQ(none->count(), 0u);
  EXPECT_TRUE(refuses([&] { mergeWithDictionary_usingSelector(d, d, "compare:"_sel); }));
  EXPECT_EQ(text(d), "{x:6 mine:14 }");
}

TEST(NSMutableDictionaryQZFoundation, RemovesAndSetsValues) {
  auto d = NSMutableDictionary::of(
      {{"a"_ns, number(1)}, {"b"_ns, number(2)}, {"c"_ns, NSNumber::of(1.0)}});
  removeObject(d, number(1));
  EXPECT_EQ(text(d), "{b:2 }");
  removeObject(d, nullptr);
  setInteger_forKey(d, -5, "n"_ns);
  send<void>(d, "setInteger:forKey:"_sel, 6, number(1));
  EXPECT_EQ(text(d), "{b:2 n:-5 1:6 }");
  EXPECT_EQ(as<NSNumber>(d->objectForKey("n"_ns))->kind(), NumberKind::Int);
  EXPECT_TRUE(refuses([&] { setInteger_forKey(d, 1, nullptr); }));
}

void changeEverything(NSObject* tree) {
  if (auto* array = as<NSArray>(tree)) {
    for (NSObject* each : *array) changeEverything(each);
    if (auto* open = as<NSMutableArray>(tree)) open->addObject("new"_ns);
  } else if (auto* dictionary = as<NSMutableDictionary>(tree)) {
    for (const auto& [key, value] : *dictionary) changeEverything(value);
    dictionary->setObject_forKey("new"_ns, "new"_ns);
  } else if (auto* string = as<NSMutableString>(tree)) {
    string->appendString("!"_ns);
  }
}

TEST(NSDictionaryQZFoundation, CopiesOfAnyTreeAreEqualAndApart) {
  std::mt19937_64 random(5);
  for (int i = 0; i < 300; ++i) {
    // Everything in it can change, but for the outermost container every other time.
    Ref<NSObject> tree = read(written(randomPropertyList(random, 3), NSPropertyListBinaryFormat),
                              NSPropertyListMutableContainersAndLeaves);
    if (i % 2 == 0) tree = tree->copy();
    const std::string before = text(tree);
    const auto frozen = deepCopy(tree);
    const auto thawed = copyMutableContainers(tree);
    ASSERT_TRUE(frozen->isEqual(tree) && thawed->isEqual(frozen)) << before;
    changeEverything(frozen);  // nothing in it can change
    ASSERT_EQ(text(frozen), before);
    changeEverything(thawed);
    ASSERT_EQ(text(thawed) != before, isKind<NSArray>(tree) || isKind<NSDictionary>(tree));
    ASSERT_EQ(text(tree), before);
    changeEverything(tree);
    ASSERT_EQ(text(frozen), before);
  }
}

}  // namespace
}  // namespace qz::test
