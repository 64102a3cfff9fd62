#include "QZFoundation/QZHMSFormatter.h"

#include "Platform/Values/NSScanner.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

std::string text(QZHMSFormatter* formatter, double seconds) {
  return to_string(formatter->stringForObjectValue(NSNumber::of(seconds)));
}

TEST(QZHMSFormatter, Formatting) {
  const struct {
    double seconds;
    const char* padded;
    const char* plain;
  } cases[] = {
      {0, ":00", ":0"},
      {-5.25, "-:05.250", "-:5.250"},
      {3600, "1:00:00", "1:00:0"},
      {3725, "1:02:05", "1:02:05"},
      {86399, "23:59:59", "23:59:59"},
      {-93784.5, "-1:2:03:04.500", "-1:2:03:04.500"},
      {1.9996, ":01.999", ":1.999"},  // cut
      {0.05, ":00.050", ":0.050"},
      {1.001, ":01", ":1"},  // the double is below 1.001, and its milliseconds are 0.99…
      {-0.0, ":00", ":0"},
      {4294967296.0, ":00", ":0"},  // wraps around
      {4294967301.5, ":05.500", ":5.500"},
      {1e300, ":00", ":0"},
      {-HUGE_VAL, "-:00", "-:0"},
      {std::nan(""), ":00", ":0"},
  };
  const auto padded = QZHMSFormatter::init();
  const auto plain = QZHMSFormatter::init();
  plain->setIncludeLeadingZero(false);
  const auto whole = as<QZHMSFormatter>(plain->copy());
  whole->setIncludeMilliseconds(false);
  for (const auto& each : cases) {
    EXPECT_EQ(text(padded, each.seconds), each.padded);
    EXPECT_EQ(text(plain, each.seconds), each.plain);
    const std::string cut(each.plain);
    EXPECT_EQ(text(whole, each.seconds), cut.substr(0, cut.find('.')));
  }
  EXPECT_EQ(to_string(padded->stringForObjectValue("65.5"_ns)), "01:05.500");
  EXPECT_EQ(padded->stringForObjectValue(NSArray::array()), nullptr);
  EXPECT_EQ(padded->stringForObjectValue(nullptr), nullptr);
}

struct Parsed {
  double value;
  bool isDouble;
  std::string error;
  bool operator==(const Parsed&) const = default;
};

Parsed parse(NSString* string) {
  Ref<NSObject> value;
  Ref<NSString> error = "left over"_ns;
  const bool isRight =
      QZHMSFormatter::init()->getObjectValue_forString_errorDescription(&value, string, &error);
  EXPECT_EQ(isRight, error == nullptr) << string;
  const auto number = as<NSNumber>(value);
  EXPECT_TRUE(number && (number->kind() == NumberKind::Double || number->kind() == NumberKind::Int))
      << string;
  return {number->doubleValue(), number->kind() == NumberKind::Double,
          error ? error->UTF8String() : ""};
}

TEST(QZHMSFormatter, Parsing) {
  const struct {
    NSString* text;
    double value;
    const char* error;
  } cases[] = {
      {"1:02:05"_ns, 3725, ""},
      {""_ns, 0, ""},
      {"9:1:00:00:05"_ns, 86405, ""},  // what stands before the days is overlooked
      {"-1.5"_ns, -0.5, ""},           // the fraction is added last
      {"-:05.250"_ns, -4.75, ""},
      {"1. 5"_ns, 1.05, ""},  // the blank counts as a decimal place
      {"1.-5"_ns, 0.95, ""},  // and so does a sign
      {"1.5 "_ns, 1.5, ""},   // blanks at the end are skipped behind a fraction
      {"1:05 "_ns, 0, "Illegal characters in seconds component"},  // and only there
      {" -5"_ns, 0, "Value -5 too large for seconds component"},   // the blank was the sign's unit
      {"1:60"_ns, 0, "Value 60 too large for seconds component"},
      {"60:00"_ns, 0, "Value 60 too large for minutes component"},
      {"24:00:01"_ns, 1, "Value 24 too large for hours component"},
      {"1:2x"_ns, 0, "Illegal characters in seconds component"},
      {"1x:02"_ns, 2, "Illegal characters in minutes component"},
      {"x"_ns, 0, "Invalid value for seconds component"},
      {"1::05"_ns, 5, "Invalid value for minutes component"},
      {"1."_ns, 0, "Illegal milliseconds value"},
      {"1.5x"_ns, 0, "Illegal extra characters"},
      {"9999999999:00:00:00"_ns, -86400, ""},  // reads as 2³¹ - 1 days, whose seconds wrap around
  };
  for (const auto& each : cases) {
    const Parsed parsed = parse(each.text);
    EXPECT_EQ(parsed.error, each.error) << each.text;
    EXPECT_DOUBLE_EQ(parsed.value, each.value) << each.text;
  }
  const auto formatter = QZHMSFormatter::init();
  EXPECT_TRUE(formatter->getObjectValue_forString_errorDescription(nullptr, "1"_ns, nullptr));
  EXPECT_FALSE(formatter->getObjectValue_forString_errorDescription(nullptr, "x"_ns, nullptr));
  EXPECT_TRUE(refuses(
      [&] { formatter->getObjectValue_forString_errorDescription(nullptr, nullptr, nullptr); }));
}

