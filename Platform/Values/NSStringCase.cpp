// Strings: upper case, lower case, capitals.

#include <unicode/casemap.h>
#include <unicode/stringoptions.h>

#include <algorithm>
#include <string>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/StringStorage.h"
#include "Platform/Values/detail/UnitBuffer.h"
#include "Platform/Values/detail/UnitKinds.h"
#include "Platform/Values/detail/Utf.h"

namespace qz {
namespace {

// The root locale: the same answer everywhere.
constexpr const char* anyLocale = "";

// Adds what one of ICU's mappings, `map(out, room, status)`, makes of a text of `length` units.
template <class Map>
void appendMapped(detail::UnitBuffer& out, std::size_t length, Map map) {
  std::size_t wanted = length;
  for (;;) {
    char16_t* room = out.room(wanted);
    const std::size_t available = out.capacity() - out.size();
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t needed = map(room, static_cast<std::int32_t>(available), status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
      wanted = static_cast<std::size_t>(needed);
    } else if (U_FAILURE(status)) {
      detail::raise(NSMallocException,
                    std::string("the case of a text cannot be changed: ") + u_errorName(status));
    } else {
      out.commit(room + needed);
      return;
    }
  }
}

std::int32_t icuLength(std::u16string_view units) noexcept {
  return static_cast<std::int32_t>(units.size());
}

void appendTitle(detail::UnitBuffer& out, std::u16string_view word) {
  appendMapped(out, word.size(), [word](char16_t* room, std::int32_t size, UErrorCode& status) {
    return icu::CaseMap::toTitle(anyLocale, U_TITLECASE_WHOLE_STRING, nullptr, word.data(),
                                 icuLength(word), room, size, nullptr, status);
  });
}

bool isAscii(std::u16string_view units) noexcept {
  return detail::asciiPrefix(units) == units.size();
}

// The letters from `first` on, of which there are 26, in the other case.
template <char16_t first>
char16_t switched(char16_t unit) noexcept {
  return static_cast<char16_t>(unit >= first && unit < first + 26 ? unit ^ 0x20 : unit);
}

// A text of ASCII with the letters from `first` on in the other case.
template <char16_t first>
Ref<NSString> switchedAscii(std::u16string_view units) {
  return detail::fillString(units.size(), [units](char16_t* out) {
    std::size_t at = 0;
#if defined(__SSE2__)
    constexpr std::size_t block = 8;
    const auto convert = [units, out](std::size_t from) {
      const __m128i all = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units.data() + from));
      const __m128i isLetter = _mm_and_si128(_mm_cmpgt_epi16(all, _mm_set1_epi16(first - 1)),
                                             _mm_cmplt_epi16(all, _mm_set1_epi16(first + 26)));
      const __m128i bit = _mm_and_si128(isLetter, _mm_set1_epi16(0x20));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + from), _mm_xor_si128(all, bit));
    };
    for (; units.size() - at >= block; at += block) convert(at);
    // The rest together with units before it that are done already.
    if (at != 0 && at != units.size()) convert(units.size() - block);
    if (at != 0) return;
#endif
    for (; at < units.size(); ++at) out[at] = switched<first>(units[at]);
  });
}

// Whether a word's capital may stand behind `unit`: punctuation, as in "(word)". Behind a digit or
// a symbol, as in "1st", there is none.
bool isBeforeCapital(char16_t unit) noexcept {
  constexpr std::u16string_view punctuation = u"!\"#%&'()*,-./:;?@[\\]_{}";
  return unit < u' ' || unit == 0x7F || punctuation.find(unit) != punctuation.npos;
}

Ref<NSString> capitalizedAscii(std::u16string_view units) {
  return detail::fillString(units.size(), [units](char16_t* out) {
    bool atStart = true;
    for (const char16_t unit : units) {
      *out++ = atStart ? detail::toAsciiUpper(unit) : detail::toAsciiLower(unit);
      atStart = detail::isBlank(unit) || (atStart && isBeforeCapital(unit));
    }
  });
}

}  // namespace

Ref<NSString> NSString::uppercaseString() const {
  const std::u16string_view units = view();
  if (isAscii(units)) {
    if (std::none_of(units.begin(), units.end(), detail::isAsciiLower))
      return stringWithString(const_cast<NSString*>(this));
    return switchedAscii<u'a'>(units);
  }
  detail::UnitBuffer out;
  appendMapped(out, units.size(), [units](char16_t* room, std::int32_t size, UErrorCode& status) {
    return icu::CaseMap::toUpper(anyLocale, 0, units.data(), icuLength(units), room, size, nullptr,
                                 status);
  });
  return out.toString();
}

Ref<NSString> NSString::lowercaseString() const {
  const std::u16string_view units = view();
  if (isAscii(units)) {
    if (std::none_of(units.begin(), units.end(), detail::isAsciiUpper))
      return stringWithString(const_cast<NSString*>(this));
    return switchedAscii<u'A'>(units);
  }
  detail::UnitBuffer out;
  appendMapped(out, units.size(), [units](char16_t* room, std::int32_t size, UErrorCode& status) {
    return icu::CaseMap::toLower(anyLocale, 0, units.data(), icuLength(units), room, size, nullptr,
                                 status);
  });
  return out.toString();
}

Ref<NSString> NSString::capitalizedString() const {
  const std::u16string_view units = view();
  if (isAscii(units)) return capitalizedAscii(units);
  detail::UnitBuffer out;
  for (auto at = units.begin(); at != units.end();) {
    const auto word = std::find_if_not(at, units.end(), detail::isBlank);
    const auto end = std::find_if(word, units.end(), detail::isBlank);
    out.append(std::u16string_view(at, word));
    if (word != end) appendTitle(out, std::u16string_view(word, end));
    at = end;
  }
  return out.toString();
}

}  // namespace qz
