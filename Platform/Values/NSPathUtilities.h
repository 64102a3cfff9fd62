/// @file
/// What the system knows about paths: the user's directories. NSString.h has the operations on a
/// path's text, FileSystemPath.h the way to the C++ library's paths.
#pragma once

#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

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

}  // namespace qz

#pragma GCC visibility pop
