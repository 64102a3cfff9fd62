/// @file
/// Date formatters: points in time into text for people, and back.
#pragma once

#include <atomic>
#include <cstdint>

#include "Platform/Runtime/Derives.h"
#include "Platform/Text/NSFormatter.h"
#include "Platform/Values/NSDate.h"

#pragma GCC visibility push(default)

namespace qz {

class NSLocale;
class NSTimeZone;

namespace detail {
class DateEngine;
}  // namespace detail

/// How much a date or a time says: "24.12.24" and "17:30", up to "Tuesday, 24 December 2024" and
/// "17:30:00 Central European Standard Time".
enum class NSDateFormatterStyle : std::int32_t {
  None = 0,
  Short = 1,
  Medium = 2,
  Long = 3,
  Full = 4
};

/// What the letters of a format mean. `Default` is what `defaultFormatterBehavior` says.
enum class NSDateFormatterBehavior : std::int32_t {
  Default = 0,
  PercentFormat = 1000,  ///< "%d.%m.%Y"
  Pattern = 1040,        ///< "dd.MM.yyyy", Unicode's letters (UTS #35)
};

/// Turns NSDates into text and reads such text.
///
///     auto log = NSDateFormatter::initWithDateFormat_allowNaturalLanguage(
///         "%y-%m-%d %H:%M:%S.%F "_ns, false);
///     log->stringFromDate(NSDate::date());          // "24-12-24 17:30:00.250 "
///
///     auto letter = NSDateFormatter::init();
///     letter->setDateStyle(NSDateFormatterStyle::Long);
///     letter->stringFromDate(NSDate::date());       // "24. Dezember 2024"
///
/// Formats with percent signs know, in the locale's language:
///
/// | conversion | what |
/// |---|---|
/// | `%Y %y` | the year; its last two digits |
/// | `%m %B %b` | the month, 01 to 12; its name; its short name |
/// | `%d %e %j` | the day, 01 to 31; with a blank for the zero; of the year, 001 to 366 |
/// | `%A %a %w` | the weekday; short; 0 (Sunday) to 6 |
/// | `%H %I %p` | the hour, 00 to 23; 01 to 12; before or after noon |
/// | `%M %S %F` | minutes; seconds; milliseconds, 000 to 999 |
/// | `%Z %z` | the zone, "CET"; its distance from UTC, "+0100" |
/// | `%x %X %c` | the locale's short date; its time; both |
/// | `%%` | "%"; what is not listed stays as it stands |
///
/// Numbers are written in ASCII digits there; patterns and styles use the locale's. The calendar is
/// the Gregorian one for all times, unless the locale's own is another.
///
/// Reading takes the whole text. Fields that it does not give come from `defaultDate`, two-digit
/// years lie in the century that begins with `twoDigitStartDate`. A text that is not in the format
/// is read as natural language if that is allowed: "today", "next friday", "in 3 days", "tomorrow
/// at 17:30", in English and in the locale's language, and dates in the locale's usual styles.
///
/// Milliseconds are cut, not rounded up into the next second. Times beyond five million years have
/// no text: nil. Threads: as NSFormatter; formatting takes no lock.
class NSDateFormatter : public Derives<NSDateFormatter, NSFormatter> {
 public:
  static void describe(ClassDescription<NSDateFormatter>& is);

  NSDateFormatter();
  ~NSDateFormatter() override;

  /// Behaviour `Default`, no format, both styles none.
  static Ref<NSDateFormatter> init();

  /// Behaviour `PercentFormat`. A nil format formats every date as the empty String.
  static Ref<NSDateFormatter> initWithDateFormat_allowNaturalLanguage(NSString* format,
                                                                      bool naturalLanguage);

  /// What formatters of the behaviour `Default` do: `Pattern`, unless set. Any thread.
  static NSDateFormatterBehavior defaultFormatterBehavior();
  static void setDefaultFormatterBehavior(NSDateFormatterBehavior behavior);

  /// A date in the process's locale and zone.
  static Ref<NSString> localizedStringFromDate_dateStyle_timeStyle(NSDate* date,
                                                                   NSDateFormatterStyle dateStyle,
                                                                   NSDateFormatterStyle timeStyle);