// The rules once more, with a scanner and in the words of the messages: slow, and plainly right.
Parsed parseWithScanner(NSString* string) {
  const struct {
    const char* name;
    std::uint32_t unit, greatest;
  } components[] = {
      {"seconds", 1, 59}, {"minutes", 60, 59}, {"hours", 3600, 23}, {"days", 86400, INT32_MAX}};
  const auto scanner = NSScanner::scannerWithString(string);
  NSRange range{0, string->length()};
  const bool isNegative = scanner->scanString_intoString("-"_ns, nullptr);
  if (isNegative) range = {1, range.length - 1};
  std::string error;
  double fraction = 0;
  const NSRange point = string->rangeOfString_options_range("."_ns, NSBackwardsSearch, range);
  if (point.location != NSNotFound) {
    scanner->setScanLocation(point.location + 1);
    std::int32_t digits = 0;
    if (!scanner->scanInt(&digits)) {
      error = "Illegal milliseconds value";
    } else if (!scanner->isAtEnd()) {
      error = "Illegal extra characters";
    } else {
      fraction = digits;
      for (auto i = point.location + 1; i < scanner->scanLocation(); ++i) fraction /= 10;
      range.length = point.location - range.location;
    }
  }
  std::uint32_t total = 0;
  for (const auto& each : components) {
    if (!error.empty() || range.length == 0) break;
    const NSRange colon = string->rangeOfString_options_range(":"_ns, NSBackwardsSearch, range);
    const bool isFound = colon.location != NSNotFound;
    scanner->setScanLocation(isFound ? colon.location + 1 : isNegative ? 1 : 0);
    std::int32_t value = 0;
    if (!scanner->scanInt(&value))
      error = std::string("Invalid value for ") + each.name + " component";
    else if (static_cast<std::uint32_t>(value) > each.greatest)
      error = "Value " + std::to_string(value) + " too large for " + each.name + " component";
    else if (scanner->scanLocation() < NSMaxRange(range))
      error = std::string("Illegal characters in ") + each.name + " component";
    else {
      total += each.unit * static_cast<std::uint32_t>(value);
      range.length = isFound ? colon.location - range.location : 0;
    }
  }
  const auto sum = static_cast<std::int32_t>(isNegative ? 0 - total : total);
  return {sum + fraction, fraction != 0, error};
}

TEST(QZHMSFormatter, ParsesAsAScannerWould) {
  std::mt19937 random(5);
  const std::u16string_view alphabet = u"0123456789599:::::...-- +\t\u3000\u0301x٣５\u2028";
  for (int i = 0; i < 20'000; ++i) {
    std::u16string units;
    for (std::size_t length = random() % 14; units.size() < length;)
      units += alphabet[random() % alphabet.size()];
    const auto string = ns(units);
    ASSERT_EQ(parse(string), parseWithScanner(string)) << string;
  }
}

// Durations are shown alike in every locale.
TEST(QZHMSFormatter, RoundTrip) {
  const auto formatter = QZHMSFormatter::init();
  std::mt19937_64 random(9);
  for (int i = 0; i < 5000; ++i) {
    // Below 2³¹ seconds. Not with a fraction and a minus sign: that adds where it should take away.
    const auto whole = static_cast<std::int32_t>(random() >> (33 + random() % 20));
    ASSERT_EQ(parse(ns(text(formatter, -whole))).value, -whole);
    const double fraction = whole + static_cast<double>(random() % 1000) / 1000;
    const std::string shown = text(formatter, fraction);
    const double read = parse(ns(shown)).value;
    ASSERT_TRUE(read <= fraction + 1e-6 && read > fraction - 0.001 - 1e-6) << shown;
    ASSERT_EQ(text(formatter, read).substr(0, shown.find('.')), shown.substr(0, shown.find('.')));
  }
}

}  // namespace
}  // namespace qz::test
