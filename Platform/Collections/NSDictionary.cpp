#include "Platform/Collections/NSDictionary.h"

#include <span>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Collections/NSMutableSet.h"
#include "Platform/Collections/detail/DescriptionPrinter.h"
#include "Platform/Collections/detail/EqualityGuard.h"
#include "Platform/Collections/detail/MergeSort.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSDate.h"

namespace qz {

using detail::DictionaryEntry;

namespace {

void refuseNil(const void* object, const char* what) {
  if (object == nullptr) detail::raise(NSInvalidArgumentException, what);
}

}  // namespace

// Enumerators -------------------------------------------------------------------------------------

/// Walks the table of a Dictionary that keeps its entries there.
class NSDictionary::TableEnumerator final : public NSEnumerator {
 public:
  enum class Yields : bool { Keys, Objects };

  TableEnumerator(const NSDictionary* dictionary, Yields yields)
      : dictionary_(const_cast<NSDictionary*>(dictionary)),
        cursor_(dictionary->table_.begin()),
        yields_(yields) {}

  Ref<NSObject> nextObject() override {
    if (!dictionary_) return nullptr;
    const DictionaryEntry* entry = dictionary_->table_.next(cursor_);
    if (entry != nullptr) return yields_ == Yields::Keys ? entry->key : entry->value;
    dictionary_ = nullptr;
    return nullptr;
  }

 private:
  Ref<NSDictionary> dictionary_;
  detail::HashCursor cursor_;
  Yields yields_;
};

/// Turns the keys of any Dictionary into its Objects.
class NSDictionary::MappedEnumerator final : public NSEnumerator {
 public:
  explicit MappedEnumerator(const NSDictionary* dictionary)
      : dictionary_(const_cast<NSDictionary*>(dictionary)), keys_(dictionary->keyEnumerator()) {}

  Ref<NSObject> nextObject() override {
    const Ref<NSObject> key = keys_->nextObject();
    return key ? dictionary_->objectForKey(key) : nullptr;
  }

 private:
  Ref<NSDictionary> dictionary_;
  Ref<NSEnumerator> keys_;
};

NSDictionary::Iterator::Iterator(const NSDictionary* dictionary)
    : dictionary_(const_cast<NSDictionary*>(dictionary)) {
  if (dictionary->usesTable())
    cursor_ = dictionary->table_.begin();
  else
    keys_ = dictionary->keyEnumerator();
  advance();
}

void NSDictionary::Iterator::advance() {
  if (keys_) {
    current_.key = keys_->nextObject();
    current_.value = current_.key ? dictionary_->objectForKey(current_.key) : nullptr;
  } else if (const DictionaryEntry* entry = dictionary_->table_.next(cursor_)) {
    current_ = {entry->key, entry->value};
  } else {
    current_ = {};
  }
}

NSDictionary::Iterator NSDictionary::begin() const { return Iterator(this); }

// Making ------------------------------------------------------------------------------------------

NSDictionary::NSDictionary() noexcept = default;
NSDictionary::NSDictionary(Table&& table) noexcept : table_(std::move(table)) {}
NSDictionary::~NSDictionary() = default;

void NSDictionary::put(Table& table, NSObject* object, NSObject* key) {
  refuseNil(object, "setObject:forKey: with a nil object");
  refuseNil(key, "setObject:forKey: with a nil key");
  const std::uint32_t hash = detail::hashOfKey(key);
  Ref<NSObject> replaced;  // released last, when the table is whole
  if (DictionaryEntry* entry = table.find(key, hash)) {
    replaced = std::exchange(entry->value, object);
    return;
  }
  const std::uint32_t stamp = table.stamp();
  Ref<NSObject> copied = key->copy();
  refuseNil(copied.get(), "setObject:forKey: with a key whose copy is nil");
  if (table.stamp() != stamp) return put(table, object, copied);
  table.append(std::move(copied), hash).value = object;
}

NSDictionary::Table NSDictionary::tableOf(NSObject* const* objects, NSObject* const* keys,
                                          std::uint32_t count) {
  Table table;
  table.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) put(table, objects[i], keys[i]);
  return table;
}

NSDictionary::Table NSDictionary::tableOf(NSArray* objects, NSArray* keys) {
  const std::uint32_t count = keys == nullptr ? 0 : keys->count();
  const std::uint32_t objectCount = objects == nullptr ? 0 : objects->count();
  if (objectCount != count)
    detail::raise(NSInvalidArgumentException, "a Dictionary of " + std::to_string(objectCount) +
                                                  " objects and " + std::to_string(count) +
                                                  " keys");
  Table table;
  table.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i)
    put(table, objects->objectAtIndex(i), keys->objectAtIndex(i));
  return table;
}

