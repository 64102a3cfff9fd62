#include "Platform/Text/detail/NaturalDate.h"

#include <unicode/reldatefmt.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Text/NSTimeZone.h"
#include "Platform/Text/detail/CivilTime.h"
#include "Platform/Text/detail/DateEngine.h"
#include "Platform/Text/detail/DateNames.h"
#include "Platform/Text/detail/IcuText.h"
#include "Platform/Values/detail/UnitKinds.h"

namespace qz::detail {
namespace {

// What nobody says in words is longer than this.
constexpr std::size_t longestPhrase = 120;

// In lower case, with single blanks where there was something to keep words apart.
std::u16string plainWords(std::u16string_view text) {
  icu::UnicodeString folded = copyOf(text);
  folded.foldCase();
  std::u16string words;
  for (const char16_t unit : viewOf(folded)) {
    const bool isSpace = isBlank(unit) || unit == u',';
    if (isSpace && (words.empty() || words.back() == u' ')) continue;
    words += isSpace ? u' ' : unit;
  }
  if (words.ends_with(u' ')) words.pop_back();
  return words;
}

std::u16string_view trimmed(std::u16string_view text) {
  while (text.starts_with(u' ')) text.remove_prefix(1);
  while (text.ends_with(u' ')) text.remove_suffix(1);
  return text;
}

// The day, weekday or other stretch of the calendar that a phrase names.
struct Phrase {
  std::u16string words;
  UDateAbsoluteUnit unit;
  int distance;  // -2 to 2: of weekdays, the last, this, or the next one
};

// How a language says times relative to now.
class Language {
 public:
  explicit Language(const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    formatter_ = std::make_unique<icu::RelativeDateTimeFormatter>(locale, status);
    if (U_FAILURE(status)) {
      formatter_.reset();
      return;
    }
    add(UDAT_ABSOLUTE_NOW, UDAT_DIRECTION_PLAIN, 0);
    for (int unit = UDAT_ABSOLUTE_SUNDAY; unit < UDAT_ABSOLUTE_NOW; ++unit)
      for (const auto& [direction, distance] : directions)
        add(static_cast<UDateAbsoluteUnit>(unit), direction, distance);
    // "friday" alone.
    for (int unit = UDAT_ABSOLUTE_SUNDAY; unit <= UDAT_ABSOLUTE_SATURDAY; ++unit)
      add(static_cast<UDateAbsoluteUnit>(unit), UDAT_DIRECTION_PLAIN, 0);
  }

  /// The longest phrase that the text begins with, as a whole word; null for none.
  const Phrase* find(std::u16string_view text) const {
    const Phrase* best = nullptr;
    for (const Phrase& each : phrases_) {
      if (!text.starts_with(each.words)) continue;
      const bool isWhole = text.size() == each.words.size() || text[each.words.size()] == u' ';
      if (isWhole && (best == nullptr || each.words.size() > best->words.size())) best = &each;
    }
    return best;
  }

  /// Which unit, forward or back, `text` counts `count` of.
  struct Counted {
    UDateRelativeUnit unit;
    bool isBack;
  };
  std::optional<Counted> findCounted(std::u16string_view text, double count) const {
    for (int unit = UDAT_RELATIVE_SECONDS; formatter_ && unit <= UDAT_RELATIVE_YEARS; ++unit)
      for (const bool isBack : {false, true}) {
        icu::UnicodeString words;
        UErrorCode status = U_ZERO_ERROR;
        formatter_->format(count, isBack ? UDAT_DIRECTION_LAST : UDAT_DIRECTION_NEXT,
                           static_cast<UDateRelativeUnit>(unit), words, status);
        if (U_SUCCESS(status) && plainWords(viewOf(words)) == text)
          return Counted{static_cast<UDateRelativeUnit>(unit), isBack};
      }
    return std::nullopt;
  }

 private:
  static constexpr struct {
    UDateDirection direction;
    int distance;
  } directions[] = {{UDAT_DIRECTION_LAST_2, -2},
                    {UDAT_DIRECTION_LAST, -1},
                    {UDAT_DIRECTION_THIS, 0},
                    {UDAT_DIRECTION_NEXT, 1},
                    {UDAT_DIRECTION_NEXT_2, 2}};

  void add(UDateAbsoluteUnit unit, UDateDirection direction, int distance) {
    icu::UnicodeString words;
    UErrorCode status = U_ZERO_ERROR;
    formatter_->format(direction, unit, words, status);
    if (U_SUCCESS(status) && !words.isEmpty())
      phrases_.push_back({plainWords(viewOf(words)), unit, distance});
  }

