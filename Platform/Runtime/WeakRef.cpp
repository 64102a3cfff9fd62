#include "Platform/Runtime/WeakRef.h"

#include <array>
#include <atomic>
#include <mutex>
#include <unordered_map>

namespace qz::detail {

// The Objects that have weak references, each with the box they share. Split by address, so that
// threads working with different Objects seldom meet.
namespace {
struct WeakShard {
  std::mutex mutex;
  std::unordered_map<const NSObject*, WeakBox*> boxes;
};
}  // namespace

struct WeakBox {
  std::atomic<std::uint32_t> count;
  WeakShard* shard;        // null for Objects that never go
  const NSObject* object;  // guarded by the shard's mutex; null once the Object is gone
};

namespace {
WeakShard& shardOf(const NSObject* object) {
  static auto* const shards = new std::array<WeakShard, 64>();
  const auto address = reinterpret_cast<std::uintptr_t>(object);
  return (*shards)[((address >> 4) ^ (address >> 12)) % shards->size()];
}
}  // namespace

WeakBox* weakBoxOf(const NSObject* object) {
  if (object == nullptr) return nullptr;
  if (ObjectAccess::isDestroying(object)) return nullptr;
  if (ObjectAccess::isImmortal(object)) return new WeakBox{1, nullptr, object};
  WeakShard& shard = shardOf(object);
  std::lock_guard lock(shard.mutex);
  WeakBox*& box = shard.boxes[object];
  if (box == nullptr) {
    box = new WeakBox{1, &shard, object};  // this count is the table's
    ObjectAccess::markWeak(object);
  }
  box->count.fetch_add(1, std::memory_order_relaxed);
  return box;
}

void retainBox(WeakBox* box) noexcept {
  if (box != nullptr) box->count.fetch_add(1, std::memory_order_relaxed);
}

void releaseBox(WeakBox* box) noexcept {
  if (box != nullptr && box->count.fetch_sub(1, std::memory_order_acq_rel) == 1) delete box;
}

NSObject* loadBox(WeakBox* box) noexcept {
  if (box == nullptr) return nullptr;
  if (box->shard == nullptr) return const_cast<NSObject*>(box->object);
  // The Object is freed only after its box was emptied under this lock.
  std::lock_guard lock(box->shard->mutex);
  if (box->object == nullptr || !ObjectAccess::tryRetain(box->object)) return nullptr;
  return const_cast<NSObject*>(box->object);
}

void ObjectAccess::emptyWeakBox(const NSObject* object) noexcept {
  WeakShard& shard = shardOf(object);
  WeakBox* box = nullptr;
  {
    std::lock_guard lock(shard.mutex);
    auto found = shard.boxes.find(object);
    if (found == shard.boxes.end()) return;
    box = found->second;
    box->object = nullptr;
    shard.boxes.erase(found);
  }
  releaseBox(box);
}

}  // namespace qz::detail
