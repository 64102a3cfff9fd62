/// @file
/// The standard directories: where programs keep what, for whom.
#pragma once

#include <cstdint>

#include "Platform/Runtime/Ref.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;

/// What the directory is for.
enum NSSearchPathDirectory : std::uint32_t {
  NSApplicationDirectory = 1,
  NSLibraryDirectory = 5,
  NSUserDirectory = 7,
  NSDocumentationDirectory = 8,
  NSDocumentDirectory = 9,
  NSDesktopDirectory = 12,
  NSCachesDirectory = 13,
  NSApplicationSupportDirectory = 14,
  NSDownloadsDirectory = 15,
  NSMoviesDirectory = 17,
  NSMusicDirectory = 18,
  NSPicturesDirectory = 19,
  NSSharedPublicDirectory = 21,
};

/// Whom it is for; a mask names several.
enum NSSearchPathDomainMask : std::uint32_t {
  NSUserDomainMask = 1,
  NSLocalDomainMask = 2,
  NSNetworkDomainMask = 4,
  NSSystemDomainMask = 8,
  NSAllDomainsMask = 0x0FFFF,
};

/// The directories of a kind in the domains of a mask, the user's first, then this machine's and
/// the system's; whether they exist is not asked. Those under the user's home directory begin with
/// "~" unless `expandTilde`. A domain that has nothing of the kind adds nothing, as the network's
/// does on Linux; an unknown kind gives an empty Array.
///
///     kind                 user                              machine            system
///     Library,
///     ApplicationSupport   $XDG_DATA_HOME (~/.local/share)   /usr/local/share   /usr/share
///     Application          that/applications                 that/applications  that/applications
///     Documentation        that/doc                          that/doc           that/doc
///     Caches               $XDG_CACHE_HOME (~/.cache)                           /var/cache
///     User                                                   /home
///     Document, Desktop,   what user-dirs.dirs says,
///     Downloads, Movies,   else ~/Documents, ~/Desktop,
///     Music, Pictures,     ~/Downloads, ~/Videos, ~/Music,
///     SharedPublic         ~/Pictures, ~/Public
///
/// The places are the XDG base directories and those of xdg-user-dirs(1).
Ref<NSArray> NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory,
                                                 std::uint32_t domainMask, bool expandTilde);

}  // namespace qz

#pragma GCC visibility pop
