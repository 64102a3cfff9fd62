#include "Platform/System/detail/XmlText.h"

#include <array>
#include <charconv>

#include "Platform/System/detail/PropertyListFault.h"
#include "Platform/Values/detail/Utf.h"

namespace qz::detail {
namespace {

constexpr auto needsCare = [] {
  std::array<std::uint8_t, 256> table{};
  for (std::size_t c = 0; c < 0x20; ++c) table[c] = c != '\t' && c != '\n';
  table['&'] = 1;
  return table;
}();

bool isXmlCharacter(std::uint32_t point) {
  if (point < 0x20) return point == '\t' || point == '\n' || point == '\r';
  return point <= 0xD7FF || (point >= 0xE000 && point <= 0xFFFD) ||
         (point >= 0x10000 && point <= 0x10FFFF);
}

struct Entity {
  std::string_view name;
  char character;
};
constexpr Entity entities[] = {
    {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

// "#10" or "#xA".
bool appendCharacter(std::string_view reference, std::string& out) {
  reference.remove_prefix(1);
  const int base = reference.starts_with('x') ? 16 : 10;
  if (base == 16) reference.remove_prefix(1);
  std::uint32_t point = 0;
  const char* const end = reference.data() + reference.size();
  const auto [stop, error] = std::from_chars(reference.data(), end, point, base);
  if (error != std::errc() || stop != end || !isXmlCharacter(point)) return false;
  char16_t units[2];
  char bytes[6];
  const char16_t* const unitEnd = encodeUtf16(point, units);
  const std::u16string_view text(units, static_cast<std::size_t>(unitEnd - units));
  out.append(bytes, encodeUtf8(text, bytes));
  return true;
}

bool appendReference(std::string_view reference, std::string& out) {
  if (reference.starts_with('#')) return appendCharacter(reference, out);
  for (const Entity& entity : entities) {
    if (entity.name != reference) continue;
    out += entity.character;
    return true;
  }
  return false;
}

}  // namespace

bool isPlainXmlText(std::string_view text) noexcept {
  std::uint8_t found = 0;
  for (char c : text) found |= needsCare[static_cast<unsigned char>(c)];
  return found == 0;
}

void appendXmlText(std::string_view text, bool unescapes, std::string& out) {
  constexpr std::size_t longestReference = 32;
  std::size_t plain = 0;  // from here on nothing has been appended
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (needsCare[static_cast<unsigned char>(text[i])] == 0 || (text[i] == '&' && !unescapes))
      continue;
    out.append(text, plain, i - plain);
    if (text[i] == '\r') {
      out += '\n';
      if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
    } else if (text[i] == '&') {
      const std::string_view reference = text.substr(i + 1, longestReference);
      const std::size_t end = reference.find(';');
      if (end == reference.npos || !appendReference(reference.substr(0, end), out))
        throw PropertyListFailure{"this is no character or entity of XML's own", i};
      i += end + 1;
    } else {
      throw PropertyListFailure{"the text has a control character", i};
    }
    plain = i + 1;
  }
  out.append(text, plain);
}

}  // namespace qz::detail
