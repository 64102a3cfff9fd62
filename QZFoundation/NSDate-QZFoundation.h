/// @file
/// Dates as seconds and nanoseconds.
#pragma once

#include <time.h>

#include <cstdint>

#include "Platform/Values/NSDate.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// Whole seconds since 1970 and the nanoseconds behind them, 32 bits each: from 1901 to 2038. The
/// structure of that name in the C library has more.
struct QZTimespec {
  /// As in the C library's: nanoseconds from 0 to 999999999.
  std::int32_t tv_sec = 0;
  std::int32_t tv_nsec = 0;

  /// The same time in the C library's structure.
  operator ::timespec() const noexcept { return {tv_sec, tv_nsec}; }  // NOLINT
  friend constexpr bool operator==(QZTimespec, QZTimespec) noexcept = default;
};

/// Seconds and nanoseconds after 1970, of either kind.
Ref<NSDate> dateWithTimespec(QZTimespec time);
Ref<NSDate> dateWithTimespec(const ::timespec& time);

/// The seconds rounded down, so that nanoseconds are not negative; these are cut off. A Date that
/// is too late or too early gives the greatest or the least value of both, and "not a number" 0.
/// For Dates of any range, use NSDate's `timePoint`. The receiver must not be nil.
QZTimespec timespec(NSDate* self);

}  // namespace qz

#pragma GCC visibility pop
