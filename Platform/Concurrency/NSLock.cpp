#include "Platform/Concurrency/NSLock.h"

#include "Platform/Concurrency/detail/Deadline.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/detail/Sanitizers.h"

namespace qz {
namespace {

// An address that no other thread has while this one lives.
std::uintptr_t self() noexcept {
  thread_local constinit char mark = 0;
  return reinterpret_cast<std::uintptr_t>(&mark);
}

bool isSelf(const std::atomic<std::uintptr_t>& owner) noexcept {
  return owner.load(std::memory_order_relaxed) == self();
}

void setOwner(std::atomic<std::uintptr_t>& owner, std::uintptr_t thread) noexcept {
  owner.store(thread, std::memory_order_relaxed);
}

[[noreturn]] void refuse(const NSObject* lock, const char* what) {
  detail::raise(NSInternalInconsistencyException, to_string(lock) + " " + what);
}

void requireOwner(const NSObject* lock, const std::atomic<std::uintptr_t>& owner) {
  if (!isSelf(owner)) refuse(lock, "is not locked by this thread");
}

void refuseOwner(const NSObject* lock, const std::atomic<std::uintptr_t>& owner) {
  if (isSelf(owner)) refuse(lock, "is locked by this thread already");
}

template <class Mutex>
bool lockUntil(Mutex& mutex, NSDate* limit) {
  if constexpr (detail::watchesThreads) {
    // The thread sanitizer does not see a mutex being locked by the steady clock, and would report
    // its unlocking; it does see the system's clock.
    const double seconds = limit == nullptr ? 0 : std::min(limit->timeIntervalSinceNow(), 1e8);
    return mutex.try_lock_until(
        std::chrono::system_clock::now() +
        std::chrono::microseconds(static_cast<std::int64_t>(seconds * 1e6)));
  } else {
    return mutex.try_lock_until(detail::steadyTime(limit));
  }
}

Ref<NSString> named(Ref<NSString> plain, NSString* name) {
  return name == nullptr ? plain : NSString::stringWithFormat("%@ \"%@\""_ns, plain, name);
}

Ref<NSString> copied(NSString* name) {
  return name == nullptr ? nullptr : NSString::stringWithString(name);
}

}  // namespace

// NSLock

NSLock::~NSLock() = default;

void NSLock::lock() {
  refuseOwner(this, owner_);
  mutex_.lock();
  setOwner(owner_, self());
}

bool NSLock::tryLock() {
  if (isSelf(owner_) || !mutex_.try_lock()) return false;
  setOwner(owner_, self());
  return true;
}

bool NSLock::lockBeforeDate(NSDate* limit) {
  refuseOwner(this, owner_);
  if (!lockUntil(mutex_, limit)) return false;
  setOwner(owner_, self());
  return true;
}

void NSLock::unlock() {
  requireOwner(this, owner_);
  setOwner(owner_, 0);
  mutex_.unlock();
}

Ref<NSString> NSLock::name() const { return name_; }
void NSLock::setName(NSString* name) { name_ = copied(name); }
Ref<NSString> NSLock::description() const { return named(NSObject::description(), name_); }

// NSRecursiveLock

NSRecursiveLock::~NSRecursiveLock() = default;

void NSRecursiveLock::lock() {
  mutex_.lock();
  setOwner(owner_, self());
  ++depth_;
}

bool NSRecursiveLock::tryLock() {
  if (!mutex_.try_lock()) return false;
  setOwner(owner_, self());
  ++depth_;
  return true;
}

bool NSRecursiveLock::lockBeforeDate(NSDate* limit) {
  if (!lockUntil(mutex_, limit)) return false;
  setOwner(owner_, self());
  ++depth_;
  return true;
}

void NSRecursiveLock::unlock() {
  requireOwner(this, owner_);
  if (--depth_ == 0) setOwner(owner_, 0);
  mutex_.unlock();
}

Ref<NSString> NSRecursiveLock::name() const { return name_; }
void NSRecursiveLock::setName(NSString* name) { name_ = copied(name); }
Ref<NSString> NSRecursiveLock::description() const { return named(NSObject::description(), name_); }

// NSCondition

NSCondition::~NSCondition() = default;

void NSCondition::lock() {
  refuseOwner(this, owner_);
  mutex_.lock();
  setOwner(owner_, self());
}

bool NSCondition::tryLock() {
  if (isSelf(owner_) || !mutex_.try_lock()) return false;
  setOwner(owner_, self());
  return true;
}

void NSCondition::unlock() {
  requireOwner(this, owner_);
  setOwner(owner_, 0);
  mutex_.unlock();
}

void NSCondition::wait() {
  requireOwner(this, owner_);
  setOwner(owner_, 0);
  std::unique_lock lock(mutex_, std::adopt_lock);
  signal_.wait(lock);
  lock.release();
  setOwner(owner_, self());
}

bool NSCondition::waitUntilDate(NSDate* limit) {
  requireOwner(this, owner_);
  setOwner(owner_, 0);
  std::unique_lock lock(mutex_, std::adopt_lock);
  const bool signalled =
      signal_.wait_until(lock, detail::steadyTime(limit)) == std::cv_status::no_timeout;
  lock.release();
  setOwner(owner_, self());
  return signalled;
}

void NSCondition::signal() { signal_.notify_one(); }
void NSCondition::broadcast() { signal_.notify_all(); }

Ref<NSString> NSCondition::name() const { return name_; }
void NSCondition::setName(NSString* name) { name_ = copied(name); }
Ref<NSString> NSCondition::description() const { return named(NSObject::description(), name_); }

// NSConditionLock

NSConditionLock::~NSConditionLock() = default;

Ref<NSConditionLock> NSConditionLock::initWithCondition(std::int64_t condition) {
  return make<NSConditionLock>(condition);
}

std::int64_t NSConditionLock::condition() const {
  std::lock_guard lock(mutex_);
  return condition_;
}

template <class Ready>
bool NSConditionLock::takeWhen(Ready ready, NSDate* limit, bool forEver) {
  std::unique_lock lock(mutex_);
  const auto free = [&] { return !taken_ && ready(); };
  if (forEver)
    changed_.wait(lock, free);
  else if (!changed_.wait_until(lock, detail::steadyTime(limit), free))
    return false;
  return taken_ = true;
}

void NSConditionLock::lock() {
  takeWhen([] { return true; }, nullptr, true);
}
void NSConditionLock::lockWhenCondition(std::int64_t condition) {
  takeWhen([&] { return condition_ == condition; }, nullptr, true);
}
bool NSConditionLock::tryLock() { return lockBeforeDate(nullptr); }
bool NSConditionLock::tryLockWhenCondition(std::int64_t condition) {
  return lockWhenCondition_beforeDate(condition, nullptr);
}
bool NSConditionLock::lockBeforeDate(NSDate* limit) {
  return takeWhen([] { return true; }, limit, false);
}
bool NSConditionLock::lockWhenCondition_beforeDate(std::int64_t condition, NSDate* limit) {
  return takeWhen([&] { return condition_ == condition; }, limit, false);
}

void NSConditionLock::unlock() { unlockWithCondition(condition()); }

void NSConditionLock::unlockWithCondition(std::int64_t condition) {
  {
    std::lock_guard lock(mutex_);
    if (taken_) {
      taken_ = false;
      condition_ = condition;
      // Waiters wait for different numbers: the one that can go on may be any of them.
      changed_.notify_all();
      return;
    }
  }
  refuse(this, "is not locked");
}

Ref<NSString> NSConditionLock::name() const { return name_; }
void NSConditionLock::setName(NSString* name) { name_ = copied(name); }
Ref<NSString> NSConditionLock::description() const { return named(NSObject::description(), name_); }

// By Selector

void NSLock::describe(ClassDescription<NSLock>& is) {
  is.named("NSLock")
      .method<&NSLock::lock>("lock")
      .method<&NSLock::tryLock>("tryLock")
      .method<&NSLock::lockBeforeDate>("lockBeforeDate:")
      .method<&NSLock::unlock>("unlock")
      .property<&NSLock::name, &NSLock::setName>("name");
}

void NSRecursiveLock::describe(ClassDescription<NSRecursiveLock>& is) {
  using Self = NSRecursiveLock;
  is.named("NSRecursiveLock")
      .method<&Self::lock>("lock")
      .method<&Self::tryLock>("tryLock")
      .method<&Self::lockBeforeDate>("lockBeforeDate:")
      .method<&Self::unlock>("unlock")
      .property<&Self::name, &Self::setName>("name");
}

void NSCondition::describe(ClassDescription<NSCondition>& is) {
  using Self = NSCondition;
  is.named("NSCondition")
      .method<&Self::lock>("lock")
      .method<&Self::tryLock>("tryLock")
      .method<&Self::unlock>("unlock")
      .method<&Self::wait>("wait")
      .method<&Self::waitUntilDate>("waitUntilDate:")
      .method<&Self::signal>("signal")
      .method<&Self::broadcast>("broadcast")
      .property<&Self::name, &Self::setName>("name");
}

void NSConditionLock::describe(ClassDescription<NSConditionLock>& is) {
  using Self = NSConditionLock;
  is.named("NSConditionLock")
      .initializer<&Self::initWithCondition>("initWithCondition:")
      .method<&Self::condition>("condition")
      .method<&Self::lock>("lock")
      .method<&Self::lockWhenCondition>("lockWhenCondition:")
      .method<&Self::tryLock>("tryLock")
      .method<&Self::tryLockWhenCondition>("tryLockWhenCondition:")
      .method<&Self::lockBeforeDate>("lockBeforeDate:")
      .method<&Self::lockWhenCondition_beforeDate>("lockWhenCondition:beforeDate:")
      .method<&Self::unlock>("unlock")
      .method<&Self::unlockWithCondition>("unlockWithCondition:")
      .property<&Self::name, &Self::setName>("name");
}

}  // namespace qz
