#include "QZFoundation/QZKeyPathArray.h"

#include "Platform/Collections/NSEnumerator.h"
#include "tests/support/Letters.h"
#include "tests/support/Person.h"

namespace qz::test {
namespace {

TEST(QZKeyPathArray, ShowsWhatTheElementsAnswerNow) {
  auto ann = make<Person>("Ann"_ns, 30);
  auto people = NSMutableArray::arrayWithObject(ann);
  auto keyPath = NSMutableString::stringWithString("name"_ns);
  auto names = arrayForKeyPath(people, keyPath);
  keyPath->setString("age"_ns);  // the view has its own copy
  auto frozen = as<NSArray>(names->copy());
  EXPECT_EQ(text(names), "Ann");
  ann->setName("Anna"_ns);
  people->addObject(make<Person>("Bob"_ns, 40));
  EXPECT_EQ(text(names), "AnnaBob");
  EXPECT_EQ(text(frozen), "Ann");
  auto lengths = arrayForKeyPath(names, "length"_ns);
  EXPECT_EQ(to_string(lengths->componentsJoinedByString(" "_ns)), "4 3");
  EXPECT_TRUE(refusesRange([&] { lengths->objectAtIndex(2); }));
  EXPECT_TRUE(raises(NSGenericException, [&] {
    for ([[maybe_unused]] NSObject* each : names) people->removeAllObjects();
  }));
}

TEST(QZKeyPathArray, AnswersNilAndIsWalkedWithNull) {
  auto people = arrayOf({make<Person>("Ann"_ns), make<Person>()});
  auto names = arrayForKeyPath(people, "name"_ns);
  EXPECT_EQ(names->objectAtIndex(1), nullptr);
  EXPECT_EQ(names->lastObject(), nullptr);
  EXPECT_EQ(names->indexOfObject(NSNull::null()), 1u);
  EXPECT_EQ(names->indexOfObject("Bob"_ns), NSNotFound);
  EXPECT_TRUE(names->isEqual(people->valueForKey("name"_ns)));
  EXPECT_EQ(names->hash(), people->valueForKey("name"_ns)->hash());
  EXPECT_EQ(to_string(names), "(\n    Ann,\n    <null>\n)");
  const Ref<NSArray> copies[] = {as<NSArray>(names->copy()), as<NSArray>(names->mutableCopy()),
                                 names->objectEnumerator()->allObjects(),
                                 names->subarrayWithRange({1, 1})};
  for (const auto& made : copies) EXPECT_EQ(made->lastObject(), NSNull::null());
}

TEST(QZKeyPathArray, TakesWhateverItIsGiven) {
  EXPECT_EQ(QZKeyPathArray::initWithArray_keyPath(nullptr, "x"_ns)->count(), 0u);
  auto people = NSArray::arrayWithObject(make<Person>());
  EXPECT_TRUE(
      raises(NSUndefinedKeyException, [&] { arrayForKeyPath(people, "x"_ns)->objectAtIndex(0); }));
  EXPECT_TRUE(refuses([&] { arrayForKeyPath(people, nullptr)->objectAtIndex(0); }));
}

}  // namespace
}  // namespace qz::test
