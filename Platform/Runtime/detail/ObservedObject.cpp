#include "Platform/Runtime/detail/ObservedObject.h"

#include <algorithm>
#include <array>
#include <deque>
#include <string>
#include <unordered_map>
#include <utility>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSSet.h"
#include "Platform/Runtime/Class.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Runtime/detail/ClassTables.h"
#include "Platform/Runtime/detail/KeyValue.h"
#include "Platform/Runtime/detail/Observation.h"

namespace qz::detail {
namespace {

// Which Objects have a record. Split by address, so that threads working with different Objects
// seldom meet; a record that was found lately is found again without a lock.
struct Shard {
  std::mutex mutex;
  std::unordered_map<const NSObject*, ObservedObject*> records;
  std::vector<ObservedObject*> unused;
  std::deque<ObservedObject> all;
};

std::size_t placeOf(const NSObject* object) {
  const auto address = reinterpret_cast<std::uintptr_t>(object);
  return (address >> 4) ^ (address >> 14);
}

Shard& shardOf(const NSObject* object) {
  static auto* const shards = new std::array<Shard, 64>();
  return (*shards)[placeOf(object) % shards->size()];
}

constinit std::array<std::atomic<ObservedObject*>, 2048> recent{};

std::atomic<ObservedObject*>& recentOf(const NSObject* object) {
  return recent[placeOf(object) % recent.size()];
}

bool sameKey(const ObservedKey& entry, std::size_t hash, NSString* key) {
  return entry.key == key || (entry.hash == hash && entry.key->isEqualToString(key));
}

bool hasNoUse(const ObservedKey& entry) { return entry.subscribers.empty(); }

}  // namespace

ObservedKey* ObservedObject::find(NSString* key) {
  if (keys.size() == 1 && keys.front().key == key) return &keys.front();
  const std::size_t hash = key->hash();
  auto at = std::ranges::lower_bound(keys, hash, {}, &ObservedKey::hash);
  for (; at != keys.end() && at->hash == hash; ++at)
    if (sameKey(*at, hash, key)) return &*at;
  return nullptr;
}

ObservedKey& ObservedObject::findOrAdd(NSString* key) {
  if (ObservedKey* known = find(key)) return *known;
  // Keys that nobody observes any more are kept, because somebody may again, but not without end.
  if (keys.size() >= 16 && std::ranges::count_if(keys, hasNoUse) * 2 > std::ssize(keys))
    std::erase_if(keys, hasNoUse);
  const std::size_t hash = key->hash();
  const auto at = std::ranges::upper_bound(keys, hash, {}, &ObservedKey::hash);
  return *keys.insert(at, ObservedKey{.key = as<NSString>(key->copy()), .hash = hash});
}

void ObservedObject::updateFlag() {
  std::atomic<std::uint8_t>& flags = ObjectAccess::flags(owner.load(std::memory_order_relaxed));
  if (subscriptions > 0 || openChanges > 0)
    flags.fetch_or(flagObserved, std::memory_order_release);
  else
    flags.fetch_and(static_cast<std::uint8_t>(~flagObserved), std::memory_order_release);
}

ObservedObject* findObserved(const NSObject* object) {
  std::atomic<ObservedObject*>& place = recentOf(object);
  ObservedObject* known = place.load(std::memory_order_acquire);
  if (known != nullptr && known->owner.load(std::memory_order_acquire) == object) [[likely]]
    return known;
  Shard& shard = shardOf(object);
  std::lock_guard lock(shard.mutex);
  const auto found = shard.records.find(object);
  if (found == shard.records.end()) return nullptr;
  place.store(found->second, std::memory_order_release);
  return found->second;
}

ObservedObject& observedObject(const NSObject* object) {
  if (ObservedObject* known = findObserved(object)) return *known;
  Shard& shard = shardOf(object);
  std::lock_guard lock(shard.mutex);
  ObservedObject*& record = shard.records[object];
  if (record == nullptr) {
    if (shard.unused.empty()) shard.unused.push_back(&shard.all.emplace_back());
    record = shard.unused.back();
    shard.unused.pop_back();
    record->owner.store(object, std::memory_order_release);
    // The mark of weak references leads its last release to dropObservations.
    ObjectAccess::flags(object).fetch_or(flagObservationRecord, std::memory_order_relaxed);
    if (!ObjectAccess::isImmortal(object)) ObjectAccess::markWeak(object);
  }
  return *record;
}

void ObjectAccess::dropObservations(const NSObject* object) noexcept {
  Shard& shard = shardOf(object);
  ObservedObject* record = nullptr;
  {
    std::lock_guard lock(shard.mutex);
    const auto found = shard.records.find(object);
    if (found == shard.records.end()) return;
    record = found->second;
    shard.records.erase(found);
  }
  std::vector<ObservedKey> keys;
  {
    std::lock_guard lock(record->mutex);
    keys.swap(record->keys);
    record->subscriptions = 0;
    record->openChanges = 0;
    record->owner.store(nullptr, std::memory_order_release);
  }
  flags(object).store(0, std::memory_order_relaxed);
  {
    std::lock_guard lock(shard.mutex);
    shard.unused.push_back(record);
  }
  for (const ObservedKey& key : keys)
    for (const Subscriber& subscriber : key.subscribers)
      if (subscriber.level == 0) subscriber.observation->end();
}

// Dependent keys ----------------------------------------------------------------------------------

namespace {

Ref<NSSet> affectingPaths(Class* aClass, NSString* key) {
  return send<Ref<NSSet>>(aClass, "keyPathsForValuesAffectingValueForKey:"_sel, key);
}

bool contains(const std::vector<Ref<NSString>>& texts, NSString* text) {
  return std::ranges::any_of(texts, [text](NSString* each) { return each->isEqualToString(text); });
}

Dependencies gatherDependencies(Class* aClass, NSString* key) {
  Dependencies found;
  std::vector<Ref<NSString>> open{Ref<NSString>(key)};
  while (!open.empty()) {
    const Ref<NSString> next = open.back();
    open.pop_back();
    for (NSObject* each : affectingPaths(aClass, next)) {
      auto* path = as<NSString>(each);
      if (path == nullptr || path->isEqualToString(key)) continue;
      const bool isKey = path->view().find(u'.') == std::u16string_view::npos;
      auto& known = isKey ? found.keys : found.paths;
      if (contains(known, path)) continue;
      known.push_back(as<NSString>(path->copy()));
      if (isKey) open.push_back(known.back());
    }
  }
  return found;
}

}  // namespace

std::shared_ptr<const Dependencies> dependenciesOf(NSObject* object, NSString* key) {
  ObservedObject& record = observedObject(object);
  {
    std::lock_guard lock(record.mutex);
    if (const ObservedKey* known = record.find(key); known != nullptr && known->dependencies)
      return known->dependencies;
  }
  static const auto* const none =
      new std::shared_ptr<const Dependencies>(std::make_shared<Dependencies>());
  Dependencies found = gatherDependencies(object->classObject(), key);
  auto dependencies = found.keys.empty() && found.paths.empty()
                          ? *none
                          : std::make_shared<const Dependencies>(std::move(found));
  std::lock_guard lock(record.mutex);
  return record.findOrAdd(key).dependencies = std::move(dependencies);
}

}  // namespace qz::detail

namespace qz {

Ref<NSSet> NSObject::keyPathsForValuesAffectingValueForKey(Class* aClass, NSString* key) {
  if (key == nullptr) return NSSet::set();
  std::string name = key->UTF8String();
  std::vector<Ref<NSString>> paths;
  for (const std::string_view path : detail::ClassTables::dependenciesOf(aClass, name))
    paths.push_back(NSString::stringWithUTF8String(path));
  auto described = NSSet::setWithArray(NSArray::fromRange(paths));

  if (name.empty()) return described;
  if (name[0] >= 'a' && name[0] <= 'z') name[0] = static_cast<char>(name[0] - 'a' + 'A');
  const Selector own(detail::findSelector("keyPathsForValuesAffecting" + name));
  if (!own || !aClass->respondsToSelector(own)) return described;
  return described->setByAddingObjectsFromSet(send<Ref<NSSet>>(aClass, own));
}

bool NSObject::automaticallyNotifiesObserversForKey(Class*, NSString*) { return true; }

}  // namespace qz
