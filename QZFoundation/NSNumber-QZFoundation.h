/// @file
/// Numbers: from raw bytes, added, and asked for their kind. Receivers must not be nil.
#pragma once

#include <cstdint>

#include "Platform/Values/NSData.h"
#include "Platform/Values/NSNumber.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// The integer that 1, 2, 4 or 8 bytes say, as a Number of the kind Char, Short, Long or LongLong
/// or their unsigned forms; nil for any other length and for nil. Only NS_BigEndian puts the
/// highest byte first.
Ref<NSNumber> numberWithData_isSigned_byteOrder(NSData* data, bool isSigned,
                                                std::int32_t byteOrder);

/// The sum, as a Double whatever the kinds; nil adds 0.
Ref<NSNumber> numberByAddingNumber(NSNumber* self, NSNumber* other);

/// Whether the Number was made of a truth value, and of a float or a double.
bool isBool(NSNumber* self);
bool isFloat(NSNumber* self);

}  // namespace qz

#pragma GCC visibility pop
