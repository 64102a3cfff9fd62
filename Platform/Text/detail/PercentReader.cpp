#include "Platform/Text/detail/PercentReader.h"

#include <algorithm>
#include <cmath>

#include "Platform/Values/detail/UnitKinds.h"

namespace qz::detail {
namespace {

// More than a year of nine digits has no date.
constexpr std::size_t longestYear = 9;

constexpr bool isNumeric(DateField field) noexcept {
  return field != DateField::Text && !isNameField(field) && field != DateField::ZoneName &&
         field != DateField::ZoneOffset;
}

constexpr bool isZoneCharacter(char16_t unit) noexcept {
  return isAsciiUpper(unit) || isAsciiLower(unit) || isDigit(unit) || unit == u'/' ||
         unit == u'_' || unit == u'+' || unit == u'-' || unit == u':';
}

}  // namespace

std::optional<double> PercentReader::read(std::u16string_view text) {
  rest_ = text;
  for (std::size_t i = 0; i < pattern_.steps.size(); ++i)
    if (!step(i)) return std::nullopt;
  if (reading_.isLenient) skipBlanks();
  return rest_.empty() && !pattern_.steps.empty() ? time() : std::nullopt;
}

bool PercentReader::step(std::size_t index) {
  const DateStep& step = pattern_.steps[index];
  if (reading_.isLenient && index == 0) skipBlanks();
  if (step.field == DateField::Text)
    return literal(std::u16string_view(pattern_.texts).substr(step.from, step.length));
  if (isNameField(step.field)) return name(step.field);
  if (step.field == DateField::ZoneName) return zoneName();
  if (step.field == DateField::ZoneOffset) return zoneOffset();
  const bool digitsFollow =
      index + 1 < pattern_.steps.size() && isNumeric(pattern_.steps[index + 1].field);
  return number(step, digitsFollow);
}

void PercentReader::skipBlanks() noexcept {
  const auto end = std::find_if_not(rest_.begin(), rest_.end(), &isBlank);
  rest_.remove_prefix(static_cast<std::size_t>(end - rest_.begin()));
}

// Blanks in a format stand for any number of blanks, and for none.
bool PercentReader::literal(std::u16string_view text) {
  for (const char16_t unit : text) {
    if (isBlank(unit)) {
      skipBlanks();
    } else if (!rest_.empty() &&
               (rest_.front() == unit ||
                (reading_.isLenient && toAsciiLower(rest_.front()) == toAsciiLower(unit)))) {
      rest_.remove_prefix(1);
    } else {
      return false;
    }
  }
  return true;
}

std::optional<std::int64_t> PercentReader::digits(std::size_t atMost) noexcept {
  std::int64_t value = 0;
  std::size_t count = 0;
  while (count < atMost && count < rest_.size() && isDigit(rest_[count]))
    value = value * 10 + (rest_[count++] - u'0');
  rest_.remove_prefix(count);
  return count == 0 ? std::nullopt : std::optional(value);
}

bool PercentReader::number(const DateStep& step, bool digitsFollow) {
  if (step.fill == u' ' || reading_.isLenient) skipBlanks();
  bool isNegative = false;
  std::size_t atMost = 2;
  switch (step.field) {
    case DateField::Year:
      atMost = digitsFollow ? 4 : longestYear;
      isNegative = !rest_.empty() && rest_.front() == u'-';
      if (isNegative) rest_.remove_prefix(1);
      break;
    case DateField::YearDay:
    case DateField::Millisecond:
      atMost = 3;
      break;
    case DateField::WeekdayNumber:
      atMost = 1;
      break;
    default:
      break;
  }
  const auto value = digits(atMost);
  return value && keep(step.field, isNegative ? -*value : *value);
}

// Whether the field may have that value, which is kept. A lenient reader takes any and lets it
// carry, so that January 32nd is in February.
bool PercentReader::keep(DateField field, std::int64_t value) {
  const auto within = [&](std::optional<std::int32_t>& place, std::int32_t least,
                          std::int32_t greatest) {
    if (!reading_.isLenient && (value < least || value > greatest)) return false;
    place = static_cast<std::int32_t>(value);
    return true;
  };
  switch (field) {
    case DateField::Year:
      year_ = value;
      return true;
    case DateField::ShortYear:
      shortYear_ = value;
      return true;
    case DateField::Month:
      return value >= 1 && value <= 12 && within(month_, 1, 12);
    case DateField::Day:
      return within(day_, 1, 31);
    case DateField::YearDay:
      return within(yearDay_, 1, 366);
    case DateField::Hour:
      return within(hour_, 0, 23);
    case DateField::HalfDayHour:
      return within(halfDayHour_, 1, 12);
    case DateField::Minute:
      return within(minute_, 0, 59);
    case DateField::Second:
      return within(second_, 0, 60);  // leap seconds are written
    case DateField::Millisecond:
      return within(millisecond_, 0, 999);
    default:
      return value <= 6;  // the weekday follows from the date
  }
}

bool PercentReader::name(DateField field) {
  const auto longest = [this](const std::vector<std::u16string>& a,
                              const std::vector<std::u16string>& b) {
    const FoundName first = findName(rest_, a);
    const FoundName second = findName(rest_, b);
    return first.length >= second.length ? first : second;
  };
  FoundName found;
  if (field == DateField::MonthName || field == DateField::ShortMonthName) {
    found = longest(names_.months, names_.shortMonths);
    if (found.index >= 0) month_ = found.index + 1;
  } else if (field == DateField::HalfDay) {
    found = findName(rest_, names_.halves);
    if (found.index >= 0) half_ = found.index;
  } else {
    found = longest(names_.weekdays, names_.shortWeekdays);
  }
  rest_.remove_prefix(found.length);
  return found.index >= 0;
}

bool PercentReader::zoneName() {
  const auto end = std::find_if_not(rest_.begin(), rest_.end(), &isZoneCharacter);
  const auto length = static_cast<std::size_t>(end - rest_.begin());
  const auto text = NSString::stringWithCharacters(rest_.substr(0, length));
  namedZone_ = NSTimeZone::timeZoneWithAbbreviation(text);
  if (!namedZone_) namedZone_ = NSTimeZone::timeZoneWithName(text);
  rest_.remove_prefix(length);
  return namedZone_ != nullptr;
}

// "+0530", "+05:30", "Z".
bool PercentReader::zoneOffset() {
  if (rest_.empty()) return false;
  const char16_t sign = rest_.front();
  rest_.remove_prefix(1);
  if (sign == u'Z') {
    offset_ = 0;
    return true;
  }
  if (sign != u'+' && sign != u'-') return false;
  const auto hours = digits(2);
  if (rest_.starts_with(u':')) rest_.remove_prefix(1);
  const auto minutes = digits(2);
  if (!hours || !minutes || *hours > 18 || *minutes > 59) return false;
  const auto distance = static_cast<std::int32_t>(*hours * 3600 + *minutes * 60);
  offset_ = sign == u'-' ? -distance : distance;
  return true;
}

std::optional<double> PercentReader::time() const {
  const CivilTime defaults = civilOfLocal(splitTime(defaultLocalTime(reading_, zone_)));
  if (year_) return timeIn(*year_, defaults);
  if (!shortYear_) return timeIn(defaults.year, defaults);
  // The first such year in which the date is not before the century's start.
  const double start = reading_.twoDigitStart;
  const CivilTime first = civilOfLocal(splitTime(start + zone_.offsetAt(start)));
  std::int64_t year = floorDivide(first.year, 100) * 100 + *shortYear_;
  if (year < first.year) year += 100;
  const auto time = timeIn(year, defaults);
  return year == first.year && time < start ? timeIn(year + 100, defaults) : time;
}

// Fields that were not given come from the default date.
std::optional<double> PercentReader::timeIn(std::int64_t year, const CivilTime& defaults) const {
  CivilTime civil = defaults;
  civil.year = year;
  if (yearDay_ && !month_ && !day_) {
    civil.month = 1;
    civil.day = *yearDay_;
    if (!reading_.isLenient && *yearDay_ == 366 && !isLeapYear(civil.year)) return std::nullopt;
  } else {
    civil.month = month_.value_or(civil.month);
    civil.day = day_.value_or(civil.day);
    const std::int32_t last = daysInMonth(civil.year, civil.month);
    if (!day_) civil.day = std::min(civil.day, last);
    if (!reading_.isLenient && civil.day > last) return std::nullopt;
  }
  if (hour_)
    civil.hour = *hour_;
  else if (halfDayHour_)
    civil.hour = *halfDayHour_ % 12 + 12 * half_.value_or(0);
  else if (half_)
    civil.hour = civil.hour % 12 + 12 * *half_;
  civil.minute = minute_.value_or(civil.minute);
  civil.second = second_.value_or(civil.second);
  civil.millisecond = millisecond_.value_or(civil.millisecond);

  const double local = localOfCivil(civil);
  const double seconds = offset_      ? local - *offset_
                         : namedZone_ ? namedZone_->timeOfLocal(local)
                                      : zone_.timeOfLocal(local);
  return std::abs(seconds) <= farthestCivilTime ? std::optional(seconds) : std::nullopt;
}

}  // namespace qz::detail
