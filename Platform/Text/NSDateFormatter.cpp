#include "Platform/Text/NSDateFormatter.h"

#include <unicode/dtptngen.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Text/NSLocale.h"
#include "Platform/Text/NSTimeZone.h"
#include "Platform/Text/detail/DateEngine.h"
#include "Platform/Text/detail/DateNames.h"
#include "Platform/Text/detail/IcuText.h"
#include "Platform/Text/detail/LocaleNames.h"
#include "Platform/Text/detail/NaturalDate.h"
#include "Platform/Values/detail/StringStorage.h"

namespace qz {

using Behavior = NSDateFormatterBehavior;

void NSDateFormatter::describe(ClassDescription<NSDateFormatter>& is) {
  is.named("NSDateFormatter")
      .initializer<&NSDateFormatter::initWithDateFormat_allowNaturalLanguage>(
          "initWithDateFormat:allowNaturalLanguage:")
      .classMethod<&NSDateFormatter::defaultFormatterBehavior>("defaultFormatterBehavior")
      .classMethod<&NSDateFormatter::setDefaultFormatterBehavior>("setDefaultFormatterBehavior:")
      .classMethod<&NSDateFormatter::localizedStringFromDate_dateStyle_timeStyle>(
          "localizedStringFromDate:dateStyle:timeStyle:")
      .classMethod<&NSDateFormatter::dateFormatFromTemplate_options_locale>(
          "dateFormatFromTemplate:options:locale:")
      .method<&NSDateFormatter::stringFromDate>("stringFromDate:")
      .method<&NSDateFormatter::dateFromString>("dateFromString:")
      .property<&NSDateFormatter::formatterBehavior, &NSDateFormatter::setFormatterBehavior>(
          "formatterBehavior")
      // Configuration files name it so, too.
      .property<&NSDateFormatter::formatterBehavior, &NSDateFormatter::setFormatterBehavior>(
          "formattingBehavior")
      .property<&NSDateFormatter::dateFormat, &NSDateFormatter::setDateFormat>("dateFormat")
      .method<&NSDateFormatter::setLocalizedDateFormatFromTemplate>(
          "setLocalizedDateFormatFromTemplate:")
      .property<&NSDateFormatter::dateStyle, &NSDateFormatter::setDateStyle>("dateStyle")
      .property<&NSDateFormatter::timeStyle, &NSDateFormatter::setTimeStyle>("timeStyle")
      .property<&NSDateFormatter::locale, &NSDateFormatter::setLocale>("locale")
      .property<&NSDateFormatter::timeZone, &NSDateFormatter::setTimeZone>("timeZone")
      .property<&NSDateFormatter::allowsNaturalLanguage,
                &NSDateFormatter::setAllowsNaturalLanguage>("allowsNaturalLanguage")
      .property<&NSDateFormatter::isLenient, &NSDateFormatter::setLenient>("lenient")
      .property<&NSDateFormatter::defaultDate, &NSDateFormatter::setDefaultDate>("defaultDate")
      .property<&NSDateFormatter::twoDigitStartDate, &NSDateFormatter::setTwoDigitStartDate>(
          "twoDigitStartDate")
      .property<&NSDateFormatter::monthSymbols>("monthSymbols")
      .property<&NSDateFormatter::shortMonthSymbols>("shortMonthSymbols")
      .property<&NSDateFormatter::weekdaySymbols>("weekdaySymbols")
      .property<&NSDateFormatter::shortWeekdaySymbols>("shortWeekdaySymbols")
      .property<&NSDateFormatter::AMSymbol>("AMSymbol")
      .property<&NSDateFormatter::PMSymbol>("PMSymbol");
}

namespace {

std::atomic<Behavior> commonBehavior{Behavior::Pattern};

double timeOf(const Ref<NSDate>& date) { return date->timeIntervalSince1970(); }

}  // namespace

// Making ------------------------------------------------------------------------------------------

NSDateFormatter::NSDateFormatter() = default;

NSDateFormatter::~NSDateFormatter() { dropEngine(); }

Ref<NSDateFormatter> NSDateFormatter::init() { return make<NSDateFormatter>(); }

Ref<NSDateFormatter> NSDateFormatter::initWithDateFormat_allowNaturalLanguage(
    NSString* format, bool naturalLanguage) {
  auto formatter = make<NSDateFormatter>();
  formatter->behavior_ = Behavior::PercentFormat;
  formatter->setDateFormat(format);
  formatter->allowsNaturalLanguage_ = naturalLanguage;
  return formatter;
}

Behavior NSDateFormatter::defaultFormatterBehavior() {
  return commonBehavior.load(std::memory_order_relaxed);
}

void NSDateFormatter::setDefaultFormatterBehavior(Behavior behavior) {
  commonBehavior.store(behavior == Behavior::PercentFormat ? behavior : Behavior::Pattern,
                       std::memory_order_relaxed);
}

Ref<NSString> NSDateFormatter::localizedStringFromDate_dateStyle_timeStyle(
    NSDate* date, NSDateFormatterStyle dateStyle, NSDateFormatterStyle timeStyle) {
  const auto formatter = init();
  formatter->behavior_ = Behavior::Pattern;
  formatter->dateStyle_ = dateStyle;
  formatter->timeStyle_ = timeStyle;
  return formatter->stringFromDate(date);
}

Ref<NSString> NSDateFormatter::dateFormatFromTemplate_options_locale(NSString* fields,
                                                                     std::uint32_t,
                                                                     NSLocale* locale) {
  if (fields == nullptr) return nullptr;
  const Ref<NSLocale> chosen = locale == nullptr ? detail::localeForDates() : Ref(locale);
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::DateTimePatternGenerator> generator(
      icu::DateTimePatternGenerator::createInstance(detail::icuLocale(*chosen), status));
  if (U_FAILURE(status)) return nullptr;
  const icu::UnicodeString pattern =
      generator->getBestPattern(detail::copyOf(fields->view()), status);
  return U_FAILURE(status) ? nullptr : detail::stringOf(pattern);
}

Ref<NSObject> NSDateFormatter::copy() const {
  auto other = init();
  other->allowsNaturalLanguage_ = allowsNaturalLanguage_;
  other->isLenient_ = isLenient_;
  other->behavior_ = behavior_;
  other->dateStyle_ = dateStyle_;
  other->timeStyle_ = timeStyle_;
  other->format_ = format_;
  other->locale_ = locale_;
  other->zone_ = zone_;
  other->defaultDate_ = defaultDate_;
  other->twoDigitStartDate_ = twoDigitStartDate_;
  return other;
}

// Converting --------------------------------------------------------------------------------------

// What the settings come to, made when it is first needed. Two threads may make it at once; one
// of both is thrown away.
const detail::DateEngine& NSDateFormatter::engine() const {
  const detail::DateEngine* known = engine_.load(std::memory_order_acquire);
  if (known != nullptr) [[likely]]
    return *known;
  detail::DateReading reading;
  reading.isLenient = isLenient_;
  if (twoDigitStartDate_) reading.twoDigitStart = timeOf(twoDigitStartDate_);
  if (defaultDate_) reading.defaultTime = timeOf(defaultDate_);
  const Ref<NSLocale> chosen = locale();
  const Behavior behavior = behavior_ == Behavior::Default ? defaultFormatterBehavior() : behavior_;
  std::unique_ptr<const detail::DateEngine> made;
  if (behavior == Behavior::PercentFormat)
    made = detail::makePercentEngine(format_ ? format_->view() : std::u16string_view(), *chosen,
                                     reading);
  else if (format_)
    made = detail::makePatternEngine(format_->view(), *chosen, reading);
  else
    made = detail::makeStyleEngine(static_cast<int>(dateStyle_), static_cast<int>(timeStyle_),
                                   *chosen, reading);
  if (engine_.compare_exchange_strong(known, made.get(), std::memory_order_acq_rel))
    return *made.release();
  return *known;
}

void NSDateFormatter::dropEngine() noexcept {
  delete engine_.exchange(nullptr, std::memory_order_acq_rel);
}

const NSTimeZone& NSDateFormatter::zone() const { return zone_ ? *zone_ : NSTimeZone::inForce(); }

Ref<NSString> NSDateFormatter::stringFromDate(NSDate* date) const {
  return date == nullptr ? nullptr : engine().format(date->timeIntervalSince1970(), zone());
}

Ref<NSDate> NSDateFormatter::dateFromString(NSString* string) const {
  if (string == nullptr) return nullptr;
  std::optional<double> time = engine().parse(string->view(), zone());
  if (!time && allowsNaturalLanguage_) {
    const Ref<NSLocale> chosen = locale();
    time =
        detail::readNaturalDate(string->view(), NSDate().timeIntervalSince1970(), zone(), *chosen);
  }
  return time ? NSDate::dateWithTimeIntervalSince1970(*time) : nullptr;
}

Ref<NSString> NSDateFormatter::stringForObjectValue(NSObject* object) const {
  return stringFromDate(as<NSDate>(object));
}

bool NSDateFormatter::getObjectValue_forString_errorDescription(Ref<NSObject>* object,
                                                                NSString* string,
                                                                Ref<NSString>* error) const {
  detail::requireString(string, "getObjectValue:forString:errorDescription:");
  Ref<NSDate> date = dateFromString(string);
  if (date) return deliver(object, error, std::move(date), nullptr);
  return deliver(object, error, nullptr,
                 NSString::stringWithFormat("“%@” is not a date in the format “%@”"_ns,
                                            excerpt(string), engine().pattern()));
}

// Settings ----------------------------------------------------------------------------------------

void NSDateFormatter::setFormatterBehavior(Behavior behavior) {
  behavior_ = behavior;
  dropEngine();
}

Ref<NSString> NSDateFormatter::dateFormat() const { return format_ ? format_ : engine().pattern(); }

void NSDateFormatter::setDateFormat(NSString* format) {
  format_ = format == nullptr ? nullptr : NSString::stringWithString(format);
  dropEngine();
}

void NSDateFormatter::setLocalizedDateFormatFromTemplate(NSString* fields) {
  const Ref<NSLocale> chosen = locale();
  setDateFormat(dateFormatFromTemplate_options_locale(fields, 0, chosen));
}

void NSDateFormatter::setDateStyle(NSDateFormatterStyle style) {
  dateStyle_ = style;
  dropEngine();
}

void NSDateFormatter::setTimeStyle(NSDateFormatterStyle style) {
  timeStyle_ = style;
  dropEngine();
}

Ref<NSLocale> NSDateFormatter::locale() const {
  return locale_ ? locale_ : detail::localeForDates();
}

void NSDateFormatter::setLocale(NSLocale* locale) {
  locale_ = locale;
  dropEngine();
}

Ref<NSTimeZone> NSDateFormatter::timeZone() const {
  return zone_ ? zone_ : NSTimeZone::defaultTimeZone();
}

void NSDateFormatter::setTimeZone(NSTimeZone* zone) { zone_ = zone; }

void NSDateFormatter::setLenient(bool lenient) {
  isLenient_ = lenient;
  dropEngine();
}

void NSDateFormatter::setDefaultDate(NSDate* date) {
  defaultDate_ = date;
  dropEngine();
}

void NSDateFormatter::setTwoDigitStartDate(NSDate* date) {
  twoDigitStartDate_ = date;
  dropEngine();
}

// Names -------------------------------------------------------------------------------------------

namespace {

detail::DateNames namesOf(const Ref<NSLocale>& locale) {
  return detail::DateNames::ofLocale(*locale);
}

Ref<NSArray> strings(const std::vector<std::u16string>& texts) {
  auto array = NSMutableArray::array();
  for (const std::u16string& text : texts) array->addObject(NSString::stringWithCharacters(text));
  return as<NSArray>(array->copy());
}

Ref<NSString> half(const detail::DateNames& names, std::size_t index) {
  return index < names.halves.size() ? NSString::stringWithCharacters(names.halves[index])
                                     : Ref<NSString>(""_ns);
}

}  // namespace

Ref<NSArray> NSDateFormatter::monthSymbols() const { return strings(namesOf(locale()).months); }
Ref<NSArray> NSDateFormatter::shortMonthSymbols() const {
  return strings(namesOf(locale()).shortMonths);
}
Ref<NSArray> NSDateFormatter::weekdaySymbols() const { return strings(namesOf(locale()).weekdays); }
Ref<NSArray> NSDateFormatter::shortWeekdaySymbols() const {
  return strings(namesOf(locale()).shortWeekdays);
}
Ref<NSString> NSDateFormatter::AMSymbol() const { return half(namesOf(locale()), 0); }
Ref<NSString> NSDateFormatter::PMSymbol() const { return half(namesOf(locale()), 1); }

}  // namespace qz
