// Date formats with percent signs.
#include <ctime>

#include "tests/support/Formatters.h"

namespace qz::test {
namespace {

Ref<NSDateFormatter> formatter(NSString* format, const char* locale = "en_US",
                               NSString* zone = "UTC"_ns) {
  return setUp(NSDateFormatter::initWithDateFormat_allowNaturalLanguage(format, false), locale,
               zone);
}

TEST(PercentDateFormat, Conversions) {
  const struct {
    NSString* format;
    const char* locale;
    const char* expected;
    NSString* zone = "UTC"_ns;
  } cases[] = {
      {"%y-%m-%d %H:%M:%S.%F "_ns, "en_US", "24-02-29 13:50:00.250 "},
      {"%A, %d. %B %Y (%a, %b)"_ns, "de_DE", "Donnerstag, 29. Februar 2024 (Do., Feb.)"},
      {"%x|%X"_ns, "de_DE", "29.02.24|13:50:00"},
      {"%z %Z"_ns, "en_US", "+0000 UTC"},
      {"100%% %q %"_ns, "en_US", "100% %q %"},
      {"日%d"_ns, "ar_EG", "日29"},
      {"%H:%M %z %Z"_ns, "en_US", "19:20 +0530 IST", "Asia/Kolkata"_ns},
      {"%H %z"_ns, "en_US", "10 -0330", "America/St_Johns"_ns},
  };
  for (const auto& each : cases)
    EXPECT_EQ(text(formatter(each.format, each.locale, each.zone), moment), each.expected)
        << each.format << " " << each.locale;
  EXPECT_EQ(text(NSDateFormatter::initWithDateFormat_allowNaturalLanguage(nullptr, false), 0), "");
}

TEST(PercentDateFormat, SameAsTheCLibrary) {
  NSString* const format = "%Y-%m-%d %H:%M:%S %j %w %e %I %y"_ns;
  const auto ours = formatter(format);
  std::mt19937_64 random(11);
  for (int i = 0; i < 5000; ++i) {
    // The years 1000 to 9000.
    const auto time = static_cast<std::time_t>(random() % 252'000'000'000u) - 30'610'224'000;
    std::tm parts{};
    ::gmtime_r(&time, &parts);
    char expected[80];
    std::strftime(expected, sizeof expected, format->UTF8String().c_str(), &parts);
    ASSERT_EQ(text(ours, static_cast<double>(time)), expected) << time;
  }
}

TEST(PercentDateFormat, Extremes) {
  const auto format = formatter("%Y-%m-%d %H:%M:%S.%F"_ns);
  const std::pair<double, const char*> cases[] = {
      {-62135596800, "0001-01-01 00:00:00.000"},
      {-62135596801, "0000-12-31 23:59:59.000"},
      {-63500000000, "-0043-10-07 07:06:40.000"},
      {253402300800, "10000-01-01 00:00:00.000"},
      {-0.001, "1969-12-31 23:59:59.999"},
      {0.9999, "1970-01-01 00:00:00.999"},     // cut
      {0.9999999, "1970-01-01 00:00:01.000"},  // what was written as 1
      {1e15, "(null)"},
      {std::numeric_limits<double>::infinity(), "(null)"},
  };
  for (const auto& [seconds, expected] : cases) EXPECT_EQ(text(format, seconds), expected);
  EXPECT_NE(text(format, 1.7e14), "(null)");
}

TEST(PercentDateFormat, RoundTripInEveryLocale) {
  std::mt19937_64 random(3);
  for (const char* locale :
       {"en_US", "de_DE", "fr_FR", "ja_JP", "ru_RU", "ar_EG", "hi_IN", "tr_TR", "pt_BR"})
    for (NSString* format :
         {"%Y-%m-%d %H:%M:%S.%F"_ns, "%A, %e. %B %Y, %I:%M:%S.%F %p"_ns, "%a %b %d %Y %X.%F %z"_ns,
          "%Y%m%d%H%M%S%F"_ns, "%Y %j %H:%M:%S.%F"_ns}) {
      const auto each = formatter(format, locale, "Asia/Kolkata"_ns);
      for (int i = 0; i < 40; ++i) {
        const double seconds = static_cast<double>(random() % 4'000'000'000'000u) / 1000;
        const auto written = each->stringFromDate(dateAt(seconds));
        const auto read = each->dateFromString(written);
        ASSERT_NE(read, nullptr) << written << " " << format << " " << locale;
        ASSERT_NEAR(read->timeIntervalSince1970(), seconds, 1e-6) << written << " " << locale;
      }
    }
}

TEST(PercentDateFormat, Reading) {
  constexpr double no = -1;
  const std::tuple<NSString*, NSString*, double, double> cases[] = {
      {"%Y-%m-%d"_ns, "2024-02-29"_ns, 1709164800, 1709164800},
      {"%Y-%m-%d"_ns, " 2024-2-29 "_ns, no, 1709164800},
      {"%Y-%m-%d"_ns, "2023-02-29"_ns, no, 1677628800},  // March 1st
      {"%Y-%m-%d"_ns, "2024-13-01"_ns, no, no},
      {"%Y-%m-%d"_ns, "2024-02-29x"_ns, no, no},
      {"%Y-%m-%d"_ns, ""_ns, no, no},
      {"%Y-%m-%d"_ns, "２０２４-02-29"_ns, no, no},
      {"%Y-%m-%d"_ns, "99999999999999999999-01-01"_ns, no, no},
      {"%H:%M"_ns, "12:30"_ns, 946729800, 946729800},  // of the default day
      {"%H:%M"_ns, "25:30"_ns, no, 946776600},
      {"%d %b %y"_ns, "1 JAN 49"_ns, 2493072000, 2493072000},
      {"%Y %j"_ns, "2023 366"_ns, no, 1704067200},
      {"%H:%M %z"_ns, "12:00 +05:30"_ns, 946708200, 946708200},
      {"%H:%M %z"_ns, "12:00 +99:00"_ns, no, no},
      {"%H:%M %Z"_ns, "12:00 CET"_ns, 946724400, 946724400},
      {"%H:%M %Z"_ns, "12:00 Mars"_ns, no, no},
      {"%Y"_ns, "-0043"_ns, -63524131200, -63524131200},
      {""_ns, ""_ns, no, no},
  };
  for (const auto& [format, string, strict, lenient] : cases)
    for (const bool isLenient : {false, true}) {
      const auto reader = formatter(format);
      reader->setLenient(isLenient);
      const auto date = as<NSDate>(read(reader, string).value);
      EXPECT_EQ(date ? date->timeIntervalSince1970() : no, isLenient ? lenient : strict)
          << string << isLenient;
    }
}

TEST(PercentDateFormat, TwoDigitYearsAreOfTheCenturyFromItsStart) {
  const auto reader = formatter("%y-%m-%d"_ns, "en_US", "America/New_York"_ns);
  const auto years = formatter("%Y"_ns, "en_US", "America/New_York"_ns);
  const auto yearOf = [&](NSString* string) {
    return to_string(years->stringFromDate(reader->dateFromString(string)));
  };
  EXPECT_EQ(yearOf("50-01-01"_ns), "1950");
  EXPECT_EQ(yearOf("49-12-30"_ns), "2049");  // 1950 begins on the 31st of December there
  EXPECT_EQ(yearOf("49-01-01"_ns), "2049");
  reader->setTwoDigitStartDate(dateAt(1718409600));  // 2024-06-15
  EXPECT_EQ(yearOf("24-06-16"_ns), "2024");
  EXPECT_EQ(yearOf("24-06-14"_ns), "2124");
}

TEST(PercentDateFormat, OneFormatterServesManyThreads) {
  const auto shared = formatter("%a %y-%m-%d %H:%M:%S.%F "_ns, "de_DE", "Europe/Berlin"_ns);
  expectServesManyThreads(shared, [](int i) { return dateAt(moment + i); });
}

}  // namespace
}  // namespace qz::test
