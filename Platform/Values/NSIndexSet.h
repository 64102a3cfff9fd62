/// @file
/// Index sets: which elements of an Array are meant.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSRange.h"

#pragma GCC visibility push(default)

namespace qz {

/// A set of indices, kept as ascending ranges that neither meet nor touch.
///
///     auto some = NSIndexSet::indexSetWithIndexes({2, 3, 7});
///     some->containsIndex(3);                       // true
///     for (std::uint32_t index : some->indexes()) …  // 2, 3, 7
///
/// Immutable; any thread. An index below NSNotFound can be a member; others raise NSRangeException.
class NSIndexSet final : public Derives<NSIndexSet, NSObject> {
 public:
  static void describe(ClassDescription<NSIndexSet>& is);

  /// The empty set.
  NSIndexSet() noexcept = default;
  static Ref<NSIndexSet> indexSet();

  /// Of one index, and of those of a range.
  static Ref<NSIndexSet> indexSetWithIndex(std::uint32_t index);
  static Ref<NSIndexSet> indexSetWithIndexesInRange(NSRange range);

  /// Of indices in any order; what stands twice counts once.
  static Ref<NSIndexSet> indexSetWithIndexes(std::span<const std::uint32_t> indexes);
  static Ref<NSIndexSet> indexSetWithIndexes(std::initializer_list<std::uint32_t> indexes);

  /// How many indices. Constant time.
  std::uint32_t count() const noexcept { return count_; }

  /// The least and the greatest; NSNotFound when there is none.
  std::uint32_t firstIndex() const noexcept;
  std::uint32_t lastIndex() const noexcept;

  /// The nearest member above and below `index`; NSNotFound when there is none. Logarithmic.
  std::uint32_t indexGreaterThanIndex(std::uint32_t index) const noexcept;
  std::uint32_t indexLessThanIndex(std::uint32_t index) const noexcept;

  /// Logarithmic in the number of ranges.
  bool containsIndex(std::uint32_t index) const noexcept;

  /// All members, ascending.
  std::vector<std::uint32_t> indexes() const;

  /// The members as the fewest ranges, ascending; valid as long as this set.
  std::span<const NSRange> ranges() const noexcept QZ_LIFETIME_BOUND { return ranges_; }

  /// The same members. False for nil.
  bool isEqualToIndexSet(NSIndexSet* other) const;
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

  /// "2-3 7"; empty for the empty set.
  Ref<NSString> description() const override;

  /// This very set.
  Ref<NSObject> copy() const override;

 private:
  void append(NSRange range);

  std::uint32_t count_ = 0;
  std::vector<NSRange> ranges_;
};

}  // namespace qz

#pragma GCC visibility pop
