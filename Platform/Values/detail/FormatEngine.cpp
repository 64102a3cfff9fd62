#include "Platform/Values/detail/FormatEngine.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string>

#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/FormatConversion.h"
#include "Platform/Values/detail/Utf.h"

namespace qz::detail {
namespace {

using Kind = FormatArgument::Kind;

struct Integer {
  bool negative = false;
  std::uint64_t magnitude = 0;
};

Integer signedInteger(std::int64_t value) noexcept {
  return {value < 0,
          value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value)};
}

// Truncates; what is beyond 64 bits, or no number, turns into the nearest limit, or zero.
Integer integerOf(double value) noexcept {
  if (std::isnan(value)) return {};
  const double size = std::fabs(value);
  const std::uint64_t magnitude =
      size < 0x1p64 ? static_cast<std::uint64_t>(size) : std::numeric_limits<std::uint64_t>::max();
  return {value < 0 && magnitude != 0, magnitude};
}

bool isNumber(const FormatArgument& argument) noexcept {
  switch (argument.kind()) {
    case Kind::Signed:
    case Kind::Unsigned:
    case Kind::Character:
    case Kind::Floating:
    case Kind::Address:
      return true;
    default:
      return false;
  }
}

// Of a number.
Integer integerOf(const FormatArgument& argument) noexcept {
  switch (argument.kind()) {
    case Kind::Signed:
      return signedInteger(static_cast<std::int64_t>(argument.bits()));
    case Kind::Character:
      if (argument.size() < sizeof(char16_t))
        return signedInteger(static_cast<std::int64_t>(argument.bits()));
      return {false, argument.bits()};
    case Kind::Floating:
      return integerOf(argument.floating());
    case Kind::Address:
      return {false, reinterpret_cast<std::uintptr_t>(argument.address())};
    default:
      return {false, argument.bits()};
  }
}

double doubleOf(const FormatArgument& argument) noexcept {
  if (argument.kind() == Kind::Floating) return argument.floating();
  const Integer integer = integerOf(argument);
  const auto size = static_cast<double>(integer.magnitude);
  return integer.negative ? -size : size;
}

// The bits C would see: cut to `cutBits`, and a negative value to its own size or that of an int.
std::uint64_t bitsOf(const FormatArgument& argument, const Integer& integer,
                     unsigned cutBits) noexcept {
  const std::uint64_t bits = integer.negative ? 0 - integer.magnitude : integer.magnitude;
  unsigned width = cutBits;
  if (integer.negative && argument.kind() != Kind::Floating && argument.size() <= 4)
    width = std::min(width, 32u);
  return width < 64 ? bits & ((std::uint64_t{1} << width) - 1) : bits;
}

Integer signExtended(std::uint64_t bits, unsigned width) noexcept {
  const unsigned shift = 64 - width;
  return signedInteger(static_cast<std::int64_t>(bits << shift) >> shift);
}

// At most `limit` units, no character in two.
std::u16string_view cutUnits(std::u16string_view units, std::int64_t limit) noexcept {
  const auto count = static_cast<std::size_t>(limit);
  if (limit < 0 || count >= units.size()) return units;
  const bool splits =
      count > 0 && isHighSurrogate(units[count - 1]) && isLowSurrogate(units[count]);
  return units.substr(0, splits ? count - 1 : count);
}

std::string_view cutBytes(std::string_view bytes, std::int64_t limit) noexcept {
  const auto count = static_cast<std::size_t>(limit);
  if (limit < 0 || count >= bytes.size()) return bytes;
  return withoutPartialCharacter(bytes.substr(0, count));
}

// How many units come before the first "%", four at a time.
std::size_t percentIn(std::u16string_view text) noexcept {
  constexpr std::uint64_t ones = 0x0001000100010001;
  constexpr std::uint64_t percents = ones * u'%';
  std::size_t at = 0;
  for (; text.size() - at >= 4; at += 4) {
    std::uint64_t units;
    std::memcpy(&units, text.data() + at, sizeof units);
    units ^= percents;
    if (((units - ones) & ~units & (ones << 15)) != 0) break;  // one of the four is zero
  }
  while (at < text.size() && text[at] != u'%') ++at;
  return at;
}

class Printer {
 public:
  Printer(UnitBuffer& out, FormatArguments arguments) noexcept : out_(out), arguments_(arguments) {}

