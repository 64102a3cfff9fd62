#include "Platform/Text/detail/ZoneRules.h"

#include <unicode/basictz.h>
#include <unicode/tztrans.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "Platform/Text/detail/CivilTime.h"

namespace qz::detail {
namespace {

// What the table covers: 1900 to 2100.
constexpr double firstTime = -2208988800;
constexpr double lastTime = 4102444800;

// Beyond the farthest time ICU has no years.
double inMilliseconds(double seconds) noexcept {
  if (!(seconds > -farthestCivilTime)) return -farthestCivilTime * 1000;
  return std::min(seconds, farthestCivilTime) * 1000;
}

// When the offset next changes; `offset` is the one before. Some changes are of the name alone.
double changeAfter(const icu::TimeZone& zone, double seconds) {
  const auto* rules = dynamic_cast<const icu::BasicTimeZone*>(&zone);
  icu::TimeZoneTransition transition;
  double from = inMilliseconds(seconds);
  while (rules != nullptr && rules->getNextTransition(from, false, transition)) {
    from = transition.getTime();
    const icu::TimeZoneRule* before = transition.getFrom();
    const icu::TimeZoneRule* after = transition.getTo();
    if (before->getRawOffset() + before->getDSTSavings() !=
        after->getRawOffset() + after->getDSTSavings())
      return from / 1000;
  }
  return std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

ZoneRules::Offset ZoneRules::ask(double seconds) const noexcept {
  std::int32_t raw = 0;
  std::int32_t daylight = 0;
  UErrorCode status = U_ZERO_ERROR;
  zone_->getOffset(inMilliseconds(seconds), false, raw, daylight, status);
  if (U_FAILURE(status)) return {};
  return {(raw + daylight) / 1000, daylight / 1000};
}

void ZoneRules::fill() const {
  spans_.push_back({firstTime, ask(firstTime)});
  for (double at = firstTime; (at = changeAfter(*zone_, at)) < lastTime;)
    spans_.push_back({at, ask(at)});
}

ZoneRules::Offset ZoneRules::offsetAt(double seconds) const noexcept {
  if (!(seconds >= firstTime && seconds < lastTime)) return ask(seconds);
  std::call_once(filled_, [this] { fill(); });
  const auto after =
      std::upper_bound(spans_.begin() + 1, spans_.end(), seconds,
                       [](double time, const Span& span) { return time < span.from; });
  return (after - 1)->offset;
}

double ZoneRules::nextChange(double seconds) const {
  return std::isnan(seconds) ? seconds : changeAfter(*zone_, seconds);
}

}  // namespace qz::detail
