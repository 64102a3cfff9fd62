/// @file
/// Private: the dispatcher's way into an invocation.
#pragma once

#include "Platform/Runtime/NSInvocation.h"

namespace qz::detail {

struct InvocationAccess {
  static void setArgument(NSInvocation& invocation, TypedWord value, std::uint32_t index) {
    invocation.setTyped(value, index);
  }

  /// The answer, with its ownership.
  static Word takeReturn(NSInvocation& invocation) noexcept {
    return std::exchange(invocation.return_, 0);
  }
};

}  // namespace qz::detail
