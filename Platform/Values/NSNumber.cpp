#include "Platform/Values/NSNumber.h"

#include <charconv>
#include <cmath>
#include <compare>
#include <string_view>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSString.h"

namespace qz {

namespace detail {
constexpr NumberTable numberTable{std::make_integer_sequence<std::int32_t, sharedInts>()};
}  // namespace detail

namespace {

using std::strong_ordering;

constexpr double twoTo63 = 9223372036854775808.0;
constexpr double twoTo64 = 2.0 * twoTo63;

// NaN is below every number and equal to itself, so that an order always exists.
strong_ordering orderDoubles(double a, double b) noexcept {
  if (a < b) return strong_ordering::less;
  if (a > b) return strong_ordering::greater;
  if (a == b) return strong_ordering::equal;
  return std::isnan(b) <=> std::isnan(a);
}

// Cutting `b` down to `T` loses nothing but its fraction, which then decides.
template <std::integral T>
strong_ordering orderWithDouble(T a, double b, double lowest, double beyond) noexcept {
  if (b >= beyond) return strong_ordering::less;
  if (!(b >= lowest)) return strong_ordering::greater;
  const T whole = static_cast<T>(b);
  if (a != whole) return a <=> whole;
  return orderDoubles(0.0, b - static_cast<double>(whole));
}

strong_ordering orderIntegerWithDouble(const NSNumber& integer, double other) noexcept {
  if (integer.exceedsInt64()) return orderWithDouble(integer.bits(), other, 0.0, twoTo64);
  return orderWithDouble(integer.signedBits(), other, -twoTo63, twoTo63);
}

strong_ordering orderIntegers(const NSNumber& a, const NSNumber& b) noexcept {
  const bool aIsAbove = a.exceedsInt64();
  const bool bIsAbove = b.exceedsInt64();
  if (aIsAbove != bIsAbove) return aIsAbove <=> bIsAbove;
  return a.signedBits() <=> b.signedBits();
}

strong_ordering reversed(strong_ordering ordering) noexcept {
  if (std::is_eq(ordering)) return ordering;
  return std::is_lt(ordering) ? strong_ordering::greater : strong_ordering::less;
}

strong_ordering order(const NSNumber& a, const NSNumber& b) noexcept {
  if (isFloatingKind(a.kind())) {
    if (isFloatingKind(b.kind())) return orderDoubles(a.doubleBits(), b.doubleBits());
    return reversed(orderIntegerWithDouble(b, a.doubleBits()));
  }
  if (isFloatingKind(b.kind())) return orderIntegerWithDouble(a, b.doubleBits());
  return orderIntegers(a, b);
}

template <class Value>
Ref<NSString> decimalText(Value value, std::chars_format format) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value, format).ptr;
  return NSString::stringWithUTF8String(std::string_view(text, end));
}

// Left to itself the shortest text for 100000.0 would be 1e+05.
template <class Value>
Ref<NSString> floatingText(Value value) {
  if (std::isnan(value)) return "nan"_ns;  // whatever its sign
  const Value size = std::fabs(value);
  const bool isPlain = value == 0 || (size >= Value(1e-4) && size < Value(1e16));
  return decimalText(value, isPlain ? std::chars_format::fixed : std::chars_format::scientific);
}

template <class Value>
Ref<NSString> integerText(Value value) {
  char text[24];
  const auto end = std::to_chars(text, text + sizeof text, value).ptr;
  return NSString::stringWithUTF8String(std::string_view(text, end));
}

}  // namespace

float NSNumber::floatValue() const noexcept {
  // Going through double would round twice.
  switch (kind_) {
    case NumberKind::Float:
    case NumberKind::Double:
      return static_cast<float>(doubleBits());
    case NumberKind::UnsignedLongLong:
      return static_cast<float>(bits_);
    default:
      return static_cast<float>(signedBits());
  }
}

Ref<NSString> NSNumber::stringValue() const {
  switch (kind_) {
    case NumberKind::Float:
      return floatingText(static_cast<float>(doubleBits()));
    case NumberKind::Double:
      return floatingText(doubleBits());
    case NumberKind::UnsignedLongLong:
      return integerText(bits_);
    default:
      return integerText(signedBits());
  }
}

Ref<NSString> NSNumber::description() const { return stringValue(); }

NSComparisonResult NSNumber::compare(NSNumber* other) const {
  if (other == nullptr) detail::raise(NSInvalidArgumentException, "compare: with nil");
  const strong_ordering ordering = order(*this, *other);
  if (std::is_lt(ordering)) return NSOrderedAscending;
  return std::is_gt(ordering) ? NSOrderedDescending : NSOrderedSame;
}

bool NSNumber::isEqualToNumber(NSNumber* other) const noexcept {
  return other != nullptr && std::is_eq(order(*this, *other));
}

