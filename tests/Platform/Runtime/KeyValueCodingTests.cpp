
#include "tests/support/Person.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

/// Answers every key, and remembers what was set.
class Open : public Derives<Open, NSObject> {
 public:
  static void describe(ClassDescription<Open>& is) { is.named("Open"); }
  Ref<NSObject> valueForUndefinedKey(NSString* key) override { return Ref<NSObject>(key); }
  void setValue_forUndefinedKey(NSObject* value, NSString*) override {
    last = Ref<NSObject>(value);
  }
  Ref<NSObject> last;
};

/// Reads a key path while one of its own is being read.
class Nested : public Derives<Nested, NSObject> {
 public:
  static void describe(ClassDescription<Nested>& is) {
    is.named("Nested").property<&Nested::next>("next").field<&Nested::depth>("depth");
  }
  Ref<NSObject> next() const {
    auto below = make<Nested>();
    below->depth = depth + 1;
    for (int i = 0; i < 40; ++i) {
      auto other = ns("name.length" + std::string(i, 'x'));
      try {
        make<Person>("Ann"_ns)->valueForKeyPath(other);
      } catch (const Raised&) {
      }
    }
    return below;
  }
  int depth = 0;
};

/// Its setter answers the Object itself.
class Chained : public Derives<Chained, NSObject> {
 public:
  static void describe(ClassDescription<Chained>& is) {
    is.named("Chained").method<&Chained::setName>("setName:");
  }
  Ref<Chained> setName(NSString*) { return Ref<Chained>(this); }
};

std::string lengthByPath() {
  return to_string(make<Person>("Ann"_ns)->valueForKeyPath("name.length"_ns));
}

int badge(Worker*) { return 7; }

TEST(KeyValueCoding, BoxesEachScalarAsTheKindItHas) {
  auto ann = make<Person>("Ann"_ns, 30);
  ann->grade = -3;
  ann->number = 1ull << 63;
  using K = NumberKind;
  const std::tuple<NSString*, K, const char*> cases[] = {
      {"age"_ns, K::Int, "30"},     {"married"_ns, K::Bool, "0"},
      {"grade"_ns, K::Char, "-3"},  {"number"_ns, K::UnsignedLongLong, "9223372036854775808"},
      {"weight"_ns, K::Float, "0"}, {"height"_ns, K::Double, "0"},
  };
  for (const auto& [key, kind, text] : cases) {
    const auto value = as<NSNumber>(ann->valueForKey(key));
    EXPECT_EQ(value->kind(), kind) << key;
    EXPECT_EQ(to_string(value), text) << key;
  }
}

TEST(KeyValueCoding, SetsFromNumbersAndStrings) {
  auto ann = make<Person>("Ann"_ns);
  ann->setValue_forKey(NSNumber::numberWithDouble(41.9), "age"_ns);
  EXPECT_EQ(ann->age, 41);
  ann->setValue_forKey("-7"_ns, "grade"_ns);
  ann->setValue_forKey("1.5"_ns, "weight"_ns);
  ann->setValue_forKey("YES"_ns, "married"_ns);
  ann->setValue_forKey("Nick"_ns, "nick"_ns);
  ann->setValue_forKey(NSNumber::numberWithUnsignedLongLong(~0ull), "number"_ns);
  EXPECT_EQ(ann->grade, -7);
  EXPECT_EQ(ann->weight, 1.5f);
  EXPECT_TRUE(ann->married);
  EXPECT_EQ(ann->nick, "Nick");
  EXPECT_EQ(ann->number, ~0ull);
}

TEST(KeyValueCoding, LetsGoOfWhatASetterAnswers) {
  auto chained = make<Chained>();
  chained->setValue_forKey("a"_ns, "name"_ns);
  EXPECT_EQ(chained->retainCount(), 1u);
}

