#include "Platform/System/detail/MountInfo.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace qz::detail {
namespace {

/// Takes the text up to `separator` off the front.
std::string_view take(std::string_view& text, char separator) {
  const std::size_t end = std::min(text.find(separator), text.size());
  const std::string_view front = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return front;
}

template <class T>
bool readNumber(std::string_view text, T& value) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

/// Blanks, line ends and backslashes are written as three octal digits: "\040".
std::string unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned value = 0;
    const std::string_view digits = text.substr(i + 1, 3);
    if (text[i] == '\\' && digits.size() == 3 &&
        std::from_chars(digits.begin(), digits.end(), value, 8).ptr == digits.end() &&
        value < 256) {
      plain += static_cast<char>(value);
      i += 3;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

bool hasOption(std::string_view options, std::string_view wanted) {
  while (!options.empty())
    if (take(options, ',') == wanted) return true;
  return false;
}

bool keepsNoOwners(std::string_view type, std::string_view options) {
  constexpr std::array<std::string_view, 5> ownerless{"exfat", "msdos", "ntfs", "ntfs3", "vfat"};
  return std::ranges::find(ownerless, type) != ownerless.end() || hasOption(options, "forceuid");
}

// 36 35 98:0 /mnt1 /mnt2 rw,noatime master:1 - ext3 /dev/root rw,errors=continue
// mount, parent, device, root, where, its options, any number of fields, "-", kind, from, options
bool readEntry(std::string_view line, MountInfoEntry& entry) {
  NSMountRecord& record = entry.record;
  if (!readNumber(take(line, ' '), entry.identifier)) return false;
  take(line, ' ');
  std::string_view device = take(line, ' ');
  if (!readNumber(take(device, ':'), record.identifier[0]) ||
      !readNumber(device, record.identifier[1]))
    return false;
  take(line, ' ');
  record.mountedOn = unescaped(take(line, ' '));
  const std::string_view options = take(line, ' ');
  const std::size_t dash = line.starts_with("- ") ? 0 : line.find(" - ");
  if (!record.mountedOn.starts_with('/') || dash == line.npos) return false;
  line.remove_prefix(dash == 0 ? 2 : dash + 3);
  record.type = unescaped(take(line, ' '));
  record.mountedFrom = unescaped(take(line, ' '));
  const std::string_view superOptions = take(line, ' ');
  record.flags = 0;
  if (hasOption(options, "ro") || hasOption(superOptions, "ro")) record.flags |= NSMountReadOnly;
  if (keepsNoOwners(record.type, superOptions)) record.flags |= NSMountIgnoresOwnership;
  return !record.type.empty();
}

}  // namespace

std::vector<MountInfoEntry> readMountInfo(std::string_view text) {
  std::vector<MountInfoEntry> entries;
  while (!text.empty()) {
    MountInfoEntry entry;
    if (readEntry(take(text, '\n'), entry)) entries.push_back(std::move(entry));
  }
  return entries;
}

const MountInfoEntry* deepestMount(const std::vector<MountInfoEntry>& entries,
                                   std::string_view path) {
  const MountInfoEntry* deepest = nullptr;
  for (const MountInfoEntry& each : entries) {
    const std::string_view place = each.record.mountedOn;
    const bool holds = path.starts_with(place) &&
                       (place == "/" || path.size() == place.size() || path[place.size()] == '/');
    if (holds && (deepest == nullptr || place.size() >= deepest->record.mountedOn.size()))
      deepest = &each;
  }
  return deepest;
}

}  // namespace qz::detail
