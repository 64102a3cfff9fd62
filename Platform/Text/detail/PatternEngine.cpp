// Dates in Unicode's patterns and in the locales' styles.
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <utility>

#include "Platform/Text/NSTimeZone.h"
#include "Platform/Text/detail/CivilTime.h"
#include "Platform/Text/detail/DateEngine.h"
#include "Platform/Text/detail/DateNames.h"
#include "Platform/Text/detail/IcuText.h"
#include "Platform/Text/detail/ZoneRules.h"

namespace qz::detail {
namespace {

// Before any date there is: the calendar was never reformed.
constexpr UDate neverReformed = -1.8e17;

// Locales separate "5:30" from "PM" by blanks that nobody types.
icu::UnicodeString withPlainBlanks(icu::UnicodeString text) {
  for (std::int32_t i = 0; i < text.length(); ++i) {
    const char16_t unit = text[i];
    if (unit == 0x00A0 || unit == 0x2009 || unit == 0x202F) text.setCharAt(i, u' ');
  }
  return text;
}

// ICU 72 counts the digits of a fraction in powers of ten of 32 bits, and divides by zero after 35.
bool hasEndlessNumber(const icu::UnicodeString& text) {
  constexpr int longest = 30;
  int digits = 0;
  for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
    const UChar32 character = text.char32At(i);
    digits = u_isdigit(character) ? digits + U16_LENGTH(character) : 0;
    if (digits > longest) return true;
  }
  return false;
}

double milliseconds(double seconds) noexcept {
  const SplitTime split = splitTime(seconds);
  return static_cast<double>(split.seconds) * 1000 + split.milliseconds;
}

class PatternEngine final : public DateEngine {
 public:
  PatternEngine(std::unique_ptr<icu::SimpleDateFormat> writer, DateReading reading)
      : writer_(std::move(writer)), reading_(reading) {
    calendar_.reset(writer_->getCalendar()->clone());
    calendar_->setLenient(reading.isLenient);
    UErrorCode status = U_ZERO_ERROR;
    if (auto* gregorian = dynamic_cast<icu::GregorianCalendar*>(calendar_.get()))
      gregorian->setGregorianChange(neverReformed, status);
    writer_->setCalendar(*calendar_);

    reader_.reset(writer_->clone());
    icu::UnicodeString pattern;
    reader_->applyPattern(withPlainBlanks(writer_->toPattern(pattern)));
    reader_->setLenient(reading.isLenient);
    reader_->set2DigitYearStart(reading.twoDigitStart * 1000, status);
  }

  Ref<NSString> format(double seconds, const NSTimeZone& zone) const override {
    if (!(std::abs(seconds) <= farthestCivilTime)) return nullptr;
    const auto calendar = calendarIn(zone);
    UErrorCode status = U_ZERO_ERROR;
    calendar->setTime(milliseconds(seconds), status);
    icu::UnicodeString text;
    icu::FieldPosition nowhere(icu::FieldPosition::DONT_CARE);
    writer_->format(*calendar, text, nowhere);
    return U_FAILURE(status) ? nullptr : stringOf(text);
  }

  std::optional<double> parse(std::u16string_view text, const NSTimeZone& zone) const override {
    icu::UnicodeString units = withPlainBlanks(copyOf(text));
    if (reading_.isLenient) units.trim();
    if (units.isEmpty() || hasEndlessNumber(units)) return std::nullopt;
    const auto calendar = calendarIn(zone);
    setDefaults(*calendar, zone);
    icu::ParsePosition position(0);
    reader_->parse(units, *calendar, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() != units.length()) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    const double seconds = calendar->getTime(status) / 1000;
    if (U_FAILURE(status) || !(std::abs(seconds) <= farthestCivilTime)) return std::nullopt;
    return seconds;
  }

  Ref<NSString> pattern() const override {
    icu::UnicodeString pattern;
    return stringOf(writer_->toPattern(pattern));
  }

 private:
  std::unique_ptr<icu::Calendar> calendarIn(const NSTimeZone& zone) const {
    std::unique_ptr<icu::Calendar> calendar(calendar_->clone());
    calendar->setTimeZone(zone.rules().icuZone());
    return calendar;
  }

  // What the text does not say. The fields are set one by one on an empty calendar: a whole time
  // would count as saying the weekday and the week as well.
  void setDefaults(icu::Calendar& calendar, const NSTimeZone& zone) const {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::Calendar> defaults(calendar.clone());
    const double local = defaultLocalTime(reading_, zone);
    defaults->setTime(milliseconds(zone.timeOfLocal(local)), status);
    calendar.clear();
    for (const auto field : {UCAL_ERA, UCAL_YEAR, UCAL_MONTH, UCAL_DATE, UCAL_HOUR_OF_DAY,
                             UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND})
      calendar.set(field, defaults->get(field, status));
  }

  std::unique_ptr<icu::SimpleDateFormat> writer_;
  std::unique_ptr<icu::SimpleDateFormat> reader_;
  std::unique_ptr<icu::Calendar> calendar_;
  DateReading reading_;
};

// In place of what cannot be made: says nothing, reads nothing.
class NoEngine final : public DateEngine {
  Ref<NSString> format(double, const NSTimeZone&) const override { return nullptr; }
  std::optional<double> parse(std::u16string_view, const NSTimeZone&) const override {
    return std::nullopt;
  }
  Ref<NSString> pattern() const override { return ""_ns; }
};

}  // namespace

std::unique_ptr<const DateEngine> makePatternEngine(std::u16string_view pattern,
                                                    const NSLocale& locale, DateReading reading) {
  UErrorCode status = U_ZERO_ERROR;
  auto format = std::make_unique<icu::SimpleDateFormat>(copyOf(pattern), icuLocale(locale), status);
  if (U_FAILURE(status)) return std::make_unique<NoEngine>();
  return std::make_unique<PatternEngine>(std::move(format), reading);
}

std::unique_ptr<const DateEngine> makeStyleEngine(int dateStyle, int timeStyle,
                                                  const NSLocale& locale, DateReading reading) {
  if (dateStyle == 0 && timeStyle == 0) return makePatternEngine(u"", locale, reading);
  auto format = localeFormat(locale, dateStyle, timeStyle);
  if (format == nullptr) return std::make_unique<NoEngine>();
  return std::make_unique<PatternEngine>(std::move(format), reading);
}

}  // namespace qz::detail
