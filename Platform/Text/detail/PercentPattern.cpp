#include "Platform/Text/detail/PercentPattern.h"

#include <algorithm>

#include "Platform/Text/detail/DateNames.h"

namespace qz::detail {
namespace {

class Compiler {
 public:
  explicit Compiler(const NSLocale& locale) : locale_(locale) {}

  PercentPattern compile(std::u16string_view format) {
    for (std::size_t at = 0; at < format.size(); ++at) {
      if (format[at] == u'%' && at + 1 < format.size() && convert(format[at + 1]))
        ++at;
      else
        text(format.substr(at, 1));
    }
    return std::move(pattern_);
  }

 private:
  void text(std::u16string_view units) {
    auto& steps = pattern_.steps;
    if (steps.empty() || steps.back().field != DateField::Text)
      steps.push_back(
          {DateField::Text, 0, 0, static_cast<std::uint32_t>(pattern_.texts.size()), 0});
    steps.back().length += static_cast<std::uint32_t>(units.size());
    pattern_.texts += units;
  }

  void field(DateField which, std::uint8_t width = 0, char16_t fill = u'0') {
    pattern_.steps.push_back({which, width, fill});
  }

  // False for a conversion that there is not.
  bool convert(char16_t conversion) {
    switch (conversion) {
      case u'%':
        text(u"%");
        break;
      case u'a':
        field(DateField::ShortWeekdayName);
        break;
      case u'A':
        field(DateField::WeekdayName);
        break;
      case u'b':
        field(DateField::ShortMonthName);
        break;
      case u'B':
        field(DateField::MonthName);
        break;
      case u'c':
        local(2, 2);
        break;
      case u'd':
        field(DateField::Day, 2);
        break;
      case u'e':
        field(DateField::Day, 2, u' ');
        break;
      case u'F':
        field(DateField::Millisecond, 3);
        break;
      case u'H':
        field(DateField::Hour, 2);
        break;
      case u'I':
        field(DateField::HalfDayHour, 2);
        break;
      case u'j':
        field(DateField::YearDay, 3);
        break;
      case u'm':
        field(DateField::Month, 2);
        break;
      case u'M':
        field(DateField::Minute, 2);
        break;
      case u'p':
        field(DateField::HalfDay);
        break;
      case u'S':
        field(DateField::Second, 2);
        break;
      case u'w':
        field(DateField::WeekdayNumber, 1);
        break;
      case u'x':
        local(1, 0);
        break;
      case u'X':
        local(0, 2);
        break;
      case u'y':
        field(DateField::ShortYear, 2);
        break;
      case u'Y':
        field(DateField::Year, 4);
        break;
      case u'Z':
        field(DateField::ZoneName);
        break;
      case u'z':
        field(DateField::ZoneOffset);
        break;
      default:
        return false;
    }
    return true;
  }

  // The locale's own pattern, letter by letter.
  void local(int dateStyle, int timeStyle) {
    const std::u16string pattern = localePattern(locale_, dateStyle, timeStyle);
    bool isQuoted = false;
    for (std::size_t at = 0; at < pattern.size();) {
      const char16_t letter = pattern[at];
      const std::size_t end = std::min(pattern.find_first_not_of(letter, at), pattern.size());
      if (letter == u'\'') {
        // Two in a row stand for one, quoted or not.
        for (std::size_t pairs = (end - at) / 2; pairs > 0; --pairs) text(u"'");
        if ((end - at) % 2 == 1) isQuoted = !isQuoted;
      } else if (isQuoted || !localField(letter, static_cast<std::uint8_t>(end - at))) {
        text(std::u16string_view(pattern).substr(at, end - at));
      }
      at = end;
    }
  }

  bool localField(char16_t letter, std::uint8_t count) {
    switch (letter) {
      case u'y':
      case u'u':
        count == 2 ? field(DateField::ShortYear, 2) : field(DateField::Year, count);
        break;
      case u'M':
      case u'L':
        month(count);
        break;
      case u'd':
        field(DateField::Day, count);
        break;
      case u'E':
        field(count < 4 ? DateField::ShortWeekdayName : DateField::WeekdayName);
        break;
      case u'H':
        field(DateField::Hour, count);
        break;
      case u'h':
        field(DateField::HalfDayHour, count);
        break;
      case u'm':
        field(DateField::Minute, count);
        break;
      case u's':
        field(DateField::Second, count);
        break;
      case u'a':
      case u'B':
        field(DateField::HalfDay);
        break;
      default:
        return false;
    }
    return true;
  }

  void month(std::uint8_t count) {
    if (count < 3)
      field(DateField::Month, count);
    else
      field(count == 3 ? DateField::ShortMonthName : DateField::MonthName);
  }

  const NSLocale& locale_;
  PercentPattern pattern_;
};

}  // namespace

PercentPattern PercentPattern::compile(std::u16string_view format, const NSLocale& locale) {
  return Compiler(locale).compile(format);
}

bool PercentPattern::needsNames() const noexcept {
  return std::any_of(steps.begin(), steps.end(),
                     [](const DateStep& step) { return isNameField(step.field); });
}

}  // namespace qz::detail
