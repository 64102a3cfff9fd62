#include "Platform/System/NSPropertyListUID.h"

#include <functional>
#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Values/NSString.h"

namespace qz {

void NSPropertyListUID::describe(ClassDescription<NSPropertyListUID>& is) {
  is.named("NSPropertyListUID")
      .classMethod<&NSPropertyListUID::UIDWithUnsignedLongLong>("UIDWithUnsignedLongLong:")
      .property<&NSPropertyListUID::unsignedLongLongValue>("unsignedLongLongValue");
}

Ref<NSPropertyListUID> NSPropertyListUID::UIDWithUnsignedLongLong(std::uint64_t value) {
  return make<NSPropertyListUID>(value);
}

bool NSPropertyListUID::isEqual(NSObject* other) const {
  const auto* uid = as<NSPropertyListUID>(other);
  return uid != nullptr && uid->value_ == value_;
}

std::size_t NSPropertyListUID::hash() const { return std::hash<std::uint64_t>()(value_); }

Ref<NSString> NSPropertyListUID::description() const {
  return NSString::stringWithUTF8String("UID " + std::to_string(value_));
}

Ref<NSObject> NSPropertyListUID::copy() const { return const_cast<NSPropertyListUID*>(this); }

}  // namespace qz
