#include "Platform/Text/NSTimeZone.h"

#include <unicode/simpletz.h>
#include <unicode/strenum.h>
#include <unicode/tznames.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/detail/KeptForEver.h"
#include "Platform/Text/NSLocale.h"
#include "Platform/Text/detail/IcuText.h"
#include "Platform/Text/detail/LocaleNames.h"
#include "Platform/Text/detail/ZoneRules.h"

namespace qz {

using detail::ZoneRules;

void NSTimeZone::describe(ClassDescription<NSTimeZone>& is) {
  is.named("NSTimeZone")
      .classMethod<&NSTimeZone::systemTimeZone>("systemTimeZone")
      .classMethod<&NSTimeZone::resetSystemTimeZone>("resetSystemTimeZone")
      .classMethod<&NSTimeZone::defaultTimeZone>("defaultTimeZone")
      .classMethod<&NSTimeZone::setDefaultTimeZone>("setDefaultTimeZone:")
      .classMethod<&NSTimeZone::localTimeZone>("localTimeZone")
      .classMethod<&NSTimeZone::UTC>("UTC")
      .classMethod<&NSTimeZone::GMT>("GMT")
      .classMethod<&NSTimeZone::timeZoneWithName>("timeZoneWithName:")
      .initializer<&NSTimeZone::initWithName>("initWithName:")
      .classMethod<&NSTimeZone::timeZoneWithAbbreviation>("timeZoneWithAbbreviation:")
      .classMethod<&NSTimeZone::timeZoneForSecondsFromGMT>("timeZoneForSecondsFromGMT:")
      .classMethod<&NSTimeZone::knownTimeZoneNames>("knownTimeZoneNames")
      .classMethod<&NSTimeZone::abbreviationDictionary>("abbreviationDictionary")
      .property<&NSTimeZone::name>("name")
      .property<&NSTimeZone::secondsFromGMT>("secondsFromGMT")
      .method<&NSTimeZone::secondsFromGMTForDate>("secondsFromGMTForDate:")
      .property<&NSTimeZone::daylightSavingTimeOffset>("daylightSavingTimeOffset")
      .method<&NSTimeZone::daylightSavingTimeOffsetForDate>("daylightSavingTimeOffsetForDate:")
      .method<&NSTimeZone::isDaylightSavingTime>("isDaylightSavingTime")
      .method<&NSTimeZone::isDaylightSavingTimeForDate>("isDaylightSavingTimeForDate:")
      .method<&NSTimeZone::nextDaylightSavingTimeTransition>("nextDaylightSavingTimeTransition")
      .method<&NSTimeZone::nextDaylightSavingTimeTransitionAfterDate>(
          "nextDaylightSavingTimeTransitionAfterDate:")
      .property<&NSTimeZone::abbreviation>("abbreviation")
      .method<&NSTimeZone::abbreviationForDate>("abbreviationForDate:")
      .method<&NSTimeZone::localizedName_locale>("localizedName:locale:")
      .method<&NSTimeZone::isEqualToTimeZone>("isEqualToTimeZone:");
}

namespace {

// What a reader of log files and mail headers takes these for.
constexpr struct {
  const char* abbreviation;
  const char* zone;
} abbreviations[] = {
    {"ADT", "America/Halifax"},
    {"AEDT", "Australia/Sydney"},
    {"AEST", "Australia/Sydney"},
    {"AKDT", "America/Anchorage"},
    {"AKST", "America/Anchorage"},
    {"ART", "America/Argentina/Buenos_Aires"},
    {"AST", "America/Halifax"},
    {"AWST", "Australia/Perth"},
    {"BRT", "America/Sao_Paulo"},
    {"BST", "Europe/London"},
    {"CAT", "Africa/Harare"},
    {"CDT", "America/Chicago"},
    {"CEST", "Europe/Paris"},
    {"CET", "Europe/Paris"},
    {"CST", "America/Chicago"},
    {"EAT", "Africa/Addis_Ababa"},
    {"EDT", "America/New_York"},
    {"EEST", "Europe/Athens"},
    {"EET", "Europe/Athens"},
    {"EST", "America/New_York"},
    {"GMT", "GMT"},
    {"GST", "Asia/Dubai"},
    {"HKT", "Asia/Hong_Kong"},
    {"HST", "Pacific/Honolulu"},
    {"ICT", "Asia/Bangkok"},
    {"IRST", "Asia/Tehran"},
    {"IST", "Asia/Kolkata"},
    {"JST", "Asia/Tokyo"},
    {"KST", "Asia/Seoul"},
    {"MDT", "America/Denver"},
    {"MSK", "Europe/Moscow"},
    {"MST", "America/Denver"},
    {"NDT", "America/St_Johns"},
    {"NST", "America/St_Johns"},
    {"NZDT", "Pacific/Auckland"},
    {"NZST", "Pacific/Auckland"},
    {"PDT", "America/Los_Angeles"},
    {"PHT", "Asia/Manila"},
    {"PKT", "Asia/Karachi"},
    {"PST", "America/Los_Angeles"},
    {"SGT", "Asia/Singapore"},
    {"TRT", "Europe/Istanbul"},
    {"UTC", "UTC"},
    {"WAT", "Africa/Lagos"},
    {"WEST", "Europe/Lisbon"},
    {"WET", "Europe/Lisbon"},
    {"WIB", "Asia/Jakarta"},
};

constexpr std::size_t longestName = 64;
constexpr std::int32_t greatestOffset = 18 * 3600;

double timeOf(NSDate* date) {
  return date == nullptr ? NSDate().timeIntervalSince1970() : date->timeIntervalSince1970();
}

// "GMT+05:30", with seconds where there are any.
std::string nameOfOffset(std::int32_t seconds) {
  if (seconds == 0) return "GMT";
  const std::int32_t distance = std::abs(seconds);
  const auto twoDigits = [](std::int32_t value) {
    return std::string{static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
  };
  std::string name = seconds < 0 ? "GMT-" : "GMT+";
  name += twoDigits(distance / 3600) + ":" + twoDigits(distance / 60 % 60);
  return distance % 60 == 0 ? name : name + ":" + twoDigits(distance % 60);
}

// The zones that were asked for by their name in the tz database, which are finite in number.
struct KnownZones {
  std::mutex mutex;
  std::map<std::u16string, Ref<NSTimeZone>, std::less<>> byName;
};
KnownZones& knownZones() {
  static auto* const zones = new KnownZones;
  return *zones;
}

// The zones of machine and process. What is replaced stays alive, because another thread may be
// about to retain it; programs change their zone seldom.
std::atomic<NSTimeZone*> machineZone{nullptr};
std::atomic<NSTimeZone*> processZone{nullptr};

}  // namespace

// Finding -----------------------------------------------------------------------------------------

NSTimeZone::NSTimeZone(NSString* name, std::unique_ptr<const ZoneRules> rules)
    : name_(name), rules_(std::move(rules)) {}

NSTimeZone::~NSTimeZone() = default;

Ref<NSTimeZone> NSTimeZone::named(std::u16string_view name) {
  if (name.empty() || name.size() > longestName) return nullptr;
  KnownZones& known = knownZones();
  {
    const std::lock_guard lock(known.mutex);
    const auto found = known.byName.find(name);
    if (found != known.byName.end()) return found->second;
  }
  std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(detail::copyOf(name)));
  icu::UnicodeString identifier;
  zone->getID(identifier);
  if (identifier == icu::UnicodeString(UCAL_UNKNOWN_ZONE_ID)) return nullptr;
  const bool isFixed = detail::viewOf(identifier) != name;
  auto made = Ref<NSTimeZone>(
      new NSTimeZone(detail::stringOf(identifier), std::make_unique<ZoneRules>(std::move(zone))),
      adopt);
  // Fixed zones have as many names as there are offsets: those are not kept.
  if (isFixed || name.starts_with(u"GMT") || name.starts_with(u"UTC")) return made;
  const std::lock_guard lock(known.mutex);
  return known.byName.try_emplace(std::u16string(name), std::move(made)).first->second;
}

Ref<NSTimeZone> NSTimeZone::ofMachine() {
  static std::mutex mutex;  // ICU finds the machine's zone by means of buffers of its process
  std::unique_lock lock(mutex);
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
  lock.unlock();
  icu::UnicodeString identifier;
  zone->getID(identifier);
  Ref<NSTimeZone> found = named(detail::viewOf(identifier));
  return found ? found : UTC();
}

Ref<NSTimeZone> NSTimeZone::systemTimeZone() {
  NSTimeZone* zone = machineZone.load(std::memory_order_acquire);
  if (zone != nullptr) return zone;
  Ref<NSTimeZone> made = ofMachine();
  detail::keepForEver(made);  // before anybody can load it
  if (machineZone.compare_exchange_strong(zone, made.get(), std::memory_order_acq_rel)) return made;
  return zone;
}

void NSTimeZone::resetSystemTimeZone() { machineZone.store(nullptr, std::memory_order_release); }

Ref<NSTimeZone> NSTimeZone::defaultTimeZone() {
  NSTimeZone* zone = processZone.load(std::memory_order_acquire);
  return zone != nullptr ? Ref<NSTimeZone>(zone) : systemTimeZone();
}

void NSTimeZone::setDefaultTimeZone(NSTimeZone* zone) {
  detail::keepForEver(zone);
  processZone.store(zone, std::memory_order_release);
}

const NSTimeZone& NSTimeZone::inForce() {
  const NSTimeZone* zone = processZone.load(std::memory_order_acquire);
  if (zone == nullptr) zone = machineZone.load(std::memory_order_acquire);
  if (zone == nullptr) {
    const Ref<NSTimeZone> found = systemTimeZone();  // which is kept for ever
    zone = found.get();
  }
  return *zone;
}

Ref<NSTimeZone> NSTimeZone::localTimeZone() { return defaultTimeZone(); }

Ref<NSTimeZone> NSTimeZone::UTC() {
  static NSTimeZone* const zone =
      new NSTimeZone("UTC"_ns, std::make_unique<ZoneRules>(std::make_unique<icu::SimpleTimeZone>(
                                   0, icu::UnicodeString(u"UTC"))));
  return zone;
}

Ref<NSTimeZone> NSTimeZone::GMT() { return timeZoneForSecondsFromGMT(0); }

Ref<NSTimeZone> NSTimeZone::timeZoneWithName(NSString* name) {
  if (name == nullptr) return nullptr;
  return name->view() == u"UTC" ? UTC() : named(name->view());
}

Ref<NSTimeZone> NSTimeZone::initWithName(NSString* name) { return timeZoneWithName(name); }

Ref<NSTimeZone> NSTimeZone::timeZoneWithAbbreviation(NSString* abbreviation) {
  if (abbreviation == nullptr) return nullptr;
  const std::string text = abbreviation->UTF8String();
  for (const auto& [known, zone] : abbreviations)
    if (text == known) return timeZoneWithName(NSString::stringWithUTF8String(zone));
  return text.starts_with("GMT") ? timeZoneWithName(abbreviation) : nullptr;
}

Ref<NSTimeZone> NSTimeZone::timeZoneForSecondsFromGMT(std::int32_t seconds) {
  if (seconds < -greatestOffset || seconds > greatestOffset) return nullptr;
  const Ref<NSString> name = NSString::stringWithUTF8String(nameOfOffset(seconds));
  auto zone = std::make_unique<icu::SimpleTimeZone>(seconds * 1000, detail::copyOf(name->view()));
  return Ref<NSTimeZone>(new NSTimeZone(name, std::make_unique<ZoneRules>(std::move(zone))), adopt);
}

Ref<NSArray> NSTimeZone::knownTimeZoneNames() {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::StringEnumeration> names(icu::TimeZone::createTimeZoneIDEnumeration(
      UCAL_ZONE_TYPE_CANONICAL, nullptr, nullptr, status));
  auto known = NSMutableArray::array();
  while (U_SUCCESS(status)) {
    const icu::UnicodeString* name = names->snext(status);
    if (name == nullptr) break;
    known->addObject(detail::stringOf(*name));
  }
  return as<NSArray>(known->copy());
}

Ref<NSDictionary> NSTimeZone::abbreviationDictionary() {
  auto dictionary = NSMutableDictionary::dictionary();
  for (const auto& [abbreviation, zone] : abbreviations)
    dictionary->setObject_forKey(NSString::stringWithUTF8String(zone),
                                 NSString::stringWithUTF8String(abbreviation));
  return as<NSDictionary>(dictionary->copy());
}

// Offsets -----------------------------------------------------------------------------------------

std::int32_t NSTimeZone::offsetAt(NSTimeInterval seconds) const noexcept {
  return rules_->offsetAt(seconds).total;
}

NSTimeInterval NSTimeZone::timeOfLocal(NSTimeInterval local) const noexcept {
  // No zone changes its clocks twice within two days, so one of these two offsets is in force.
  constexpr double day = 86400;
  const std::int32_t before = offsetAt(local - day);
  const std::int32_t after = offsetAt(local + day);
  if (offsetAt(local - before) == before || offsetAt(local - after) != after) return local - before;
  return local - after;
}

std::int32_t NSTimeZone::secondsFromGMT() const { return secondsFromGMTForDate(nullptr); }

std::int32_t NSTimeZone::secondsFromGMTForDate(NSDate* date) const {
  return offsetAt(timeOf(date));
}

NSTimeInterval NSTimeZone::daylightSavingTimeOffset() const {
  return daylightSavingTimeOffsetForDate(nullptr);
}

NSTimeInterval NSTimeZone::daylightSavingTimeOffsetForDate(NSDate* date) const {
  return rules_->offsetAt(timeOf(date)).daylight;
}

bool NSTimeZone::isDaylightSavingTime() const { return isDaylightSavingTimeForDate(nullptr); }

bool NSTimeZone::isDaylightSavingTimeForDate(NSDate* date) const {
  return rules_->offsetAt(timeOf(date)).daylight != 0;
}

Ref<NSDate> NSTimeZone::nextDaylightSavingTimeTransition() const {
  return nextDaylightSavingTimeTransitionAfterDate(nullptr);
}

Ref<NSDate> NSTimeZone::nextDaylightSavingTimeTransitionAfterDate(NSDate* date) const {
  const double next = rules_->nextChange(timeOf(date));
  return std::isnan(next) ? nullptr : NSDate::dateWithTimeIntervalSince1970(next);
}

// Names -------------------------------------------------------------------------------------------

Ref<NSString> NSTimeZone::abbreviation() const { return abbreviationForDate(nullptr); }

Ref<NSString> NSTimeZone::abbreviationForDate(NSDate* date) const {
  // English as it is written in the zone's region knows the abbreviations in use there.
  char region[8] = {};
  UErrorCode status = U_ZERO_ERROR;
  icu::TimeZone::getRegion(detail::aliasOf(name_->view()), region, sizeof region, status);
  const icu::Locale locale("en", U_SUCCESS(status) ? region : "US");
  icu::UnicodeString text;
  rules_->icuZone().getDisplayName(isDaylightSavingTimeForDate(date),
                                   icu::TimeZone::SHORT_COMMONLY_USED, locale, text);
  return detail::stringOf(text);
}

Ref<NSString> NSTimeZone::localizedName_locale(NSTimeZoneNameStyle style, NSLocale* locale) const {
  using icu::TimeZone;
  bool daylight = false;
  TimeZone::EDisplayType type = TimeZone::LONG;
  switch (style) {
    case NSTimeZoneNameStyle::Standard:
      break;
    case NSTimeZoneNameStyle::ShortStandard:
      type = TimeZone::SHORT;
      break;
    case NSTimeZoneNameStyle::DaylightSaving:
      daylight = true;
      break;
    case NSTimeZoneNameStyle::ShortDaylightSaving:
      daylight = true;
      type = TimeZone::SHORT;
      break;
    case NSTimeZoneNameStyle::Generic:
      type = TimeZone::LONG_GENERIC;
      break;
    case NSTimeZoneNameStyle::ShortGeneric:
      type = TimeZone::SHORT_GENERIC;
      break;
    default:
      return nullptr;
  }
  const Ref<NSLocale> chosen = locale == nullptr ? detail::localeForDates() : Ref(locale);
  icu::UnicodeString text;
  rules_->icuZone().getDisplayName(daylight, type, detail::icuLocale(*chosen), text);
  return detail::stringOf(text);
}

// Object ------------------------------------------------------------------------------------------

bool NSTimeZone::isEqualToTimeZone(NSTimeZone* other) const {
  return other != nullptr && (other == this || other->name_->isEqualToString(name_));
}

bool NSTimeZone::isEqual(NSObject* other) const { return isEqualToTimeZone(as<NSTimeZone>(other)); }

std::size_t NSTimeZone::hash() const { return name_->hash(); }

Ref<NSObject> NSTimeZone::copy() const { return const_cast<NSTimeZone*>(this); }

Ref<NSString> NSTimeZone::description() const {
  return NSString::stringWithFormat("%@ (%@) offset %d"_ns, name_, abbreviation(),
                                    secondsFromGMT());
}

}  // namespace qz
