#include "tests/support/Test.h"

namespace qz::test {
namespace {

using namespace std::chrono;

TEST(NSDate, DescribesItselfInUtc) {
  const std::pair<double, const char*> cases[] = {
      {0, "1970-01-01 00:00:00 +0000"},
      {-0.25, "1969-12-31 23:59:59 +0000"},
      {1709209800, "2024-02-29 12:30:00 +0000"},
      {-62135596801, "0000-12-31 23:59:59 +0000"},
      {317257084800, "12023-06-24 00:00:00 +0000"},
      {1e15, "1e+15 seconds since 1970"},
  };
  for (const auto& [seconds, text] : cases) EXPECT_EQ(to_string(dateAt(seconds)), text);
  EXPECT_EQ(NSDate::distantPast()->description()->UTF8String(), "0001-01-01 00:00:00 +0000");
  EXPECT_EQ(NSDate::distantFuture()->description()->UTF8String(), "9999-12-31 23:59:59 +0000");
}

TEST(NSDate, OrdersEveryNumber) {
  const double sorted[] = {nan, -infinity, -1e300, -0.25, 0, 1e-9, 1.5e9, infinity};
  for (std::size_t i = 0; i < std::size(sorted); ++i) {
    for (std::size_t j = 0; j < std::size(sorted); ++j) {
      const auto a = dateAt(sorted[i]), b = dateAt(sorted[j]);
      const auto expected = i < j   ? NSOrderedAscending
                            : i > j ? NSOrderedDescending
                                    : NSOrderedSame;
      EXPECT_EQ(send<NSComparisonResult>(a, "compare:"_sel, b.get()), expected) << i << ' ' << j;
      EXPECT_EQ(a->isEqual(b), i == j);
      EXPECT_EQ(a->isEarlierThanDate(b), i < j);
      EXPECT_EQ(a->isLaterThanDate(b), i > j);
      EXPECT_EQ(a->earlierDate(b), i <= j ? a : b);
      EXPECT_EQ(a->laterDate(b), i >= j ? a : b);
    }
  }
  EXPECT_TRUE(dateAt(-0.0)->isEqual(dateAt(0.0)));
  EXPECT_EQ(dateAt(nan)->hash(), dateAt(-nan)->hash());
  for (const char* name : {"compare:", "earlierDate:", "laterDate:", "isEarlierThanDate:",
                           "isLaterThanDate:", "timeIntervalSinceDate:"})
    EXPECT_TRUE(refuses(
        [&] { dateAt(0)->performSelector_withObject(Selector::named(name), nullptr); }, {name}));
}

TEST(NSDate, CountsFromNowAndFromOtherDates) {
  const auto before = system_clock::now();
  const auto date = as<NSDate>(classOf<NSDate>()->newObject());
  const auto later = NSDate::initWithTimeIntervalSinceNow(100);
  const auto after = system_clock::now();
  EXPECT_GE(date->timePoint() + 1us, before);  // what the double's steps lose
  EXPECT_LE(date->timePoint(), after);
  EXPECT_NEAR(later->timeIntervalSinceDate(date), 100, duration<double>(after - before).count());
  EXPECT_EQ(NSDate::dateWithTimeInterval_sinceDate(-2.5, dateAt(10))->timeIntervalSince1970(), 7.5);
}

TEST(NSDate, CrossesToTheClockOfTheLibraryAndBack) {
  EXPECT_EQ(
      NSDate::dateWithTimePoint(sys_days(2024y / 2 / 29) + 12h + 30min)->timeIntervalSince1970(),
      1709209800);
  const std::pair<double, system_clock::time_point> cases[] = {
      {1.5, system_clock::time_point(1500ms)},
      {-0.25, system_clock::time_point(-250ms)},
      {1e10, system_clock::time_point::max()},
      {-infinity, system_clock::time_point::min()},
      {-9223372036.5, system_clock::time_point(-9223372036500ms)},
      {nan, system_clock::time_point()},
  };
  for (const auto& [seconds, point] : cases)
    EXPECT_EQ(dateAt(seconds)->timePoint(), point) << seconds;
  // Neither way makes a Date of whole microseconds drift.
  for (auto point : {system_clock::time_point(1700000000123456us),
                     system_clock::time_point(-1700000000123456us)})
    EXPECT_EQ(round<microseconds>(NSDate::dateWithTimePoint(point)->timePoint()), point);
}

}  // namespace
}  // namespace qz::test
