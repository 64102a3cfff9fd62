#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSAssertionHandler.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSNumber.h"
#include "QZFoundation/QZIndexMap.h"
#include "tests/support/Raises.h"

namespace qz::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Ref<NSArray> numbers(std::initializer_list<int> values) {
  auto array = make<NSMutableArray>();
  for (int value : values) array->addObject(NSNumber::numberWithInt(value));
  return array;
}

Ref<QZIndexMap> mapOf(std::vector<std::int32_t> entries) {
  return QZIndexMap::initWithIndices_count(entries.data(),
                                           static_cast<std::int32_t>(entries.size()));
}

Ref<QZIndexMap> randomMap(std::int32_t count, std::mt19937& random) {
  std::vector<std::int32_t> entries(static_cast<std::size_t>(count));
  std::iota(entries.begin(), entries.end(), 0);
  std::ranges::shuffle(entries, random);
  return mapOf(entries);
}

class Lenient : public Derives<Lenient, NSAssertionHandler> {
 public:
  static void describe(ClassDescription<Lenient>& is) { is.named("Lenient"); }
  void handleFailureInMethod_object_file_lineNumber_description(Selector selector, NSObject*,
                                                                NSString* file, std::int32_t line,
                                                                NSString* text) override {
    report = std::string(selector.name()) + " " + to_string(file) + " " + std::to_string(line) +
             " " + to_string(text);
  }
  std::string report;
};

TEST(QZIndexMap, IsMadeFromVectorsAndNumbers) {
  EXPECT_THAT(QZIndexMap::identityMapWithCount(3)->entries(), ElementsAre(0, 1, 2));
  for (int none : {0, -1, INT32_MIN})
    EXPECT_EQ(QZIndexMap::identityMapWithCount(none)->count(), 0u);
  EXPECT_THAT(mapOf({2, 0, 1})->entries(), ElementsAre(2, 0, 1));
  EXPECT_THAT(QZIndexMap::initWithIndices(numbers({1, 0}))->entries(), ElementsAre(1, 0));
  EXPECT_THAT(QZIndexMap::initWithIndices(NSArray::arrayWithObjects({"1"_ns, "0"_ns}))->entries(),
              ElementsAre(1, 0));
  auto* vector = static_cast<std::int32_t*>(std::malloc(2 * sizeof(std::int32_t)));
  vector[0] = 1;
  vector[1] = 0;
  auto owner = QZIndexMap::initWithIndicesNoCopy_count(vector, 2);
  EXPECT_EQ(owner->indices(), vector);
  EXPECT_TRUE(raises(NSInvalidArgumentException,
                     [] { QZIndexMap::initWithIndices_count(nullptr, 3); }, {"3"}));
  EXPECT_TRUE(raises(NSInvalidArgumentException, [] {
    QZIndexMap::initWithIndicesNoCopy_count(static_cast<std::int32_t*>(std::malloc(4)), -1);
  }));
}

TEST(QZIndexMap, MovesListedElements) {
  auto move = [](std::initializer_list<int> indices, int destination, int count) {
    return QZIndexMap::mapToMoveIndices_toIndex_count(numbers(indices), destination, count);
  };
  EXPECT_THAT(move({4, 1}, 3, 6)->entries(), ElementsAre(0, 2, 4, 1, 3, 5));
  EXPECT_THAT(move({5, 4}, 0, 6)->entries(), ElementsAre(5, 4, 0, 1, 2, 3));
  EXPECT_THAT(move({0, 5}, 6, 6)->entries(), ElementsAre(1, 2, 3, 4, 0, 5));
  EXPECT_THAT(move({2}, 100, 4)->entries(), ElementsAre(0, 1, 3, 2));
  EXPECT_THAT(move({2}, -5, 4)->entries(), ElementsAre(2, 0, 1, 3));
  EXPECT_THAT(move({2, 0, 1}, 1, 3)->entries(), ElementsAre(2, 0, 1));
  EXPECT_THAT(move({}, 2, 3)->entries(), ElementsAre(0, 1, 2));
  EXPECT_THAT(move({}, 0, -3)->entries(), IsEmpty());
  for (auto bad : {numbers({6}), numbers({-1}), numbers({1, 2, 1}), numbers({INT32_MAX})})
    EXPECT_TRUE(
        raises(NSRangeException, [&] { QZIndexMap::mapToMoveIndices_toIndex_count(bad, 2, 6); }));
  EXPECT_TRUE(raises(NSRangeException, [&] { move({0}, 0, -1); }));
}

