#include "Platform/System/detail/PropertyListLeaves.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "Platform/System/detail/PropertyListBuilder.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/detail/NumberText.h"

namespace qz::detail {
namespace {

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Reads fixed-width fields one after the other.
class Fields {
 public:
  explicit Fields(std::string_view text) : rest_(text) {}

  bool take(char mark) {
    if (!rest_.starts_with(mark)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  bool number(std::size_t digits, int& out) {
    if (rest_.size() < digits) return false;
    out = 0;
    for (char c : rest_.substr(0, digits)) {
      if (c < '0' || c > '9') return false;
      out = out * 10 + (c - '0');
    }
    rest_.remove_prefix(digits);
    return true;
  }

  bool isAtEnd() const { return rest_.empty(); }

 private:
  std::string_view rest_;
};

}  // namespace

Ref<NSNumber> readPropertyListInteger(std::string_view text) {
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text.remove_prefix(1);
  const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (isHexadecimal) text.remove_prefix(2);
  std::uint64_t magnitude = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, magnitude, isHexadecimal ? 16 : 10);
  if (error != std::errc() || stop != end) return nullptr;
  if (!isNegative) return PropertyListBuilder::integer(magnitude);
  constexpr std::uint64_t lowest = std::uint64_t{1} << 63;
  if (magnitude > lowest) return nullptr;
  return PropertyListBuilder::integer(static_cast<std::int64_t>(0 - magnitude));
}

Ref<NSNumber> readPropertyListReal(std::string_view text) {
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text.remove_prefix(1);
  if (text.starts_with('-')) return nullptr;
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (stop != end || error == std::errc::invalid_argument || text.ends_with(')')) return nullptr;
  // Beyond the range nothing is stored; the nearest limit is asked for elsewhere.
  if (error == std::errc::result_out_of_range)
    value = readFloating<double>(std::u16string(text.begin(), text.end())).value;
  return NSNumber::numberWithDouble(isNegative ? -value : value);
}

std::optional<double> readPropertyListDate(std::string_view text) {
  if (!text.ends_with('Z')) return std::nullopt;
  Fields fields(text.substr(0, text.size() - 1));
  int year = 0, month = 1, day = 1, hour = 0, minute = 0, second = 0;
  if (!fields.number(4, year) || year == 0) return std::nullopt;
  struct Part {
    char mark;
    int* value;
  };
  for (const auto& [mark, value] : {Part{'-', &month}, Part{'-', &day}, Part{'T', &hour},
                                    Part{':', &minute}, Part{':', &second}}) {
    if (fields.isAtEnd()) break;
    if (!fields.take(mark) || !fields.number(2, *value)) return std::nullopt;
  }
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (!fields.isAtEnd() || !date.ok() || hour > 23 || minute > 59 || second > 59)
    return std::nullopt;
  const auto days = std::chrono::sys_days(date).time_since_epoch().count();
  return ((static_cast<double>(days) * 24 + hour) * 60 + minute) * 60 + second;
}

std::optional<std::string> writePropertyListDate(double secondsSince1970) {
  constexpr double firstSecond = -62135596800;  // of the year 1
  constexpr double afterwards = 253402300800;   // the first one of the year 10000
  if (!(secondsSince1970 >= firstSecond && secondsSince1970 < afterwards)) return std::nullopt;
  const auto point = std::chrono::sys_seconds(
      std::chrono::seconds(static_cast<std::int64_t>(std::floor(secondsSince1970))));
  const auto day = std::chrono::floor<std::chrono::days>(point);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(point - day);
  char buffer[64];
  const int length = std::snprintf(
      buffer, sizeof buffer, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
      static_cast<int>(time.seconds().count()));
  return std::string(buffer, static_cast<std::size_t>(length));
}

Ref<NSData> readPropertyListData(std::string_view text) {
  std::string characters;
  characters.reserve(text.size());
  for (char c : text)
    if (!isBlank(c)) characters += c;
  return NSData::initWithBase64EncodedData_options(NSData::dataWithBytes(characters), 0);
}

std::string_view writePropertyListReal(double value, char (&buffer)[32]) {
  const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
  static_cast<void>(error);  // the longest takes 24
  return {buffer, static_cast<std::size_t>(end - buffer)};
}

}  // namespace qz::detail