  /// The pattern by which readers of `locale` (nil: the process's) write the fields whose letters
  /// stand in `fields`: "MMMd" gives "d. MMM" in German. `options` are not used. Nil for nil.
  static Ref<NSString> dateFormatFromTemplate_options_locale(NSString* fields,
                                                             std::uint32_t options,
                                                             NSLocale* locale);

  // Converting ------------------------------------------------------------------------------------

  /// Nil for nil.
  Ref<NSString> stringFromDate(NSDate* date) const;

  /// Nil for text that is no date, and for nil.
  Ref<NSDate> dateFromString(NSString* string) const;

  /// The text of an NSDate; nil for another Object.
  Ref<NSString> stringForObjectValue(NSObject* object) const override;
  bool getObjectValue_forString_errorDescription(Ref<NSObject>* object, NSString* string,
                                                 Ref<NSString>* error) const override;

  // Settings, each of them a key too --------------------------------------------------------------

  /// `Default` unless set or made with a format.
  NSDateFormatterBehavior formatterBehavior() const noexcept { return behavior_; }
  void setFormatterBehavior(NSDateFormatterBehavior behavior);

  /// The format that was set, else the pattern that the styles come to. A format that is set counts
  /// and styles do not, whichever came first; nil takes it back.
  Ref<NSString> dateFormat() const;
  void setDateFormat(NSString* format);

  /// Sets the pattern of `dateFormatFromTemplate:options:locale:` for this formatter's locale.
  void setLocalizedDateFormatFromTemplate(NSString* fields);

  /// How much of the date and of the time is shown while no format is set; `None`, as at first,
  /// leaves that part out.
  NSDateFormatterStyle dateStyle() const noexcept { return dateStyle_; }
  void setDateStyle(NSDateFormatterStyle style);
  NSDateFormatterStyle timeStyle() const noexcept { return timeStyle_; }
  void setTimeStyle(NSDateFormatterStyle style);

  /// The process's locale for dates, unless set; nil takes back what was set.
  Ref<NSLocale> locale() const;
  void setLocale(NSLocale* locale);

  /// `NSTimeZone::defaultTimeZone` at the time of use, unless set; nil takes back what was set.
  Ref<NSTimeZone> timeZone() const;
  void setTimeZone(NSTimeZone* zone);

  /// Whether text that is not in the format is read as natural language. False unless set.
  bool allowsNaturalLanguage() const noexcept { return allowsNaturalLanguage_; }
  void setAllowsNaturalLanguage(bool allows) noexcept { allowsNaturalLanguage_ = allows; }

  /// Whether reading overlooks blanks, case and fields beyond their limits. False unless set.
  bool isLenient() const noexcept { return isLenient_; }
  void setLenient(bool lenient);

  /// Nil stands for the first moment of the year 2000.
  Ref<NSDate> defaultDate() const { return defaultDate_; }
  void setDefaultDate(NSDate* date);

  /// Nil stands for the first moment of 1950 in UTC.
  Ref<NSDate> twoDigitStartDate() const { return twoDigitStartDate_; }
  void setTwoDigitStartDate(NSDate* date);

  /// The locale's names, January and Sunday first.
  Ref<NSArray> monthSymbols() const;
  Ref<NSArray> shortMonthSymbols() const;
  Ref<NSArray> weekdaySymbols() const;
  Ref<NSArray> shortWeekdaySymbols() const;
  Ref<NSString> AMSymbol() const;
  Ref<NSString> PMSymbol() const;

  /// A formatter with the same settings.
  Ref<NSObject> copy() const override;

 private:
  const detail::DateEngine& engine() const;
  void dropEngine() noexcept;
  const NSTimeZone& zone() const;

  bool allowsNaturalLanguage_ = false;
  bool isLenient_ = false;
  NSDateFormatterBehavior behavior_ = NSDateFormatterBehavior::Default;
  NSDateFormatterStyle dateStyle_ = NSDateFormatterStyle::None;
  NSDateFormatterStyle timeStyle_ = NSDateFormatterStyle::None;
  Ref<NSString> format_;
  Ref<NSLocale> locale_;
  Ref<NSTimeZone> zone_;
  Ref<NSDate> defaultDate_;
  Ref<NSDate> twoDigitStartDate_;
  mutable std::atomic<const detail::DateEngine*> engine_{nullptr};
};

}  // namespace qz

#pragma GCC visibility pop
