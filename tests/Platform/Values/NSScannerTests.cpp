#include "Platform/Values/NSScanner.h"

#include "tests/support/Test.h"

namespace qz::test {
namespace {

template <class T>
struct Case {
  NSString* text;
  T value;
  std::uint32_t location;  // 0: nothing is scanned
};

template <class T>
void expectAll(bool (NSScanner::*scan)(T*), std::initializer_list<Case<T>> cases) {
  for (const Case<T>& each : cases) {
    const auto scanner = NSScanner::scannerWithString(each.text);
    T value = 77;
    EXPECT_EQ((scanner->*scan)(&value), each.location != 0) << each.text;
    EXPECT_EQ(value, each.location != 0 ? each.value : 77) << each.text;
    EXPECT_EQ(scanner->scanLocation(), each.location) << each.text;
    scanner->setScanLocation(0);
    EXPECT_EQ((scanner.get()->*scan)(nullptr), each.location != 0) << each.text;
  }
}

TEST(NSScanner, Integers) {
  expectAll<std::int32_t>(&NSScanner::scanInt, {{" \n-12x"_ns, -12, 5},
                                                {"-99999999999999999999999999"_ns, INT32_MIN, 27},
                                                {"- 1"_ns, 0, 0},
                                                {"٣"_ns, 0, 0}});
  expectAll<std::int64_t>(&NSScanner::scanLongLong,
                          {{"9223372036854775807"_ns, INT64_MAX, 19}, {"1.5"_ns, 1, 1}});
  expectAll<std::uint64_t>(&NSScanner::scanUnsignedLongLong,
                           {{"18446744073709551616"_ns, UINT64_MAX, 20}, {"-5"_ns, 0, 2}});
  expectAll<std::uint32_t>(
      &NSScanner::scanHexInt,
      {{"0xFfg"_ns, 255, 4}, {"0x"_ns, 0, 1}, {"-1"_ns, 0, 0}, {"123456789"_ns, UINT32_MAX, 9}});
  expectAll<std::uint64_t>(&NSScanner::scanHexLongLong, {{"ffffffffffffffff"_ns, UINT64_MAX, 16},
                                                         {"10000000000000000"_ns, UINT64_MAX, 17}});
}

TEST(NSScanner, FloatingNumbers) {
  expectAll<double>(&NSScanner::scanDouble, {{" -1.5e3x"_ns, -1500, 7},
                                             {"1,5"_ns, 1, 1},
                                             {"1e+"_ns, 1, 1},
                                             {"."_ns, 0, 0},
                                             {"0x1"_ns, 0, 1}});
  expectAll<float>(&NSScanner::scanFloat, {{"3.4e38"_ns, 3.4e38f, 6}, {"3.5e38"_ns, HUGE_VALF, 6}});
}

TEST(NSScanner, TextsAndRuns) {
  const auto scanner = NSScanner::scannerWithString("  Name: Straße \U0001F600\U0001F600;end"_ns);
  Ref<NSString> found = "kept"_ns;
  EXPECT_FALSE(scanner->scanString_intoString("x"_ns, &found));
  EXPECT_FALSE(scanner->scanUpToString_intoString("NAME"_ns, &found)) << "it comes at once";
  EXPECT_FALSE(scanner->scanString_intoString(""_ns, &found));
  EXPECT_TRUE(found->isEqual("kept"_ns));
  EXPECT_EQ(scanner->scanLocation(), 0u);
  EXPECT_TRUE(scanner->scanString_intoString("NAME:"_ns, &found));
  EXPECT_TRUE(scanner->scanString_intoString("STRASSE"_ns, &found));
  EXPECT_TRUE(found->isEqual("Straße"_ns));
  const auto faces = NSCharacterSet::characterSetWithCharactersInString("\U0001F600"_ns);
  EXPECT_FALSE(scanner->scanUpToCharactersFromSet_intoString(faces, &found));
  EXPECT_TRUE(scanner->scanCharactersFromSet_intoString(faces, &found));
  EXPECT_EQ(found->length(), 4u);
  EXPECT_TRUE(scanner->scanUpToString_intoString("END"_ns, nullptr));
  scanner->setCaseSensitive(true);
  EXPECT_FALSE(scanner->scanString_intoString("END"_ns, nullptr));
  EXPECT_TRUE(scanner->scanUpToString_intoString("END"_ns, &found)) << "up to the end";
  EXPECT_TRUE(found->isEqual("end"_ns));
  EXPECT_TRUE(scanner->isAtEnd());
}

TEST(NSScanner, SkipsWhatItIsToldTo) {
  const auto text = NSMutableString::stringWithUTF8String("..1 .2");
  const auto scanner = NSScanner::scannerWithString(text);
  text->setString("changed"_ns);
  const auto dots = NSMutableCharacterSet::characterSet();
  dots->addCharactersInString("."_ns);
  scanner->setCharactersToBeSkipped(dots);
  dots->invert();
  std::int32_t value = 0;
  EXPECT_TRUE(send<bool>(scanner, "scanInt:"_sel, &value));
  EXPECT_EQ(value, 1);
  EXPECT_FALSE(scanner->scanInt(&value)) << "blanks count now";
  scanner->setCharactersToBeSkipped(nullptr);
  EXPECT_TRUE(scanner->scanString_intoString(" ."_ns, nullptr));
  EXPECT_TRUE(scanner->scanInt(&value));
  EXPECT_TRUE(scanner->isAtEnd());
  EXPECT_EQ(value, 2);
  EXPECT_TRUE(refusesRange([&] { scanner->setScanLocation(7); }, {"7", "6"}));
  EXPECT_TRUE(refuses([&] { scanner->scanUpToCharactersFromSet_intoString(nullptr, nullptr); }));
}

}  // namespace
}  // namespace qz::test
