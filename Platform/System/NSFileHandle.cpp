#include "Platform/System/NSFileHandle.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <limits>
#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/System/detail/ByteBuffer.h"
#include "Platform/System/detail/PathBytes.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/detail/Descriptor.h"
#include "Platform/Values/detail/PosixError.h"
#include "Platform/Values/detail/SystemCalls.h"

namespace qz {
namespace {

constexpr std::size_t chunkLength = 64 * 1024;
constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

void set(Ref<NSError>* error, int number, const char* operation, NSString* path = nullptr) {
  if (error != nullptr) *error = detail::posixError(number, operation, path);
}

[[noreturn]] void raiseFailure(const char* operation, int number) {
  detail::raise(NSFileHandleOperationException,
                std::string(operation) + ": " + detail::posixErrorText(number));
}

[[noreturn]] void raiseFailure(const char* operation, NSError* error) {
  raiseFailure(operation, error->code());
}

Ref<NSFileHandle> openFile(NSString* path, int flags, Ref<NSError>* error) {
  const detail::PathBytes bytes(path);
  errno = bytes.error();
  const int descriptor =
      errno != 0 ? -1 : detail::os::openat(AT_FDCWD, bytes.c_str(), flags | O_NOCTTY);
  if (descriptor < 0) {
    set(error, errno, "open", path);
    return nullptr;
  }
  return NSFileHandle::initWithFileDescriptor_closeOnDealloc(descriptor, true);
}

Ref<NSFileHandle> standardStream(std::int32_t descriptor) {
  static NSFileHandle* const streams[] = {
      NSFileHandle::initWithFileDescriptor(STDIN_FILENO).leak(),
      NSFileHandle::initWithFileDescriptor(STDOUT_FILENO).leak(),
      NSFileHandle::initWithFileDescriptor(STDERR_FILENO).leak()};
  return streams[descriptor];
}

bool isFile(int descriptor) {
  struct stat about;
  return ::fstat(descriptor, &about) == 0 && S_ISREG(about.st_mode);
}

}  // namespace

NSFileHandle::~NSFileHandle() {
  if (closes_) closeFile();
}

// Making ------------------------------------------------------------------------------------------

Ref<NSFileHandle> NSFileHandle::initWithFileDescriptor(std::int32_t descriptor) {
  return initWithFileDescriptor_closeOnDealloc(descriptor, false);
}

Ref<NSFileHandle> NSFileHandle::initWithFileDescriptor_closeOnDealloc(std::int32_t descriptor,
                                                                      bool closes) {
  auto handle = make<NSFileHandle>();
  handle->descriptor_ = descriptor;
  handle->closes_ = closes;
  return handle;
}

Ref<NSFileHandle> NSFileHandle::fileHandleForReadingAtPath(NSString* path) {
  return openFile(path, O_RDONLY, nullptr);
}
Ref<NSFileHandle> NSFileHandle::fileHandleForWritingAtPath(NSString* path) {
  return openFile(path, O_WRONLY, nullptr);
}
Ref<NSFileHandle> NSFileHandle::fileHandleForUpdatingAtPath(NSString* path) {
  return openFile(path, O_RDWR, nullptr);
}
Ref<NSFileHandle> NSFileHandle::fileHandleForReadingAtPath_error(NSString* path,
                                                                 Ref<NSError>* error) {
  return openFile(path, O_RDONLY, error);
}
Ref<NSFileHandle> NSFileHandle::fileHandleForWritingAtPath_error(NSString* path,
                                                                 Ref<NSError>* error) {
  return openFile(path, O_WRONLY, error);
}
Ref<NSFileHandle> NSFileHandle::fileHandleForUpdatingAtPath_error(NSString* path,
                                                                  Ref<NSError>* error) {
  return openFile(path, O_RDWR, error);
}

Ref<NSFileHandle> NSFileHandle::fileHandleWithStandardInput() {
  return standardStream(STDIN_FILENO);
}
Ref<NSFileHandle> NSFileHandle::fileHandleWithStandardOutput() {
  return standardStream(STDOUT_FILENO);
}
Ref<NSFileHandle> NSFileHandle::fileHandleWithStandardError() {
  return standardStream(STDERR_FILENO);
}

Ref<NSFileHandle> NSFileHandle::fileHandleWithNullDevice() {
  return fileHandleForUpdatingAtPath("/dev/null"_ns);
}

// Reading -----------------------------------------------------------------------------------------

Ref<NSData> NSFileHandle::availableData() {
  if (isFile(descriptor_)) return readDataToEndOfFile();
  std::array<std::byte, chunkLength> chunk;
  const std::ptrdiff_t count = detail::readSome(descriptor_, chunk.data(), chunk.size());
  if (count < 0) raiseFailure("availableData", errno);
  return NSData::dataWithBytes(std::span(chunk).first(static_cast<std::size_t>(count)));
}

Ref<NSData> NSFileHandle::readUpTo(std::uint64_t limit, const char* operation,
                                   Ref<NSError>* error) {
  // What is left of a file, and one byte to find its end with.
  std::uint64_t first = chunkLength;
  struct stat about;
  if (::fstat(descriptor_, &about) == 0 && S_ISREG(about.st_mode)) {
    const off_t at = ::lseek(descriptor_, 0, SEEK_CUR);
    if (at >= 0 && at < about.st_size) first = static_cast<std::uint64_t>(about.st_size - at) + 1;
  }
  // One byte more than Data can hold is enough to see that it does not.
  limit = std::min(limit, std::uint64_t{NSData::maxLength} + 1);
  detail::ByteBuffer bytes;
  bytes.room(static_cast<std::size_t>(std::min(first, limit)));
  while (bytes.size() < limit) {
    char* const room = bytes.room(1);
    const std::uint64_t wanted = std::min<std::uint64_t>(bytes.roomLength(), limit - bytes.size());
    const std::ptrdiff_t count =
        detail::readSome(descriptor_, room, static_cast<std::size_t>(wanted));
    if (count < 0) {
      set(error, errno, operation);
      return nullptr;
    }
    if (count == 0) break;
    bytes.commit(room + count);
  }
  return bytes.toData();
}

Ref<NSData> NSFileHandle::readDataToEndOfFileAndReturnError(Ref<NSError>* error) {
  return readUpTo(unlimited, "read", error);
}

Ref<NSData> NSFileHandle::readDataUpToLength_error(std::uint32_t length, Ref<NSError>* error) {
  return readUpTo(length, "read", error);
}

Ref<NSData> NSFileHandle::readDataToEndOfFile() {
  Ref<NSError> error;
  Ref<NSData> data = readDataToEndOfFileAndReturnError(&error);
  if (!data) raiseFailure("readDataToEndOfFile", error);
  return data;
}

Ref<NSData> NSFileHandle::readDataOfLength(std::uint32_t length) {
  Ref<NSError> error;
  Ref<NSData> data = readDataUpToLength_error(length, &error);
  if (!data) raiseFailure("readDataOfLength:", error);
  return data;
}

// Writing -----------------------------------------------------------------------------------------

bool NSFileHandle::writeBytes_error(std::span<const std::byte> bytes, Ref<NSError>* error) {
  if (breaks_ == Breaks::Unknown)
    breaks_ = detail::canBreak(descriptor_) ? Breaks::Yes : Breaks::No;
  const int problem = breaks_ == Breaks::Yes ? detail::writeAll(descriptor_, bytes)
                                             : detail::writeAllToFile(descriptor_, bytes);
  if (problem == 0) return true;
  set(error, problem, "write");
  return false;
}

bool NSFileHandle::writeData_error(NSData* data, Ref<NSError>* error) {
  return data == nullptr || writeBytes_error(data->span(), error);
}

void NSFileHandle::writeData(NSData* data) {
  Ref<NSError> error;
  if (!NSFileHandle::writeData_error(data, &error)) raiseFailure("writeData:", error);
}

// Files alone -------------------------------------------------------------------------------------

std::uint64_t NSFileHandle::offsetInFile() {
  const off_t at = ::lseek(descriptor_, 0, SEEK_CUR);
  if (at < 0) raiseFailure("offsetInFile", errno);
  return static_cast<std::uint64_t>(at);
}

std::uint64_t NSFileHandle::seekToEndOfFile() {
  const off_t at = ::lseek(descriptor_, 0, SEEK_END);
  if (at < 0) raiseFailure("seekToEndOfFile", errno);
  return static_cast<std::uint64_t>(at);
}

void NSFileHandle::seekToFileOffset(std::uint64_t offset) {
  if (::lseek(descriptor_, static_cast<off_t>(offset), SEEK_SET) < 0)
    raiseFailure("seekToFileOffset:", errno);
}

bool NSFileHandle::truncateAtOffset_error(std::uint64_t offset, Ref<NSError>* error) {
  const auto length = static_cast<off_t>(offset);
  if (detail::os::ftruncate(descriptor_, length) == 0 &&
      ::lseek(descriptor_, length, SEEK_SET) == length)
    return true;
  set(error, errno, "truncate");
  return false;
}

void NSFileHandle::truncateFileAtOffset(std::uint64_t offset) {
  Ref<NSError> error;
  if (!truncateAtOffset_error(offset, &error)) raiseFailure("truncateFileAtOffset:", error);
}

bool NSFileHandle::synchronizeAndReturnError(Ref<NSError>* error) {
  if (detail::os::fsync(descriptor_) == 0) return true;
  set(error, errno, "synchronize");
  return false;
}

void NSFileHandle::synchronizeFile() {
  Ref<NSError> error;
  if (!synchronizeAndReturnError(&error)) raiseFailure("synchronizeFile", error);
}

// Closing -----------------------------------------------------------------------------------------

void NSFileHandle::closeFile() noexcept {
  detail::Descriptor(std::exchange(descriptor_, -1)).close();
}

Ref<NSString> NSFileHandle::description() const {
  return NSString::stringWithFormat("%@ descriptor %d"_ns, Derives::description(), descriptor_);
}

void NSFileHandle::describe(ClassDescription<NSFileHandle>& is) {
  is.named("NSFileHandle")
      .initializer<&NSFileHandle::initWithFileDescriptor>("initWithFileDescriptor:")
      .initializer<&NSFileHandle::initWithFileDescriptor_closeOnDealloc>(
          "initWithFileDescriptor:closeOnDealloc:")
      .classMethod<&NSFileHandle::fileHandleForReadingAtPath>("fileHandleForReadingAtPath:")
      .classMethod<&NSFileHandle::fileHandleForWritingAtPath>("fileHandleForWritingAtPath:")
      .classMethod<&NSFileHandle::fileHandleForUpdatingAtPath>("fileHandleForUpdatingAtPath:")
      .classMethod<&NSFileHandle::fileHandleForReadingAtPath_error>(
          "fileHandleForReadingAtPath:error:")
      .classMethod<&NSFileHandle::fileHandleForWritingAtPath_error>(
          "fileHandleForWritingAtPath:error:")
      .classMethod<&NSFileHandle::fileHandleForUpdatingAtPath_error>(
          "fileHandleForUpdatingAtPath:error:")
      .classMethod<&NSFileHandle::fileHandleWithStandardInput>("fileHandleWithStandardInput")
      .classMethod<&NSFileHandle::fileHandleWithStandardOutput>("fileHandleWithStandardOutput")
      .classMethod<&NSFileHandle::fileHandleWithStandardError>("fileHandleWithStandardError")
      .classMethod<&NSFileHandle::fileHandleWithNullDevice>("fileHandleWithNullDevice")
      .method<&NSFileHandle::availableData>("availableData")
      .method<&NSFileHandle::readDataToEndOfFile>("readDataToEndOfFile")
      .method<&NSFileHandle::readDataOfLength>("readDataOfLength:")
      .method<&NSFileHandle::readDataToEndOfFileAndReturnError>(
          "readDataToEndOfFileAndReturnError:")
      .method<&NSFileHandle::readDataUpToLength_error>("readDataUpToLength:error:")
      .method<&NSFileHandle::writeData>("writeData:")
      .method<&NSFileHandle::writeData_error>("writeData:error:")
      .method<&NSFileHandle::offsetInFile>("offsetInFile")
      .method<&NSFileHandle::seekToEndOfFile>("seekToEndOfFile")
      .method<&NSFileHandle::seekToFileOffset>("seekToFileOffset:")
      .method<&NSFileHandle::truncateFileAtOffset>("truncateFileAtOffset:")
      .method<&NSFileHandle::truncateAtOffset_error>("truncateAtOffset:error:")
      .method<&NSFileHandle::synchronizeFile>("synchronizeFile")
      .method<&NSFileHandle::synchronizeAndReturnError>("synchronizeAndReturnError:")
      .method<&NSFileHandle::closeFile>("closeFile")
      .method<&NSFileHandle::fileDescriptor>("fileDescriptor");
}

}  // namespace qz
