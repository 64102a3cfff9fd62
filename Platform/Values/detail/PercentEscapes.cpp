#include "Platform/Values/detail/PercentEscapes.h"

#include "Platform/Values/detail/PathText.h"
#include "Platform/Values/detail/Utf.h"

namespace qz::detail {
namespace {

// How long a character is whose UTF-8 begins so; 1 for what begins none.
constexpr std::size_t characterSize(unsigned char lead) noexcept {
  return lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

}  // namespace

std::u16string addEscapes(std::string_view bytes, const AsciiSet& allowed) {
  constexpr std::u16string_view digits = u"0123456789ABCDEF";
  std::u16string text;
  text.reserve(bytes.size());
  for (char each : bytes) {
    const auto byte = static_cast<unsigned char>(each);
    if (allowed.contains(byte))
      text += static_cast<char16_t>(byte);
    else
      ((text += u'%') += digits[byte / 16]) += digits[byte % 16];
  }
  return text;
}

std::optional<std::u16string> replaceEscapes(std::u16string_view text, std::u16string_view kept) {
  std::u16string plain;
  plain.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t escape = std::min(text.find(u'%', at), text.size());
    plain.append(text, at, escape - at);
    at = escape;
    if (at == text.size()) break;
    // One character: its first byte says how many escapes belong to it.
    std::string bytes;
    std::size_t end = at;
    do {
      const int byte = escapedByte(text, end);
      if (byte < 0) return std::nullopt;
      bytes += static_cast<char>(byte);
      end += 3;
    } while (bytes.size() < characterSize(static_cast<unsigned char>(bytes.front())) &&
             end < text.size());
    if (!isValidUtf8(bytes)) return std::nullopt;
    char16_t units[4];
    const std::u16string_view character(units,
                                        static_cast<std::size_t>(decodeUtf8(bytes, units) - units));
    plain.append(kept.find(character) != kept.npos ? text.substr(at, end - at) : character);
    at = end;
  }
  return plain;
}

std::u16string replaceEscapesInUrl(std::u16string_view part) {
  std::string bytes;
  bytes.reserve(part.size());
  for (std::size_t at = 0; at < part.size();) {
    const int byte = escapedByte(part, at);
    bytes += static_cast<char>(byte < 0 ? part[at] : byte);
    at += byte < 0 ? 1 : 3;
  }
  return pathOfBytes(bytes);
}

}  // namespace qz::detail
