#include "Platform/System/detail/FileBytes.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "Platform/System/detail/Descriptor.h"

namespace qz::detail {

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
  std::string bytes;
  for (std::size_t filled = 0;;) {
    // One byte more than the size that was told finds the end without another turn.
    if (filled == bytes.size())
      bytes.resize(filled == 0 ? static_cast<std::size_t>(about.st_size) + 1 : filled * 2);
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
  struct stat about;
  return ::stat(path.c_str(), &about) == 0 && S_ISDIR(about.st_mode);
}

bool fileExists(const std::string& path) {
  struct stat about;
  return ::stat(path.c_str(), &about) == 0;
}

}  // namespace qz::detail
