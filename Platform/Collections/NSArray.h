/// @file
/// Arrays: ordered lists of Objects.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <ranges>
#include <span>
#include <type_traits>
#include <vector>

#include "Platform/Collections/detail/ArrayIterator.h"
#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSRange.h"

#pragma GCC visibility push(default)

namespace qz {

class NSEnumerator;
class NSMutableArray;
class NSPredicate;

/// Orders two elements; `context` is what the sort was given.
using NSSortFunction = NSComparisonResult (*)(NSObject* a, NSObject* b, void* context);

/// An ordered list of Objects, none of them nil.
///
///     Ref<NSArray> names = NSArray::arrayWithObjects({"Ada"_ns, "Grace"_ns});
///     for (NSString* name : elements<NSString>(names)) greet(name);
///     Ref<NSArray> sorted = names->sortedArrayUsingSelector("compare:"_sel);
///
/// A class derived from NSArray overrides `count` and `objectAtIndex`, and is an Array everywhere;
/// everything else works through these two. Where its `objectAtIndex` answers nil, whatever walks
/// or copies the Array meets Null. Arrays made here are immutable, take 24 bytes and 8 for
/// each element in one block, and may be used from any number of threads; NSMutableArray says what
/// changes. What makes new Arrays answers immutable ones.
///
/// Where an Array is passed as an argument, nil stands for an empty one. A nil element raises
/// NSInvalidArgumentException, and so does a nil function, predicate or test.
class NSArray : public Derives<NSArray, NSObject> {
 public:
  /// Walks over `NSObject*`. A step raises NSGenericException when the Array has been changed since
  /// the walk began.
  using iterator = detail::ArrayIterator;

  static void describe(ClassDescription<NSArray>& is);

  /// An empty Array; for derived classes. Prefer `array()`.
  NSArray() noexcept = default;

  /// The empty Array, always the same.
  static Ref<NSArray> array();

  /// Of one element, of the elements listed, and of `count` elements at `objects`.
  static Ref<NSArray> arrayWithObject(NSObject* object);
  static Ref<NSArray> arrayWithObjects(std::initializer_list<NSObject*> objects);
  static Ref<NSArray> arrayWithObjects_count(NSObject* const* objects, std::uint32_t count);
  static Ref<NSArray> initWithObjects_count(NSObject* const* objects, std::uint32_t count);
  static Ref<NSArray> fromSpan(std::span<NSObject* const> objects);

  /// Of any range of Objects or Refs, such as a `std::vector<Ref<NSString>>`.
  template <std::ranges::input_range R>
  requires std::is_convertible_v<std::ranges::range_reference_t<R>, NSObject*> static Ref<NSArray>
  fromRange(R&& objects);

  /// The elements of `other` as they are now; `other` itself when it is immutable.
  static Ref<NSArray> arrayWithArray(NSArray* other);
  static Ref<NSArray> initWithArray(NSArray* other) { return arrayWithArray(other); }

  /// The Array in a property-list file, in any format; nil when it cannot be read or holds
  /// something else. NSPropertyListSerialization says why.
  static Ref<NSArray> arrayWithContentsOfFile(NSString* path);
  static Ref<NSArray> initWithContentsOfFile(NSString* path);

  /// Writes an XML property list, if `atomically` all or nothing. False when that fails or an
  /// element has no place in one.
  bool writeToFile_atomically(NSString* path, bool atomically) const;

  // The primitives.

  /// How many elements.
  virtual std::uint32_t count() const;

  /// The element at `index`. Raises NSRangeException for an index not below the count.
  virtual Ref<NSObject> objectAtIndex(std::uint32_t index) const;

  /// The elements where they lie, for an Array that has them side by side; no value for one that
  /// has not, whose elements `objectAtIndex` makes. Valid until the Array changes or goes.
  virtual std::optional<std::span<NSObject* const>> contiguous() const;

  /// A number that is another one after each change; null never. It lives as long as the Array.
  virtual const std::uint32_t* mutationCounter() const;

  // Reading.

  /// The last element; nil for an empty Array.
  Ref<NSObject> lastObject() const;

  /// Copies the elements to `buffer`, which has room for all, borrowed from this Array. Raises
  /// NSInvalidArgumentException for an element that this Array made just for the call, which
  /// nobody would keep alive: use `toVector` for computed Arrays.
  void getObjects(NSObject** buffer) const;

  /// All elements, owned.
  std::vector<Ref<NSObject>> toVector() const;

  /// Walks the elements forwards or backwards, keeping this Array alive. An Array that changes
  /// meanwhile makes the next step raise NSGenericException.
  Ref<NSEnumerator> objectEnumerator() const;
  Ref<NSEnumerator> reverseObjectEnumerator() const;

  /// For `for (NSObject* each : array)`. The element is borrowed: a loop that takes it out of the
  /// Array keeps a Ref if it goes on using it. An Array that changes meanwhile makes the next step
  /// raise NSGenericException.
  iterator begin() const { return iterator::first(this); }
  iterator end() const { return iterator::last(this); }

  /// Whether an element is equal to `object`; false for nil. Linear.
  bool containsObject(NSObject* object) const;

  /// The first index whose element is `object` or is equal to it (`object` is asked); NSNotFound
  /// when there is none, and for nil. Linear.
  std::uint32_t indexOfObject(NSObject* object) const;
  std::uint32_t indexOfObjectIdenticalTo(NSObject* object) const;

  /// The same among the elements of `range`; the index counts from the start of the Array. Raise
  /// NSRangeException.
  std::uint32_t indexOfObject_inRange(NSObject* object, NSRange range) const;
  std::uint32_t indexOfObjectIdenticalTo_inRange(NSObject* object, NSRange range) const;

