#include "Platform/Values/detail/ClassicPath.h"

#include <algorithm>
#include <vector>

#include "Platform/Values/detail/PathText.h"

namespace qz::detail {
namespace {

constexpr std::u16string_view volumes = u"Volumes";

std::u16string exchanged(std::u16string_view name) {
  std::u16string other(name);
  for (char16_t& unit : other)
    if (unit == u':' || unit == u'/') unit = unit == u':' ? u'/' : u':';
  return other;
}

bool isUnusable(std::u16string_view path) noexcept {
  return path.empty() || path.find(u'\0') != path.npos;
}

}  // namespace

std::optional<std::u16string> posixFromClassicPath(std::u16string_view path,
                                                   std::u16string_view startupVolume) {
  if (isUnusable(path)) return std::nullopt;
  std::u16string posix;
  const std::size_t volumeEnd = std::min(path.find(u':'), path.size());
  if (volumeEnd > 0) {
    const std::u16string_view volume = path.substr(0, volumeEnd);
    if (volume == u"." || volume == u"..") return std::nullopt;
    posix = u'/';
    if (volume != startupVolume) {
      appendComponent(posix, volumes);
      appendComponent(posix, exchanged(volume));
    }
    path.remove_prefix(volumeEnd);
  }
  // Colons and a name, again and again; the last name may be missing.
  while (!path.empty()) {
    const std::size_t colons = std::min(path.find_first_not_of(u':'), path.size());
    for (std::size_t up = 1; up < colons; ++up) appendComponent(posix, u"..");
    path.remove_prefix(colons);
    const std::u16string_view name = path.substr(0, path.find(u':'));
    if (name == u"." || name == u"..") return std::nullopt;
    if (!name.empty()) appendComponent(posix, exchanged(name));
    path.remove_prefix(name.size());
  }
  return posix.empty() ? u"." : posix;
}

std::optional<std::u16string> classicFromPosixPath(std::u16string_view path,
                                                   std::u16string_view startupVolume) {
  if (isUnusable(path)) return std::nullopt;
  std::vector<std::u16string_view> components = componentsOfPath(path);
  std::erase(components, u".");

  std::u16string classic;
  auto next = components.begin();
  if (next != components.end() && *next == u"/") {
    classic = startupVolume;
    ++next;
    const bool isInVolumes = components.end() - next >= 2 && next[0] == volumes && next[1] != u"..";
    if (isInVolumes && exchanged(next[1]) != startupVolume) {
      classic = exchanged(next[1]);
      next += 2;
    }
  }
  // A colon goes before each name, and one more for each step up since the name before.
  classic += u':';
  bool isSeparated = true;
  for (; next != components.end(); ++next) {
    if (!isSeparated) classic += u':';
    isSeparated = *next == u"..";
    classic += isSeparated ? u":" : exchanged(*next);
  }
  return classic;
}

}  // namespace qz::detail
