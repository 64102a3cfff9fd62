/// @file
/// Private: integers out of Arrays of Numbers.
#pragma once

#include <cstdint>

#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSNumber.h"

namespace qz::detail {

/// The `intValue` of a Number, or of anything else that has one, such as a String.
inline std::int32_t intValueOf(NSObject* object) {
  if (auto* number = as<NSNumber>(object)) return number->intValue();
  return send<std::int32_t>(object, "intValue"_sel);
}

}  // namespace qz::detail
