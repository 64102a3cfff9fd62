#include "QZFoundation/QZVersionNumber.h"

#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Values/NSScanner.h"
#include "QZFoundation/NSBundle-QZFoundation.h"
#include "tests/support/Files.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

Ref<QZVersionNumber> version(std::string_view text) {
  return QZVersionNumber::versionWithString(ns(text));
}

std::string digits(QZVersionNumber* version) {
  return version->digits()->componentsJoinedByString(" "_ns)->UTF8String();
}

TEST(QZVersionNumber, ReadsDigitsAndLetters) {
  const std::pair<const char*, const char*> cases[] = {
      {"10.4.11", "10 4 11"},
      {"1.2b3", "1 2 -24 3"},
      {"2.0ab", "2 0 -25"},
      {"v1", ""},
      {"99999999999.-99999999999", "2147483647 -2147483648"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(digits(version(text)), expected) << text;
  EXPECT_EQ(QZVersionNumber::versionWithString(nullptr), nullptr);
}

TEST(QZVersionNumber, WritesTheTextAgain) {
  for (const char* text : {"1.0b3", "1.2", "10.4.11", "", "0", "1a", "b2.3", "1b2a3.4"})
    EXPECT_EQ(version(text)->versionString()->UTF8String(), text);
  EXPECT_EQ(version("01.002")->versionString()->UTF8String(), "1.2");
}

TEST(QZVersionNumber, OrderIsNumericAndLettersComeBefore) {
  // Each is before the next one.
  const char* const ordered[] = {"0a",    "0a1",    "0b",      "",     "0.0.1",
                                 "1.0a2", "1.0b",   "1.0b1",   "1.0",  "1.0.1",
                                 "1.1",   "10.4.9", "10.4.11", "10.5", "2147483647"};
  for (std::size_t i = 0; i < std::size(ordered); ++i)
    for (std::size_t j = 0; j < std::size(ordered); ++j) {
      const int expected = i < j ? -1 : i > j ? 1 : 0;
      EXPECT_EQ(version(ordered[i])->compare(version(ordered[j])), expected)
          << ordered[i] << " and " << ordered[j];
    }
  EXPECT_EQ(QZVersionNumber::compareVersionString_withVersionString("1.0b"_ns, "1.0"_ns), -1);
  EXPECT_EQ(QZVersionNumber::compareVersionString_withVersionString(nullptr, "0.0"_ns), 0);
  EXPECT_TRUE(refuses([] { version("1")->compare(nullptr); }));
}

// Texts that begin alike are compared from where they may differ: nothing may be lost by it.
TEST(QZVersionNumber, TextsCompareAsTheirVersions) {
  std::mt19937 random(7);
  const auto append = [&](std::string& text, std::size_t count) {
    while (count-- > 0) text += "0129..ab -x"[random() % 11];
  };
  for (int i = 0; i < 5000; ++i) {
    std::string first, second;
    append(first, random() % 8);
    second = first;
    append(first, random() % 4);
    append(second, random() % 4);
    EXPECT_EQ(QZVersionNumber::compareVersionString_withVersionString(ns(first), ns(second)),
              version(first.c_str())->compare(version(second.c_str())))
        << first << " and " << second;
  }
}

TEST(QZVersionNumber, EqualVersionsHashAlike) {
  const std::pair<const char*, int> versions[] = {{"", 0},       {"0", 0},     {"0.0.0", 0},
                                                  {"1", 1},      {"1.0.0", 1}, {"1.0b", 2},
                                                  {"1.0.b0", 2}, {"0.1", 3}};
  for (const auto& [a, value] : versions)
    for (const auto& [b, other] : versions) {
      EXPECT_EQ(version(a)->isEqual(version(b)), value == other) << a << " and " << b;
      EXPECT_TRUE(value != other || version(a)->hash() == version(b)->hash()) << a << " and " << b;
    }
  EXPECT_FALSE(version("1")->isEqual("1"_ns));
}

TEST(QZVersionNumber, TheListCanBeReadAndChanged) {
  auto one = version("1.0b3");
  EXPECT_EQ(one->majorVersionNumber(), 1u);
  one->addDigit(number(7));
  one->removeObjectFromDigitsAtIndex(1);
  one->insertObject_inDigitsAtIndex(number(5), 0);
  EXPECT_EQ(digits(one), "5 1 -24 3 7");
  EXPECT_EQ(one->objectInDigitsAtIndex(4)->intValue(), 7);
  EXPECT_EQ(one->digitEnumerator()->allObjects()->count(), one->countOfDigits());
  send<void>(one, "setDigits:"_sel, version("8.9")->digits());
  const auto before = one->digits();
  one->addDigit(number(1));
  EXPECT_EQ(before->count(), 2u);
  EXPECT_EQ(digits(QZVersionNumber::initWithDigits(before)), "8 9");

  EXPECT_TRUE(refusesRange([] { version("")->majorVersionNumber(); }));
  EXPECT_TRUE(refuses([&] { one->setDigits(arrayOf({"1"_ns})); }, {"no Number"}));
  EXPECT_TRUE(refuses([&] { one->addDigit(nullptr); }));
  EXPECT_EQ(digits(one), "8 9 1");
  EXPECT_THAT(to_string(one), HasSubstr(": {digits = ("));
  EXPECT_THAT(to_string(one), HasSubstr("), versionString = 8.9.1}"));
}

// The rules as they are told, with a scanner.
std::string digitsByScanner(NSString* text) {
  auto scanner = NSScanner::scannerWithString(text);
  const auto letters = NSCharacterSet::characterSetWithCharactersInString("ab"_ns);
  std::string all;
  const auto add = [&](int digit) { all += (all.empty() ? "" : " ") + std::to_string(digit); };
  while (!scanner->isAtEnd()) {
    std::int32_t number = 0;
    Ref<NSString> run;
    if (scanner->scanInt(&number)) {
      add(number);
      scanner->scanString_intoString("."_ns, nullptr);
    } else if (scanner->scanCharactersFromSet_intoString(letters, &run)) {
      add(run->characterAtIndex(0) - 122);
    } else {
      break;
    }
  }
  return all;
}

TEST(QZVersionNumber, ReadsAsAScannerDoes) {
  std::mt19937 random(7);
  const std::u16string_view units = u"0129..ab-+ \t\n\u00A0\u2003\u200B\u0660x";
  for (int i = 0; i < 5000; ++i) {
    std::u16string text;
    for (auto left = random() % 9; left > 0; --left) text += units[random() % units.size()];
    const auto string = ns(text);
    ASSERT_EQ(digits(QZVersionNumber::versionWithString(string)), digitsByScanner(string))
        << "\"" << string << "\"";
  }
  for (char32_t unit = 1; unit < 0x10000; unit += unit < 0x3100 ? 1 : 61) {
    const auto string = ns(std::u16string{u'1', static_cast<char16_t>(unit), u'2'});
    ASSERT_EQ(digits(QZVersionNumber::versionWithString(string)), digitsByScanner(string))
        << static_cast<unsigned>(unit);
  }
}

TEST(NSBundleQZFoundation, VersionOfABundle) {
  const TemporaryDirectory directory;
  directory.write("with/Info.plist", "{ CFBundleVersion = \"1.2b3\"; }");
  directory.write("without/Info.plist", "{ }");
  directory.write("odd/Info.plist", "{ CFBundleVersion = (1); }");
  const auto versionIn = [&](const char* name) {
    const auto bundle = NSBundle::bundleWithPath(ns(directory.path() + "/" + name));
    return send<Ref<QZVersionNumber>>(bundle, "versionNumber"_sel);
  };
  EXPECT_TRUE(equal(versionIn("with"), version("1.2b3")));
  EXPECT_EQ(versionIn("without"), nullptr);
  EXPECT_EQ(versionIn("odd"), nullptr);
}

}  // namespace
}  // namespace qz::test
