/// @file
/// Private: asking many times whether an Array contains an Object.
#pragma once

#include <functional>
#include <unordered_set>

#include "Platform/Collections/NSArray.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// The elements of an Array, kept alive and, from a few on, found by their hash.
class Membership {
 public:
  explicit Membership(NSArray* array) {
    list_.addAll(array);
    if (list_.elements().size() > fewest)
      table_.insert(list_.elements().begin(), list_.elements().end());
  }

  /// Whether an element is equal to `object`, which is not nil.
  bool contains(NSObject* object) {
    if (!table_.empty()) return table_.contains(object);
    for (NSObject* each : list_.elements())
      if (equal(object, each)) return true;
    return false;
  }

 private:
  static constexpr std::size_t fewest = 16;

  struct Hash {
    std::size_t operator()(NSObject* object) const { return object->hash(); }
  };
  struct Equal {
    bool operator()(NSObject* a, NSObject* b) const { return equal(a, b); }
  };

  ArrayBuilder list_;
  std::unordered_set<NSObject*, Hash, Equal> table_;
};

}  // namespace qz::detail

#pragma GCC visibility pop
