#include "Platform/Values/NSPathUtilities.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Runtime/NSException.h"
#include "Platform/Values/FileSystemPath.h"
#include "Platform/Values/detail/StringStorage.h"

namespace qz {
namespace {

struct User {
  std::string name;
  std::string fullName;
  std::string home;
};

// `find` is one of the reentrant look-ups, which want room for the entry's texts.
template <class Find>
std::optional<User> findUser(Find find) {
  passwd entry{};
  passwd* found = nullptr;
  std::vector<char> room(1024);
  for (;;) {
    const int error = find(&entry, room.data(), room.size(), &found);
    if (error == 0) break;
    if (error == ERANGE)
      room.resize(room.size() * 2);
    else if (error != EINTR)
      return std::nullopt;
  }
  if (found == nullptr) return std::nullopt;
  // The field for people may go on, behind a comma, with an office and telephone numbers.
  const std::string about = entry.pw_gecos != nullptr ? entry.pw_gecos : "";
  return User{entry.pw_name, about.substr(0, about.find(',')), entry.pw_dir};
}

std::optional<User> thisUser() {
  return findUser([](passwd* entry, char* room, std::size_t size, passwd** found) {
    return ::getpwuid_r(::geteuid(), entry, room, size, found);
  });
}

Ref<NSString> absolutePathFromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr || value[0] != '/') return nullptr;
  return NSString::stringWithFileSystemRepresentation(value);
}

struct StartupVolume {
  std::mutex mutex;
  Ref<NSString> name = "Root"_ns;
};

// Never destroyed: the last code to run may still convert a path.
StartupVolume& startupVolume() {
  static auto* const volume = new StartupVolume();
  return *volume;
}

}  // namespace

Ref<NSString> NSHomeDirectory() {
  if (Ref<NSString> home = absolutePathFromEnvironment("HOME")) return home;
  const auto user = thisUser();
  if (!user || user->home.empty()) return "/"_ns;
  return NSString::stringWithFileSystemRepresentation(user->home);
}

Ref<NSString> NSHomeDirectoryForUser(NSString* name) {
  if (name == nullptr || name->view().find(u'\0') != std::u16string_view::npos) return nullptr;
  const auto user = findUser([&](passwd* entry, char* room, std::size_t size, passwd** found) {
    return ::getpwnam_r(name->UTF8String().c_str(), entry, room, size, found);
  });
  if (!user || user->home.empty()) return nullptr;
  return NSString::stringWithFileSystemRepresentation(user->home);
}

Ref<NSString> NSUserName() {
  const auto user = thisUser();
  return NSString::stringWithUTF8String(user ? user->name : std::to_string(::geteuid()));
}

Ref<NSString> NSFullUserName() {
  const auto user = thisUser();
  if (!user || user->fullName.empty()) return NSUserName();
  return NSString::stringWithUTF8String(user->fullName);
}

Ref<NSString> NSTemporaryDirectory() {
  if (Ref<NSString> directory = absolutePathFromEnvironment("TMPDIR")) return directory;
  return "/tmp"_ns;
}

Ref<NSString> NSStartupVolumeName() {
  StartupVolume& volume = startupVolume();
  const std::lock_guard lock(volume.mutex);
  return volume.name;
}

void NSSetStartupVolumeName(NSString* name) {
  const std::u16string_view units = detail::requireString(name, "NSSetStartupVolumeName");
  if (units.empty() || units.find_first_of(std::u16string_view(u":\0", 2)) != units.npos)
    detail::raise(NSInvalidArgumentException,
                  "NSSetStartupVolumeName: no volume can be named \"" + name->UTF8String() + "\"");
  Ref<NSString> kept = NSString::stringWithString(name);
  StartupVolume& volume = startupVolume();
  const std::lock_guard lock(volume.mutex);
  volume.name.swap(kept);
}

std::filesystem::path fileSystemPath(NSString* path) {
  return detail::requireString(path, "fileSystemPath").fileSystemRepresentation();
}

Ref<NSString> stringWithFileSystemPath(const std::filesystem::path& path) {
  return NSString::stringWithFileSystemRepresentation(path.native());
}

}  // namespace qz
