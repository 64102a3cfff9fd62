/// @file
/// Private: the contents of a file, read and written at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>

namespace qz::detail {

struct Freeing {
  void operator()(std::byte* bytes) const noexcept { std::free(bytes); }
};

/// Bytes in memory from `malloc`.
struct FileContents {
  std::unique_ptr<std::byte, Freeing> bytes;
  std::size_t length = 0;
};

// All answer 0, or the `errno` of what failed.

/// Reads a file, a pipe or a device to its end. EFBIG beyond `limit` bytes.
int readFile(const std::string& path, std::uint64_t limit, bool isUncached, FileContents& contents);

/// Empties or makes the file, and writes. `isExclusive` refuses one that exists.
int writeFile(const std::string& path, std::span<const std::byte> bytes, bool isExclusive);

/// Puts a new file in the place of the one at `path`, or of the one that a link there leads to.
/// When it fails, nothing has changed.
int replaceFile(const std::string& path, std::span<const std::byte> bytes, bool isExclusive);

}  // namespace qz::detail
