#include "Platform/Text/NSLocale.h"

#include <unicode/dcfmtsym.h>
#include <unicode/ucurr.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/System/detail/Languages.h"
#include "Platform/Text/detail/IcuText.h"
#include "Platform/Text/detail/LocaleNames.h"

namespace qz {

void NSLocale::describe(ClassDescription<NSLocale>& is) {
  is.named("NSLocale")
      .classMethod<&NSLocale::currentLocale>("currentLocale")
      .classMethod<&NSLocale::systemLocale>("systemLocale")
      .classMethod<&NSLocale::localeWithLocaleIdentifier>("localeWithLocaleIdentifier:")
      .initializer<&NSLocale::initWithLocaleIdentifier>("initWithLocaleIdentifier:")
      .classMethod<&NSLocale::canonicalLocaleIdentifierFromString>(
          "canonicalLocaleIdentifierFromString:")
      .classMethod<&NSLocale::availableLocaleIdentifiers>("availableLocaleIdentifiers")
      .property<&NSLocale::localeIdentifier>("localeIdentifier")
      .property<&NSLocale::languageCode>("languageCode")
      .property<&NSLocale::scriptCode>("scriptCode")
      .property<&NSLocale::countryCode>("countryCode")
      .property<&NSLocale::variantCode>("variantCode")
      .property<&NSLocale::decimalSeparator>("decimalSeparator")
      .property<&NSLocale::groupingSeparator>("groupingSeparator")
      .property<&NSLocale::currencySymbol>("currencySymbol")
      .property<&NSLocale::currencyCode>("currencyCode")
      .method<&NSLocale::displayNameForLocaleIdentifier>("displayNameForLocaleIdentifier:");
}

namespace {

constexpr const char* posixLocale = "en_US_POSIX";

// ICU refuses by itself what is too long for it; this keeps hostile texts short before that.
constexpr std::size_t longestIdentifier = 156;

std::string canonicalName(NSString& identifier) {
  const std::u16string_view units = identifier.view();
  if (units.size() > longestIdentifier ||
      std::any_of(units.begin(), units.end(), [](char16_t u) { return u < 0x20 || u > 0x7E; }))
    return "";
  const std::string text(units.begin(), units.end());
  UErrorCode status = U_ZERO_ERROR;
  const bool isTag = text.find("-u-") != text.npos || text.find("-U-") != text.npos;
  const icu::Locale locale = isTag ? icu::Locale::forLanguageTag(text, status)
                                   : icu::Locale::createCanonical(text.c_str());
  return U_FAILURE(status) || locale.isBogus() ? "" : locale.getName();
}

Ref<NSString> ascii(const char* text) { return NSString::stringWithUTF8String(text); }

Ref<NSString> symbolOf(const NSLocale& locale, icu::DecimalFormatSymbols::ENumberFormatSymbol which,
                       NSString* otherwise) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::DecimalFormatSymbols symbols(detail::icuLocale(locale), status);
  return U_FAILURE(status) ? Ref<NSString>(otherwise)
                           : detail::stringOf(symbols.getConstSymbol(which));
}

}  // namespace

std::string detail::localeOfEnvironment(
    const char* category, const std::function<const char*(const char* name)>& variable) {
  for (const char* name : {"LC_ALL", category, "LANG"}) {
    const char* value = name == nullptr ? nullptr : variable(name);
    if (value == nullptr || *value == '\0') continue;
    const std::string tag = languageOfLocale(value);
    if (tag.empty()) return posixLocale;
    return icu::Locale::createCanonical(tag.c_str()).getName();
  }
  return posixLocale;
}

NSLocale::NSLocale(std::string name)
    : name_(std::move(name)), identifier_(NSString::stringWithUTF8String(name_)) {}

Ref<NSLocale> NSLocale::named(std::string name) {
  return Ref<NSLocale>(new NSLocale(std::move(name)), adopt);
}

