#include <sys/mman.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "tests/support/Test.h"

namespace qz::test {
namespace {

std::string utf8(NSString* string) { return string->UTF8String(); }

std::u16string randomUnits(std::mt19937& random, std::size_t length, std::u16string_view alphabet) {
  std::u16string units;
  for (std::size_t i = 0; i < length; ++i) units += alphabet[random() % alphabet.size()];
  return units;
}

int sign(std::int64_t value) { return value < 0 ? -1 : value > 0 ? 1 : 0; }

// One String per way of making it: all must look the same from outside.
TEST(NSString, EveryKindOfStorageIsOneClass) {
  for (std::size_t length : {0u, 1u, 3u, 4u, 239u, 240u, 241u, 5000u}) {
    const std::u16string units = std::u16string(length, u'\u00e9');
    auto* buffer = static_cast<char16_t*>(std::malloc(length * 2 + 2));
    std::copy(units.begin(), units.end(), buffer);
    const auto count = static_cast<std::uint32_t>(length);
    const Ref<NSString> inlined = NSString::stringWithCharacters(units);
    const Ref<NSString> all[] = {
        inlined,
        NSString::stringWithUTF8String(inlined->UTF8String()),
        NSString::stringWithValidUTF8String(inlined->UTF8String()),
        NSString::initWithCharactersNoCopy_length(buffer, count),
        NSMutableString::stringWithCharacters_length(units.data(), count),
        NSString::stringWithFormat("%@"_ns, inlined),
        as<NSString>(inlined->mutableCopy()->copy()),
    };
    for (const Ref<NSString>& each : all) {
      EXPECT_EQ(each->view(), units);
      EXPECT_EQ(each->hash(), inlined->hash());
      EXPECT_TRUE(each->isEqual(inlined) && inlined->isEqual(each));
      const bool isMutable = isKind<NSMutableString>(each.get());
      EXPECT_EQ(each->classObject(), isMutable ? classOf<NSMutableString>() : classOf<NSString>());
      EXPECT_EQ(NSString::stringWithString(each) == each, !isMutable);
    }
  }
}

TEST(NSString, EqualityAndOrderFollowTheUnits) {
  std::mt19937 random(7);
  // Few letters make long common beginnings; the high ones tell signed from unsigned comparison.
  const std::u16string_view alphabet = u"ab\u00ff\xd800\uffff";
  for (int round = 0; round < 3000; ++round) {
    std::u16string a = randomUnits(random, random() % 20, alphabet);
    std::u16string b = a;
    if (round % 2 != 0 && !b.empty()) b[random() % b.size()] = u'b';
    if (round % 3 == 0) b += randomUnits(random, random() % 3, alphabet);
    const auto first = NSString::stringWithCharacters(a);
    const auto second = NSString::stringWithCharacters(b);
    ASSERT_EQ(first->compare(second), sign(a.compare(b)));
    ASSERT_EQ(first->isEqual(second), a == b);
    ASSERT_EQ(a == b, first->hash() == second->hash());  // 32 bits: a clash would be bad luck
    ASSERT_EQ(first->hasPrefix(second), a.starts_with(b));
    ASSERT_EQ(second->hasSuffix(NSString::stringWithCharacters(b.substr(b.size() / 2))), true);
  }
  EXPECT_FALSE("a"_ns->isEqual(classOf<NSString>()));
  EXPECT_FALSE("a"_ns->isEqual(nullptr) || "a"_ns->isEqualToString(nullptr));
  EXPECT_FALSE("abc"_ns->hasSuffix("xabc"_ns) || "abc"_ns->hasSuffix("b"_ns));
}

// What one of ICU's mappings makes of `units`.
template <class Map>
std::u16string mapped(std::u16string_view units, Map map) {
  icu::UnicodeString text(units.data(), static_cast<std::int32_t>(units.size()));
  map(text);
  return {text.getBuffer(), static_cast<std::size_t>(text.length())};
}

std::u16string titleOf(std::u16string_view word) {
  return mapped(word, [](auto& text) {
    text.toTitle(nullptr, icu::Locale::getRoot(), U_TITLECASE_WHOLE_STRING);
  });
}

TEST(NSString, CaseMappingsAgreeWithUnicodeAlsoOnTheAsciiRoad) {
  std::u16string ascii;
  for (char16_t unit = 0; unit < 0x80; ++unit)
    if (!u_isUWhiteSpace(unit)) ascii += unit;
  const std::u16string any = u"aBZ.('1\u00e9\u00df\u0130\u01c6\u03a3\u0149\xd801\xdc28";
  std::mt19937 random(13);
  for (int round = 0; round < 6000; ++round) {
    const std::u16string_view alphabet = round % 3 == 0 ? any : ascii;
    const std::u16string first = randomUnits(random, random() % 6, alphabet);
    const std::u16string second = randomUnits(random, random() % 6, alphabet);
    const std::u16string blank = round % 5 == 0 ? u"\u3000\n" : u" ";
    const std::u16string units = first + blank + second;
    const auto string = NSString::stringWithCharacters(units);
    const auto& root = icu::Locale::getRoot();
    ASSERT_EQ(string->uppercaseString()->view(), mapped(units, [&](auto& t) { t.toUpper(root); }));
    ASSERT_EQ(string->lowercaseString()->view(), mapped(units, [&](auto& t) { t.toLower(root); }));
    ASSERT_EQ(string->capitalizedString()->view(), titleOf(first) + blank + titleOf(second))
        << utf8(string);
  }
  EXPECT_EQ(utf8("o'NEILL and\t(co-op) 1st \u01c6x"_ns->capitalizedString()),
            "O'neill And\t(Co-op) 1st \u01c5x");
  // Three times as long as it was, and longer than any first guess.
  const auto ligatures = NSString::stringWithCharacters(std::u16string(500, u'\ufb03'));
  EXPECT_EQ(ligatures->uppercaseString()->length(), 1500u);
}

TEST(NSString, PartsAndCombinations) {
  NSString* literal = "a\0Gr\u00fc\u20ac\U0001F600"_ns;
  EXPECT_EQ(literal->view(), std::u16string_view(u"a\0Gr\u00fc\u20ac\U0001F600", 8));
  NSString* text = "abcdef"_ns;
  EXPECT_EQ(utf8(text->substringFromIndex(4)) + utf8(text->substringToIndex(2)), "efab");
  EXPECT_EQ(utf8(text->substringWithRange({1, 3})), "bcd");
  EXPECT_EQ(utf8(text->stringByAppendingFormat(" %d%%"_ns, 5)), "abcdef 5%");
  char16_t units[2];
  text->getCharacters_range(units, {4, 2});
  EXPECT_EQ(std::u16string_view(units, 2), u"ef");
  // A mutable text's whole is a copy, not the text itself.
  const auto mutableText = NSMutableString::stringWithUTF8String("xyz");
  const auto whole = mutableText->substringFromIndex(0);
  mutableText->deleteCharactersInRange({0, 1});
  EXPECT_EQ(utf8(whole), "xyz");
}

TEST(NSString, RefusesWhatLiesBeyondItsEnd) {
  NSString* text = "abc"_ns;
  char16_t units[4];
  EXPECT_TRUE(refusesRange([&] { text->characterAtIndex(3); }, {"3"}));
  EXPECT_TRUE(refusesRange([&] { text->substringToIndex(4); }));
  // In 32 bits this range would end at 1.
  EXPECT_TRUE(refusesRange([&] { text->substringWithRange({2, UINT32_MAX}); }));
  EXPECT_TRUE(refusesRange([&] { text->getCharacters_range(units, {4, 0}); }));
  for (const auto& call : std::vector<std::function<void()>>{
           [&] { text->compare(nullptr); }, [&] { text->caseInsensitiveCompare(nullptr); },
           [&] { text->hasPrefix(nullptr); }, [&] { text->rangeOfString(nullptr); },
           [&] { text->stringByAppendingString(nullptr); },
           [] { NSString::stringWithString(nullptr); },
           [] { NSString::stringWithFormat(nullptr, 1); }})
    EXPECT_TRUE(refuses(call));
}

TEST(NSString, RefusesToBecomeLongerThanTheLongest) {
  const std::size_t tooLong = std::size_t{NSString::maxLength} + 1;
  void* memory =
      ::mmap(nullptr, tooLong, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  const std::string_view bytes(static_cast<const char*>(memory), tooLong);
  EXPECT_TRUE(raises(NSMallocException, [&] { NSString::stringWithUTF8String(bytes); }));
  ::munmap(memory, tooLong);
  // Nothing is read before the length is refused.
  const auto* units = reinterpret_cast<const char16_t*>(sizeof(char16_t));
  EXPECT_TRUE(raises(NSMallocException,
                     [&] { NSString::stringWithCharacters(std::u16string_view(units, tooLong)); }));
  EXPECT_TRUE(raises(NSMallocException, [&] {
    NSMutableString::stringWithUTF8String("ab")->appendCharacters({units, tooLong - 2});
  }));
}

TEST(NSString, ReadsIntegersToTheirLimits) {
  EXPECT_EQ("\u3000\t -12abc"_ns->intValue(), -12);
  for (NSString* none : {""_ns, "-"_ns, "x1"_ns, "- 1"_ns, "+-1"_ns, "\u0661"_ns})
    EXPECT_EQ(none->intValue(), 0) << utf8(none);
  EXPECT_EQ("2147483648"_ns->intValue(), INT32_MAX);
  EXPECT_EQ("-2147483648"_ns->intValue(), INT32_MIN);
  EXPECT_EQ("-99999999999999999999999"_ns->intValue(), INT32_MIN);
  EXPECT_EQ("-9223372036854775809"_ns->integerValue(), INT64_MIN);
  EXPECT_EQ("18446744073709551616"_ns->unsignedLongLongValue(), UINT64_MAX);
  EXPECT_EQ("18446744073709551609"_ns->unsignedLongLongValue(), UINT64_MAX - 6);
  EXPECT_EQ("-1"_ns->unsignedLongLongValue(), 0u);
}

TEST(NSString, ReadsFloatingValuesAsTheCLibraryDoes) {
  const std::string zeros = "0." + std::string(400, '0');
  std::vector<std::string> texts = {zeros + "1", zeros + "1e410", std::string(400, '9')};
  for (const char* each :
       {"1.5e", "1.5e+", ".5", "5.", "-.5e2x", "1e308", "1e309", "-1e309", "-0", "1e-400",
        "0.000e999", "4.9e-324", "1e39", "1e-46", "1.7976931348623159e308", "1e99999999999999"})
    texts.emplace_back(each);
  std::mt19937_64 random(3);
  for (int i = 0; i < 500; ++i) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*e", i % 20, static_cast<double>(random()) * 1e-9);
    texts.emplace_back(text);
  }
  for (const std::string& text : texts) {
    const auto string = NSString::stringWithUTF8String(text);
    EXPECT_EQ(string->doubleValue(), std::strtod(text.c_str(), nullptr)) << text;
    EXPECT_EQ(string->floatValue(), std::strtof(text.c_str(), nullptr)) << text;
  }
  EXPECT_TRUE(std::signbit("-0"_ns->doubleValue()));
  // Words and bases that the C library reads as numbers are none here.
  for (NSString* none : {"inf"_ns, "nan"_ns, "."_ns, "e5"_ns, "0x10"_ns})
    EXPECT_EQ(none->doubleValue(), 0.0) << utf8(none);
}

TEST(NSString, ReadsTruth) {
  for (NSString* yes : {"YES"_ns, "true"_ns, " +001"_ns, "-9"_ns, "t"_ns})
    EXPECT_TRUE(yes->boolValue()) << utf8(yes);
  for (NSString* no : {""_ns, "0"_ns, "NO"_ns, "false"_ns, "00x"_ns, "on"_ns, "--1"_ns})
    EXPECT_FALSE(no->boolValue()) << utf8(no);
}

TEST(NSString, ClassLevelOperationsMakeObjectsOfTheClassTheyAreSentTo) {
  NSString* text = "12 Apes"_ns;
  for (Class* each : {classOf<NSString>(), classOf<NSMutableString>()}) {
    auto made = send<Ref<NSString>>(each, "stringWithString:"_sel, text);
    EXPECT_TRUE(made->isEqual(text));
    EXPECT_EQ(made->classObject(), each);
    EXPECT_EQ(each->newObject()->classObject(), each);
  }
  EXPECT_TRUE(refuses([&] { send<bool>(text, "isEqualToString:"_sel, classOf<NSString>()); }));
}

}  // namespace
}  // namespace qz::test
