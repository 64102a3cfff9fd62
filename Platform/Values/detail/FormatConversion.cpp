#include "Platform/Values/detail/FormatConversion.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

#include "Platform/Values/detail/UnitKinds.h"

namespace qz::detail {
namespace {

class Parser {
 public:
  explicit Parser(std::u16string_view text) noexcept : text_(text) {}

  std::size_t parse(FormatConversion& conversion) {
    if (auto position = takePosition()) conversion.position = *position;
    takeFlags(conversion);
    conversion.width = takeField();
    if (take(u'.')) {
      conversion.precision = takeField();
      // A point alone means zero.
      if (conversion.precision.source == FormatField::Source::None)
        conversion.precision.source = FormatField::Source::Number;
    }
    takeLengths(conversion);
    conversion.letter = peek();
    constexpr std::u16string_view letters = u"@diuxXocCsSfFeEgGaAp%";
    return letters.find(conversion.letter) != letters.npos && at_ < text_.size() ? at_ + 1 : 0;
  }

 private:
  char16_t peek() const noexcept { return at_ < text_.size() ? text_[at_] : char16_t{0}; }

  bool take(char16_t unit) noexcept {
    if (at_ == text_.size() || text_[at_] != unit) return false;
    ++at_;
    return true;
  }

  // Stops counting well above every limit.
  std::int64_t takeNumber() noexcept {
    std::int64_t number = 0;
    for (; isDigit(peek()); ++at_)
      number = std::min<std::int64_t>(number * 10 + (peek() - u'0'), INT32_MAX);
    return number;
  }

  // Digits and "$", or nothing.
  std::optional<std::int64_t> takePosition() noexcept {
    const std::size_t start = at_;
    if (isDigit(peek())) {
      const std::int64_t number = takeNumber();
      if (take(u'$')) return number;
    }
    at_ = start;
    return std::nullopt;
  }

  void takeFlags(FormatConversion& conversion) noexcept {
    for (;; ++at_) {
      switch (peek()) {
        case u'-':
          conversion.left = true;
          break;
        case u'+':
          conversion.plus = true;
          break;
        case u' ':
          conversion.space = true;
          break;
        case u'#':
          conversion.alternate = true;
          break;
        case u'0':
          conversion.zero = true;
          break;
        case u'\'':
          break;
        default:
          return;
      }
    }
  }

  FormatField takeField() noexcept {
    if (take(u'*')) {
      if (auto position = takePosition()) return {FormatField::Source::Position, *position};
      return {FormatField::Source::NextArgument};
    }
    if (!isDigit(peek())) return {};
    return {FormatField::Source::Number, takeNumber()};
  }

  void takeLengths(FormatConversion& conversion) noexcept {
    for (;; ++at_) {
      switch (peek()) {
        case u'h':
          conversion.cutBits = conversion.cutBits == 64 ? 16 : 8;
          break;
        case u'l':
        case u'q':
        case u'z':
        case u't':
        case u'j':
        case u'L':
          break;
        default:
          return;
      }
    }
  }

