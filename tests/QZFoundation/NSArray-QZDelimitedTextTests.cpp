#include "QZFoundation/NSArray-QZDelimitedText.h"

#include "tests/support/Person.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

constexpr auto& objectsOf = arrayWithDelimitedText_objectDelimiter_fieldDelimiter_keys_objectClass;

/// The Objects made of `text`: "[x=1 y=2][]", with the keys that were set.
std::string read(std::string_view text, NSString* recordEnd = "\n"_ns,
                 NSString* fieldEnd = ","_ns) {
  auto keys = arrayOf({"x"_ns, "y"_ns, "z"_ns});
  auto objects = objectsOf(ns(text), recordEnd, fieldEnd, keys, classOf<NSMutableDictionary>());
  std::string all;
  for (NSMutableDictionary* object : elements<NSMutableDictionary>(objects)) {
    std::string fields;
    for (NSString* key : elements<NSString>(keys))
      if (auto value = object->objectForKey(key))
        fields += (fields.empty() ? "" : " ") + to_string(key) + "=" + to_string(value);
    all += "[" + fields + "]";
  }
  return all;
}

TEST(DelimitedText, MakesAnObjectOfEachWholeRecord) {
  const std::pair<std::string_view, std::string> cases[] = {
      {"", ""},
      {"a,b,\nc,d,\n", "[x=a y=b][x=c y=d]"},
      {"a,b\n", "[x=a]"},                 // the last field has no delimiter
      {"a,b,", ""},                       // nor has the last record
      {"a,\nb,", "[x=a]"},                // cut off
      {"\n\n", "[][]"},                   // records without fields
      {"a,,b,\n", "[x=a y= z=b]"},        // an empty field is set
      {"a,b,c,d,e,\n", "[x=a y=b z=c]"},  // more fields than keys
      {"\"a,b\",\r\n", "[x=\"a y=b\"]"},  // quotation marks mean nothing, the CR is cut off
      {"ä,\xF0\x9F\x98\x80,\n", "[x=ä y=\xF0\x9F\x98\x80]"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(read(text), expected) << text;
  // Delimiters of several units, found literally, from the left, across one another.
  EXPECT_EQ(read("1::2::;;3::;;", ";;"_ns, "::"_ns), "[x=1 y=2][x=3]");
  EXPECT_EQ(read("1Ab2aB3AbEND", "END"_ns, "Ab"_ns), "[x=1 y=2aB3]");
  EXPECT_EQ(read("1:::2::;;;", ";;"_ns, "::"_ns), "[x=1 y=:2]");
  EXPECT_EQ(read("a,b,", ","_ns, ","_ns), "[][]");
}

TEST(DelimitedText, SetsPropertiesOfAnyClass) {
  auto text = NSMutableString::stringWithString("Ann;30;YES;|Bob;x;;|Cid;"_ns);
  auto people = send<Ref<NSMutableArray>>(
      classOf<NSArray>(),
      "arrayWithDelimitedText:objectDelimiter:fieldDelimiter:keys:objectClass:"_sel, text, "|"_ns,
      ";"_ns, arrayOf({"name"_ns, "age"_ns, "married"_ns}), classOf<Worker>());
  ASSERT_EQ(people->count(), 2u);
  auto* ann = as<Worker>(people->objectAtIndex(0).get());
  EXPECT_EQ(to_string(ann->name()) + std::to_string(ann->age), "Ann30");
  EXPECT_TRUE(ann->married);
  EXPECT_EQ(as<Worker>(people->lastObject())->age, 0);
}

TEST(DelimitedText, RefusesWhatCannotBeMeant) {
  const auto read = [](NSString* recordEnd, NSString* fieldEnd, Ref<NSArray> keys, Class* of) {
    return [=] { objectsOf("1,\n"_ns, recordEnd, fieldEnd, keys, of); };
  };
  auto keys = arrayOf({"age"_ns});
  Class* person = classOf<Person>();
  const struct {
    std::function<void()> code;
    NSString* name;
    std::string reason;
  } cases[] = {
      {read(""_ns, ","_ns, keys, person), NSInvalidArgumentException, "object delimiter is empty"},
      {read("\n"_ns, ""_ns, keys, person), NSInvalidArgumentException, "field delimiter is empty"},
      {read(nullptr, ","_ns, keys, person), NSInvalidArgumentException, "object delimiter is nil"},
      {read("\n"_ns, ","_ns, keys, nullptr), NSInvalidArgumentException, "class is nil"},
      {read("\n"_ns, ","_ns, keys, classOf<Class>()), NSInvalidArgumentException, "Class"},
      {read("\n"_ns, ","_ns, arrayOf({keys}), person), NSInvalidArgumentException, "NSString"},
      {read("\n"_ns, ","_ns, arrayOf({"shoes"_ns}), person), NSUndefinedKeyException, "shoes"},
  };
  for (const auto& each : cases) {
    const int before = Person::alive;
    EXPECT_TRUE(raises(each.name, each.code, {each.reason})) << each.reason;
    EXPECT_EQ(Person::alive, before) << each.reason;
  }
  EXPECT_EQ(objectsOf(nullptr, "\n"_ns, ","_ns, keys, person)->count(), 0u);
  EXPECT_EQ(objectsOf("1,\n"_ns, "\n"_ns, ","_ns, nullptr, person)->count(), 1u);
}

TEST(DelimitedText, ReadsAHundredMegabytesInOnePass) {
  // A record that never ends, and a field that never does: each is looked for once.
  std::u16string units(50'000'000, u'a');
  units += u"\nb,\n";
  units.append(1'000'000, u',');
  auto all = ns(units);
  auto objects = objectsOf(all, "\n"_ns, ","_ns, arrayOf({"name"_ns}), classOf<Person>());
  ASSERT_EQ(objects->count(), 2u);
  EXPECT_EQ(to_string(as<Person>(objects->objectAtIndex(1))->name()), "b");
}

}  // namespace
}  // namespace qz::test
