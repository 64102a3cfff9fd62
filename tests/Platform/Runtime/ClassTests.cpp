
#include <regex>

#include "tests/support/Person.h"
#include "tests/support/SourceTree.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

class Nameless : public Derives<Nameless, NSObject> {
 public:
  static void describe(ClassDescription<Nameless>&) {}
};
class Impostor : public Derives<Impostor, NSObject> {
 public:
  static void describe(ClassDescription<Impostor>& is) { is.named("NSNumber"); }
};
class Twice : public Derives<Twice, NSObject> {
 public:
  static void describe(ClassDescription<Twice>& is) {
    is.named("Twice").field<&Twice::a>("a").field<&Twice::b>("a");
  }
  int a = 0, b = 0;
};

TEST(Class, KnowsItsPlace) {
  Class* worker = classOf<Worker>();
  EXPECT_EQ(worker->name(), "Worker");
  EXPECT_EQ(worker->superclassObject(), classOf<Person>());
  EXPECT_TRUE(worker->isSubclassOfClass(classOf<NSObject>()));
  EXPECT_FALSE(classOf<Person>()->isSubclassOfClass(worker));
  EXPECT_FALSE(worker->isSubclassOfClass(nullptr));
  auto wim = make<Worker>("Wim"_ns);
  EXPECT_TRUE(wim->isKindOfClass(classOf<Person>()));
  EXPECT_FALSE(wim->isMemberOfClass(classOf<Person>()));
  EXPECT_FALSE(wim->isKindOfClass(classOf<NSString>()));
  EXPECT_EQ(as<NSString>(static_cast<NSObject*>(wim.get())), nullptr);
  EXPECT_EQ(classOf<NSObject>()->superclassObject(), nullptr);
}

TEST(Class, IsFoundByNameAndMakesObjects) {
  classOf<Person>();
  Class* person = NSClassFromString("Person"_ns);
  ASSERT_EQ(person, classOf<Person>());
  EXPECT_EQ(NSClassFromString("Nobody"_ns), nullptr);
  EXPECT_EQ(NSClassFromString(nullptr), nullptr);
  EXPECT_EQ(to_string(NSStringFromClass(person)), "Person");
  EXPECT_TRUE(isKind<Person>(person->newObject()));
  auto made = send<Ref<NSObject>>(person, "alloc"_sel);
  EXPECT_EQ(send<Ref<NSObject>>(made, "init"_sel), made);
  EXPECT_TRUE(refuses([] { classOf<Class>()->newObject(); }, {"Class"}));
}

TEST(Class, ReceivesClassLevelMessages) {
  Class* number = NSClassFromString("NSNumber"_ns);
  auto five = send<Ref<NSNumber>>(number, "numberWithInt:"_sel, 5);
  EXPECT_EQ(five->intValue(), 5);
  EXPECT_TRUE(number->respondsToSelector("numberWithInt:"_sel));
  EXPECT_FALSE(number->respondsToSelector("intValue"_sel));
  EXPECT_FALSE(five->respondsToSelector("numberWithInt:"_sel));
  EXPECT_EQ(to_string(send<Ref<NSObject>>(number, "description"_sel)), "NSNumber");
  EXPECT_TRUE(send<bool>(number, "instancesRespondToSelector:"_sel, "intValue"_sel));
  EXPECT_EQ(send<Ref<Class>>(classOf<Worker>(), "superclass"_sel), classOf<Person>());
  EXPECT_TRUE(refuses([&] { number->performSelector("intValue"_sel); }, {"+[NSNumber intValue]"}));
}

TEST(Class, DescriptionMistakesFailAtOnce) {
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [] { classOf<Nameless>(); }, {"name"}));
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [] { classOf<Impostor>(); }, {"NSNumber"}));
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [] { classOf<Twice>(); }, {"Twice a"}));
  EXPECT_NE(NSClassFromString("NSNumber"_ns), nullptr);
  EXPECT_EQ(NSClassFromString("Twice"_ns), nullptr);
}

TEST(Class, ListsWhatItWasGiven) {
  auto keys = classOf<Worker>()->propertyKeys();
  EXPECT_EQ(keys.front(), "wage");
  auto selectors = classOf<Person>()->instanceSelectors();
  EXPECT_NE(std::ranges::find(selectors, "setAge:"_sel), selectors.end());
  EXPECT_EQ(std::ranges::find(selectors, "isEqual:"_sel), selectors.end());
}

TEST(Class, OwnershipCanBeKeptByHand) {
  const int before = Person::alive;
  Person* ann = make<Person>("Ann"_ns).leak();
  ann->performSelector("retain"_sel);
  EXPECT_EQ(ann->retainCount(), 2u);
  ann->performSelector("release"_sel);
  ann->performSelector("autorelease"_sel);  // the reply was the last owner
  EXPECT_EQ(Person::alive, before);
}

// A class that is declared but stands in no list cannot be found by name before it is mentioned.
TEST(Class, EveryPlatformClassIsRegistered) {
  const std::regex declared("class (\\w+)( final)? : public Derives<");
  for (const auto& entry : std::filesystem::recursive_directory_iterator(sourcePath("Platform"))) {
    if (entry.path().extension() != ".h" || entry.path().parent_path().filename() == "detail")
      continue;
    std::ifstream file(entry.path());
    for (std::string line; std::getline(file, line);) {
      std::smatch match;
      if (line.starts_with("class") && std::regex_search(line, match, declared)) {
        EXPECT_NE(Class::named(match[1].str()), nullptr) << match[1];
      }
    }
  }
}

TEST(Selector, IsInterned) {
  EXPECT_EQ("compare:"_sel, NSSelectorFromString("compare:"_ns));
  EXPECT_NE("compare:"_sel, "compare"_sel);
  EXPECT_EQ("a:b:"_sel.numberOfArguments(), 2u);
  EXPECT_EQ(to_string(NSStringFromSelector("a:b:"_sel)), "a:b:");
  EXPECT_FALSE(NSSelectorFromString(nullptr));
  EXPECT_EQ(NSStringFromSelector(Selector()), nullptr);
}

}  // namespace
}  // namespace qz::test
