/// @file
/// Private: ICU's texts and locales, for source files that include ICU.
#pragma once

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <string_view>

#include "Platform/Text/NSLocale.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

inline Ref<NSString> stringOf(const icu::UnicodeString& text) {
  return NSString::stringWithCharacters(
      {text.getBuffer(), static_cast<std::size_t>(text.length())});
}

inline std::u16string_view viewOf(const icu::UnicodeString& text) noexcept {
  return {text.getBuffer(), static_cast<std::size_t>(text.length())};
}

/// A read-only alias: the units must outlive it.
inline icu::UnicodeString aliasOf(std::u16string_view units) {
  return {false, units.data(), static_cast<std::int32_t>(units.size())};
}

inline icu::UnicodeString copyOf(std::u16string_view units) {
  return {units.data(), static_cast<std::int32_t>(units.size())};
}

/// The identifiers are canonical already.
inline icu::Locale icuLocale(const NSLocale& locale) { return icu::Locale(locale.name().c_str()); }

}  // namespace qz::detail
