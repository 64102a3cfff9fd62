#include "Platform/Text/NSTimeZone.h"

#include <ctime>

#include "Platform/Text/NSLocale.h"
#include "tests/support/Test.h"
#include "tests/support/Threads.h"

namespace qz::test {
namespace {

Ref<NSTimeZone> zone(NSString* name) { return NSTimeZone::timeZoneWithName(name); }

TEST(NSTimeZone, NamesThatAreZonesAndNamesThatAreNone) {
  EXPECT_TRUE(zone("Europe/Berlin"_ns)->name()->isEqual("Europe/Berlin"_ns));
  EXPECT_EQ(zone("Europe/Berlin"_ns), zone("Europe/Berlin"_ns));  // one Object for each
  EXPECT_TRUE(zone("GMT+5:30"_ns)->name()->isEqual("GMT+05:30"_ns));
  EXPECT_EQ(NSTimeZone::timeZoneWithAbbreviation("CET"_ns), zone("Europe/Paris"_ns));
  for (NSString* none : {"Nowhere/Land"_ns, ""_ns, "Etc/Unknown"_ns, "europe"_ns, "\x01/\x02"_ns})
    EXPECT_EQ(zone(none), nullptr) << none;
  EXPECT_EQ(zone(nullptr), nullptr);
  EXPECT_EQ(zone(ns(std::string(100'000, 'A'))), nullptr);
  EXPECT_EQ(NSTimeZone::timeZoneWithAbbreviation("XYZ"_ns), nullptr);
  const auto zones = NSTimeZone::abbreviationDictionary()->allValues();
  for (NSObject* name : *zones)
    EXPECT_NE(NSTimeZone::timeZoneWithName(as<NSString>(name)), nullptr) << name;
  EXPECT_GT(NSTimeZone::knownTimeZoneNames()->count(), 300u);
}

TEST(NSTimeZone, FixedDistances) {
  EXPECT_EQ(NSTimeZone::timeZoneForSecondsFromGMT(-12345)->secondsFromGMTForDate(dateAt(1e9)),
            -12345);
  EXPECT_TRUE(NSTimeZone::timeZoneForSecondsFromGMT(0)->isEqual(NSTimeZone::GMT()));
  EXPECT_EQ(NSTimeZone::timeZoneForSecondsFromGMT(64801), nullptr);
}

TEST(NSTimeZone, DaylightSaving) {
  const auto berlin = zone("Europe/Berlin"_ns);
  const double winter = 1704067200;  // 2024-01-01
  const double change = 1711846800;  // 2024-03-31 01:00 UTC
  EXPECT_FALSE(berlin->isDaylightSavingTimeForDate(dateAt(winter)));
  EXPECT_EQ(berlin->daylightSavingTimeOffsetForDate(dateAt(change)), 3600);
  EXPECT_EQ(
      berlin->nextDaylightSavingTimeTransitionAfterDate(dateAt(winter))->timeIntervalSince1970(),
      change);
  EXPECT_EQ(zone("Asia/Tokyo"_ns)->nextDaylightSavingTimeTransitionAfterDate(dateAt(winter)),
            nullptr);
  EXPECT_TRUE(berlin->abbreviationForDate(dateAt(change))->isEqual("CEST"_ns));
  const auto german = NSLocale::localeWithLocaleIdentifier("de_DE"_ns);
  EXPECT_TRUE(berlin->localizedName_locale(NSTimeZoneNameStyle::DaylightSaving, german)
                  ->isEqual("Mitteleuropäische Sommerzeit"_ns));
}

TEST(NSTimeZone, LocalTimesThatAreLeaptOverOrComeTwice) {
  const auto berlin = zone("Europe/Berlin"_ns);
  const double leap = 1711846800;  // 02:00 becomes 03:00
  EXPECT_EQ(berlin->timeOfLocal(leap + 3600 - 1), leap - 1);
  EXPECT_EQ(berlin->timeOfLocal(leap + 7200), leap);
  EXPECT_EQ(berlin->timeOfLocal(leap + 3600 + 1800), leap + 1800);  // 02:30 is no time: 03:30
  const double back = 1729990800;                                   // 03:00 becomes 02:00
  EXPECT_EQ(berlin->timeOfLocal(back + 3600), back - 3600);         // the first 02:00
  EXPECT_EQ(berlin->timeOfLocal(back + 7200), back + 3600);         // 03:00 comes once
}

// The offsets of the C library, which reads the machine's own tables.
TEST(NSTimeZone, OffsetsAreThoseOfTheSystem) {
  if (!std::filesystem::exists("/usr/share/zoneinfo/Europe/Berlin")) GTEST_SKIP();
  std::mt19937_64 random(7);
  for (const char* name : {"Europe/Berlin", "America/New_York", "Australia/Lord_Howe",
                           "Asia/Kolkata", "Pacific/Apia", "America/Sao_Paulo", "UTC"}) {
    ::setenv("TZ", name, 1);
    ::tzset();
    const auto ours = zone(ns(name));
    for (int i = 0; i < 2000; ++i) {
      const auto time = static_cast<std::time_t>(random() % 2'050'000'000u);  // 1970 to 2034
      std::tm parts{};
      ::localtime_r(&time, &parts);
      const auto seconds = static_cast<double>(time);
      ASSERT_EQ(ours->offsetAt(seconds), parts.tm_gmtoff) << name << " " << time;
      // A time that clocks showed leads back to it, or to an earlier one that they showed alike.
      const double back = ours->timeOfLocal(seconds + ours->offsetAt(seconds));
      ASSERT_TRUE(back == seconds ||
                  (back < seconds && back > seconds - 86400 &&
                   back + ours->offsetAt(back) == seconds + ours->offsetAt(seconds)))
          << name << " " << time;
    }
    NSTimeZone::resetSystemTimeZone();
    EXPECT_TRUE(NSTimeZone::systemTimeZone()->name()->isEqual(ours->name())) << name;
  }
  ::unsetenv("TZ");
  ::tzset();
  NSTimeZone::resetSystemTimeZone();
}

TEST(NSTimeZone, ManyThreadsAskAtOnce) {
  const auto shared = NSTimeZone::timeZoneWithName("America/Chicago"_ns);
  inThreads(4, [&](int i) {
    for (int k = 0; k < 200; ++k) {
      EXPECT_EQ(shared->offsetAt(1704067200), -21600);
      EXPECT_EQ(zone(i % 2 == 0 ? "Asia/Dhaka"_ns : "Asia/Kabul"_ns)->offsetAt(1704067200),
                i % 2 == 0 ? 21600 : 16200);
      EXPECT_NE(NSTimeZone::systemTimeZone(), nullptr);
    }
  });
}

}  // namespace
}  // namespace qz::test
