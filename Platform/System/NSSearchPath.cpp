#include "Platform/System/NSSearchPath.h"

#include <string>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/System/detail/BaseDirectory.h"
#include "Platform/System/detail/FileBytes.h"
#include "Platform/System/detail/OsRelease.h"
#include "Platform/Values/NSPathUtilities.h"

namespace qz {

using detail::baseDirectory;

namespace {

std::string home() { return NSHomeDirectory()->fileSystemRepresentation(); }

/// What the user calls the directory: a line such as XDG_MUSIC_DIR="$HOME/Musik" tells.
std::string userDirectory(const char* name, const char* otherwise) {
  constexpr std::uint64_t limit = 1024 * 1024;
  const auto file =
      detail::bytesOfFile(baseDirectory("XDG_CONFIG_HOME", "/.config") + "/user-dirs.dirs", limit);
  const std::string told =
      file ? detail::osReleaseValue(*file, "XDG_" + std::string(name) + "_DIR") : "";
  if (told.starts_with('/')) return told;
  if (told.starts_with("$HOME/")) return home() + told.substr(5);
  return home() + "/" + otherwise;
}

struct Places {
  std::string user, local, system;
};

Places sharedPlaces(const std::string& below) {
  return {baseDirectory("XDG_DATA_HOME", "/.local/share") + below, "/usr/local/share" + below,
          "/usr/share" + below};
}

Places placesOf(NSSearchPathDirectory directory) {
  switch (directory) {
    case NSLibraryDirectory:
    case NSApplicationSupportDirectory:
      return sharedPlaces("");
    case NSApplicationDirectory:
      return sharedPlaces("/applications");
    case NSDocumentationDirectory:
      return sharedPlaces("/doc");
    case NSCachesDirectory:
      return {baseDirectory("XDG_CACHE_HOME", "/.cache"), "", "/var/cache"};
    case NSUserDirectory:
      return {"", "/home", ""};
    case NSDocumentDirectory:
      return {userDirectory("DOCUMENTS", "Documents"), "", ""};
    case NSDesktopDirectory:
      return {userDirectory("DESKTOP", "Desktop"), "", ""};
    case NSDownloadsDirectory:
      return {userDirectory("DOWNLOAD", "Downloads"), "", ""};
    case NSMoviesDirectory:
      return {userDirectory("VIDEOS", "Videos"), "", ""};
    case NSMusicDirectory:
      return {userDirectory("MUSIC", "Music"), "", ""};
    case NSPicturesDirectory:
      return {userDirectory("PICTURES", "Pictures"), "", ""};
    case NSSharedPublicDirectory:
      return {userDirectory("PUBLICSHARE", "Public"), "", ""};
  }
  return {};
}

}  // namespace

Ref<NSArray> NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory,
                                                 std::uint32_t domainMask, bool expandTilde) {
  const Places places = placesOf(directory);
  auto paths = NSMutableArray::array();
  const auto add = [&](std::uint32_t domain, const std::string& place) {
    if ((domainMask & domain) == 0 || place.empty()) return;
    const auto path = NSString::stringWithFileSystemRepresentation(place);
    paths->addObject(expandTilde ? path : path->stringByAbbreviatingWithTildeInPath());
  };
  add(NSUserDomainMask, places.user);
  add(NSLocalDomainMask, places.local);
  add(NSSystemDomainMask, places.system);
  return as<NSArray>(paths->copy());
}

}  // namespace qz
