/// @file
/// Private: reads dates in formats with percent signs.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "Platform/Text/NSTimeZone.h"
#include "Platform/Text/detail/CivilTime.h"
#include "Platform/Text/detail/DateEngine.h"
#include "Platform/Text/detail/DateNames.h"
#include "Platform/Text/detail/PercentPattern.h"

namespace qz::detail {

/// Reads one text by the steps of a format.
class PercentReader {
 public:
  PercentReader(const PercentPattern& pattern, const DateNames& names, const DateReading& reading,
                const NSTimeZone& zone)
      : pattern_(pattern), names_(names), reading_(reading), zone_(zone) {}

  /// Seconds since 1970; none when the text does not fit the format, or names no date.
  std::optional<double> read(std::u16string_view text);

 private:
  bool step(std::size_t index);
  bool literal(std::u16string_view text);
  bool number(const DateStep& step, bool digitsFollow);
  bool name(DateField field);
  bool zoneName();
  bool zoneOffset();
  bool keep(DateField field, std::int64_t value);
  std::optional<double> time() const;
  std::optional<double> timeIn(std::int64_t year, const CivilTime& defaults) const;

  void skipBlanks() noexcept;
  std::optional<std::int64_t> digits(std::size_t atMost) noexcept;

  const PercentPattern& pattern_;
  const DateNames& names_;
  const DateReading& reading_;
  const NSTimeZone& zone_;
  std::u16string_view rest_;

  std::optional<std::int64_t> year_, shortYear_;
  std::optional<std::int32_t> month_, day_, yearDay_, hour_, halfDayHour_, minute_, second_,
      millisecond_, half_, offset_;
  Ref<NSTimeZone> namedZone_;
};

}  // namespace qz::detail
