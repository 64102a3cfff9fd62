/// @file
/// UIDs: references between the Objects of a keyed archive.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Platform/Runtime/Derives.h"

#pragma GCC visibility push(default)

namespace qz {

/// A number that binary property lists keep apart from integers, for archives that refer to their
/// Objects by number. Immutable; any thread.
class NSPropertyListUID final : public Derives<NSPropertyListUID, NSObject> {
 public:
  static void describe(ClassDescription<NSPropertyListUID>& is);

  /// Of a number.
  explicit NSPropertyListUID(std::uint64_t value) noexcept : value_(value) {}
  static Ref<NSPropertyListUID> UIDWithUnsignedLongLong(std::uint64_t value);

  /// The number.
  std::uint64_t unsignedLongLongValue() const noexcept { return value_; }

  /// Of the same number. Never equal to a Number.
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

  /// "UID 7"
  Ref<NSString> description() const override;

  /// This very UID.
  Ref<NSObject> copy() const override;

 private:
  const std::uint64_t value_;
};

}  // namespace qz

#pragma GCC visibility pop
