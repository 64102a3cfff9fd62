#include "Platform/System/detail/OldStylePropertyList.h"

#include "tests/support/Test.h"

namespace qz::test {
namespace {

std::string fault(const std::string& bytes, bool onlyStrings = false) {
  detail::PropertyListFault found;
  return detail::readOldStyleDictionary(bytes, onlyStrings, &found) ? "none" : found.text();
}

Ref<NSDictionary> table(const std::string& bytes) {
  detail::PropertyListFault found;
  auto result = detail::readOldStyleDictionary(bytes, false, &found);
  EXPECT_TRUE(result) << found.text();
  return result;
}

Ref<NSString> valueOfK(const std::string& written) {
  auto result = table("k = " + written + ";");
  return result ? as<NSString>(result->objectForKey("k"_ns)) : nullptr;
}

TEST(OldStylePropertyList, StringsAndEscapes) {
  EXPECT_EQ(valueOfK(R"("a\n\t\"\\\'z")")->UTF8String(), "a\n\t\"\\'z");
  EXPECT_EQ(valueOfK(R"('it says "no"')")->UTF8String(), "it says \"no\"");
  EXPECT_EQ(valueOfK(R"("\U00fc\u41z\UD83D\UDE00\12\1019\?")")->UTF8String(), "üAz😀\nA9?");
  EXPECT_EQ(valueOfK("word-1.0/x:$_+")->UTF8String(), "word-1.0/x:$_+");
  EXPECT_EQ(valueOfK("\"two\nlines\"")->UTF8String(), "two\nlines");
  EXPECT_TRUE(valueOfK("\"a\0b\""s)->isEqualToString(ns(u"a\0b"sv)));
  EXPECT_EQ(valueOfK(R"("\000")")->length(), 1u);
}

TEST(OldStylePropertyList, TablesAndNesting) {
  auto entries = table(R"(/* why */ "a b" = "c"; // to the end
      same; a = (1, (), { x = y; }, ); k = 1; k = 2;)");
  EXPECT_EQ(entries->count(), 4u);
  EXPECT_TRUE(equal(entries->objectForKey("a b"_ns), "c"_ns));
  EXPECT_TRUE(equal(entries->objectForKey("k"_ns), "2"_ns));
  auto inner = as<NSArray>(entries->objectForKey("a"_ns));
  ASSERT_EQ(inner->count(), 3u);
  EXPECT_EQ(as<NSArray>(inner->objectAtIndex(1))->count(), 0u);
  EXPECT_TRUE(equal(as<NSDictionary>(inner->objectAtIndex(2))->objectForKey("x"_ns), "y"_ns));
  EXPECT_TRUE(table("{ \"a b\" = c; }")->isEqual(table("\"a b\" = c;")));
  EXPECT_EQ(table(" // nothing\n/**/")->count(), 0u);
}

TEST(OldStylePropertyList, EncodingsAreToldByTheirMarks) {
  const std::string utf8 = "k = \"ü😀\";";
  const std::u16string units = u"k = \"ü😀\";";
  std::string little = "\xFF\xFE", big = "\xFE\xFF";
  for (char16_t unit : units) {
    const char low = static_cast<char>(unit & 0xFF), high = static_cast<char>(unit >> 8);
    little.append({low, high});
    big.append({high, low});
  }
  for (const std::string& bytes : {utf8, "\xEF\xBB\xBF" + utf8, little, big})
    EXPECT_TRUE(equal(table(bytes)->objectForKey("k"_ns), "ü😀"_ns));
  EXPECT_EQ(fault(big + "x"), "line 1, column 11: the last UTF-16 unit is half there");
  EXPECT_EQ(fault("a = ü;\nb = \"\xFC\";"), "line 2, column 6: the text is not UTF-8");
  EXPECT_EQ(fault("a = \"\xED\xA0\x80\";"), "line 1, column 6: the text is not UTF-8");
}

TEST(OldStylePropertyList, FaultsSayWhere) {
  EXPECT_EQ(fault("a = b;\r\n\r\"c\" = \"d\"\ne = f;"),
            "line 4, column 1: a semicolon is missing behind the entry \"c\"");
  EXPECT_EQ(fault("a = \"b;\n\n"), "line 1, column 5: the string has no closing quote");
  EXPECT_EQ(fault("\n /* x"), "line 2, column 2: the comment has no end");
  EXPECT_EQ(fault("a = (1, 2;"), "line 1, column 10: a comma is missing before ';'");
  EXPECT_EQ(fault("a = (1,"), "line 1, column 5: the array has no end");
  EXPECT_EQ(fault("{ a = b; "), "line 1, column 1: the dictionary has no end");
  EXPECT_EQ(fault("{ a = b; } c"), "line 1, column 12: unexpected 'c' behind the end");
  EXPECT_EQ(fault("a = \"\\Ux\";"), "line 1, column 8: hexadecimal digits are missing");
  EXPECT_EQ(fault("a = ü;"), "line 1, column 5: unexpected U+00FC");
  EXPECT_EQ(fault("a ="), "line 1, column 4: a value is missing at the end");
  EXPECT_EQ(fault("(a)"), "line 1, column 1: the text is no dictionary");
  EXPECT_EQ(fault("a = b; k = (c);", true), "line 1, column 1: the value of \"k\" is no string");
}

}  // namespace
}  // namespace qz::test
