/// @file
/// Private: comparing collections that may contain themselves.
///
///     if (other->count() != count()) return false;
///     const detail::EqualityGuard guard(this, other);
///     if (guard.isUnderWay()) return true;
///     // compare the elements
#pragma once

#include "Platform/Runtime/NSObject.h"

namespace qz::detail {

/// Notes, for the calling thread and as long as it lives, that two collections are being compared.
///
/// Cyclic collections are equal when walking both for ever would find no difference: two that are
/// met again while they are being compared count as equal, unless the rest differs.
class EqualityGuard {
 public:
  static constexpr unsigned maximumDepth = 1000;

  /// Raises NSInternalInconsistencyException when the comparisons around this one are already
  /// `maximumDepth`.
  EqualityGuard(const NSObject* a, const NSObject* b);
  ~EqualityGuard();
  EqualityGuard(const EqualityGuard&) = delete;
  EqualityGuard& operator=(const EqualityGuard&) = delete;

  /// Whether these two are being compared further out.
  bool isUnderWay() const noexcept;

 private:
  const NSObject* a_;
  const NSObject* b_;
  EqualityGuard* outer_;
  unsigned depth_;
};

}  // namespace qz::detail
