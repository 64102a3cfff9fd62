/// @file
/// Private: formats of dates with percent signs, cut into steps once.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#pragma GCC visibility push(default)
namespace qz {
class NSLocale;
}
#pragma GCC visibility pop

namespace qz::detail {

enum class DateField : std::uint8_t {
  Text,  // as it stands
  Year,
  ShortYear,
  Month,
  MonthName,
  ShortMonthName,
  Day,
  YearDay,
  WeekdayName,
  ShortWeekdayName,
  WeekdayNumber,
  Hour,
  HalfDayHour,
  HalfDay,
  Minute,
  Second,
  Millisecond,
  ZoneName,
  ZoneOffset,
};

constexpr bool isNameField(DateField field) noexcept {
  return field == DateField::MonthName || field == DateField::ShortMonthName ||
         field == DateField::WeekdayName || field == DateField::ShortWeekdayName ||
         field == DateField::HalfDay;
}

struct DateStep {
  DateField field = DateField::Text;
  std::uint8_t width = 0;  // at least so many digits
  char16_t fill = u'0';    // what makes up for missing ones
  std::uint32_t from = 0;  // of a text: where it stands in `texts`
  std::uint32_t length = 0;
};

struct PercentPattern {
  std::u16string texts;
  std::vector<DateStep> steps;

  /// `%c`, `%x` and `%X` become what the locale writes for them; unknown conversions stay as they
  /// are.
  static PercentPattern compile(std::u16string_view format, const NSLocale& locale);

  bool needsNames() const noexcept;
};

}  // namespace qz::detail
