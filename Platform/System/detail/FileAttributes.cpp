#include "Platform/System/detail/FileAttributes.h"

#include <grp.h>
#include <pwd.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/System/detail/PathBytes.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/detail/SystemCalls.h"

namespace qz::detail {
namespace {

constexpr const char* creationAttribute = "user.qz.creation-date";
constexpr double nanosecondsInSecond = 1e9;

// Accounts ----------------------------------------------------------------------------------------

struct UserList {
  using Entry = passwd;
  static int byNumber(std::uint32_t number, passwd* entry, char* room, std::size_t size,
                      passwd** found) {
    return ::getpwuid_r(number, entry, room, size, found);
  }
  static int byName(const char* name, passwd* entry, char* room, std::size_t size, passwd** found) {
    return ::getpwnam_r(name, entry, room, size, found);
  }
  static std::uint32_t number(const passwd& entry) { return entry.pw_uid; }
  static const char* name(const passwd& entry) { return entry.pw_name; }
};

struct GroupList {
  using Entry = group;
  static int byNumber(std::uint32_t number, group* entry, char* room, std::size_t size,
                      group** found) {
    return ::getgrgid_r(number, entry, room, size, found);
  }
  static int byName(const char* name, group* entry, char* room, std::size_t size, group** found) {
    return ::getgrnam_r(name, entry, room, size, found);
  }
  static std::uint32_t number(const group& entry) { return entry.gr_gid; }
  static const char* name(const group& entry) { return entry.gr_name; }
};

// `find` is one of the reentrant look-ups, which want room for the entry's texts.
template <class List, class Find, class Use>
bool withEntry(Find find, Use use) {
  typename List::Entry entry{};
  typename List::Entry* found = nullptr;
  std::vector<char> room(1024);
  int error = 0;
  while ((error = find(&entry, room.data(), room.size(), &found)) == ERANGE)
    room.resize(room.size() * 2);
  if (error != 0 || found == nullptr) return false;
  use(*found);
  return true;
}

// The list of users is a file, or a server: what was asked last is remembered for a few seconds.
template <class List>
Ref<NSString> accountName(std::uint32_t number) {
  using Clock = std::chrono::steady_clock;
  struct Last {
    std::uint32_t number = 0;
    Clock::time_point until = Clock::time_point::min();
    Ref<NSString> name;
  };
  thread_local Last last;
  const auto now = Clock::now();
  if (last.number == number && now < last.until) return last.name;
  last = Last{number, now + std::chrono::seconds(5), nullptr};
  withEntry<List>([&](auto... rest) { return List::byNumber(number, rest...); },
                  [&](const auto& entry) {
                    last.name = NSString::stringWithFileSystemRepresentation(List::name(entry));
                  });
  return last.name;
}

// No value when the attributes say nothing, or a name that nobody has, which `isUnknown` tells.
template <class List>
std::optional<std::uint32_t> accountNumber(NSDictionary* attributes, NSString* numberKey,
                                           NSString* nameKey, bool& isUnknown) {
  if (auto number = as<NSNumber>(attributes->objectForKey(numberKey)))
    return number->unsignedIntValue();
  auto name = as<NSString>(attributes->objectForKey(nameKey));
  if (!name) return std::nullopt;
  std::optional<std::uint32_t> number;
  const PathBytes text(name);
  const bool isFound =
      text.error() == 0 &&
      withEntry<List>([&](auto... rest) { return List::byName(text.c_str(), rest...); },
                      [&](const auto& entry) { number = List::number(entry); });
  if (!isFound) isUnknown = true;
  return number;
}

// Dates -------------------------------------------------------------------------------------------

Ref<NSDate> dateOf(std::int64_t seconds, std::uint32_t nanoseconds) {
  return make<NSDate>(static_cast<double>(seconds) +
                      static_cast<double>(nanoseconds) / nanosecondsInSecond);
}

Ref<NSDate> creationDateThatWasSet(const char* path, bool followsLinks) {
  char text[64];
  // Links have no such attribute.
  const ssize_t size = followsLinks ? os::getxattr(path, creationAttribute, text, sizeof text) : -1;
  if (size <= 0) return nullptr;
  const char* end = text + size;
  std::int64_t seconds = 0;
  std::uint32_t nanoseconds = 0;
  const auto whole = std::from_chars(text, end, seconds);
  if (whole.ec != std::errc() || whole.ptr == end || *whole.ptr != '.') return nullptr;
  const auto part = std::from_chars(whole.ptr + 1, end, nanoseconds);
  const bool isWhole = part.ec == std::errc() && part.ptr == end && part.ptr - whole.ptr == 10;
  return isWhole ? dateOf(seconds, nanoseconds) : nullptr;
}

// Seconds and nanoseconds of a Date; no value when no file can have it.
std::optional<::timespec> timeOf(NSDate* date) {
  const double seconds = std::floor(date->timeIntervalSince1970());
  // Beyond these a double's step is more than the system's whole range.
  if (!(seconds > -9e15 && seconds < 9e15)) return std::nullopt;
  ::timespec time{};
  time.tv_sec = static_cast<time_t>(seconds);
  // A fraction just below 0 comes to the whole next second.
  time.tv_nsec =
      std::min(static_cast<long>((date->timeIntervalSince1970() - seconds) * nanosecondsInSecond),
               999'999'999L);
  return time;
}

// Kinds -------------------------------------------------------------------------------------------

NSString* typeOf(unsigned int mode) {
  switch (mode & S_IFMT) {
    case S_IFREG:
      return NSFileTypeRegular;
    case S_IFDIR:
      return NSFileTypeDirectory;
    case S_IFLNK:
      return NSFileTypeSymbolicLink;
    case S_IFBLK:
      return NSFileTypeBlockSpecial;
    case S_IFCHR:
      return NSFileTypeCharacterSpecial;
    case S_IFSOCK:
      return NSFileTypeSocket;
    case S_IFIFO:
      return NSFileTypePipe;
    default:
      return NSFileTypeUnknown;
  }
}

void setUnlessNil(NSMutableDictionary* attributes, NSObject* object, NSString* key) {
  if (object != nullptr) attributes->setObject_forKey(object, key);
}

std::uint64_t deviceNumber(std::uint32_t major, std::uint32_t minor) {
  return makedev(major, minor);
}

// Changing ----------------------------------------------------------------------------------------

int changeOwner(const char* path, NSDictionary* attributes) {
  bool isUnknown = false;
  const auto user =
      accountNumber<UserList>(attributes, NSFileOwnerAccountID, NSFileOwnerAccountName, isUnknown);
  const auto group = accountNumber<GroupList>(attributes, NSFileGroupOwnerAccountID,
                                              NSFileGroupOwnerAccountName, isUnknown);
  if (isUnknown) return EINVAL;
  constexpr auto unchanged = static_cast<std::uint32_t>(-1);
  if (!user && !group) return 0;
  return os::fchownat(AT_FDCWD, path, user.value_or(unchanged), group.value_or(unchanged), 0) == 0
             ? 0
             : errno;
}

int changePermissions(const char* path, NSDictionary* attributes) {
  auto mode = as<NSNumber>(attributes->objectForKey(NSFilePosixPermissions));
  if (!mode) return 0;
  return os::fchmodat(AT_FDCWD, path, mode->unsignedIntValue() & 07777) == 0 ? 0 : errno;
}

int changeCreationDate(const char* path, NSDictionary* attributes) {
  auto date = as<NSDate>(attributes->objectForKey(NSFileCreationDate));
  if (!date) return 0;
  const auto time = timeOf(date);
  if (!time) return EINVAL;
  return setCreationTime(path, time->tv_sec, static_cast<std::uint32_t>(time->tv_nsec));
}

int changeModificationDate(const char* path, NSDictionary* attributes) {
  auto date = as<NSDate>(attributes->objectForKey(NSFileModificationDate));
  if (!date) return 0;
  const auto time = timeOf(date);
  if (!time) return EINVAL;
  const ::timespec times[2] = {{0, UTIME_OMIT}, *time};
  return os::utimensat(AT_FDCWD, path, times, 0) == 0 ? 0 : errno;
}

}  // namespace

Ref<NSDictionary> attributesOfFile(const char* path, bool followsLinks) {
  struct ::statx about;
  if (os::statx(AT_FDCWD, path, followsLinks ? 0 : AT_SYMLINK_NOFOLLOW,
                STATX_BASIC_STATS | STATX_BTIME, &about) != 0)
    return nullptr;
  auto attributes = NSMutableDictionary::dictionaryWithCapacity(12);
  attributes->setObject_forKey(typeOf(about.stx_mode), NSFileType);
  attributes->setObject_forKey(NSNumber::of(about.stx_size), NSFileSize);
  attributes->setObject_forKey(dateOf(about.stx_mtime.tv_sec, about.stx_mtime.tv_nsec),
                               NSFileModificationDate);
  const bool isLink = S_ISLNK(about.stx_mode);
  Ref<NSDate> created = creationDateThatWasSet(path, !isLink);
  if (!created && (about.stx_mask & STATX_BTIME) != 0)
    created = dateOf(about.stx_btime.tv_sec, about.stx_btime.tv_nsec);
  setUnlessNil(attributes, created, NSFileCreationDate);
  attributes->setObject_forKey(NSNumber::of(std::uint32_t{about.stx_mode} & 07777u),
                               NSFilePosixPermissions);
  attributes->setObject_forKey(NSNumber::of(about.stx_uid), NSFileOwnerAccountID);
  setUnlessNil(attributes, accountName<UserList>(about.stx_uid), NSFileOwnerAccountName);
  attributes->setObject_forKey(NSNumber::of(about.stx_gid), NSFileGroupOwnerAccountID);
  setUnlessNil(attributes, accountName<GroupList>(about.stx_gid), NSFileGroupOwnerAccountName);
  attributes->setObject_forKey(NSNumber::of(about.stx_nlink), NSFileReferenceCount);
  attributes->setObject_forKey(NSNumber::of(deviceNumber(about.stx_dev_major, about.stx_dev_minor)),
                               NSFileSystemNumber);
  attributes->setObject_forKey(NSNumber::of(about.stx_ino), NSFileSystemFileNumber);
  if (S_ISBLK(about.stx_mode) || S_ISCHR(about.stx_mode))
    attributes->setObject_forKey(
        NSNumber::of(deviceNumber(about.stx_rdev_major, about.stx_rdev_minor)),
        NSFileDeviceIdentifier);
  return as<NSDictionary>(attributes->copy());
}

int changeAttributes(const char* path, NSDictionary* attributes) {
  if (attributes == nullptr) return 0;
  if (const int number = changeOwner(path, attributes); number != 0) return number;
  // The creation date takes the right to write, which the permissions may take away, or give.
  const int early = changeCreationDate(path, attributes);
  if (early != 0 && early != EACCES) return early;
  if (const int number = changePermissions(path, attributes); number != 0) return number;
  if (early != 0)
    if (const int number = changeCreationDate(path, attributes); number != 0) return number;
  return changeModificationDate(path, attributes);
}

int setCreationTime(const char* path, std::int64_t seconds, std::uint32_t nanoseconds) {
  char text[64];
  const int size =
      std::snprintf(text, sizeof text, "%lld.%09u", static_cast<long long>(seconds), nanoseconds);
  return os::setxattr(path, creationAttribute, text, static_cast<std::size_t>(size)) == 0 ? 0
                                                                                          : errno;
}

}  // namespace qz::detail