  void print(std::u16string_view format) {
    while (!format.empty()) {
      const std::size_t plain = percentIn(format);
      out_.append(format.substr(0, plain));
      format.remove_prefix(plain);
      if (format.empty()) return;
      if (format.size() > 1 && format[1] == u'@' && printNextString()) {
        format.remove_prefix(2);
        continue;
      }
      FormatConversion conversion;
      const std::size_t taken = parseConversion(format.substr(1), conversion);
      if (taken == 0 || conversion.letter == u'%')
        out_.append(u'%');
      else
        print(conversion);
      format.remove_prefix(1 + taken);
    }
  }

 private:
  // The short way for what most formats consist of: "%@" and a String.
  bool printNextString() {
    if (next_ >= arguments_.size() || arguments_[next_].kind() != Kind::Object) return false;
    auto* string = as<NSString>(arguments_[next_].object());
    if (string == nullptr) return false;
    out_.append(string->view());
    ++next_;
    return true;
  }

  void print(const FormatConversion& conversion) {
    FormatStyle style{conversion};
    if (const auto width = valueOf(conversion.width)) {
      style.width = std::abs(*width);
      if (*width < 0) style.conversion.left = true;
    }
    if (const auto precision = valueOf(conversion.precision))
      style.precision = std::max<std::int64_t>(*precision, -1);
    if (const FormatArgument* argument = argumentAt(conversion.position))
      print(style, *argument);
    else if (conversion.letter == u'@' || (conversion.letter | 0x20) == u's')
      printUnits(style, u"(null)");
  }

  const FormatArgument* argumentAt(std::int64_t position) noexcept {
    const std::size_t index =
        position < 0 ? next_++ : static_cast<std::size_t>(position) - 1;  // 0 is beyond the end
    return index < arguments_.size() ? &arguments_[index] : nullptr;
  }

  std::optional<std::int64_t> valueOf(const FormatField& field) {
    Integer value;
    switch (field.source) {
      case FormatField::Source::None:
        return std::nullopt;
      case FormatField::Source::Number:
        value = signedInteger(field.number);
        break;
      case FormatField::Source::NextArgument:
      case FormatField::Source::Position: {
        const bool isNext = field.source == FormatField::Source::NextArgument;
        const FormatArgument* argument = argumentAt(isNext ? -1 : field.number);
        if (argument == nullptr || !isNumber(*argument) || argument->kind() == Kind::Address)
          return std::nullopt;
        value = integerOf(*argument);
        break;
      }
    }
    if (value.magnitude > static_cast<std::uint64_t>(maxFieldSize))
      raise(NSInvalidArgumentException,
            "a format's width or precision is above " + std::to_string(maxFieldSize));
    const auto size = static_cast<std::int64_t>(value.magnitude);
    return value.negative ? -size : size;
  }

  void print(const FormatStyle& style, const FormatArgument& argument) {
    if (style.conversion.letter == u'p' && printAddress(style, argument)) return;
    if (!isNumber(argument)) return printText(style, argument);
    switch (style.conversion.letter) {
      case u'd':
      case u'i':
      case u'u':
      case u'x':
      case u'X':
      case u'o':
        return printInteger(style, argument);
      case u'c':
      case u'C':
        return printCharacter(style, argument);
      case u'@':
      case u's':
      case u'S':
        return printNaturally(style, argument);
      default:
        return printNumber(style, formatFloating(style, doubleOf(argument)));
    }
  }

  void printInteger(const FormatStyle& style, const FormatArgument& argument) {
    const unsigned cut = style.conversion.cutBits;
    Integer integer = integerOf(argument);
    const bool isSigned = style.conversion.letter == u'd' || style.conversion.letter == u'i';
    if (!isSigned)
      integer = {false, bitsOf(argument, integer, cut)};
    else if (cut < 64)
      integer = signExtended(bitsOf(argument, integer, cut), cut);
    printNumber(style, formatInteger(style, integer.negative, integer.magnitude));
  }

  void printCharacter(const FormatStyle& style, const FormatArgument& argument) {
    const Integer integer = integerOf(argument);
    // A char below zero is a byte above 0x7F; an integer below zero is a unit of its low bits.
    const unsigned cut = argument.size() == 1 ? 8 : integer.negative ? 16 : 64;
    const std::uint64_t point = bitsOf(argument, integer, cut);
    char16_t units[2];
    const auto safe = static_cast<char32_t>(std::min<std::uint64_t>(point, 0x110000));
    const char16_t* end = encodeUtf16(safe, units);
    pad(style, {units, static_cast<std::size_t>(end - units)});
  }

