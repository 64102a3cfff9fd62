#include "Platform/Collections/NSSortDescriptor.h"

#include "tests/support/Letters.h"
#include "tests/support/Person.h"

namespace qz::test {
namespace {

/// Counts how often its value is read.
class Reading : public Derives<Reading, NSObject> {
 public:
  static void describe(ClassDescription<Reading>& is) {
    is.named("Reading")
        .property<&Reading::first>("first")
        .property<&Reading::second>("second")
        .field<&Reading::tag>("tag");
  }
  explicit Reading(int number) : tag(number) {}
  int first() const { return ++reads, tag % 3; }
  int second() const { return ++reads, -tag; }
  int tag;
  static inline int reads = 0;
};

/// Orders by the last digit, whatever the key says.
class ByDigit : public Derives<ByDigit, NSSortDescriptor> {
 public:
  static void describe(ClassDescription<ByDigit>& is) { is.named("ByDigit"); }
  ByDigit() : Derives("tag"_ns, true) {}
  NSComparisonResult compareObject_toObject(NSObject* a, NSObject* b) const override {
    const int difference = as<Reading>(a)->tag % 10 - as<Reading>(b)->tag % 10;
    return static_cast<NSComparisonResult>(difference);  // not only -1, 0 and 1
  }
};

std::string tags(NSArray* readings) { return text(readings->valueForKey("tag"_ns), " "_ns); }

Ref<NSArray> readings(std::initializer_list<int> tags) {
  auto array = NSMutableArray::array();
  for (int tag : tags) array->addObject(make<Reading>(tag));
  return array;
}

TEST(NSSortDescriptor, SortsByEarlierKeysFirstAndReadsEachValueOnce) {
  auto array = readings({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
  auto descriptors = NSArray::arrayWithObjects(
      {NSSortDescriptor::initWithKey_ascending("first"_ns, false),
       NSSortDescriptor::initWithKey_ascending_selector("second"_ns, true, "compare:"_sel)});
  Reading::reads = 0;
  auto sorted = array->sortedArrayUsingDescriptors(descriptors);
  EXPECT_EQ(tags(sorted), "11 8 5 2 10 7 4 1 12 9 6 3");
  EXPECT_LE(Reading::reads, 24);
  as<NSMutableArray>(array)->sortUsingDescriptors(descriptors);
  EXPECT_EQ(array->toVector(), sorted->toVector());
  EXPECT_EQ(array->sortedArrayUsingDescriptors(nullptr)->toVector(), array->toVector());
  EXPECT_TRUE(refuses([&] { array->sortedArrayUsingDescriptors(array); }, {"NSSortDescriptor"}));
}

TEST(NSSortDescriptor, AsksADerivedClassToCompare) {
  auto sorted = readings({31, 12, 23, 40, 22})
                    ->sortedArrayUsingDescriptors(NSArray::arrayWithObject(make<ByDigit>()));
  EXPECT_EQ(tags(sorted), "40 31 12 22 23");
}

TEST(NSSortDescriptor, PutsNilBeforeEverythingWhenAscending) {
  auto ann = make<Person>("Ann"_ns, 1);
  auto nobody = make<Person>();
  auto byName = NSSortDescriptor::initWithKey_ascending("name"_ns, true);
  EXPECT_EQ(byName->compareObject_toObject(nobody, ann), NSOrderedAscending);
  EXPECT_EQ(byName->compareObject_toObject(nobody, make<Person>()), NSOrderedSame);
  EXPECT_EQ(byName->reversedSortDescriptor()->compareObject_toObject(nobody, ann),
            NSOrderedDescending);
  auto itself = NSSortDescriptor::initWithKey_ascending(nullptr, false);
  EXPECT_EQ(itself->compareObject_toObject("a"_ns, "b"_ns), NSOrderedDescending);
}

TEST(NSSortDescriptor, IsEqualByKeyDirectionAndSelector) {
  auto one = NSSortDescriptor::initWithKey_ascending("name"_ns, true);
  auto same = NSSortDescriptor::initWithKey_ascending_selector("name"_ns, true, "compare:"_sel);
  EXPECT_TRUE(one->isEqual(same));
  EXPECT_EQ(one->hash(), same->hash());
  EXPECT_FALSE(one->isEqual(one->reversedSortDescriptor()));
  EXPECT_FALSE(one->isEqual(NSSortDescriptor::initWithKey_ascending("age"_ns, true)));
  EXPECT_FALSE(one->isEqual(
      NSSortDescriptor::initWithKey_ascending_selector("name"_ns, true, "greet:"_sel)));
}

}  // namespace
}  // namespace qz::test
