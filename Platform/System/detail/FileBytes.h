/// @file
/// Private: whole files at once.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#pragma GCC visibility push(default)

namespace qz::detail {

/// The bytes of a regular file, links followed. No value when it cannot be read, is of another kind
/// (EINVAL, or EISDIR) or has more than `limit` bytes (EFBIG); `errno` says which.
std::optional<std::string> bytesOfFile(const std::string& path, std::uint64_t limit);

bool isDirectory(const std::string& path);
bool fileExists(const std::string& path);

}  // namespace qz::detail

#pragma GCC visibility pop
