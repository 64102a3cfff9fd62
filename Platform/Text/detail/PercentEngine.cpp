// Dates in formats with percent signs.
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "Platform/Text/NSLocale.h"
#include "Platform/Text/NSTimeZone.h"
#include "Platform/Text/detail/CivilTime.h"
#include "Platform/Text/detail/DateEngine.h"
#include "Platform/Text/detail/DateNames.h"
#include "Platform/Text/detail/PercentPattern.h"
#include "Platform/Text/detail/PercentReader.h"
#include "Platform/Values/detail/UnitBuffer.h"

namespace qz::detail {
namespace {

// Room for any 64-bit number with its sign.
constexpr std::size_t longestNumber = 21;

char16_t* writeNumber(char16_t* to, std::int64_t value, std::uint8_t width, char16_t fill) {
  std::uint64_t rest =
      value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
  if (value < 0) *to++ = u'-';
  if (width == 2 && rest < 100) {  // nearly all
    *to++ = rest < 10 ? fill : static_cast<char16_t>(u'0' + rest / 10);
    *to++ = static_cast<char16_t>(u'0' + rest % 10);
    return to;
  }
  char16_t digits[longestNumber];
  std::size_t count = 0;
  do digits[count++] = static_cast<char16_t>(u'0' + rest % 10);
  while ((rest /= 10) != 0);
  for (std::size_t i = count; i < width; ++i) *to++ = fill;
  while (count > 0) *to++ = digits[--count];
  return to;
}

std::uint32_t shortYear(std::int64_t year) noexcept {
  return static_cast<std::uint32_t>(year - floorDivide(year, 100) * 100);
}

class PercentEngine final : public DateEngine {
 public:
  PercentEngine(std::u16string_view format, const NSLocale& locale, DateReading reading)
      : pattern_(PercentPattern::compile(format, locale)),
        format_(NSString::stringWithCharacters(format)),
        reading_(reading) {
    if (pattern_.needsNames()) names_ = DateNames::ofLocale(locale);
  }

  Ref<NSString> format(double seconds, const NSTimeZone& zone) const override {
    if (!(std::abs(seconds) <= farthestCivilTime)) return nullptr;
    SplitTime time = splitTime(seconds);
    const std::int32_t offset = zone.offsetAt(static_cast<double>(time.seconds));
    time.seconds += offset;
    const CivilTime civil = civilOfLocal(time);
    UnitBuffer out;
    for (const DateStep& step : pattern_.steps) {
      if (step.field == DateField::Text)
        out.append(std::u16string_view(pattern_.texts).substr(step.from, step.length));
      else if (isNameField(step.field))
        out.append(name(step.field, civil));
      else if (step.field == DateField::ZoneName)
        writeZoneName(out, seconds, zone);
      else if (step.field == DateField::ZoneOffset)
        writeOffset(out, offset);
      else
        out.commit(writeNumber(out.room(longestNumber + step.width), number(step.field, civil),
                               step.width, step.fill));
    }
    return out.toString();
  }

  std::optional<double> parse(std::u16string_view text, const NSTimeZone& zone) const override {
    return PercentReader(pattern_, names_, reading_, zone).read(text);
  }

  Ref<NSString> pattern() const override { return format_; }

 private:
  static std::int64_t number(DateField field, const CivilTime& civil) noexcept {
    switch (field) {
      case DateField::Year:
        return civil.year;
      case DateField::ShortYear:
        return shortYear(civil.year);
      case DateField::Month:
        return civil.month;
      case DateField::Day:
        return civil.day;
      case DateField::YearDay:
        return daysOfCivil(civil.year, civil.month, civil.day) - daysOfCivil(civil.year, 1, 1) + 1;
      case DateField::WeekdayNumber:
        return weekday(civil);
      case DateField::Hour:
        return civil.hour;
      case DateField::HalfDayHour:
        return (civil.hour + 11) % 12 + 1;
      case DateField::Minute:
        return civil.minute;
      case DateField::Second:
        return civil.second;
      case DateField::Millisecond:
        return civil.millisecond;
      default:
        return 0;
    }
  }

  static std::int32_t weekday(const CivilTime& civil) noexcept {
    return weekdayOfDays(daysOfCivil(civil.year, civil.month, civil.day));
  }

  std::u16string_view name(DateField field, const CivilTime& civil) const noexcept {
    const auto at = [](const std::vector<std::u16string>& names, std::int32_t index) {
      const auto place = static_cast<std::size_t>(index);
      return place < names.size() ? std::u16string_view(names[place]) : std::u16string_view();
    };
    switch (field) {
      case DateField::MonthName:
        return at(names_.months, civil.month - 1);
      case DateField::ShortMonthName:
        return at(names_.shortMonths, civil.month - 1);
      case DateField::WeekdayName:
        return at(names_.weekdays, weekday(civil));
      case DateField::ShortWeekdayName:
        return at(names_.shortWeekdays, weekday(civil));
      default:
        return at(names_.halves, civil.hour / 12);
    }
  }

  static void writeZoneName(UnitBuffer& out, double seconds, const NSTimeZone& zone) {
    const Ref<NSString> name =
        zone.abbreviationForDate(NSDate::dateWithTimeIntervalSince1970(seconds));
    out.append(name->view());
  }

  static void writeOffset(UnitBuffer& out, std::int32_t offset) {
    out.append(offset < 0 ? u'-' : u'+');
    const std::int32_t minutes = std::abs(offset) / 60;
    out.commit(writeNumber(out.room(longestNumber), minutes / 60, 2, u'0'));
    out.commit(writeNumber(out.room(longestNumber), minutes % 60, 2, u'0'));
  }

  PercentPattern pattern_;
  Ref<NSString> format_;
  DateReading reading_;
  DateNames names_;
};

}  // namespace

std::unique_ptr<const DateEngine> makePercentEngine(std::u16string_view format,
                                                    const NSLocale& locale, DateReading reading) {
  return std::make_unique<PercentEngine>(format, locale, reading);
}

double defaultLocalTime(const DateReading& reading, const NSTimeZone& zone) {
  if (!reading.defaultTime) return 946684800;
  return *reading.defaultTime + zone.offsetAt(*reading.defaultTime);
}

}  // namespace qz::detail