TEST(QZIndexMap, ComposesReversesAndInverts) {
  std::mt19937 random(5);
  for (std::int32_t count : {0, 1, 2, 17, 300}) {
    auto m = randomMap(count, random);
    auto o = randomMap(count, random);
    auto composed = m->mapByApplyingMap(o);
    for (std::int32_t i = 0; i < count; ++i)
      EXPECT_EQ(composed->indexForIndex(i), m->indexForIndex(o->indexForIndex(i)));
    EXPECT_TRUE(
        m->mapByApplyingMap(m->inverseMap())->isEqual(QZIndexMap::identityMapWithCount(count)));
    EXPECT_TRUE(m->inverseMap()->inverseMap()->isEqual(m));
    EXPECT_EQ(m->inverseMap()->inverseMap()->hash(), m->hash());
    EXPECT_TRUE(m->reverseMap()->reverseMap()->isEqual(m));
    if (count > 0) {
      EXPECT_EQ(m->reverseMap()->indexForIndex(0), m->indexForIndex(count - 1));
    }
  }
  EXPECT_FALSE(mapOf({0, 1})->isEqual(mapOf({0, 1, 2})));
}

TEST(QZIndexMap, RefusesEntriesThatLeadNowhere) {
  auto leaves = [](auto code) { return raises(NSRangeException, code); };
  EXPECT_TRUE(leaves([] { mapOf({0, 2})->inverseMap(); }));
  EXPECT_TRUE(leaves([] { mapOf({0, -1})->inverseMap(); }));
  EXPECT_TRUE(leaves([] { mapOf({0, 0})->inverseMap(); }));
  EXPECT_TRUE(leaves([] { mapOf({0, 1})->mapByApplyingMap(mapOf({0, 2})); }));
  EXPECT_TRUE(leaves([] { mapOf({0, 1})->mapByApplyingMap(mapOf({-1, 0})); }));
  EXPECT_TRUE(leaves([] { mapOf({0, 1})->indexForIndex(2); }));
  EXPECT_TRUE(leaves([] { mapOf({0, 1})->indexForIndex(-1); }));
  EXPECT_TRUE(leaves([] { make<QZIndexMap>()->indexForIndex(0); }));
}

TEST(QZIndexMap, MismatchedCountsGoThroughTheAssertionHandler) {
  auto two = QZIndexMap::identityMapWithCount(2);
  auto three = mapOf({2, 1, 0});
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [&] { two->mapByApplyingMap(three); },
                     {"Tried to apply map with differing numbers of indices"}));
  auto lenient = make<Lenient>();
  NSAssertionHandler::setCurrentHandler(lenient);
  EXPECT_THAT(three->mapByApplyingMap(mapOf({1, 2, 0, 0}))->entries(), ElementsAre(1, 0, 2));
  EXPECT_EQ(lenient->report,
            "mapByApplyingMap: QZIndexMap 294 "
            "Tried to apply map with differing numbers of indices");
  // Goes on, but not beyond a vector.
  EXPECT_TRUE(raises(NSRangeException, [&] { three->mapByApplyingMap(two); }));
  EXPECT_TRUE(raises(NSRangeException, [&] { two->mapByApplyingMap(three); }));
  EXPECT_TRUE(raises(NSRangeException, [&] { two->mapByApplyingMap(nullptr); }));
  NSAssertionHandler::setCurrentHandler(nullptr);
}

TEST(QZIndexMap, TranslatesIndicesAndDescribesItself) {
  auto map = mapOf({2, 0, 1});
  auto translated = map->translateIndices(numbers({3, 4, 0, -1, 2, 2}));
  EXPECT_TRUE(translated->isEqual(numbers({2, 1, 1})));
  EXPECT_EQ(as<NSNumber>(translated->objectAtIndex(0))->kind(), NumberKind::UnsignedInt);
  EXPECT_EQ(map->translateIndices(nullptr)->count(), 0u);
  const std::string text = to_string(map);
  EXPECT_TRUE(text.starts_with("<QZIndexMap: 0x"));
  EXPECT_TRUE(text.ends_with(">2 0 1 "));
  EXPECT_TRUE(to_string(make<QZIndexMap>()).ends_with(">"));
  EXPECT_EQ(map->copy(), map);
}

TEST(QZIndexMap, AnswersBySelector) {
  Class* aClass = NSClassFromString("QZIndexMap"_ns);
  auto map = send<Ref<QZIndexMap>>(aClass, "initWithIndices:"_sel, numbers({1, 0, 2}));
  auto empty = send<Ref<NSObject>>(aClass, "alloc"_sel);
  EXPECT_TRUE(
      send<Ref<QZIndexMap>>(empty, "initWithIndices:"_sel, numbers({1, 0, 2}))->isEqual(map));
  EXPECT_EQ(send<int>(map, "indexForIndex:"_sel, 1), 0);
  EXPECT_EQ(send<const std::int32_t*>(map, "indices"_sel), map->indices());
  const std::int32_t entries[] = {1, 0};
  EXPECT_EQ(send<Ref<QZIndexMap>>(aClass, "initWithIndices:count:"_sel,
                                  static_cast<const std::int32_t*>(entries), 2)
                ->count(),
            2u);
  EXPECT_TRUE(send<Ref<QZIndexMap>>(map, "inverseMap"_sel)->isEqual(map));
  EXPECT_TRUE(raises(NSInvalidArgumentException,
                     [&] { send<Ref<QZIndexMap>>(map, "mapByApplyingMap:"_sel, "x"_ns); },
                     {"mapByApplyingMap:", "NSString", "QZIndexMap"}));
}

}  // namespace
}  // namespace qz::test
