// Formatters: durations, sizes, numbers and dates as text, and back.
#include <unicode/decimfmt.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>
#include <unordered_map>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSSortDescriptor.h"
#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/Text/NSDateFormatter.h"
#include "Platform/Text/NSLocale.h"
#include "Platform/Text/NSNumberFormatter.h"
#include "Platform/Text/NSTimeZone.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSNumber.h"
#include "QZFoundation/NSObject-QZInfoDictionary.h"
#include "QZFoundation/NSValueTransformer-QZFoundation.h"
#include "QZFoundation/QZHMSFormatter.h"
#include "QZFoundation/QZStorageSizeFormatter.h"
#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"

namespace qz::bench {
namespace {

using State = benchmark::State;

// Several values in turn, so that no branch is learnt by heart.
constexpr std::size_t values = 64;

double duration(std::size_t i) { return static_cast<double>(i * 7919 % 200'000) + 0.25; }
std::uint64_t bytes(std::size_t i) { return std::uint64_t{i} * 1'234'567'891 >> (i % 24); }
double number(std::size_t i) { return static_cast<double>(i) * 12345.678; }
double moment(std::size_t i) { return 1'700'000'000.25 + static_cast<double>(i) * 86'399; }

template <class Work>
void repeat(State& state, Work work) {
  std::size_t i = 0;
  for (auto _ : state) {
    auto result = work(i++ % values);
    benchmark::DoNotOptimize(result);
  }
}

template <class Make>
auto table(Make make) {
  std::array<decltype(make(std::size_t{0})), values> all;
  for (std::size_t i = 0; i < values; ++i) all[i] = make(i);
  return all;
}

// Durations ---------------------------------------------------------------------------------------

void formatDuration(State& state) {
  const auto formatter = QZHMSFormatter::init();
  const auto numbers = table([](std::size_t i) { return NSNumber::of(duration(i)); });
  repeat(state, [&](std::size_t i) { return formatter->stringForObjectValue(numbers[i]); });
}

int printDuration(char (&text)[64], std::size_t i) {
  const double value = duration(i);
  const auto total = static_cast<unsigned>(value);
  const auto rest = static_cast<unsigned>((value - total) * 1000);
  const unsigned days = total / 86400;
  const unsigned hours = total / 3600 % 24;
  const unsigned minutes = total / 60 % 60;
  const unsigned seconds = total % 60;
  if (days != 0)
    return std::snprintf(text, sizeof text, "%u:%u:%02u:%02u.%03u", days, hours, minutes, seconds,
                         rest);
  return std::snprintf(text, sizeof text, "%u:%02u:%02u.%03u", hours, minutes, seconds, rest);
}

void formatDurationPlain(State& state) {
  char text[64];
  repeat(state, [&](std::size_t i) {
    const int length = printDuration(text, i);
    benchmark::ClobberMemory();
    return length;
  });
}

void parseDuration(State& state) {
  const auto formatter = QZHMSFormatter::init();
  const auto texts = table([&](std::size_t i) {
    return formatter->stringForObjectValue(NSNumber::of(duration(i % 8 + 1)));
  });
  repeat(state, [&](std::size_t i) {
    Ref<NSObject> value;
    formatter->getObjectValue_forString_errorDescription(&value, texts[i], nullptr);
    return value;
  });
}

void parseDurationPlain(State& state) {
  const auto texts = table([](std::size_t i) {
    char text[64];
    printDuration(text, i % 8 + 1);
    return std::string(text);
  });
  repeat(state, [&](std::size_t i) {
    int hours = 0;
    int minutes = 0;
    double seconds = 0;
    std::sscanf(texts[i].c_str(), "%d:%d:%lf", &hours, &minutes, &seconds);
    return hours * 3600 + minutes * 60 + seconds;
  });
}

// Sizes and numbers -------------------------------------------------------------------------------

std::unique_ptr<icu::DecimalFormat> icuFormat(const char16_t* pattern) {
  UErrorCode status = U_ZERO_ERROR;
  return std::make_unique<icu::DecimalFormat>(
      pattern, icu::DecimalFormatSymbols(icu::Locale("en_US"), status), status);
}

Ref<NSNumberFormatter> numberFormatter(NSString* pattern) {
  auto made = NSNumberFormatter::init();
  made->setLocale(NSLocale::localeWithLocaleIdentifier("en_US"_ns));
  made->setFormat(pattern);
  return made;
}

void formatSize(State& state) {
  repeat(state,
         [](std::size_t i) { return QZStorageSizeFormatter::storageSizeStringForBytes(bytes(i)); });
}

void formatSizeIcu(State& state) {
  const auto format = icuFormat(u"#,##0.0");
  repeat(state, [&](std::size_t i) {
    icu::UnicodeString text;
    format->format(static_cast<double>(bytes(i)) / 1e9, text);
    return text.append(u" GB");
  });
}

void formatNumber(State& state) {
  const auto formatter = numberFormatter("#,##0.00"_ns);
  const auto numbers = table([](std::size_t i) { return NSNumber::of(number(i)); });
  repeat(state, [&](std::size_t i) { return formatter->stringForObjectValue(numbers[i]); });
}

void formatNumberIcu(State& state) {
  const auto format = icuFormat(u"#,##0.00");
  repeat(state, [&](std::size_t i) {
    icu::UnicodeString text;
    format->format(number(i), text);
    return text;
  });
}

void formatScientific(State& state) {
  const auto formatter = numberFormatter("0.00E0"_ns);
  const auto numbers = table([](std::size_t i) { return NSNumber::of(number(i)); });
  repeat(state, [&](std::size_t i) { return formatter->stringForObjectValue(numbers[i]); });
}

void formatScientificIcu(State& state) {
  const auto format = icuFormat(u"0.00E0");
  repeat(state, [&](std::size_t i) {
    icu::UnicodeString text;
    format->format(number(i), text);
    return text;
  });
}

void parseNumber(State& state) {
  const auto formatter = numberFormatter("#,##0.00"_ns);
  const auto texts =
      table([&](std::size_t i) { return formatter->stringFromNumber(NSNumber::of(number(i))); });
  repeat(state, [&](std::size_t i) { return formatter->numberFromString(texts[i]); });
}

void parseNumberIcu(State& state) {
  const auto format = icuFormat(u"#,##0.00");
  const auto texts = table([&](std::size_t i) {
    icu::UnicodeString text;
    return format->format(number(i), text);
  });
  repeat(state, [&](std::size_t i) {
    icu::Formattable read;
    icu::ParsePosition position(0);
    format->parse(texts[i], read, position);
    return read.getType();
  });
}

// Dates -------------------------------------------------------------------------------------------

void formatDate(State& state) {
  const auto formatter =
      NSDateFormatter::initWithDateFormat_allowNaturalLanguage("%y-%m-%d %H:%M:%S"_ns, false);
  formatter->setTimeZone(NSTimeZone::timeZoneWithName("Europe/Berlin"_ns));
  const auto dates =
      table([](std::size_t i) { return NSDate::dateWithTimeIntervalSince1970(moment(i)); });
  repeat(state, [&](std::size_t i) { return formatter->stringForObjectValue(dates[i]); });
}

void formatDatePlain(State& state) {
  ::setenv("TZ", "Europe/Berlin", 1);
  ::tzset();
  char text[64];
  repeat(state, [&](std::size_t i) {
    const auto time = static_cast<std::time_t>(moment(i));
    std::tm parts;
    ::localtime_r(&time, &parts);
    const std::size_t length = std::strftime(text, sizeof text, "%y-%m-%d %H:%M:%S", &parts);
    benchmark::ClobberMemory();
    return length;
  });
  ::unsetenv("TZ");
  ::tzset();
}

// Transformers ------------------------------------------------------------------------------------

constexpr std::array operators{"add", "subtract", "multiply", "divide"};

std::string transformerName(std::size_t i) {
  return "QZMath-" + std::string(operators[i % operators.size()]) + "-" + std::to_string(i);
}

void transformByName(State& state) {
  const auto names = table([](std::size_t i) {
    auto name = NSString::stringWithUTF8String(transformerName(i));
    valueTransformerWithDynamicName(name);
    return name;
  });
  const auto numbers = table([](std::size_t i) { return NSNumber::of(number(i)); });
  repeat(state, [&](std::size_t i) {
    return NSValueTransformer::valueTransformerForName(names[i])->transformedValue(numbers[i]);
  });
}

// The same as a C++ programmer writes it.
struct PlainValue {
  explicit PlainValue(double number) : value(number) {}
  virtual ~PlainValue() = default;
  double value;
};

struct PlainTransformer {
  explicit PlainTransformer(double number) : operand(number) {}
  virtual ~PlainTransformer() = default;
  virtual std::unique_ptr<PlainValue> transformed(const PlainValue& value) const = 0;
  double operand;
};

template <char Operator>
struct PlainMath final : PlainTransformer {
  using PlainTransformer::PlainTransformer;
  std::unique_ptr<PlainValue> transformed(const PlainValue& value) const override {
    const double a = value.value;
    return std::make_unique<PlainValue>(Operator == '+'   ? a + operand
                                        : Operator == '-' ? a - operand
                                        : Operator == '*' ? a * operand
                                                          : a / operand);
  }
};

std::unique_ptr<PlainTransformer> plainTransformer(std::size_t i) {
  const auto operand = static_cast<double>(i);
  switch (i % operators.size()) {
    case 0:
      return std::make_unique<PlainMath<'+'>>(operand);
    case 1:
      return std::make_unique<PlainMath<'-'>>(operand);
    case 2:
      return std::make_unique<PlainMath<'*'>>(operand);
    default:
      return std::make_unique<PlainMath<'/'>>(operand);
  }
}

void transformByNamePlain(State& state) {
  const auto names = table([](std::size_t i) { return widened(transformerName(i)); });
  std::unordered_map<std::u16string, std::unique_ptr<PlainTransformer>> transformers;
  for (std::size_t i = 0; i < values; ++i) transformers[names[i]] = plainTransformer(i);
  const auto numbers = table([](std::size_t i) { return std::make_unique<PlainValue>(number(i)); });
  repeat(state, [&](std::size_t i) {
    return transformers.find(names[i])->second->transformed(*numbers[i]);
  });
}

// Configuration files -----------------------------------------------------------------------------

constexpr std::uint32_t described = 10'000;

template <class Make>
Ref<NSArray> listOf(Make make) {
  auto all = NSMutableArray::array();
  for (std::uint32_t i = 0; i < described; ++i) all->addObject(make(i));
  return all;
}

/// Info dictionaries as they come from a file, several in turn.
template <class Make>
Ref<NSArray> infos(Make make) {
  auto distinct = NSMutableArray::array();
  for (std::uint32_t i = 0; i < values; ++i) distinct->addObject(make(i));
  const auto file = NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
      distinct, NSPropertyListXMLFormat, nullptr);
  const auto read = as<NSArray>(
      NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
          file, NSPropertyListImmutable, nullptr, nullptr));
  return listOf([&](std::uint32_t i) { return read->objectAtIndex(i % values); });
}

template <class Build>
void build(State& state, Build all) {
  for (auto _ : state) {
    auto objects = all();
    benchmark::DoNotOptimize(objects);
  }
  state.SetItemsProcessed(state.iterations() * described);
}

void formattersFromInfo(State& state) {
  const auto descriptions = infos([](std::uint32_t i) -> Ref<NSDictionary> {
    const bool isDate = i % 2 == 0;
    const auto style = NSNumber::of(static_cast<std::int32_t>(i / 2 % 4 + 1));
    const auto properties =
        isDate ? NSDictionary::of({{"dateStyle"_ns, style}, {"timeStyle"_ns, style}})
               : NSDictionary::of({{"minimumFractionDigits"_ns, style}, {"numberStyle"_ns, style}});
    return NSDictionary::of({{"class"_ns, isDate ? "NSDateFormatter"_ns : "NSNumberFormatter"_ns},
                             {"properties"_ns, properties}});
  });
  build(state, [&] { return objectsFromInfoDictionaries(classOf<NSObject>(), descriptions); });
}

void formattersPlain(State& state) {
  build(state, [] {
    return listOf([](std::uint32_t i) -> Ref<NSObject> {
      const auto style = static_cast<std::int32_t>(i / 2 % 4 + 1);
      if (i % 2 == 0) {
        auto dates = NSDateFormatter::init();
        dates->setDateStyle(static_cast<NSDateFormatterStyle>(style));
        dates->setTimeStyle(static_cast<NSDateFormatterStyle>(style));
        return dates;
      }
      auto numbers = NSNumberFormatter::init();
      numbers->setMinimumFractionDigits(static_cast<std::uint32_t>(style));
      numbers->setNumberStyle(static_cast<NSNumberFormatterStyle>(style));
      return numbers;
    });
  });
}

void sortDescriptorsFromInfo(State& state) {
  const auto descriptions = infos([](std::uint32_t i) {
    return infoDictionary(NSSortDescriptor::initWithKey_ascending_selector(
        "name.family"_ns, i % 2 == 0, "caseInsensitiveCompare:"_sel));
  });
  build(state, [&] { return objectsFromInfoDictionaries(classOf<NSObject>(), descriptions); });
}

void sortDescriptorsPlain(State& state) {
  build(state, [] {
    return listOf([](std::uint32_t i) {
      return NSSortDescriptor::initWithKey_ascending_selector("name.family"_ns, i % 2 == 0,
                                                              "caseInsensitiveCompare:"_sel);
    });
  });
}

}  // namespace

void compareFormatters() {
  compare("FormatDuration", {"format a duration", "snprintf", 1.5}, &formatDuration,
          &formatDurationPlain);
  compare("ParseDuration", {"parse a duration", "sscanf", 2}, &parseDuration, &parseDurationPlain);
  compare("FormatSize", {"`storageSizeStringForBytes:`", "ICU's DecimalFormat", 0.3}, &formatSize,
          &formatSizeIcu);
  compare("FormatNumber", {"format a number, plain pattern", "ICU's DecimalFormat", 1.15},
          &formatNumber, &formatNumberIcu);
  compare("FormatScientific", {"format a number, other pattern", "ICU's DecimalFormat", 1.15},
          &formatScientific, &formatScientificIcu);
  compare("ParseNumber", {"parse a number", "ICU's DecimalFormat", 1.15}, &parseNumber,
          &parseNumberIcu);
  compare("FormatDate", {"format a date, percent format", "localtime_r and strftime", 1.5},
          &formatDate, &formatDatePlain);
  compare("TransformByName",
          {"`valueTransformerForName:`, then `transformedValue:`",
           "find in unordered_map, virtual call, boxing", 1.5},
          &transformByName, &transformByNamePlain);
  compare("FormattersFromInfo",
          {"a formatter from its info dictionary, 10,000 in a row", "made and set up directly", 3},
          &formattersFromInfo, &formattersPlain);
  compare("SortDescriptorsFromInfo",
          {"a sort descriptor from its info dictionary, 10,000 in a row", "made directly", 3},
          &sortDescriptorsFromInfo, &sortDescriptorsPlain);
}

}  // namespace qz::bench
