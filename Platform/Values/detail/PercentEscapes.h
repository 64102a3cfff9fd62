/// @file
/// Private: percent escapes.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Values/detail/UnitKinds.h"

namespace qz::detail {

/// A set of ASCII characters.
class AsciiSet {
 public:
  constexpr AsciiSet() noexcept = default;
  constexpr explicit AsciiSet(std::string_view members) noexcept {
    for (char each : members) insert(each);
  }

  constexpr void insert(char member) noexcept {
    const auto code = static_cast<unsigned char>(member);
    bits_[code / 64] |= std::uint64_t{1} << (code % 64);
  }
  constexpr AsciiSet with(std::string_view more) const noexcept {
    AsciiSet set = *this;
    for (char each : more) set.insert(each);
    return set;
  }

  /// Works for bytes and code units alike; false beyond ASCII.
  constexpr bool contains(std::uint32_t code) const noexcept {
    return code < 128 && (bits_[code / 64] >> (code % 64) & 1) != 0;
  }

 private:
  std::array<std::uint64_t, 2> bits_{};
};

/// What means itself everywhere in a URL.
inline constexpr AsciiSet unreservedSet(
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~");

/// What may stand in a component of a URL's path, and in the path.
inline constexpr AsciiSet segmentSet = unreservedSet.with("!$&'()*+,;=:@");
inline constexpr AsciiSet urlPathSet = segmentSet.with("/");

/// The byte of the escape at `at`; -1 when none is there.
constexpr int escapedByte(std::u16string_view text, std::size_t at) noexcept {
  if (text.size() - at < 3 || text[at] != u'%') return -1;
  const int high = hexValue(text[at + 1]);
  const int low = hexValue(text[at + 2]);
  return high < 0 || low < 0 ? -1 : high * 16 + low;
}

/// The bytes with those outside `allowed` escaped.
std::u16string addEscapes(std::string_view bytes, const AsciiSet& allowed);

/// The text with its escapes replaced, but for those of characters in `kept`. No value for an
/// ill-formed escape, and for bytes that are not UTF-8.
std::optional<std::u16string> replaceEscapes(std::u16string_view text, std::u16string_view kept);

/// The same for a part of a URL, which has well-formed escapes only: bytes that are not UTF-8
/// become what they are in a path.
std::u16string replaceEscapesInUrl(std::u16string_view part);

}  // namespace qz::detail
