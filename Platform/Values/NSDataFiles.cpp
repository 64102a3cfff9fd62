// Data: read from files and written to them.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

#include "Platform/Values/NSError.h"
#include "Platform/Values/NSMutableData.h"
#include "Platform/Values/NSURL.h"
#include "Platform/Values/detail/DataStorage.h"
#include "Platform/Values/detail/FileContents.h"
#include "Platform/Values/detail/PathText.h"
#include "Platform/Values/detail/PosixError.h"

namespace qz {
namespace {

using detail::FileContents;

/// The path as the system takes it; no value when it cannot have such a path.
std::optional<std::string> systemPath(NSString* path) {
  if (path == nullptr || path->length() == 0) return std::nullopt;
  auto bytes = detail::bytesOfPath(path->view());
  return bytes && bytes->find('\0') == bytes->npos ? bytes : std::nullopt;
}

Ref<NSString> pathOfURL(NSURL* url) {
  return url != nullptr && url->isFileURL() ? url->path() : nullptr;
}

void report(Ref<NSError>* error, int number, const char* operation, NSString* path) {
  if (error != nullptr) *error = detail::posixError(number, operation, path);
}

std::optional<FileContents> contentsOf(NSString* path, std::uint32_t options, Ref<NSError>* error) {
  const auto bytes = systemPath(path);
  FileContents contents;
  const bool isUncached = (options & NSDataReadingUncached) != 0;
  const int failure =
      bytes ? detail::readFile(*bytes, NSData::maxLength, isUncached, contents) : EINVAL;
  if (failure == 0) return contents;
  report(error, failure, "read", path);
  return std::nullopt;
}

/// Data whose bytes are the pages of a file.
class MappedData final : public NSData {
 public:
  MappedData(void* pages, std::uint32_t length) noexcept
      : NSData(static_cast<const std::byte*>(pages), length) {}
  ~MappedData() override { ::munmap(const_cast<std::byte*>(bytes_), length_); }
};

/// Nil where copying serves better, or says better what is wrong.
Ref<NSData> mappedFile(NSString* path) {
  constexpr off_t worthMapping = 64 * 1024;
  const auto bytes = systemPath(path);
  const int file = bytes ? ::open(bytes->c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK) : -1;
  if (file < 0) return nullptr;
  struct stat about;
  void* pages = MAP_FAILED;
  if (::fstat(file, &about) == 0 && S_ISREG(about.st_mode) && about.st_size >= worthMapping &&
      about.st_size <= off_t{NSData::maxLength})
    pages =
        ::mmap(nullptr, static_cast<std::size_t>(about.st_size), PROT_READ, MAP_PRIVATE, file, 0);
  ::close(file);
  if (pages == MAP_FAILED) return nullptr;
  return make<MappedData>(pages, static_cast<std::uint32_t>(about.st_size));
}

}  // namespace

// Reading -----------------------------------------------------------------------------------------

Ref<NSData> NSData::dataWithContentsOfFile(NSString* path) {
  return dataWithContentsOfFile_options_error(path, 0, nullptr);
}

Ref<NSData> NSData::dataWithContentsOfFile_options_error(NSString* path, std::uint32_t options,
                                                         Ref<NSError>* error) {
  if ((options & NSDataReadingMapped) != 0)
    if (Ref<NSData> mapped = mappedFile(path)) return mapped;
  auto contents = contentsOf(path, options, error);
  if (!contents) return nullptr;
  return dataWithBytesNoCopy_length(contents->bytes.release(),
                                    static_cast<std::uint32_t>(contents->length));
}

Ref<NSData> NSData::initWithContentsOfFile(NSString* path) { return dataWithContentsOfFile(path); }

Ref<NSData> NSData::initWithContentsOfFile_options_error(NSString* path, std::uint32_t options,
                                                         Ref<NSError>* error) {
  return dataWithContentsOfFile_options_error(path, options, error);
}

Ref<NSData> NSData::dataWithContentsOfURL(NSURL* url) {
  return dataWithContentsOfFile(pathOfURL(url));
}

Ref<NSData> NSData::dataWithContentsOfURL_options_error(NSURL* url, std::uint32_t options,
                                                        Ref<NSError>* error) {
  return dataWithContentsOfFile_options_error(pathOfURL(url), options, error);
}

Ref<NSMutableData> NSMutableData::dataWithContentsOfFile(NSString* path) {
  return dataWithContentsOfFile_options_error(path, 0, nullptr);
}

Ref<NSMutableData> NSMutableData::dataWithContentsOfFile_options_error(NSString* path,
                                                                       std::uint32_t options,
                                                                       Ref<NSError>* error) {
  auto contents = contentsOf(path, options, error);
  if (!contents) return nullptr;
  return dataWithBytesNoCopy_length(contents->bytes.release(),
                                    static_cast<std::uint32_t>(contents->length));
}

Ref<NSMutableData> NSMutableData::initWithContentsOfFile(NSString* path) {
  return dataWithContentsOfFile(path);
}

Ref<NSMutableData> NSMutableData::initWithContentsOfFile_options_error(NSString* path,
                                                                       std::uint32_t options,
                                                                       Ref<NSError>* error) {
  return dataWithContentsOfFile_options_error(path, options, error);
}

Ref<NSMutableData> NSMutableData::dataWithContentsOfURL(NSURL* url) {
  return dataWithContentsOfFile(pathOfURL(url));
}

Ref<NSMutableData> NSMutableData::dataWithContentsOfURL_options_error(NSURL* url,
                                                                      std::uint32_t options,
                                                                      Ref<NSError>* error) {
  return dataWithContentsOfFile_options_error(pathOfURL(url), options, error);
}

// Writing -----------------------------------------------------------------------------------------

bool NSData::writeToFile_atomically(NSString* path, bool atomically) const {
  return writeToFile_options_error(path, atomically ? NSDataWritingAtomic : 0u, nullptr);
}

bool NSData::writeToFile_options_error(NSString* path, std::uint32_t options,
                                       Ref<NSError>* error) const {
  const auto bytes = systemPath(path);
  const auto write = (options & NSDataWritingAtomic) != 0 ? detail::replaceFile : detail::writeFile;
  const bool isExclusive = (options & NSDataWritingWithoutOverwriting) != 0;
  const int failure = bytes ? write(*bytes, span(), isExclusive) : EINVAL;
  if (failure != 0) report(error, failure, "write", path);
  return failure == 0;
}

bool NSData::writeToURL_atomically(NSURL* url, bool atomically) const {
  return writeToFile_atomically(pathOfURL(url), atomically);
}

bool NSData::writeToURL_options_error(NSURL* url, std::uint32_t options,
                                      Ref<NSError>* error) const {
  return writeToFile_options_error(pathOfURL(url), options, error);
}

}  // namespace qz
