/// @file
/// Private: kinds of code units that need no table.
#pragma once

#pragma GCC visibility push(default)

namespace qz::detail {

constexpr bool isDigit(char16_t unit) noexcept { return unit >= u'0' && unit <= u'9'; }
constexpr bool isAsciiUpper(char16_t unit) noexcept { return unit >= u'A' && unit <= u'Z'; }
constexpr bool isAsciiLower(char16_t unit) noexcept { return unit >= u'a' && unit <= u'z'; }

/// The same letter in the other case; anything but an ASCII letter stays.
constexpr char16_t toAsciiUpper(char16_t unit) noexcept {
  return static_cast<char16_t>(isAsciiLower(unit) ? unit - (u'a' - u'A') : unit);
}
constexpr char16_t toAsciiLower(char16_t unit) noexcept {
  return static_cast<char16_t>(isAsciiUpper(unit) ? unit + (u'a' - u'A') : unit);
}

/// The value of a hexadecimal digit; -1 for anything else.
constexpr int hexValue(char16_t unit) noexcept {
  if (unit >= u'0' && unit <= u'9') return unit - u'0';
  if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
  if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
  return -1;
}

/// Unicode's white space, line ends included.
constexpr bool isBlank(char16_t unit) noexcept {
  if (unit < 0x80) return unit == u' ' || (unit >= 0x09 && unit <= 0x0D);
  switch (unit) {
    case 0x0085:
    case 0x00A0:
    case 0x1680:
    case 0x2028:
    case 0x2029:
    case 0x202F:
    case 0x205F:
    case 0x3000:
      return true;
    default:
      return unit >= 0x2000 && unit <= 0x200A;
  }
}

}  // namespace qz::detail

#pragma GCC visibility pop
