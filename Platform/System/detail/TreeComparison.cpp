#include "Platform/System/detail/TreeComparison.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "Platform/System/FileProgress.h"
#include "Platform/System/detail/DirectoryReader.h"
#include "Platform/Values/detail/Descriptor.h"
#include "Platform/Values/detail/SystemCalls.h"

namespace qz::detail {
namespace {

constexpr std::size_t blockSize = 64 * 1024;

// As many bytes as there are, up to a block; -1 when that fails.
ssize_t readBlock(int file, char* block) {
  std::size_t filled = 0;
  while (filled < blockSize) {
    const ssize_t count = os::read(file, block + filled, blockSize - filled);
    if (count < 0) return -1;
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  return static_cast<ssize_t>(filled);
}

bool haveEqualBytes(const std::string& path, const std::string& other) {
  const Descriptor one(os::openat(AT_FDCWD, path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
  const Descriptor two(os::openat(AT_FDCWD, other.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
  if (!one || !two) return false;
  const std::unique_ptr<char[]> blocks(new char[2 * blockSize]);
  char* second = blocks.get() + blockSize;
  for (;;) {
    const ssize_t size = readBlock(one.number(), blocks.get());
    if (size < 0 || size != readBlock(two.number(), second)) return false;
    if (size == 0) return true;
    if (std::memcmp(blocks.get(), second, static_cast<std::size_t>(size)) != 0) return false;
    if (!FileProgress::tell(static_cast<std::uint64_t>(size))) return false;
  }
}

bool leadToTheSame(const std::string& path, const std::string& other) {
  char one[4097];
  char two[4097];
  const ssize_t size = os::readlinkat(AT_FDCWD, path.c_str(), one, sizeof one);
  return size >= 0 && size == os::readlinkat(AT_FDCWD, other.c_str(), two, sizeof two) &&
         std::memcmp(one, two, static_cast<std::size_t>(size)) == 0;
}

std::optional<std::vector<std::string>> namesIn(const std::string& path) {
  Descriptor folder(os::openat(AT_FDCWD, path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW));
  if (!folder) return std::nullopt;
  std::vector<std::string> names;
  DirectoryReader reader(std::move(folder));
  while (const auto* entry = reader.next()) names.emplace_back(entry->name());
  if (reader.error() != 0) return std::nullopt;
  std::sort(names.begin(), names.end());
  return names;
}

// Both are directories: what is in them is for later. False when the names differ.
using Pairs = std::vector<std::pair<std::string, std::string>>;
bool addEntries(const std::string& path, const std::string& other, Pairs& pairs) {
  const auto names = namesIn(path);
  if (!names || names != namesIn(other)) return false;
  for (const std::string& name : *names) pairs.emplace_back(path + '/' + name, other + '/' + name);
  return true;
}

bool areEqual(const std::string& path, const std::string& other, Pairs& pairs) {
  struct ::statx one;
  struct ::statx two;
  if (os::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &one) != 0 ||
      os::statx(AT_FDCWD, other.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &two) != 0)
    return false;
  if ((one.stx_mode & S_IFMT) != (two.stx_mode & S_IFMT)) return false;
  if (S_ISREG(one.stx_mode)) return one.stx_size == two.stx_size && haveEqualBytes(path, other);
  if (S_ISLNK(one.stx_mode)) return leadToTheSame(path, other);
  if (S_ISDIR(one.stx_mode)) return addEntries(path, other, pairs);
  return one.stx_rdev_major == two.stx_rdev_major && one.stx_rdev_minor == two.stx_rdev_minor;
}

}  // namespace

bool haveEqualContents(const std::string& path, const std::string& other) {
  Pairs pairs{{path, other}};
  while (!pairs.empty()) {
    const auto [one, two] = std::move(pairs.back());
    pairs.pop_back();
    if (!areEqual(one, two, pairs)) return false;
  }
  return true;
}

}  // namespace qz::detail
