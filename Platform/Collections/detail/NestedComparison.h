/// @file
/// Private: comparing collections that contain themselves.
#pragma once

#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/NSObject.h"

namespace qz::detail {

/// Two collections that are being compared, for as long as that lasts.
///
///     const NestedComparison comparison(this, other);
///     if (comparison.isUnderWay()) return true;
class NestedComparison {
 public:
  static constexpr unsigned deepest = 1000;

  /// Raises NSInternalInconsistencyException for nesting deeper than `deepest`.
  NestedComparison(const NSObject* a, const NSObject* b)
      : a_(a), b_(b), outer_(innermost), depth_(outer_ == nullptr ? 0 : outer_->depth_ + 1) {
    if (depth_ >= deepest)
      raise(NSInternalInconsistencyException, "the collections compared are nested too deeply");
    innermost = this;
  }
  ~NestedComparison() { innermost = outer_; }
  NestedComparison(const NestedComparison&) = delete;
  NestedComparison& operator=(const NestedComparison&) = delete;

  /// The same two are being compared further out: they are equal unless that finds a difference.
  bool isUnderWay() const noexcept {
    for (const NestedComparison* each = outer_; each != nullptr; each = each->outer_)
      if (each->a_ == a_ && each->b_ == b_) return true;
    return false;
  }

 private:
  static inline constinit thread_local NestedComparison* innermost = nullptr;

  const NSObject* a_;
  const NSObject* b_;
  NestedComparison* outer_;
  unsigned depth_;
};

}  // namespace qz::detail