bool NSNumber::isEqual(NSObject* other) const {
  return isKind<NSNumber>(other) && std::is_eq(order(*this, *static_cast<NSNumber*>(other)));
}

std::size_t NSNumber::hash() const {
  if (!isFloatingKind(kind_)) return bits_;
  const double value = doubleBits();
  if (std::isnan(value)) return 0x7FF8000000000000u;
  if (value != std::trunc(value)) return bits_;
  // A whole number has the hash of the integer it equals.
  if (value >= -twoTo63 && value < twoTo63)
    return static_cast<std::size_t>(static_cast<std::int64_t>(value));
  if (value >= twoTo63 && value < twoTo64) return static_cast<std::size_t>(value);
  return bits_;
}

Ref<NSObject> NSNumber::copy() const { return Ref<NSObject>(const_cast<NSNumber*>(this)); }

namespace {
Ref<NSNumber> initWithBool(bool value) { return NSNumber::numberWithBool(value); }
}  // namespace

void NSNumber::describe(ClassDescription<NSNumber>& is) {
  is.named("NSNumber")
      .classMethod<&NSNumber::numberWithBool>("numberWithBool:")
      .classMethod<&NSNumber::numberWithChar>("numberWithChar:")
      .classMethod<&NSNumber::numberWithUnsignedChar>("numberWithUnsignedChar:")
      .classMethod<&NSNumber::numberWithShort>("numberWithShort:")
      .classMethod<&NSNumber::numberWithUnsignedShort>("numberWithUnsignedShort:")
      .classMethod<&NSNumber::numberWithInt>("numberWithInt:")
      .classMethod<&NSNumber::numberWithUnsignedInt>("numberWithUnsignedInt:")
      .classMethod<&NSNumber::numberWithLong>("numberWithLong:")
      .classMethod<&NSNumber::numberWithUnsignedLong>("numberWithUnsignedLong:")
      .classMethod<&NSNumber::numberWithLongLong>("numberWithLongLong:")
      .classMethod<&NSNumber::numberWithUnsignedLongLong>("numberWithUnsignedLongLong:")
      .classMethod<&NSNumber::numberWithInteger>("numberWithInteger:")
      .classMethod<&NSNumber::numberWithUnsignedInteger>("numberWithUnsignedInteger:")
      .classMethod<&NSNumber::numberWithFloat>("numberWithFloat:")
      .classMethod<&NSNumber::numberWithDouble>("numberWithDouble:")
      .initializer<&initWithBool>("initWithBool:")
      .initializer<&NSNumber::numberWithChar>("initWithChar:")
      .initializer<&NSNumber::numberWithUnsignedChar>("initWithUnsignedChar:")
      .initializer<&NSNumber::numberWithShort>("initWithShort:")
      .initializer<&NSNumber::numberWithUnsignedShort>("initWithUnsignedShort:")
      .initializer<&NSNumber::numberWithInt>("initWithInt:")
      .initializer<&NSNumber::numberWithUnsignedInt>("initWithUnsignedInt:")
      .initializer<&NSNumber::numberWithLong>("initWithLong:")
      .initializer<&NSNumber::numberWithUnsignedLong>("initWithUnsignedLong:")
      .initializer<&NSNumber::numberWithLongLong>("initWithLongLong:")
      .initializer<&NSNumber::numberWithUnsignedLongLong>("initWithUnsignedLongLong:")
      .initializer<&NSNumber::numberWithInteger>("initWithInteger:")
      .initializer<&NSNumber::numberWithUnsignedInteger>("initWithUnsignedInteger:")
      .initializer<&NSNumber::numberWithFloat>("initWithFloat:")
      .initializer<&NSNumber::numberWithDouble>("initWithDouble:")
      .method<&NSNumber::boolValue>("boolValue")
      .method<&NSNumber::charValue>("charValue")
      .method<&NSNumber::unsignedCharValue>("unsignedCharValue")
      .method<&NSNumber::shortValue>("shortValue")
      .method<&NSNumber::unsignedShortValue>("unsignedShortValue")
      .method<&NSNumber::intValue>("intValue")
      .method<&NSNumber::unsignedIntValue>("unsignedIntValue")
      .method<&NSNumber::longValue>("longValue")
      .method<&NSNumber::unsignedLongValue>("unsignedLongValue")
      .method<&NSNumber::longLongValue>("longLongValue")
      .method<&NSNumber::unsignedLongLongValue>("unsignedLongLongValue")
      .method<&NSNumber::integerValue>("integerValue")
      .method<&NSNumber::unsignedIntegerValue>("unsignedIntegerValue")
      .method<&NSNumber::floatValue>("floatValue")
      .method<&NSNumber::doubleValue>("doubleValue")
      .method<&NSNumber::stringValue>("stringValue")
      .method<&NSNumber::compare>("compare:")
      .method<&NSNumber::isEqualToNumber>("isEqualToNumber:");
}

}  // namespace qz
