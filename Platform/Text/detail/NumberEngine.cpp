#include "Platform/Text/detail/NumberEngine.h"

#include <unicode/rbnf.h>
#include <unicode/ucurr.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

#include "Platform/Text/detail/IcuText.h"
#include "Platform/Text/detail/LocaleNames.h"
#include "Platform/Text/detail/PlainNumberFormat.h"
#include "Platform/Values/detail/UnitBuffer.h"
#include "Platform/Values/detail/UnitKinds.h"

namespace qz::detail {
namespace {

using Symbols = icu::DecimalFormatSymbols;

// ICU counts in signed integers, and nobody shows more.
std::int32_t countOf(std::uint32_t digits) noexcept {
  return static_cast<std::int32_t>(std::min<std::uint32_t>(digits, 1000));
}

UNumberFormatStyle icuStyle(std::int32_t style) noexcept {
  switch (style) {
    case 2:
      return UNUM_CURRENCY;
    case 3:
      return UNUM_PERCENT;
    case 4:
      return UNUM_SCIENTIFIC;
    default:
      return UNUM_DECIMAL;
  }
}

icu::DecimalFormat::ERoundingMode icuRounding(std::int32_t mode) noexcept {
  using icu::DecimalFormat;
  constexpr DecimalFormat::ERoundingMode modes[] = {
      DecimalFormat::kRoundCeiling, DecimalFormat::kRoundFloor,    DecimalFormat::kRoundDown,
      DecimalFormat::kRoundUp,      DecimalFormat::kRoundHalfEven, DecimalFormat::kRoundHalfDown,
      DecimalFormat::kRoundHalfUp};
  return mode >= 0 && mode < 7 ? modes[mode] : DecimalFormat::kRoundHalfEven;
}

bool isZero(const NSNumber& number) noexcept {
  return isFloatingKind(number.kind()) ? number.doubleBits() == 0 : number.bits() == 0;
}

// A whole number above 2^63 as decimal digits, with or without a power of ten.
std::optional<std::uint64_t> wholeNumber(std::string_view decimal) {
  const std::size_t mark = std::min(decimal.find('E'), decimal.size());
  std::string digits(decimal.substr(0, mark));
  std::size_t places = digits.size();
  if (const std::size_t point = digits.find('.'); point != digits.npos) {
    digits.erase(point, 1);
    places = point;
  }
  if (mark < decimal.size()) {
    int exponent = 0;
    const char* from = decimal.data() + mark + 1;
    if (*from == '+') ++from;
    std::from_chars(from, decimal.data() + decimal.size(), exponent);
    if (exponent < 0 || exponent > 20) return std::nullopt;
    places += static_cast<std::size_t>(exponent);
  }
  if (digits.size() > places) return std::nullopt;  // a fraction
  digits.append(places - digits.size(), '0');
  std::uint64_t value = 0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return read.ec == std::errc() && read.ptr == digits.data() + digits.size() ? std::optional(value)
                                                                             : std::nullopt;
}

Ref<NSNumber> numberOf(icu::Formattable& read) {
  if (read.getType() != icu::Formattable::kDouble)
    return NSNumber::numberWithLongLong(read.getInt64());
  const double value = read.getDouble();
  if (value >= 9223372036854775808.0 && value <= 18446744073709551616.0) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::StringPiece decimal = read.getDecimalNumber(status);
    if (U_SUCCESS(status)) {
      const std::string_view text(decimal.data(), static_cast<std::size_t>(decimal.length()));
      if (const auto whole = wholeNumber(text)) return NSNumber::numberWithUnsignedLongLong(*whole);
    }
  }
  return NSNumber::numberWithDouble(value);
}

// ICU 72 ends the program when it is to read a number whose affixes have a tilde, which it takes
// for a sign that the number is approximate. It never sees one: this stands in its place.
constexpr char16_t hiddenTilde = 0xFDD0;  // no character

std::u16string replaced(std::u16string_view text, char16_t from, char16_t to) {
  std::u16string changed(text);
  std::replace(changed.begin(), changed.end(), from, to);
  return changed;
}

icu::UnicodeString withoutTildes(std::u16string_view text) {
  return copyOf(replaced(text, u'~', hiddenTilde));
}

bool hasTilde(const NumberSettings& set) {
  for (const NumberSettings::Text* text :
       {&set.positiveFormat, &set.negativeFormat, &set.positivePrefix, &set.positiveSuffix,
        &set.negativePrefix, &set.negativeSuffix})
    if (*text && (*text)->find(u'~') != std::u16string::npos) return true;
  return false;
}

// A pattern's text as it is meant: quotes go, and two in a row are one.
std::u16string unquoted(std::u16string_view text) {
  std::u16string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isQuote = text[at] == u'\'';
    if (isQuote && (at + 1 == text.size() || text[at + 1] != u'\'')) continue;
    plain += text[at];
    if (isQuote) ++at;
  }
  return plain;
}