  std::u16string_view text_;
  std::size_t at_ = 0;
};

std::string signOf(const FormatConversion& conversion, bool negative) {
  return negative ? "-" : conversion.plus ? "+" : conversion.space ? " " : "";
}

void toUppercase(std::string& text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
}

// `precision` below 0 asks for as many digits as tell the value from every other.
std::string printed(double value, std::chars_format format, std::int64_t precision) {
  // All digits before the point of the largest double, the point, an exponent.
  constexpr std::size_t rest = 340;
  std::array<char, 512> small;
  std::string large;
  char* first = small.data();
  std::size_t room = small.size();
  if (precision > static_cast<std::int64_t>(room - rest)) {
    large.resize(static_cast<std::size_t>(precision) + rest);
    first = large.data();
    room = large.size();
  }
  const auto [end, error] = precision < 0 ? std::to_chars(first, first + room, value, format)
                                          : std::to_chars(first, first + room, value, format,
                                                          static_cast<int>(precision));
  if (error != std::errc()) return "?";  // cannot happen: there is room
  return std::string(first, end);
}

// Where the exponent starts, or the end.
std::size_t exponentOf(const std::string& digits, char mark) {
  return std::min(digits.find(mark), digits.size());
}

void ensurePoint(std::string& digits, char mark) {
  const std::size_t exponent = exponentOf(digits, mark);
  if (digits.find('.') == digits.npos) digits.insert(exponent, 1, '.');
}

// "%#g" keeps the zeros that "%g" drops: as many digits as the precision says.
std::string printedGeneralInFull(double value, std::int64_t precision) {
  const std::string scientific = printed(value, std::chars_format::scientific, precision - 1);
  const std::size_t mark = exponentOf(scientific, 'e');
  int exponent = 0;
  const char* number = scientific.data() + mark + 1;
  if (*number == '+') ++number;
  std::from_chars(number, scientific.data() + scientific.size(), exponent);
  if (exponent < -4 || exponent >= precision) return scientific;
  return printed(value, std::chars_format::fixed, precision - 1 - exponent);
}

std::string floatingDigits(const FormatStyle& style, double value) {
  const std::int64_t precision = style.precision < 0 ? 6 : style.precision;
  switch (style.conversion.letter | 0x20) {
    case u'f':
      return printed(value, std::chars_format::fixed, precision);
    case u'e':
      return printed(value, std::chars_format::scientific, precision);
    case u'a':
      return printed(value, std::chars_format::hex, style.precision);
    default:
      break;
  }
  const std::int64_t significant = std::max<std::int64_t>(precision, 1);
  if (style.conversion.alternate) return printedGeneralInFull(value, significant);
  return printed(value, std::chars_format::general, significant);
}

}  // namespace

std::size_t parseConversion(std::u16string_view text, FormatConversion& conversion) {
  return Parser(text).parse(conversion);
}

FormattedNumber formatInteger(const FormatStyle& style, bool negative, std::uint64_t magnitude) {
  const FormatConversion& conversion = style.conversion;
  const char16_t letter = conversion.letter;
  const bool isSigned = letter == u'd' || letter == u'i';
  const bool isHex = letter == u'x' || letter == u'X';
  FormattedNumber number;
  if (isSigned) number.prefix = signOf(conversion, negative);
  if (magnitude != 0 || style.precision != 0) {
    std::array<char, 24> text;
    const int base = isHex ? 16 : letter == u'o' ? 8 : 10;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), magnitude, base).ptr;
    number.digits.assign(text.data(), end);
  }
  const auto least = static_cast<std::size_t>(std::max<std::int64_t>(style.precision, 0));
  if (number.digits.size() < least) number.digits.insert(0, least - number.digits.size(), '0');
  if (conversion.alternate && letter == u'o' && !number.digits.starts_with('0'))
    number.digits.insert(0, 1, '0');
  if (conversion.alternate && isHex && magnitude != 0) number.prefix = "0x";
  if (letter == u'X') {
    toUppercase(number.prefix);
    toUppercase(number.digits);
  }
  // A precision says how many zeros there are.
  number.mayFillWithZeros = style.precision < 0;
  return number;
}

FormattedNumber formatFloating(const FormatStyle& style, double value) {
  const FormatConversion& conversion = style.conversion;
  FormattedNumber number;
  number.prefix = signOf(conversion, std::signbit(value));
  const double size = std::fabs(value);
  if (!std::isfinite(value)) {
    number.digits = std::isnan(value) ? "nan" : "inf";
    number.mayFillWithZeros = false;
  } else {
    const bool isHex = (conversion.letter | 0x20) == u'a';
    number.digits = floatingDigits(style, size);
    if (conversion.alternate) ensurePoint(number.digits, isHex ? 'p' : 'e');
    if (isHex) number.prefix += "0x";
  }
  if (isAsciiUpper(conversion.letter)) {
    toUppercase(number.prefix);
    toUppercase(number.digits);
  }
  return number;
}

}  // namespace qz::detail
