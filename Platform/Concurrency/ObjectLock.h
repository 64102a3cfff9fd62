/// @file
/// A lock for any Object.
#pragma once

#include "Platform/Runtime/NSObject.h"

#pragma GCC visibility push(default)

namespace qz {

namespace detail {
struct ObjectMutex;
}

/// Holds the lock that belongs to an Object (a Class is one, too) while it lives:
///
///     ObjectLock lock(this);
///
/// The lock is recursive, and it is another one than any lock the Object has as a member. It costs
/// memory only while it is held or waited for. The Object is kept alive. nil has no lock: nothing
/// is excluded.
class [[nodiscard]] ObjectLock {
 public:
  /// Waits until no other thread has the lock; the end of this Object gives it up.
  explicit ObjectLock(NSObject* object);
  ~ObjectLock();
  ObjectLock(const ObjectLock&) = delete;
  ObjectLock& operator=(const ObjectLock&) = delete;

 private:
  Ref<NSObject> object_;
  detail::ObjectMutex* mutex_ = nullptr;
};

}  // namespace qz

#pragma GCC visibility pop
