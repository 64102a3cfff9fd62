#include "Platform/Text/detail/PlainNumberFormat.h"

#include <unicode/decimfmt.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "Platform/Text/detail/IcuText.h"

namespace qz::detail {

/// The number 0.d₁d₂d₃… × 10^point; no digits for zero.
struct PlainNumberFormat::Digits {
  // As many as a double or a 64-bit integer has, and a carry in front.
  static constexpr int capacity = 24;
  char text[capacity];
  int count = 0;
  int point = 0;

  int at(int index) const noexcept { return index < count ? text[index] - '0' : 0; }

  void dropZeros() noexcept {
    while (count > 0 && text[count - 1] == '0') --count;
    if (count == 0) point = 0;
  }
};

namespace {

// Beyond these ICU has rules of its own.
constexpr std::int32_t mostDigits = 40;
constexpr int mostPlaces = 40;

bool isOneUnit(const icu::UnicodeString& text) { return text.length() == 1; }

std::u16string unitsOf(const icu::UnicodeString& text) { return std::u16string(viewOf(text)); }

}  // namespace

std::optional<PlainNumberFormat> PlainNumberFormat::of(const icu::DecimalFormat& format) {
  const icu::DecimalFormatSymbols* symbols = format.getDecimalFormatSymbols();
  const auto& point = symbols->getConstSymbol(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol);
  const auto& separator =
      symbols->getConstSymbol(icu::DecimalFormatSymbols::kGroupingSeparatorSymbol);
  icu::UnicodeString pattern;
  format.toPattern(pattern);
  const bool isPlain =
      !format.isScientificNotation() && !format.areSignificantDigitsUsed() &&
      format.getMultiplier() == 1 && format.getRoundingIncrement() == 0 &&
      format.getRoundingMode() == icu::DecimalFormat::kRoundHalfEven &&
      format.getFormatWidth() <= 0 && pattern.indexOf(u'\u00A4') < 0 && pattern.indexOf(u'%') < 0 &&
      pattern.indexOf(u'\u2030') < 0 && isOneUnit(point) && isOneUnit(separator) &&
      symbols->getConstSymbol(icu::DecimalFormatSymbols::kZeroDigitSymbol) ==
          icu::UnicodeString(u'0') &&
      format.getMinimumIntegerDigits() >= 1 && format.getMinimumIntegerDigits() <= mostDigits &&
      format.getMaximumIntegerDigits() >= mostPlaces &&
      format.getMaximumFractionDigits() <= mostDigits;
  if (!isPlain) return std::nullopt;

  PlainNumberFormat plain;
  icu::UnicodeString text;
  plain.positivePrefix_ = unitsOf(format.getPositivePrefix(text));
  plain.positiveSuffix_ = unitsOf(format.getPositiveSuffix(text.remove()));
  plain.negativePrefix_ = unitsOf(format.getNegativePrefix(text.remove()));
  plain.negativeSuffix_ = unitsOf(format.getNegativeSuffix(text.remove()));
  plain.decimalPoint_ = point[0];
  plain.separator_ = separator[0];
  plain.showsPoint_ = format.isDecimalSeparatorAlwaysShown();
  if (format.isGroupingUsed()) {
    plain.grouping_ = std::max(format.getGroupingSize(), 0);
    const std::int32_t second = format.getSecondaryGroupingSize();
    plain.secondGrouping_ = second > 0 ? second : plain.grouping_;
    plain.leastGrouped_ = std::max(format.getMinimumGroupingDigits(), 1);
  }
  plain.leastWhole_ = format.getMinimumIntegerDigits();
  plain.leastFraction_ = format.getMinimumFractionDigits();
  plain.mostFraction_ = format.getMaximumFractionDigits();
  if (!plain.agreesWith(format)) return std::nullopt;
  return plain;
}

// Not everything that a format does can be asked for. A few numbers tell.
bool PlainNumberFormat::agreesWith(const icu::DecimalFormat& format) const {
  for (const double probe : {0.0, -0.0, 1.0, -12.5, 1234.0, 12345.678, -9876543.21875, 0.5, 1e15}) {
    icu::UnicodeString theirs;
    format.format(probe, theirs);
    UnitBuffer ours;
    if (!append(ours, probe) || ours.view() != viewOf(theirs)) return false;
  }
  return true;
}

bool PlainNumberFormat::append(UnitBuffer& out, bool isNegative, std::uint64_t magnitude) const {
  Digits digits;
  if (magnitude != 0) {
    const auto end = std::to_chars(digits.text, digits.text + Digits::capacity, magnitude);
    digits.count = digits.point = static_cast<int>(end.ptr - digits.text);
  }
  write(out, isNegative, digits);
  return true;
}

bool PlainNumberFormat::append(UnitBuffer& out, double value) const {
  // Whole numbers of this size are exact, and their digits the shortest.
  constexpr double exact = 9007199254740992;
  const double magnitude = std::abs(value);
  const bool isNegative = std::signbit(value);
  if (magnitude < exact && magnitude == std::floor(magnitude))
    return append(out, isNegative, static_cast<std::uint64_t>(magnitude));
  if (!std::isfinite(value)) return false;

  // "1.2345e+02": the shortest digits that read back as this value, which are what ICU rounds.
  char text[40];
  const auto written =
      std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific);
  const char* mark = std::find(text, written.ptr, 'e');
  int exponent = 0;
  std::from_chars(mark + (mark[1] == '+' ? 2 : 1), written.ptr, exponent);
  if (exponent >= mostPlaces || exponent <= -mostPlaces) return false;
  Digits digits;
  for (const char* each = text; each < mark; ++each)
    if (*each != '.') digits.text[digits.count++] = *each;
  digits.point = exponent + 1;
  digits.dropZeros();
  round(digits);
  write(out, isNegative, digits);
  return true;
}

