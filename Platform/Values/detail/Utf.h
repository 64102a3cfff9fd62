/// @file
/// Private: UTF-8 to UTF-16 and back, any input.
///
/// Going in, each maximal ill-formed part of UTF-8 becomes one U+FFFD; going out, each lone
/// surrogate does. Runs of ASCII are moved sixteen units at a time.
#pragma once

#include <cstddef>
#include <string_view>

#pragma GCC visibility push(default)

namespace qz::detail {

inline constexpr char16_t replacementCharacter = 0xFFFD;

constexpr bool isHighSurrogate(char32_t unit) noexcept { return (unit & 0xFFFFFC00u) == 0xD800; }
constexpr bool isLowSurrogate(char32_t unit) noexcept { return (unit & 0xFFFFFC00u) == 0xDC00; }

/// How many bytes, or units, there are before the first that is not ASCII.
std::size_t asciiPrefix(std::string_view bytes) noexcept;
std::size_t asciiPrefix(std::u16string_view units) noexcept;

/// How many units `decodeUtf8` writes.
std::size_t utf16Length(std::string_view bytes) noexcept;

/// Writes UTF-16 to `out`, which has room for as many units as there are bytes. Answers its end.
char16_t* decodeUtf8(std::string_view bytes, char16_t* out) noexcept;

/// Whether there is nothing in the bytes to replace.
bool isValidUtf8(std::string_view bytes) noexcept;

/// How many bytes `encodeUtf8` writes: at most three for each unit.
std::size_t utf8Length(std::u16string_view units) noexcept;

/// Writes UTF-8 to `out`. Answers its end.
char* encodeUtf8(std::u16string_view units, char* out) noexcept;

/// The bytes without a character at the end that was cut off before it was complete.
std::string_view withoutPartialCharacter(std::string_view bytes) noexcept;

/// Writes one code point, or U+FFFD when it is none. Answers the end.
char16_t* encodeUtf16(char32_t point, char16_t* out) noexcept;

}  // namespace qz::detail

#pragma GCC visibility pop
