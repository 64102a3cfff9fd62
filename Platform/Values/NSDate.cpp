#include "Platform/Values/NSDate.h"

#include <cmath>
#include <compare>
#include <cstdint>
#include <functional>
#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSString.h"

namespace qz {
namespace {

using std::chrono::system_clock;

NSTimeInterval now() noexcept {
  return std::chrono::duration<NSTimeInterval>(system_clock::now().time_since_epoch()).count();
}

NSDate& requireDate(NSDate* date, const char* operation) {
  detail::requireArgument(operation, "the Date", date);
  return *date;
}

std::strong_ordering order(NSTimeInterval a, NSTimeInterval b) noexcept {
  if (a < b) return std::strong_ordering::less;
  if (a > b) return std::strong_ordering::greater;
  return std::isnan(b) <=> std::isnan(a);
}

}  // namespace

void NSDate::describe(ClassDescription<NSDate>& is) {
  is.named("NSDate")
      .classMethod<&NSDate::date>("date")
      .classMethod<&NSDate::dateWithTimeIntervalSince1970>("dateWithTimeIntervalSince1970:")
      .classMethod<&NSDate::dateWithTimeIntervalSinceNow>("dateWithTimeIntervalSinceNow:")
      .classMethod<&NSDate::dateWithTimeInterval_sinceDate>("dateWithTimeInterval:sinceDate:")
      .classMethod<&NSDate::distantPast>("distantPast")
      .classMethod<&NSDate::distantFuture>("distantFuture")
      .initializer<&NSDate::initWithTimeIntervalSince1970>("initWithTimeIntervalSince1970:")
      .initializer<&NSDate::initWithTimeIntervalSinceNow>("initWithTimeIntervalSinceNow:")
      .initializer<&NSDate::initWithTimeInterval_sinceDate>("initWithTimeInterval:sinceDate:")
      .method<&NSDate::timeIntervalSince1970>("timeIntervalSince1970")
      .method<&NSDate::timeIntervalSinceNow>("timeIntervalSinceNow")
      .method<&NSDate::timeIntervalSinceDate>("timeIntervalSinceDate:")
      .method<&NSDate::dateByAddingTimeInterval>("dateByAddingTimeInterval:")
      .method<&NSDate::earlierDate>("earlierDate:")
      .method<&NSDate::laterDate>("laterDate:")
      .method<&NSDate::compare>("compare:")
      .method<&NSDate::isEarlierThanDate>("isEarlierThanDate:")
      .method<&NSDate::isLaterThanDate>("isLaterThanDate:")
      .method<&NSDate::isEqualToDate>("isEqualToDate:");
}

// Making ------------------------------------------------------------------------------------------

NSDate::NSDate() : seconds_(now()) {}

Ref<NSDate> NSDate::date() { return make<NSDate>(); }

Ref<NSDate> NSDate::dateWithTimeIntervalSince1970(NSTimeInterval seconds) {
  return make<NSDate>(seconds);
}

Ref<NSDate> NSDate::dateWithTimeIntervalSinceNow(NSTimeInterval seconds) {
  return make<NSDate>(now() + seconds);
}

Ref<NSDate> NSDate::dateWithTimeInterval_sinceDate(NSTimeInterval seconds, NSDate* date) {
  return requireDate(date, "dateWithTimeInterval:sinceDate:").dateByAddingTimeInterval(seconds);
}

Ref<NSDate> NSDate::initWithTimeIntervalSince1970(NSTimeInterval seconds) {
  return make<NSDate>(seconds);
}

Ref<NSDate> NSDate::initWithTimeIntervalSinceNow(NSTimeInterval seconds) {
  return dateWithTimeIntervalSinceNow(seconds);
}

Ref<NSDate> NSDate::initWithTimeInterval_sinceDate(NSTimeInterval seconds, NSDate* date) {
  return dateWithTimeInterval_sinceDate(seconds, date);
}

Ref<NSDate> NSDate::distantPast() {
  static NSDate* const past = make<NSDate>(-62135596800.0).leak();
  return past;
}

Ref<NSDate> NSDate::distantFuture() {
  static NSDate* const future = make<NSDate>(253402300799.0).leak();
  return future;
}

// Reading -----------------------------------------------------------------------------------------

NSTimeInterval NSDate::timeIntervalSinceNow() const { return seconds_ - now(); }

NSTimeInterval NSDate::timeIntervalSinceDate(NSDate* date) const {
  return seconds_ - requireDate(date, "timeIntervalSinceDate:").seconds_;
}

system_clock::time_point NSDate::timePoint() const noexcept {
  using Unit = system_clock::duration;
  constexpr auto lowest = std::chrono::duration<NSTimeInterval>(Unit::min()).count();
  constexpr auto beyond = std::chrono::duration<NSTimeInterval>(Unit::max()).count();
  if (std::isnan(seconds_)) return {};
  if (seconds_ <= lowest) return system_clock::time_point::min();
  if (seconds_ >= beyond) return system_clock::time_point::max();
  // In two steps: seconds and units together have more digits than a double. Whole seconds are cut
  // towards zero, where they are within the range; rounding the remainder's product up would make
  // the parts of a second overtake the Date.
  const double whole = std::trunc(seconds_);
  const std::chrono::duration<double> rest(seconds_ - whole);
  const Unit units = std::chrono::seconds(static_cast<std::int64_t>(whole));
  return system_clock::time_point(units + std::chrono::floor<Unit>(rest));
}

// Deriving and comparing --------------------------------------------------------------------------

Ref<NSDate> NSDate::dateByAddingTimeInterval(NSTimeInterval seconds) const {
  return make<NSDate>(seconds_ + seconds);
}

Ref<NSDate> NSDate::earlierDate(NSDate* other) const {
  const bool isOther = std::is_lt(order(requireDate(other, "earlierDate:").seconds_, seconds_));
  return isOther ? other : const_cast<NSDate*>(this);
}

Ref<NSDate> NSDate::laterDate(NSDate* other) const {
  const bool isOther = std::is_gt(order(requireDate(other, "laterDate:").seconds_, seconds_));
  return isOther ? other : const_cast<NSDate*>(this);
}

NSComparisonResult NSDate::compare(NSDate* other) const {
  const auto ordering = order(seconds_, requireDate(other, "compare:").seconds_);
  if (std::is_lt(ordering)) return NSOrderedAscending;
  return std::is_gt(ordering) ? NSOrderedDescending : NSOrderedSame;
}

bool NSDate::isEarlierThanDate(NSDate* other) const {
  return std::is_lt(order(seconds_, requireDate(other, "isEarlierThanDate:").seconds_));
}

bool NSDate::isLaterThanDate(NSDate* other) const {
  return std::is_gt(order(seconds_, requireDate(other, "isLaterThanDate:").seconds_));
}

// As an Object ------------------------------------------------------------------------------------

bool NSDate::isEqualToDate(NSDate* other) const noexcept {
  return other != nullptr && std::is_eq(order(seconds_, other->seconds_));
}

bool NSDate::isEqual(NSObject* other) const {
  return other != nullptr && isKind<NSDate>(other) && isEqualToDate(static_cast<NSDate*>(other));
}

std::size_t NSDate::hash() const {
  if (std::isnan(seconds_)) return 0x7FF8000000000000u;  // whatever its sign and payload
  return std::hash<double>()(seconds_);
}

Ref<NSString> NSDate::description() const {
  using namespace std::chrono;
  // Within the years that the C++ library counts.
  constexpr double farthest = 1e12;
  if (!(std::fabs(seconds_) < farthest))
    return NSString::stringWithFormat("%g seconds since 1970"_ns, seconds_);
  const auto second = sys_seconds(seconds(static_cast<std::int64_t>(std::floor(seconds_))));
  const auto midnight = floor<days>(second);
  const year_month_day day(midnight);
  const hh_mm_ss time(second - midnight);
  const int year = static_cast<int>(day.year());
  return NSString::stringWithFormat(
      "%@%04d-%02d-%02d %02d:%02d:%02d +0000"_ns, year < 0 ? "-"_ns : ""_ns, std::abs(year),
      static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
      static_cast<int>(time.seconds().count()));
}

Ref<NSObject> NSDate::copy() const { return const_cast<NSDate*>(this); }

}  // namespace qz
