/// @file
/// Arrays that change.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <ranges>
#include <span>
#include <type_traits>
#include <utility>

#include "Platform/Collections/NSArray.h"

#pragma GCC visibility push(default)

namespace qz {

/// An Array whose elements can be added, removed, replaced and sorted in place.
///
///     Ref<NSMutableArray> names = NSMutableArray::arrayWithObjects({"Grace"_ns, "Ada"_ns});
///     names->addObject("Barbara"_ns);
///     names->sortUsingSelector("compare:"_sel);
///
/// A class derived from NSMutableArray either uses the storage it inherits, or overrides `count`,
/// `objectAtIndex`, `insertObject_atIndex`, `removeObjectAtIndex` and
/// `replaceObjectAtIndex_withObject` and calls `didChange` in the last three: everything else works
/// through these.
///
/// Elements that are removed are let go of once the Array is in order again, so what their end
/// brings about may use the Array. Changing it during a walk over it makes the walk's next step
/// raise NSGenericException. An operation that raises has not changed the Array. One MutableArray
/// may be read by several threads, or used by one that changes it.
///
/// Nil and indices out of range raise as they do for NSArray; a nil Array stands for an empty one.
class NSMutableArray : public Derives<NSMutableArray, NSArray> {
 public:
  static void describe(ClassDescription<NSMutableArray>& is);

  /// An empty Array; for derived classes too.
  NSMutableArray() noexcept = default;
  ~NSMutableArray() override;

  /// Empty.
  static Ref<NSMutableArray> array();

  /// Empty, with room for `capacity` elements; a hint.
  static Ref<NSMutableArray> arrayWithCapacity(std::uint32_t capacity);
  static Ref<NSMutableArray> initWithCapacity(std::uint32_t capacity) {
    return arrayWithCapacity(capacity);
  }

  /// The counterparts of NSArray's, answering an Array of the caller's own.
  static Ref<NSMutableArray> arrayWithObject(NSObject* object);
  static Ref<NSMutableArray> arrayWithObjects(std::initializer_list<NSObject*> objects);
  static Ref<NSMutableArray> arrayWithObjects_count(NSObject* const* objects, std::uint32_t count);
  static Ref<NSMutableArray> initWithObjects_count(NSObject* const* objects, std::uint32_t count);
  static Ref<NSMutableArray> fromSpan(std::span<NSObject* const> objects);
  template <std::ranges::input_range R>
  requires std::is_convertible_v<std::ranges::range_reference_t<R>,
                                 NSObject*> static Ref<NSMutableArray>
  fromRange(R&& objects) {
    auto builder = detail::builderOf(std::forward<R>(objects));
    return detail::finishMutable(builder);
  }

  /// A new Array with the elements of `other`.
  static Ref<NSMutableArray> arrayWithArray(NSArray* other);
  static Ref<NSMutableArray> initWithArray(NSArray* other) { return arrayWithArray(other); }

  /// As those of NSArray; nil as they are.
  static Ref<NSMutableArray> arrayWithContentsOfFile(NSString* path);
  static Ref<NSMutableArray> initWithContentsOfFile(NSString* path);

  // The primitives.

  std::uint32_t count() const override;
  Ref<NSObject> objectAtIndex(std::uint32_t index) const override;

  /// Puts `object` before the element at `index`, or at the end when `index` is the count; and
  /// takes the element there out. Linear in the number of elements behind it.
  virtual void insertObject_atIndex(NSObject* object, std::uint32_t index);
  virtual void removeObjectAtIndex(std::uint32_t index);

  /// Puts `object` in the place of the element at `index`.
  virtual void replaceObjectAtIndex_withObject(std::uint32_t index, NSObject* object);

  std::optional<std::span<NSObject* const>> contiguous() const override;
  const std::uint32_t* mutationCounter() const override { return &changes_; }

  // Adding.

  /// Appends; constant time on average.
  virtual void addObject(NSObject* object);
  void addObjectsFromArray(NSArray* other);

  /// Puts the elements of `other` before the element at `index`.
  void insertObjectsFromArray_atIndex(NSArray* other, std::uint32_t index);

  // Removing.

  /// Raises NSRangeException when there is none.
  virtual void removeLastObject();

  /// Removes every element that `object` is equal to (`removeObject`), or that it is. Nothing for
  /// nil. Linear.
  void removeObject(NSObject* object);
  void removeObjectIdenticalTo(NSObject* object);
  void removeObject_inRange(NSObject* object, NSRange range);
  void removeObjectIdenticalTo_inRange(NSObject* object, NSRange range);

  /// Removes every element that is equal to one of `others`. Linear in both.
  void removeObjectsInArray(NSArray* others);

  /// Removes the elements of `range`, and all there are.
  void removeObjectsInRange(NSRange range);
  void removeAllObjects();

  /// Keeps only the elements for which the predicate, or the function, is true; asks about all of
  /// them first. A test that changes this Array makes it raise NSGenericException.
  void filterUsingPredicate(NSPredicate* predicate);
  void filterUsingPredicate(const std::function<bool(NSObject*)>& test);

  // Replacing.

  /// Each takes the other's place. Raises NSRangeException.
  void exchangeObjectAtIndex_withObjectAtIndex(std::uint32_t first, std::uint32_t second);

  /// Makes the elements those of `other`, which may be this Array.
  void setArray(NSArray* other);

  /// Puts the elements of `other` where those of `range` are; the counts may differ.
  void replaceObjectsInRange_withObjectsFromArray(NSRange range, NSArray* other);

  /// Puts the elements of `other` in `otherRange` there.
  void replaceObjectsInRange_withObjectsFromArray_range(NSRange range, NSArray* other,
                                                        NSRange otherRange);

  /// Sorting in place, as NSArray's sorted Arrays. A comparison that changes this Array makes the
  /// sort raise NSGenericException.
  void sortUsingFunction_context(NSSortFunction compare, void* context);
  void sortUsingSelector(Selector selector);
  void sortUsingDescriptors(NSArray* descriptors);
  template <class F>
  requires std::is_invocable_r_v<NSComparisonResult, F&, NSObject*, NSObject*>
  void sortUsingComparator(F&& compare) {
    sortUsingFunction_context(&callComparator<std::remove_reference_t<F>>,
                              const_cast<void*>(static_cast<const void*>(std::addressof(compare))));
  }

 protected:
  /// Notes a change, for the walks that are under way.
  void didChange() noexcept { ++changes_; }

  /// How the operations on several elements reach an Array that keeps its elements elsewhere: one
  /// primitive after the other, unless it has a better way. `objects` are kept by the caller, the
  /// range and the ascending indices have been checked.
  virtual void replaceElementsInRange(NSRange range, std::span<NSObject* const> objects);
  virtual void removeElementsAtIndexes(std::span<const std::uint32_t> indexes);
  virtual void replaceElementsAtIndexes(std::span<const std::uint32_t> indexes,
                                        std::span<NSObject* const> objects);

 private:
  friend Ref<NSMutableArray> detail::finishMutable(detail::ArrayBuilder& builder);

  bool usesOwnStorage() const noexcept;
  void reserve(std::size_t capacity);
  void replaceRange(NSRange range, detail::ArrayBuilder& owned);
  template <class Test>
  void removeWhere(NSRange range, const Test& test);
  template <class Sort>
  void sortWith(const Sort& sort);

  std::uint32_t changes_ = 0;
  std::uint32_t count_ = 0;
  std::uint32_t capacity_ = 0;
  NSObject** elements_ = nullptr;
};

}  // namespace qz

#pragma GCC visibility pop
