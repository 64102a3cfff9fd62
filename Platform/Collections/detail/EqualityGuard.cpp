#include "Platform/Collections/detail/EqualityGuard.h"

#include "Platform/Runtime/NSException.h"

namespace qz::detail {
namespace {

constinit thread_local EqualityGuard* innermost = nullptr;

}  // namespace

EqualityGuard::EqualityGuard(const NSObject* a, const NSObject* b)
    : a_(a), b_(b), outer_(innermost), depth_(outer_ == nullptr ? 0 : outer_->depth_ + 1) {
  if (depth_ >= maximumDepth)
    raise(NSInternalInconsistencyException, "the collections are nested too deeply to compare");
  innermost = this;
}

EqualityGuard::~EqualityGuard() { innermost = outer_; }

bool EqualityGuard::isUnderWay() const noexcept {
  for (const EqualityGuard* each = outer_; each != nullptr; each = each->outer_)
    if (each->a_ == a_ && each->b_ == b_) return true;
  return false;
}

}  // namespace qz::detail
