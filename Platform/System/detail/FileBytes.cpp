#include "Platform/System/detail/FileBytes.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "Platform/Values/detail/Descriptor.h"
#include "Platform/Values/detail/SystemCalls.h"

namespace qz::detail {
namespace {

bool typeOf(const std::string& path, mode_t& type) {
  struct ::statx about;
  if (os::statx(AT_FDCWD, path.c_str(), 0, STATX_TYPE, &about) != 0) return false;
  type = about.stx_mode & S_IFMT;
  return true;
}

}  // namespace

std::optional<std::string> bytesOfFile(const std::string& path, std::uint64_t limit) {
  // A pipe in the file's place must not make anybody wait.
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat about;
  if (file.number() < 0 || ::fstat(file.number(), &about) != 0) return std::nullopt;
  if (!S_ISREG(about.st_mode)) {
    errno = S_ISDIR(about.st_mode) ? EISDIR : EINVAL;
    return std::nullopt;
  }
  if (static_cast<std::uint64_t>(about.st_size) > limit) {
    errno = EFBIG;
    return std::nullopt;
  }
  // One byte more than the size that was told finds the end without another turn. Files that the
  // kernel makes up tell none, and are best read in one go.
  constexpr std::size_t usualSize = 16 * 1024;
  std::string bytes(about.st_size == 0 ? usualSize : static_cast<std::size_t>(about.st_size) + 1,
                    '\0');
  for (std::size_t filled = 0;;) {
    if (filled == bytes.size()) bytes.resize(filled * 2);
    const std::ptrdiff_t count =
        readSome(file.number(), bytes.data() + filled, bytes.size() - filled);
    if (count < 0) return std::nullopt;
    filled += static_cast<std::size_t>(count);
    if (filled > limit) {
      errno = EFBIG;
      return std::nullopt;
    }
    if (count == 0) {
      bytes.resize(filled);
      return bytes;
    }
  }
}

bool isDirectory(const std::string& path) {
  mode_t type = 0;
  return typeOf(path, type) && type == S_IFDIR;
}

bool fileExists(const std::string& path) {
  mode_t type = 0;
  return typeOf(path, type);
}

std::string realPath(const char* path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path, nullptr), &std::free);
  return real ? real.get() : "";
}

}  // namespace qz::detail
