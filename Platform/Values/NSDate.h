/// @file
/// Dates: points in time.
#pragma once

#include <chrono>
#include <cstddef>

#include "Platform/Runtime/Derives.h"

#pragma GCC visibility push(default)

namespace qz {

/// Seconds, fractions included.
using NSTimeInterval = double;

/// A duration of the C++ library as seconds: `timeInterval(250ms)` is 0.25.
template <class Rep, class Period>
constexpr NSTimeInterval timeInterval(std::chrono::duration<Rep, Period> duration) noexcept {
  return std::chrono::duration<NSTimeInterval>(duration).count();
}

/// A point in time: seconds since 1970-01-01 00:00:00 UTC, without leap seconds, as the system's
/// clock counts them.
///
///     Ref<NSDate> soon = NSDate::dateWithTimeIntervalSinceNow(30);
///     Ref<NSDate> start = NSDate::dateWithTimePoint(std::chrono::sys_days(2024y / 2 / 29));
///     soon->compare(start);   // NSOrderedDescending
///
/// Today the steps between neighbouring Dates are about 0.2 microseconds. Equality, order and hash
/// go by that number, exactly; "not a number" equals itself and comes before all others, so every
/// Date has its place. Immutable; any thread. What raises for nil raises
/// NSInvalidArgumentException.
class NSDate final : public Derives<NSDate, NSObject> {
 public:
  static void describe(ClassDescription<NSDate>& is);

  /// Now.
  NSDate();

  /// A point in time of the system's clock.
  explicit NSDate(NSTimeInterval secondsSince1970) noexcept : seconds_(secondsSince1970) {}

  // Making ----------------------------------------------------------------------------------------

  /// Now.
  static Ref<NSDate> date();

  /// So many seconds after 1970, after now, or after `date`: before it when negative. Raises for a
  /// nil `date`.
  static Ref<NSDate> dateWithTimeIntervalSince1970(NSTimeInterval seconds);
  static Ref<NSDate> dateWithTimeIntervalSinceNow(NSTimeInterval seconds);
  static Ref<NSDate> dateWithTimeInterval_sinceDate(NSTimeInterval seconds, NSDate* date);
  static Ref<NSDate> initWithTimeIntervalSince1970(NSTimeInterval seconds);
  static Ref<NSDate> initWithTimeIntervalSinceNow(NSTimeInterval seconds);
  static Ref<NSDate> initWithTimeInterval_sinceDate(NSTimeInterval seconds, NSDate* date);

  /// The first second of the year 1 and the last of the year 9999: before and after every Date that
  /// a person means. Always the same two Objects.
  static Ref<NSDate> distantPast();
  static Ref<NSDate> distantFuture();

  /// Of a point in time of the system's clock, in any unit.
  template <class Duration>
  static Ref<NSDate> dateWithTimePoint(
      std::chrono::time_point<std::chrono::system_clock, Duration> point) {
    return dateWithTimeIntervalSince1970(
        std::chrono::duration<NSTimeInterval>(point.time_since_epoch()).count());
  }

  /// So long after now, as a limit: `lock->lockBeforeDate(NSDate::dateAfter(20ms))`.
  template <class Rep, class Period>
  static Ref<NSDate> dateAfter(std::chrono::duration<Rep, Period> duration) {
    return dateWithTimeIntervalSinceNow(timeInterval(duration));
  }

  // Reading ---------------------------------------------------------------------------------------

  /// The number itself, which may be infinite or "not a number".
  NSTimeInterval timeIntervalSince1970() const noexcept { return seconds_; }

  /// How long after now, or after `date`, this is; negative when it is before. Raises for nil.
  NSTimeInterval timeIntervalSinceNow() const;
  NSTimeInterval timeIntervalSinceDate(NSDate* date) const;

  /// For the C++ library, rounded down to its clock's unit. What lies beyond the clock's range (in
  /// nanoseconds, the years 1678 to 2261) is the nearest point within it; "not a number" is 1970.
  std::chrono::system_clock::time_point timePoint() const noexcept;

  // Deriving and comparing ------------------------------------------------------------------------

  /// As many seconds later; earlier when negative.
  Ref<NSDate> dateByAddingTimeInterval(NSTimeInterval seconds) const;

  /// The one of both that comes first or last; this one when they are equal. Raise for nil.
  Ref<NSDate> earlierDate(NSDate* other) const;
  Ref<NSDate> laterDate(NSDate* other) const;

  /// How the receiver orders against `other`. Raises for nil.
  NSComparisonResult compare(NSDate* other) const;

  /// Whether this comes before or after `other`. Raise for nil.
  bool isEarlierThanDate(NSDate* other) const;
  bool isLaterThanDate(NSDate* other) const;

  // As an Object ----------------------------------------------------------------------------------

  /// The same point in time. False for nil.
  bool isEqualToDate(NSDate* other) const noexcept;
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

  /// In UTC, to the second: "2024-02-29 12:30:00 +0000". Years before 1 and after 9999 are written
  /// as they are counted ("-0043", "12024", with the calendar of today); what is farther away than
  /// any year as the number: "1e+300 seconds since 1970".
  Ref<NSString> description() const override;

  /// This very Date.
  Ref<NSObject> copy() const override;

 private:
  NSTimeInterval seconds_;
};

}  // namespace qz

#pragma GCC visibility pop