NSDictionary::Table NSDictionary::tableOf(const NSDictionary* other) {
  if (other == nullptr) return Table();
  if (other->usesTable()) return Table(other->table_);
  Table table;
  for (const auto& [key, value] : *other) put(table, value, key);
  return table;
}

NSDictionary::Table NSDictionary::tableOfCopies(const NSDictionary* other) {
  return tableByMapping(other, [](NSObject*, NSObject* object) { return object->copy(); });
}

NSDictionary::Table NSDictionary::tableByMapping(
    const NSDictionary* other,
    const std::function<Ref<NSObject>(NSObject* key, NSObject* object)>& transform) {
  if (!transform) detail::raise(NSInvalidArgumentException, "a Dictionary is mapped by nothing");
  // Nobody else sees the copy while the function runs.
  Table table = tableOf(other);
  std::uint32_t position = 0;
  while (DictionaryEntry* entry = table.next(position)) {
    Ref<NSObject> object = transform(entry->key, entry->value);
    refuseNil(object.get(), "a Dictionary's object is mapped to nil");
    entry->value = std::move(object);
  }
  return table;
}

NSDictionary::Table NSDictionary::tableOf(std::initializer_list<Entry> entries) {
  Table table;
  table.reserve(static_cast<std::uint32_t>(entries.size()));
  for (const Entry& entry : entries) put(table, entry.object, entry.key);
  return table;
}

NSDictionary::Table NSDictionary::tableOfAlternating(NSObject* const* objectsAndKeys,
                                                     std::size_t count) {
  Table table;
  for (std::size_t i = 0; i < count && objectsAndKeys[i] != nullptr; i += 2) {
    if (i + 1 == count)
      detail::raise(NSInvalidArgumentException,
                    "dictionaryWithObjectsAndKeys: the last object has no key");
    if (objectsAndKeys[i + 1] == nullptr) break;
    put(table, objectsAndKeys[i], objectsAndKeys[i + 1]);
  }
  return table;
}

Ref<NSDictionary> NSDictionary::with(Table&& table) {
  return Ref<NSDictionary>(new NSDictionary(std::move(table)), adopt);
}

Ref<NSDictionary> NSDictionary::dictionary() { return make<NSDictionary>(); }

Ref<NSDictionary> NSDictionary::dictionaryWithObject_forKey(NSObject* object, NSObject* key) {
  return with(tableOf(&object, &key, 1));
}

Ref<NSDictionary> NSDictionary::dictionaryWithObjects_forKeys(NSArray* objects, NSArray* keys) {
  return with(tableOf(objects, keys));
}

Ref<NSDictionary> NSDictionary::initWithObjects_forKeys(NSArray* objects, NSArray* keys) {
  return with(tableOf(objects, keys));
}

Ref<NSDictionary> NSDictionary::dictionaryWithObjects_forKeys_count(NSObject* const* objects,
                                                                    NSObject* const* keys,
                                                                    std::uint32_t count) {
  return with(tableOf(objects, keys, count));
}

Ref<NSDictionary> NSDictionary::initWithObjects_forKeys_count(NSObject* const* objects,
                                                              NSObject* const* keys,
                                                              std::uint32_t count) {
  return with(tableOf(objects, keys, count));
}

Ref<NSDictionary> NSDictionary::dictionaryWithDictionary(NSDictionary* other) {
  return with(tableOf(other));
}

Ref<NSDictionary> NSDictionary::initWithDictionary(NSDictionary* other) {
  return with(tableOf(other));
}

Ref<NSDictionary> NSDictionary::initWithDictionary_copyItems(NSDictionary* other,
                                                             bool copiesItems) {
  return with(copiesItems ? tableOfCopies(other) : tableOf(other));
}

Ref<NSDictionary> NSDictionary::of(std::initializer_list<Entry> entries) {
  return with(tableOf(entries));
}

// Reading -----------------------------------------------------------------------------------------

bool NSDictionary::usesTable() const noexcept {
  const std::type_info& mine = typeid(*this);
  return mine == typeid(NSDictionary) || mine == typeid(NSMutableDictionary);
}

std::uint32_t NSDictionary::count() const { return table_.count(); }

Ref<NSObject> NSDictionary::objectForKey(NSObject* key) const {
  if (key == nullptr) return nullptr;
  const DictionaryEntry* entry = table_.find(key);
  return entry != nullptr ? entry->value : nullptr;
}

Ref<NSEnumerator> NSDictionary::keyEnumerator() const {
  return make<TableEnumerator>(this, TableEnumerator::Yields::Keys);
}

