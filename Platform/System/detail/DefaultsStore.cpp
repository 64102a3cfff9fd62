#include "Platform/System/detail/DefaultsStore.h"

#include <pthread.h>

#include <chrono>
#include <cstdlib>
#include <system_error>
#include <thread>
#include <utility>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/System/Diagnostics.h"
#include "Platform/System/detail/SignalsHeldBack.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSNull.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {
namespace {

using namespace std::chrono_literals;

// What one action sets goes to the file in one writing.
constexpr auto delay = 500ms;

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

DefaultsStore::DefaultsStore(const std::string& path)
    : file_(path),
      saved_(NSDictionary::dictionary()),
      changes_(NSMutableDictionary::dictionary()) {}

DefaultsStore& DefaultsStore::at(const std::string& path) {
  const std::lock_guard lock(stores().mutex);
  for (DefaultsStore* store : stores().all)
    if (store->path() == path) return *store;
  if (stores().all.empty()) {
    std::atexit(&writeAtEnd);
    ::pthread_atfork(&beforeFork, &afterFork, &afterForkInChild);
  }
  stores().all.push_back(new DefaultsStore(path));
  return *stores().all.back();
}

void DefaultsStore::beforeFork() {
  stores().mutex.lock();
  for (DefaultsStore* store : stores().all) {
    store->exchange_.lock();
    store->mutex_.lock();
  }
}

void DefaultsStore::afterFork() {
  for (DefaultsStore* store : stores().all) {
    store->mutex_.unlock();
    store->exchange_.unlock();
  }
  stores().mutex.unlock();
}

// The thread that was to write is not there; what is set next starts another one.
void DefaultsStore::afterForkInChild() {
  stores().isWaiting = false;
  afterFork();
}

// Whoever takes the complaints may come back for a value.
void DefaultsStore::complain(std::unique_lock<std::mutex> held) {
  const std::vector<std::string> complaints = std::exchange(complaints_, {});
  held.unlock();
  for (const std::string& each : complaints) diagnose(each);
}

Ref<NSObject> DefaultsStore::value(NSString* key) {
  std::unique_lock lock(mutex_);
  readIfNew();
  Ref<NSObject> value = changes_->objectForKey(key);
  if (!value)
    value = saved_->objectForKey(key);
  else if (isKind<NSNull>(value))
    value = nullptr;
  complain(std::move(lock));
  return value;
}

Ref<NSDictionary> DefaultsStore::values() {
  std::unique_lock lock(mutex_);
  readIfNew();
  Ref<NSDictionary> values = merged();
  complain(std::move(lock));
  return values;
}

void DefaultsStore::set(NSObject* value, NSString* key) {
  {
    const std::lock_guard lock(mutex_);
    const Ref<NSObject> change = value != nullptr ? Ref<NSObject>(value) : NSNull::null();
    changes_->setObject_forKey(change, key);
  }
  writeLater();
}

// The file may be long in coming, on a busy disk or while another process writes it. So values are
// read and set meanwhile: what is set then is kept for the next time.
Ref<NSError> DefaultsStore::synchronize(bool* changed) {
  std::unique_lock exchanging(exchange_);
  std::unique_lock lock(mutex_);
  const auto changes = as<NSDictionary>(changes_->copy());
  lock.unlock();
  const DefaultsContents contents = changes->count() == 0 ? file_.read() : file_.exchange(changes);
  lock.lock();
  const Ref<NSDictionary> before = merged();
  take(contents);
  if (!contents.error) forget(changes);
  if (!before->isEqualToDictionary(merged())) isNews_ = true;
  if (changed != nullptr) *changed = std::exchange(isNews_, false);
  exchanging.unlock();
  complain(std::move(lock));
  return contents.error;
}

void DefaultsStore::readIfNew() {
  if (isRead_) return;
  DefaultsContents contents = file_.read();
  if (contents.error)
    contents.complaints.push_back("User defaults were not read: " +
                                  contents.error->localizedDescription()->UTF8String());
  take(contents);
}

void DefaultsStore::take(const DefaultsContents& contents) {
  isRead_ = true;
  if (contents.values) saved_ = contents.values;
  complaints_.insert(complaints_.end(), contents.complaints.begin(), contents.complaints.end());
}

void DefaultsStore::forget(NSDictionary* written) {
  for (const auto& [key, value] : *written)
    if (changes_->objectForKey(key).get() == value) changes_->removeObjectForKey(key);
}

Ref<NSDictionary> DefaultsStore::merged() const { return withChanges(saved_, changes_); }

}  // namespace qz::detail
