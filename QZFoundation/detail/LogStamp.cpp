#include "QZFoundation/detail/LogStamp.h"

#include "Platform/Text/NSDateFormatter.h"
#include "Platform/Text/NSLocale.h"

namespace qz::detail {
namespace {

constexpr std::int64_t second = 1'000'000'000;

// In no language, so that the file reads the same everywhere.
NSDateFormatter* formatter() {
  static NSDateFormatter* const shared = [] {
    auto made = NSDateFormatter::initWithDateFormat_allowNaturalLanguage(logTimeFormat, false);
    made->setLocale(NSLocale::systemLocale());
    return made.leak();
  }();
  return shared;
}

}  // namespace

std::string_view LogStamp::textAt(std::int64_t nanoseconds) {
  const std::int64_t within = (nanoseconds % second + second) % second;
  const std::int64_t whole = (nanoseconds - within) / second;
  if (whole != second_ || text_.size() < 4) {
    second_ = whole;
    const auto date = NSDate::dateWithTimeIntervalSince1970(static_cast<NSTimeInterval>(whole));
    text_ = to_string(formatter()->stringFromDate(date).get());
  }
  // The format ends in three digits and a blank.
  auto milliseconds = static_cast<int>(within / 1'000'000);
  for (std::size_t at = text_.size() - 2; at > text_.size() - 5; --at, milliseconds /= 10)
    text_[at] = static_cast<char>('0' + milliseconds % 10);
  return text_;
}

}  // namespace qz::detail
