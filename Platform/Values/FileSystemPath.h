/// @file
/// Paths for the C++ library. By itself, because `<filesystem>` takes a quarter of the time that
/// everything else takes to compile.
#pragma once

#include <filesystem>

#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

/// The path for the C++ library, and back; see `fileSystemRepresentation`. Every path that has no
/// zero comes back as it was, also one that is not UTF-8. Nil raises NSInvalidArgumentException.
std::filesystem::path fileSystemPath(NSString* path);
Ref<NSString> stringWithFileSystemPath(const std::filesystem::path& path);

}  // namespace qz

#pragma GCC visibility pop