Ref<NSLocale> NSLocale::currentLocale() {
  static NSLocale* const current = named(detail::localeOfEnvironment(nullptr, &std::getenv)).leak();
  return current;
}

Ref<NSLocale> NSLocale::systemLocale() { return named(""); }

namespace {
NSLocale* localeOfCategory(const char* category) {
  const std::string name = detail::localeOfEnvironment(category, &std::getenv);
  return NSLocale::localeWithLocaleIdentifier(NSString::stringWithUTF8String(name)).leak();
}
}  // namespace

Ref<NSLocale> detail::localeForNumbers() {
  static NSLocale* const locale = localeOfCategory("LC_NUMERIC");
  return locale;
}

Ref<NSLocale> detail::localeForDates() {
  static NSLocale* const locale = localeOfCategory("LC_TIME");
  return locale;
}

Ref<NSLocale> NSLocale::localeWithLocaleIdentifier(NSString* identifier) {
  return identifier == nullptr ? nullptr : named(canonicalName(*identifier));
}

Ref<NSLocale> NSLocale::initWithLocaleIdentifier(NSString* identifier) {
  return localeWithLocaleIdentifier(identifier);
}

Ref<NSString> NSLocale::canonicalLocaleIdentifierFromString(NSString* identifier) {
  return identifier == nullptr ? nullptr
                               : NSString::stringWithUTF8String(canonicalName(*identifier));
}

Ref<NSArray> NSLocale::availableLocaleIdentifiers() {
  std::int32_t count = 0;
  const icu::Locale* locales = icu::Locale::getAvailableLocales(count);
  auto names = NSMutableArray::array();
  for (std::int32_t i = 0; i < count; ++i) names->addObject(ascii(locales[i].getName()));
  return as<NSArray>(names->copy());
}

Ref<NSString> NSLocale::languageCode() const {
  return ascii(detail::icuLocale(*this).getLanguage());
}
Ref<NSString> NSLocale::scriptCode() const { return ascii(detail::icuLocale(*this).getScript()); }
Ref<NSString> NSLocale::countryCode() const { return ascii(detail::icuLocale(*this).getCountry()); }
Ref<NSString> NSLocale::variantCode() const { return ascii(detail::icuLocale(*this).getVariant()); }

Ref<NSString> NSLocale::decimalSeparator() const {
  return symbolOf(*this, icu::DecimalFormatSymbols::kDecimalSeparatorSymbol, "."_ns);
}

Ref<NSString> NSLocale::groupingSeparator() const {
  return symbolOf(*this, icu::DecimalFormatSymbols::kGroupingSeparatorSymbol, ","_ns);
}

Ref<NSString> NSLocale::currencySymbol() const {
  return symbolOf(*this, icu::DecimalFormatSymbols::kCurrencySymbol, "¤"_ns);
}

Ref<NSString> NSLocale::currencyCode() const {
  char16_t code[4] = {};
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t length = ucurr_forLocale(name_.c_str(), code, 4, &status);
  if (U_FAILURE(status) || length != 3) return "XXX"_ns;
  return NSString::stringWithCharacters({code, 3});
}

Ref<NSString> NSLocale::displayNameForLocaleIdentifier(NSString* identifier) const {
  if (identifier == nullptr) return nullptr;
  icu::UnicodeString name;
  icu::Locale(canonicalName(*identifier).c_str()).getDisplayName(detail::icuLocale(*this), name);
  return detail::stringOf(name);
}

bool NSLocale::isEqual(NSObject* other) const {
  const auto* locale = as<NSLocale>(other);
  return locale != nullptr && locale->name_ == name_;
}

std::size_t NSLocale::hash() const { return identifier_->hash(); }

Ref<NSObject> NSLocale::copy() const { return const_cast<NSLocale*>(this); }

Ref<NSString> NSLocale::description() const { return identifier_; }

}  // namespace qz