std::u16string_view withoutBlanks(std::u16string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace

// Making ------------------------------------------------------------------------------------------

NumberEngine::NumberEngine(const NumberSettings& settings) : settings_(settings) {
  if (!settings_.locale) settings_.locale = localeForNumbers();
  makeFormat();
  decimal_ = dynamic_cast<icu::DecimalFormat*>(format_.get());
  if (format_ == nullptr) return;
  format_->setLenient(settings_.isLenient);
  if (decimal_ == nullptr) return;
  applyTexts();
  applyDigits();
  hidesTilde_ = hasTilde(settings_);
  if (!hidesTilde_) plain_ = PlainNumberFormat::of(*decimal_);
  makeZero();
}

void NumberEngine::makeFormat() {
  const icu::Locale locale = icuLocale(*settings_.locale);
  UErrorCode status = U_ZERO_ERROR;
  if (settings_.positiveFormat) {
    std::u16string pattern = *settings_.positiveFormat;
    if (settings_.negativeFormat && !settings_.negativeFormat->empty())
      pattern += u";" + *settings_.negativeFormat;
    format_ = std::make_unique<icu::DecimalFormat>(withoutTildes(pattern), Symbols(locale, status),
                                                   status);
  } else if (settings_.style == 0) {
    format_ = std::make_unique<icu::DecimalFormat>(u"0.###", Symbols(locale, status), status);
  } else if (settings_.style == 5) {
    format_ = std::make_unique<icu::RuleBasedNumberFormat>(icu::URBNF_SPELLOUT, locale, status);
  } else {
    format_.reset(icu::NumberFormat::createInstance(locale, icuStyle(settings_.style), status));
  }
  if (U_FAILURE(status)) format_.reset();
}

void NumberEngine::applyDigits() {
  const NumberSettings& set = settings_;
  icu::DecimalFormat& format = *decimal_;
  // A least that is set alone pulls the most with it, and the other way round.
  if (set.minimumIntegerDigits) format.setMinimumIntegerDigits(countOf(*set.minimumIntegerDigits));
  if (set.maximumIntegerDigits) format.setMaximumIntegerDigits(countOf(*set.maximumIntegerDigits));
  if (set.minimumFractionDigits)
    format.setMinimumFractionDigits(countOf(*set.minimumFractionDigits));
  if (set.maximumFractionDigits)
    format.setMaximumFractionDigits(countOf(*set.maximumFractionDigits));
  if (set.usesSignificantDigits || set.minimumSignificantDigits || set.maximumSignificantDigits)
    format.setSignificantDigitsUsed(set.usesSignificantDigits.value_or(true));
  if (format.areSignificantDigitsUsed()) {
    if (set.minimumSignificantDigits)
      format.setMinimumSignificantDigits(std::max(countOf(*set.minimumSignificantDigits), 1));
    if (set.maximumSignificantDigits)
      format.setMaximumSignificantDigits(std::max(countOf(*set.maximumSignificantDigits), 1));
  }
  if (set.groupingSize) format.setGroupingSize(countOf(*set.groupingSize));
  if (set.secondaryGroupingSize)
    format.setSecondaryGroupingSize(countOf(*set.secondaryGroupingSize));
  if (set.usesGroupingSeparator) {
    if (*set.usesGroupingSeparator && format.getGroupingSize() <= 0) format.setGroupingSize(3);
    format.setGroupingUsed(*set.usesGroupingSeparator);
  }
  if (set.alwaysShowsDecimalSeparator)
    format.setDecimalSeparatorAlwaysShown(*set.alwaysShowsDecimalSeparator);
  if (set.roundingMode) format.setRoundingMode(icuRounding(*set.roundingMode));
  if (set.roundingIncrement && *set.roundingIncrement >= 0 && std::isfinite(*set.roundingIncrement))
    format.setRoundingIncrement(*set.roundingIncrement);
  if (set.multiplier && *set.multiplier != 0) format.setMultiplier(*set.multiplier);
  if (set.formatWidth) format.setFormatWidth(countOf(*set.formatWidth));
  if (set.paddingCharacter) format.setPadCharacter(copyOf(*set.paddingCharacter));
}

void NumberEngine::applyTexts() {
  const NumberSettings& set = settings_;
  UErrorCode status = U_ZERO_ERROR;
  if (set.currencyCode) decimal_->setCurrency(set.currencyCode->c_str(), status);
  auto symbols = std::make_unique<Symbols>(*decimal_->getDecimalFormatSymbols());
  const auto apply = [&](Symbols::ENumberFormatSymbol which, const NumberSettings::Text& text) {
    if (text) symbols->setSymbol(which, copyOf(*text), false);
  };
  apply(Symbols::kDecimalSeparatorSymbol, set.decimalSeparator);
  apply(Symbols::kMonetarySeparatorSymbol, set.decimalSeparator);
  apply(Symbols::kGroupingSeparatorSymbol, set.groupingSeparator);
  apply(Symbols::kMonetaryGroupingSeparatorSymbol, set.groupingSeparator);
  apply(Symbols::kMinusSignSymbol, set.minusSign);
  apply(Symbols::kPercentSymbol, set.percentSymbol);
  apply(Symbols::kCurrencySymbol, set.currencySymbol);
  apply(Symbols::kNaNSymbol, set.notANumber);
  decimal_->adoptDecimalFormatSymbols(symbols.release());
  if (set.positivePrefix) decimal_->setPositivePrefix(withoutTildes(*set.positivePrefix));
  if (set.positiveSuffix) decimal_->setPositiveSuffix(withoutTildes(*set.positiveSuffix));
  if (set.negativePrefix) decimal_->setNegativePrefix(withoutTildes(*set.negativePrefix));
  if (set.negativeSuffix) decimal_->setNegativeSuffix(withoutTildes(*set.negativeSuffix));
}

void NumberEngine::makeZero() {
  if (settings_.zeroSymbol) {
    zero_ = settings_.zeroSymbol;
  } else if (settings_.zeroFormat && !hasDigitPlace(*settings_.zeroFormat)) {
    zero_ = unquoted(*settings_.zeroFormat);
  } else if (settings_.zeroFormat) {
    UErrorCode status = U_ZERO_ERROR;
    icu::DecimalFormat format(copyOf(*settings_.zeroFormat), *decimal_->getDecimalFormatSymbols(),
                              status);
    icu::UnicodeString text;
    format.format(std::int32_t{0}, text);
    if (U_SUCCESS(status)) zero_ = std::u16string(viewOf(text));
  }
}

// Formatting --------------------------------------------------------------------------------------

// The text that was set for a number of this kind; null for none.
const NumberSettings::Text* NumberEngine::symbolOf(const NSNumber& number) const noexcept {
  const double value = isFloatingKind(number.kind()) ? number.doubleBits() : 0;
  if (std::isnan(value)) return &settings_.notANumber;
  if (std::isinf(value))
    return value > 0 ? &settings_.positiveInfinity : &settings_.negativeInfinity;
  return nullptr;
}

Ref<NSString> NumberEngine::format(const NSNumber& number) const {
  if (zero_ && isZero(number)) return NSString::stringWithCharacters(*zero_);
  const bool isFloating = isFloatingKind(number.kind());
  if (plain_) {
    UnitBuffer out;
    const bool isNegative = !number.exceedsInt64() && number.signedBits() < 0;
    const bool isDone = isFloating ? plain_->append(out, number.doubleBits())
                                   : plain_->append(out, isNegative,
                                                    isNegative ? 0 - number.bits() : number.bits());
    if (isDone) return out.toString();
  }
  if (const NumberSettings::Text* symbol = symbolOf(number); symbol != nullptr && *symbol)
    return NSString::stringWithCharacters(**symbol);
  if (format_ == nullptr) return nullptr;

  const std::unique_lock lock =
      decimal_ == nullptr ? std::unique_lock(mutex_) : std::unique_lock<std::mutex>();
  icu::UnicodeString text;
  UErrorCode status = U_ZERO_ERROR;
  if (isFloating) {
    format_->format(number.doubleBits(), text);
  } else if (number.exceedsInt64()) {
    const std::string digits = std::to_string(number.bits());
    format_->format(icu::StringPiece(digits), text, nullptr, status);
  } else {
    format_->format(number.signedBits(), text);
  }
  return U_FAILURE(status) ? nullptr : shown(text);
}

Ref<NSString> NumberEngine::shown(const icu::UnicodeString& text) const {
  if (!hidesTilde_) return stringOf(text);
  return NSString::stringWithCharacters(replaced(viewOf(text), hiddenTilde, u'~'));
}

// Reading -----------------------------------------------------------------------------------------

Ref<NSNumber> NumberEngine::readSymbol(std::u16string_view text) const {
  const auto is = [text](const NumberSettings::Text& symbol) { return symbol && text == *symbol; };
  if (zero_ && text == *zero_) return NSNumber::numberWithLongLong(0);
  if (is(settings_.notANumber)) return NSNumber::numberWithDouble(std::nan(""));
  if (is(settings_.positiveInfinity)) return NSNumber::numberWithDouble(HUGE_VAL);
  if (is(settings_.negativeInfinity)) return NSNumber::numberWithDouble(-HUGE_VAL);
  return nullptr;
}

ReadNumber NumberEngine::read(std::u16string_view text) const {
  if (settings_.isLenient) text = withoutBlanks(text);
  if (Ref<NSNumber> symbol = readSymbol(text)) return checked(std::move(symbol));
  if (text.empty() || format_ == nullptr) return {nullptr, NumberFault::NoNumber};

  const std::unique_lock lock =
      decimal_ == nullptr ? std::unique_lock(mutex_) : std::unique_lock<std::mutex>();
  icu::Formattable read;
  icu::ParsePosition position(0);
  format_->parse(hidesTilde_ ? withoutTildes(text) : aliasOf(text), read, position);
  if (position.getErrorIndex() >= 0 ||
      position.getIndex() != static_cast<std::int32_t>(text.size()))
    return {nullptr, NumberFault::NoNumber};
  return checked(numberOf(read));
}

ReadNumber NumberEngine::checked(Ref<NSNumber> number) const {
  const double value = number->doubleValue();
  if (!settings_.allowsFloats && isFloatingKind(number->kind()) && value != std::floor(value))
    return {nullptr, NumberFault::Fraction};
  if (settings_.minimum && number->compare(settings_.minimum) < 0)
    return {nullptr, NumberFault::TooSmall};
  if (settings_.maximum && number->compare(settings_.maximum) > 0)
    return {nullptr, NumberFault::TooGreat};
  return {std::move(number), NumberFault::None};
}

}  // namespace qz::detail