  std::unique_ptr<icu::RelativeDateTimeFormatter> formatter_;
  std::vector<Phrase> phrases_;
};

class Reader {
 public:
  Reader(double now, const NSTimeZone& zone, const NSLocale& locale)
      : now_(now), zone_(zone), locale_(locale), halves_(DateNames::ofLocale(locale).halves) {
    today_ = civilOfLocal(splitTime(now + zone.offsetAt(now)));
    languages_.emplace_back(icu::Locale::getEnglish());
    if (icuLocale(locale) != icu::Locale::getEnglish()) languages_.emplace_back(icuLocale(locale));
    for (std::u16string& half : halves_) half = plainWords(half);
  }

  std::optional<double> read(std::u16string_view text) const {
    const std::u16string words = plainWords(text);
    if (words.empty() || words.size() > longestPhrase) return std::nullopt;
    if (const auto time = counted(words)) return time;
    if (const auto time = dayThenTime(words)) return time;
    if (const auto time = timeThenDay(words)) return time;
    return styled(text);
  }

 private:
  // "in 3 days" -----------------------------------------------------------------------------------

  std::optional<double> counted(std::u16string_view words) const {
    const auto digit = std::find_if(words.begin(), words.end(), &isDigit);
    double count = 0;
    std::size_t digits = 0;
    for (auto at = digit; at != words.end() && isDigit(*at); ++at, ++digits)
      count = count * 10 + (*at - u'0');
    if (digits == 0 || digits > 6) return std::nullopt;
    for (const Language& language : languages_)
      if (const auto found = language.findCounted(words, count))
        return away(found->unit, static_cast<std::int64_t>(found->isBack ? -count : count));
    return std::nullopt;
  }

  double away(UDateRelativeUnit unit, std::int64_t count) const {
    CivilTime civil = today_;
    switch (unit) {
      case UDAT_RELATIVE_SECONDS:
        return now_ + static_cast<double>(count);
      case UDAT_RELATIVE_MINUTES:
        return now_ + static_cast<double>(count) * 60;
      case UDAT_RELATIVE_HOURS:
        return now_ + static_cast<double>(count) * 3600;
      case UDAT_RELATIVE_DAYS:
        addDays(civil, count);
        break;
      case UDAT_RELATIVE_WEEKS:
        addDays(civil, count * 7);
        break;
      case UDAT_RELATIVE_MONTHS:
        addMonths(civil, count);
        break;
      default:
        addMonths(civil, count * 12);
        break;
    }
    return zone_.timeOfLocal(localOfCivil(civil));
  }

  static void addDays(CivilTime& civil, std::int64_t days) {
    setCivilDay(civil, daysOfCivil(civil.year, civil.month, civil.day) + days);
  }

  // The same day of another month, or that month's last.
  static void addMonths(CivilTime& civil, std::int64_t months) {
    const std::int64_t month = civil.year * 12 + civil.month - 1 + months;
    civil.year = floorDivide(month, 12);
    civil.month = static_cast<std::int32_t>(month - civil.year * 12) + 1;
    civil.day = std::min(civil.day, daysInMonth(civil.year, civil.month));
  }

  // "tomorrow at noon" ----------------------------------------------------------------------------

  const Phrase* phrase(std::u16string_view words) const {
    for (const Language& language : languages_)
      if (const Phrase* found = language.find(words)) return found;
    return nullptr;
  }

  std::optional<double> dayThenTime(std::u16string_view words) const {
    const Phrase* found = phrase(words);
    if (found == nullptr) return std::nullopt;
    std::u16string_view rest = trimmed(words.substr(found->words.size()));
    if (found->unit == UDAT_ABSOLUTE_NOW) return rest.empty() ? std::optional(now_) : std::nullopt;
    if (rest.starts_with(u"at ")) rest = trimmed(rest.substr(3));
    if (rest.empty()) return moment(*found, 0);
    const auto time = timeOfDay(rest);
    return time && rest.empty() ? std::optional(moment(*found, *time)) : std::nullopt;
  }

  std::optional<double> timeThenDay(std::u16string_view words) const {
    const auto time = timeOfDay(words);
    if (!time) return std::nullopt;
    words = trimmed(words);
    static const Phrase today{u"", UDAT_ABSOLUTE_DAY, 0};
    if (words.empty()) return moment(today, *time);
    if (words.starts_with(u"on ")) words = trimmed(words.substr(3));
    const Phrase* found = phrase(words);
    if (found == nullptr || found->words.size() != words.size() || found->unit == UDAT_ABSOLUTE_NOW)
      return std::nullopt;
    return moment(*found, *time);
  }

