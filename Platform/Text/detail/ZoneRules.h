/// @file
/// Private: a zone's offsets as a table. Includes ICU.
#pragma once

#include <unicode/timezone.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace qz::detail {

/// ICU's zone, and a table of its offsets over the years that people ask for: ICU's own look-up
/// takes ten times as long and, where only a rule is known, memory.
class ZoneRules {
 public:
  explicit ZoneRules(std::unique_ptr<icu::TimeZone> zone) : zone_(std::move(zone)) {}

  struct Offset {
    std::int32_t total = 0;     // seconds to be added to UTC
    std::int32_t daylight = 0;  // of which for daylight saving
  };

  /// Times are seconds since 1970. Any thread.
  Offset offsetAt(double seconds) const noexcept;

  /// The next time after `seconds` at which the offset changes; NaN when there is none.
  double nextChange(double seconds) const;

  const icu::TimeZone& icuZone() const noexcept { return *zone_; }

 private:
  struct Span {
    double from;
    Offset offset;
  };
  void fill() const;
  Offset ask(double seconds) const noexcept;

  std::unique_ptr<icu::TimeZone> zone_;
  mutable std::once_flag filled_;
  mutable std::vector<Span> spans_;
};

}  // namespace qz::detail
