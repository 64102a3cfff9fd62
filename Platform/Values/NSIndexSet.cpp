#include "Platform/Values/NSIndexSet.h"

#include <algorithm>
#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"

namespace qz {
namespace {

/// The first of the ascending ranges that ends behind `index`.
auto firstBehind(std::span<const NSRange> ranges, std::uint32_t index) {
  return std::ranges::partition_point(
      ranges, [index](NSRange range) { return NSMaxRange(range) <= index; });
}

std::uint32_t lastOf(NSRange range) { return range.location + range.length - 1; }

}  // namespace

/// Adds a range that begins at or behind the begin of the last one.
void NSIndexSet::append(NSRange range) {
  if (range.length == 0) return;
  detail::requireRange("NSIndexSet", range, NSNotFound);
  if (!ranges_.empty() && NSMaxRange(ranges_.back()) >= range.location) {
    count_ -= ranges_.back().length;
    ranges_.back() = NSUnionRange(ranges_.back(), range);
  } else {
    ranges_.push_back(range);
  }
  count_ += ranges_.back().length;
}

Ref<NSIndexSet> NSIndexSet::indexSet() { return make<NSIndexSet>(); }

Ref<NSIndexSet> NSIndexSet::indexSetWithIndex(std::uint32_t index) {
  return indexSetWithIndexesInRange({index, 1});
}

Ref<NSIndexSet> NSIndexSet::indexSetWithIndexesInRange(NSRange range) {
  auto set = make<NSIndexSet>();
  set->append(range);
  return set;
}

Ref<NSIndexSet> NSIndexSet::indexSetWithIndexes(std::span<const std::uint32_t> indexes) {
  auto set = make<NSIndexSet>();
  if (std::ranges::is_sorted(indexes)) {
    for (const std::uint32_t index : indexes) set->append({index, 1});
    return set;
  }
  std::vector<std::uint32_t> ordered(indexes.begin(), indexes.end());
  std::ranges::sort(ordered);
  for (const std::uint32_t index : ordered) set->append({index, 1});
  return set;
}

Ref<NSIndexSet> NSIndexSet::indexSetWithIndexes(std::initializer_list<std::uint32_t> indexes) {
  return indexSetWithIndexes(std::span(indexes.begin(), indexes.size()));
}

std::uint32_t NSIndexSet::firstIndex() const noexcept {
  return ranges_.empty() ? NSNotFound : ranges_.front().location;
}

std::uint32_t NSIndexSet::lastIndex() const noexcept {
  return ranges_.empty() ? NSNotFound : lastOf(ranges_.back());
}

std::uint32_t NSIndexSet::indexGreaterThanIndex(std::uint32_t index) const noexcept {
  if (index >= NSNotFound) return NSNotFound;
  const std::span<const NSRange> ranges = ranges_;
  const auto found = firstBehind(ranges, index + 1);
  return found == ranges.end() ? NSNotFound : std::max(found->location, index + 1);
}

std::uint32_t NSIndexSet::indexLessThanIndex(std::uint32_t index) const noexcept {
  const std::span<const NSRange> ranges = ranges_;
  const auto found = firstBehind(ranges, index);
  if (found != ranges.end() && found->location < index) return index - 1;
  return found == ranges.begin() ? NSNotFound : lastOf(*std::prev(found));
}

bool NSIndexSet::containsIndex(std::uint32_t index) const noexcept {
  const std::span<const NSRange> ranges = ranges_;
  const auto found = firstBehind(ranges, index);
  return found != ranges.end() && found->location <= index;
}

std::vector<std::uint32_t> NSIndexSet::indexes() const {
  std::vector<std::uint32_t> all;
  all.reserve(count_);
  for (const NSRange range : ranges_)
    for (std::uint32_t i = 0; i < range.length; ++i) all.push_back(range.location + i);
  return all;
}

bool NSIndexSet::isEqualToIndexSet(NSIndexSet* other) const {
  return other != nullptr && count_ == other->count_ && ranges_ == other->ranges_;
}

bool NSIndexSet::isEqual(NSObject* other) const {
  return this == other || isEqualToIndexSet(as<NSIndexSet>(other));
}

std::size_t NSIndexSet::hash() const {
  return std::size_t{count_} * 0x9E3779B1u ^ std::size_t{firstIndex()} << 32 ^ lastIndex();
}

Ref<NSString> NSIndexSet::description() const {
  std::string text;
  for (const NSRange range : ranges_) {
    if (!text.empty()) text += ' ';
    text += std::to_string(range.location);
    if (range.length > 1) text += "-" + std::to_string(lastOf(range));
  }
  return NSString::stringWithUTF8String(text);
}

Ref<NSObject> NSIndexSet::copy() const { return const_cast<NSIndexSet*>(this); }

void NSIndexSet::describe(ClassDescription<NSIndexSet>& is) {
  is.named("NSIndexSet")
      .classMethod<&NSIndexSet::indexSet>("indexSet")
      .initializer<&NSIndexSet::indexSetWithIndex>("initWithIndex:")
      .initializer<&NSIndexSet::indexSetWithIndexesInRange>("initWithIndexesInRange:")
      .classMethod<&NSIndexSet::indexSetWithIndex>("indexSetWithIndex:")
      .classMethod<&NSIndexSet::indexSetWithIndexesInRange>("indexSetWithIndexesInRange:")
      .method<&NSIndexSet::count>("count")
      .method<&NSIndexSet::firstIndex>("firstIndex")
      .method<&NSIndexSet::lastIndex>("lastIndex")
      .method<&NSIndexSet::indexGreaterThanIndex>("indexGreaterThanIndex:")
      .method<&NSIndexSet::indexLessThanIndex>("indexLessThanIndex:")
      .method<&NSIndexSet::containsIndex>("containsIndex:")
      .method<&NSIndexSet::isEqualToIndexSet>("isEqualToIndexSet:");
}

}  // namespace qz
