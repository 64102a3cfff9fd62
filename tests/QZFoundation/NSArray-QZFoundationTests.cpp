#include "Platform/Collections/NSEnumerator.h"
#include "QZFoundation/QZFoundation.h"
#include "tests/support/Holder.h"
#include "tests/support/Letters.h"

namespace qz::test {
namespace {

using Holders = std::vector<Ref<Holder>>;

/// Answers whatever comparison it was told to, once a list of answers has run out its last one.
class Moody : public Derives<Moody, NSObject> {
 public:
  static void describe(ClassDescription<Moody>& is) {
    is.named("Moody").method<&Moody::judge>("judge:");
  }
  explicit Moody(std::vector<int> answers) : answers_(std::move(answers)) {}
  int judge(NSObject*) {
    const int answer = answers_[std::min<std::size_t>(asked, answers_.size() - 1)];
    ++asked;
    return answer;
  }
  std::size_t asked = 0;

 private:
  std::vector<int> answers_;
};

TEST(ValueSearch, ReadsEachValueTwiceUpToTheFirstMatch) {
  auto deep = make<Holder>("deep"_ns, 7);
  const Holders holders{make<Holder>("a"_ns, 1), make<Holder>(nullptr, 2), make<Holder>(deep, 3),
                        make<Holder>("c"_ns, 3)};
  auto array = NSArray::fromRange(holders);
  const struct {
    NSString* keyPath;
    Ref<NSObject> value;
    std::uint32_t found;
  } cases[] = {
      {"number"_ns, NSNumber::of(3.0), 2},
      {"number"_ns, NSNumber::of(3.5), NSNotFound},
      {"number"_ns, NSNumber::of((1LL << 32) + 3), NSNotFound},
      {"number"_ns, "3"_ns, NSNotFound},
      {"number"_ns, nullptr, NSNotFound},
      {"value"_ns, "c"_ns, 3},
      {"value"_ns, nullptr, NSNotFound},  // nil is sent nothing
      {"huge"_ns, number(-1), NSNotFound},
      {"huge"_ns, NSNumber::numberWithUnsignedLongLong(~0ULL), 0},
  };
  for (const auto& each : cases) {
    for (const auto& holder : holders) holder->reads = 0;
    EXPECT_EQ(indexOfObjectMatchingValue_forKeyPath(array, each.value, each.keyPath), each.found)
        << each.keyPath << " " << each.value;
    const bool counts = !each.keyPath->isEqualToString("huge"_ns);
    for (std::uint32_t i = 0; i < holders.size() && counts; ++i)
      EXPECT_EQ(holders[i]->reads, i <= each.found ? 2 : 0) << each.keyPath << " " << each.value;
  }
}

TEST(ValueSearch, SkipsElementsWithoutTheKeyAndNothingElse) {
  auto ann = make<Holder>("v"_ns, 5);
  auto array = arrayOf({"text"_ns, make<Holder>(nullptr, 1), ann});
  EXPECT_EQ(indexOfObjectMatchingValue_forKeyPath(array, number(5), "number"_ns), 2u);
  EXPECT_EQ(objectMatchingValue_forKeyPath(array, number(1), "value.length"_ns), ann);
  EXPECT_EQ(indexOfObjectMatchingValue_forKeyPath(array, "v"_ns, "nowhere"_ns), NSNotFound);
  EXPECT_TRUE(raises(NSGenericException,
                     [&] { indexOfObjectMatchingValue_forKeyPath(array, "v"_ns, "trouble"_ns); }));
  EXPECT_TRUE(raises(NSUndefinedKeyException,
                     [&] { arrayByMatchingValue_forKeyPath(array, "v"_ns, "value"_ns); }));
  // Only the reading is forgiven: what the comparison raises is not.
  const auto search = [&](NSObject* value, Selector selector) {
    return objectMatchingValue_forKeyPath_usingSelector(arrayOf({ann}), value, "self"_ns, selector);
  };
  EXPECT_EQ(search(number(4), "isAbove:"_sel), ann);
  EXPECT_EQ(search(number(5), "isAbove:"_sel), nullptr);
  EXPECT_TRUE(raises(NSUndefinedKeyException, [&] { search("nowhere"_ns, "valueForKey:"_sel); }));
}

TEST(ValueSearch, AsksClassesThatReadKeysThemselves) {
  auto array = arrayOf({make<Oracle>(nullptr, 2), make<Holder>(nullptr, 2)});
  EXPECT_EQ(indexOfObjectMatchingValue_forKeyPath(array, number(1000), "number"_ns), 0u);
  EXPECT_EQ(indexOfObjectMatchingValue_forKeyPath(array, number(2), "number"_ns), 1u);
}

TEST(ValueSearch, GoesOnWhenReadingChangesTheArray) {
  auto array = NSMutableArray::array();
  for (int i = 0; i < 4; ++i) {
    auto holder = make<Holder>(nullptr, i);
    holder->whenRead = [&] { array->removeAllObjects(); };
    array->addObject(holder);
  }
  EXPECT_EQ(indexOfObjectMatchingValue_forKeyPath(array, number(3), "number"_ns), NSNotFound);
  EXPECT_EQ(array->count(), 0u);
}

TEST(SortedSearch, StandsNonsense) {
  auto array = arrayWithObject_repeatedNumberOfTimes("x"_ns, 1000);
  // Only exactly +1 leads further on, and only exactly 0 is a find.
  const struct {
    std::vector<int> answers;
    std::uint32_t found, insertion;
  } cases[] = {{{-2}, NSNotFound, 0},
               {{1}, NSNotFound, 1000},
               {{1, 7}, NSNotFound, 500},
               {{-1, 1, 7, -2, 1, 0}, 306, 281}};
  for (const auto& each : cases) {
    auto moody = make<Moody>(each.answers);
    EXPECT_EQ(indexOfObject_inArraySortedUsingSelector(array, moody, "judge:"_sel), each.found);
    EXPECT_LE(moody->asked, 11u);
    moody = make<Moody>(each.answers);
    EXPECT_EQ(insertionIndexForObject_sortedUsingSelector(array, moody, "judge:"_sel),
              each.insertion);
    EXPECT_LE(moody->asked, 12u);
  }
  // The Object itself is found without asking it.
  auto moody = make<Moody>(std::vector<int>{7});
  auto only = arrayOf({moody});
  EXPECT_EQ(indexOfObject_inArraySortedUsingSelector(only, moody, "judge:"_sel), 0u);
  EXPECT_EQ(moody->asked, 0u);
}

TEST(DerivedArrays, WantAnAnswerOfEachElementOrAPlaceholder) {
  auto array = arrayOf({make<Holder>("a"_ns), make<Holder>(nullptr)});
  EXPECT_EQ(arrayByPerformingSelector(array, "value"_sel), nullptr);
  EXPECT_EQ(arrayByPerformingSelector(array, "takeNote"_sel), nullptr);
  EXPECT_EQ(text(arrayByPerformingSelector_object(array, "valueOr:"_sel, "b"_ns)), "ab");
  EXPECT_EQ(
      text(arrayByPerformingSelector_object_nilPlaceholder(array, "value"_sel, nullptr, "p"_ns)),
      "ap");
  EXPECT_TRUE(refuses([&] { arrayByPerformingSelector(array, "number"_sel); }));
}

TEST(DerivedArrays, FilterByTheLowByteAndInPlaceByTheWhole) {
  auto array = NSMutableArray::array();
  for (int value : {0, 1, 2, 256, 257}) array->addObject(make<Holder>("x"_ns, value));
  const auto values = [](NSArray* of) {
    return to_string(arrayForKeyPath(of, "number"_ns)->componentsJoinedByString(" "_ns));
  };
  EXPECT_EQ(values(arrayByFilteringWithSelector(array, "isAbove:"_sel)), "1 2 257");
  EXPECT_EQ(
      values(arrayByFilteringWithSelector_object_matching(array, "isAbove:"_sel, nullptr, false)),
      "0 256");
  filterObjectsWithSelector(array, "isAbove:"_sel);
  EXPECT_EQ(values(array), "1 2 256 257");
  filterObjectsWithSelector_object_matching(array, "isAbove:"_sel, number(2), false);
  EXPECT_EQ(values(array), "2");
}

TEST(DerivedArrays, RepeatAnObject) {
  EXPECT_EQ(text(arrayWithObject_repeatedNumberOfTimes("a"_ns, 3)), "aaa");
  for (int count : {0, -1})
    EXPECT_EQ(arrayWithObject_repeatedNumberOfTimes("a"_ns, count)->count(), 0u);
  EXPECT_TRUE(refuses([] { arrayWithObject_repeatedNumberOfTimes(nullptr, 1); }));
}

TEST(DerivedArrays, SortByKeyPathStably) {
  Holders holders;
  for (int i = 0; i < 100; ++i) holders.push_back(make<Holder>(number(i), i * 37 % 7));
  auto sorted = sortedArrayUsingKeyPath(NSArray::fromRange(holders), "number"_ns);
  for (const auto& each : holders) EXPECT_EQ(each->reads, 1);
  auto expected = holders;
  std::ranges::stable_sort(expected, {}, [](const auto& each) { return each->number(); });
  EXPECT_EQ(sorted->toVector(), std::vector<Ref<NSObject>>(expected.begin(), expected.end()));
  // Nil compares as the same with everything, so nothing moves across it.
  auto gap = arrayOf({make<Holder>(nullptr), make<Holder>("b"_ns)});
  EXPECT_TRUE(sortedArrayUsingKeyPath(gap, "value.self"_ns)->isEqual(gap));
}

TEST(DerivedDictionaries, KeepTheLastOfEqualKeys) {
  auto array = arrayOf({make<Holder>("k"_ns, 1), make<Holder>(nullptr, 2), make<Holder>("l"_ns, 3),
                        make<Holder>("k"_ns, 4)});
  auto numbers = dictionaryWithKeyPathForKeys_keyPathForValues(array, "value"_ns, "number"_ns);
  EXPECT_EQ(numbers->count(), 2u);
  EXPECT_EQ(to_string(numbers->objectForKey("k"_ns)), "4");
  auto values = dictionaryWithKeyPathForKeys_keyPathForValues(array, "number"_ns, "value"_ns);
  EXPECT_EQ(values->objectForKey(number(2)), NSNull::null());
  EXPECT_TRUE(refuses([&] { dictionaryIndexedByKeyPath(array->objectEnumerator(), "value"_ns); }));
  auto walk = array->reverseObjectEnumerator();
  walk->nextObject();
  EXPECT_EQ(dictionaryIndexedByKeyPath(walk, "number"_ns)->count(), 3u);  // what is left
}

/// Copies itself in a way of its own when it is copied deeply.
class Stamp : public Derives<Stamp, NSObject> {
 public:
  static void describe(ClassDescription<Stamp>& is) {
    is.named("Stamp")
        .method<&Stamp::stamped>("deepCopy")
        .method<&Stamp::stamped>("copyMutableContainers");
  }
  Ref<NSObject> stamped() { return "stamped"_ns; }
};

TEST(DeepCopies, SettleOrOpenEveryLevel) {
  auto leaf = NSMutableString::stringWithString("leaf"_ns);
  auto inner = NSMutableArray::arrayWithObjects({leaf, make<Stamp>()});
  auto outer = NSMutableArray::arrayWithObjects({inner, NSArray::array()});
  auto settled = as<NSArray>(deepCopy(outer));
  auto open = as<NSMutableArray>(copyMutableContainers(outer));
  leaf->setString("changed"_ns);
  inner->removeLastObject();
  for (const auto& copy : {settled, Ref<NSArray>(open)}) {
    EXPECT_EQ(to_string(copy), "(\n    (\n        leaf,\n        stamped\n    ),\n    ()\n)");
    EXPECT_FALSE(isKind<NSMutableString>(as<NSArray>(copy->objectAtIndex(0))->objectAtIndex(0)));
    for (NSObject* each : copy) EXPECT_EQ(isKind<NSMutableArray>(each), copy == open);
  }
}

TEST(ArrayAlgebra, HoldsForRandomArrays) {
  std::mt19937 random(11);
  for (int round = 0; round < 200; ++round) {
    std::vector<Ref<NSObject>> objects;
    for (auto left = random() % 40; left > 0; --left)
      objects.push_back(number(static_cast<int>(random() % 20)));
    auto array = NSMutableArray::fromRange(objects);
    auto pivot = number(static_cast<int>(random() % 20));

    auto map = sortMapUsingSelector(array, "compare:"_sel);
    EXPECT_TRUE(arrayUsingMap(arrayUsingMap(array, map), map->inverseMap())->isEqual(array));

    auto kept = arrayByFilteringWithSelector_object(array, "isEqual:"_sel, pivot);
    auto rest = arrayByFilteringWithSelector_object_matching(array, "isEqual:"_sel, pivot, false);
    EXPECT_EQ(kept->count() + rest->count(), array->count());
    EXPECT_TRUE(rest->isEqual(arrayByRemovingObject(array, pivot)));
    EXPECT_TRUE(kept->isEqual(arrayByMatchingValue_forKeyPath(array, pivot, "self"_ns)));
    EXPECT_TRUE(reversedArray(reversedArray(array))->isEqual(array));

    auto sorted = NSMutableArray::array();
    for (NSObject* each : array) insertObject_sortedBySelector(sorted, each, "compare:"_sel);
    EXPECT_TRUE(sorted->isEqual(sortedArrayUsingKeyPath(array, "self"_ns)));
    const std::uint32_t at =
        indexOfObject_inArraySortedUsingSelector(sorted, pivot, "compare:"_sel);
    EXPECT_EQ(at != NSNotFound, array->containsObject(pivot));
    const auto place = insertionIndexForObject_sortedUsingSelector(sorted, pivot, "compare:"_sel);
    EXPECT_EQ(place, std::ranges::count_if(objects, [&](NSObject* each) {
                return as<NSNumber>(each)->intValue() < pivot->intValue();
              }));
  }
}

}  // namespace
}  // namespace qz::test
