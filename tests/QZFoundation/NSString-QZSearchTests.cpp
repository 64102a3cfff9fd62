#include "QZFoundation/NSString-QZSearch.h"

#include "tests/support/Test.h"

namespace qz::test {
namespace {

constexpr std::uint32_t none = NSNotFound;

TEST(NSStringQZSearch, PlacementIsThatInTheReceiver) {
  struct Case {
    NSString* part;
    NSRange range;
    std::uint32_t kind;
    NSRange expected;
  };
  NSString* const text = "ab-ab-ab"_ns;
  const NSRange all{0, 8};
  for (const Case& each : std::vector<Case>{
           {"ab"_ns, all, QZSearchAtStart, {0, 2}},
           {"ab"_ns, {3, 5}, QZSearchAtStart, {none, 2}},  // the Range's start does not count
           {"ab"_ns, all, QZSearchAtEnd, {none, 2}},       // the first match is elsewhere
           {"ab"_ns, {4, 4}, QZSearchAtEnd, {6, 2}},
           {"ab"_ns, {3, 2}, QZSearchAtEnd, {none, 2}},  // nor does its end
           {"b-"_ns, all, QZSearchAnywhere, {1, 2}},
           {"x"_ns, {3, 2}, QZSearchAbsent, {0, 8}},
           {"b-"_ns, all, QZSearchAbsent, {none, 2}},
           {text, all, QZSearchWhole, {0, 8}},
           {"ab"_ns, all, QZSearchWhole, {none, 2}},
       }) {
    const NSRange found =
        rangeOfString_options_range_searchKind(text, each.part, 0, each.range, each.kind);
    EXPECT_EQ(found, each.expected) << each.part << " " << each.kind;
  }
  const auto options = NSCaseInsensitiveSearch | NSBackwardsSearch;
  EXPECT_EQ(rangeOfString_options_range_searchKind(text, "AB"_ns, options, all, QZSearchAtEnd),
            NSMakeRange(6, 2));
}

TEST(NSStringQZSearch, UnknownKindsRaiseAfterTheSearch) {
  const auto search = [](std::uint32_t kind, NSRange range) {
    rangeOfString_options_range_searchKind("ab"_ns, "a"_ns, 0, range, kind);
  };
  const NSRange all{0, 2};
  for (const int kind : {4, 6, -1})
    EXPECT_EQ(reasonRaised(NSInternalInconsistencyException,
                           [&] { search(static_cast<std::uint32_t>(kind), all); }),
              "Illegal value for search kind (" + std::to_string(kind) + ")");
  EXPECT_TRUE(refusesRange([&] { search(4, {1, 2}); }));
}

TEST(NSStringQZSearch, Comparisons) {
  EXPECT_TRUE(isEqualCaseInsensitive("Straße"_ns, "STRASSE"_ns));
  EXPECT_FALSE(isEqualCaseInsensitive("1"_ns, number(1)));
  EXPECT_EQ(numericCompare("file9"_ns, "file10"_ns), NSOrderedAscending);
  EXPECT_EQ(numericCompare("File10"_ns, "file9"_ns), NSOrderedAscending);
  EXPECT_EQ(numericCaseInsensitiveCompare("File10"_ns, "file9"_ns), NSOrderedDescending);
  EXPECT_EQ(numericCaseInsensitiveCompare("FILE 2"_ns, "file 2"_ns), NSOrderedSame);
}

TEST(NSStringQZSearch, LongestPrefix) {
  auto longest = [](NSString* text, std::initializer_list<NSObject*> candidates) {
    auto strings = NSArray::arrayWithArray(NSArray::arrayWithObjects(candidates));
    return longestPrefixInStrings(text, strings->objectEnumerator());
  };
  auto twin = ns(u"/usr");
  EXPECT_TRUE(equal(longest("/usr/lib"_ns, {"/"_ns, "/usr"_ns, "/usr/lib64"_ns}), "/usr"_ns));
  EXPECT_EQ(longest("/usr"_ns, {"/usr"_ns, twin}), "/usr"_ns) << "the earlier of two";
  EXPECT_EQ(longest("a"_ns, {"b"_ns, number(1)}), nullptr);
  EXPECT_EQ(longestPrefixInStrings("a"_ns, nullptr), nullptr);
}

TEST(NSStringQZSearch, LinesAreCountedAndFoundAlike) {
  struct Case {
    std::u16string text;
    std::vector<NSRange> lines;
  };
  for (const Case& each : std::vector<Case>{{u"", {}},
                                            {u"\n", {}},
                                            {u"ab", {{0, 2}}},
                                            {u"ab\ncd", {{0, 3}, {3, 2}}},
                                            {u"ab\r\ncd\r\n", {{0, 4}, {4, 4}}},
                                            {u"\n\n\n", {{0, 1}, {1, 1}}},
                                            {u"a\x85"
                                             u"b\u2028c\u2029d\re",
                                             {{0, 2}, {2, 2}, {4, 2}, {6, 2}}},
                                            {u"a\n\r\nbc", {{0, 2}, {2, 2}, {4, 2}}}}) {
    auto text = ns(each.text);
    const auto count = static_cast<std::uint32_t>(each.lines.size());
    EXPECT_EQ(numberOfLines(text), count) << text;
    for (std::uint32_t i = 0; i < count; ++i)
      EXPECT_EQ(rangeForLineNumber(text, i), each.lines[i]) << text << i;
    for (std::uint32_t beyond : {count, count + 1, 0xFFFFFFFFu})
      EXPECT_EQ(rangeForLineNumber(text, beyond), NSMakeRange(none, 0)) << text;
  }
}

TEST(NSStringQZSearch, PiecesBeginWithTheirSeparator) {
  auto split = [](NSString* text, NSCharacterSet* set) {
    auto pieces = stringsBySeparatingAtCharactersInSet(text, set);
    return to_string(pieces->componentsJoinedByString("|"_ns));
  };
  auto commas = NSCharacterSet::characterSetWithCharactersInString(","_ns);
  EXPECT_EQ(split("someWordsHere"_ns, NSCharacterSet::uppercaseLetterCharacterSet()),
            "some|Words|Here");
  EXPECT_EQ(split("a,,b"_ns, commas), "a|,|,b");
  EXPECT_EQ(split("a,"_ns, commas), "a|,");
  EXPECT_EQ(split("ab"_ns, nullptr), "ab");
  EXPECT_EQ(stringsBySeparatingAtCharactersInSet(""_ns, commas)->count(), 1u);
}

TEST(NSStringQZSearch, CuttingAtASeparator) {
  Ref<NSString> rest = "old"_ns;
  EXPECT_TRUE(equal(substringUpToString_remainingString("a=b=c"_ns, "="_ns, &rest), "a"_ns));
  EXPECT_TRUE(equal(rest, "b=c"_ns));
  EXPECT_TRUE(equal(substringUpToString_remainingString("a="_ns, "="_ns, &rest), "a"_ns));
  EXPECT_TRUE(equal(rest, ""_ns));
  EXPECT_EQ(substringUpToString_remainingString("abc"_ns, "="_ns, &rest), nullptr);
  EXPECT_EQ(rest, nullptr);
  EXPECT_TRUE(equal(substringUpToString_remainingString("--x"_ns, "--"_ns, nullptr), ""_ns));
}

TEST(NSStringQZSearch, QueryStrings) {
  auto shown = [](NSString* query) {
    std::string pairs;
    for (const auto& [key, value] : send<Ref<NSDictionary>>(query, "parseQueryString"_sel))
      pairs += "[" + to_string(key) + "|" + to_string(value) + "]";
    return pairs;
  };
  EXPECT_EQ(shown("x=1&x=2&y"_ns), "[x|2]");
  EXPECT_EQ(shown("a=b=c&=x&e=&%41=+"_ns), "[a|b=c][|x][e|][%41|+]");
  EXPECT_EQ(shown("&&"_ns), "");
}

}  // namespace
}  // namespace qz::test