  // A number where text or an Object was to come.
  void printNaturally(const FormatStyle& style, const FormatArgument& argument) {
    if (argument.kind() == Kind::Character) return printCharacter(style, argument);
    FormatStyle natural{style.conversion, style.width};
    natural.conversion.letter = argument.kind() == Kind::Floating  ? u'g'
                                : argument.kind() == Kind::Address ? u'p'
                                                                   : u'd';
    print(natural, argument);
  }

  // False for what has no address.
  bool printAddress(const FormatStyle& style, const FormatArgument& argument) {
    std::uint64_t address = 0;
    switch (argument.kind()) {
      case Kind::Object:
        address = reinterpret_cast<std::uintptr_t>(argument.object());
        break;
      case Kind::CString:
      case Kind::Address:
        address = reinterpret_cast<std::uintptr_t>(argument.address());
        break;
      case Kind::Utf8:
      case Kind::Units:
        return false;
      default:
        address = bitsOf(argument, integerOf(argument), 64);
        break;
    }
    FormatStyle hex = style;
    hex.conversion.letter = u'x';
    FormattedNumber number = formatInteger(hex, false, address);
    number.prefix = "0x";
    printNumber(style, number);
    return true;
  }

  void printText(const FormatStyle& style, const FormatArgument& argument) {
    switch (argument.kind()) {
      case Kind::Units:
        return printUnits(style, argument.units());
      case Kind::Utf8:
        return printUtf8(style, cutBytes(argument.utf8(), style.precision));
      case Kind::CString:
        return printCString(style, argument.cString());
      default:
        return printObject(style, argument.object());
    }
  }

  void printCString(const FormatStyle& style, const char* text) {
    if (text == nullptr) return printUnits(style, u"(null)");
    if (style.precision < 0) return printUtf8(style, text);
    // As in C, text that the precision cuts off needs no zero at its end.
    const auto limit = static_cast<std::size_t>(style.precision);
    const std::size_t length = ::strnlen(text, limit);
    const std::string_view bytes(text, length);
    printUtf8(style, length == limit ? withoutPartialCharacter(bytes) : bytes);
  }

  void printUtf8(const FormatStyle& style, std::string_view bytes) {
    if (style.width == 0) return out_.appendUtf8(bytes);
    UnitBuffer units;
    units.appendUtf8(bytes);
    pad(style, units.view());
  }

  void printObject(const FormatStyle& style, NSObject* object) {
    if (object == nullptr) return printUnits(style, u"(null)");
    if (auto* string = as<NSString>(object)) return printUnits(style, string->view());
    const Ref<NSString> description = object->description();
    printUnits(style, description ? description->view() : std::u16string_view(u"(null)"));
  }

  void printUnits(const FormatStyle& style, std::u16string_view units) {
    pad(style, cutUnits(units, style.precision));
  }

  void pad(const FormatStyle& style, std::u16string_view units) {
    const std::size_t blanks = missing(style, units.size());
    if (!style.conversion.left) out_.append(blanks, u' ');
    out_.append(units);
    if (style.conversion.left) out_.append(blanks, u' ');
  }

  void printNumber(const FormatStyle& style, const FormattedNumber& number) {
    const std::size_t fill = missing(style, number.prefix.size() + number.digits.size());
    const bool left = style.conversion.left;
    const bool zeros = style.conversion.zero && !left && number.mayFillWithZeros;
    if (!left && !zeros) out_.append(fill, u' ');
    out_.appendAscii(number.prefix);
    if (zeros) out_.append(fill, u'0');
    out_.appendAscii(number.digits);
    if (left) out_.append(fill, u' ');
  }

  static std::size_t missing(const FormatStyle& style, std::size_t size) noexcept {
    const auto width = static_cast<std::size_t>(style.width);
    return width > size ? width - size : 0;
  }

  UnitBuffer& out_;
  FormatArguments arguments_;
  std::size_t next_ = 0;
};

}  // namespace

void formatUnits(UnitBuffer& out, std::u16string_view format, FormatArguments arguments) {
  Printer(out, arguments).print(format);
}

}  // namespace qz::detail
