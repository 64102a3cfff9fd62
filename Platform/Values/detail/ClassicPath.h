/// @file
/// Private: classic paths, whose separator is the colon.
///
/// One rule in both directions. A classic path begins with the name of a volume, or with a colon
/// when it is relative; its names are separated by colons, and n colons where one would do go up
/// n - 1 directories, which is ".." in a POSIX path. A single colon at the end means nothing. The
/// start-up volume is "/", and any other is a directory in "/Volumes". A ":" in the name of a file
/// is a "/" in its classic name, and the other way round.
///
///     /usr/lib         Root:usr:lib        a/b        :a:b
///     /                Root:               ../a       ::a
///     /Volumes/Data/x  Data:x              a/../b     :a::b
///     /a:b             Root:a/b            .          :
///
/// A directory in "/Volumes" named like the start-up volume is reached through that volume. So each
/// POSIX path comes back as it was, but for what means nothing in it: extra slashes, and "."
/// components beside others.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qz::detail {

/// No value for the empty path, one with a zero, and for a name "." or "..", which the POSIX path
/// would not take as a name.
std::optional<std::u16string> posixFromClassicPath(std::u16string_view path,
                                                   std::u16string_view startupVolume);

/// No value for the empty path and one with a zero.
std::optional<std::u16string> classicFromPosixPath(std::u16string_view path,
                                                   std::u16string_view startupVolume);

}  // namespace qz::detail
