/// @file
/// Private: which function a virtual call will run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "Platform/Runtime/NSObject.h"
#include "Platform/Runtime/detail/VptrTable.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// The address of the function that calling `member`, a virtual member function, runs for
/// `object`; 0 for a member that is not virtual.
///
/// As the Itanium C++ ABI has it (section 2.3), which every compiler on Linux follows: a pointer to
/// a virtual member holds its distance from the start of the virtual table, marked by a bit that
/// would be odd in an address: of the distance, or on Arm of the word behind it.
template <class Member>
std::uintptr_t virtualTarget(const NSObject* object, Member member) noexcept {
  struct Parts {
    std::ptrdiff_t pointer;
    std::ptrdiff_t adjustment;
  } parts;
  static_assert(sizeof parts == sizeof member);
  std::memcpy(&parts, &member, sizeof parts);
#if defined(__arm__) || defined(__aarch64__)
  const bool isVirtual = (parts.adjustment & 1) != 0;
  const std::ptrdiff_t distance = parts.pointer;
#else
  const bool isVirtual = (parts.pointer & 1) != 0;
  const std::ptrdiff_t distance = parts.pointer - 1;
#endif
  if (!isVirtual) return 0;
  std::uintptr_t function;
  const std::uintptr_t place = vptrOf(object) + static_cast<std::uintptr_t>(distance);
  std::memcpy(&function, reinterpret_cast<const void*>(place), sizeof function);
  return function;
}

/// Whether the class of `object` leaves `member` as NSObject has it.
template <auto Member>
bool isAsInRoot(const NSObject* object) {
  static const std::uintptr_t root = virtualTarget(make<NSObject>(), Member);
  return root != 0 && virtualTarget(object, Member) == root;
}

}  // namespace qz::detail

#pragma GCC visibility pop
