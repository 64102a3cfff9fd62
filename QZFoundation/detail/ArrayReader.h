/// @file
/// Private: reading an Array while its elements are sent messages.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "Platform/Collections/NSArray.h"

namespace qz::detail {

/// Reads elements by index, whatever the messages sent to them do to the Array meanwhile: each
/// stays alive until the next one is read.
class ArrayReader {
 public:
  explicit ArrayReader(NSArray* array) : array_(array) {
    // An Array that never changes keeps its elements for us.
    if (array->mutationCounter() == &neverChanged) settled_ = array->contiguous();
  }

  /// How many elements there are now.
  std::uint32_t count() const {
    return settled_ ? static_cast<std::uint32_t>(settled_->size()) : array_->count();
  }

  /// Raises NSRangeException for an index that is no longer below the count.
  NSObject* operator[](std::uint32_t index) {
    if (settled_ && index < settled_->size()) [[likely]]
      return (*settled_)[index];
    held_ = elementAt(array_, index);
    return held_;
  }

  /// Says that the element at `index`, if there is one, may be wanted next.
  void expect(std::uint64_t index) const {
    if (settled_ && index < settled_->size()) __builtin_prefetch(settled_->data() + index);
  }

 private:
  Ref<NSArray> array_;
  std::optional<std::span<NSObject* const>> settled_;
  Ref<NSObject> held_;
};

}  // namespace qz::detail