TEST(KeyValueCoding, RefusesWhatCannotBeSet) {
  auto ann = make<Person>("Ann"_ns);
  EXPECT_TRUE(refuses([&] { ann->setValue_forKey(nullptr, "age"_ns); }, {"Person", "age"}));
  EXPECT_TRUE(refuses([&] { ann->setValue_forKey("text"_ns, "partner"_ns); },
                      {"setPartner:", "NSString", "Person"}));
  EXPECT_TRUE(refuses([&] { ann->setValue_forKey(make<Person>(), "age"_ns); }, {"intValue"}));
  EXPECT_TRUE(raises(NSUndefinedKeyException, [&] { ann->setValue_forKey("x"_ns, "height"_ns); },
                     {"Person", "height"}));
  EXPECT_TRUE(refuses([&] { ann->valueForKey(nullptr); }));
}

TEST(KeyValueCoding, UnknownKeysRaiseUnlessAnswered) {
  auto ann = make<Person>("Ann"_ns);
  for (NSString* key : {"surname"_ns, ""_ns, "age "_ns, "größe"_ns, "doNothing"_ns, "release"_ns,
                        "retain"_ns, "autorelease"_ns, "compareByAge:"_ns})
    EXPECT_TRUE(raises(NSUndefinedKeyException, [&] { ann->valueForKey(key); },
                       {"Person", key->UTF8String()}));
  auto open = make<Open>();
  EXPECT_EQ(to_string(open->valueForKey("anything"_ns)), "anything");
  open->setValue_forKey("v"_ns, "anything"_ns);
  EXPECT_EQ(to_string(open->last), "v");
}

TEST(KeyValueCoding, FindsOperationsAddedLater) {
  auto worker = make<Worker>("Wim"_ns);
  EXPECT_TRUE(raises(NSUndefinedKeyException, [&] { worker->valueForKey("badge"_ns); }));
  extend<Worker>("Badges").property<&badge>("badge");
  EXPECT_EQ(to_string(worker->valueForKey("badge"_ns)), "7");
}

TEST(KeyValueCoding, WalksPaths) {
  auto ann = make<Person>("Ann"_ns);
  ann->partner = make<Person>("Bob"_ns, 41);
  EXPECT_EQ(to_string(ann->valueForKeyPath("partner.name"_ns)), "Bob");
  EXPECT_EQ(to_string(ann->valueForKeyPath("partner.name.length"_ns)), "3");
  EXPECT_EQ(ann->valueForKeyPath("partner.partner.name"_ns), nullptr);
  ann->setValue_forKeyPath("42"_ns, "partner.age"_ns);
  EXPECT_EQ(ann->partner->age, 42);
  ann->setValue_forKeyPath("42"_ns, "partner.partner.age"_ns);  // nowhere to set it
  for (NSString* path : {"partner..name"_ns, ".partner"_ns, "partner."_ns, "."_ns})
    EXPECT_TRUE(raises(NSUndefinedKeyException, [&] { ann->valueForKeyPath(path); }));
  EXPECT_EQ(to_string(make<Nested>()->valueForKeyPath("next.next.next.depth"_ns)), "3");
}

TEST(KeyValueCoding, WalksPathsWhileTheThreadEnds) {
  static std::string atTheEnd;
  struct Late {
    ~Late() { atTheEnd = lengthByPath(); }
  };
  std::thread([] {
    thread_local Late late;  // made before what the thread keeps of paths, and gone after it
    static_cast<void>(late);
    lengthByPath();
  }).join();
  EXPECT_EQ(atTheEnd, "3");
}

TEST(KeyValueCoding, ReadsAndSetsManyAtOnce) {
  auto ann = make<Person>("Ann"_ns, 30);
  ann->setValuesForKeysWithDictionary(
      NSDictionary::of({{"name"_ns, NSNull::null()}, {"age"_ns, "31"_ns}}));
  EXPECT_EQ(ann->name(), nullptr);
  EXPECT_EQ(ann->age, 31);
  auto read = ann->dictionaryWithValuesForKeys(arrayOf({"name"_ns, "age"_ns}));
  EXPECT_EQ(read->objectForKey("name"_ns), NSNull::null());
  EXPECT_EQ(to_string(read->objectForKey("age"_ns)), "31");
}

}  // namespace
}  // namespace qz::test
