/// @file
/// Private: what a date formatter's settings come to.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "Platform/Runtime/Ref.h"

#pragma GCC visibility push(default)
namespace qz {
class NSLocale;
class NSString;
class NSTimeZone;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

/// How dates are read.
struct DateReading {
  bool isLenient = false;
  double twoDigitStart = -631152000;    // two-digit years fall into the century from here: 1950
  std::optional<double> defaultTime{};  // where fields come from that the text does not give
};

/// Formats and reads dates in one format. Any thread.
class DateEngine {
 public:
  virtual ~DateEngine() = default;

  /// Nil for a time that has no date. Times are seconds since 1970.
  virtual Ref<NSString> format(double seconds, const NSTimeZone& zone) const = 0;

  /// The time that the whole of `text` says; none when it says none in this format.
  virtual std::optional<double> parse(std::u16string_view text, const NSTimeZone& zone) const = 0;

  /// The format as a pattern, for people and for other formatters.
  virtual Ref<NSString> pattern() const = 0;
};

/// The local time that stands in for missing fields: 2000-01-01 00:00, or what was set.
double defaultLocalTime(const DateReading& reading, const NSTimeZone& zone);

std::unique_ptr<const DateEngine> makePercentEngine(std::u16string_view format,
                                                    const NSLocale& locale, DateReading reading);
std::unique_ptr<const DateEngine> makePatternEngine(std::u16string_view pattern,
                                                    const NSLocale& locale, DateReading reading);
/// Styles are 0 (none) to 4 (full).
std::unique_ptr<const DateEngine> makeStyleEngine(int dateStyle, int timeStyle,
                                                  const NSLocale& locale, DateReading reading);

}  // namespace qz::detail