void PlainNumberFormat::round(Digits& digits) const noexcept {
  const int kept = digits.point + mostFraction_;
  if (kept >= digits.count) return;
  if (kept < 0) {
    digits.count = digits.point = 0;
    return;
  }
  const int next = digits.at(kept);
  const bool isHalf = next == 5 && kept + 1 == digits.count;
  const bool isUp = isHalf ? kept > 0 && digits.at(kept - 1) % 2 == 1 : next >= 5;
  digits.count = kept;
  if (isUp) {
    int at = kept - 1;
    while (at >= 0 && digits.text[at] == '9') --at;
    if (at < 0) {
      digits.text[0] = '1';
      digits.count = 1;
      ++digits.point;
      return;
    }
    ++digits.text[at];
    digits.count = at + 1;
  }
  digits.dropZeros();
}

void PlainNumberFormat::write(UnitBuffer& out, bool isNegative, const Digits& digits) const {
  const std::u16string& prefix = isNegative ? negativePrefix_ : positivePrefix_;
  const std::u16string& suffix = isNegative ? negativeSuffix_ : positiveSuffix_;
  const int whole = std::max(digits.point, leastWhole_);
  const int fraction = std::max(digits.count - digits.point, leastFraction_);
  const bool isGrouped = grouping_ > 0 && whole - grouping_ >= leastGrouped_;

  char16_t* to = out.room(prefix.size() + suffix.size() + 2 * static_cast<std::size_t>(whole) +
                          static_cast<std::size_t>(fraction) + 1);
  to = std::copy(prefix.begin(), prefix.end(), to);
  // `place` counts the digits that follow in the whole part.
  for (int place = whole - 1, index = digits.point - whole; place >= 0; --place, ++index) {
    *to++ = static_cast<char16_t>(u'0' + (index < 0 ? 0 : digits.at(index)));
    if (isGrouped && place >= grouping_ && (place - grouping_) % secondGrouping_ == 0)
      *to++ = separator_;
  }
  if (fraction > 0 || showsPoint_) *to++ = decimalPoint_;
  for (int place = 0; place < fraction; ++place) {
    const int index = digits.point + place;
    *to++ = static_cast<char16_t>(u'0' + (index < 0 ? 0 : digits.at(index)));
  }
  to = std::copy(suffix.begin(), suffix.end(), to);
  out.commit(to);
}

}  // namespace qz::detail
