/// @file
/// Time zones: how far local time is from UTC, and when that changes.
#pragma once

#include <cstdint>
#include <memory>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSLocale;

namespace detail {
class ZoneRules;
}

/// How a zone's name is written out: "Central European Summer Time", or short, "CEST"; the generic
/// ones say nothing about daylight saving: "Central European Time".
enum class NSTimeZoneNameStyle : std::int32_t {
  Standard = 0,
  ShortStandard = 1,
  DaylightSaving = 2,
  ShortDaylightSaving = 3,
  Generic = 4,
  ShortGeneric = 5,
};

/// A time zone: a name of the tz database ("Europe/Berlin") and the rules behind it, or a fixed
/// distance from UTC ("GMT+05:30").
///
///     auto berlin = NSTimeZone::timeZoneWithName("Europe/Berlin"_ns);
///     berlin->secondsFromGMTForDate(NSDate::date());   // 3600, or 7200 in summer
///
/// The rules are ICU's. Asking for an offset takes no lock and no memory. Immutable; any thread.
/// What takes a date takes nil for now.
class NSTimeZone final : public Derives<NSTimeZone, NSObject> {
 public:
  static void describe(ClassDescription<NSTimeZone>& is);
  ~NSTimeZone() override;

  // Finding ---------------------------------------------------------------------------------------

  /// The zone of the machine: the variable TZ, else /etc/localtime, else UTC. Remembered until
  /// `resetSystemTimeZone`.
  static Ref<NSTimeZone> systemTimeZone();
  static void resetSystemTimeZone();

  /// The zone of the process: what was set, else the system's. Nil takes back what was set.
  static Ref<NSTimeZone> defaultTimeZone();
  static void setDefaultTimeZone(NSTimeZone* zone);

  /// The same as `defaultTimeZone` at the time of asking.
  static Ref<NSTimeZone> localTimeZone();

  /// "UTC", and the same under the name "GMT".
  static Ref<NSTimeZone> UTC();
  static Ref<NSTimeZone> GMT();

  /// The zone of the tz database by its name, or a fixed one ("GMT+5:30", "UTC"); nil for nil and
  /// any other text.
  static Ref<NSTimeZone> timeZoneWithName(NSString* name);
  static Ref<NSTimeZone> initWithName(NSString* name);

  /// The zone that an entry of `abbreviationDictionary` names ("CET"), or a fixed one ("GMT-3");
  /// nil for any other.
  static Ref<NSTimeZone> timeZoneWithAbbreviation(NSString* abbreviation);

  /// At a fixed distance, up to 18 hours; nil beyond. 0 is "GMT".
  static Ref<NSTimeZone> timeZoneForSecondsFromGMT(std::int32_t seconds);

  /// The names of all zones, and what common abbreviations stand for: many stand for several zones,
  /// and then for the one most people mean.
  static Ref<NSArray> knownTimeZoneNames();
  static Ref<NSDictionary> abbreviationDictionary();

  // Reading ---------------------------------------------------------------------------------------

  /// Its name in the tz database, or "GMT+05:30" for a fixed one, however it was asked for.
  Ref<NSString> name() const { return name_; }

  /// What is added to UTC, in seconds, and how much of that is for daylight saving.
  std::int32_t secondsFromGMT() const;
  std::int32_t secondsFromGMTForDate(NSDate* date) const;
  NSTimeInterval daylightSavingTimeOffset() const;
  NSTimeInterval daylightSavingTimeOffsetForDate(NSDate* date) const;
  bool isDaylightSavingTime() const;
  bool isDaylightSavingTimeForDate(NSDate* date) const;

  /// When the offset next changes after a date; nil when it never does again.
  Ref<NSDate> nextDaylightSavingTimeTransition() const;
  Ref<NSDate> nextDaylightSavingTimeTransitionAfterDate(NSDate* date) const;

  /// "CET", "PDT", as English readers of the zone's region write it; "GMT+9" where they have none.
  Ref<NSString> abbreviation() const;
  Ref<NSString> abbreviationForDate(NSDate* date) const;

  /// The name for readers of `locale`, nil for the process's.
  Ref<NSString> localizedName_locale(NSTimeZoneNameStyle style, NSLocale* locale) const;

  /// The same rules and the same name.
  bool isEqualToTimeZone(NSTimeZone* other) const;
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;
  Ref<NSObject> copy() const override;

  /// "Europe/Berlin (CET) offset 3600".
  Ref<NSString> description() const override;

  /// For formatters: the process's zone without counting, which is never destroyed.
  static const NSTimeZone& inForce();

  /// For formatters: the offset at a time in seconds since 1970, and the time at which clocks of
  /// this zone show `local` seconds since 1970. Of two such times it is the earlier one; a time
  /// that clocks leap over is read by the offset before the leap.
  std::int32_t offsetAt(NSTimeInterval seconds) const noexcept;
  NSTimeInterval timeOfLocal(NSTimeInterval local) const noexcept;

  /// For the library: offsets and their changes.
  const detail::ZoneRules& rules() const noexcept QZ_LIFETIME_BOUND { return *rules_; }

 private:
  NSTimeZone(NSString* name, std::unique_ptr<const detail::ZoneRules> rules);
  static Ref<NSTimeZone> named(std::u16string_view name);
  static Ref<NSTimeZone> ofMachine();

  Ref<NSString> name_;
  std::unique_ptr<const detail::ZoneRules> rules_;
};

}  // namespace qz

#pragma GCC visibility pop
