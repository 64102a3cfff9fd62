#include "Platform/Collections/NSPredicate.h"

#include "tests/support/Person.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

class Adult : public Derives<Adult, NSPredicate> {
 public:
  static void describe(ClassDescription<Adult>& is) { is.named("Adult"); }
  bool evaluateWithObject(NSObject* object) const override {
    return object != nullptr && as<Person>(object)->age >= 18;
  }
};

TEST(NSPredicate, IsAClassOrABlockOrAKeyPath) {
  auto ann = make<Person>("Ann"_ns, 30);
  auto bob = make<Person>("Bob"_ns, 10);
  ann->partner = bob;
  EXPECT_TRUE(send<bool>(make<Adult>(), "evaluateWithObject:"_sel, ann));
  auto isNil = NSPredicate::predicateWithBlock([](NSObject* each) { return each == nullptr; });
  EXPECT_TRUE(isNil->evaluateWithObject(nullptr));
  EXPECT_TRUE(refuses([] { NSPredicate::predicateWithBlock(nullptr); }));

  auto withBob =
      NSPredicate::predicateWithKeyPath_selector_value("partner.name"_ns, "isEqual:"_sel, "Bob"_ns);
  EXPECT_TRUE(withBob->evaluateWithObject(ann));
  EXPECT_FALSE(withBob->evaluateWithObject(bob));  // nil on the way
  EXPECT_FALSE(withBob->evaluateWithObject(nullptr));
  auto notAnn = NSPredicate::predicateWithKeyPath_selector_value(nullptr, "compare:"_sel, "Ann"_ns);
  EXPECT_TRUE(notAnn->evaluateWithObject("Aaa"_ns));  // -1 is not zero
}

TEST(NSPredicate, CombinesInOrderAndNoFurtherThanNeeded) {
  std::string asked;
  const auto say = [&](char name, bool answer) {
    return NSPredicate::predicateWithBlock([&asked, name, answer](NSObject*) {
      asked += name;
      return answer;
    });
  };
  auto yes = say('y', true);
  auto no = say('n', false);
  const auto ask = [&](const Ref<NSPredicate>& predicate) {
    return predicate->evaluateWithObject(nullptr);
  };
  EXPECT_FALSE(ask(NSPredicate::andPredicateWithSubpredicates({yes, no, yes})));
  EXPECT_EQ(std::exchange(asked, ""), "yn");
  EXPECT_TRUE(ask(NSPredicate::orPredicateWithSubpredicates({no, yes, no})));
  EXPECT_EQ(std::exchange(asked, ""), "ny");
  EXPECT_FALSE(ask(NSPredicate::orPredicateWithSubpredicates(arrayOf({no, no}))));
  EXPECT_TRUE(ask(NSPredicate::andPredicateWithSubpredicates(NSArray::array())));
  EXPECT_FALSE(ask(NSPredicate::orPredicateWithSubpredicates(NSArray::array())));
  EXPECT_TRUE(ask(NSPredicate::notPredicateWithSubpredicate(no)));
  EXPECT_TRUE(refuses([&] { NSPredicate::andPredicateWithSubpredicates({yes, nullptr}); }));
  EXPECT_TRUE(refuses([&] { NSPredicate::orPredicateWithSubpredicates(arrayOf({"x"_ns})); }));
}

}  // namespace
}  // namespace qz::test
