#include "Platform/Collections/NSMutableSet.h"

#include <utility>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSCountedSet.h"
#include "Platform/Collections/NSPredicate.h"
#include "Platform/Runtime/Describe.h"

namespace qz {

Ref<NSMutableSet> NSMutableSet::with(Table&& table) {
  return Ref<NSMutableSet>(new NSMutableSet(std::move(table)), adopt);
}

Ref<NSMutableSet> NSMutableSet::set() { return make<NSMutableSet>(); }

Ref<NSMutableSet> NSMutableSet::setWithObject(NSObject* object) {
  return with(tableOf(&object, 1));
}

Ref<NSMutableSet> NSMutableSet::setWithObjects(std::initializer_list<NSObject*> objects) {
  return with(tableOf(objects.begin(), objects.size()));
}

Ref<NSMutableSet> NSMutableSet::setWithObjects_count(NSObject* const* objects,
                                                     std::uint32_t count) {
  return with(tableOf(objects, count));
}

Ref<NSMutableSet> NSMutableSet::initWithObjects_count(NSObject* const* objects,
                                                      std::uint32_t count) {
  return with(tableOf(objects, count));
}

Ref<NSMutableSet> NSMutableSet::setWithArray(NSArray* array) { return with(tableOf(array)); }
Ref<NSMutableSet> NSMutableSet::initWithArray(NSArray* array) { return with(tableOf(array)); }
Ref<NSMutableSet> NSMutableSet::setWithSet(NSSet* other) { return with(tableOf(other)); }
Ref<NSMutableSet> NSMutableSet::initWithSet(NSSet* other) { return with(tableOf(other)); }

Ref<NSMutableSet> NSMutableSet::initWithSet_copyItems(NSSet* other, bool copiesItems) {
  return with(copiesItems ? tableOfCopies(other) : tableOf(other));
}

Ref<NSMutableSet> NSMutableSet::setWithCapacity(std::uint32_t capacity) {
  return with(Table::withRoomFor(capacity));
}

Ref<NSMutableSet> NSMutableSet::initWithCapacity(std::uint32_t capacity) {
  return setWithCapacity(capacity);
}

void NSMutableSet::addObject(NSObject* object) { put(table_, object); }

void NSMutableSet::removeObject(NSObject* object) {
  if (object != nullptr) removeFromTable(object);
}

void NSMutableSet::removeFromTable(NSObject* object) {
  if (detail::SetEntry* entry = table_.find(object)) {
    const detail::SetEntry removed = table_.remove(entry);
  }
}

void NSMutableSet::removeAllObjects() {
  if (usesTable()) {
    const Table removed = table_.removeAll();
  } else {
    for (NSObject* each : allObjects()) removeObject(each);
  }
}

void NSMutableSet::addObjectsFromArray(NSArray* array) {
  for (NSObject* each : array) addObject(each);
}

void NSMutableSet::unionSet(NSSet* other) {
  for (NSObject* each : other) addObject(each);
}

void NSMutableSet::minusSet(NSSet* other) {
  if (other != this)
    for (NSObject* each : other) removeObject(each);
  else
    for (NSObject* each : allObjects()) removeObject(each);
}

void NSMutableSet::intersectSet(NSSet* other) {
  if (other == this) return;
  if (other == nullptr) return removeAllObjects();
  for (NSObject* each : allObjects())
    if (!other->containsObject(each)) usesTable() ? removeFromTable(each) : removeObject(each);
}

void NSMutableSet::filterUsingPredicate(NSPredicate* predicate) {
  intersectSet(filteredSetUsingPredicate(predicate));
}

void NSMutableSet::setSet(NSSet* other) {
  if (other == this) return;
  if (usesTable()) {
    Table table = tableOf(other, isKind<NSCountedSet>(this) ? Counts::Kept : Counts::Ones);
    table_.swap(table);
  } else {
    removeAllObjects();
    unionSet(other);
  }
}

void NSMutableSet::describe(ClassDescription<NSMutableSet>& is) {
  is.named("NSMutableSet")
      .classMethod<&NSMutableSet::set>("set")
      .classMethod<&NSMutableSet::setWithObject>("setWithObject:")
      .classMethod<&NSMutableSet::setWithObjects_count>("setWithObjects:count:")
      .initializer<&NSMutableSet::initWithObjects_count>("initWithObjects:count:")
      .classMethod<&NSMutableSet::setWithArray>("setWithArray:")
      .initializer<&NSMutableSet::initWithArray>("initWithArray:")
      .classMethod<&NSMutableSet::setWithSet>("setWithSet:")
      .initializer<&NSMutableSet::initWithSet>("initWithSet:")
      .classMethod<&NSMutableSet::setWithCapacity>("setWithCapacity:")
      .initializer<&NSMutableSet::initWithCapacity>("initWithCapacity:")
      .initializer<&NSMutableSet::initWithSet_copyItems>("initWithSet:copyItems:")
      .method<&NSMutableSet::addObject>("addObject:")
      .method<&NSMutableSet::removeObject>("removeObject:")
      .method<&NSMutableSet::removeAllObjects>("removeAllObjects")
      .method<&NSMutableSet::addObjectsFromArray>("addObjectsFromArray:")
      .method<&NSMutableSet::unionSet>("unionSet:")
      .method<&NSMutableSet::minusSet>("minusSet:")
      .method<&NSMutableSet::intersectSet>("intersectSet:")
      .method<&NSMutableSet::filterUsingPredicate>("filterUsingPredicate:")
      .method<&NSMutableSet::setSet>("setSet:");
}

}  // namespace qz
