#include "Platform/Values/detail/PathText.h"

#include <algorithm>

#include "Platform/Values/detail/Characters.h"
#include "Platform/Values/detail/Utf.h"

namespace qz::detail {
namespace {

// A byte that is part of no UTF-8 is kept as a lone surrogate, which no decoded text has.
constexpr char16_t strayBase = 0xDC00;

constexpr bool isStrayByte(char16_t unit) noexcept {
  return unit >= strayBase + 0x80 && unit <= strayBase + 0xFF;
}

}  // namespace

std::u16string_view withoutTrailingSlashes(std::u16string_view path) noexcept {
  while (path.size() > 1 && path.back() == u'/') path.remove_suffix(1);
  return path;
}

std::size_t lastComponentStart(std::u16string_view path) noexcept {
  if (path == u"/") return 0;
  return path.rfind(u'/') + 1;  // npos, which none has, is one before 0
}

std::vector<std::u16string_view> componentsOfPath(std::u16string_view path) {
  std::vector<std::u16string_view> components;
  if (!path.empty() && path.front() == u'/') components.push_back(path.substr(0, 1));
  for (std::size_t at = 0; at < path.size();) {
    const std::size_t end = std::min(path.find(u'/', at), path.size());
    if (end > at) components.push_back(path.substr(at, end - at));
    at = end + 1;
  }
  return components;
}

void appendComponent(std::u16string& path, std::u16string_view component) {
  if (!path.empty() && path.back() != u'/') path += u'/';
  path += component;
}

std::size_t extensionStart(std::u16string_view component) noexcept {
  const std::size_t dot = component.rfind(u'.');
  if (dot == component.npos || dot + 1 == component.size()) return component.npos;
  return component.find_first_not_of(u'.') < dot ? dot : component.npos;
}

std::optional<std::string> bytesOfPath(std::u16string_view path) {
  std::string bytes;
  bytes.reserve(path.size());
  for (std::size_t at = 0; at < path.size();) {
    if (isStrayByte(path[at])) {
      bytes += static_cast<char>(path[at++] - strayBase);
      continue;
    }
    // A run of text up to the next lone surrogate.
    std::size_t end = at;
    while (end < path.size()) {
      const Character each = characterAt(path, end);
      if (isLoneSurrogate(each)) break;
      end += each.width;
    }
    if (end == at) return std::nullopt;
    const std::u16string_view run = path.substr(at, end - at);
    const std::size_t before = bytes.size();
    bytes.resize(before + utf8Length(run));
    encodeUtf8(run, bytes.data() + before);
    at = end;
  }
  return bytes;
}

std::u16string pathOfBytes(std::string_view bytes) {
  std::u16string path;
  path.reserve(bytes.size());
  std::size_t at = 0;
  while (at < bytes.size()) {
    // The longest character at this place, if there is one.
    const auto lead = static_cast<unsigned char>(bytes[at]);
    const std::size_t size = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const std::string_view character = bytes.substr(at, size);
    if (character.size() == size && isValidUtf8(character)) {
      char16_t units[4];
      path.append(units, decodeUtf8(character, units));
      at += size;
    } else {
      path += static_cast<char16_t>(strayBase + lead);
      ++at;
    }
  }
  return path;
}

}  // namespace qz::detail
