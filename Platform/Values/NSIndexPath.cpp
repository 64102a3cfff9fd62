#include "Platform/Values/NSIndexPath.h"

#include <algorithm>
#include <compare>
#include <string>
#include <string_view>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSString.h"

namespace qz {

void NSIndexPath::describe(ClassDescription<NSIndexPath>& is) {
  is.named("NSIndexPath")
      .classMethod<&NSIndexPath::indexPath>("indexPath")
      .classMethod<&NSIndexPath::indexPathWithIndex>("indexPathWithIndex:")
      .classMethod<&NSIndexPath::indexPathWithIndexes_length>("indexPathWithIndexes:length:")
      .initializer<&NSIndexPath::initWithIndex>("initWithIndex:")
      .initializer<&NSIndexPath::initWithIndexes_length>("initWithIndexes:length:")
      .method<&NSIndexPath::length>("length")
      .method<&NSIndexPath::indexAtPosition>("indexAtPosition:")
      .method<&NSIndexPath::getIndexes>("getIndexes:")
      .method<&NSIndexPath::indexPathByAddingIndex>("indexPathByAddingIndex:")
      .method<&NSIndexPath::indexPathByRemovingLastIndex>("indexPathByRemovingLastIndex")
      .method<&NSIndexPath::compare>("compare:");
}

// Making ------------------------------------------------------------------------------------------

constexpr std::size_t NSIndexPath::blockSize(std::uint32_t length) noexcept {
  return sizeof(NSIndexPath) + std::size_t{length} * sizeof(std::uint32_t);
}

Ref<NSIndexPath> NSIndexPath::allocate(std::uint64_t length) {
  if (length > maxLength)
    detail::raise(NSMallocException,
                  "an index path of " + std::to_string(length) + " indices is too long");
  const auto count = static_cast<std::uint32_t>(length);
  Ref<NSIndexPath> path(new (detail::poolAllocate(blockSize(count))) NSIndexPath(), adopt);
  path->length_ = count;
  return path;
}

void NSIndexPath::operator delete(NSIndexPath* self, std::destroying_delete_t) noexcept {
  const std::size_t size = blockSize(self->length_);
  self->~NSIndexPath();
  detail::poolFree(self, size);
}

Ref<NSIndexPath> NSIndexPath::indexPath() {
  static NSIndexPath* const empty = make<NSIndexPath>().leak();
  return empty;
}

Ref<NSIndexPath> NSIndexPath::indexPathWithIndex(std::uint32_t index) {
  return indexPathWithIndexes_length(&index, 1);
}

Ref<NSIndexPath> NSIndexPath::indexPathWithIndexes_length(const std::uint32_t* indexes,
                                                          std::uint32_t length) {
  return indexPathWithIndexes(std::span(indexes, length));
}

Ref<NSIndexPath> NSIndexPath::indexPathWithIndexes(std::span<const std::uint32_t> indexes) {
  return filled(indexes.size(),
                [indexes](std::uint32_t* out) { std::copy(indexes.begin(), indexes.end(), out); });
}

Ref<NSIndexPath> NSIndexPath::indexPathWithIndexes(std::initializer_list<std::uint32_t> indexes) {
  return indexPathWithIndexes(std::span(indexes.begin(), indexes.size()));
}

Ref<NSIndexPath> NSIndexPath::initWithIndex(std::uint32_t index) {
  return indexPathWithIndex(index);
}

Ref<NSIndexPath> NSIndexPath::initWithIndexes_length(const std::uint32_t* indexes,
                                                     std::uint32_t length) {
  return indexPathWithIndexes_length(indexes, length);
}

// Reading -----------------------------------------------------------------------------------------

std::uint32_t NSIndexPath::indexAtPosition(std::uint32_t position) const noexcept {
  return position < length_ ? indexes()[position] : NSNotFound;
}

void NSIndexPath::getIndexes(std::uint32_t* buffer) const noexcept {
  std::ranges::copy(indexes(), buffer);
}

// Deriving and comparing --------------------------------------------------------------------------

Ref<NSIndexPath> NSIndexPath::indexPathByAddingIndex(std::uint32_t index) const {
  return filled(std::uint64_t{length_} + 1, [this, index](std::uint32_t* out) {
    *std::ranges::copy(indexes(), out).out = index;
  });
}

Ref<NSIndexPath> NSIndexPath::indexPathByRemovingLastIndex() const {
  return length_ == 0 ? indexPath() : indexPathWithIndexes(indexes().first(length_ - 1));
}

NSComparisonResult NSIndexPath::compare(NSIndexPath* other) const {
  if (other == nullptr) detail::raise(NSInvalidArgumentException, "compare: with nil");
  const auto mine = indexes();
  const auto theirs = other->indexes();
  const auto ordering = std::lexicographical_compare_three_way(mine.begin(), mine.end(),
                                                               theirs.begin(), theirs.end());
  if (std::is_lt(ordering)) return NSOrderedAscending;
  return std::is_gt(ordering) ? NSOrderedDescending : NSOrderedSame;
}

// As an Object ------------------------------------------------------------------------------------

bool NSIndexPath::isEqual(NSObject* other) const {
  const auto* path = as<NSIndexPath>(other);
  return path != nullptr && std::ranges::equal(indexes(), path->indexes());
}

std::size_t NSIndexPath::hash() const {
  std::size_t hash = length_;
  for (std::uint32_t index : indexes()) hash = (hash ^ index) * 0x9E3779B97F4A7C15u;
  return hash ^ (hash >> 32);
}

Ref<NSString> NSIndexPath::description() const {
  std::string text;
  for (std::uint32_t index : indexes()) text += (text.empty() ? "" : ".") + std::to_string(index);
  return NSString::stringWithUTF8String(text);
}

Ref<NSObject> NSIndexPath::copy() const { return const_cast<NSIndexPath*>(this); }

}  // namespace qz