  double moment(const Phrase& phrase, std::int32_t secondsOfDay) const {
    CivilTime civil = today_;
    switch (phrase.unit) {
      case UDAT_ABSOLUTE_DAY:
        addDays(civil, phrase.distance);
        break;
      case UDAT_ABSOLUTE_WEEK:
        addDays(civil, 7 * phrase.distance);
        break;
      case UDAT_ABSOLUTE_MONTH:
        addMonths(civil, phrase.distance);
        break;
      case UDAT_ABSOLUTE_YEAR:
        addMonths(civil, 12 * phrase.distance);
        break;
      default:
        toWeekday(civil, phrase.unit - UDAT_ABSOLUTE_SUNDAY, phrase.distance);
        break;
    }
    civil.hour = civil.minute = civil.millisecond = 0;
    civil.second = secondsOfDay;
    return zone_.timeOfLocal(localOfCivil(civil));
  }

  static void toWeekday(CivilTime& civil, int weekday, int distance) {
    const int today = weekdayOfDays(daysOfCivil(civil.year, civil.month, civil.day));
    const int ahead = (weekday - today + 7) % 7;  // 0 to 6
    if (distance < 0)
      addDays(civil, ahead - 7);
    else
      addDays(civil, distance > 0 && ahead == 0 ? 7 : ahead);
  }

  // "17:30", "5pm", "noon": takes it from the text.
  std::optional<std::int32_t> timeOfDay(std::u16string_view& text) const {
    std::u16string_view rest = text;
    if (takeWord(rest, u"noon")) return taken(text, rest, 12 * 3600);
    if (takeWord(rest, u"midnight")) return taken(text, rest, 0);
    std::int32_t parts[3] = {0, 0, 0};
    int count = 0;
    do {
      if (!takeNumber(rest, parts[count])) return std::nullopt;
    } while (++count < 3 && takeWord(rest, u":"));
    const int half = takeHalf(rest);
    if (count == 1 && half < 0) return std::nullopt;  // a number alone is no time
    std::int32_t hour = parts[0];
    if (half >= 0 && (hour < 1 || hour > 12)) return std::nullopt;
    if (half >= 0) hour = hour % 12 + 12 * half;
    if (hour > 23 || parts[1] > 59 || parts[2] > 59) return std::nullopt;
    return taken(text, rest, hour * 3600 + parts[1] * 60 + parts[2]);
  }

  static std::optional<std::int32_t> taken(std::u16string_view& text, std::u16string_view rest,
                                           std::int32_t time) {
    if (!rest.empty() && rest.front() != u' ') return std::nullopt;
    text = trimmed(rest);
    return time;
  }

  static bool takeWord(std::u16string_view& text, std::u16string_view word) {
    if (!text.starts_with(word)) return false;
    text.remove_prefix(word.size());
    return true;
  }

  static bool takeNumber(std::u16string_view& text, std::int32_t& value) {
    std::size_t count = 0;
    for (value = 0; count < 2 && count < text.size() && isDigit(text[count]); ++count)
      value = value * 10 + (text[count] - u'0');
    text.remove_prefix(count);
    return count > 0;
  }

  int takeHalf(std::u16string_view& text) const {
    std::u16string_view rest = trimmed(text);
    for (int half = 0; half < 2; ++half) {
      std::u16string_view after = rest;
      const auto index = static_cast<std::size_t>(half);
      if (takeWord(after, half == 0 ? u"am" : u"pm") ||
          (index < halves_.size() && !halves_[index].empty() && takeWord(after, halves_[index]))) {
        text = after;
        return half;
      }
    }
    return -1;
  }

  // "24. Dezember 2024", "2024-12-24 17:30" -------------------------------------------------------

  std::optional<double> styled(std::u16string_view text) const {
    DateReading reading;
    CivilTime midnight = today_;
    midnight.hour = midnight.minute = midnight.second = midnight.millisecond = 0;
    reading.defaultTime = zone_.timeOfLocal(localOfCivil(midnight));
    reading.isLenient = false;
    for (const auto& pattern : {u"yyyy-MM-dd", u"yyyy-MM-dd HH:mm", u"yyyy-MM-dd HH:mm:ss",
                                u"yyyy-MM-dd'T'HH:mm:ss", u"yyyy-MM-dd'T'HH:mm:ssXXX"})
      if (const auto time = makePatternEngine(pattern, locale_, reading)->parse(text, zone_))
        return time;
    for (int dateStyle = 4; dateStyle >= 0; --dateStyle)
      for (int timeStyle = dateStyle == 0 ? 1 : 0; timeStyle <= 2; ++timeStyle)
        if (const auto time =
                makeStyleEngine(dateStyle, timeStyle, locale_, reading)->parse(text, zone_))
          return time;
    return std::nullopt;
  }

  double now_;
  const NSTimeZone& zone_;
  const NSLocale& locale_;
  CivilTime today_;
  std::vector<Language> languages_;
  std::vector<std::u16string> halves_;
};

}  // namespace

std::optional<double> readNaturalDate(std::u16string_view text, double now, const NSTimeZone& zone,
                                      const NSLocale& locale) {
  return Reader(now, zone, locale).read(text);
}

}  // namespace qz::detail
