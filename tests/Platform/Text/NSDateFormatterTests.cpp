// Dates in Unicode's patterns, in the locales' styles and in words. Percent formats have tests of
// their own.
#include "Platform/Text/detail/NaturalDate.h"
#include "tests/support/Formatters.h"

namespace qz::test {
namespace {

using Style = NSDateFormatterStyle;

Ref<NSDateFormatter> formatter(const char* locale, NSString* zone = "UTC"_ns) {
  return setUp(NSDateFormatter::init(), locale, zone);
}

TEST(NSDateFormatter, Styles) {
  const std::tuple<const char*, Style, Style, const char*> cases[] = {
      {"en_US", Style::Short, Style::Short, "2/29/24, 1:50\u202FPM"},
      {"de_DE", Style::Medium, Style::Medium, "29.02.2024, 13:50:00"},
      {"de_DE", Style::Long, Style::Short, "29. Februar 2024 um 13:50"},
      {"ja_JP", Style::Long, Style::None, "2024年2月29日"},
      {"th_TH", Style::Long, Style::None, "29 กุมภาพันธ์ 2567"},  // a calendar of its own
      {"en_US", Style::None, Style::None, ""},
  };
  for (const auto& [name, date, time, expected] : cases) {
    const auto styled = formatter(name);
    styled->setDateStyle(date);
    styled->setTimeStyle(time);
    EXPECT_EQ(text(styled, moment), expected) << name;
  }
}

TEST(NSDateFormatter, FormatsAndStyles) {
  const auto made = formatter("de_DE", "Asia/Tokyo"_ns);
  made->setDateFormat("EEEE, d. MMMM y HH:mm:ss.SSS xxx"_ns);
  EXPECT_EQ(text(made, moment), "Donnerstag, 29. Februar 2024 22:50:00.250 +09:00");
  made->setDateStyle(Style::Short);  // the format counts
  EXPECT_EQ(to_string(made->dateFormat()), "EEEE, d. MMMM y HH:mm:ss.SSS xxx");
  made->setDateFormat(nullptr);
  EXPECT_EQ(text(made, moment), "29.02.24");
  EXPECT_EQ(to_string(made->dateFormat()), "dd.MM.yy");
  made->setLocalizedDateFormatFromTemplate("MMMMd"_ns);
  EXPECT_EQ(text(made, moment), "29. Februar");

  // Years before the reform of the calendar are counted back, as in percent formats.
  const auto early = formatter("en_US");
  early->setDateFormat("yyyy-MM-dd"_ns);
  EXPECT_EQ(text(early, -13000000000), "1558-01-18");
  EXPECT_EQ(text(early, 1e15), "(null)");
  EXPECT_EQ(early->stringFromDate(nullptr), nullptr);
}

TEST(NSDateFormatter, Behaviours) {
  const auto made = formatter("en_US");
  made->setDateFormat("%Y yyyy"_ns);
  EXPECT_EQ(text(made, moment), "%2024 2024");
  made->setFormatterBehavior(NSDateFormatterBehavior::PercentFormat);
  EXPECT_EQ(text(made, moment), "2024 yyyy");
  made->setValue_forKey(NSNumber::of(1000), "formattingBehavior"_ns);
  EXPECT_EQ(text(made, moment), "2024 yyyy");
  EXPECT_EQ(text(as<NSDateFormatter>(made->copy()), moment), "2024 yyyy");

  EXPECT_EQ(NSDateFormatter::defaultFormatterBehavior(), NSDateFormatterBehavior::Pattern);
  NSDateFormatter::setDefaultFormatterBehavior(NSDateFormatterBehavior::PercentFormat);
  const auto common = formatter("en_US");
  common->setDateFormat("%Y"_ns);
  EXPECT_EQ(text(common, moment), "2024");
  NSDateFormatter::setDefaultFormatterBehavior(NSDateFormatterBehavior::Default);
  EXPECT_EQ(text(formatter("en_US"), moment), "");
}

TEST(NSDateFormatter, Names) {
  const auto german = formatter("de_DE");
  EXPECT_EQ(to_string(german->monthSymbols()->objectAtIndex(2)), "März");
  EXPECT_EQ(to_string(german->shortWeekdaySymbols()->objectAtIndex(0)), "So.");
  EXPECT_EQ(to_string(formatter("ja_JP")->PMSymbol()), "午後");
}

TEST(NSDateFormatter, RoundTripInEveryLocale) {
  std::mt19937_64 random(23);
  const auto roundTrips = [&](NSDateFormatter* each, double unit) {
    for (int i = 0; i < 12; ++i) {
      // The years 1970 to 2037: two digits tell a year of the century from 1950 on. Not within
      // an hour that comes twice: UTC has none.
      const double seconds =
          std::floor(static_cast<double>(random() % 2'130'000'000u) / unit) * unit;
      const auto shown = each->stringFromDate(dateAt(seconds));
      const auto read = each->dateFromString(shown);
      ASSERT_NE(read, nullptr) << shown << " " << each->locale();
      ASSERT_EQ(read->timeIntervalSince1970(), seconds) << shown << " " << each->locale();
    }
  };
  for (const char* name : {"en_US", "en_GB", "de_DE", "fr_FR", "ja_JP", "ar_EG", "hi_IN", "ru_RU",
                           "th_TH", "zh_Hans_CN", "en_US_POSIX"}) {
    for (const Style date : {Style::Short, Style::Medium, Style::Long, Style::Full})
      for (const Style time : {Style::None, Style::Short, Style::Medium, Style::Long}) {
        const auto each = formatter(name);
        each->setDateStyle(date);
        each->setTimeStyle(time);
        roundTrips(each, time == Style::None ? 86400 : time == Style::Short ? 60 : 1);
      }
    for (NSString* format : {"yyyy-MM-dd'T'HH:mm:ssXXX"_ns, "EEEE d MMMM y HH:mm:ss"_ns,
                             "d MMM y h:mm:ss a"_ns, "y D HH:mm:ss"_ns}) {
      const auto each = formatter(name);
      each->setDateFormat(format);
      roundTrips(each, 1);
    }
  }
}

TEST(NSDateFormatter, Reading) {
  const auto reader = formatter("en_US");
  reader->setDateFormat("d MMMM yyyy"_ns);
  const auto read = [&](NSString* string) {
    const auto date = reader->dateFromString(string);
    return date ? date->timeIntervalSince1970() : -1;
  };
  EXPECT_EQ(read("29 February 2024"_ns), 1709164800);
  for (NSString* wrong : {"30 February 2024"_ns, "29 Februar 2024"_ns, "29 February 2024."_ns,
                          "29 February"_ns, ""_ns, "x"_ns, "tomorrow"_ns})
    EXPECT_EQ(read(wrong), -1) << wrong;
  reader->setLenient(true);
  EXPECT_EQ(read("30 February 2024"_ns), 1709251200);
  EXPECT_EQ(read(" 29 February 2024 "_ns), 1709164800);
  reader->setLenient(false);

  reader->setDateFormat("h:mm a"_ns);
  EXPECT_EQ(read("1:50 PM"_ns), 946734600);  // with the blank that people type
  reader->setDefaultDate(dateAt(moment));
  EXPECT_EQ(read("1:50 PM"_ns), 1709214600.25);
  reader->setDateFormat("yy"_ns);
  reader->setDefaultDate(nullptr);
  EXPECT_EQ(read("50"_ns), -631152000);
  reader->setTwoDigitStartDate(dateAt(2493072000));
  EXPECT_EQ(read("50"_ns), 2524608000);

  EXPECT_EQ(test::read(reader, "soon"_ns).error, "“soon” is not a date in the format “yy”");
  EXPECT_TRUE(refuses(
      [&] { reader->getObjectValue_forString_errorDescription(nullptr, nullptr, nullptr); }));
}

TEST(NSDateFormatter, Words) {
  // It is Thursday, the 29th of February 2024, 14:50 in Berlin.
  const auto berlin = NSTimeZone::timeZoneWithName("Europe/Berlin"_ns);
  const double midnight = 1709161200;
  const double now = midnight + 14 * 3600 + 50 * 60;
  constexpr double day = 86400;
  constexpr double hour = 3600;
  const double none = -1;
  const std::tuple<const char*, NSString*, double> cases[] = {
      {"en_US", "now"_ns, now},
      {"en_US", "today"_ns, midnight},
      {"en_US", " Tomorrow "_ns, midnight + day},
      {"en_US", "friday"_ns, midnight + day},
      {"en_US", "thursday"_ns, midnight},
      {"en_US", "next thursday"_ns, midnight + 7 * day},
      {"en_US", "next friday"_ns, midnight + day},
      {"en_US", "last thursday"_ns, midnight - 7 * day},
      {"en_US", "next month"_ns, midnight + 29 * day},
      {"en_US", "next year"_ns, midnight + 365 * day},  // the 28th: there is no 29th
      {"en_US", "in 3 days"_ns, now + 3 * day},
      {"en_US", "2 weeks ago"_ns, now - 14 * day},
      {"en_US", "5pm tomorrow"_ns, midnight + day + 17 * hour},
      {"en_US", "next friday, 5:15 PM"_ns, midnight + day + 17.25 * hour},
      {"en_US", "noon"_ns, midnight + 12 * hour},
      {"en_US", "12am"_ns, midnight},
      {"en_US", "2024-03-01 06:00"_ns, midnight + day + 6 * hour},
      {"de_DE", "Übermorgen"_ns, midnight + 2 * day},
      {"de_DE", "nächsten Freitag"_ns, midnight + day},
      {"de_DE", "vor 2 Tagen"_ns, now - 2 * day},
      {"de_DE", "1. März 2024"_ns, midnight + day},
      {"de_DE", "tomorrow"_ns, midnight + day},
      {"fr_FR", "après-demain"_ns, midnight + 2 * day},
      {"en_US", ""_ns, none},
      {"en_US", "tomorrowish"_ns, none},
      {"en_US", "tomorrow at"_ns, none},
      {"en_US", "25:00 tomorrow"_ns, none},
      {"en_US", "13pm"_ns, none},
      {"en_US", "17:30:00 tomorrow"_ns, midnight + day + 17.5 * hour},
      {"en_US", "17:30: tomorrow"_ns, none},
      {"en_US", "in 99999999999999999999 days"_ns, none},
      {"en_US", "now at 5pm"_ns, none},
  };
  for (const auto& [name, words, expected] : cases) {
    const auto locale = test::locale(name);
    const auto read = detail::readNaturalDate(words->view(), now, *berlin, *locale);
    EXPECT_EQ(read.value_or(none), expected) << words;
  }
  const auto allowed =
      NSDateFormatter::initWithDateFormat_allowNaturalLanguage("%d.%m.%Y"_ns, true);
  EXPECT_TRUE(allowed->dateFromString("tomorrow"_ns)->isLaterThanDate(NSDate::date()));
  allowed->setAllowsNaturalLanguage(false);
  EXPECT_EQ(allowed->dateFromString("tomorrow"_ns), nullptr);
}

TEST(NSDateFormatter, OneFormatterServesManyThreads) {
  const auto shared = formatter("de_DE", "Europe/Berlin"_ns);
  shared->setDateFormat("EEEE, d. MMMM y HH:mm:ss zzzz"_ns);
  expectServesManyThreads(shared, [](int i) { return dateAt(1704067200 + i * 86400.0); });
}

TEST(NSLocale, IdentifiersAndTheEnvironment) {
  const auto named = [](NSString* identifier) {
    return to_string(NSLocale::localeWithLocaleIdentifier(identifier));
  };
  EXPECT_EQ(named("de-at"_ns), "de_AT");
  EXPECT_EQ(named("de-DE-u-ca-buddhist"_ns), "de_DE@calendar=buddhist");
  EXPECT_EQ(named(ns(std::string(100'000, 'x'))), "");
  EXPECT_EQ(named("дом"_ns), "");
  EXPECT_EQ(NSLocale::localeWithLocaleIdentifier(nullptr), nullptr);
  const auto swiss = NSLocale::localeWithLocaleIdentifier("de_CH"_ns);
  EXPECT_EQ(to_string(swiss->groupingSeparator()), "’");
  EXPECT_EQ(to_string(swiss->currencyCode()), "CHF");
  EXPECT_TRUE(swiss->isEqual(NSLocale::localeWithLocaleIdentifier("de-CH"_ns)));
  EXPECT_EQ(to_string(swiss->displayNameForLocaleIdentifier("fr"_ns)), "Französisch");
}

}  // namespace
}  // namespace qz::test
