/// @file
/// Sets: collections that hold each of their members once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <ranges>
#include <type_traits>

#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Collections/detail/HashTable.h"
#include "Platform/Runtime/Derives.h"

#pragma GCC visibility push(default)

namespace qz {

class NSPredicate;

/// A collection without duplicates that keeps the order in which its members were added.
///
///     Ref<NSSet> primes = NSSet::setWithObjects({two, three, five});
///     if (primes->containsObject(NSNumber::of(3))) …
///     for (NSObject* prime : primes) use(prime);
///
/// Members are told apart by `isEqual:` and `hash`, and must not change in what these answer. Of
/// several equal Objects the first becomes the member. Nil as a member raises
/// NSInvalidArgumentException; nil as another Set or an Array counts as empty. Looking up, adding
/// and removing take constant time.
///
/// A subclass that keeps its members elsewhere overrides `count`, `member` and `objectEnumerator`;
/// everything else goes through these three. An immutable Set may be read from any number of
/// threads.
class NSSet : public Derives<NSSet, NSObject> {
 public:
  class Iterator;

  static void describe(ClassDescription<NSSet>& is);

  /// An empty Set.
  NSSet() noexcept;
  ~NSSet() override;

  /// The members given; of equal ones the first is kept. Nil among them raises
  /// NSInvalidArgumentException, a nil Array counts as empty.
  static Ref<NSSet> set();
  static Ref<NSSet> setWithObject(NSObject* object);
  static Ref<NSSet> setWithObjects(std::initializer_list<NSObject*> objects);
  static Ref<NSSet> setWithObjects_count(NSObject* const* objects, std::uint32_t count);
  static Ref<NSSet> initWithObjects_count(NSObject* const* objects, std::uint32_t count);
  static Ref<NSSet> setWithArray(NSArray* array);
  static Ref<NSSet> initWithArray(NSArray* array);

  /// The members of `other` as they are now.
  static Ref<NSSet> setWithSet(NSSet* other);
  static Ref<NSSet> initWithSet(NSSet* other);

  /// The members of `other`, or a `copy` of each.
  static Ref<NSSet> initWithSet_copyItems(NSSet* other, bool copiesItems);

  /// Of any range of Objects or Refs.
  template <std::ranges::input_range R>
  requires std::is_convertible_v<std::ranges::range_reference_t<R>, NSObject*> static Ref<NSSet>
  fromRange(R&& objects) {
    return with(tableOfRange(objects));
  }

  /// How many members. Constant time.
  virtual std::uint32_t count() const;

  /// The member equal to `object`; nil when there is none, and for nil. Constant time.
  virtual Ref<NSObject> member(NSObject* object) const;

  /// The members, in the order they were added. The enumerator keeps the Set alive. Its next step
  /// raises NSGenericException once a member was added or removed.
  virtual Ref<NSEnumerator> objectEnumerator() const;

  /// Whether there is a member equal to `object`; false for nil. Constant time.
  bool containsObject(NSObject* object) const;

  /// The member that was added first; nil for an empty Set.
  Ref<NSObject> anyObject() const;

  /// The members, in order.
  Ref<NSArray> allObjects() const;

  /// The members, sorted by descriptors; see NSArray's `sortedArrayUsingDescriptors`.
  Ref<NSArray> sortedArrayUsingDescriptors(NSArray* descriptors) const;

  /// Sends `selector` to each member, in order.
  void makeObjectsPerformSelector(Selector selector) const;
  void makeObjectsPerformSelector_withObject(Selector selector, NSObject* object) const;

  /// Whether every member is one of `other` too.
  bool isSubsetOfSet(NSSet* other) const;

  /// Whether there is a member that is one of `other` too.
  bool intersectsSet(NSSet* other) const;

  /// The members and `object`, or those of `other`.
  Ref<NSSet> setByAddingObject(NSObject* object) const;
  Ref<NSSet> setByAddingObjectsFromSet(NSSet* other) const;
  Ref<NSSet> setByAddingObjectsFromArray(NSArray* other) const;

