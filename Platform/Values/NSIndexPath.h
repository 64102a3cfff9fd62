/// @file
/// Index paths: the way to a node of a tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <new>
#include <span>

#include "Platform/Runtime/Derives.h"

#pragma GCC visibility push(default)

namespace qz {

/// Indices, one for each level of a tree: which child of the root, which child of that one, and so
/// on. The empty path is the root.
///
///     auto path = NSIndexPath::indexPathWithIndexes({1, 4, 3});
///     path->indexPathByAddingIndex(0);   // 1.4.3.0
///     for (std::uint32_t index : path->indexes()) …
///
/// Immutable, in one block of memory; any thread.
class NSIndexPath final : public Derives<NSIndexPath, NSObject> {
 public:
  static void describe(ClassDescription<NSIndexPath>& is);

  /// The greatest length.
  static constexpr std::uint32_t maxLength = 0x0FFFFFFF;

  /// The empty path.
  NSIndexPath() noexcept = default;
  static Ref<NSIndexPath> indexPath();

  /// Of one index, or of copies of several, which may be null when there are none. Raise
  /// NSMallocException for more than the greatest length.
  static Ref<NSIndexPath> indexPathWithIndex(std::uint32_t index);
  static Ref<NSIndexPath> indexPathWithIndexes_length(const std::uint32_t* indexes,
                                                      std::uint32_t length);
  static Ref<NSIndexPath> indexPathWithIndexes(std::span<const std::uint32_t> indexes);
  static Ref<NSIndexPath> indexPathWithIndexes(std::initializer_list<std::uint32_t> indexes);
  static Ref<NSIndexPath> initWithIndex(std::uint32_t index);
  static Ref<NSIndexPath> initWithIndexes_length(const std::uint32_t* indexes,
                                                 std::uint32_t length);

  /// A path whose `length` indices `fill(std::uint32_t*)` writes.
  template <class Fill>
  static Ref<NSIndexPath> filled(std::uint64_t length, Fill fill) {
    Ref<NSIndexPath> path = allocate(length);
    fill(path->buffer());
    return path;
  }

  /// How many indices, at most `maxLength`.
  std::uint32_t length() const noexcept { return length_; }

  /// The index at a level, counted from 0; NSNotFound beyond the last, as for a search.
  std::uint32_t indexAtPosition(std::uint32_t position) const noexcept;

  /// Copies all indices to a buffer with room for them.
  void getIndexes(std::uint32_t* buffer) const noexcept;

  /// The indices, valid while this path lives.
  std::span<const std::uint32_t> indexes() const noexcept QZ_LIFETIME_BOUND {
    return {reinterpret_cast<const std::uint32_t*>(this + 1), length_};
  }

  /// One level deeper, and one less deep; the empty path stays empty.
  Ref<NSIndexPath> indexPathByAddingIndex(std::uint32_t index) const;
  Ref<NSIndexPath> indexPathByRemovingLastIndex() const;

  /// The order in which a reader meets the nodes: by the first index that differs, and a node
  /// before what is below it. Raises NSInvalidArgumentException for nil.
  NSComparisonResult compare(NSIndexPath* other) const;

  /// The same indices.
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

  /// "1.4.3"; empty for the empty path.
  Ref<NSString> description() const override;

  /// This very path.
  Ref<NSObject> copy() const override;

  using NSObject::operator delete;
  /// Frees the block by its true size, which the length tells while the path still stands.
  static void operator delete(NSIndexPath* self, std::destroying_delete_t) noexcept;

 private:
  static constexpr std::size_t blockSize(std::uint32_t length) noexcept;
  static Ref<NSIndexPath> allocate(std::uint64_t length);
  std::uint32_t* buffer() noexcept { return reinterpret_cast<std::uint32_t*>(this + 1); }

  std::uint32_t length_ = 0;
};

}  // namespace qz

#pragma GCC visibility pop
