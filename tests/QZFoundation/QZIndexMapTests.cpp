#include "Platform/Runtime/NSAssertionHandler.h"
#include "QZFoundation/QZIndexMap.h"
#include "tests/support/Letters.h"
#include "tests/support/Witness.h"

namespace qz::test {
namespace {

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

TEST(QZIndexMap, IsMadeFromVectorsAndNumbers) {
  EXPECT_THAT(QZIndexMap::identityMapWithCount(3)->entries(), ElementsAre(0, 1, 2));
  EXPECT_EQ(QZIndexMap::identityMapWithCount(-1)->count(), 0u);
  EXPECT_THAT(mapOf({2, 0, 1})->entries(), ElementsAre(2, 0, 1));
  EXPECT_THAT(QZIndexMap::initWithIndices(numbers({1, 0}))->entries(), ElementsAre(1, 0));
  EXPECT_THAT(QZIndexMap::initWithIndices(arrayOf({"1"_ns, "0"_ns}))->entries(), ElementsAre(1, 0));
  auto* vector = static_cast<std::int32_t*>(std::malloc(2 * sizeof(std::int32_t)));
  vector[0] = 1;
  vector[1] = 0;
  auto owner = QZIndexMap::initWithIndicesNoCopy_count(vector, 2);
  EXPECT_EQ(owner->indices(), vector);
  EXPECT_TRUE(refuses([] { QZIndexMap::initWithIndices_count(nullptr, 3); }, {"3"}));
  EXPECT_TRUE(refuses([] {
    QZIndexMap::initWithIndicesNoCopy_count(static_cast<std::int32_t*>(std::malloc(4)), -1);
  }));
}

TEST(QZIndexMap, MovesListedElements) {
  auto move = [](std::initializer_list<int> indices, int destination, int count) {
    return QZIndexMap::mapToMoveIndices_toIndex_count(numbers(indices), destination, count);
  };
  EXPECT_THAT(move({4, 1}, 3, 6)->entries(), ElementsAre(0, 2, 4, 1, 3, 5));
  EXPECT_THAT(move({0, 5}, 6, 6)->entries(), ElementsAre(1, 2, 3, 4, 0, 5));
  EXPECT_THAT(move({2}, 100, 4)->entries(), ElementsAre(0, 1, 3, 2));
  EXPECT_THAT(move({2}, -5, 4)->entries(), ElementsAre(2, 0, 1, 3));
  EXPECT_THAT(move({}, 2, 3)->entries(), ElementsAre(0, 1, 2));
  for (auto bad : {numbers({6}), numbers({-1}), numbers({1, 2, 1}), numbers({INT32_MAX})})
    EXPECT_TRUE(refusesRange([&] { QZIndexMap::mapToMoveIndices_toIndex_count(bad, 2, 6); }));
  EXPECT_TRUE(refusesRange([&] { move({0}, 0, -1); }));
}

TEST(QZIndexMap, ComposesReversesAndInverts) {
  std::mt19937 random(5);
  for (std::int32_t count : {0, 1, 2, 17, 300}) {
    auto m = randomMap(count, random);
    auto o = randomMap(count, random);
    auto composed = m->mapByApplyingMap(o);
    for (std::int32_t i = 0; i < count; ++i) {
      EXPECT_EQ(composed->indexForIndex(i), m->indexForIndex(o->indexForIndex(i)));
      EXPECT_EQ(m->reverseMap()->indexForIndex(i), m->indexForIndex(count - 1 - i));
    }
    EXPECT_TRUE(
        m->mapByApplyingMap(m->inverseMap())->isEqual(QZIndexMap::identityMapWithCount(count)));
    EXPECT_TRUE(m->inverseMap()->inverseMap()->isEqual(m));
    EXPECT_EQ(m->inverseMap()->inverseMap()->hash(), m->hash());
  }
  EXPECT_FALSE(mapOf({0, 1})->isEqual(mapOf({0, 1, 2})));
}

TEST(QZIndexMap, RefusesEntriesThatLeadNowhere) {
  for (const auto& bad : {mapOf({0, 2}), mapOf({0, -1}), mapOf({0, 0})})
    EXPECT_TRUE(refusesRange([&] { bad->inverseMap(); })) << bad;
  for (const auto& bad : {mapOf({0, 2}), mapOf({-1, 0})})
    EXPECT_TRUE(refusesRange([&] { mapOf({0, 1})->mapByApplyingMap(bad); })) << bad;
  for (const int bad : {2, -1})
    EXPECT_TRUE(refusesRange([&] { mapOf({0, 1})->indexForIndex(bad); })) << bad;
}

TEST(QZIndexMap, MismatchedCountsGoThroughTheAssertionHandler) {
  auto two = QZIndexMap::identityMapWithCount(2);
  auto three = mapOf({2, 1, 0});
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [&] { two->mapByApplyingMap(three); },
                     {"Tried to apply map with differing numbers of indices"}));
  auto lenient = make<Witness>();
  NSAssertionHandler::setCurrentHandler(lenient);
  EXPECT_THAT(three->mapByApplyingMap(mapOf({1, 2, 0, 0}))->entries(), ElementsAre(1, 0, 2));
  EXPECT_EQ(lenient->seen,
            "mapByApplyingMap: QZIndexMap: Tried to apply map with differing numbers of indices");
  EXPECT_EQ(lenient->line, 294);
  // Goes on, but not beyond a vector.
  EXPECT_TRUE(refusesRange([&] { three->mapByApplyingMap(two); }));
  EXPECT_TRUE(refusesRange([&] { two->mapByApplyingMap(three); }));
  EXPECT_TRUE(refusesRange([&] { two->mapByApplyingMap(nullptr); }));
  NSAssertionHandler::setCurrentHandler(nullptr);
}

TEST(QZIndexMap, TranslatesIndicesAndDescribesItself) {
  auto map = mapOf({2, 0, 1});
  auto translated = map->translateIndices(numbers({3, 4, 0, -1, 2, 2}));
  EXPECT_TRUE(translated->isEqual(numbers({2, 1, 1})));
  EXPECT_EQ(as<NSNumber>(translated->objectAtIndex(0))->kind(), NumberKind::UnsignedInt);
  EXPECT_EQ(map->translateIndices(nullptr)->count(), 0u);
  const std::string text = to_string(map);
  EXPECT_TRUE(text.starts_with("<QZIndexMap: 0x") && text.ends_with(">2 0 1 ")) << text;
  EXPECT_EQ(map->copy(), map);
}

}  // namespace
}  // namespace qz::test
