#include "QZFoundation/NSNumber-QZFoundation.h"

#include <type_traits>

#include "Platform/Runtime/Describe.h"

namespace qz {
namespace {

template <auto makeSigned, auto makeUnsigned, class T>
Ref<NSNumber> numberOf(NSData* data, bool isSigned, NSByteOrder order, T) {
  const T value = data->integerAtLocation<T>(0, order);
  return isSigned ? makeSigned(value) : makeUnsigned(static_cast<std::make_unsigned_t<T>>(value));
}

// Of a truth value that comes by Selector, the low byte counts.
Ref<NSNumber> numberWithLowByte(NSData* data, std::uint8_t isSigned, std::int32_t byteOrder) {
  return numberWithData_isSigned_byteOrder(data, isSigned != 0, byteOrder);
}

}  // namespace

Ref<NSNumber> numberWithData_isSigned_byteOrder(NSData* data, bool isSigned,
                                                std::int32_t byteOrder) {
  using N = NSNumber;
  const auto order = byteOrder == NS_BigEndian ? NS_BigEndian : NS_LittleEndian;
  switch (data == nullptr ? 0 : data->length()) {
    case 1:
      return numberOf<&N::numberWithChar, &N::numberWithUnsignedChar>(data, isSigned, order,
                                                                      std::int8_t());
    case 2:
      return numberOf<&N::numberWithShort, &N::numberWithUnsignedShort>(data, isSigned, order,
                                                                        std::int16_t());
    case 4:
      return numberOf<&N::numberWithLong, &N::numberWithUnsignedLong>(data, isSigned, order,
                                                                      std::int32_t());
    case 8:
      return numberOf<&N::numberWithLongLong, &N::numberWithUnsignedLongLong>(data, isSigned, order,
                                                                              std::int64_t());
    default:
      return nullptr;
  }
}

Ref<NSNumber> numberByAddingNumber(NSNumber* self, NSNumber* other) {
  return NSNumber::numberWithDouble(self->doubleValue() +
                                    (other == nullptr ? 0 : other->doubleValue()));
}

bool isBool(NSNumber* self) { return self->kind() == NumberKind::Bool; }

bool isFloat(NSNumber* self) { return isFloatingKind(self->kind()); }

void detail::registerNSNumberQZFoundation() {
  extend<NSNumber>("QZFoundation")
      .classMethod<&numberWithLowByte>("numberWithData:isSigned:byteOrder:")
      .method<&numberByAddingNumber>("numberByAddingNumber:")
      .method<&isBool>("isBool")
      .method<&isFloat>("isFloat");
}

}  // namespace qz
