/// @file
/// Numbers: boxed scalars that remember their kind.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "Platform/Runtime/Derives.h"

#pragma GCC visibility push(default)

namespace qz {

class NSNumber;

/// The C type a Number was made of. `Long` and `UnsignedLong` have 32 bits on every machine.
enum class NumberKind : std::uint8_t {
  Bool,
  Char,
  UnsignedChar,
  Short,
  UnsignedShort,
  Int,
  UnsignedInt,
  Long,
  UnsignedLong,
  LongLong,
  UnsignedLongLong,
  Float,
  Double,
};

/// `Float` or `Double`.
constexpr bool isFloatingKind(NumberKind kind) noexcept { return kind >= NumberKind::Float; }

namespace detail {

union NumberTable;

/// The integer nearest to `value` after its fraction is cut off; 0 for NaN.
template <std::integral T>
constexpr T saturated(double value) noexcept {
  using Limits = std::numeric_limits<T>;
  constexpr double lowest = static_cast<double>(Limits::min());
  constexpr double beyond = 2.0 * static_cast<double>(T{1} << (Limits::digits - 1));
  if (value != value) return 0;
  if (value <= lowest) return Limits::min();
  if (value >= beyond) return Limits::max();
  return static_cast<T>(value);
}

}  // namespace detail

/// An immutable boxed scalar.
///
///     Ref<NSNumber> answer = NSNumber::numberWithInt(42);
///     Ref<NSNumber> big = NSNumber::of(std::uint64_t{1} << 63);
///     big->compare(answer);   // NSOrderedDescending
///
/// Equality, order and hash go by value, whatever the kinds: true, 1, 1u and 1.0 are equal. They
/// are exact, so 2^53 + 1 is above the double 2^53. NaN equals NaN and orders below everything
/// else; -0.0 equals 0.
///
/// Asking an integer for a narrower or unsigned type keeps the low bits, as a C++ conversion does.
/// Asking a floating Number for an integer cuts the fraction off and answers the nearest value of
/// the type; NaN gives 0.
///
/// A Number takes 24 bytes. Truth values and the Ints from -128 to 1023 are shared and never
/// freed, so making one costs no allocation. Numbers may be used from any number of threads.
class NSNumber final : public Derives<NSNumber, NSObject> {
 public:
  static void describe(ClassDescription<NSNumber>& is);

  /// A Number of the kind named. Constant time.
  static Ref<NSNumber> numberWithBool(bool value) noexcept;
  static Ref<NSNumber> numberWithChar(std::int8_t value);
  static Ref<NSNumber> numberWithUnsignedChar(std::uint8_t value);
  static Ref<NSNumber> numberWithShort(std::int16_t value);
  static Ref<NSNumber> numberWithUnsignedShort(std::uint16_t value);
  static Ref<NSNumber> numberWithInt(std::int32_t value);
  static Ref<NSNumber> numberWithUnsignedInt(std::uint32_t value);
  static Ref<NSNumber> numberWithLong(std::int32_t value);
  static Ref<NSNumber> numberWithUnsignedLong(std::uint32_t value);
  static Ref<NSNumber> numberWithLongLong(std::int64_t value);
  static Ref<NSNumber> numberWithUnsignedLongLong(std::uint64_t value);
  static Ref<NSNumber> numberWithInteger(std::int64_t value) { return numberWithLongLong(value); }
  static Ref<NSNumber> numberWithUnsignedInteger(std::uint64_t value) {
    return numberWithUnsignedLongLong(value);
  }
  static Ref<NSNumber> numberWithFloat(float value);
  static Ref<NSNumber> numberWithDouble(double value);

  /// A Number of the kind with the sign and the size of `T`: 64-bit integers become `LongLong` and
  /// `UnsignedLongLong`, `long double` becomes `Double`.
  template <class T>
  requires std::is_arithmetic_v<T>
  static Ref<NSNumber> of(T value);

  /// The kind that it was made as.
  NumberKind kind() const noexcept { return kind_; }

  /// Not zero; true for NaN.
  bool boolValue() const noexcept {
    return isFloatingKind(kind_) ? doubleBits() != 0.0 : bits_ != 0;
  }

