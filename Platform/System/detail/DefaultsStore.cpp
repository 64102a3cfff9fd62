#include "Platform/System/detail/DefaultsStore.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/System/Diagnostics.h"
#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/System/detail/SignalsHeldBack.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSNull.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/Descriptor.h"
#include "Platform/Values/detail/PosixError.h"

namespace qz::detail {
namespace {

using namespace std::chrono_literals;

// What one action sets goes to the file in one writing.
constexpr auto delay = 500ms;

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

/// All stores there are, and whether a thread is about to write them. Never destroyed: the thread
/// and the end of the process may come in either order.
struct Stores {
  std::mutex mutex;
  std::vector<DefaultsStore*> all;
  bool isWaiting = false;
  bool isAtEnd = false;
};
Stores& stores() {
  static auto* const common = new Stores;
  return *common;
}

void writeAll() {
  std::vector<DefaultsStore*> all;
  {
    const std::lock_guard lock(stores().mutex);
    stores().isWaiting = false;
    all = stores().all;
  }
  for (DefaultsStore* store : all)
    if (const Ref<NSError> error = store->synchronize(nullptr))
      diagnose("User defaults were not written: " + error->localizedDescription()->UTF8String());
}

void writeLater() {
  const std::lock_guard lock(stores().mutex);
  if (stores().isWaiting || stores().isAtEnd) return;
  stores().isWaiting = true;
  try {
    const SignalsHeldBack held;
    std::thread([] {
      std::this_thread::sleep_for(delay);
      {
        const std::lock_guard endLock(stores().mutex);
        if (stores().isAtEnd) return;
      }
      writeAll();
    }).detach();
  } catch (const std::system_error&) {
    // No thread to be had: the next change tries again, and the end of the process writes anyhow.
    stores().isWaiting = false;
  }
}

void writeAtEnd() {
  {
    const std::lock_guard lock(stores().mutex);
    stores().isAtEnd = true;
  }
  writeAll();
}

}  // namespace

DefaultsStore::DefaultsStore(std::string path)
    : path_(std::move(path)),
      saved_(NSDictionary::dictionary()),
      changes_(NSMutableDictionary::dictionary()) {}

DefaultsStore& DefaultsStore::at(const std::string& path) {
  const std::lock_guard lock(stores().mutex);
  for (DefaultsStore* store : stores().all)
    if (store->path_ == path) return *store;
  if (stores().all.empty()) {
    std::atexit(&writeAtEnd);
    ::pthread_atfork(&beforeFork, &afterFork, &afterForkInChild);
  }
  stores().all.push_back(new DefaultsStore(path));
  return *stores().all.back();
}

void DefaultsStore::beforeFork() {
  stores().mutex.lock();
  for (DefaultsStore* store : stores().all) store->mutex_.lock();
}

void DefaultsStore::afterFork() {
  for (DefaultsStore* store : stores().all) store->mutex_.unlock();
  stores().mutex.unlock();
}

// The thread that was to write is not there; what is set next starts another one.
void DefaultsStore::afterForkInChild() {
  stores().isWaiting = false;
  afterFork();
}

// Whoever takes the complaints may come back for a value.
template <class Action>
auto DefaultsStore::locked(Action action) {
  std::vector<std::string> complaints;
  std::unique_lock lock(mutex_);
  auto answer = action();
  complaints.swap(complaints_);
  lock.unlock();
  for (const std::string& each : complaints) diagnose(each);
  return answer;
}

Ref<NSObject> DefaultsStore::value(NSString* key) {
  return locked([&]() -> Ref<NSObject> {
    readIfNew();
    if (Ref<NSObject> change = changes_->objectForKey(key))
      return isKind<NSNull>(change) ? nullptr : change;
    return saved_->objectForKey(key);
  });
}

Ref<NSDictionary> DefaultsStore::values() {
  return locked([&] {
    readIfNew();
    return merged();
  });
}

void DefaultsStore::set(NSObject* value, NSString* key) {
  {
    const std::lock_guard lock(mutex_);
    const Ref<NSObject> change = value != nullptr ? Ref<NSObject>(value) : NSNull::null();
    changes_->setObject_forKey(change, key);
  }
  writeLater();
}

Ref<NSError> DefaultsStore::synchronize(bool* changed) {
  return locked([&] {
    const Ref<NSDictionary> before = merged();
    Ref<NSError> error = changes_->count() == 0 ? readFile(false) : exchange();
    if (!before->isEqualToDictionary(merged())) isNews_ = true;
    if (changed != nullptr) *changed = std::exchange(isNews_, false);
    return error;
  });
}

void DefaultsStore::readIfNew() {
  if (isRead_) return;
  if (const Ref<NSError> error = readFile(false))
    complaints_.push_back("User defaults were not read: " +
                          error->localizedDescription()->UTF8String());
}

Ref<NSDictionary> DefaultsStore::merged() const {
  if (changes_->count() == 0) return saved_;
  auto all = as<NSMutableDictionary>(saved_->mutableCopy());
  for (const auto& [key, value] : changes_) {
    if (isKind<NSNull>(value))
      all->removeObjectForKey(key);
    else
      all->setObject_forKey(value, key);
  }
  return as<NSDictionary>(all->copy());
}

// The file ----------------------------------------------------------------------------------------

// No file is an empty one. What cannot be read as a Dictionary is empty too, and kept before
// anything else is written.
Ref<NSError> DefaultsStore::readFile(bool isLocked) {
  Ref<NSError> error;
  const Ref<NSString> file = pathString(path_);
  const Ref<NSData> data = NSData::dataWithContentsOfFile_options_error(file, 0, &error);
  isRead_ = true;
  if (!data && error->code() != ENOENT) return error;
  saved_ = NSDictionary::dictionary();
  if (!data) return nullptr;
  Ref<NSString> problem;
  const Ref<NSObject> list =
      NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
          data, NSPropertyListImmutable, nullptr, &problem);
  if (auto values = as<NSDictionary>(list)) {
    saved_ = values;
    return nullptr;
  }
  // Without the lock, what is there by now may be what another process has written since.
  FileLock lock;
  const bool isHeld = isLocked || !lock.acquire(lockPath());
  if (isHeld && !isLocked) return readFile(true);
  keepDamagedFile(problem ? problem->UTF8String() : "it is no dictionary", isHeld);
  return nullptr;
}

void DefaultsStore::keepDamagedFile(const std::string& why, bool isLocked) {
  const std::string kept = path_ + ".damaged";
  const bool isKept = isLocked && ::rename(path_.c_str(), kept.c_str()) == 0;
  complaints_.push_back("The user defaults in " + path_ + " cannot be used: " + why +
                        (isKept ? " (kept as " + kept + ")" : ""));
}

Ref<NSError> DefaultsStore::exchange() {
  const std::filesystem::path directory = std::filesystem::path(path_).parent_path();
  std::error_code failure;
  std::filesystem::create_directories(directory, failure);
  if (failure) return posixError(failure.value(), "create", pathString(directory));
  FileLock lock;
  if (Ref<NSError> error = lock.acquire(lockPath())) return error;
  if (Ref<NSError> error = readFile(true)) return error;
  const Ref<NSDictionary> values = merged();
  if (Ref<NSError> error = writeFile(values)) return error;
  saved_ = values;
  changes_->removeAllObjects();
  return nullptr;
}

Ref<NSError> DefaultsStore::writeFile(NSDictionary* values) const {
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

}  // namespace qz::detail
