#include "Platform/Values/NSNull.h"

#include "Platform/Runtime/Describe.h"
#include "Platform/Values/NSString.h"

namespace qz {

// Never destroyed, and so of use to the last code that runs.
union NSNull::Holder {
  NSNull object;
  constexpr Holder() noexcept : object(ImmortalTag()) {}
  constexpr ~Holder() {}
};

constexpr NSNull::Holder NSNull::holder;

Ref<NSNull> NSNull::null() noexcept {
  return Ref<NSNull>(const_cast<NSNull*>(&holder.object), adopt);
}

Ref<NSString> NSNull::description() const { return "<null>"_ns; }

Ref<NSObject> NSNull::copy() const { return null(); }

void NSNull::describe(ClassDescription<NSNull>& is) {
  is.named("NSNull").classMethod<&NSNull::null>("null");
}

}  // namespace qz
