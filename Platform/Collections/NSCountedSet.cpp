#include "Platform/Collections/NSCountedSet.h"

#include <limits>
#include <string>
#include <utility>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/detail/DescriptionPrinter.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"

namespace qz {

using detail::SetEntry;

Ref<NSCountedSet> NSCountedSet::with(Table&& table) {
  return Ref<NSCountedSet>(new NSCountedSet(std::move(table)), adopt);
}

Ref<NSCountedSet> NSCountedSet::set() { return make<NSCountedSet>(); }

Ref<NSCountedSet> NSCountedSet::setWithObject(NSObject* object) {
  return setWithObjects_count(&object, 1);
}

Ref<NSCountedSet> NSCountedSet::setWithObjects(std::initializer_list<NSObject*> objects) {
  return setWithObjects_count(objects.begin(), static_cast<std::uint32_t>(objects.size()));
}

Ref<NSCountedSet> NSCountedSet::setWithObjects_count(NSObject* const* objects,
                                                     std::uint32_t count) {
  auto made = make<NSCountedSet>();
  for (std::uint32_t i = 0; i < count; ++i) made->addObject(objects[i]);
  return made;
}

Ref<NSCountedSet> NSCountedSet::initWithObjects_count(NSObject* const* objects,
                                                      std::uint32_t count) {
  return setWithObjects_count(objects, count);
}

Ref<NSCountedSet> NSCountedSet::setWithArray(NSArray* array) {
  auto made = make<NSCountedSet>();
  made->addObjectsFromArray(array);
  return made;
}

Ref<NSCountedSet> NSCountedSet::initWithArray(NSArray* array) { return setWithArray(array); }

Ref<NSCountedSet> NSCountedSet::setWithSet(NSSet* other) {
  return with(tableOf(other, Counts::Kept));
}

Ref<NSCountedSet> NSCountedSet::initWithSet(NSSet* other) { return setWithSet(other); }

Ref<NSCountedSet> NSCountedSet::initWithSet_copyItems(NSSet* other, bool copiesItems) {
  if (!copiesItems) return setWithSet(other);
  auto made = make<NSCountedSet>();
  const auto* counted = as<NSCountedSet>(other);
  for (NSObject* each : other) {
    SetEntry* entry = put(made->table_, each->copy());
    if (entry != nullptr && counted != nullptr) entry->count = counted->countForObject(each);
  }
  return made;
}

Ref<NSCountedSet> NSCountedSet::setWithCapacity(std::uint32_t capacity) {
  return with(Table::withRoomFor(capacity));
}

Ref<NSCountedSet> NSCountedSet::initWithCapacity(std::uint32_t capacity) {
  return setWithCapacity(capacity);
}

std::uint32_t NSCountedSet::countForObject(NSObject* object) const {
  const SetEntry* entry = object != nullptr ? table_.find(object) : nullptr;
  return entry != nullptr ? entry->count : 0;
}

void NSCountedSet::addObject(NSObject* object) {
  SetEntry* entry = object != nullptr ? table_.find(object) : nullptr;
  if (entry == nullptr)
    put(table_, object);
  else if (entry->count != std::numeric_limits<std::uint32_t>::max())
    ++entry->count;
}

void NSCountedSet::removeObject(NSObject* object) {
  SetEntry* entry = object != nullptr ? table_.find(object) : nullptr;
  if (entry == nullptr || --entry->count != 0) return;
  const SetEntry removed = table_.remove(entry);
}

Ref<NSObject> NSCountedSet::copy() const { return with(Table(table_)); }
Ref<NSObject> NSCountedSet::mutableCopy() const { return with(Table(table_)); }

Ref<NSString> NSCountedSet::description() const {
  detail::DescriptionPrinter printer(this, detail::setStyle);
  detail::HashCursor cursor = table_.begin();
  while (const SetEntry* entry = printer.entered() ? table_.next(cursor) : nullptr) {
    const Ref<NSObject> member = entry->key;
    const std::string count = std::to_string(entry->count);
    printer.element(member, u" [" + std::u16string(count.begin(), count.end()) + u"]");
  }
  return printer.finish();
}

void NSCountedSet::describe(ClassDescription<NSCountedSet>& is) {
  is.named("NSCountedSet")
      .classMethod<&NSCountedSet::set>("set")
      .classMethod<&NSCountedSet::setWithObject>("setWithObject:")
      .classMethod<&NSCountedSet::setWithObjects_count>("setWithObjects:count:")
      .initializer<&NSCountedSet::initWithObjects_count>("initWithObjects:count:")
      .classMethod<&NSCountedSet::setWithArray>("setWithArray:")
      .initializer<&NSCountedSet::initWithArray>("initWithArray:")
      .classMethod<&NSCountedSet::setWithSet>("setWithSet:")
      .initializer<&NSCountedSet::initWithSet>("initWithSet:")
      .initializer<&NSCountedSet::initWithSet_copyItems>("initWithSet:copyItems:")
      .classMethod<&NSCountedSet::setWithCapacity>("setWithCapacity:")
      .initializer<&NSCountedSet::initWithCapacity>("initWithCapacity:")
      .method<&NSCountedSet::countForObject>("countForObject:");
}

}  // namespace qz