Ref<NSEnumerator> NSDictionary::objectEnumerator() const {
  if (usesTable()) return make<TableEnumerator>(this, TableEnumerator::Yields::Objects);
  return make<MappedEnumerator>(this);
}

/// Calls `use` for each entry. It must run no code of the application.
template <class Use>
void NSDictionary::forEach(Use use) const {
  if (usesTable()) {
    std::uint32_t position = 0;
    while (const DictionaryEntry* entry = table_.next(position)) use(entry->key, entry->value);
  } else {
    for (const auto& [key, value] : *this) use(key, value);
  }
}

Ref<NSArray> NSDictionary::allKeys() const {
  detail::ArrayBuilder keys(count());
  forEach([&keys](NSObject* key, NSObject*) { keys.add(key); });
  return keys.finish();
}

Ref<NSArray> NSDictionary::allValues() const {
  detail::ArrayBuilder values(count());
  forEach([&values](NSObject*, NSObject* value) { values.add(value); });
  return values.finish();
}

void NSDictionary::getObjects_andKeys(NSObject** objects, NSObject** keys) const {
  const auto give = [](NSObject** buffer, NSObject* each, std::uint32_t lent) {
    if (buffer == nullptr) return;
    if (each->retainCount() <= lent)
      detail::raise(NSInvalidArgumentException,
                    "getObjects:andKeys: of a Dictionary that makes its entries when asked");
    *buffer = each;
  };
  std::uint32_t i = 0;
  const std::uint32_t lent = usesTable() ? 0 : 1;
  forEach([&](NSObject* key, NSObject* value) {
    give(objects == nullptr ? nullptr : objects + i, value, lent);
    give(keys == nullptr ? nullptr : keys + i, key, lent);
    ++i;
  });
}

Ref<NSArray> NSDictionary::allKeysForObject(NSObject* object) const {
  detail::ArrayBuilder keys;
  if (object != nullptr)
    for (const auto& [key, value] : *this)
      if (equal(object, value)) keys.add(key);
  return keys.finish();
}

Ref<NSArray> NSDictionary::objectsForKeys_notFoundMarker(NSArray* keys, NSObject* marker) const {
  detail::ArrayBuilder objects(keys == nullptr ? 0 : keys->count());
  for (NSObject* key : keys) {
    Ref<NSObject> object = objectForKey(key);
    if (!object) refuseNil(marker, "objectsForKeys:notFoundMarker: needs a marker, which is nil");
    objects.take(object ? std::move(object) : Ref<NSObject>(marker));
  }
  return objects.finish();
}

Ref<NSArray> NSDictionary::keysSortedByValueUsingSelector(Selector comparator) const {
  return keysSortedByValueUsingComparator(
      [=](NSObject* a, NSObject* b) { return send<NSComparisonResult>(a, comparator, b); });
}

// The entries are sorted as they were found, so that each value is looked up once.
Ref<NSArray> NSDictionary::keysSortedByValueUsingComparator(
    const std::function<NSComparisonResult(NSObject*, NSObject*)>& comparator) const {
  if (!comparator)
    detail::raise(NSInvalidArgumentException,
                  "keysSortedByValueUsingComparator: without a comparator");
  std::vector<Pair> pairs;
  pairs.reserve(count());
  for (const Pair& each : *this) pairs.push_back(each);
  std::vector<const Pair*> order;
  order.reserve(pairs.size());
  for (const Pair& each : pairs) order.push_back(&each);
  detail::mergeSort(std::span(order), [&](const Pair* a, const Pair* b) {
    return comparator(a->value, b->value) == NSOrderedDescending;
  });
  detail::ArrayBuilder keys(order.size());
  for (const Pair* each : order) keys.add(each->key);
  return keys.finish();
}

Ref<NSDictionary> NSDictionary::dictionaryByMappingObjects(
    const std::function<Ref<NSObject>(NSObject* key, NSObject* object)>& transform) const {
  return with(tableByMapping(this, transform));
}

Ref<NSSet> NSDictionary::keysOfEntriesPassingTest(
    const std::function<bool(NSObject* key, NSObject* object)>& test) const {
  if (!test) detail::raise(NSInvalidArgumentException, "keysOfEntriesPassingTest: without a test");
  auto keys = make<NSMutableSet>();
  for (const auto& [key, value] : *this)
    if (test(key, value)) keys->addObject(key);
  return as<NSSet>(keys->copy());
}

Ref<NSDate> NSDictionary::fileModificationDate() const {
  return as<NSDate>(objectForKey("NSFileModificationDate"_ns));
}

