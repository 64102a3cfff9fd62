/// @file
/// Sets that count how often each member was added.
#pragma once

#include <initializer_list>
#include <ranges>
#include <type_traits>
#include <utility>

#include "Platform/Collections/NSMutableSet.h"

#pragma GCC visibility push(default)

namespace qz {

/// A mutable Set that knows how often each member was added, less how often it was removed.
///
///     auto words = make<NSCountedSet>();
///     for (NSString* word : elements<NSString>(text)) words->addObject(word);
///     words->countForObject("the"_ns);
///
/// Everything that a Set answers looks at the distinct members only: `count`, enumeration, and
/// equality. `addObject`, `unionSet` and `addObjectsFromArray` add one to the count of each Object
/// they meet; `removeObject` and `minusSet` take one away, and the member goes with the last. The
/// other removals take a member out whatever its count. Counts stay at 4294967295.
class NSCountedSet final : public Derives<NSCountedSet, NSMutableSet> {
 public:
  static void describe(ClassDescription<NSCountedSet>& is);

  /// An empty Set.
  NSCountedSet() noexcept = default;

  /// The constructors of NSSet; equal Objects add up, and so do the counts of a counted Set.
  static Ref<NSCountedSet> set();
  static Ref<NSCountedSet> setWithObject(NSObject* object);
  static Ref<NSCountedSet> setWithObjects(std::initializer_list<NSObject*> objects);
  static Ref<NSCountedSet> setWithObjects_count(NSObject* const* objects, std::uint32_t count);
  static Ref<NSCountedSet> initWithObjects_count(NSObject* const* objects, std::uint32_t count);
  static Ref<NSCountedSet> setWithArray(NSArray* array);
  static Ref<NSCountedSet> initWithArray(NSArray* array);
  static Ref<NSCountedSet> setWithSet(NSSet* other);
  static Ref<NSCountedSet> initWithSet(NSSet* other);
  static Ref<NSCountedSet> initWithSet_copyItems(NSSet* other, bool copiesItems);
  template <std::ranges::input_range R>
  requires std::is_convertible_v<std::ranges::range_reference_t<R>,
                                 NSObject*> static Ref<NSCountedSet>
  fromRange(R&& objects) {
    auto made = set();
    for (auto&& object : objects) made->addObject(object);
    return made;
  }
  static Ref<NSCountedSet> setWithCapacity(std::uint32_t capacity);
  static Ref<NSCountedSet> initWithCapacity(std::uint32_t capacity);

  /// The count of the member equal to `object`; 0 when there is none, and for nil.
  std::uint32_t countForObject(NSObject* object) const;

  void addObject(NSObject* object) override;
  void removeObject(NSObject* object) override;

  /// An NSCountedSet with the same members and counts; `mutableCopy` as well.
  Ref<NSObject> copy() const override;
  Ref<NSObject> mutableCopy() const override;

  /// "{(\n    member [2],\n    member [1]\n)}".
  Ref<NSString> description() const override;

 private:
  static Ref<NSCountedSet> with(Table&& table);

  explicit NSCountedSet(Table&& table) noexcept : Derives(std::move(table)) {}
};

}  // namespace qz

#pragma GCC visibility pop
