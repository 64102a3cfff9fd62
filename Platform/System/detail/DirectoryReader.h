/// @file
/// Private: the entries of a directory, as the system lists them.
#pragma once

#include <dirent.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "Platform/Values/detail/Descriptor.h"
#include "Platform/Values/detail/SystemCalls.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// Reads a directory without "." and "..", a block of entries at a time.
///
///     DirectoryReader reader(Descriptor(os::openat(AT_FDCWD, path, O_RDONLY | O_DIRECTORY)));
///     while (const auto* entry = reader.next()) use(entry->name(), entry->type);
///     if (reader.error() != 0) …
class DirectoryReader {
 public:
  struct Entry {
    std::uint64_t inode;
    std::int64_t next;
    std::uint16_t size;
    std::uint8_t type;  ///< DT_REG, DT_DIR, …; DT_UNKNOWN where the file system does not say.
    char text[1];       // as long as it takes, ended by a zero

    std::string_view name() const noexcept { return text; }
  };

  explicit DirectoryReader(Descriptor directory) : owned_(std::move(directory)) {
    number_ = owned_.number();
  }
  /// Of a descriptor that somebody else keeps open.
  explicit DirectoryReader(int directory) : number_(directory) {}

  /// The next entry, valid until the one after; null at the end and after an error.
  const Entry* next();

  /// 0, or the `errno` of what failed: ENOENT when the directory was removed meanwhile.
  int error() const noexcept { return error_; }

 private:
  bool fill();

  static constexpr std::size_t blockSize = 64 * 1024;

  Descriptor owned_;
  int number_ = -1;
  int error_ = 0;
  std::unique_ptr<std::byte[]> block_;
  std::size_t filled_ = 0;
  std::size_t place_ = 0;
};

}  // namespace qz::detail

#pragma GCC visibility pop

namespace qz::detail {

/// Whether an entry of the open directory `folder` is a directory itself; false when that cannot be
/// asked.
bool isFolderIn(int folder, const DirectoryReader::Entry& entry) noexcept;

}  // namespace qz::detail
