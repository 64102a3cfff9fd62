#include "Platform/System/NSMountTable.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <mutex>
#include <string_view>

#include "Platform/System/detail/FileBytes.h"
#include "Platform/System/detail/MountInfo.h"
#include "Platform/Values/detail/Descriptor.h"

namespace qz {
namespace {

namespace fs = std::filesystem;

std::optional<std::vector<detail::MountInfoEntry>> systemEntries() {
  constexpr std::uint64_t limit = 256 * 1024 * 1024;
  const auto text = detail::bytesOfFile("/proc/self/mountinfo", limit);
  if (!text) return std::nullopt;
  return detail::readMountInfo(*text);
}

/// From the file system itself, as those that have labels to change tell it.
std::string labelOfFileSystem(const std::string& mountPath) {
  const detail::Descriptor root(
      ::open(mountPath.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
  std::array<char, FSLABEL_MAX + 1> label{};
  if (!root || ::ioctl(root.number(), FS_IOC_GETFSLABEL, label.data()) != 0) return "";
  return label.data();
}

/// Names in /dev/disk have "\x20" for a blank.
std::string deviceNameDecoded(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned value = 0;
    const std::string_view digits = text.substr(std::min(i + 2, text.size()), 2);
    if (text.substr(i, 2) == "\\x" && digits.size() == 2 &&
        std::from_chars(digits.begin(), digits.end(), value, 16).ptr == digits.end()) {
      plain += static_cast<char>(value);
      i += 3;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

/// From the links by label that the device manager makes, for the other kinds.
std::string labelOfDevice(const std::string& device) {
  if (!device.starts_with('/')) return "";
  const std::string wanted = detail::realPath(device.c_str());
  if (wanted.empty()) return "";
  std::error_code problem;
  fs::directory_iterator link("/dev/disk/by-label", problem);
  for (; link != fs::directory_iterator(); link.increment(problem))
    if (detail::realPath(link->path().c_str()) == wanted)
      return deviceNameDecoded(link->path().filename().string());
  return "";
}

class SystemMountTable final : public NSMountTable {
 public:
  std::optional<std::vector<NSMountRecord>> records() const override {
    auto entries = systemEntries();
    if (!entries) return std::nullopt;
    std::vector<NSMountRecord> records;
    records.reserve(entries->size());
    for (detail::MountInfoEntry& each : *entries) records.push_back(std::move(each.record));
    return records;
  }

  std::optional<NSMountRecord> recordForPath(const std::string& path) const override {
    struct statx about;
    if (::statx(AT_FDCWD, path.c_str(), 0, STATX_MNT_ID, &about) != 0) return std::nullopt;
    const auto entries = systemEntries();
    if (!entries) return std::nullopt;
    if ((about.stx_mask & STATX_MNT_ID) != 0) {
      for (const detail::MountInfoEntry& each : *entries)
        if (each.identifier == about.stx_mnt_id) return each.record;
      errno = ENOENT;  // mounted where this process cannot see it
      return std::nullopt;
    }
    const std::string real = detail::realPath(path.c_str());
    if (const auto* entry = detail::deepestMount(*entries, real)) return entry->record;
    errno = ENOENT;
    return std::nullopt;
  }

  // The root of a file system is as old as the file system.
  std::optional<NSVolumeAttributes> attributes(const NSMountRecord& record) const override {
    struct statx about;
    if (::statx(AT_FDCWD, record.mountedOn.c_str(), 0, STATX_BTIME | STATX_MTIME, &about) != 0)
      return std::nullopt;
    NSVolumeAttributes attributes;
    if ((about.stx_mask & STATX_BTIME) != 0) attributes.created = about.stx_btime.tv_sec;
    if ((about.stx_mask & STATX_MTIME) != 0) attributes.modified = about.stx_mtime.tv_sec;
    std::string label = labelOfFileSystem(record.mountedOn);
    if (label.empty()) label = labelOfDevice(record.mountedFrom);
    if (!label.empty()) attributes.name = std::move(label);
    return attributes;
  }

  std::optional<std::uint64_t> freeBytes(const std::string& mountPath) const override {
    struct statvfs about;
    if (::statvfs(mountPath.c_str(), &about) != 0) return std::nullopt;
    return static_cast<std::uint64_t>(about.f_bfree) * about.f_frsize;
  }
};

struct Table {
  std::mutex mutex;
  std::shared_ptr<const NSMountTable> current = std::make_shared<SystemMountTable>();
};

Table& table() {
  static Table* const table = new Table;
  return *table;
}

}  // namespace

std::shared_ptr<const NSMountTable> NSMountTable::current() {
  const std::lock_guard lock(table().mutex);
  return table().current;
}

void NSMountTable::setCurrent(std::shared_ptr<const NSMountTable> other) {
  if (other == nullptr) other = std::make_shared<SystemMountTable>();
  const std::lock_guard lock(table().mutex);
  table().current.swap(other);
}

}  // namespace qz
