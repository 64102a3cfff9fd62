// Data: as text in Base64.

#include <array>
#include <optional>
#include <vector>

#include "Platform/Values/NSMutableData.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/DataStorage.h"
#include "Platform/Values/detail/StringStorage.h"

namespace qz {
namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t notInAlphabet = 64;

constexpr auto sextets = [] {
  std::array<std::uint8_t, 128> table{};
  table.fill(notInAlphabet);
  for (std::size_t i = 0; i < alphabet.size(); ++i)
    table[static_cast<unsigned char>(alphabet[i])] = static_cast<std::uint8_t>(i);
  return table;
}();

struct Lines {
  explicit Lines(std::uint32_t options) {
    if ((options & NSDataBase64Encoding64CharacterLineLength) != 0)
      length = 64;
    else if ((options & NSDataBase64Encoding76CharacterLineLength) != 0)
      length = 76;
    const bool wantsReturn = (options & NSDataBase64EncodingEndLineWithCarriageReturn) != 0;
    const bool wantsFeed = (options & NSDataBase64EncodingEndLineWithLineFeed) != 0;
    if (wantsReturn != wantsFeed) end = wantsReturn ? "\r" : "\n";
  }

  std::uint64_t lengthOf(std::uint64_t bytes) const {
    const std::uint64_t characters = (bytes + 2) / 3 * 4;
    if (length == 0 || characters == 0) return characters;
    return characters + (characters - 1) / length * end.size();
  }

  unsigned length = 0;  // of a line; 0 for a single one
  std::string_view end = "\r\n";
};

template <class Unit>
void encode(std::span<const std::byte> bytes, const Lines& lines, Unit* out) {
  unsigned column = 0;
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    if (lines.length != 0 && column == lines.length) {
      for (const char each : lines.end) *out++ = static_cast<Unit>(each);
      column = 0;
    }
    column += 4;
    const std::size_t count = std::min<std::size_t>(bytes.size() - at, 3);
    std::uint32_t group = std::to_integer<std::uint32_t>(bytes[at]) << 16;
    if (count > 1) group |= std::to_integer<std::uint32_t>(bytes[at + 1]) << 8;
    if (count > 2) group |= std::to_integer<std::uint32_t>(bytes[at + 2]);
    for (std::size_t i = 0; i < 4; ++i, group <<= 6)
      *out++ = static_cast<Unit>(i <= count ? alphabet[(group >> 18) & 63u] : '=');
  }
}

/// No value for a text that is not well formed: another character, a length that is no multiple of
/// four, padding before the end, bits that are left over and not zero.
template <class Unit>
std::optional<std::vector<std::byte>> decode(std::span<const Unit> text, bool ignoresUnknown) {
  std::vector<std::byte> bytes;
  bytes.reserve(text.size() / 4 * 3);
  std::uint32_t group = 0;
  unsigned characters = 0, padding = 0;
  for (const Unit each : text) {
    const auto unit = static_cast<std::uint32_t>(each);
    const std::uint8_t sextet = unit < sextets.size() ? sextets[unit] : notInAlphabet;
    if (unit == '=') {
      ++padding;
    } else if (sextet == notInAlphabet) {
      if (!ignoresUnknown) return std::nullopt;
      continue;
    } else if (padding != 0) {
      return std::nullopt;
    }
    group = group << 6 | (sextet & 63u);
    if (++characters % 4 != 0) continue;
    for (unsigned i = 0; i < 3; ++i, group <<= 8)
      bytes.push_back(static_cast<std::byte>(group >> 16 & 255u));
    group = 0;
  }
  if (characters % 4 != 0 || padding > 2) return std::nullopt;
  for (; padding != 0; --padding) {
    if (bytes.back() != std::byte{0}) return std::nullopt;
    bytes.pop_back();
  }
  return bytes;
}

std::optional<std::vector<std::byte>> decode(NSString* text, std::uint32_t options) {
  if (text == nullptr) return std::nullopt;
  return decode(std::span(text->view()),
                (options & NSDataBase64DecodingIgnoreUnknownCharacters) != 0);
}

std::optional<std::vector<std::byte>> decode(NSData* text, std::uint32_t options) {
  if (text == nullptr) return std::nullopt;
  return decode(text->span(), (options & NSDataBase64DecodingIgnoreUnknownCharacters) != 0);
}

template <class T>
Ref<T> dataOrNil(const std::optional<std::vector<std::byte>>& bytes) {
  return bytes ? T::dataWithBytes(std::span(*bytes)) : nullptr;
}

}  // namespace

Ref<NSString> NSData::base64EncodedStringWithOptions(std::uint32_t options) const {
  const Lines lines(options);
  return detail::fillString(lines.lengthOf(length_),
                            [&](char16_t* out) { encode(span(), lines, out); });
}

Ref<NSData> NSData::base64EncodedDataWithOptions(std::uint32_t options) const {
  const Lines lines(options);
  return detail::fillData(lines.lengthOf(length_),
                          [&](std::byte* out) { encode(span(), lines, out); });
}

Ref<NSData> NSData::initWithBase64EncodedString_options(NSString* text, std::uint32_t options) {
  return dataOrNil<NSData>(decode(text, options));
}

Ref<NSData> NSData::initWithBase64EncodedData_options(NSData* text, std::uint32_t options) {
  return dataOrNil<NSData>(decode(text, options));
}

Ref<NSMutableData> NSMutableData::initWithBase64EncodedString_options(NSString* text,
                                                                      std::uint32_t options) {
  return dataOrNil<NSMutableData>(decode(text, options));
}

Ref<NSMutableData> NSMutableData::initWithBase64EncodedData_options(NSData* text,
                                                                    std::uint32_t options) {
  return dataOrNil<NSMutableData>(decode(text, options));
}

}  // namespace qz
