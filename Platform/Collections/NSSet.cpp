#include "Platform/Collections/NSSet.h"

#include <typeinfo>
#include <utility>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSCountedSet.h"
#include "Platform/Collections/NSMutableSet.h"
#include "Platform/Collections/NSPredicate.h"
#include "Platform/Collections/detail/CollectionOperators.h"
#include "Platform/Collections/detail/DescriptionPrinter.h"
#include "Platform/Collections/detail/EqualityGuard.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"

namespace qz {

using detail::SetEntry;

/// Walks the table of a Set that keeps its members there.
class NSSet::TableEnumerator final : public NSEnumerator {
 public:
  explicit TableEnumerator(const NSSet* set)
      : set_(const_cast<NSSet*>(set)), cursor_(set->table_.begin()) {}

  Ref<NSObject> nextObject() override {
    if (!set_) return nullptr;
    if (const SetEntry* entry = set_->table_.next(cursor_)) return entry->key;
    set_ = nullptr;
    return nullptr;
  }

 private:
  Ref<NSSet> set_;
  detail::HashCursor cursor_;
};

NSSet::Iterator::Iterator(const NSSet* set) : set_(const_cast<NSSet*>(set)) {
  if (set->usesTable())
    cursor_ = set->table_.begin();
  else
    members_ = set->objectEnumerator();
  advance();
}

void NSSet::Iterator::advance() {
  if (members_) {
    current_ = members_->nextObject();
  } else {
    const SetEntry* entry = set_->table_.next(cursor_);
    current_ = entry != nullptr ? entry->key : nullptr;
  }
}

NSSet::Iterator NSSet::begin() const { return Iterator(this); }

// Making ------------------------------------------------------------------------------------------

NSSet::NSSet() noexcept = default;
NSSet::NSSet(Table&& table) noexcept : table_(std::move(table)) {}
NSSet::~NSSet() = default;

SetEntry* NSSet::put(Table& table, NSObject* object) {
  if (object == nullptr) detail::raise(NSInvalidArgumentException, "a Set cannot hold nil");
  const std::uint32_t hash = detail::hashOfKey(object);
  return table.find(object, hash) == nullptr ? &table.append(object, hash) : nullptr;
}

NSSet::Table NSSet::tableOf(NSObject* const* objects, std::size_t count) {
  Table table;
  table.reserve(static_cast<std::uint32_t>(count));
  for (std::size_t i = 0; i < count; ++i) put(table, objects[i]);
  return table;
}

NSSet::Table NSSet::tableOf(const NSArray* array) {
  Table table;
  if (array != nullptr) table.reserve(array->count());
  for (NSObject* each : array) put(table, each);
  return table;
}

NSSet::Table NSSet::tableOf(const NSSet* other, Counts counts) {
  Table table;
  if (other == nullptr || !other->usesTable()) {
    for (NSObject* each : other) put(table, each);
    return table;
  }
  Table copied(other->table_);
  if (counts == Counts::Ones && isKind<NSCountedSet>(other)) {
    std::uint32_t position = 0;
    while (SetEntry* entry = copied.next(position)) entry->count = 1;
  }
  return copied;
}

Ref<NSSet> NSSet::with(Table&& table) { return Ref<NSSet>(new NSSet(std::move(table)), adopt); }

Ref<NSSet> NSSet::set() { return make<NSSet>(); }

Ref<NSSet> NSSet::setWithObject(NSObject* object) { return with(tableOf(&object, 1)); }

Ref<NSSet> NSSet::setWithObjects(std::initializer_list<NSObject*> objects) {
  return with(tableOf(objects.begin(), objects.size()));
}

Ref<NSSet> NSSet::setWithObjects_count(NSObject* const* objects, std::uint32_t count) {
  return with(tableOf(objects, count));
}

Ref<NSSet> NSSet::initWithObjects_count(NSObject* const* objects, std::uint32_t count) {
  return with(tableOf(objects, count));
}

Ref<NSSet> NSSet::setWithArray(NSArray* array) { return with(tableOf(array)); }
Ref<NSSet> NSSet::initWithArray(NSArray* array) { return with(tableOf(array)); }
Ref<NSSet> NSSet::setWithSet(NSSet* other) { return with(tableOf(other)); }
Ref<NSSet> NSSet::initWithSet(NSSet* other) { return with(tableOf(other)); }

NSSet::Table NSSet::tableOfCopies(const NSSet* other) {
  Table table;
  for (NSObject* each : other) put(table, each->copy());
  return table;
}

Ref<NSSet> NSSet::initWithSet_copyItems(NSSet* other, bool copiesItems) {
  return with(copiesItems ? tableOfCopies(other) : tableOf(other));
}

// Reading -----------------------------------------------------------------------------------------

bool NSSet::usesTable() const noexcept {
  const std::type_info& mine = typeid(*this);
  return mine == typeid(NSSet) || mine == typeid(NSMutableSet) || mine == typeid(NSCountedSet);
}

std::uint32_t NSSet::count() const { return table_.count(); }

Ref<NSObject> NSSet::member(NSObject* object) const {
  if (object == nullptr) return nullptr;
  const SetEntry* entry = table_.find(object);
  return entry != nullptr ? entry->key : nullptr;
}

Ref<NSEnumerator> NSSet::objectEnumerator() const { return make<TableEnumerator>(this); }

bool NSSet::containsObject(NSObject* object) const { return bool(member(object)); }

Ref<NSObject> NSSet::anyObject() const { return *begin(); }

Ref<NSArray> NSSet::allObjects() const {
  detail::ArrayBuilder members(count());
  for (NSObject* each : *this) members.add(each);
  return members.finish();
}

Ref<NSArray> NSSet::sortedArrayUsingDescriptors(NSArray* descriptors) const {
  return allObjects()->sortedArrayUsingDescriptors(descriptors);
}

void NSSet::makeObjectsPerformSelector(Selector selector) const {
  for (NSObject* each : *this) each->performSelector(selector);
}

void NSSet::makeObjectsPerformSelector_withObject(Selector selector, NSObject* object) const {
  for (NSObject* each : *this) each->performSelector_withObject(selector, object);
}

bool NSSet::isSubsetOfSet(NSSet* other) const {
  if (count() > (other == nullptr ? 0 : other->count())) return false;
  for (NSObject* each : *this)
    if (!other->containsObject(each)) return false;
  return true;
}

bool NSSet::intersectsSet(NSSet* other) const {
  if (other == nullptr) return false;
  const bool mineIsSmaller = count() < other->count();
  const NSSet* walked = mineIsSmaller ? this : other;
  const NSSet* asked = mineIsSmaller ? other : this;
  for (NSObject* each : walked)
    if (asked->containsObject(each)) return true;
  return false;
}

Ref<NSSet> NSSet::setByAddingObject(NSObject* object) const {
  Table table = tableOf(this);
  put(table, object);
  return with(std::move(table));
}

Ref<NSSet> NSSet::setByAddingObjectsFromSet(NSSet* other) const {
  Table table = tableOf(this);
  for (NSObject* each : other) put(table, each);
  return with(std::move(table));
}

Ref<NSSet> NSSet::setByAddingObjectsFromArray(NSArray* other) const {
  Table table = tableOf(this);
  for (NSObject* each : other) put(table, each);
  return with(std::move(table));
}

Ref<NSSet> NSSet::filteredSetUsingPredicate(NSPredicate* predicate) const {
  if (predicate == nullptr)
    detail::raise(NSInvalidArgumentException, "filteredSetUsingPredicate: with nil");
  return objectsPassingTest([=](NSObject* each) { return predicate->evaluateWithObject(each); });
}

Ref<NSSet> NSSet::objectsPassingTest(const std::function<bool(NSObject*)>& test) const {
  if (!test) detail::raise(NSInvalidArgumentException, "objectsPassingTest: without a test");
  Table table;
  for (NSObject* each : *this)
    if (test(each)) put(table, each);
  return with(std::move(table));
}

bool NSSet::isEqualToSet(NSSet* other) const {
  if (other == this) return true;
  if (other == nullptr || other->count() != count()) return false;
  const detail::EqualityGuard comparison(this, other);
  return comparison.isUnderWay() || isSubsetOfSet(other);
}

bool NSSet::isEqual(NSObject* other) const { return isEqualToSet(as<NSSet>(other)); }

std::size_t NSSet::hash() const { return count(); }

Ref<NSString> NSSet::description() const {
  detail::DescriptionPrinter printer(this, detail::setStyle);
  if (printer.entered())
    for (NSObject* each : *this) printer.element(each);
  return printer.finish();
}

Ref<NSObject> NSSet::copy() const {
  if (typeid(*this) == typeid(NSSet)) return const_cast<NSSet*>(this);
  return with(tableOf(this));
}

Ref<NSObject> NSSet::mutableCopy() const { return NSMutableSet::with(tableOf(this)); }

Ref<NSObject> NSSet::valueForKey(NSString* key) {
  if (key != nullptr && key->view().starts_with(u'@'))
    return detail::valueForOperatorPath(this, key);
  Table table;
  for (NSObject* each : *this)
    if (const Ref<NSObject> value = each->valueForKey(key)) put(table, value);
  return with(std::move(table));
}

Ref<NSObject> NSSet::valueForKeyPath(NSString* keyPath) {
  if (keyPath != nullptr && keyPath->view().starts_with(u'@'))
    return detail::valueForOperatorPath(this, keyPath);
  return Super::valueForKeyPath(keyPath);
}

void NSSet::setValue_forKey(NSObject* value, NSString* key) {
  for (NSObject* each : *this) each->setValue_forKey(value, key);
}

void NSSet::describe(ClassDescription<NSSet>& is) {
  is.named("NSSet")
      .classMethod<&NSSet::set>("set")
      .classMethod<&NSSet::setWithObject>("setWithObject:")
      .classMethod<&NSSet::setWithObjects_count>("setWithObjects:count:")
      .initializer<&NSSet::initWithObjects_count>("initWithObjects:count:")
      .classMethod<&NSSet::setWithArray>("setWithArray:")
      .initializer<&NSSet::initWithArray>("initWithArray:")
      .classMethod<&NSSet::setWithSet>("setWithSet:")
      .initializer<&NSSet::initWithSet>("initWithSet:")
      .initializer<&NSSet::initWithSet_copyItems>("initWithSet:copyItems:")
      .method<&NSSet::count>("count")
      .method<&NSSet::member>("member:")
      .method<&NSSet::objectEnumerator>("objectEnumerator")
      .method<&NSSet::containsObject>("containsObject:")
      .method<&NSSet::anyObject>("anyObject")
      .method<&NSSet::allObjects>("allObjects")
      .method<&NSSet::sortedArrayUsingDescriptors>("sortedArrayUsingDescriptors:")
      .method<&NSSet::makeObjectsPerformSelector>("makeObjectsPerformSelector:")
      .method<&NSSet::makeObjectsPerformSelector_withObject>(
          "makeObjectsPerformSelector:withObject:")
      .method<&NSSet::isSubsetOfSet>("isSubsetOfSet:")
      .method<&NSSet::intersectsSet>("intersectsSet:")
      .method<&NSSet::isEqualToSet>("isEqualToSet:")
      .method<&NSSet::setByAddingObject>("setByAddingObject:")
      .method<&NSSet::setByAddingObjectsFromSet>("setByAddingObjectsFromSet:")
      .method<&NSSet::setByAddingObjectsFromArray>("setByAddingObjectsFromArray:")
      .method<&NSSet::filteredSetUsingPredicate>("filteredSetUsingPredicate:");
}

}  // namespace qz
