/// @file
/// Private: the names of months, weekdays and halves of the day in a locale.
#pragma once

#include <unicode/uversion.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

U_NAMESPACE_BEGIN
class SimpleDateFormat;
U_NAMESPACE_END

#pragma GCC visibility push(default)
namespace qz {
class NSLocale;
}
#pragma GCC visibility pop

namespace qz::detail {

struct DateNames {
  std::vector<std::u16string> months, shortMonths;      // January first
  std::vector<std::u16string> weekdays, shortWeekdays;  // Sunday first
  std::vector<std::u16string> halves;                   // before and after noon

  static DateNames ofLocale(const NSLocale& locale);
};

struct FoundName {
  int index = -1;
  std::size_t length = 0;
};

/// The longest of `names` that `text` begins with, case aside.
FoundName findName(std::u16string_view text, const std::vector<std::u16string>& names);

/// The locale's format for a date and a time of these styles (0: none, 1: short … 4: full; not both
/// none), and its pattern. Null and empty when ICU has none.
std::unique_ptr<icu::SimpleDateFormat> localeFormat(const NSLocale& locale, int dateStyle,
                                                    int timeStyle);
std::u16string localePattern(const NSLocale& locale, int dateStyle, int timeStyle);

}  // namespace qz::detail
