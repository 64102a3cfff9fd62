#include "QZFoundation/NSArray-QZIndexMap.h"
#include "QZFoundation/NSObject-QZFoundation.h"
#include "tests/support/Letters.h"
#include "tests/support/Person.h"

namespace qz::test {
namespace {

/// Compares by a field with an operation of its own, so that nothing is known of its key.
class Card : public Derives<Card, NSObject> {
 public:
  static void describe(ClassDescription<Card>& is) {
    is.named("Card")
        .field<&Card::value>("value")
        .method<&Card::compareTo>("compareTo:")
        .method<&Card::compareTo_by>("compareTo:by:")
        .method<&Card::fail>("fail:")
        .method<&Card::answer>("answer:");
  }
  explicit Card(NSObject* itsValue) : value(itsValue) {}
  NSComparisonResult compareTo(Card* other) const {
    return send<NSComparisonResult>(value, "compare:"_sel, other->value);
  }
  NSComparisonResult compareTo_by(Card* other, NSObject* extra) const {
    EXPECT_EQ(to_string(extra), "extra");
    return compareTo(other);
  }
  NSComparisonResult fail(Card*) const { detail::raise(NSGenericException, "on purpose"); }
  int answer(Card*) const { return fixedAnswer; }
  Ref<NSObject> value;
  static inline int fixedAnswer = 0;
};

Ref<NSMutableArray> cards(NSArray* values) {
  auto array = make<NSMutableArray>();
  for (NSObject* value : *values) array->addObject(make<Card>(value));
  return array;
}

TEST(MapSort, SortsAndReplays) {
  auto array = numbers({3, 1, 2});
  auto map = sortMapUsingSelector(array, "compare:"_sel);
  EXPECT_THAT(map->entries(), ElementsAre(1, 2, 0));
  EXPECT_THAT(map->inverseMap()->entries(), ElementsAre(2, 0, 1));
  EXPECT_TRUE(arrayUsingMap(array, map)->isEqual(numbers({1, 2, 3})));
  EXPECT_THAT(sortMapUsingSelector(numbers({9}), "nonsense"_sel)->entries(), ElementsAre(0));
  auto view = make<Computed>(3u, [](std::uint32_t i) { return number(2000 * ((i + 2) % 3 + 1)); });
  EXPECT_THAT(sortMapUsingSelector(view, "compare:"_sel)->entries(), ElementsAre(1, 2, 0));
  EXPECT_TRUE(arrayUsingMap(view, map)->isEqual(numbers({2000, 4000, 6000})));
}

// Every road must end at the permutation that the plain scheme makes, equal elements included:
// the cards hide the same values behind an operation that can only be sent.
void expectSameAsSending(NSArray* values, const std::string& what) {
  auto hidden = cards(values);
  auto sent = sortMapUsingSelector(hidden, "compareTo:"_sel);
  EXPECT_TRUE(sortMapUsingSelector(values, "compare:"_sel)->isEqual(sent)) << what;
  EXPECT_TRUE(sortMapUsingKeyPath(hidden, "value"_ns)->isEqual(sent)) << what;
}

TEST(MapSort, KeysGiveThePermutationThatSendingGives) {
  std::mt19937 random(11);
  const std::vector<std::function<Ref<NSObject>()>> makers = {
      [&] { return number(static_cast<int>(random())); },
      [&] { return number(static_cast<int>(random() % 7)); },
      [&] { return number(5); },
      [&] { return NSNumber::numberWithBool(random() % 2 == 0); },
      [&] { return NSNumber::numberWithDouble(std::ldexp(double(random()), -40)); },
      [&] {
        const double some[] = {0.0, -0.0, nan, -nan, INFINITY, -INFINITY, 1.5};
        return NSNumber::numberWithDouble(some[random() % 7]);
      },
      [&]() -> Ref<NSNumber> {  // exact as doubles, so still one kind of key
        if (random() % 2 == 0) return number(static_cast<int>(random() % 9));
        return NSNumber::numberWithDouble(double(random() % 9) / 2);
      },
      [&]() -> Ref<NSNumber> {  // no key type holds all of these
        const std::uint64_t large[] = {~0ull, 1ull << 63, (1ull << 53) + 1, 3};
        if (random() % 2 == 0) return NSNumber::numberWithUnsignedLongLong(large[random() % 4]);
        return NSNumber::of(9007199254740992.0);
      },
      [&] {
        std::u16string text(random() % 9, u'a');
        for (auto& unit : text) unit = static_cast<char16_t>(u'a' + random() % 3);
        return ns(text);
      },
      [&]() -> Ref<NSString> {  // zeros, and units beyond the surrogates
        const char16_t units[] = {0, u'a', 0xD800, 0xDC00, 0xFFFF};
        std::u16string text(random() % 6, u'\0');
        for (auto& unit : text) unit = units[random() % 5];
        if (random() % 2 == 0) return ns(text);
        return as<NSString>(ns(text)->mutableCopy());
      },
      [&]() -> Ref<NSString> { return "the same prefix throughout"_ns; },
      [&] {  // the keys lie behind what all begin with, which some do not go beyond
        std::u16string text = u"/usr/share/";
        for (auto more = random() % 7; more > 0; --more) text += u"ab\0"[random() % 3];
        return ns(text);
      },
  };
  for (std::size_t m = 0; m < makers.size(); ++m)
    for (std::uint32_t count : {2u, 3u, 10u, 47u, 200u, 3000u}) {
      auto values = make<NSMutableArray>();
      for (std::uint32_t i = 0; i < count; ++i) values->addObject(makers[m]());
      expectSameAsSending(values, "maker " + std::to_string(m) + ", " + std::to_string(count));
    }
}

NSComparisonResult backwards(NSNumber* self, NSNumber* other) {
  return static_cast<NSComparisonResult>(-self->compare(other));
}

TEST(MapSort, UsesAReplacedComparison) {
  auto array = numbers({2, 3, 1});
  const auto old = classOf<NSNumber>()->replaceInstanceMethod(
      "compare:"_sel, detail::InstanceMethod<NSNumber, &backwards>::spec().imp);
  EXPECT_THAT(sortMapUsingSelector(array, "compare:"_sel)->entries(), ElementsAre(1, 0, 2));
  classOf<NSNumber>()->replaceInstanceMethod("compare:"_sel, old);
  EXPECT_THAT(sortMapUsingSelector(array, "compare:"_sel)->entries(), ElementsAre(2, 0, 1));
}

TEST(MapSort, PassesTheExtraObjectAndSurvivesOddComparisons) {
  auto array = cards(numbers({3, 1, 2}));
  EXPECT_THAT(sortMapUsingSelector_withObject(array, "compareTo:by:"_sel, "extra"_ns)->entries(),
              ElementsAre(1, 2, 0));
  EXPECT_THAT(sortMapUsingSelector_withObject(array, "compareTo:"_sel, "unseen"_ns)->entries(),
              ElementsAre(1, 2, 0));
  EXPECT_TRUE(raises(NSGenericException, [&] { sortMapUsingSelector(array, "fail:"_sel); }));
  EXPECT_TRUE(refuses([&] { sortMapUsingSelector(array, "unknown:"_sel); }, {"Card", "unknown:"}));
  EXPECT_TRUE(refuses([&] { sortMapUsingSelector(arrayOf({"a"_ns, number(1)}), "compare:"_sel); }));
  std::vector<Ref<NSObject>> many(500, number(0));
  for (int answer : {0, 7, -2, 1, -1}) {
    Card::fixedAnswer = answer;
    auto map = sortMapUsingSelector(cards(NSArray::fromRange(many)), "answer:"_sel);
    map->inverseMap();  // raises unless it is a permutation
    EXPECT_EQ(map->count(), 500u);
  }
}

TEST(MapSort, SortsByKeyPathsWithNilAndCase) {
  auto people = make<NSMutableArray>();
  for (NSString* name : {"bob"_ns, "Ann"_ns, "Carl"_ns}) people->addObject(make<Person>(name));
  EXPECT_THAT(sortMapUsingKeyPath(people, "name"_ns)->entries(), ElementsAre(1, 2, 0));
  EXPECT_THAT(sortMapUsingKeyPath(people, "name.length"_ns)->entries().front(), ::testing::Ne(2));
  auto folded =
      sortMapUsingKeyPath_selector(people, "name"_ns, "caseInsensitiveCompare:usingKeyPath:"_sel);
  EXPECT_THAT(folded->entries(), ElementsAre(1, 0, 2));
  EXPECT_TRUE(raises(NSUndefinedKeyException, [&] { sortMapUsingKeyPath(people, "size"_ns); }));
  auto nameless = arrayOf({make<Person>(), make<Person>()});
  EXPECT_THAT(sortMapUsingKeyPath(nameless, "name"_ns)->entries(), ElementsAre(1, 0));
}

TEST(MapSort, ReordersInPlaceAndKeepsEveryElementAlive) {
  const int before = Person::alive;
  auto people = make<NSMutableArray>();
  for (int age : {40, 10, 30, 20}) people->addObject(make<Person>("x"_ns, age));
  auto map = mapFromSortingUsingSelector(people, "compareByAge:"_sel);
  EXPECT_THAT(map->entries(), ElementsAre(1, 3, 2, 0));
  EXPECT_TRUE(people->valueForKey("age"_ns)->isEqual(numbers({10, 20, 30, 40})));
  reorderUsingMap(people, map->inverseMap());
  EXPECT_TRUE(people->valueForKey("age"_ns)->isEqual(numbers({40, 10, 30, 20})));
  sortUsingSelector_withObject(people, "compareByAge:"_sel, nullptr);
  EXPECT_EQ(Person::alive, before + 4);
  mutableArrayUsingMap(people, map)->removeAllObjects();

  const std::int32_t outside[] = {0, 1, 2, 4};
  for (auto bad :
       {QZIndexMap::identityMapWithCount(3), QZIndexMap::initWithIndices_count(outside, 4)}) {
    EXPECT_TRUE(refusesRange([&] { reorderUsingMap(people, bad); }));
    EXPECT_TRUE(refusesRange([&] { arrayUsingMap(people, bad); }));
  }
  EXPECT_TRUE(people->valueForKey("age"_ns)->isEqual(numbers({10, 20, 30, 40})));
  EXPECT_TRUE(refuses([&] { arrayUsingMap(people, nullptr); }));
  people = nullptr;
  EXPECT_EQ(Person::alive, before);
}

// Deep recursion or quadratic time would show here as a crash or as the test's time-out.
TEST(MapSort, MillionsOfEqualOrOrganPipeElementsAreNoTrouble) {
  auto equalOnes = make<NSMutableArray>();
  auto organPipe = make<NSMutableArray>();
  for (int i = 0; i < 1'000'000; ++i) {
    equalOnes->addObject(number(5));
    organPipe->addObject(number(i < 500'000 ? i : 1'000'000 - i));
  }
  EXPECT_EQ(sortMapUsingSelector(equalOnes, "compare:"_sel)->inverseMap()->count(), 1'000'000u);
  auto map = sortMapUsingSelector(organPipe, "compare:"_sel);
  EXPECT_EQ(map->indexForIndex(999'999), 500'000);
  map->inverseMap();
}

}  // namespace
}  // namespace qz::test
