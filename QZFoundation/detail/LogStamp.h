/// @file
/// Private: the time in front of a line of a log.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// How log lines tell the time: NSDateFormatter.h has the meaning of the letters.
inline NSString* const logTimeFormat = literal<"%y-%m-%d %H:%M:%S.%F ">();

/// Formats points in time. The formatter is asked once for each second; in between, only the
/// milliseconds change. One thread at a time.
class LogStamp {
 public:
  /// Nanoseconds since 1970. The text is valid until the next call.
  std::string_view textAt(std::int64_t nanoseconds);

 private:
  std::int64_t second_ = INT64_MIN;
  std::string text_;
};

}  // namespace qz::detail

#pragma GCC visibility pop
