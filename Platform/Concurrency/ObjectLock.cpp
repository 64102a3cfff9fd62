#include "Platform/Concurrency/ObjectLock.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <unordered_map>

namespace qz {

struct detail::ObjectMutex {
  std::recursive_mutex mutex;
  std::size_t users = 0;  // holders and waiters; guarded by the shard's mutex
};

namespace {

// The mutexes in use, split by the Object's address, so that threads seldom meet here.
struct Shard {
  std::mutex mutex;
  std::unordered_map<const NSObject*, detail::ObjectMutex> inUse;
};

Shard& shardOf(const NSObject* object) {
  static auto* const shards = new std::array<Shard, 16>();
  const auto address = reinterpret_cast<std::uintptr_t>(object);
  return (*shards)[((address >> 4) ^ (address >> 10)) % shards->size()];
}

}  // namespace

ObjectLock::ObjectLock(NSObject* object) : object_(object) {
  if (object == nullptr) return;
  {
    Shard& shard = shardOf(object);
    std::lock_guard lock(shard.mutex);
    mutex_ = &shard.inUse[object];
    ++mutex_->users;
  }
  mutex_->mutex.lock();
}

ObjectLock::~ObjectLock() {
  if (mutex_ == nullptr) return;
  mutex_->mutex.unlock();
  Shard& shard = shardOf(object_);
  std::lock_guard lock(shard.mutex);
  if (--mutex_->users == 0) shard.inUse.erase(object_.get());
}

}  // namespace qz
