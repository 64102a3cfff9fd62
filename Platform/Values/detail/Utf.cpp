#include "Platform/Values/detail/Utf.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qz::detail {
namespace {

constexpr std::size_t block = 16;
constexpr char32_t illFormed = 0xFFFFFFFF;

using Byte = unsigned char;

#if defined(__SSE2__)

__m128i load(const void* from) noexcept {
  return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

void store(void* to, __m128i block128) noexcept {
  _mm_storeu_si128(static_cast<__m128i*>(to), block128);
}

__m128i all16(unsigned value) noexcept { return _mm_set1_epi16(static_cast<short>(value)); }

// All ones in each unit that has no more than the bits of `mask` allow.
__m128i isWithin(__m128i units, unsigned mask) noexcept {
  return _mm_cmpeq_epi16(_mm_and_si128(units, all16(~mask)), _mm_setzero_si128());
}

// How many of a block's bytes, or units, come before the first that is not ASCII.
std::size_t asciiInBlock(const Byte* bytes) noexcept {
  const auto beyond = static_cast<unsigned>(_mm_movemask_epi8(load(bytes)));
  return static_cast<std::size_t>(std::countr_zero(beyond | 1u << block));
}

std::size_t asciiInBlock(const char16_t* units) noexcept {
  const __m128i ascii =
      _mm_packs_epi16(isWithin(load(units), 0x7F), isWithin(load(units + 8), 0x7F));
  return static_cast<std::size_t>(std::countr_one(static_cast<unsigned>(_mm_movemask_epi8(ascii))));
}

bool isAsciiBlock(const Byte* bytes) noexcept { return _mm_movemask_epi8(load(bytes)) == 0; }

bool isAsciiBlock(const char16_t* units) noexcept {
  const __m128i both = _mm_or_si128(load(units), load(units + 8));
  return _mm_movemask_epi8(isWithin(both, 0x7F)) == 0xFFFF;
}

// Adds to `length` what the units take beyond one byte each, and moves `at` behind them, as far as
// whole vectors reach. Three bytes for each unit, less one for each that is below 0x800 and again
// below 0x80; half a pair looks like one of three bytes, so each pair counts two too many.
void addLength(std::u16string_view units, std::size_t& at, std::size_t& length) noexcept {
  constexpr std::size_t step = 8;
  constexpr std::size_t mostSteps = 4096;  // before the lanes of 16 bits might be full
  while (units.size() - at > step) {
    __m128i less = _mm_setzero_si128();
    const std::size_t steps = std::min((units.size() - at - 1) / step, mostSteps);
    for (std::size_t i = 0; i < steps; ++i, at += step) {
      const __m128i here = load(units.data() + at);
      const __m128i next = load(units.data() + at + 1);
      const __m128i high = _mm_cmpeq_epi16(_mm_and_si128(here, all16(0xFC00)), all16(0xD800));
      const __m128i low = _mm_cmpeq_epi16(_mm_and_si128(next, all16(0xFC00)), all16(0xDC00));
      const __m128i pair = _mm_and_si128(high, low);
      less = _mm_add_epi16(less, _mm_add_epi16(isWithin(here, 0x7F), isWithin(here, 0x7FF)));
      less = _mm_add_epi16(less, _mm_add_epi16(pair, pair));
    }
    short lanes[step];
    store(lanes, less);
    length += 2 * step * steps;
    for (const short each : lanes) length -= static_cast<std::size_t>(-each);
  }
}

void convertBlock(const Byte* bytes, char16_t* out) noexcept {
  const __m128i all = load(bytes);
  store(out, _mm_unpacklo_epi8(all, _mm_setzero_si128()));
  store(out + 8, _mm_unpackhi_epi8(all, _mm_setzero_si128()));
}

void convertBlock(const char16_t* units, char* out) noexcept {
  store(out, _mm_packus_epi16(load(units), load(units + 8)));
}

#else

// The loops over a block have a fixed count, so that the compiler turns them into vector code.

template <class Unit>
std::size_t asciiInBlock(const Unit* text) noexcept {
  return static_cast<std::size_t>(
      std::find_if(text, text + block, [](Unit unit) { return unit >= 0x80; }) - text);
}

void addLength(std::u16string_view, std::size_t&, std::size_t&) noexcept {}

bool isAsciiBlock(const Byte* bytes) noexcept {
  std::uint64_t low, high;
  std::memcpy(&low, bytes, sizeof low);
  std::memcpy(&high, bytes + sizeof low, sizeof high);
  return ((low | high) & 0x8080808080808080u) == 0;
}

bool isAsciiBlock(const char16_t* units) noexcept {
  std::uint64_t words[4];
  std::memcpy(words, units, sizeof words);
  return ((words[0] | words[1] | words[2] | words[3]) & 0xFF80FF80FF80FF80u) == 0;
}

void convertBlock(const Byte* bytes, char16_t* out) noexcept {
  for (std::size_t i = 0; i < block; ++i) out[i] = bytes[i];
}

void convertBlock(const char16_t* units, char* out) noexcept {
  for (std::size_t i = 0; i < block; ++i) out[i] = static_cast<char>(units[i]);
}

#endif

template <class Unit>
std::size_t prefixOf(const Unit* text, std::size_t count) noexcept {
  std::size_t i = 0;
  while (count - i >= block && isAsciiBlock(text + i)) i += block;
  while (i < count && text[i] < 0x80) ++i;
  return i;
}

bool isContinuation(Byte byte) noexcept { return (byte & 0xC0) == 0x80; }

// Reads what starts at `at`, which is not ASCII, and moves behind it: behind one character, or
// behind the longest part that could have begun one, answering `illFormed`.
inline char32_t decodeOne(const Byte*& at, const Byte* end) noexcept {
  const Byte lead = *at++;
  // Most letters outside ASCII take two bytes.
  if (lead >= 0xC2 && lead < 0xE0 && at != end && isContinuation(*at))
    return (lead & 0x1Fu) << 6 | (*at++ & 0x3Fu);
  // The second byte's bounds shut out overlong forms, surrogates and what is above U+10FFFF.
  Byte lowest = 0x80;
  Byte highest = 0xBF;
  int more = 0;
  char32_t point = 0;
  if (lead < 0xC2) {
    return illFormed;
  } else if (lead < 0xE0) {
    more = 1;
    point = lead & 0x1Fu;
  } else if (lead < 0xF0) {
    more = 2;
    point = lead & 0x0Fu;
    if (lead == 0xE0) lowest = 0xA0;
    if (lead == 0xED) highest = 0x9F;
  } else if (lead < 0xF5) {
    more = 3;
    point = lead & 0x07u;
    if (lead == 0xF0) lowest = 0x90;
    if (lead == 0xF4) highest = 0x8F;
  } else {
    return illFormed;
  }
  if (at == end || *at < lowest || *at > highest) return illFormed;
  point = point << 6 | (*at++ & 0x3Fu);
  while (--more > 0) {
    if (at == end || !isContinuation(*at)) return illFormed;
    point = point << 6 | (*at++ & 0x3Fu);
  }
  return point;
}

inline char16_t* decodeOneTo(const Byte*& at, const Byte* end, char16_t* out) noexcept {
  const char32_t point = decodeOne(at, end);
  if (point >= 0x10000) return encodeUtf16(point, out);
  *out++ = static_cast<char16_t>(point);
  return out;
}

// Reads characters from the one at `at`, which is not ASCII, until there is more than one of ASCII
// side by side, or little is left.
inline char16_t* convertSome(const Byte*& at, const Byte* end, char16_t* out) noexcept {
  constexpr std::ptrdiff_t longest = 4;
  while (end - at > longest) {
    const unsigned lead = at[0];
    const unsigned second = at[1] ^ 0x80u;
    const unsigned third = at[2] ^ 0x80u;
    const unsigned point = (lead & 0x0Fu) << 12 | second << 6 | third;
    if (lead < 0xE0 && lead >= 0xC2 && second < 0x40) {
      *out++ = static_cast<char16_t>((lead & 0x1Fu) << 6 | second);
      at += 2;
    } else if ((lead & 0xF0u) == 0xE0 && (second | third) < 0x40 && point >= 0x800 &&
               (point & 0xF800u) != 0xD800) {
      *out++ = static_cast<char16_t>(point);
      at += 3;
    } else {
      out = decodeOneTo(at, end, out);
      if (at == end) return out;
    }
    if (*at >= 0x80) continue;
    *out++ = *at++;
    if (at == end || *at < 0x80) return out;
  }
  return out;
}

// Calls `ascii` with each run of ASCII and `point` with each other character, `illFormed` standing
// for what is none. Ends, and answers false, as soon as `point` does.
template <class Ascii, class Point>
bool forEachPart(std::string_view bytes, Ascii ascii, Point point) {
  const auto* at = reinterpret_cast<const Byte*>(bytes.data());
  const Byte* const end = at + bytes.size();
  while (at != end) {
    if (*at >= 0x80) {
      if (!point(decodeOne(at, end))) return false;
      continue;
    }
    const auto left = static_cast<std::size_t>(end - at);
    const std::size_t run = prefixOf(at, left);
    ascii(bytes.substr(bytes.size() - left, run));
    at += run;
  }
  return true;
}

// How many surrogate pairs begin from `from` on and before `to`. Either half of one counts as the
// three bytes of U+FFFD; together they take four.
std::size_t pairsFrom(std::u16string_view units, std::size_t from, std::size_t to) noexcept {
  std::size_t pairs = 0;
  for (std::size_t i = from; i < to && i + 1 < units.size(); ++i)
    pairs += isHighSurrogate(units[i]) && isLowSurrogate(units[i + 1]);
  return pairs;
}

inline char* encodePoint(char32_t point, char* out) noexcept {
  auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
  if (point < 0x80) {
    put(point);
  } else if (point < 0x800) {
    put(0xC0 | point >> 6);
    put(0x80 | (point & 0x3F));
  } else if (point < 0x10000) {
    put(0xE0 | point >> 12);
    put(0x80 | (point >> 6 & 0x3F));
    put(0x80 | (point & 0x3F));
  } else {
    put(0xF0 | point >> 18);
    put(0x80 | (point >> 12 & 0x3F));
    put(0x80 | (point >> 6 & 0x3F));
    put(0x80 | (point & 0x3F));
  }
  return out;
}

// Writes the character at `at` and moves behind it.
inline char* encodeOneTo(const char16_t*& at, const char16_t* end, char* out) noexcept {
  char32_t point = *at++;
  if ((point & 0xF800u) == 0xD800u) [[unlikely]] {
    if (isHighSurrogate(point) && at != end && isLowSurrogate(*at))
      point = (point << 10) + *at++ - ((0xD800u << 10) + 0xDC00u - 0x10000u);
    else
      point = replacementCharacter;
  }
  return encodePoint(point, out);
}

// Writes characters from the one at `at`, which is not ASCII, until there is more than one of ASCII
// side by side, or little is left.
inline char* convertSome(const char16_t*& at, const char16_t* end, char* out) noexcept {
  constexpr std::ptrdiff_t longest = 4;
  while (end - at > longest) {
    const unsigned unit = *at;
    if (unit < 0x800) {
      out[0] = static_cast<char>(0xC0 | unit >> 6);
      out[1] = static_cast<char>(0x80 | (unit & 0x3F));
      out += 2;
      ++at;
    } else if ((unit & 0xF800u) != 0xD800) {
      out[0] = static_cast<char>(0xE0 | unit >> 12);
      out[1] = static_cast<char>(0x80 | (unit >> 6 & 0x3F));
      out[2] = static_cast<char>(0x80 | (unit & 0x3F));
      out += 3;
      ++at;
    } else {
      out = encodeOneTo(at, end, out);
    }
    if (*at >= 0x80) continue;
    *out++ = static_cast<char>(*at++);
    if (*at < 0x80) return out;
  }
  return out;
}

/// From one form to the other, as far as whole blocks reach. There is room for as many units of the
/// result as are left to be read: a whole block may be written, and what is not ASCII in it written
/// over.
template <class From, class To>
inline To* convertBlocks(const From*& at, const From* end, To* out) noexcept {
  while (static_cast<std::size_t>(end - at) >= block) {
    convertBlock(at, out);
    if (isAsciiBlock(at)) {  // a step of known length need not wait for a count
      at += block;
      out += block;
      continue;
    }
    const std::size_t ascii = asciiInBlock(at);
    at += ascii;
    out = convertSome(at, end, out + ascii);
  }
  return out;
}

}  // namespace

std::size_t asciiPrefix(std::string_view bytes) noexcept {
  return prefixOf(reinterpret_cast<const Byte*>(bytes.data()), bytes.size());
}

std::size_t asciiPrefix(std::u16string_view units) noexcept {
  return prefixOf(units.data(), units.size());
}

std::size_t utf16Length(std::string_view bytes) noexcept {
  std::size_t length = 0;
  forEachPart(
      bytes, [&length](std::string_view ascii) { length += ascii.size(); },
      [&length](char32_t point) {
        length += point >= 0x10000 && point != illFormed ? 2 : 1;
        return true;
      });
  return length;
}

bool isValidUtf8(std::string_view bytes) noexcept {
  return forEachPart(
      bytes, [](std::string_view) {}, [](char32_t point) { return point != illFormed; });
}

char16_t* decodeUtf8(std::string_view bytes, char16_t* out) noexcept {
  const auto* at = reinterpret_cast<const Byte*>(bytes.data());
  const Byte* const end = at + bytes.size();
  out = convertBlocks(at, end, out);
  while (at != end)
    if (*at < 0x80)
      *out++ = *at++;
    else
      out = decodeOneTo(at, end, out);
  return out;
}

std::size_t utf8Length(std::u16string_view units) noexcept {
  std::size_t length = units.size();
  std::size_t at = 0;
  addLength(units, at, length);
  for (; at < units.size(); ++at)
    length += std::size_t{units[at] >= 0x80} + std::size_t{units[at] >= 0x800} -
              2 * pairsFrom(units, at, at + 1);
  return length;
}

char* encodeUtf8(std::u16string_view units, char* out) noexcept {
  const char16_t* at = units.data();
  const char16_t* const end = at + units.size();
  out = convertBlocks(at, end, out);
  while (at != end) out = encodeOneTo(at, end, out);
  return out;
}

std::string_view withoutPartialCharacter(std::string_view bytes) noexcept {
  std::size_t start = bytes.size();
  const std::size_t reach = std::min<std::size_t>(bytes.size(), 3);
  while (bytes.size() - start < reach) {
    const auto byte = static_cast<Byte>(bytes[--start]);
    if (isContinuation(byte)) continue;
    const std::size_t needed = byte < 0xC2 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
    const bool isLead = byte >= 0xC2 && byte < 0xF5;
    return isLead && bytes.size() - start < needed ? bytes.substr(0, start) : bytes;
  }
  return bytes;
}

char16_t* encodeUtf16(char32_t point, char16_t* out) noexcept {
  if (point < 0x10000) {
    *out++ = static_cast<char16_t>(point);
  } else if (point < 0x110000) {
    *out++ = static_cast<char16_t>(0xD7C0 + (point >> 10));
    *out++ = static_cast<char16_t>(0xDC00 + (point & 0x3FF));
  } else {
    *out++ = replacementCharacter;
  }
  return out;
}

}  // namespace qz::detail
