/// @file
/// Durations as on a clock: "1:02:05".
#pragma once

#include "Platform/Text/NSFormatter.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// Turns a number of seconds into text such as "1:02:05", and reads such text.
///
///     auto formatter = QZHMSFormatter::init();
///     formatter->stringForObjectValue(NSNumber::of(3725));   // "1:02:05"
///
/// Formatted are days, hours, minutes and seconds, as many as are needed: 65 seconds are "01:05",
/// 93784.5 seconds are "1:2:03:04.500". Hours have no leading zero, and what is below a minute
/// keeps its colon: ":05". The fraction is cut to milliseconds, never rounded up. Durations from
/// 2³² seconds on wrap around; infinities and "not a number" show as no seconds, ":00" or "-:00".
///
/// Read is the same, from the right: seconds, minutes, hours, days; what stands before the days is
/// overlooked. Blanks may precede each number. The fraction may have any number of digits and is
/// added after the sign has been applied: "-1.5" reads as -0.5. Sums beyond 32 bits wrap around.
///
/// Threads: as NSFormatter.
class QZHMSFormatter : public Derives<QZHMSFormatter, NSFormatter> {
 public:
  static void describe(ClassDescription<QZHMSFormatter>& is);

  /// With both flags true.
  static Ref<QZHMSFormatter> init();

  /// Whether a fraction of a second that is not zero is shown, as three digits.
  bool includeMilliseconds() const noexcept { return includeMilliseconds_; }
  void setIncludeMilliseconds(bool include) noexcept { includeMilliseconds_ = include; }

  /// Whether minutes and seconds always have two digits, also when nothing stands before them.
  bool includeLeadingZero() const noexcept { return includeLeadingZero_; }
  void setIncludeLeadingZero(bool include) noexcept { includeLeadingZero_ = include; }

  /// The text for an Object that answers `doubleValue`; nil for any other, and for nil.
  Ref<NSString> stringForObjectValue(NSObject* object) const override;

  /// Reads `string`. The result is a Number: a `Double` when there is a fraction, else an `Int`. It
  /// is stored in case of an error too, and is then what had been summed up before. The error is in
  /// the user's language. Raises NSInvalidArgumentException for a nil string.
  bool getObjectValue_forString_errorDescription(Ref<NSObject>* object, NSString* string,
                                                 Ref<NSString>* error) const override;

  /// A formatter of the same class with the same flags.
  Ref<NSObject> copy() const override;

 private:
  bool includeMilliseconds_ = true;
  bool includeLeadingZero_ = true;
};

}  // namespace qz

#pragma GCC visibility pop