  /// The members that meet the condition, asked in order. Raises NSInvalidArgumentException for
  /// nil.
  Ref<NSSet> filteredSetUsingPredicate(NSPredicate* predicate) const;
  Ref<NSSet> objectsPassingTest(const std::function<bool(NSObject*)>& test) const;

  /// The same members, whatever their order, and counts in a counted Set. False for nil. Nesting
  /// deeper than 1000 levels raises NSInternalInconsistencyException.
  bool isEqualToSet(NSSet* other) const;
  bool isEqual(NSObject* other) const override;

  /// Depends on the count alone, so that Sets that contain themselves have one.
  std::size_t hash() const override;

  /// "{(\n    member,\n    member\n)}".
  Ref<NSString> description() const override;

  /// An immutable Set with the same members: this very one unless it is mutable or of a class of
  /// the application.
  Ref<NSObject> copy() const override;

  /// An NSMutableSet with the same members.
  Ref<NSObject> mutableCopy() const override;

  /// The Set of each member's value, nil left out. A key that begins with "@" names a property of
  /// the Set itself, or is an operator, as for an Array: "@count", "@max.age".
  Ref<NSObject> valueForKey(NSString* key) override;
  Ref<NSObject> valueForKeyPath(NSString* keyPath) override;

  /// Sets the value on each member.
  void setValue_forKey(NSObject* value, NSString* key) override;

  /// A walk over the members in order; the rules of `objectEnumerator` hold. The member at which
  /// the walk stands is kept alive.
  Iterator begin() const;
  std::default_sentinel_t end() const noexcept { return {}; }

 protected:
  /// How the members are kept.
  using Table = detail::SetTable;

  /// Of a table that was filled by the functions below.
  explicit NSSet(Table&& table) noexcept;

  /// Whether the primitives are this library's own, so that `table_` says all there is.
  bool usesTable() const noexcept;

  /// Adds `object` and answers its place, unless there is an equal member: null then.
  static detail::SetEntry* put(Table& table, NSObject* object);

  /// What the ways of making a Set come to.
  static Table tableOf(NSObject* const* objects, std::size_t count);
  static Table tableOf(const NSArray* array);
  template <class R>
  static Table tableOfRange(R& objects) {
    Table table;
    for (auto&& object : objects) put(table, object);
    return table;
  }
  static Table tableOfCopies(const NSSet* other);

  /// The members of `other`, their counts kept or all 1.
  enum class Counts : bool { Ones, Kept };
  static Table tableOf(const NSSet* other, Counts counts = Counts::Ones);

  /// The members; unused by a class that keeps them elsewhere.
  Table table_;

 private:
  class TableEnumerator;

  static Ref<NSSet> with(Table&& table);
};

/// Walks a Set for range-based loops; keeps it alive.
class NSSet::Iterator {
 public:
  /// What ranges ask of an iterator.
  using iterator_concept = std::input_iterator_tag;
  using value_type = NSObject*;
  using difference_type = std::ptrdiff_t;

  /// At the end.
  Iterator() noexcept = default;

  /// The member that the walk has come to; valid until the next step.
  NSObject* operator*() const noexcept QZ_LIFETIME_BOUND { return current_.get(); }

  /// Raises NSGenericException when members were added or removed since the walk began.
  Iterator& operator++() {
    advance();
    return *this;
  }
  void operator++(int) { advance(); }

  friend bool operator==(const Iterator& it, std::default_sentinel_t) noexcept {
    return !it.current_;
  }

 private:
  friend class NSSet;

  explicit Iterator(const NSSet* set);
  void advance();

  Ref<NSSet> set_;
  Ref<NSEnumerator> members_;  // of a Set that keeps its members elsewhere
  detail::HashCursor cursor_;
  Ref<NSObject> current_;
};

/// For `for (NSObject* each : set)` over a Ref or a pointer; nil has no members.
inline NSSet::Iterator begin(const NSSet* set) {
  return set != nullptr ? set->begin() : NSSet::Iterator();
}
inline std::default_sentinel_t end(const NSSet*) noexcept { return {}; }

}  // namespace qz

#pragma GCC visibility pop
