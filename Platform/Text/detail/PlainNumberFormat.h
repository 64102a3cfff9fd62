/// @file
/// Private: the fast road for numbers in plain patterns and ASCII digits.
#pragma once

#include <unicode/uversion.h>

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/Values/detail/UnitBuffer.h"

U_NAMESPACE_BEGIN
class DecimalFormat;
U_NAMESPACE_END

namespace qz::detail {

/// What an ICU format does where that is only: sign, grouped digits, decimal point, digits rounded
/// half to even, fixed texts around them.
class PlainNumberFormat {
 public:
  /// None when `format` does anything else.
  static std::optional<PlainNumberFormat> of(const icu::DecimalFormat& format);

  /// Appends the number. False, with nothing appended, for a number that is left to ICU.
  bool append(UnitBuffer& out, bool isNegative, std::uint64_t magnitude) const;
  bool append(UnitBuffer& out, double value) const;

 private:
  struct Digits;

  bool agreesWith(const icu::DecimalFormat& format) const;
  void round(Digits& digits) const noexcept;
  void write(UnitBuffer& out, bool isNegative, const Digits& digits) const;

  std::u16string positivePrefix_, positiveSuffix_, negativePrefix_, negativeSuffix_;
  char16_t decimalPoint_ = u'.';
  char16_t separator_ = u',';
  bool showsPoint_ = false;
  std::int32_t grouping_ = 0;        // 0: none
  std::int32_t secondGrouping_ = 0;  // from the second group on
  std::int32_t leastGrouped_ = 1;    // digits before the first separator, for there to be one
  std::int32_t leastWhole_ = 1;
  std::int32_t leastFraction_ = 0;
  std::int32_t mostFraction_ = 0;
};

}  // namespace qz::detail
