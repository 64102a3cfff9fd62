#include <cstdio>

#include "tests/support/Test.h"

namespace qz::test {
namespace {

template <class... Args>
std::string format(std::string_view text, const Args&... args) {
  return NSString::stringWithFormat(NSString::stringWithUTF8String(text), args...)->UTF8String();
}

template <class Value>
std::string printf(const std::string& text, Value value) {
  char out[2048];
  std::snprintf(out, sizeof out, text.c_str(), value);
  return out;
}

// Every set of flags, with widths and precisions, for the conversion letters and one length.
std::vector<std::string> conversions(const std::string& letters, const std::string& length) {
  std::vector<std::string> all;
  for (int flags = 0; flags < 32; ++flags) {
    std::string start = "[%";
    for (int i = 0; i < 5; ++i)
      if (flags >> i & 1) start += "-+ #0"[i];
    for (const char* width : {"", "1", "7", "30"})
      for (const char* precision : {"", ".", ".0", ".1", ".2", ".5", ".17", ".40"})
        for (char letter : letters)
          all.push_back(start + width + precision + length + letter + "]");
  }
  return all;
}

template <class Value>
void compareWithC(const std::string& letters, const std::string& length,
                  const std::vector<Value>& values) {
  for (const std::string& conversion : conversions(letters, length))
    for (Value value : values)
      ASSERT_EQ(format(conversion, value), printf(conversion, value)) << conversion;
}

TEST(NSStringFormat, IntegersPrintAsInC) {
  compareWithC<int>("diuxXo", "", {0, 1, -1, 42, INT32_MAX, INT32_MIN});
  compareWithC<unsigned>("uxXo", "", {0u, 7u, UINT32_MAX});
  compareWithC<long long>("diuxXo", "ll", {0, -5, INT64_MAX, INT64_MIN});
  compareWithC<unsigned long>("uxXo", "l", {0, 9, UINT64_MAX});
  // These two alone cut the value; a narrow argument grows to an int otherwise.
  compareWithC<int>("dux", "hh", {-1, 127, 128, 300});
  compareWithC<int>("dux", "h", {-1, 32768, 70000});
  compareWithC<short>("dux", "", {-1, INT16_MIN, INT16_MAX});
  compareWithC<signed char>("dux", "", {-1, 5});
  compareWithC<char>("dux", "", {-1, 'A'});
}

TEST(NSStringFormat, FloatingValuesPrintAsInC) {
  const std::vector<double> values = {0.0,  -0.0,    1.0,       -1.5,  0.5,      2.5,
                                      0.1,  1.0 / 3, 9.9999999, 1e-5,  123456.0, 1234567.0,
                                      1e15, 6.02e23, -1e100,    1e300, 5e-324};
  compareWithC<double>("fFeEgG", "", values);
  compareWithC<double>("fFeEgGaA", "l", {INFINITY, -INFINITY, NAN, -NAN});
  compareWithC<double>("aA", "", {1.0, -0.1, 1.999999, 1e300, 0.0});
  compareWithC<float>("feg", "", {0.1f, 16777216.0f});
  EXPECT_EQ(format("%.1000f", 0.1).size(), 1002u);
  EXPECT_EQ(format("%.1000000f", 1e308).size(), 309u + 1 + 1'000'000);
}

TEST(NSStringFormat, IntegersAreNeverCutToTheConversionsSize) {
  EXPECT_EQ(format("%d %i", INT64_MAX, UINT64_MAX), "9223372036854775807 18446744073709551615");
  EXPECT_EQ(format("%u %lld", std::int64_t{-1}, -1), "18446744073709551615 -1");
  EXPECT_EQ(format("%d %d", true, NSNotFound), "1 2147483647");
}

TEST(NSStringFormat, TextsAndObjects) {
  const std::string text = "Gr\u00fc\u00dfe";
  char unterminated[3] = {'a', 'b', 'c'};
  EXPECT_EQ(format("%@|%@|%@", "x"_ns, classOf<NSString>(), nullptr), "x|NSString|(null)");
  EXPECT_EQ(format("%s|%s|%s|%S", text, text.c_str(), std::string_view(text), u"Z\u00fcrich"),
            text + "|" + text + "|" + text + "|Z\u00fcrich");
  EXPECT_EQ(format("%s|%s", static_cast<const char*>(nullptr), unterminated), "(null)|abc");
  EXPECT_EQ(format("[%6@|%-6s|%3@]", "ab"_ns, "\u00e9", "abcd"_ns), "[    ab|\u00e9     |abcd]");
  EXPECT_EQ(format("%.3s|%.2@|%.1@", text, "\u00fc\u00dfe"_ns, "\U0001F600"_ns),
            "Gr|\u00fc\u00df|");
  EXPECT_EQ(format("%c%c%c%C%c", 'A', 0x42, char(0xE9), u'\u20ac', U'\U0001F600'),
            "AB\u00e9\u20ac\U0001F600");
  EXPECT_EQ(format("%C%c", char32_t{0x110000}, char16_t{0xD800}), "\ufffd\ufffd");
  EXPECT_EQ(format("%p %5p|", reinterpret_cast<void*>(0xBEEF), nullptr), "0xbeef   0x0|");
  // What looks like a conversion in an argument is text.
  EXPECT_EQ(format("%@%s", "%n%s"_ns, "100%"), "%n%s100%");
  EXPECT_EQ(NSString::stringWithFormat("\0%c"_ns, 0)->view(), std::u16string_view(u"\0\0", 2));
}

TEST(NSStringFormat, WidthsPrecisionsAndPositions) {
  EXPECT_EQ(format("%0.2d:%02d:.%0.3d", 5, 7, 50), "05:07:.050");
  EXPECT_EQ(format("[%*d|%-*d|%*d]", 4, 1, 4, 2, -4, 3), "[   1|2   |3   ]");
  EXPECT_EQ(format("[%.*f|%.*f]", 1, 2.25, -1, 2.25), "[2.2|2.250000]");
  EXPECT_EQ(format("%2$@ %1$@ %@", "a"_ns, "b"_ns), "b a a");
  EXPECT_EQ(format("[%2$*1$d|%2$0*1$.*3$f]", 8, 1.5, 2), "[       1|00001.50]");
  EXPECT_EQ(format("%'d", 1234567), "1234567");
  EXPECT_EQ(format("%1000000d", 1).size(), 1'000'000u);
  for (const char* tooMuch : {"%1000001d", "%.1000001f", "%99999999999999999999d", "%1$.*2$f"})
    EXPECT_TRUE(refuses([&] { format(tooMuch, 1.0, std::numeric_limits<std::int64_t>::max()); }));
  EXPECT_TRUE(refuses([] { format("%*d", INT64_MIN, 1); }));
}

TEST(NSStringFormat, WhatDoesNotFitIsHarmless) {
  EXPECT_EQ(format("%d|%5x|%f|%c|%p"), "||||");
  EXPECT_EQ(format("%@|%s|%3$@|%0$@|%99999999999$@", 1), "1|(null)|(null)|(null)|(null)");
  EXPECT_EQ(format("%s %@ %d %f", 1, 2.5, "text", "other"_ns), "1 2.5 text other");
  EXPECT_EQ(format("%d %u %x %f", 2.9, -2.9, 255.0, 3), "2 18446744073709551614 ff 3.000000");
  EXPECT_EQ(format("%d %d %d", NAN, 1e300, -1e300), "0 18446744073709551615 -18446744073709551615");
  EXPECT_EQ(format("[%*d]", "wide", 5), "[5]");
  // No conversions, and none that writes to memory.
  int untouched = 7;
  EXPECT_EQ(format("%n %y %-5.2q", static_cast<void*>(&untouched)), "%n %y %-5.2q");
  EXPECT_EQ(untouched, 7);
  EXPECT_EQ(format("%d%% %5% 5% %", 50), "50% % 5%");
  EXPECT_EQ(format("%-"), "%-");
  EXPECT_EQ(format("%hhh.3\u00e9 %d", 1), "%hhh.3\u00e9 1");
}

static_assert(FormatValue<char[4]> && FormatValue<Ref<NSString>> && FormatValue<Class*>);
static_assert(!FormatValue<std::vector<int>> && !FormatValue<int*> && !FormatValue<Selector>);

}  // namespace
}  // namespace qz::test
