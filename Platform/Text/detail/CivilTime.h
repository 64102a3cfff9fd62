/// @file
/// Private: seconds since 1970 as a calendar shows them, and back. The Gregorian calendar of today,
/// for all years.
#pragma once

#include <cmath>
#include <cstdint>

namespace qz::detail {

/// Beyond this many seconds from 1970 (5.7 million years) nothing has a calendar date.
inline constexpr double farthestCivilTime = 1.8e14;

struct CivilTime {
  std::int64_t year = 1970;
  std::int32_t month = 1;  // 1 to 12
  std::int32_t day = 1;
  std::int32_t hour = 0;
  std::int32_t minute = 0;
  std::int32_t second = 0;
  std::int32_t millisecond = 0;
};

/// Whole seconds and milliseconds of a time. A double holds a written fraction only nearly: what is
/// within half a microsecond of the next millisecond has reached it.
struct SplitTime {
  std::int64_t seconds;
  std::int32_t milliseconds;
};
inline SplitTime splitTime(double seconds) noexcept {
  const double whole = std::floor(seconds);
  const auto microseconds = static_cast<std::int32_t>(std::lround((seconds - whole) * 1e6));
  const bool carries = microseconds == 1'000'000;
  return {static_cast<std::int64_t>(whole) + (carries ? 1 : 0), carries ? 0 : microseconds / 1000};
}

constexpr bool isLeapYear(std::int64_t year) noexcept {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr std::int32_t daysInMonth(std::int64_t year, std::int32_t month) noexcept {
  constexpr std::int8_t days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && isLeapYear(year) ? 29 : days[month - 1];
}

constexpr std::int64_t floorDivide(std::int64_t a, std::int64_t b) noexcept {
  return a / b - (a % b < 0 ? 1 : 0);
}

/// Days since 1970-01-01; the day may lie beyond its month. Years are counted from March, so that
/// the leap day is the last of its year.
constexpr std::int64_t daysOfCivil(std::int64_t year, std::int32_t month,
                                   std::int64_t day) noexcept {
  year -= month <= 2 ? 1 : 0;
  const std::int64_t era = floorDivide(year, 400);
  const std::int64_t yearOfEra = year - era * 400;
  const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}

/// Fills in year, month and day.
constexpr void setCivilDay(CivilTime& civil, std::int64_t days) noexcept {
  days += 719468;
  const std::int64_t era = floorDivide(days, 146097);
  const std::int64_t dayOfEra = days - era * 146097;
  const std::int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t month = (5 * dayOfYear + 2) / 153;
  civil.day = static_cast<std::int32_t>(dayOfYear - (153 * month + 2) / 5 + 1);
  civil.month = static_cast<std::int32_t>(month < 10 ? month + 3 : month - 9);
  civil.year = yearOfEra + era * 400 + (civil.month <= 2 ? 1 : 0);
}

/// What clocks show `local` seconds after 1970 began on them.
inline CivilTime civilOfLocal(SplitTime local) noexcept {
  CivilTime civil;
  const std::int64_t days = floorDivide(local.seconds, 86400);
  const auto second = static_cast<std::int32_t>(local.seconds - days * 86400);
  setCivilDay(civil, days);
  civil.hour = second / 3600;
  civil.minute = second / 60 % 60;
  civil.second = second % 60;
  civil.millisecond = local.milliseconds;
  return civil;
}

/// The opposite; fields may lie beyond their limits, the month apart.
inline double localOfCivil(const CivilTime& civil) noexcept {
  const std::int64_t days = daysOfCivil(civil.year, civil.month, civil.day);
  const std::int64_t seconds = days * 86400 + civil.hour * 3600 + civil.minute * 60 + civil.second;
  return static_cast<double>(seconds) + civil.millisecond / 1000.0;
}

/// 0 for Sunday.
constexpr std::int32_t weekdayOfDays(std::int64_t days) noexcept {
  return static_cast<std::int32_t>((days + 4) - floorDivide(days + 4, 7) * 7);
}

}  // namespace qz::detail
