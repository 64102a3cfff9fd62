#include "QZFoundation/QZKeyValueSyncer.h"

#include "Platform/Runtime/WeakRef.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

Ref<QZKeyValueSyncer> sizesAndNames() {
  auto syncer = QZKeyValueSyncer::initWithPrimaryKey_secondaryKey("size"_ns, "name"_ns);
  syncer->setPrimaryValue_forSecondaryValue(number(1), "a"_ns);
  syncer->setPrimaryValue_forSecondaryValue(number(2), "b"_ns);
  return syncer;
}

TEST(QZKeyValueSyncer, SetsEachKeyFromTheOther) {
  auto syncer = sizesAndNames();
  auto object = make<NSMutableDictionary>();
  syncer->observeObject(object);
  syncer->observeObject(object);  // once is enough
  struct {
    NSString* key;
    Ref<NSObject> value;
    const char* size;
    const char* name;
  } const cases[] = {
      {"size"_ns, number(2), "2", "b"},
      {"name"_ns, "a"_ns, "1", "a"},
      {"size"_ns, number(9), "(null)", "(null)"},  // an unpaired value does not survive
      {"size"_ns, number(1), "1", "a"},
      {"name"_ns, "nobody"_ns, "(null)", "(null)"},
      {"name"_ns, "b"_ns, "2", "b"},
      {"size"_ns, nullptr, "(null)", "(null)"},
  };
  for (const auto& each : cases) {
    object->setValue_forKey(each.value, each.key);
    EXPECT_EQ(to_string(object->valueForKey("size"_ns)), each.size) << each.key;
    EXPECT_EQ(to_string(object->valueForKey("name"_ns)), each.name) << each.key;
  }
  syncer->unobserveObject(object);
  syncer->unobserveObject(object);
  object->setValue_forKey(number(2), "size"_ns);
  EXPECT_EQ(object->valueForKey("name"_ns), nullptr);
}

TEST(QZKeyValueSyncer, TablesKeepTheirOwnLatestPair) {
  auto syncer = sizesAndNames();
  syncer->setPrimaryValue_forSecondaryValue(number(1), "c"_ns);
  EXPECT_EQ(to_string(syncer->secondaryValueForPrimaryValue(number(1))), "c");
  EXPECT_EQ(to_string(syncer->primaryValueForSecondaryValue("a"_ns)), "1");
  EXPECT_EQ(syncer->primaryValueForSecondaryValue(nullptr), nullptr);
  EXPECT_TRUE(refuses([&] { syncer->setPrimaryValue_forSecondaryValue(nullptr, "d"_ns); }));
}

TEST(QZKeyValueSyncer, UpdatesWhatItWatchesOnDemand) {
  auto syncer = sizesAndNames();
  auto one = make<NSMutableDictionary>();
  auto two = make<NSMutableDictionary>();
  one->setValue_forKey(number(1), "size"_ns);
  two->setValue_forKey("b"_ns, "name"_ns);
  syncer->observeObject(one);
  syncer->observeObject(two);
  EXPECT_EQ(one->valueForKey("name"_ns), nullptr) << "not when it begins to watch";
  syncer->updateSecondaryValueForObject(one);
  syncer->updatePrimaryValueForObject(two);
  syncer->updatePrimaryValues();
  send<void>(syncer, "updateSecondaryValues"_sel);
  EXPECT_TRUE(one->isEqual(NSDictionary::of({{"size"_ns, number(1)}, {"name"_ns, "a"_ns}})));
  EXPECT_TRUE(two->isEqual(NSDictionary::of({{"size"_ns, number(2)}, {"name"_ns, "b"_ns}})));
}

TEST(QZKeyValueSyncer, EndsWithItsWatching) {
  auto object = make<NSMutableDictionary>();
  WeakRef<NSMutableDictionary> weak = object;
  {
    auto syncer = sizesAndNames();
    syncer->observeObject(object);
    object = nullptr;
    EXPECT_FALSE(weak.expired()) << "what is watched is kept";
    object = weak.load();
  }
  EXPECT_FALSE(detail::isObserved(object));
  object->setValue_forKey(number(1), "size"_ns);
  EXPECT_EQ(object->valueForKey("name"_ns), nullptr);
}

// Dictionaries are equal, and have other hashes, as their values change.
TEST(QZKeyValueSyncer, WatchesTheVeryObjects) {
  auto syncer = sizesAndNames();
  auto one = make<NSMutableDictionary>();
  auto two = make<NSMutableDictionary>();
  syncer->observeObject(one);
  syncer->observeObject(two);
  one->setValue_forKey(number(1), "size"_ns);
  two->setValue_forKey(number(2), "size"_ns);
  EXPECT_EQ(to_string(two->valueForKey("name"_ns)), "b");
  syncer->unobserveObject(one);
  EXPECT_FALSE(detail::isObserved(one));
  one->setValue_forKey(number(2), "size"_ns);
  EXPECT_EQ(to_string(one->valueForKey("name"_ns)), "a");
}

TEST(QZKeyValueSyncer, WatchesBothKeysOrNone) {
  auto syncer = QZKeyValueSyncer::initWithPrimaryKey_secondaryKey("size"_ns, "all.size"_ns);
  auto object = NSMutableDictionary::of({{"all"_ns, NSArray::array()}});
  EXPECT_TRUE(refuses([&] { syncer->observeObject(object); }));  // no path leads through Arrays
  EXPECT_FALSE(detail::isObserved(object));
}

TEST(QZKeyValueSyncer, KeysAreRequired) {
  const auto failure = [](NSString* primary, NSString* secondary) {
    try {
      QZKeyValueSyncer::initWithPrimaryKey_secondaryKey(primary, secondary);
    } catch (const Raised& raised) {
      const auto info = raised->userInfo();
      return raised.what() + (" " + to_string(info->objectForKey("NSAssertionFile"_ns))) + " " +
             to_string(info->objectForKey("NSAssertionLine"_ns));
    }
    return std::string("none");
  };
  const std::string kind = to_string(NSInternalInconsistencyException);
  EXPECT_EQ(failure(nullptr, "b"_ns), kind + ": Primary key is nil QZKeyValueSyncer 18");
  EXPECT_EQ(failure("a"_ns, nullptr), kind + ": Secondary key is nil QZKeyValueSyncer 19");
}

}  // namespace
}  // namespace qz::test
