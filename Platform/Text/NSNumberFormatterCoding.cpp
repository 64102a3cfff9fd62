// Number formatters in archives: what was set, each setting under its key.
#include <optional>
#include <string>

#include "Platform/Text/NSCoder.h"
#include "Platform/Text/NSLocale.h"
#include "Platform/Text/NSNumberFormatter.h"
#include "Platform/Text/detail/NumberSettings.h"
#include "Platform/Values/NSNumber.h"

namespace qz {

using detail::NumberSettings;

namespace {

template <class T>
struct Entry {
  NSString* key;
  std::optional<T> NumberSettings::*field;
};

template <class T, detail::FixedText Key>
Entry<T> entry(std::optional<T> NumberSettings::*field) {
  return {detail::literal<Key>(), field};
}

// Calls `visit` with each setting that may be unset.
template <class Visit>
void forEachEntry(Visit visit) {
  using S = NumberSettings;
  using Text = std::u16string;
  using Count = std::uint32_t;
  visit(entry<Text, "positiveFormat">(&S::positiveFormat));
  visit(entry<Text, "zeroFormat">(&S::zeroFormat));
  visit(entry<Text, "negativeFormat">(&S::negativeFormat));
  visit(entry<Count, "minimumIntegerDigits">(&S::minimumIntegerDigits));
  visit(entry<Count, "maximumIntegerDigits">(&S::maximumIntegerDigits));
  visit(entry<Count, "minimumFractionDigits">(&S::minimumFractionDigits));
  visit(entry<Count, "maximumFractionDigits">(&S::maximumFractionDigits));
  visit(entry<Count, "minimumSignificantDigits">(&S::minimumSignificantDigits));
  visit(entry<Count, "maximumSignificantDigits">(&S::maximumSignificantDigits));
  visit(entry<Count, "groupingSize">(&S::groupingSize));
  visit(entry<Count, "secondaryGroupingSize">(&S::secondaryGroupingSize));
  visit(entry<Count, "formatWidth">(&S::formatWidth));
  visit(entry<bool, "usesSignificantDigits">(&S::usesSignificantDigits));
  visit(entry<bool, "usesGroupingSeparator">(&S::usesGroupingSeparator));
  visit(entry<bool, "alwaysShowsDecimalSeparator">(&S::alwaysShowsDecimalSeparator));
  visit(entry<std::int32_t, "roundingMode">(&S::roundingMode));
  visit(entry<std::int32_t, "multiplier">(&S::multiplier));
  visit(entry<double, "roundingIncrement">(&S::roundingIncrement));
  visit(entry<Text, "decimalSeparator">(&S::decimalSeparator));
  visit(entry<Text, "groupingSeparator">(&S::groupingSeparator));
  visit(entry<Text, "minusSign">(&S::minusSign));
  visit(entry<Text, "percentSymbol">(&S::percentSymbol));
  visit(entry<Text, "currencySymbol">(&S::currencySymbol));
  visit(entry<Text, "currencyCode">(&S::currencyCode));
  visit(entry<Text, "positivePrefix">(&S::positivePrefix));
  visit(entry<Text, "positiveSuffix">(&S::positiveSuffix));
  visit(entry<Text, "negativePrefix">(&S::negativePrefix));
  visit(entry<Text, "negativeSuffix">(&S::negativeSuffix));
  visit(entry<Text, "paddingCharacter">(&S::paddingCharacter));
  visit(entry<Text, "notANumberSymbol">(&S::notANumber));
  visit(entry<Text, "positiveInfinitySymbol">(&S::positiveInfinity));
  visit(entry<Text, "negativeInfinitySymbol">(&S::negativeInfinity));
  visit(entry<Text, "zeroSymbol">(&S::zeroSymbol));
  visit(entry<Text, "nilSymbol">(&S::nilSymbol));
}

template <class T>
Ref<NSObject> boxed(const T& value) {
  if constexpr (std::is_same_v<T, std::u16string>)
    return NSString::stringWithCharacters(value);
  else
    return NSNumber::of(value);
}

// None for a value of another kind, as a damaged archive has it.
template <class T>
std::optional<T> unboxed(NSObject* object) {
  if constexpr (std::is_same_v<T, std::u16string>) {
    const auto* text = as<NSString>(object);
    return text == nullptr ? std::nullopt : std::optional<T>(text->view());
  } else {
    const auto* number = as<NSNumber>(object);
    if (number == nullptr) return std::nullopt;
    if constexpr (std::is_same_v<T, double>) return number->doubleValue();
    return static_cast<T>(number->longLongValue());
  }
}

bool isPattern(const NumberSettings::Text& pattern) {
  return !pattern || detail::isNumberPattern(*pattern);
}

}  // namespace

void NSNumberFormatter::encodeWithCoder(NSCoder* coder) const {
  const NumberSettings& settings = *settings_;
  coder->encodeInt_forKey(settings.style, "numberStyle"_ns);
  coder->encodeBool_forKey(settings.isLenient, "lenient"_ns);
  coder->encodeBool_forKey(!settings.allowsFloats, "refusesFloats"_ns);
  coder->encodeObject_forKey(settings.minimum, "minimum"_ns);
  coder->encodeObject_forKey(settings.maximum, "maximum"_ns);
  if (settings.locale) coder->encodeObject_forKey(settings.locale->localeIdentifier(), "locale"_ns);
  forEachEntry([&](const auto& each) {
    if (const auto& value = settings.*each.field)
      coder->encodeObject_forKey(boxed(*value), each.key);
  });
}

void NSNumberFormatter::takeSettings(NSCoder* coder) {
  NumberSettings settings;
  settings.style = coder->decodeIntForKey("numberStyle"_ns);
  settings.isLenient = coder->decodeBoolForKey("lenient"_ns);
  settings.allowsFloats = !coder->decodeBoolForKey("refusesFloats"_ns);
  settings.minimum = as<NSNumber>(coder->decodeObjectForKey("minimum"_ns));
  settings.maximum = as<NSNumber>(coder->decodeObjectForKey("maximum"_ns));
  const Ref<NSObject> locale = coder->decodeObjectForKey("locale"_ns);
  settings.locale = NSLocale::localeWithLocaleIdentifier(as<NSString>(locale.get()));
  forEachEntry([&]<class T>(const Entry<T>& each) {
    const Ref<NSObject> value = coder->decodeObjectForKey(each.key);
    settings.*each.field = unboxed<T>(value);
  });
  if (!isPattern(settings.positiveFormat)) settings.positiveFormat.reset();
  if (!isPattern(settings.negativeFormat)) settings.negativeFormat.reset();
  *settings_ = std::move(settings);
  dropEngine();
}

Ref<NSNumberFormatter> NSNumberFormatter::initWithCoder(NSCoder* coder) {
  auto made = init();
  made->takeSettings(coder);
  return made;
}

}  // namespace qz
