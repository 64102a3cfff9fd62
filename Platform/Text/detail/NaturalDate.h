/// @file
/// Private: dates in everyday words.
#pragma once

#include <optional>
#include <string_view>

#pragma GCC visibility push(default)
namespace qz {
class NSLocale;
class NSTimeZone;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

/// The time (seconds since 1970) that `text` means when it is said at `now` in `zone`; none when it
/// is not understood. Case does not matter. Words are English ones and those of the locale's
/// language, as far as ICU has them:
///
/// - "now", "today", "yesterday", "next month", "last year"
/// - "friday" and "this friday", which may be today; "next friday" and "last friday", which may not
/// - "in 3 days", "2 hours ago": that long from now, to the second
/// - each day with a time of day before or behind it: "tomorrow at 17:30", "5pm tomorrow", "noon"
/// - dates in the locale's four styles, with or without a time, and as in ISO 8601
///
/// A day without a time of day begins at midnight.
std::optional<double> readNaturalDate(std::u16string_view text, double now, const NSTimeZone& zone,
                                      const NSLocale& locale);

}  // namespace qz::detail
