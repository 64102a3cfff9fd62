#include "QZFoundation/NSDate-QZFoundation.h"

#include <cmath>

#include "Platform/Runtime/Describe.h"
#include "Platform/Values/NSNumber.h"

namespace qz {
namespace {

constexpr double nanosecondsInSecond = 1000000000.0;

Ref<NSDate> dateOf(double seconds, double nanoseconds) {
  return NSDate::dateWithTimeIntervalSince1970(seconds + nanoseconds / nanosecondsInSecond);
}

}  // namespace

Ref<NSDate> dateWithTimespec(QZTimespec time) { return dateOf(time.tv_sec, time.tv_nsec); }

Ref<NSDate> dateWithTimespec(const ::timespec& time) {
  return dateOf(static_cast<double>(time.tv_sec), static_cast<double>(time.tv_nsec));
}

QZTimespec timespec(NSDate* self) {
  const double interval = self->timeIntervalSince1970();
  const auto seconds = detail::saturated<std::int32_t>(std::floor(interval));
  const double nanoseconds = (interval - seconds) * nanosecondsInSecond;
  // A moment before a second the difference is rounded up to a whole one.
  if (nanoseconds == nanosecondsInSecond) return {seconds, 999999999};
  return {seconds, detail::saturated<std::int32_t>(nanoseconds)};
}

void detail::registerNSDateQZFoundation() {
  extend<NSDate>("QZFoundation")
      .classMethod<overload<Ref<NSDate>(QZTimespec)>(&dateWithTimespec)>("dateWithTimespec:")
      .method<&qz::timespec>("timespec");
}

}  // namespace qz
