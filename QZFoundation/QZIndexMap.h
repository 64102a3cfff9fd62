/// @file
/// Permutation maps.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Derives.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// An immutable permutation of the indices 0 to count - 1: how a sequence was rearranged, so that
/// the same can be done to sequences kept beside it, combined with more, or undone.
///
/// Entry i is the source index of the element that stands at position i of the result: applying
/// map M to sequence S gives R with R[i] = S[M[i]].
///
///     Ref<QZIndexMap> bySize = sortMapUsingKeyPath(files, "size"_ns);
///     Ref<NSArray> names = arrayUsingMap(allNames, bySize);
///     Ref<QZIndexMap> back = bySize->inverseMap();
///
/// Entries are not checked when a map is made; operations that would leave the vector because of
/// one raise NSRangeException. Any thread.
class QZIndexMap : public Derives<QZIndexMap, NSObject> {
 public:
  static void describe(ClassDescription<QZIndexMap>& is);

  /// The empty map.
  QZIndexMap() noexcept = default;

  /// Entry i is i; no entries when `count` is below 1.
  static Ref<QZIndexMap> identityMapWithCount(std::int32_t count);

  /// Takes the elements at `indices` (Numbers) out of a sequence of `count` and puts them, in the
  /// order given, before the element that stands at position `destination`; beyond the end counts
  /// as the end. An index given twice, negative or not below `count` raises NSRangeException.
  static Ref<QZIndexMap> mapToMoveIndices_toIndex_count(NSArray* indices, std::int32_t destination,
                                                        std::int32_t count);

  /// Takes over `indices`, which must come from `malloc`; the map frees it (at once when `count` is
  /// negative, or not 0 with a null vector: those raise NSInvalidArgumentException).
  static Ref<QZIndexMap> initWithIndicesNoCopy_count(std::int32_t* indices, std::int32_t count);

  /// Copies `count` entries.
  static Ref<QZIndexMap> initWithIndices_count(const std::int32_t* indices, std::int32_t count);

  /// Entry i is the `intValue` of element i; an empty map for nil.
  static Ref<QZIndexMap> initWithIndices(NSArray* indices);

  /// How many entries.
  std::uint32_t count() const noexcept { return static_cast<std::uint32_t>(count_); }

  /// The entries, valid while the map lives; null when there are none.
  const std::int32_t* indices() const noexcept QZ_LIFETIME_BOUND { return indices_.get(); }

  /// The entries as a range.
  std::span<const std::int32_t> entries() const noexcept QZ_LIFETIME_BOUND {
    return {indices_.get(), count()};
  }

  /// Entry `index`. Raises NSRangeException for an index that is negative or not below the count.
  std::int32_t indexForIndex(std::int32_t index) const;

  /// The map that does what this one does and then what `other` does: entry i is M[other[i]].
  ///
  /// Differing counts go through the assertion handler; where that returns, the work goes on, and
  /// an entry that leads outside of a vector raises NSRangeException.
  Ref<QZIndexMap> mapByApplyingMap(QZIndexMap* other);

  /// Numbers with the entries at `indices` (Numbers, read as unsigned); indices not below the count
  /// are left out, so the answer may be shorter.
  Ref<NSMutableArray> translateIndices(NSArray* indices) const;

  /// The entries in reverse order.
  Ref<QZIndexMap> reverseMap() const;

  /// The map P with P[M[i]] = i, which undoes this one. Raises NSRangeException when this is no
  /// permutation.
  Ref<QZIndexMap> inverseMap() const;

  /// The root's description, then each entry followed by a blank.
  Ref<NSString> description() const override;

  /// Maps with the same entries are equal.
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

  /// This very map.
  Ref<NSObject> copy() const override;

 private:
  struct Free {
    void operator()(std::int32_t* vector) const noexcept { std::free(vector); }
  };
  using Vector = std::unique_ptr<std::int32_t[], Free>;

  static Vector newVector(std::int32_t count);
  static Ref<QZIndexMap> adoptVector(Vector vector, std::int32_t count);

  std::int32_t count_ = 0;
  Vector indices_;
};

}  // namespace qz

#pragma GCC visibility pop