  /// The value as another type, as a C++ conversion or the nearest there is: see above.
  std::int8_t charValue() const noexcept { return integer<std::int8_t>(); }
  std::uint8_t unsignedCharValue() const noexcept { return integer<std::uint8_t>(); }
  std::int16_t shortValue() const noexcept { return integer<std::int16_t>(); }
  std::uint16_t unsignedShortValue() const noexcept { return integer<std::uint16_t>(); }
  std::int32_t intValue() const noexcept { return integer<std::int32_t>(); }
  std::uint32_t unsignedIntValue() const noexcept { return integer<std::uint32_t>(); }
  std::int32_t longValue() const noexcept { return integer<std::int32_t>(); }
  std::uint32_t unsignedLongValue() const noexcept { return integer<std::uint32_t>(); }
  std::int64_t longLongValue() const noexcept { return integer<std::int64_t>(); }
  std::uint64_t unsignedLongLongValue() const noexcept { return integer<std::uint64_t>(); }
  std::int64_t integerValue() const noexcept { return integer<std::int64_t>(); }
  std::uint64_t unsignedIntegerValue() const noexcept { return integer<std::uint64_t>(); }

  /// The nearest `float`; infinite beyond its range.
  float floatValue() const noexcept;

  /// The nearest `double`.
  double doubleValue() const noexcept {
    if (isFloatingKind(kind_)) return doubleBits();
    return kind_ == NumberKind::UnsignedLongLong ? static_cast<double>(bits_)
                                                 : static_cast<double>(signedBits());
  }

  /// What is stored: integers sign- or zero-extended to 64 bits; both floating kinds as the bits
  /// of a `double`. For sorters and other loops that have looked at the kind.
  std::uint64_t bits() const noexcept { return bits_; }
  std::int64_t signedBits() const noexcept { return static_cast<std::int64_t>(bits_); }
  /// Whether this is an integer above the largest `std::int64_t`, which `signedBits` is not.
  bool exceedsInt64() const noexcept {
    return kind_ == NumberKind::UnsignedLongLong && signedBits() < 0;
  }
  double doubleBits() const noexcept { return std::bit_cast<double>(bits_); }

  /// The shortest decimal text that reads back as the same value: "42", "0.1", "1" for 1.0 and for
  /// true, "1e+16", "inf", "nan". Powers of ten appear below 0.0001 and from 1e16 on.
  Ref<NSString> stringValue() const;
  Ref<NSString> description() const override;

  /// How the receiver orders against `other`. Raises NSInvalidArgumentException for nil.
  NSComparisonResult compare(NSNumber* other) const;

  /// The same value. False for nil.
  bool isEqualToNumber(NSNumber* other) const noexcept;
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

  /// This very Number.
  Ref<NSObject> copy() const override;

 private:
  friend union detail::NumberTable;

  NSNumber(NumberKind kind, std::uint64_t bits) noexcept : kind_(kind), bits_(bits) {}
  constexpr NSNumber(ImmortalTag tag, NumberKind kind, std::uint64_t bits) noexcept
      : Derives(tag), kind_(kind), bits_(bits) {}

  static Ref<NSNumber> made(NumberKind kind, std::uint64_t bits) {
    return Ref<NSNumber>(new NSNumber(kind, bits), adopt);
  }
  template <std::signed_integral T>
  static Ref<NSNumber> made(NumberKind kind, T value) {
    return made(kind, static_cast<std::uint64_t>(std::int64_t{value}));
  }

  template <std::integral T>
  T integer() const noexcept {
    if (isFloatingKind(kind_)) [[unlikely]]
      return detail::saturated<T>(doubleBits());
    return static_cast<T>(bits_);
  }

  NumberKind kind_;
  std::uint64_t bits_;
};

static_assert(sizeof(NSNumber) == 24, "the kind lies beside the object's header");

namespace detail {

inline constexpr std::int32_t firstSharedInt = -128;
inline constexpr std::int32_t sharedInts = 1152;

/// The shared Numbers, made while compiling and never destroyed. A constexpr variable of this type
/// registers nothing with the end of the program; what changes in a Number (its header) is mutable.
union NumberTable {
  struct Numbers {
    NSNumber ints[sharedInts];
    NSNumber truths[2];
  } numbers;

  template <std::int32_t... I>
  constexpr explicit NumberTable(std::integer_sequence<std::int32_t, I...>) noexcept
      : numbers{{makeInt(firstSharedInt + I)...}, {makeTruth(false), makeTruth(true)}} {}
  constexpr ~NumberTable() {}  // NOLINT(modernize-use-equals-default)

  static NSNumber* sharedInt(std::uint32_t index) noexcept;
  static NSNumber* truth(bool value) noexcept;

