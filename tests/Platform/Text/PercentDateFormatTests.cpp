// Date formats with percent signs.
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <ctime>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Text/NSDateFormatter.h"
#include "Platform/Text/NSLocale.h"
#include "Platform/Text/NSTimeZone.h"

namespace qz {
namespace {

Ref<NSDateFormatter> formatter(NSString* format, NSString* locale = "en_US"_ns,
                               NSString* zone = "UTC"_ns) {
  auto made = NSDateFormatter::initWithDateFormat_allowNaturalLanguage(format, false);
  made->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
  made->setTimeZone(NSTimeZone::timeZoneWithName(zone));
  return made;
}

std::string text(NSDateFormatter* formatter, double seconds) {
  return to_string(formatter->stringFromDate(NSDate::dateWithTimeIntervalSince1970(seconds)));
}

constexpr double moment = 1709214600.25;  // Thursday, 2024-02-29 13:50:00.250 UTC

TEST(PercentDateFormat, Conversions) {
  const struct {
    NSString* format;
    const char* locale;
    const char* expected;
  } cases[] = {
      {"%y-%m-%d %H:%M:%S.%F "_ns, "en_US", "24-02-29 13:50:00.250 "},
      {"%Y/%j %w %e|%I %p"_ns, "en_US", "2024/060 4 29|01 PM"},
      {"%A, %d. %B %Y (%a, %b)"_ns, "de_DE", "Donnerstag, 29. Februar 2024 (Do., Feb.)"},
      {"%A %e %B"_ns, "fr_FR", "jeudi 29 février"},
      {"%x|%X"_ns, "de_DE", "29.02.24|13:50:00"},
      {"%x"_ns, "ja_JP", "2024/02/29"},
      {"%z %Z"_ns, "en_US", "+0000 UTC"},
      {"100%% %q %"_ns, "en_US", "100% %q %"},
      {"日%d"_ns, "ar_EG", "日29"},
      {""_ns, "en_US", ""},
  };
  for (const auto& each : cases)
    EXPECT_EQ(text(formatter(each.format, NSString::stringWithUTF8String(each.locale)), moment),
              each.expected)
        << each.format << " " << each.locale;
  EXPECT_EQ(text(formatter("%H:%M %z %Z"_ns, "en_US"_ns, "Asia/Kolkata"_ns), moment),
            "19:20 +0530 IST");
  EXPECT_EQ(text(formatter("%H %z"_ns, "en_US"_ns, "America/St_Johns"_ns), moment), "10 -0330");
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
  EXPECT_EQ(text(format, -62135596800), "0001-01-01 00:00:00.000");
  EXPECT_EQ(text(format, -62135596801), "0000-12-31 23:59:59.000");
  EXPECT_EQ(text(format, -63500000000), "-0043-10-07 07:06:40.000");
  EXPECT_EQ(text(format, 253402300800), "10000-01-01 00:00:00.000");
  EXPECT_EQ(text(format, -0.001), "1969-12-31 23:59:59.999");
  EXPECT_EQ(text(format, 0.9999), "1970-01-01 00:00:00.999");     // cut
  EXPECT_EQ(text(format, 0.9999999), "1970-01-01 00:00:01.000");  // what was written as 1
  EXPECT_EQ(text(format, 1700000000.29), "2023-11-14 22:13:20.290");
  EXPECT_NE(text(format, 1.7e14), "(null)");
  for (const double none : {1e15, -1e300, std::numeric_limits<double>::infinity(), std::nan("")})
    EXPECT_EQ(text(format, none), "(null)") << none;
}

TEST(PercentDateFormat, RoundTripInEveryLocale) {
  std::mt19937_64 random(3);
  for (NSString* locale : {"en_US"_ns, "de_DE"_ns, "fr_FR"_ns, "ja_JP"_ns, "ru_RU"_ns, "ar_EG"_ns,
                           "hi_IN"_ns, "tr_TR"_ns, "pt_BR"_ns})
    for (NSString* format :
         {"%Y-%m-%d %H:%M:%S.%F"_ns, "%A, %e. %B %Y, %I:%M:%S.%F %p"_ns, "%a %b %d %Y %X.%F %z"_ns,
          "%Y%m%d%H%M%S%F"_ns, "%Y %j %H:%M:%S.%F"_ns}) {
      const auto each = formatter(format, locale, "Asia/Kolkata"_ns);
      for (int i = 0; i < 40; ++i) {
        const double seconds = static_cast<double>(random() % 4'000'000'000'000u) / 1000;
        const auto written = each->stringFromDate(NSDate::dateWithTimeIntervalSince1970(seconds));
        const auto read = each->dateFromString(written);
        ASSERT_NE(read, nullptr) << written << " " << format << " " << locale;
        ASSERT_NEAR(read->timeIntervalSince1970(), seconds, 1e-6) << written << " " << locale;
      }
    }
}

TEST(PercentDateFormat, Reading) {
  constexpr double no = -1;
  const struct {
    NSString* format;
    NSString* text;
    double strict, lenient;
  } cases[] = {
      {"%Y-%m-%d"_ns, "2024-02-29"_ns, 1709164800, 1709164800},
      {"%Y-%m-%d"_ns, " 2024-2-29 "_ns, no, 1709164800},
      {"%Y-%m-%d"_ns, "2023-02-29"_ns, no, 1677628800},  // March 1st
      {"%Y-%m-%d"_ns, "2024-13-01"_ns, no, no},
      {"%Y-%m-%d"_ns, "2024-00-01"_ns, no, no},
      {"%Y-%m-%d"_ns, "2024-02-29x"_ns, no, no},
      {"%Y-%m-%d"_ns, "2024-02"_ns, no, no},
      {"%Y-%m-%d"_ns, ""_ns, no, no},
      {"%Y-%m-%d"_ns, "２０２４-02-29"_ns, no, no},
      {"%Y-%m-%d"_ns, "99999999999999999999-01-01"_ns, no, no},
      {"%Y-%m-%d"_ns, "999999999-01-01"_ns, no, no},
      {"%H:%M"_ns, "12:30"_ns, 946729800, 946729800},  // of the default day
      {"%H:%M"_ns, "25:30"_ns, no, 946776600},
      {"%d %b %y"_ns, "1 JAN 49"_ns, 2493072000, 2493072000},
      {"%d %b %y"_ns, "1 january 50"_ns, -631152000, -631152000},
      {"%Y %j"_ns, "2023 366"_ns, no, 1704067200},
      {"%H:%M %z"_ns, "12:00 +05:30"_ns, 946708200, 946708200},
      {"%H:%M %z"_ns, "12:00 Z"_ns, 946728000, 946728000},
      {"%H:%M %z"_ns, "12:00 +99:00"_ns, no, no},
      {"%H:%M %Z"_ns, "12:00 CET"_ns, 946724400, 946724400},
      {"%H:%M %Z"_ns, "12:00 Mars"_ns, no, no},
      {"%Y"_ns, "-0043"_ns, -63524131200, -63524131200},
      {""_ns, ""_ns, no, no},
  };
  for (const auto& each : cases)
    for (const bool lenient : {false, true}) {
      const auto reader = formatter(each.format);
      reader->setLenient(lenient);
      Ref<NSObject> value;
      Ref<NSString> error = "left over"_ns;
      const bool isDate =
          reader->getObjectValue_forString_errorDescription(&value, each.text, &error);
      const double expected = lenient ? each.lenient : each.strict;
      EXPECT_EQ(isDate, expected != no) << each.text << lenient;
      EXPECT_EQ(isDate, error == nullptr) << each.text;
      if (isDate) {
        EXPECT_EQ(as<NSDate>(value)->timeIntervalSince1970(), expected) << each.text << lenient;
      }
    }
}

TEST(PercentDateFormat, OneFormatterServesManyThreads) {
  const auto shared = formatter("%a %y-%m-%d %H:%M:%S.%F "_ns, "de_DE"_ns, "Europe/Berlin"_ns);
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&shared] {
      for (int k = 0; k < 500; ++k) {
        const Ref<NSDate> date = NSDate::dateWithTimeIntervalSince1970(moment + k);
        const Ref<NSString> written = shared->stringForObjectValue(date);
        EXPECT_TRUE(shared->dateFromString(written)->isEqual(date)) << written;
      }
    });
}

}  // namespace
}  // namespace qz
