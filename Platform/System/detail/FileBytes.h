/// @file
/// Private: whole files at once, and what is at a path.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#pragma GCC visibility push(default)

namespace qz::detail {

/// The bytes of a regular file, links followed. No value when it cannot be read, is of another kind
/// (EINVAL, or EISDIR) or has more than `limit` bytes (EFBIG); `errno` says which.
std::optional<std::string> bytesOfFile(const std::string& path, std::uint64_t limit);

/// Whether there is a directory, or anything, at the path, links followed.
bool isDirectory(const std::string& path);
bool fileExists(const std::string& path);

}  // namespace qz::detail

#pragma GCC visibility pop

namespace qz::detail {

/// The path, absolute and without symbolic links; empty, with `errno`, when it leads nowhere.
std::string realPath(const char* path);

}  // namespace qz::detail
