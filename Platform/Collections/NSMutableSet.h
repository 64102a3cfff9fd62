/// @file
/// Sets that change.
#pragma once

#include <initializer_list>
#include <ranges>
#include <type_traits>
#include <utility>

#include "Platform/Collections/NSSet.h"

#pragma GCC visibility push(default)

namespace qz {

/// A Set whose members can be added and removed, each in constant time.
///
///     auto seen = make<NSMutableSet>();
///     seen->addObject(name);
///
/// A member that is removed and added again goes to the end. A subclass that keeps its members
/// elsewhere overrides `addObject` and `removeObject` too. One thread at a time: what changes must
/// not be read meanwhile.
class NSMutableSet : public Derives<NSMutableSet, NSSet> {
 public:
  static void describe(ClassDescription<NSMutableSet>& is);

  /// An empty Set.
  NSMutableSet() noexcept = default;

  /// The constructors of NSSet, for a Set that can change.
  static Ref<NSMutableSet> set();
  static Ref<NSMutableSet> setWithObject(NSObject* object);
  static Ref<NSMutableSet> setWithObjects(std::initializer_list<NSObject*> objects);
  static Ref<NSMutableSet> setWithObjects_count(NSObject* const* objects, std::uint32_t count);
  static Ref<NSMutableSet> initWithObjects_count(NSObject* const* objects, std::uint32_t count);
  static Ref<NSMutableSet> setWithArray(NSArray* array);
  static Ref<NSMutableSet> initWithArray(NSArray* array);
  static Ref<NSMutableSet> setWithSet(NSSet* other);
  static Ref<NSMutableSet> initWithSet(NSSet* other);
  static Ref<NSMutableSet> initWithSet_copyItems(NSSet* other, bool copiesItems);
  template <std::ranges::input_range R>
  requires std::is_convertible_v<std::ranges::range_reference_t<R>,
                                 NSObject*> static Ref<NSMutableSet>
  fromRange(R&& objects) {
    return with(tableOfRange(objects));
  }

  /// An empty Set with room for `capacity` members; a hint.
  static Ref<NSMutableSet> setWithCapacity(std::uint32_t capacity);
  static Ref<NSMutableSet> initWithCapacity(std::uint32_t capacity);

  /// Adds `object`, unless there is an equal member. Raises NSInvalidArgumentException for nil.
  virtual void addObject(NSObject* object);

  /// Removes the member equal to `object`; nothing when there is none, and for nil.
  virtual void removeObject(NSObject* object);

  /// Removes everything and gives the memory back.
  void removeAllObjects();

  /// Adds each one, as `addObject` does.
  void addObjectsFromArray(NSArray* array);
  void unionSet(NSSet* other);

  /// Removes the members that are in `other`, as `removeObject` does.
  void minusSet(NSSet* other);

  /// Removes the members that are not in `other`.
  void intersectSet(NSSet* other);

  /// Removes the members that do not meet the condition, asked in order. Raises
  /// NSInvalidArgumentException for nil.
  void filterUsingPredicate(NSPredicate* predicate);

  /// Has the members of `other` in place of its own.
  void setSet(NSSet* other);

 protected:
  /// Of a table that was filled already.
  explicit NSMutableSet(Table&& table) noexcept : Derives(std::move(table)) {}

  /// Takes the member equal to `object` out of the table, whatever its count.
  void removeFromTable(NSObject* object);

 private:
  friend class NSSet;  // makes mutable copies

  static Ref<NSMutableSet> with(Table&& table);
};

}  // namespace qz

#pragma GCC visibility pop
