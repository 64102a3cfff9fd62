#include "QZFoundation/NSObject-QZFoundation.h"
#include "tests/support/Person.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

/// Takes an Object and answers something of each sort.
class Judge : public Derives<Judge, NSObject> {
 public:
  static void describe(ClassDescription<Judge>& is) {
    is.named("Judge")
        .method<&Judge::nameOf>("nameOf:")
        .method<&Judge::score>("score:")
        .method<&Judge::see>("see:");
  }
  Ref<NSString> nameOf(Person* person) { return person->name(); }
  int score(NSNumber* number) { return number->intValue(); }
  void see(NSObject*) { ++seen; }
  int seen = 0;
};

TEST(NSObjectQZFoundation, ComparesByKeyPath) {
  auto ann = make<Person>("ann"_ns, 30);
  auto bob = make<Person>("Bob"_ns, 40);
  EXPECT_EQ(compare_usingKeyPath(ann, bob, "age"_ns), NSOrderedAscending);
  EXPECT_EQ(compare_usingKeyPath(ann, bob, "name"_ns), NSOrderedDescending);
  EXPECT_EQ(caseInsensitiveCompare_usingKeyPath(ann, bob, "name"_ns), NSOrderedAscending);
  auto nobody = make<Person>();
  EXPECT_EQ(compare_usingKeyPath(nobody, bob, "name"_ns), NSOrderedSame);
  EXPECT_TRUE(refuses([&] { compare_usingKeyPath(bob, nobody, "name"_ns); }));
  EXPECT_TRUE(raises(NSUndefinedKeyException, [&] { compare_usingKeyPath(bob, ann, "x"_ns); }));
  auto sorted =
      arrayOf({bob, ann})->sortedArrayUsingFunction_context(&QZCompareByKeyPath, "age"_ns);
  EXPECT_EQ(sorted->objectAtIndex(0), ann);
}

TEST(NSObjectQZFoundation, CopiesLeavesAndWrapsThemInArrays) {
  auto text = ns("leaf");
  EXPECT_EQ(deepCopy(text), text);
  EXPECT_EQ(copyMutableContainers(text), text);
  EXPECT_EQ(deepCopy(nullptr), nullptr);
  EXPECT_TRUE(refuses([] { deepCopy(make<Person>()); }, {"Person"}));
  EXPECT_TRUE(objectAsArray(text)->isEqual(arrayOf({text})));
  EXPECT_EQ(objectAsArray(nullptr), nullptr);
}

TEST(NSObjectQZFoundation, PerformsWithoutBoxing) {
  auto judge = make<Judge>();
  EXPECT_EQ(performIntSelector_withObject(judge, "score:"_sel, number(-5)), -5);
  EXPECT_TRUE(performBoolSelector_withObject(judge, "score:"_sel, number(255)));
  EXPECT_FALSE(performBoolSelector_withObject(judge, "score:"_sel, number(512)));
  EXPECT_FALSE(performBoolSelector_withObject(judge, "nameOf:"_sel, make<Person>()));
  EXPECT_TRUE(performBoolSelector_withObject(judge, "nameOf:"_sel, make<Person>("Ann"_ns)));
  EXPECT_EQ(performIntSelector_withObject(nullptr, "score:"_sel, number(1)), 0);
  EXPECT_TRUE(refuses(
      [&] { performIntSelector_withObject(judge, "nameOf:"_sel, make<Person>("Ann"_ns)); }));
}

TEST(NSObjectQZFoundation, PerformsOverAnArray) {
  auto judge = make<Judge>();
  auto people = arrayOf({make<Person>("Ann"_ns), make<Person>()});
  auto names = performSelector_withObjectsInArray(judge, "nameOf:"_sel, people);
  EXPECT_TRUE(names->isEqual(arrayOf({"Ann"_ns, NSNull::null()})));
  EXPECT_EQ(performSelector_withObjectsInArray_returnValues(judge, "see:"_sel, people, false),
            nullptr);
  EXPECT_EQ(judge->seen, 2);
  auto scores = arrayOf({number(4)});
  EXPECT_TRUE(
      refuses([&] { performSelector_withObjectsInArray(judge, "score:"_sel, scores); }, {"int"}));
  performSelector_withObjectsInArray_returnValues(judge, "score:"_sel, scores, false);
}

}  // namespace
}  // namespace qz::test
