// Strings: the numbers they begin with.

#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/UnitKinds.h"

namespace qz {
namespace {

using detail::isBlank;
using detail::isDigit;

struct Start {
  bool negative = false;
  std::u16string_view rest;  // behind blanks and sign
};

Start startOf(std::u16string_view text) noexcept {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  const bool negative = !text.empty() && text.front() == u'-';
  if (negative || (!text.empty() && text.front() == u'+')) text.remove_prefix(1);
  return {negative, text};
}

// Digits, up to the greatest 64-bit value.
std::uint64_t magnitudeOf(std::u16string_view digits) noexcept {
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t value = 0;
  for (char16_t unit : digits) {
    if (!isDigit(unit)) break;
    const auto digit = static_cast<std::uint64_t>(unit - u'0');
    if (value > (most - digit) / 10) return most;
    value = value * 10 + digit;
  }
  return value;
}

template <class T>
T clampedInteger(std::u16string_view text) noexcept {
  constexpr auto greatest = static_cast<std::uint64_t>(std::numeric_limits<T>::max());
  const Start start = startOf(text);
  const std::uint64_t magnitude = magnitudeOf(start.rest);
  if (!start.negative) return static_cast<T>(magnitude < greatest ? magnitude : greatest);
  if (magnitude > greatest) return std::numeric_limits<T>::min();
  return static_cast<T>(-static_cast<T>(magnitude));
}

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

template <class T>
T floatingOf(std::u16string_view text) {
  const Start start = startOf(text);
  const Extent extent = extentOf(start.rest);
  if (extent.length == 0) return 0;
  std::array<char, 128> small;
  std::string large;
  char* digits = small.data();
  if (extent.length > small.size()) {
    large.resize(extent.length);
    digits = large.data();
  }
  for (std::size_t i = 0; i < extent.length; ++i) digits[i] = static_cast<char>(start.rest[i]);
  const T value = parseFloating<T>(digits, digits + extent.length, extent.magnitude);
  return start.negative ? -value : value;
}

}  // namespace

std::int32_t NSString::intValue() const noexcept { return clampedInteger<std::int32_t>(view()); }

std::int64_t NSString::longLongValue() const noexcept {
  return clampedInteger<std::int64_t>(view());
}

std::uint64_t NSString::unsignedLongLongValue() const noexcept {
  const Start start = startOf(view());
  return start.negative ? 0 : magnitudeOf(start.rest);
}

double NSString::doubleValue() const { return floatingOf<double>(view()); }

float NSString::floatValue() const { return floatingOf<float>(view()); }

bool NSString::boolValue() const noexcept {
  std::u16string_view text = startOf(view()).rest;
  while (!text.empty() && text.front() == u'0') text.remove_prefix(1);
  constexpr std::u16string_view yes = u"YyTt123456789";
  return !text.empty() && yes.find(text.front()) != yes.npos;
}

}  // namespace qz
