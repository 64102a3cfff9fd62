#include "Platform/Text/NSNumberFormatter.h"

#include <memory>
#include <utility>

#include "Platform/Runtime/Describe.h"
#include "Platform/Text/NSCoder.h"
#include "Platform/Text/detail/NumberEngine.h"
#include "Platform/Values/detail/StringStorage.h"

namespace qz {

using detail::NumberEngine;
using detail::NumberFault;
using detail::NumberSettings;
using Formatter = NSNumberFormatter;

void NSNumberFormatter::describe(ClassDescription<NSNumberFormatter>& is) {
  is.named("NSNumberFormatter")
      .classMethod<&Formatter::localizedStringFromNumber_numberStyle>(
          "localizedStringFromNumber:numberStyle:")
      .initializer<&Formatter::initWithCoder>("initWithCoder:")
      .method<&Formatter::encodeWithCoder>("encodeWithCoder:")
      .method<&Formatter::stringFromNumber>("stringFromNumber:")
      .method<&Formatter::numberFromString>("numberFromString:")
      .property<&Formatter::numberStyle, &Formatter::setNumberStyle>("numberStyle")
      .property<&Formatter::format, &Formatter::setFormat>("format")
      .property<&Formatter::positiveFormat, &Formatter::setPositiveFormat>("positiveFormat")
      .property<&Formatter::negativeFormat, &Formatter::setNegativeFormat>("negativeFormat")
      .property<&Formatter::locale, &Formatter::setLocale>("locale")
      .property<&Formatter::minimumIntegerDigits, &Formatter::setMinimumIntegerDigits>(
          "minimumIntegerDigits")
      .property<&Formatter::maximumIntegerDigits, &Formatter::setMaximumIntegerDigits>(
          "maximumIntegerDigits")
      .property<&Formatter::minimumFractionDigits, &Formatter::setMinimumFractionDigits>(
          "minimumFractionDigits")
      .property<&Formatter::maximumFractionDigits, &Formatter::setMaximumFractionDigits>(
          "maximumFractionDigits")
      .property<&Formatter::usesSignificantDigits, &Formatter::setUsesSignificantDigits>(
          "usesSignificantDigits")
      .property<&Formatter::minimumSignificantDigits, &Formatter::setMinimumSignificantDigits>(
          "minimumSignificantDigits")
      .property<&Formatter::maximumSignificantDigits, &Formatter::setMaximumSignificantDigits>(
          "maximumSignificantDigits")
      .property<&Formatter::usesGroupingSeparator, &Formatter::setUsesGroupingSeparator>(
          "usesGroupingSeparator")
      .property<&Formatter::groupingSize, &Formatter::setGroupingSize>("groupingSize")
      .property<&Formatter::secondaryGroupingSize, &Formatter::setSecondaryGroupingSize>(
          "secondaryGroupingSize")
      .property<&Formatter::alwaysShowsDecimalSeparator,
                &Formatter::setAlwaysShowsDecimalSeparator>("alwaysShowsDecimalSeparator")
      .property<&Formatter::roundingMode, &Formatter::setRoundingMode>("roundingMode")
      .property<&Formatter::roundingIncrement, &Formatter::setRoundingIncrement>(
          "roundingIncrement")
      .property<&Formatter::multiplier, &Formatter::setMultiplier>("multiplier")
      .property<&Formatter::formatWidth, &Formatter::setFormatWidth>("formatWidth")
      .property<&Formatter::paddingCharacter, &Formatter::setPaddingCharacter>("paddingCharacter")
      .property<&Formatter::decimalSeparator, &Formatter::setDecimalSeparator>("decimalSeparator")
      .property<&Formatter::groupingSeparator, &Formatter::setGroupingSeparator>(
          "groupingSeparator")
      .property<&Formatter::minusSign, &Formatter::setMinusSign>("minusSign")
      .property<&Formatter::percentSymbol, &Formatter::setPercentSymbol>("percentSymbol")
      .property<&Formatter::currencySymbol, &Formatter::setCurrencySymbol>("currencySymbol")
      .property<&Formatter::currencyCode, &Formatter::setCurrencyCode>("currencyCode")
      .property<&Formatter::positivePrefix, &Formatter::setPositivePrefix>("positivePrefix")
      .property<&Formatter::positiveSuffix, &Formatter::setPositiveSuffix>("positiveSuffix")
      .property<&Formatter::negativePrefix, &Formatter::setNegativePrefix>("negativePrefix")
      .property<&Formatter::negativeSuffix, &Formatter::setNegativeSuffix>("negativeSuffix")
      .property<&Formatter::notANumberSymbol, &Formatter::setNotANumberSymbol>("notANumberSymbol")
      .property<&Formatter::positiveInfinitySymbol, &Formatter::setPositiveInfinitySymbol>(
          "positiveInfinitySymbol")
      .property<&Formatter::negativeInfinitySymbol, &Formatter::setNegativeInfinitySymbol>(
          "negativeInfinitySymbol")
      .property<&Formatter::zeroSymbol, &Formatter::setZeroSymbol>("zeroSymbol")
      .property<&Formatter::nilSymbol, &Formatter::setNilSymbol>("nilSymbol")
      .property<&Formatter::isLenient, &Formatter::setLenient>("lenient")
      .property<&Formatter::allowsFloats, &Formatter::setAllowsFloats>("allowsFloats")
      .property<&Formatter::minimum, &Formatter::setMinimum>("minimum")
      .property<&Formatter::maximum, &Formatter::setMaximum>("maximum");
}

// Making ------------------------------------------------------------------------------------------

NSNumberFormatter::NSNumberFormatter() : settings_(std::make_unique<NumberSettings>()) {}

NSNumberFormatter::~NSNumberFormatter() { dropEngine(); }

Ref<NSNumberFormatter> NSNumberFormatter::init() { return make<NSNumberFormatter>(); }

Ref<NSString> NSNumberFormatter::localizedStringFromNumber_numberStyle(
    NSNumber* number, NSNumberFormatterStyle style) {
  const auto formatter = init();
  formatter->setNumberStyle(style);
  return formatter->stringFromNumber(number);
}

void NSNumberFormatter::takeSettings(const NSNumberFormatter& other) {
  *settings_ = *other.settings_;
  dropEngine();
}

Ref<NSObject> NSNumberFormatter::copy() const {
  Ref<NSObject> other = classObject()->newObject();
  as<NSNumberFormatter>(other.get())->takeSettings(*this);
  return other;
}

// Made when it is first needed. Two threads may make it at once; one of both is thrown away.
const NumberEngine& NSNumberFormatter::engine() const {
  const NumberEngine* known = engine_.load(std::memory_order_acquire);
  if (known != nullptr) [[likely]]
    return *known;
  auto made = std::make_unique<const NumberEngine>(*settings_);
  if (engine_.compare_exchange_strong(known, made.get(), std::memory_order_acq_rel))
    return *made.release();
  return *known;
}

void NSNumberFormatter::dropEngine() noexcept {
  delete engine_.exchange(nullptr, std::memory_order_acq_rel);
}

// Converting --------------------------------------------------------------------------------------

namespace {

Ref<NSString> messageOf(NumberFault fault, NSString* text, const NumberSettings& settings) {
  switch (fault) {
    case NumberFault::Fraction:
      return NSString::stringWithFormat("“%@” is not a whole number"_ns, text);
    case NumberFault::TooSmall:
      return NSString::stringWithFormat("“%@” is below the minimum of %@"_ns, text,
                                        settings.minimum);
    case NumberFault::TooGreat:
      return NSString::stringWithFormat("“%@” is above the maximum of %@"_ns, text,
                                        settings.maximum);
    default:
      return NSString::stringWithFormat("“%@” is not a number"_ns, text);
  }
}

}  // namespace

Ref<NSString> NSNumberFormatter::stringFromNumber(NSNumber* number) const {
  return number == nullptr ? detail::textOf(settings_->nilSymbol) : engine().format(*number);
}

Ref<NSNumber> NSNumberFormatter::numberFromString(NSString* string) const {
  return string == nullptr ? nullptr : engine().read(string->view()).value;
}

Ref<NSString> NSNumberFormatter::stringForObjectValue(NSObject* object) const {
  NSNumber* number = as<NSNumber>(object);
  return number == nullptr && object != nullptr ? nullptr : stringFromNumber(number);
}

bool NSNumberFormatter::getObjectValue_forString_errorDescription(Ref<NSObject>* object,
                                                                  NSString* string,
                                                                  Ref<NSString>* error) const {
  const NSString& text =
      detail::requireString(string, "getObjectValue:forString:errorDescription:");
  if (settings_->nilSymbol && text.view() == *settings_->nilSymbol)
    return deliver(object, error, nullptr, nullptr);
  detail::ReadNumber read = engine().read(text.view());
  if (read.value) return deliver(object, error, std::move(read.value), nullptr);
  return deliver(object, error, nullptr, messageOf(read.fault, excerpt(string), *settings_));
}

}  // namespace qz
