#include "Platform/System/detail/DirectoryReader.h"

#include <cstddef>

namespace qz::detail {
namespace {

bool isDots(const char* name) noexcept {
  return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

}  // namespace

static_assert(offsetof(DirectoryReader::Entry, text) == 19, "the system's struct linux_dirent64");

bool DirectoryReader::fill() {
  if (!block_) block_.reset(new std::byte[blockSize]);
  const ssize_t size = os::getdents64(number_, block_.get(), blockSize);
  if (size < 0) {
    error_ = errno;
    return false;
  }
  place_ = 0;
  filled_ = static_cast<std::size_t>(size);
  return size > 0;
}

const DirectoryReader::Entry* DirectoryReader::next() {
  for (;;) {
    if (place_ == filled_ && (error_ != 0 || !fill())) return nullptr;
    const auto* entry = reinterpret_cast<const Entry*>(block_.get() + place_);
    place_ += entry->size;
    if (!isDots(entry->text)) return entry;
  }
}

bool isFolderIn(int folder, const DirectoryReader::Entry& entry) noexcept {
  if (entry.type != DT_UNKNOWN) return entry.type == DT_DIR;
  struct ::statx about;
  return os::statx(folder, entry.text, AT_SYMLINK_NOFOLLOW, STATX_TYPE, &about) == 0 &&
         S_ISDIR(about.stx_mode);
}

}  // namespace qz::detail
