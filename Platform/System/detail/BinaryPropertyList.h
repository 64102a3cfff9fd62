/// @file
/// Private: binary property lists, version "00".
///
/// "bplist00", the objects, a table with the offset of each, and a trailer of 32 bytes: 5 that are
/// unused, one for sorting, the sizes of an offset and of a reference, and in 8 bytes each the
/// number of objects, that of the root and the offset of the table. All numbers have their highest
/// byte first. An object begins with a byte of two digits, its kind and n:
///
///     00              nil (refused)         4n  n bytes
///     08, 09          false, true           5n  n characters of ASCII
///     10 … 14         integer of 2^n bytes  6n  n units of UTF-16
///     22, 23          real of 2^n bytes     8n  UID of n + 1 bytes
///     33              date, 8 bytes:        An  n references
///                     seconds since 2001    Dn  n references to keys, n to values
///
/// Integers of up to 4 bytes have no sign. Where n is F, a count above 14 follows as an integer.
#pragma once

#include <cstdint>
#include <string_view>

#include "Platform/Runtime/Ref.h"
#include "Platform/System/detail/PropertyListFault.h"

#pragma GCC visibility push(default)
namespace qz {
class NSObject;
}
#pragma GCC visibility pop

namespace qz::detail {

inline constexpr std::string_view binaryPropertyListMagic = "bplist";
inline constexpr std::string_view binaryPropertyListHead = "bplist00";
inline constexpr std::size_t binaryPropertyListTrailer = 32;

namespace binaryMarker {
inline constexpr std::uint8_t boolFalse = 0x08;
inline constexpr std::uint8_t boolTrue = 0x09;
inline constexpr std::uint8_t integer = 0x10;
inline constexpr std::uint8_t real = 0x20;
inline constexpr std::uint8_t date = 0x33;
inline constexpr std::uint8_t data = 0x40;
inline constexpr std::uint8_t ascii = 0x50;
inline constexpr std::uint8_t utf16 = 0x60;
inline constexpr std::uint8_t uid = 0x80;
inline constexpr std::uint8_t array = 0xA0;
inline constexpr std::uint8_t dictionary = 0xD0;
}  // namespace binaryMarker

/// The list in the bytes; nil when it is none, and then `fault` says why. `mutability` of
/// NSPropertyListMutabilityOptions.
Ref<NSObject> readBinaryPropertyList(std::string_view bytes, std::uint32_t mutability,
                                     PropertyListFault* fault);

}  // namespace qz::detail
