#include "Platform/Text/detail/DateNames.h"

#include <unicode/dtfmtsym.h>
#include <unicode/smpdtfmt.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <memory>

#include "Platform/Text/detail/IcuText.h"

namespace qz::detail {
namespace {

std::vector<std::u16string> texts(const icu::UnicodeString* names, std::int32_t count,
                                  std::int32_t first = 0) {
  std::vector<std::u16string> all;
  for (std::int32_t i = first; i < count; ++i) all.emplace_back(viewOf(names[i]));
  return all;
}

}  // namespace

DateNames DateNames::ofLocale(const NSLocale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::DateFormatSymbols symbols(icuLocale(locale), "gregorian", status);
  if (U_FAILURE(status)) return {};
  DateNames names;
  std::int32_t count = 0;
  const icu::UnicodeString* found = symbols.getMonths(count);
  names.months = texts(found, count);
  found = symbols.getShortMonths(count);
  names.shortMonths = texts(found, count);
  // ICU counts weekdays from 1.
  found = symbols.getWeekdays(count);
  names.weekdays = texts(found, count, 1);
  found = symbols.getShortWeekdays(count);
  names.shortWeekdays = texts(found, count, 1);
  found = symbols.getAmPmStrings(count);
  names.halves = texts(found, count);
  return names;
}

FoundName findName(std::u16string_view text, const std::vector<std::u16string>& names) {
  FoundName best;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::u16string& name = names[i];
    if (name.empty() || name.size() <= best.length || name.size() > text.size()) continue;
    if (u_strncasecmp(text.data(), name.data(), static_cast<std::int32_t>(name.size()),
                      U_FOLD_CASE_DEFAULT) == 0)
      best = {static_cast<int>(i), name.size()};
  }
  return best;
}

std::unique_ptr<icu::SimpleDateFormat> localeFormat(const NSLocale& locale, int dateStyle,
                                                    int timeStyle) {
  using icu::DateFormat;
  const auto style = [](int ours) {
    const int icu = ours < 1 ? DateFormat::kNone : DateFormat::kShort + 1 - std::min(ours, 4);
    return static_cast<DateFormat::EStyle>(icu);
  };
  std::unique_ptr<DateFormat> format(
      DateFormat::createDateTimeInstance(style(dateStyle), style(timeStyle), icuLocale(locale)));
  auto* simple = dynamic_cast<icu::SimpleDateFormat*>(format.get());
  if (simple != nullptr) format.release();
  return std::unique_ptr<icu::SimpleDateFormat>(simple);
}

std::u16string localePattern(const NSLocale& locale, int dateStyle, int timeStyle) {
  const auto format = localeFormat(locale, dateStyle, timeStyle);
  icu::UnicodeString pattern;
  if (format != nullptr) format->toPattern(pattern);
  return std::u16string(viewOf(pattern));
}

}  // namespace qz::detail
