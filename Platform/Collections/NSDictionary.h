/// @file
/// Dictionaries: keys and the Objects kept under them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <ranges>

#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Collections/detail/HashTable.h"
#include "Platform/Runtime/Derives.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;
class NSDate;
class NSSet;
class NSString;

/// A map from keys to Objects that keeps the order in which its keys were added.
///
///     auto person = NSDictionary::of({{"name"_ns, name}, {"age"_ns, NSNumber::of(30)}});
///     Ref<NSObject> age = person->objectForKey("age"_ns);
///     for (const auto& [key, value] : person) use(key, value);
///
/// Keys are copied when they are added, and must not change afterwards; they are told apart by
/// `isEqual:` and `hash`. Where one key is given several times, the last Object given wins, at the
/// place of the first. Neither keys nor Objects are nil: nil raises NSInvalidArgumentException.
/// Looking up, adding and removing take constant time.
///
/// A subclass that keeps its entries elsewhere overrides `count`, `objectForKey` and
/// `keyEnumerator`; everything else goes through these three. An immutable Dictionary may be read
/// from any number of threads.
class NSDictionary : public Derives<NSDictionary, NSObject> {
 public:
  /// A key and an Object, borrowed for the length of a call.
  struct Entry {
    NSObject* key;     ///< Not nil.
    NSObject* object;  ///< Not nil.
  };

  /// What a walk over a Dictionary meets.
  struct Pair {
    Ref<NSObject> key;    ///< Not to be changed while it is in the Dictionary.
    Ref<NSObject> value;  ///< The Object under it.
  };

  class Iterator;

  static void describe(ClassDescription<NSDictionary>& is);

  /// An empty Dictionary.
  NSDictionary() noexcept;
  ~NSDictionary() override;

  /// Empty, and with one entry.
  static Ref<NSDictionary> dictionary();
  static Ref<NSDictionary> dictionaryWithObject_forKey(NSObject* object, NSObject* key);

  /// `objects` and `keys` in step. Raises NSInvalidArgumentException when their counts differ; nil
  /// counts as an empty Array.
  static Ref<NSDictionary> dictionaryWithObjects_forKeys(NSArray* objects, NSArray* keys);
  static Ref<NSDictionary> initWithObjects_forKeys(NSArray* objects, NSArray* keys);

  /// The first `count` of both; neither pointer is used when `count` is 0.
  static Ref<NSDictionary> dictionaryWithObjects_forKeys_count(NSObject* const* objects,
                                                               NSObject* const* keys,
                                                               std::uint32_t count);
  static Ref<NSDictionary> initWithObjects_forKeys_count(NSObject* const* objects,
                                                         NSObject* const* keys,
                                                         std::uint32_t count);

  /// The entries of `other` as they are now; empty for nil.
  static Ref<NSDictionary> dictionaryWithDictionary(NSDictionary* other);
  static Ref<NSDictionary> initWithDictionary(NSDictionary* other);

  /// The same, with a `copy` of each Object if asked for.
  static Ref<NSDictionary> initWithDictionary_copyItems(NSDictionary* other, bool copiesItems);

  /// Object, key, object, key, …: ends early at the first nil. Raises NSInvalidArgumentException
  /// for an Object without a key.
  template <class... Objects>
  static Ref<NSDictionary> dictionaryWithObjectsAndKeys(const Objects&... objectsAndKeys) {
    return alternating(std::array<NSObject*, sizeof...(Objects)>{objectsAndKeys...});
  }
  template <class... Objects>
  static Ref<NSDictionary> initWithObjectsAndKeys(const Objects&... objectsAndKeys) {
    return dictionaryWithObjectsAndKeys(objectsAndKeys...);
  }

  /// The entries in braces, key first: `NSDictionary::of({{"name"_ns, ada}})`. Of equal keys the
  /// last counts.
  static Ref<NSDictionary> of(std::initializer_list<Entry> entries);

  /// Of any range of pairs of Objects or Refs, the key first, such as a
  /// `std::map<Ref<NSString>, Ref<NSNumber>>` or another Dictionary.
  template <std::ranges::input_range R>
  static Ref<NSDictionary> fromRange(R&& pairs) {
    return with(tableOfRange(pairs));
  }

  /// The Dictionary in a property-list file, in any format; nil when it cannot be read or holds
  /// something else. NSPropertyListSerialization says why.
  static Ref<NSDictionary> dictionaryWithContentsOfFile(NSString* path);
  static Ref<NSDictionary> initWithContentsOfFile(NSString* path);

  /// Writes an XML property list, if `atomically` all or nothing. False when that fails or a key or
  /// value has no place in one.
  bool writeToFile_atomically(NSString* path, bool atomically) const;

  /// How many entries. Constant time.
  virtual std::uint32_t count() const;

  /// The Object under a key equal to `key`; nil when there is none, and for nil. Constant time.
  virtual Ref<NSObject> objectForKey(NSObject* key) const;

  /// The keys, in the order they were added. The enumerator keeps the Dictionary alive. Its next
  /// step raises NSGenericException once a key was added or removed; putting another Object under
  /// a key that is there disturbs nobody.
  virtual Ref<NSEnumerator> keyEnumerator() const;

  /// The Objects, in the order of the keys; see `keyEnumerator`.
  Ref<NSEnumerator> objectEnumerator() const;

  /// The keys and the Objects, both in the order the keys were added.
  Ref<NSArray> allKeys() const;
  Ref<NSArray> allValues() const;

  /// Copies the Objects and the keys to buffers with room for all, borrowed from this Dictionary;
  /// either may be null. Raises NSInvalidArgumentException for what a Dictionary of the application
  /// made just for the call, which nobody would keep alive.
  void getObjects_andKeys(NSObject** objects, NSObject** keys) const;

