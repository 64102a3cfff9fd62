// What can be set of number formatters, and what ICU says of settings that were not made.
#include <cmath>
#include <optional>
#include <string>
#include <utility>

#include "Platform/Runtime/NSException.h"
#include "Platform/Text/NSNumberFormatter.h"
#include "Platform/Text/detail/IcuText.h"
#include "Platform/Text/detail/LocaleNames.h"
#include "Platform/Text/detail/NumberEngine.h"

namespace qz {

using detail::NumberEngine;
using detail::NumberSettings;

template <class T, class V>
void NSNumberFormatter::change(T NumberSettings::*field, V value) {
  (*settings_).*field = std::move(value);
  dropEngine();
}

namespace {

NumberSettings::Text optionalText(NSString* text) {
  return text == nullptr ? NumberSettings::Text() : std::u16string(text->view());
}

void requirePattern(std::u16string_view pattern, NSString* given) {
  if (!pattern.empty() && detail::isNumberPattern(pattern)) return;
  detail::raise(NSInvalidArgumentException,
                "\"" + given->UTF8String() + "\" is no pattern for numbers");
}

// What ICU says of a setting that was not made; `otherwise` for a formatter that writes in words.
template <class Ask>
auto asked(const NumberEngine& engine, Ask ask, decltype(ask(*engine.decimal())) otherwise) {
  return engine.decimal() == nullptr ? otherwise : ask(*engine.decimal());
}

std::uint32_t countOf(std::int32_t icu) noexcept {
  return icu < 0 ? 0 : static_cast<std::uint32_t>(icu);
}

template <auto Get>
std::uint32_t askedCount(const NumberEngine& engine) {
  return asked(
      engine, [](const icu::DecimalFormat& format) { return countOf((format.*Get)()); }, 0u);
}

template <icu::UnicodeString& (icu::DecimalFormat::*Get)(icu::UnicodeString&) const>
Ref<NSString> askedText(const NumberEngine& engine) {
  return asked(
      engine,
      [&engine](const icu::DecimalFormat& format) {
        icu::UnicodeString text;
        return engine.shown((format.*Get)(text));
      },
      Ref<NSString>(""_ns));
}

template <icu::DecimalFormatSymbols::ENumberFormatSymbol Which>
Ref<NSString> askedSymbol(const NumberEngine& engine) {
  return asked(
      engine,
      [](const icu::DecimalFormat& format) {
        return detail::stringOf(format.getDecimalFormatSymbols()->getConstSymbol(Which));
      },
      Ref<NSString>(""_ns));
}

Ref<NSString> infinity(const NumberEngine& engine, double value) {
  const Ref<NSNumber> number = NSNumber::numberWithDouble(value);
  return engine.format(*number);
}

using icu::DecimalFormat;
using Symbols = icu::DecimalFormatSymbols;

}  // namespace

NSNumberFormatterStyle NSNumberFormatter::numberStyle() const {
  return static_cast<NSNumberFormatterStyle>(settings_->style);
}

void NSNumberFormatter::setNumberStyle(NSNumberFormatterStyle style) {
  change(&NumberSettings::style, static_cast<std::int32_t>(style));
}

Ref<NSString> NSNumberFormatter::format() const {
  if (!settings_->positiveFormat) return askedText<&DecimalFormat::toPattern>(engine());
  std::u16string format = *settings_->positiveFormat;
  if (settings_->zeroFormat) format += u";" + *settings_->zeroFormat;
  if (settings_->negativeFormat || settings_->zeroFormat)
    format += u";" + settings_->negativeFormat.value_or(u"");
  return NSString::stringWithCharacters(format);
}

void NSNumberFormatter::setFormat(NSString* format) {
  detail::PatternSections sections;
  if (format != nullptr) {
    const auto parts = detail::splitPattern(format->view());
    requirePattern(parts ? parts->positive : std::u16string(), format);
    if (parts->negative && !parts->negative->empty())
      requirePattern(parts->positive + u";" + *parts->negative, format);
    sections = *parts;
  }
  settings_->zeroFormat = sections.zero;
  settings_->negativeFormat = sections.negative;
  change(&NumberSettings::positiveFormat,
         format == nullptr ? NumberSettings::Text() : NumberSettings::Text(sections.positive));
}

Ref<NSString> NSNumberFormatter::positiveFormat() const {
  if (settings_->positiveFormat) return detail::textOf(settings_->positiveFormat);
  const Ref<NSString> all = format();
  const auto sections = detail::splitPattern(all->view());
  return sections ? NSString::stringWithCharacters(sections->positive) : all;
}

void NSNumberFormatter::setPositiveFormat(NSString* format) {
  if (format != nullptr) requirePattern(format->view(), format);
  change(&NumberSettings::positiveFormat, optionalText(format));
}

Ref<NSString> NSNumberFormatter::negativeFormat() const {
  if (settings_->negativeFormat && !settings_->negativeFormat->empty())
    return detail::textOf(settings_->negativeFormat);
  return "-"_ns->stringByAppendingString(positiveFormat());
}

void NSNumberFormatter::setNegativeFormat(NSString* format) {
  if (format != nullptr && format->length() != 0) requirePattern(format->view(), format);
  change(&NumberSettings::negativeFormat, optionalText(format));
}

Ref<NSLocale> NSNumberFormatter::locale() const {
  return settings_->locale ? settings_->locale : detail::localeForNumbers();
}

void NSNumberFormatter::setLocale(NSLocale* locale) {
  change(&NumberSettings::locale, Ref<NSLocale>(locale));
}

std::uint32_t NSNumberFormatter::minimumIntegerDigits() const {
  return askedCount<&DecimalFormat::getMinimumIntegerDigits>(engine());
}
void NSNumberFormatter::setMinimumIntegerDigits(std::uint32_t digits) {
  change(&NumberSettings::minimumIntegerDigits, digits);
}

std::uint32_t NSNumberFormatter::maximumIntegerDigits() const {
  return askedCount<&DecimalFormat::getMaximumIntegerDigits>(engine());
}
void NSNumberFormatter::setMaximumIntegerDigits(std::uint32_t digits) {
  change(&NumberSettings::maximumIntegerDigits, digits);
}

std::uint32_t NSNumberFormatter::minimumFractionDigits() const {
  return askedCount<&DecimalFormat::getMinimumFractionDigits>(engine());
}
void NSNumberFormatter::setMinimumFractionDigits(std::uint32_t digits) {
  change(&NumberSettings::minimumFractionDigits, digits);
}

std::uint32_t NSNumberFormatter::maximumFractionDigits() const {
  return askedCount<&DecimalFormat::getMaximumFractionDigits>(engine());
}
void NSNumberFormatter::setMaximumFractionDigits(std::uint32_t digits) {
  change(&NumberSettings::maximumFractionDigits, digits);
}

bool NSNumberFormatter::usesSignificantDigits() const {
  return asked(
      engine(), [](const DecimalFormat& format) { return bool(format.areSignificantDigitsUsed()); },
      false);
}
void NSNumberFormatter::setUsesSignificantDigits(bool uses) {
  change(&NumberSettings::usesSignificantDigits, uses);
}

std::uint32_t NSNumberFormatter::minimumSignificantDigits() const {
  return askedCount<&DecimalFormat::getMinimumSignificantDigits>(engine());
}
void NSNumberFormatter::setMinimumSignificantDigits(std::uint32_t digits) {
  change(&NumberSettings::minimumSignificantDigits, digits);
}

std::uint32_t NSNumberFormatter::maximumSignificantDigits() const {
  return askedCount<&DecimalFormat::getMaximumSignificantDigits>(engine());
}
void NSNumberFormatter::setMaximumSignificantDigits(std::uint32_t digits) {
  change(&NumberSettings::maximumSignificantDigits, digits);
}

bool NSNumberFormatter::usesGroupingSeparator() const {
  return asked(
      engine(), [](const DecimalFormat& format) { return bool(format.isGroupingUsed()); }, false);
}
void NSNumberFormatter::setUsesGroupingSeparator(bool uses) {
  change(&NumberSettings::usesGroupingSeparator, uses);
}

std::uint32_t NSNumberFormatter::groupingSize() const {
  return askedCount<&DecimalFormat::getGroupingSize>(engine());
}
void NSNumberFormatter::setGroupingSize(std::uint32_t size) {
  change(&NumberSettings::groupingSize, size);
}

std::uint32_t NSNumberFormatter::secondaryGroupingSize() const {
  return askedCount<&DecimalFormat::getSecondaryGroupingSize>(engine());
}
void NSNumberFormatter::setSecondaryGroupingSize(std::uint32_t size) {
  change(&NumberSettings::secondaryGroupingSize, size);
}

bool NSNumberFormatter::alwaysShowsDecimalSeparator() const {
  return asked(
      engine(),
      [](const DecimalFormat& format) { return bool(format.isDecimalSeparatorAlwaysShown()); },
      false);
}
void NSNumberFormatter::setAlwaysShowsDecimalSeparator(bool always) {
  change(&NumberSettings::alwaysShowsDecimalSeparator, always);
}

NSNumberFormatterRoundingMode NSNumberFormatter::roundingMode() const {
  return settings_->roundingMode
             ? static_cast<NSNumberFormatterRoundingMode>(*settings_->roundingMode)
             : NSNumberFormatterRoundingMode::HalfEven;
}
void NSNumberFormatter::setRoundingMode(NSNumberFormatterRoundingMode mode) {
  change(&NumberSettings::roundingMode, static_cast<std::int32_t>(mode));
}

double NSNumberFormatter::roundingIncrement() const {
  return asked(
      engine(), [](const DecimalFormat& format) { return format.getRoundingIncrement(); }, 0.0);
}
void NSNumberFormatter::setRoundingIncrement(double increment) {
  change(&NumberSettings::roundingIncrement, increment);
}

std::int32_t NSNumberFormatter::multiplier() const {
  return asked(
      engine(), [](const DecimalFormat& format) { return format.getMultiplier(); }, 1);
}
void NSNumberFormatter::setMultiplier(std::int32_t multiplier) {
  change(&NumberSettings::multiplier, multiplier);
}

std::uint32_t NSNumberFormatter::formatWidth() const {
  return askedCount<&DecimalFormat::getFormatWidth>(engine());
}
void NSNumberFormatter::setFormatWidth(std::uint32_t width) {
  change(&NumberSettings::formatWidth, width);
}

Ref<NSString> NSNumberFormatter::paddingCharacter() const {
  return asked(
      engine(),
      [](const DecimalFormat& format) { return detail::stringOf(format.getPadCharacterString()); },
      Ref<NSString>(" "_ns));
}
void NSNumberFormatter::setPaddingCharacter(NSString* character) {
  change(&NumberSettings::paddingCharacter, optionalText(character));
}

// Texts -------------------------------------------------------------------------------------------

Ref<NSString> NSNumberFormatter::decimalSeparator() const {
  return askedSymbol<Symbols::kDecimalSeparatorSymbol>(engine());
}
void NSNumberFormatter::setDecimalSeparator(NSString* separator) {
  change(&NumberSettings::decimalSeparator, optionalText(separator));
}

Ref<NSString> NSNumberFormatter::groupingSeparator() const {
  return askedSymbol<Symbols::kGroupingSeparatorSymbol>(engine());
}
void NSNumberFormatter::setGroupingSeparator(NSString* separator) {
  change(&NumberSettings::groupingSeparator, optionalText(separator));
}

Ref<NSString> NSNumberFormatter::minusSign() const {
  return askedSymbol<Symbols::kMinusSignSymbol>(engine());
}
void NSNumberFormatter::setMinusSign(NSString* sign) {
  change(&NumberSettings::minusSign, optionalText(sign));
}

Ref<NSString> NSNumberFormatter::percentSymbol() const {
  return askedSymbol<Symbols::kPercentSymbol>(engine());
}
void NSNumberFormatter::setPercentSymbol(NSString* symbol) {
  change(&NumberSettings::percentSymbol, optionalText(symbol));
}

Ref<NSString> NSNumberFormatter::currencySymbol() const {
  return askedSymbol<Symbols::kCurrencySymbol>(engine());
}
void NSNumberFormatter::setCurrencySymbol(NSString* symbol) {
  change(&NumberSettings::currencySymbol, optionalText(symbol));
}

Ref<NSString> NSNumberFormatter::currencyCode() const {
  if (settings_->currencyCode) return detail::textOf(settings_->currencyCode);
  return locale()->currencyCode();
}
void NSNumberFormatter::setCurrencyCode(NSString* code) {
  change(&NumberSettings::currencyCode, optionalText(code));
}

Ref<NSString> NSNumberFormatter::positivePrefix() const {
  return askedText<&DecimalFormat::getPositivePrefix>(engine());
}
void NSNumberFormatter::setPositivePrefix(NSString* text) {
  change(&NumberSettings::positivePrefix, optionalText(text));
}

Ref<NSString> NSNumberFormatter::positiveSuffix() const {
  return askedText<&DecimalFormat::getPositiveSuffix>(engine());
}
void NSNumberFormatter::setPositiveSuffix(NSString* text) {
  change(&NumberSettings::positiveSuffix, optionalText(text));
}

Ref<NSString> NSNumberFormatter::negativePrefix() const {
  return askedText<&DecimalFormat::getNegativePrefix>(engine());
}
void NSNumberFormatter::setNegativePrefix(NSString* text) {
  change(&NumberSettings::negativePrefix, optionalText(text));
}

Ref<NSString> NSNumberFormatter::negativeSuffix() const {
  return askedText<&DecimalFormat::getNegativeSuffix>(engine());
}
void NSNumberFormatter::setNegativeSuffix(NSString* text) {
  change(&NumberSettings::negativeSuffix, optionalText(text));
}

Ref<NSString> NSNumberFormatter::notANumberSymbol() const {
  return askedSymbol<Symbols::kNaNSymbol>(engine());
}
void NSNumberFormatter::setNotANumberSymbol(NSString* symbol) {
  change(&NumberSettings::notANumber, optionalText(symbol));
}

Ref<NSString> NSNumberFormatter::positiveInfinitySymbol() const {
  return infinity(engine(), HUGE_VAL);
}
void NSNumberFormatter::setPositiveInfinitySymbol(NSString* symbol) {
  change(&NumberSettings::positiveInfinity, optionalText(symbol));
}

Ref<NSString> NSNumberFormatter::negativeInfinitySymbol() const {
  return infinity(engine(), -HUGE_VAL);
}
void NSNumberFormatter::setNegativeInfinitySymbol(NSString* symbol) {
  change(&NumberSettings::negativeInfinity, optionalText(symbol));
}

Ref<NSString> NSNumberFormatter::zeroSymbol() const {
  return detail::textOf(settings_->zeroSymbol);
}
void NSNumberFormatter::setZeroSymbol(NSString* symbol) {
  change(&NumberSettings::zeroSymbol, optionalText(symbol));
}

Ref<NSString> NSNumberFormatter::nilSymbol() const { return detail::textOf(settings_->nilSymbol); }
void NSNumberFormatter::setNilSymbol(NSString* symbol) {
  change(&NumberSettings::nilSymbol, optionalText(symbol));
}

// Reading -----------------------------------------------------------------------------------------

bool NSNumberFormatter::isLenient() const { return settings_->isLenient; }
void NSNumberFormatter::setLenient(bool lenient) { change(&NumberSettings::isLenient, lenient); }

bool NSNumberFormatter::allowsFloats() const { return settings_->allowsFloats; }
void NSNumberFormatter::setAllowsFloats(bool allows) {
  change(&NumberSettings::allowsFloats, allows);
}

Ref<NSNumber> NSNumberFormatter::minimum() const { return settings_->minimum; }
void NSNumberFormatter::setMinimum(NSNumber* minimum) {
  change(&NumberSettings::minimum, Ref<NSNumber>(minimum));
}

Ref<NSNumber> NSNumberFormatter::maximum() const { return settings_->maximum; }
void NSNumberFormatter::setMaximum(NSNumber* maximum) {
  change(&NumberSettings::maximum, Ref<NSNumber>(maximum));
}

}  // namespace qz
