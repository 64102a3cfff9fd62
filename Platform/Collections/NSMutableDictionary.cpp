#include "Platform/Collections/NSMutableDictionary.h"

#include <typeinfo>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/NSKeyValueObserving.h"
#include "Platform/Runtime/Send.h"

namespace qz {

Ref<NSMutableDictionary> NSMutableDictionary::with(Table&& table) {
  return Ref<NSMutableDictionary>(new NSMutableDictionary(std::move(table)), adopt);
}

Ref<NSMutableDictionary> NSMutableDictionary::dictionary() { return make<NSMutableDictionary>(); }

Ref<NSMutableDictionary> NSMutableDictionary::dictionaryWithObject_forKey(NSObject* object,
                                                                          NSObject* key) {
  return with(tableOf(&object, &key, 1));
}

Ref<NSMutableDictionary> NSMutableDictionary::dictionaryWithObjects_forKeys(NSArray* objects,
                                                                            NSArray* keys) {
  return with(tableOf(objects, keys));
}

Ref<NSMutableDictionary> NSMutableDictionary::initWithObjects_forKeys(NSArray* objects,
                                                                      NSArray* keys) {
  return with(tableOf(objects, keys));
}

Ref<NSMutableDictionary> NSMutableDictionary::dictionaryWithObjects_forKeys_count(
    NSObject* const* objects, NSObject* const* keys, std::uint32_t count) {
  return with(tableOf(objects, keys, count));
}

Ref<NSMutableDictionary> NSMutableDictionary::initWithObjects_forKeys_count(
    NSObject* const* objects, NSObject* const* keys, std::uint32_t count) {
  return with(tableOf(objects, keys, count));
}

Ref<NSMutableDictionary> NSMutableDictionary::dictionaryWithDictionary(NSDictionary* other) {
  return with(tableOf(other));
}

Ref<NSMutableDictionary> NSMutableDictionary::initWithDictionary(NSDictionary* other) {
  return with(tableOf(other));
}

Ref<NSMutableDictionary> NSMutableDictionary::initWithDictionary_copyItems(NSDictionary* other,
                                                                           bool copiesItems) {
  return with(copiesItems ? tableOfCopies(other) : tableOf(other));
}

Ref<NSMutableDictionary> NSMutableDictionary::dictionaryByMapping(
    NSDictionary* other,
    const std::function<Ref<NSObject>(NSObject* key, NSObject* object)>& transform) {
  return with(tableByMapping(other, transform));
}

Ref<NSMutableDictionary> NSMutableDictionary::of(std::initializer_list<Entry> entries) {
  return with(tableOf(entries));
}

Ref<NSMutableDictionary> NSMutableDictionary::dictionaryWithCapacity(std::uint32_t capacity) {
  return with(Table::withRoomFor(capacity));
}

Ref<NSMutableDictionary> NSMutableDictionary::initWithCapacity(std::uint32_t capacity) {
  return dictionaryWithCapacity(capacity);
}

namespace {
/// The key that observers of `dictionary` know this one by; nil when there is nobody to tell.
NSString* observedKey(const NSMutableDictionary* dictionary, NSObject* key) {
  return detail::isObserved(dictionary) ? as<NSString>(key) : nullptr;
}
}  // namespace

void NSMutableDictionary::setObject_forKey(NSObject* object, NSObject* key) {
  const KeyValueChange changing(this, observedKey(this, key));
  put(table_, object, key);
}

void NSMutableDictionary::removeObjectForKey(NSObject* key) {
  if (key == nullptr)
    detail::raise(NSInvalidArgumentException, "removeObjectForKey: with a nil key");
  const KeyValueChange changing(this, observedKey(this, key));
  if (auto* entry = table_.find(key)) {
    const detail::DictionaryEntry removed = table_.remove(entry);
  }
}

void NSMutableDictionary::removeObjectsForKeys(NSArray* keys) {
  for (NSObject* key : keys) removeObjectForKey(key);
}

void NSMutableDictionary::removeAllObjects() {
  if (usesTable() && !detail::isObserved(this)) {
    const Table removed = table_.removeAll();
  } else {
    removeObjectsForKeys(allKeys());
  }
}

void NSMutableDictionary::addEntriesFromDictionary(NSDictionary* other) {
  if (other == nullptr || other == this) return;
  for (const auto& [key, value] : *other) setObject_forKey(value, key);
}

void NSMutableDictionary::setDictionary(NSDictionary* other) {
  if (other == this) return;
  if (usesTable() && !detail::isObserved(this)) {
    Table table = tableOf(other);
    table_.swap(table);
  } else {
    removeAllObjects();
    addEntriesFromDictionary(other);
  }
}

void NSMutableDictionary::setValue_forKey(NSObject* value, NSString* key) {
  if (value != nullptr)
    setObject_forKey(value, key);
  else
    removeObjectForKey(key);
}

namespace {
Ref<NSMutableDictionary> mutableOfList(NSArray* objectsAndKeys) {
  return send<Ref<NSMutableDictionary>>(classOf<NSMutableDictionary>(),
                                        "dictionaryWithObjectsAndKeys:"_sel, objectsAndKeys);
}
}  // namespace

void NSMutableDictionary::describe(ClassDescription<NSMutableDictionary>& is) {
  using Mutable = NSMutableDictionary;
  is.named("NSMutableDictionary")
      .classMethod<&Mutable::dictionary>("dictionary")
      .classMethod<&Mutable::dictionaryWithObject_forKey>("dictionaryWithObject:forKey:")
      .classMethod<&Mutable::dictionaryWithObjects_forKeys>("dictionaryWithObjects:forKeys:")
      .initializer<&Mutable::initWithObjects_forKeys>("initWithObjects:forKeys:")
      .classMethod<&Mutable::dictionaryWithObjects_forKeys_count>(
          "dictionaryWithObjects:forKeys:count:")
      .initializer<&Mutable::initWithObjects_forKeys_count>("initWithObjects:forKeys:count:")
      .classMethod<&Mutable::dictionaryWithDictionary>("dictionaryWithDictionary:")
      .initializer<&Mutable::initWithDictionary>("initWithDictionary:")
      .initializer<&Mutable::initWithDictionary_copyItems>("initWithDictionary:copyItems:")
      .initializer<&mutableOfList>("initWithObjectsAndKeys:")
      .classMethod<&Mutable::dictionaryWithCapacity>("dictionaryWithCapacity:")
      .initializer<&Mutable::initWithCapacity>("initWithCapacity:")
      .method<&Mutable::setObject_forKey>("setObject:forKey:")
      .method<&Mutable::removeObjectForKey>("removeObjectForKey:")
      .method<&Mutable::removeObjectsForKeys>("removeObjectsForKeys:")
      .method<&Mutable::removeAllObjects>("removeAllObjects")
      .method<&Mutable::addEntriesFromDictionary>("addEntriesFromDictionary:")
      .method<&Mutable::setDictionary>("setDictionary:");
}

}  // namespace qz