  /// The first index, and all indices in order, for which `test(element, index)` is true.
  std::uint32_t indexOfObjectPassingTest(
      const std::function<bool(NSObject*, std::uint32_t)>& test) const;
  std::vector<std::uint32_t> indexesOfObjectsPassingTest(
      const std::function<bool(NSObject*, std::uint32_t)>& test) const;

  /// This Array's first element that `other` contains; nil when they have none in common.
  Ref<NSObject> firstObjectCommonWithArray(NSArray* other) const;

  /// The elements' descriptions (Strings as they are) with `separator` between them.
  Ref<NSString> componentsJoinedByString(NSString* separator) const;

  /// Sends `selector` to each element, in order. An element that changes this Array makes the next
  /// step raise NSGenericException.
  void makeObjectsPerformSelector(Selector selector) const;
  void makeObjectsPerformSelector_withObject(Selector selector, NSObject* object) const;

  // New Arrays.

  /// The elements of `range`. Raises NSRangeException.
  Ref<NSArray> subarrayWithRange(NSRange range) const;

  /// The elements, with more behind them.
  Ref<NSArray> arrayByAddingObject(NSObject* object) const;
  Ref<NSArray> arrayByAddingObjectsFromArray(NSArray* other) const;

  /// The elements for which the predicate, or the function, is true, in order.
  Ref<NSArray> filteredArrayUsingPredicate(NSPredicate* predicate) const;
  Ref<NSArray> filteredArrayUsingPredicate(const std::function<bool(NSObject*)>& test) const;

  /// The elements sorted: by a function, by a Selector that the first element is sent with the
  /// second, by descriptors (NSSortDescriptor.h; earlier ones weigh more), or by a lambda. Stable;
  /// about n·log2(n) comparisons. What the comparison throws passes through.
  Ref<NSArray> sortedArrayUsingFunction_context(NSSortFunction compare, void* context) const;
  Ref<NSArray> sortedArrayUsingSelector(Selector selector) const;
  Ref<NSArray> sortedArrayUsingDescriptors(NSArray* descriptors) const;
  template <class F>
  requires std::is_invocable_r_v<NSComparisonResult, F&, NSObject*, NSObject*> Ref<NSArray>
  sortedArrayUsingComparator(F&& compare)
  const {
    return sortedArrayUsingFunction_context(
        &callComparator<std::remove_reference_t<F>>,
        const_cast<void*>(static_cast<const void*>(std::addressof(compare))));
  }

  // As an Object.

  /// The same count, and equal elements in order. Cyclic Arrays are compared as the endless
  /// structures they describe; nesting deeper than 1000 levels raises
  /// NSInternalInconsistencyException.
  bool isEqualToArray(NSArray* other) const;
  bool isEqual(NSObject* other) const override;

  /// From the count and some of the elements. Constant time; elements that are Arrays add their
  /// count only, so cyclic ones have a hash.
  std::size_t hash() const override;

  /// "(", a line for each element, ")"; see detail/DescriptionPrinter.h.
  Ref<NSString> description() const override;

  /// The elements as they are now; this very Array when it is one of those made here.
  Ref<NSObject> copy() const override;

  /// An NSMutableArray with the same elements.
  Ref<NSObject> mutableCopy() const override;

  /// The Array of each element's value, with Null for nil. A key that begins with "@" is an
  /// operator or names a property of the Array itself: "@sum.price", "@lastObject.name"; what
  /// stands before it is read first: "lines.@unionOfArrays.price". detail/CollectionOperators.h
  /// lists them.
  Ref<NSObject> valueForKey(NSString* key) override;
  Ref<NSObject> valueForKeyPath(NSString* keyPath) override;

  /// Sets the value on each element.
  void setValue_forKey(NSObject* value, NSString* key) override;
  void setValue_forKeyPath(NSObject* value, NSString* keyPath) override;

 protected:
  /// For one that is never destroyed, such as the empty Array.
  constexpr explicit NSArray(ImmortalTag tag) noexcept : Derives(tag) {}

  /// An NSSortFunction that calls the `F` at `context`.
  template <class F>
  static NSComparisonResult callComparator(NSObject* a, NSObject* b, void* context) {
    return (*static_cast<F*>(context))(a, b);
  }
};

/// For `for (NSObject* each : array)` over a Ref or a pointer, such as an operation's answer; nil
/// has no elements.
inline detail::ArrayIterator begin(const NSArray* array) {
  return detail::ArrayIterator::first(array);
}
inline detail::ArrayIterator end(const NSArray* array) {
  return detail::ArrayIterator::last(array);
}

/// The elements of an Array as `T`s; see `elements`.
template <class T>
class Elements {
 public:
  /// Walks over `T*`; as that of NSArray.
  using iterator = detail::TypedArrayIterator<T>;

  /// Keeps `array` alive; nil has no elements.
  explicit Elements(const NSArray* array) : array_(array) {}

  /// The first element, and the end.
  iterator begin() const { return iterator(detail::ArrayIterator::first(array_)); }
  iterator end() const { return iterator(detail::ArrayIterator::last(array_)); }

 private:
  Ref<const NSArray> array_;
};

/// The elements of `array`, which it keeps alive, as `T*`; nil has none. An element of another
/// class raises NSInvalidArgumentException.
template <class T>
Elements<T> elements(const NSArray* array) {
  return Elements<T>(array);
}

}  // namespace qz

#pragma GCC visibility pop

#include "Platform/Collections/detail/ArrayBuilder.h"  // defines NSArray::fromRange
