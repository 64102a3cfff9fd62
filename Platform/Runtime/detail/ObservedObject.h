/// @file
/// Private: what is observed of an Object, beside the Object.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "Platform/Runtime/NSObject.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

class Observation;

/// A step of an Observation's path that listens to a key.
struct Subscriber {
  Ref<Observation> observation;
  std::uint32_t level;
};

/// On what else a key depends. Asked of the class once for each observed Object and key.
struct Dependencies {
  std::vector<Ref<NSString>> keys;   ///< Of the same Object, directly or over others.
  std::vector<Ref<NSString>> paths;  ///< Of several keys.
};

/// Who listens to one key, in the order in which they came.
struct ObservedKey {
  Ref<NSString> key;
  std::size_t hash;
  std::shared_ptr<const Dependencies> dependencies{};  ///< Null until somebody observes the key.
  std::vector<Subscriber> subscribers{};
};

/// The record of one observed Object. Records are used again but never freed, so whoever finds one
/// may look at its owner: as long as the Object lives, `owner` tells whether the record is its.
struct ObservedObject {
  std::atomic<const NSObject*> owner{nullptr};
  std::mutex mutex;               // guards what follows; nothing is called or released under it
  std::vector<ObservedKey> keys;  // by hash
  std::uint32_t subscriptions = 0;
  std::uint32_t openChanges = 0;  ///< Announced by hand, and not ended yet.

  /// The key's place; null when it has none. The caller holds the mutex, as for what follows.
  ObservedKey* find(NSString* key);
  ObservedKey& findOrAdd(NSString* key);

  /// Makes the owner's flag say whether changes have to be announced.
  void updateFlag();
};

/// The record of `object`, which is alive; null when there is none.
ObservedObject* findObserved(const NSObject* object);

/// The record of `object`, made when it is new.
ObservedObject& observedObject(const NSObject* object);

/// On what `key` of `object` depends; raises what the class's answer raises.
std::shared_ptr<const Dependencies> dependenciesOf(NSObject* object, NSString* key);

}  // namespace qz::detail
