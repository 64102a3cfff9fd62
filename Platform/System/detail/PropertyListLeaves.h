/// @file
/// Private: numbers, dates and bytes as XML property lists write them. Blanks are off already.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Runtime/Ref.h"

#pragma GCC visibility push(default)
namespace qz {
class NSData;
class NSNumber;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

/// From the Unix epoch to the one that binary property lists count their dates from, the first
/// second of 2001, both in UTC.
inline constexpr double secondsFrom1970To2001 = 978307200;

/// Decimal digits, or hexadecimal ones behind "0x", and perhaps a sign. Nil when the text is
/// something else or the number takes more than 64 bits.
Ref<NSNumber> readPropertyListInteger(std::string_view text);

/// A decimal number, with an exponent perhaps, or "inf", "infinity" or "nan", in any case and with
/// a sign. Nil when the text is something else.
Ref<NSNumber> readPropertyListReal(std::string_view text);

/// ISO 8601, "2024-02-29T12:00:00Z", from the year 1 on; may end behind the year or any later part
/// but for the "Z". Answers seconds since 1970; no value for a day or time that there is not.
std::optional<double> readPropertyListDate(std::string_view text);

/// The same, fractions of seconds cut off. No value outside the years 1 to 9999.
std::optional<std::string> writePropertyListDate(double secondsSince1970);

/// Base64 with blanks anywhere; nil when it is not well formed.
Ref<NSData> readPropertyListData(std::string_view text);

/// The shortest decimal number that reads back as the same double.
std::string_view writePropertyListReal(double value, char (&buffer)[32]);

}  // namespace qz::detail
