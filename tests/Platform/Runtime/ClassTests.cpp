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

TEST(Class, IsFoundByNameAndMakesObjects) {
  classOf<Person>();
  Class* person = NSClassFromString("Person"_ns);
  ASSERT_EQ(person, classOf<Person>());
  EXPECT_EQ(NSClassFromString("Nobody"_ns), nullptr);
  auto made = send<Ref<NSObject>>(person, "alloc"_sel);
  EXPECT_EQ(send<Ref<NSObject>>(made, "init"_sel), made);
  EXPECT_TRUE(refuses([] { classOf<Class>()->newObject(); }, {"Class"}));
}

TEST(Class, DescriptionMistakesFailAtOnce) {
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [] { classOf<Nameless>(); }, {"name"}));
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [] { classOf<Impostor>(); }, {"NSNumber"}));
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [] { classOf<Twice>(); }, {"Twice a"}));
  EXPECT_NE(NSClassFromString("NSNumber"_ns), nullptr);
  EXPECT_EQ(NSClassFromString("Twice"_ns), nullptr);
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
  for (const auto& entry : fs::recursive_directory_iterator(sourcePath("Platform"))) {
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

}  // namespace
}  // namespace qz::test
