#include "Platform/Values/detail/NumberText.h"

#include <array>
#include <charconv>
#include <limits>
#include <string>
#include <system_error>

#include "Platform/Values/detail/UnitKinds.h"

namespace qz::detail {
namespace {

// Where a decimal number ends, and the power of ten of its first digit that is not zero.
struct Extent {
  std::size_t length = 0;
  std::int64_t magnitude = 0;
};

Extent extentOf(std::u16string_view text) noexcept {
  std::size_t at = 0;
  std::int64_t digits = 0;
  std::int64_t magnitude = std::numeric_limits<std::int64_t>::min();
  bool isNumber = false;
  auto takeDigits = [&](bool isFraction) {
    for (; at < text.size() && isDigit(text[at]); ++at, ++digits) {
      isNumber = true;
      const bool leads = text[at] != u'0' && magnitude == std::numeric_limits<std::int64_t>::min();
      if (leads) magnitude = isFraction ? -digits - 1 : -digits;
    }
  };
  takeDigits(false);
  const std::int64_t whole = digits;
  // So far counted from the front: the power of the leading digit is that of the last one more.
  if (magnitude != std::numeric_limits<std::int64_t>::min()) magnitude += whole - 1;
  if (at < text.size() && text[at] == u'.') {
    ++at;
    digits = 0;
    takeDigits(true);
  }
  if (!isNumber) return {};
  std::size_t mark = at;
  if (mark < text.size() && (text[mark] | 0x20) == u'e') {
    ++mark;
    const bool negative = mark < text.size() && text[mark] == u'-';
    if (negative || (mark < text.size() && text[mark] == u'+')) ++mark;
    std::int64_t exponent = 0;
    const std::size_t first = mark;
    for (; mark < text.size() && isDigit(text[mark]); ++mark)
      if (exponent < INT32_MAX) exponent = exponent * 10 + (text[mark] - u'0');
    if (mark > first) {
      at = mark;
      if (magnitude != std::numeric_limits<std::int64_t>::min())
        magnitude += negative ? -exponent : exponent;
    }
  }
  return {at, magnitude};
}

template <class T>
T parseFloating(const char* first, const char* last, std::int64_t magnitude) noexcept {
  T value = 0;
  if (std::from_chars(first, last, value).ec == std::errc::result_out_of_range)
    value = magnitude > 0 ? std::numeric_limits<T>::infinity() : T(0);
  return value;
}

}  // namespace

ReadDigits readDigits(std::u16string_view text, int base) noexcept {
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  const auto factor = static_cast<std::uint64_t>(base);
  ReadDigits read;
  for (; read.length < text.size(); ++read.length) {
    const int digit = hexValue(text[read.length]);
    if (digit < 0 || digit >= base) break;
    const auto more = static_cast<std::uint64_t>(digit);
    read.value = read.value > (most - more) / factor ? most : read.value * factor + more;
  }
  return read;
}

template <class T>
ReadFloating<T> readFloating(std::u16string_view text) {
  const Extent extent = extentOf(text);
  if (extent.length == 0) return {};
  std::array<char, 128> small;
  std::string large;
  char* digits = small.data();
  if (extent.length > small.size()) {
    large.resize(extent.length);
    digits = large.data();
  }
  for (std::size_t i = 0; i < extent.length; ++i) digits[i] = static_cast<char>(text[i]);
  return {parseFloating<T>(digits, digits + extent.length, extent.magnitude), extent.length};
}

template ReadFloating<float> readFloating(std::u16string_view text);
template ReadFloating<double> readFloating(std::u16string_view text);

}  // namespace qz::detail