  /// The keys under which Objects equal to `object` are kept. Linear.
  Ref<NSArray> allKeysForObject(NSObject* object) const;

  /// For each of `keys` the Object under it, or `marker` in its place, which must not be nil when
  /// it is needed.
  Ref<NSArray> objectsForKeys_notFoundMarker(NSArray* keys, NSObject* marker) const;

  /// The keys, ordered by what `comparator` (such as `compare:`) answers for their Objects. Equal
  /// ones keep their order.
  Ref<NSArray> keysSortedByValueUsingSelector(Selector comparator) const;
  Ref<NSArray> keysSortedByValueUsingComparator(
      const std::function<NSComparisonResult(NSObject*, NSObject*)>& comparator) const;

  /// The same keys, each with what `transform(key, object)` answers, asked in order. Looks no key
  /// up. Raises NSInvalidArgumentException for nil.
  Ref<NSDictionary> dictionaryByMappingObjects(
      const std::function<Ref<NSObject>(NSObject* key, NSObject* object)>& transform) const;

  /// The keys for which `test(key, object)` is true, asked in order.
  Ref<NSSet> keysOfEntriesPassingTest(
      const std::function<bool(NSObject* key, NSObject* object)>& test) const;

  /// Of a Dictionary of file attributes: the Date under "NSFileModificationDate"; nil when there is
  /// none.
  Ref<NSDate> fileModificationDate() const;

  /// The same keys with equal Objects. False for nil. Those that contain themselves are compared as
  /// the endless structures they describe; nesting deeper than 1000 levels raises
  /// NSInternalInconsistencyException.
  bool isEqualToDictionary(NSDictionary* other) const;
  bool isEqual(NSObject* other) const override;

  /// Depends on the count alone, so that Dictionaries that contain themselves have one.
  std::size_t hash() const override;

  /// "{\n    key = value;\n}", entries in order.
  Ref<NSString> description() const override;

  /// An immutable Dictionary with the same entries: this very one unless it is mutable or of a
  /// class of the application.
  Ref<NSObject> copy() const override;

  /// An NSMutableDictionary with the same entries.
  Ref<NSObject> mutableCopy() const override;

  /// The entry under `key`. A key that begins with "@" names a property of the Dictionary itself:
  /// "@count".
  Ref<NSObject> valueForKey(NSString* key) override;

  /// A walk over keys and Objects in order; the rules of `keyEnumerator` hold.
  Iterator begin() const;
  std::default_sentinel_t end() const noexcept { return {}; }

 protected:
  /// How the entries are kept.
  using Table = detail::DictionaryTable;

  /// Of a table that was filled by the functions below.
  explicit NSDictionary(Table&& table) noexcept;

  /// Whether the primitives are this library's own, so that `table_` says all there is.
  bool usesTable() const noexcept;

  /// What the ways of making a Dictionary come to, mutable or not: `put` copies the key, and in all
  /// of them the last of equal keys counts.
  static void put(Table& table, NSObject* object, NSObject* key);
  static Table tableOf(NSObject* const* objects, NSObject* const* keys, std::uint32_t count);
  static Table tableOf(NSArray* objects, NSArray* keys);
  static Table tableOf(const NSDictionary* other);
  static Table tableOfCopies(const NSDictionary* other);
  static Table tableByMapping(
      const NSDictionary* other,
      const std::function<Ref<NSObject>(NSObject* key, NSObject* object)>& transform);
  static Table tableOf(std::initializer_list<Entry> entries);
  static Table tableOfAlternating(NSObject* const* objectsAndKeys, std::size_t count);
  template <class R>
  static Table tableOfRange(R& pairs) {
    Table table;
    for (auto&& [key, object] : pairs) put(table, object, key);
    return table;
  }

  /// The entries; unused by a class that keeps them elsewhere.
  Table table_;

 private:
  class TableEnumerator;
  class MappedEnumerator;

  static Ref<NSDictionary> with(Table&& table);

  template <class Use>
  void forEach(Use use) const;

  template <std::size_t N>
  static Ref<NSDictionary> alternating(const std::array<NSObject*, N>& objectsAndKeys) {
    return with(tableOfAlternating(objectsAndKeys.data(), N));
  }
};

/// Walks a Dictionary for range-based loops; keeps it alive.
class NSDictionary::Iterator {
 public:
  /// What ranges ask of an iterator.
  using iterator_concept = std::input_iterator_tag;
  using value_type = Pair;
  using difference_type = std::ptrdiff_t;

  /// At the end.
  Iterator() noexcept = default;

  /// What the walk has come to; valid until the next step.
  const Pair& operator*() const noexcept QZ_LIFETIME_BOUND { return current_; }
  const Pair* operator->() const noexcept QZ_LIFETIME_BOUND { return &current_; }

  /// Raises NSGenericException when keys were added or removed since the walk began.
  Iterator& operator++() {
    advance();
    return *this;
  }
  void operator++(int) { advance(); }

  friend bool operator==(const Iterator& it, std::default_sentinel_t) noexcept {
    return !it.current_.key;
  }

 private:
  friend class NSDictionary;

  explicit Iterator(const NSDictionary* dictionary);
  void advance();

  Ref<NSDictionary> dictionary_;
  Ref<NSEnumerator> keys_;  // of a Dictionary that keeps its entries elsewhere
  detail::HashCursor cursor_;
  Pair current_;
};

/// For `for (const auto& [key, value] : dictionary)` over a Ref or a pointer; nil has no entries.
inline NSDictionary::Iterator begin(const NSDictionary* dictionary) {
  return dictionary != nullptr ? dictionary->begin() : NSDictionary::Iterator();
}
inline std::default_sentinel_t end(const NSDictionary*) noexcept { return {}; }

}  // namespace qz

#pragma GCC visibility pop
