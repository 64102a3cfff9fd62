/// @file
/// Locks.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSDate;

/// Mutual exclusion. Works with `std::lock_guard` and `std::unique_lock` as well:
///
///     std::lock_guard guard(*lock_);
///
/// Not recursive: a thread that locks it again, which would wait for itself for ever, gets
/// NSInternalInconsistencyException, and so does one that unlocks what it has not locked. A lock
/// must not be destroyed while it is locked.
class NSLock : public Derives<NSLock, NSObject> {
 public:
  static void describe(ClassDescription<NSLock>& is);

  NSLock() = default;
  ~NSLock() override;

  /// Waits until no other thread has it.
  void lock();

  /// Takes it if nobody has it, this thread included. Never waits, never raises.
  bool tryLock();

  /// Waits until `limit` at most; a nil or past limit does not wait. Whether it was taken.
  bool lockBeforeDate(NSDate* limit);

  /// Gives it up.
  void unlock();

  /// For the C++ library.
  bool try_lock() { return tryLock(); }

  /// A text for people who debug; nil at first.
  Ref<NSString> name() const;
  void setName(NSString* name);
  Ref<NSString> description() const override;

 private:
  std::timed_mutex mutex_;
  std::atomic<std::uintptr_t> owner_{0};
  Ref<NSString> name_;
};

/// Mutual exclusion between threads: the one that has the lock may take it again, and gives it up
/// with as many unlocks. Otherwise as NSLock.
class NSRecursiveLock : public Derives<NSRecursiveLock, NSObject> {
 public:
  static void describe(ClassDescription<NSRecursiveLock>& is);

  NSRecursiveLock() = default;
  ~NSRecursiveLock() override;

  /// As those of NSLock, except that the thread that has the lock never waits for it.
  void lock();
  bool tryLock();
  bool lockBeforeDate(NSDate* limit);
  void unlock();
  bool try_lock() { return tryLock(); }

  /// A text for people who debug; nil at first.
  Ref<NSString> name() const;
  void setName(NSString* name);
  Ref<NSString> description() const override;

 private:
  std::recursive_timed_mutex mutex_;
  std::atomic<std::uintptr_t> owner_{0};
  std::uint32_t depth_ = 0;
  Ref<NSString> name_;
};

/// A lock, and a signal to wait for while it is given up.
///
///     condition->lock();
///     while (!ready && condition->waitUntilDate(limit)) {}
///     condition->unlock();
///
/// A wait may end without a signal, so what is waited for is tested in a loop. Waiting and
/// unlocking without having locked raise NSInternalInconsistencyException.
class NSCondition : public Derives<NSCondition, NSObject> {
 public:
  static void describe(ClassDescription<NSCondition>& is);

  NSCondition() = default;
  ~NSCondition() override;

  /// The lock, as NSLock.
  void lock();
  bool tryLock();
  void unlock();
  bool try_lock() { return tryLock(); }

  /// Gives the lock up, waits for a signal, and takes the lock again.
  void wait();

  /// The same, until `limit` at most (nil: it is past). False when the time ran out.
  bool waitUntilDate(NSDate* limit);

  /// Wakes one waiting thread, or all. With or without the lock.
  void signal();
  void broadcast();

  /// A text for people who debug; nil at first.
  Ref<NSString> name() const;
  void setName(NSString* name);
  Ref<NSString> description() const override;

 private:
  std::mutex mutex_;
  std::condition_variable signal_;
  std::atomic<std::uintptr_t> owner_{0};
  Ref<NSString> name_;
};

/// A lock that also holds a number, and can be taken when that number has a given value: to hand
/// work from one thread to another in turns.
class NSConditionLock : public Derives<NSConditionLock, NSObject> {
 public:
  static void describe(ClassDescription<NSConditionLock>& is);

  /// Holds `condition` at first, and nobody has it.
  explicit NSConditionLock(std::int64_t condition = 0) : condition_(condition) {}
  ~NSConditionLock() override;
  static Ref<NSConditionLock> initWithCondition(std::int64_t condition);

  /// The number; another thread may change it right after.
  std::int64_t condition() const;

  /// Waits until nobody has the lock, and the number is `condition` if one is given.
  void lock();
  void lockWhenCondition(std::int64_t condition);

  /// The same without waiting, and until `limit` at most. Whether the lock was taken.
  bool tryLock();
  bool tryLockWhenCondition(std::int64_t condition);
  bool lockBeforeDate(NSDate* limit);
  bool lockWhenCondition_beforeDate(std::int64_t condition, NSDate* limit);

  /// Gives the lock up, and sets the number if one is given. Any thread may do it.
  void unlock();
  void unlockWithCondition(std::int64_t condition);
  bool try_lock() { return tryLock(); }

  /// A text for people who debug; nil at first.
  Ref<NSString> name() const;
  void setName(NSString* name);
  Ref<NSString> description() const override;

 private:
  template <class Ready>
  bool takeWhen(Ready ready, NSDate* limit, bool forEver);

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::int64_t condition_;
  bool taken_ = false;
  Ref<NSString> name_;
};

}  // namespace qz

#pragma GCC visibility pop
