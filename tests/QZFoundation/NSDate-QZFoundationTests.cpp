#include "QZFoundation/NSDate-QZFoundation.h"

#include "tests/support/Test.h"

namespace qz::test {
namespace {

constexpr std::int32_t greatest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();

TEST(NSDateQZFoundation, IsSecondsAndNanoseconds) {
  const struct {
    double interval;
    QZTimespec time;
  } cases[] = {
      {1.5, {1, 500000000}},
      {-0.25, {-1, 750000000}},
      {-3, {-3, 0}},
      {0.9999999999, {0, 999999999}},  // cut off, not rounded to a second
      {-1e-20, {-1, 999999999}},
      {2147483647.5, {greatest, 500000000}},
      {1e10, {greatest, greatest}},
      {-1e300, {least, least}},
      {infinity, {greatest, greatest}},
      {std::numeric_limits<double>::quiet_NaN(), {0, 0}},
  };
  for (const auto& each : cases) {
    const auto date = dateAt(each.interval);
    EXPECT_EQ(qz::timespec(date), each.time) << each.interval;
    EXPECT_EQ(send<QZTimespec>(date, "timespec"_sel), each.time);
  }
}

TEST(NSDateQZFoundation, IsMadeOfEither) {
  EXPECT_EQ(dateWithTimespec(QZTimespec{-1, 750000000})->timeIntervalSince1970(), -0.25);
  EXPECT_EQ(dateWithTimespec(QZTimespec{1, -500000000})->timeIntervalSince1970(), 0.5);
  EXPECT_EQ(send<Ref<NSDate>>(classOf<NSDate>(), "dateWithTimespec:"_sel, QZTimespec{2, 0})
                ->timeIntervalSince1970(),
            2);
  const ::timespec system = qz::timespec(dateAt(1.5));
  EXPECT_EQ(dateWithTimespec(system)->timeIntervalSince1970(), 1.5);
  EXPECT_EQ(dateWithTimespec(::timespec{10000000000, 0})->timeIntervalSince1970(), 1e10);
}

}  // namespace
}  // namespace qz::test
