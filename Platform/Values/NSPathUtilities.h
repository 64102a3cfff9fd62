/// @file
/// What the system knows about paths: the user's directories, and conversions of paths to and from
/// the C++ library's. NSString.h has the operations on a path's text.
#pragma once

#include <filesystem>

#include "Platform/Values/NSString.h"

namespace qz {

/// The user's home directory: $HOME when it is an absolute path, else what the system's list of
/// users says, else "/".
Ref<NSString> NSHomeDirectory();

/// The home directory of the user by that name; nil for nil and when there is none. Reads the
/// system's list of users.
Ref<NSString> NSHomeDirectoryForUser(NSString* name);

/// The name under which the user logs in, and the one for people, which is the same when the
/// system's list of users knows no other. A user who is not in that list has the number as a name.
Ref<NSString> NSUserName();
Ref<NSString> NSFullUserName();

/// Where files may be put that nobody keeps: $TMPDIR when it is an absolute path, else "/tmp".
Ref<NSString> NSTemporaryDirectory();

/// The name by which classic paths call the volume mounted at "/": "Root" until one is set. Raises
/// NSInvalidArgumentException for nil and for a name that is empty or has a ":" or a zero. Any
/// thread.
Ref<NSString> NSStartupVolumeName();
void NSSetStartupVolumeName(NSString* name);

/// The path for the C++ library, and back; see `fileSystemRepresentation`. Every path that has no
/// zero comes back as it was, also one that is not UTF-8. Nil raises NSInvalidArgumentException.
std::filesystem::path fileSystemPath(NSString* path);
Ref<NSString> stringWithFileSystemPath(const std::filesystem::path& path);

}  // namespace qz