 private:
  static constexpr NSNumber makeInt(std::int32_t value) noexcept {
    return NSNumber(NSNumber::ImmortalTag(), NumberKind::Int,
                    static_cast<std::uint64_t>(std::int64_t{value}));
  }
  static constexpr NSNumber makeTruth(bool value) noexcept {
    return NSNumber(NSNumber::ImmortalTag(), NumberKind::Bool, value ? 1 : 0);
  }
};

extern const NumberTable numberTable;

inline NSNumber* NumberTable::sharedInt(std::uint32_t index) noexcept {
  return const_cast<NSNumber*>(&numberTable.numbers.ints[index]);
}
inline NSNumber* NumberTable::truth(bool value) noexcept {
  return const_cast<NSNumber*>(&numberTable.numbers.truths[value ? 1 : 0]);
}

}  // namespace detail

inline Ref<NSNumber> NSNumber::numberWithBool(bool value) noexcept {
  return Ref<NSNumber>(detail::NumberTable::truth(value), adopt);
}
inline Ref<NSNumber> NSNumber::numberWithInt(std::int32_t value) {
  const auto index = static_cast<std::uint32_t>(value) - std::uint32_t(detail::firstSharedInt);
  if (index < std::uint32_t(detail::sharedInts))
    return Ref<NSNumber>(detail::NumberTable::sharedInt(index), adopt);
  return made(NumberKind::Int, value);
}
inline Ref<NSNumber> NSNumber::numberWithChar(std::int8_t value) {
  return made(NumberKind::Char, value);
}
inline Ref<NSNumber> NSNumber::numberWithUnsignedChar(std::uint8_t value) {
  return made(NumberKind::UnsignedChar, std::uint64_t{value});
}
inline Ref<NSNumber> NSNumber::numberWithShort(std::int16_t value) {
  return made(NumberKind::Short, value);
}
inline Ref<NSNumber> NSNumber::numberWithUnsignedShort(std::uint16_t value) {
  return made(NumberKind::UnsignedShort, std::uint64_t{value});
}
inline Ref<NSNumber> NSNumber::numberWithUnsignedInt(std::uint32_t value) {
  return made(NumberKind::UnsignedInt, std::uint64_t{value});
}
inline Ref<NSNumber> NSNumber::numberWithLong(std::int32_t value) {
  return made(NumberKind::Long, value);
}
inline Ref<NSNumber> NSNumber::numberWithUnsignedLong(std::uint32_t value) {
  return made(NumberKind::UnsignedLong, std::uint64_t{value});
}
inline Ref<NSNumber> NSNumber::numberWithLongLong(std::int64_t value) {
  return made(NumberKind::LongLong, value);
}
inline Ref<NSNumber> NSNumber::numberWithUnsignedLongLong(std::uint64_t value) {
  return made(NumberKind::UnsignedLongLong, value);
}
inline Ref<NSNumber> NSNumber::numberWithFloat(float value) {
  return made(NumberKind::Float, std::bit_cast<std::uint64_t>(static_cast<double>(value)));
}
inline Ref<NSNumber> NSNumber::numberWithDouble(double value) {
  return made(NumberKind::Double, std::bit_cast<std::uint64_t>(value));
}

template <class T>
requires std::is_arithmetic_v<T> Ref<NSNumber> NSNumber::of(T value) {
  constexpr bool isSigned = std::is_signed_v<T>;
  if constexpr (std::is_same_v<T, bool>)
    return numberWithBool(value);
  else if constexpr (std::is_same_v<T, float>)
    return numberWithFloat(value);
  else if constexpr (std::is_floating_point_v<T>)
    return numberWithDouble(static_cast<double>(value));
  else if constexpr (sizeof(T) == 1)
    return isSigned ? numberWithChar(static_cast<std::int8_t>(value))
                    : numberWithUnsignedChar(static_cast<std::uint8_t>(value));
  else if constexpr (sizeof(T) == 2)
    return isSigned ? numberWithShort(static_cast<std::int16_t>(value))
                    : numberWithUnsignedShort(static_cast<std::uint16_t>(value));
  else if constexpr (sizeof(T) == 4)
    return isSigned ? numberWithInt(static_cast<std::int32_t>(value))
                    : numberWithUnsignedInt(static_cast<std::uint32_t>(value));
  else
    return isSigned ? numberWithLongLong(static_cast<std::int64_t>(value))
                    : numberWithUnsignedLongLong(static_cast<std::uint64_t>(value));
}

}  // namespace qz

#pragma GCC visibility pop
