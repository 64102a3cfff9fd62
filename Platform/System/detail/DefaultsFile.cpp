#include "Platform/System/detail/DefaultsFile.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSNull.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/Descriptor.h"
#include "Platform/Values/detail/PosixError.h"

namespace qz::detail {
namespace {

using namespace std::chrono_literals;

// Another process holds the lock while it reads and writes a small file.
constexpr auto longestWait = 10s;

Ref<NSString> pathString(const std::string& path) {
  return NSString::stringWithFileSystemRepresentation(path);
}

/// Holds the lock as long as it lives.
class FileLock {
 public:
  /// Nil once the lock is held. A process that hangs must not make others hang.
  Ref<NSError> acquire(const std::string& path) {
    const Ref<NSString> file = pathString(path);
    file_ = Descriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!file_) return posixError(errno, "open", file);
    const auto end = std::chrono::steady_clock::now() + longestWait;
    while (::flock(file_.number(), LOCK_EX | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK && errno != EINTR) return posixError(errno, "lock", file);
      if (std::chrono::steady_clock::now() > end) return posixError(ETIMEDOUT, "lock", file);
      std::this_thread::sleep_for(5ms);
    }
    return nullptr;
  }

 private:
  Descriptor file_;
};

}  // namespace

DefaultsContents DefaultsFile::read(bool isLocked) const {
  Ref<NSError> error;
  const Ref<NSString> file = pathString(path_);
  const Ref<NSData> data = NSData::dataWithContentsOfFile_options_error(file, 0, &error);
  if (!data && error->code() != ENOENT) return {nullptr, error, {}};
  if (!data) return {NSDictionary::dictionary(), nullptr, {}};
  Ref<NSString> problem;
  const Ref<NSObject> list =
      NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
          data, NSPropertyListImmutable, nullptr, &problem);
  if (auto values = as<NSDictionary>(list)) return {values, nullptr, {}};
  // Without the lock, what is there by now may be what another process has written since.
  FileLock lock;
  const bool isHeld = isLocked || !lock.acquire(lockPath());
  if (isHeld && !isLocked) return read(true);
  const std::string why = problem ? problem->UTF8String() : "it is no dictionary";
  return {NSDictionary::dictionary(), nullptr, {keepDamaged(why, isHeld)}};
}

std::string DefaultsFile::keepDamaged(const std::string& why, bool isLocked) const {
  const std::string kept = path_ + ".damaged";
  const bool isKept = isLocked && ::rename(path_.c_str(), kept.c_str()) == 0;
  return "The user defaults in " + path_ + " cannot be used: " + why +
         (isKept ? " (kept as " + kept + ")" : "");
}

DefaultsContents DefaultsFile::exchange(NSDictionary* changes) const {
  const std::filesystem::path directory = std::filesystem::path(path_).parent_path();
  std::error_code failure;
  std::filesystem::create_directories(directory, failure);
  if (failure) return {nullptr, posixError(failure.value(), "create", pathString(directory)), {}};
  FileLock lock;
  if (Ref<NSError> error = lock.acquire(lockPath())) return {nullptr, error, {}};
  DefaultsContents contents = read(true);
  if (contents.error) return contents;
  Ref<NSDictionary> values = withChanges(contents.values, changes);
  contents.error = write(values);
  if (!contents.error) contents.values = std::move(values);
  return contents;
}

Ref<NSError> DefaultsFile::write(NSDictionary* values) const {
  Ref<NSError> error;
  for (auto format : {NSPropertyListXMLFormat, NSPropertyListBinaryFormat}) {
    const Ref<NSData> data = NSPropertyListSerialization::dataWithPropertyList_format_options_error(
        values, format, 0, &error);
    if (!data) continue;
    error = nullptr;
    data->writeToFile_options_error(pathString(path_), NSDataWritingAtomic, &error);
    return error;
  }
  return error;
}

Ref<NSDictionary> withChanges(NSDictionary* values, NSDictionary* changes) {
  if (changes->count() == 0) return Ref<NSDictionary>(values);
  auto all = as<NSMutableDictionary>(values->mutableCopy());
  for (const auto& [key, value] : *changes) {
    if (isKind<NSNull>(value))
      all->removeObjectForKey(key);
    else
      all->setObject_forKey(value, key);
  }
  return as<NSDictionary>(all->copy());
}

}  // namespace qz::detail
