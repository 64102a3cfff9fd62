/// @file
/// Universally unique identifiers.
#pragma once

#include <array>
#include <cstdint>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

/// 16 bytes that nobody else has.
///
///     // "E621E1F8-C36C-495A-93FC-0C247A3E6E5F", say
///     Ref<NSString> name = NSUUID::UUID()->UUIDString();
///
/// Immutable; any thread.
class NSUUID final : public Derives<NSUUID, NSObject> {
 public:
  /// In the order in which the text shows them.
  using Bytes = std::array<std::uint8_t, 16>;

  static void describe(ClassDescription<NSUUID>& is);

  /// A new one, of random bits (version 4).
  NSUUID();
  static Ref<NSUUID> UUID();

  /// Of bytes in any form; nothing is checked.
  explicit NSUUID(const Bytes& bytes) noexcept : bytes_(bytes) {}
  static Ref<NSUUID> initWithUUIDBytes(const Bytes& bytes);

  /// From hexadecimal digits of either case in groups of 8, 4, 4, 4 and 12 with "-" between them;
  /// nil for any other text and for nil.
  static Ref<NSUUID> initWithUUIDString(NSString* text);

  /// The same form, in upper case.
  Ref<NSString> UUIDString() const;

  /// Valid while this Object lives.
  const Bytes& bytes() const noexcept { return bytes_; }

  /// The same bytes.
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;
  Ref<NSObject> copy() const override;
  Ref<NSString> description() const override;

 private:
  Bytes bytes_;
};

/// A new UUID, its text, and its bytes. The latter raise NSInvalidArgumentException for nil.
Ref<NSUUID> CFUUIDCreate();
Ref<NSString> CFUUIDCreateString(NSUUID* uuid);
NSUUID::Bytes CFUUIDGetUUIDBytes(NSUUID* uuid);

}  // namespace qz

#pragma GCC visibility pop