bool NSDictionary::isEqualToDictionary(NSDictionary* other) const {
  if (other == this) return true;
  if (other == nullptr || other->count() != count()) return false;
  const detail::EqualityGuard comparison(this, other);
  if (comparison.isUnderWay()) return true;
  for (const auto& [key, value] : *this) {
    const Ref<NSObject> others = other->objectForKey(key);
    if (!others || !equal(value, others)) return false;
  }
  return true;
}

bool NSDictionary::isEqual(NSObject* other) const {
  return isEqualToDictionary(as<NSDictionary>(other));
}

std::size_t NSDictionary::hash() const { return count(); }

Ref<NSString> NSDictionary::description() const {
  detail::DescriptionPrinter printer(this, detail::dictionaryStyle);
  if (printer.entered())
    for (const auto& [key, value] : *this) printer.entry(key, value);
  return printer.finish();
}

Ref<NSObject> NSDictionary::copy() const {
  if (typeid(*this) == typeid(NSDictionary)) return const_cast<NSDictionary*>(this);
  return with(tableOf(this));
}

Ref<NSObject> NSDictionary::mutableCopy() const { return NSMutableDictionary::with(tableOf(this)); }

Ref<NSObject> NSDictionary::valueForKey(NSString* key) {
  if (key != nullptr && key->view().starts_with(u'@'))
    return Super::valueForKey(NSString::stringWithCharacters(key->view().substr(1)));
  return objectForKey(key);
}

namespace {

// A list of any length travels by Selector as one Array: object, key, object, key, …
Ref<NSDictionary> dictionaryOfList(Class* aClass, NSArray* objectsAndKeys) {
  auto table = make<NSMutableDictionary>();
  const std::uint32_t count = objectsAndKeys == nullptr ? 0 : objectsAndKeys->count();
  if (count % 2 != 0)
    detail::raise(NSInvalidArgumentException,
                  "dictionaryWithObjectsAndKeys: the last object has no key");
  for (std::uint32_t i = 0; i < count; i += 2)
    table->setObject_forKey(objectsAndKeys->objectAtIndex(i), objectsAndKeys->objectAtIndex(i + 1));
  if (aClass->isSubclassOfClass(classOf<NSMutableDictionary>())) return table;
  return as<NSDictionary>(table->copy());
}

Ref<NSDictionary> immutableOfList(NSArray* objectsAndKeys) {
  return dictionaryOfList(classOf<NSDictionary>(), objectsAndKeys);
}

}  // namespace

void NSDictionary::describe(ClassDescription<NSDictionary>& is) {
  is.named("NSDictionary")
      .classMethod<&NSDictionary::dictionary>("dictionary")
      .classMethod<&NSDictionary::dictionaryWithObject_forKey>("dictionaryWithObject:forKey:")
      .classMethod<&NSDictionary::dictionaryWithObjects_forKeys>("dictionaryWithObjects:forKeys:")
      .initializer<&NSDictionary::initWithObjects_forKeys>("initWithObjects:forKeys:")
      .classMethod<&NSDictionary::dictionaryWithObjects_forKeys_count>(
          "dictionaryWithObjects:forKeys:count:")
      .initializer<&NSDictionary::initWithObjects_forKeys_count>("initWithObjects:forKeys:count:")
      .classMethod<&NSDictionary::dictionaryWithDictionary>("dictionaryWithDictionary:")
      .initializer<&NSDictionary::initWithDictionary>("initWithDictionary:")
      .initializer<&NSDictionary::initWithDictionary_copyItems>("initWithDictionary:copyItems:")
      .classMethod<&dictionaryOfList>("dictionaryWithObjectsAndKeys:")
      .initializer<&immutableOfList>("initWithObjectsAndKeys:")
      .method<&NSDictionary::count>("count")
      .method<&NSDictionary::objectForKey>("objectForKey:")
      .method<&NSDictionary::keyEnumerator>("keyEnumerator")
      .method<&NSDictionary::objectEnumerator>("objectEnumerator")
      .method<&NSDictionary::allKeys>("allKeys")
      .method<&NSDictionary::allValues>("allValues")
      .method<&NSDictionary::allKeysForObject>("allKeysForObject:")
      .method<&NSDictionary::getObjects_andKeys>("getObjects:andKeys:")
      .method<&NSDictionary::fileModificationDate>("fileModificationDate")
      .method<&NSDictionary::objectsForKeys_notFoundMarker>("objectsForKeys:notFoundMarker:")
      .method<&NSDictionary::keysSortedByValueUsingSelector>("keysSortedByValueUsingSelector:")
      .method<&NSDictionary::isEqualToDictionary>("isEqualToDictionary:");
}

}  // namespace qz
