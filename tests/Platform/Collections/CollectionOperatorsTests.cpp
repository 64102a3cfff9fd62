// The operators of key paths over Arrays and Sets.
#include "tests/support/Person.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

Ref<Person> person(NSString* name, int age, Person* partner = nullptr) {
  auto made = make<Person>(name, age);
  made->partner = partner;
  return made;
}

Ref<NSArray> people() {
  auto bob = person("Bob"_ns, 40);
  return arrayOf({person("Ann"_ns, 30, bob), bob, person(nullptr, 20), person("Ann"_ns, 50, bob)});
}

// An Array's description in one line.
std::string text(NSObject* value) {
  if (auto* list = as<NSArray>(value))
    return "(" + list->componentsJoinedByString(","_ns)->UTF8String() + ")";
  if (auto* set = as<NSSet>(value))
    return "{" + set->allObjects()->componentsJoinedByString(","_ns)->UTF8String() + "}";
  return to_string(value);
}

TEST(CollectionOperators, MakeOneValueOfMany) {
  // What a Set answers is told when it differs from an Array's answer.
  const std::tuple<NSString*, const char*, const char*> cases[] = {
      {"@count"_ns, "4", nullptr},
      {"@sum.age"_ns, "140", nullptr},
      {"@min.age"_ns, "20", nullptr},
      {"@max.name"_ns, "Bob", nullptr},
      {"@unionOfObjects.name"_ns, "(Ann,Bob,Ann)", nullptr},
      {"@distinctUnionOfObjects.name"_ns, "(Ann,Bob)", "{Ann,Bob}"},
      {"partner.@count"_ns, "4", "1"},  // Null stands for nil in an Array, and nothing in a Set
      {"@lastObject.age"_ns, "50", "NSUndefinedKeyException"},
      {"@anyObject.age"_ns, "NSUndefinedKeyException", "30"},
      {"@sum.none"_ns, "NSUndefinedKeyException", nullptr},
      {"@sum.name"_ns, "0", nullptr},  // Strings answer doubleValue
      {"@sum.partner"_ns, "NSInvalidArgumentException", nullptr},
      {"@unionOfArrays.name"_ns, "NSInvalidArgumentException", nullptr},
  };
  const auto answer = [](NSObject* collection, NSString* path) {
    try {
      return text(collection->valueForKeyPath(path));
    } catch (const Raised& raised) {
      return raised->name()->UTF8String();
    }
  };
  const auto list = people();
  const auto set = NSSet::setWithArray(list);
  const auto holder = NSDictionary::of({{"list"_ns, list}, {"set"_ns, set}});
  for (const auto& [path, ofArray, other] : cases) {
    const std::string ofSet = other != nullptr ? other : ofArray;
    EXPECT_EQ(answer(list, path), ofArray) << path;
    EXPECT_EQ(answer(set, path), ofSet) << path;
    // The same at the end of a longer path, which was cut up before.
    for (int times = 0; times < 2; ++times) {
      EXPECT_EQ(answer(holder, NSString::stringWithFormat("list.%@"_ns, path)), ofArray);
      EXPECT_EQ(answer(holder, NSString::stringWithFormat("set.%@"_ns, path)), ofSet);
    }
  }
  EXPECT_EQ(answer(holder, "@count"_ns), "2");
  EXPECT_EQ(answer(holder, "list.@sum.age.stringValue.@length"_ns), "NSUndefinedKeyException");
  EXPECT_EQ(answer(holder, "none.@count"_ns), "(null)");
}

TEST(CollectionOperators, OfNothing) {
  for (const Ref<NSObject>& empty :
       {Ref<NSObject>(NSArray::array()), Ref<NSObject>(arrayOf({NSNull::null()})),
        Ref<NSObject>(NSSet::set())}) {
    EXPECT_EQ(text(empty->valueForKeyPath("@sum.age"_ns)), "0");
    for (NSString* path : {"@avg.age"_ns, "@min.age"_ns, "@max.age"_ns})
      EXPECT_FALSE(empty->valueForKeyPath(path)) << path;
    EXPECT_EQ(text(empty->valueForKeyPath("@unionOfArrays.age"_ns)), "()");
  }
}

TEST(CollectionOperators, UnitesCollections) {
  auto groups = arrayOf({arrayOf({number(1), number(2)}), NSNull::null(), arrayOf({}),
                         NSSet::setWithObjects({number(2), number(3)})});
  EXPECT_EQ(text(groups->valueForKeyPath("@unionOfArrays"_ns)), "(1,2,2,3)");
  EXPECT_EQ(text(groups->valueForKeyPath("@unionOfSets"_ns)), "(1,2,2,3)");
  EXPECT_EQ(text(groups->valueForKeyPath("@distinctUnionOfArrays.self"_ns)), "(1,2,3)");
  auto sets = NSSet::setWithArray(groups);
  EXPECT_EQ(text(sets->valueForKeyPath("@distinctUnionOfSets"_ns)), "{1,2,3}");
  auto teams = arrayOf({NSDictionary::of({{"members"_ns, people()}}),
                        NSDictionary::of({{"members"_ns, arrayOf({person("Cid"_ns, 1)})}})});
  EXPECT_EQ(text(teams->valueForKeyPath("members.@unionOfArrays.name"_ns)), "(Ann,Bob,Ann,Cid)");
  EXPECT_EQ(text(teams->valueForKeyPath("@distinctUnionOfArrays.members.name"_ns)),
            "(Ann,Bob,Cid)");
}

TEST(CollectionOperators, AddUpExactly) {
  constexpr auto greatest = std::numeric_limits<std::int64_t>::max();
  const auto big = NSNumber::of(greatest);
  const std::tuple<Ref<NSArray>, const char*, NumberKind> cases[] = {
      {arrayOf({NSNumber::of((std::int64_t{1} << 53)), number(1)}), "9007199254740993",
       NumberKind::LongLong},
      {arrayOf({big, big, NSNumber::of(-greatest)}), "9223372036854775807", NumberKind::LongLong},
      {arrayOf({big, number(1)}), "9223372036854775808", NumberKind::UnsignedLongLong},
      {arrayOf({NSNumber::of(-greatest), number(-2)}), "-9.223372036854776e+18",
       NumberKind::Double},
      {arrayOf({number(1), NSNumber::of(0.5)}), "1.5", NumberKind::Double},
      {arrayOf({"2.5"_ns, number(1)}), "3.5", NumberKind::Double},
  };
  for (const auto& [numbers, expected, kind] : cases) {
    const auto sum = as<NSNumber>(numbers->valueForKeyPath("@sum"_ns));
    EXPECT_EQ(to_string(sum), expected);
    EXPECT_EQ(sum->kind(), kind) << expected;
  }
  EXPECT_EQ(to_string(arrayOf({big, big})->valueForKeyPath("@avg.self"_ns)),
            "9.223372036854776e+18");
  auto dates = arrayOf({dateAt(5), NSDate::distantPast()});
  EXPECT_EQ(dates->valueForKeyPath("@min"_ns), NSDate::distantPast());
  EXPECT_TRUE(refuses([&] { dates->valueForKeyPath("@sum"_ns); }));
}

}  // namespace
}  // namespace qz::test
