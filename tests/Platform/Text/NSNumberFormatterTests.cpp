#include "Platform/Text/NSNumberFormatter.h"

#include <unicode/decimfmt.h>

#include <bit>

#include "tests/support/Formatters.h"

namespace qz::test {
namespace {

using Style = NSNumberFormatterStyle;

Ref<NSNumberFormatter> formatter(NSString* format, const char* name = "en_US") {
  auto made = NSNumberFormatter::init();
  made->setFormat(format);
  made->setLocale(locale(name));
  return made;
}

std::string text(NSNumberFormatter* formatter, double value) {
  return to_string(formatter->stringFromNumber(NSNumber::numberWithDouble(value)));
}

TEST(NSNumberFormatter, PatternsWithSections) {
  const std::tuple<NSString*, const char*, double, const char*> cases[] = {
      {"#,##0.0;0;#,##0.0"_ns, "en_US", 1234.56, "1,234.6"},
      {"#,##0.0;0;#,##0.0"_ns, "en_US", 0, "0"},
      {"#,##0.0;0;#,##0.0"_ns, "en_US", 0.04, "0.0"},  // rounded to zero is not zero
      {"#,##0.0;0;#,##0.0"_ns, "ar_EG", 0, "٠"},
      {"0.00;none;(0.00)"_ns, "de_DE", 0, "none"},
      {"0.00;'it''s #0';(0.00)"_ns, "de_DE", 0, "it's #0"},
      {"0.00;none;(0.00)"_ns, "de_DE", -1.5, "(1,50)"},
      {"0.0;;"_ns, "en_US", 0, ""},
      {"0.0;;"_ns, "en_US", -1, "-1.0"},
      {"0.0 'a;b'"_ns, "en_US", 1, "1.0 a;b"},
      {"0%"_ns, "en_US", 0.256, "26%"},
      {"0.0E0"_ns, "en_US", 12345, "1.2E4"},
      {"¤#,##0.00"_ns, "en_US", 5, "$5.00"},
      {"*x####0"_ns, "en_US", 42, "xxx42"},
  };
  for (const auto& [format, name, value, expected] : cases)
    EXPECT_EQ(text(formatter(format, name), value), expected) << format << " " << value;

  const auto kept = formatter("0.0;0;(0.0)"_ns);
  EXPECT_EQ(to_string(kept->format()), "0.0;0;(0.0)");
  for (NSString* wrong : {""_ns, ";0"_ns, "0;0;0;0"_ns, "0.0.0"_ns, "#,#,#0.#0#"_ns, "0'"_ns}) {
    EXPECT_TRUE(refuses([&] { kept->setFormat(wrong); }, {"pattern"})) << wrong;
    EXPECT_EQ(to_string(kept->format()), "0.0;0;(0.0)") << "unchanged";
  }
}

TEST(NSNumberFormatter, Styles) {
  const std::tuple<Style, const char*, double, const char*> cases[] = {
      {Style::None, "en_US", 1234567.8909, "1234567.891"},
      {Style::Decimal, "en_US", 1234567.8909, "1,234,567.891"},
      {Style::Decimal, "fr_FR", 1234567.5, "1\u202F234\u202F567,5"},
      {Style::Decimal, "es_ES", 1234, "1.234"},
      {Style::Decimal, "ar_EG", 1234.5, "١٬٢٣٤٫٥"},
      {Style::Currency, "en_US", -1234.5, "-$1,234.50"},
      {Style::Currency, "de_DE", 1234.5, "1.234,50\u00A0€"},
      {Style::Currency, "ja_JP", 1234.5, "￥1,234"},
      {Style::Percent, "en_US", 0.5, "50%"},
      {Style::Scientific, "en_US", 12345, "1.2345E4"},
      {Style::SpellOut, "de_DE", 42, "zwei\u00ADund\u00ADvierzig"},
  };
  for (const auto& [style, name, value, expected] : cases) {
    const auto styled = NSNumberFormatter::init();
    styled->setLocale(locale(name));
    styled->setNumberStyle(style);
    EXPECT_EQ(text(styled, value), expected) << name << " " << value;
  }
}

TEST(NSNumberFormatter, SettingsCountInAnyOrder) {
  const auto euros = NSNumberFormatter::init();
  euros->setCurrencyCode("EUR"_ns);
  euros->setMaximumFractionDigits(0);
  euros->setLocale(locale("en_US"));
  euros->setNumberStyle(Style::Currency);
  EXPECT_EQ(text(euros, 1234.5), "€1,234");

  const auto plain = NSNumberFormatter::init();
  plain->setLocale(locale("en_US"));
  plain->setMinimumFractionDigits(2);
  plain->setMaximumFractionDigits(2);
  plain->setUsesGroupingSeparator(true);
  plain->setGroupingSeparator("'"_ns);
  plain->setDecimalSeparator("·"_ns);
  plain->setPositivePrefix("~"_ns);
  EXPECT_EQ(text(plain, 12345.678), "~12'345·68");
  EXPECT_EQ(to_string(plain->numberFromString("~12'345·68"_ns)), "12345.68");
  plain->setRoundingMode(NSNumberFormatterRoundingMode::Down);
  EXPECT_EQ(text(plain, 12345.678), "~12'345·67");
  plain->setRoundingIncrement(0.25);
  EXPECT_EQ(text(plain, 12345.678), "~12'345·50");
  plain->setMultiplier(100);
  plain->setFormatWidth(14);
  plain->setPaddingCharacter("*"_ns);
  EXPECT_EQ(text(plain, 12.34), "*****~1'234·00");

  const auto significant = NSNumberFormatter::init();
  significant->setMaximumSignificantDigits(3);
  EXPECT_EQ(text(significant, 12345.678), "12300");
  significant->setMaximumFractionDigits(UINT32_MAX);  // as many as there may be
  EXPECT_EQ(text(significant, 0.5), "0.5");
}

TEST(NSNumberFormatter, EverySettingIsAKeyAndIsKeptByCopiesAndArchives) {
  const auto made = NSNumberFormatter::init();
  for (const std::string_view key : classOf<NSNumberFormatter>()->propertyKeys()) {
    const auto name = ns(key);
    Ref<NSObject> value = made->valueForKey(name);
    if (const auto number = as<NSNumber>(value); number && number->kind() == NumberKind::Bool)
      value = NSNumber::of(!number->boolValue());
    else if (number || key == "minimum" || key == "maximum")
      value = NSNumber::of(2);
    else if (key == "locale")
      value = locale("de_CH");
    else
      value = key.ends_with("ormat") ? "0.0#;-0.0"_ns : "x"_ns;
    if (key == "positiveFormat" || key == "negativeFormat") value = "+0.0#"_ns;
    made->setValue_forKey(value, name);
    EXPECT_TRUE(equal(made->valueForKey(name), value)) << name << " " << made->valueForKey(name);
  }
  for (const auto& other : {made->copy(), throughArchive(made)}) {
    for (const std::string_view key : classOf<NSNumberFormatter>()->propertyKeys()) {
      const auto name = ns(key);
      EXPECT_TRUE(equal(other->valueForKey(name), made->valueForKey(name))) << name;
    }
    EXPECT_EQ(text(as<NSNumberFormatter>(other.get()), -12.5), text(made, -12.5));
  }
}

TEST(NSNumberFormatter, SpecialValues) {
  const auto plain = formatter("0.0"_ns);
  EXPECT_EQ(text(plain, std::nan("")), "NaN");
  EXPECT_EQ(text(plain, HUGE_VAL), "∞");
  EXPECT_EQ(text(plain, -HUGE_VAL), "-∞");
  EXPECT_EQ(plain->stringFromNumber(nullptr), nullptr);
  EXPECT_EQ(plain->stringForObjectValue("5"_ns), nullptr);
  plain->setNotANumberSymbol("?"_ns);
  plain->setPositiveInfinitySymbol("much"_ns);
  plain->setNegativeInfinitySymbol("little"_ns);
  plain->setZeroSymbol("nothing"_ns);
  plain->setNilSymbol("nil"_ns);
  for (const double value : {HUGE_VAL, -HUGE_VAL, 0.0, 1.5}) {
    const Ref<NSNumber> number = NSNumber::numberWithDouble(value);
    EXPECT_TRUE(equal(plain->numberFromString(plain->stringFromNumber(number)), number)) << value;
  }
  EXPECT_EQ(text(plain, std::nan("")), "?");
  EXPECT_TRUE(std::isnan(plain->numberFromString("?"_ns)->doubleValue()));
  EXPECT_EQ(to_string(plain->stringForObjectValue(nullptr)), "nil");
  Ref<NSObject> value = "left over"_ns;
  EXPECT_TRUE(plain->getObjectValue_forString_errorDescription(&value, "nil"_ns, nullptr));
  EXPECT_EQ(value, nullptr);
  EXPECT_EQ(to_string(formatter("#,##0"_ns)->stringFromNumber(NSNumber::of(UINT64_MAX))),
            "18,446,744,073,709,551,615");
}

TEST(NSNumberFormatter, Reading) {
  enum Kind { No, Whole, Unsigned, Floating };
  const std::tuple<NSString*, Kind, Kind, double> cases[] = {
      {"1,234.5"_ns, Floating, Floating, 1234.5},
      {"1.0"_ns, Whole, Whole, 1},
      {"-0"_ns, Floating, Floating, 0},
      {"9223372036854775807"_ns, Whole, Whole, 9223372036854775807.0},
      {"9223372036854775808"_ns, Unsigned, Unsigned, 9223372036854775808.0},
      {"18446744073709551615"_ns, Unsigned, Unsigned, 18446744073709551615.0},
      {"18446744073709551616"_ns, Floating, Floating, 18446744073709551616.0},
      {"-9223372036854775809"_ns, Floating, Floating, -9223372036854775809.0},
      {"12,34"_ns, No, Whole, 1234},
      {" 5 "_ns, No, Whole, 5},
      {"５"_ns, Whole, Whole, 5},  // a digit is a digit
      {"1e3"_ns, Whole, Whole, 1000},
      {"12abc"_ns, No, No, 0},
      {"--1"_ns, No, Whole, -1},
      {""_ns, No, No, 0},
  };
  for (const auto& [string, strict, lenient, expected] : cases)
    for (const bool isLenient : {false, true}) {
      const auto reader = formatter("#,##0.###"_ns);
      reader->setLenient(isLenient);
      const auto [value, error] = read(reader, string);
      const Kind kind = isLenient ? lenient : strict;
      if (kind == No) {
        EXPECT_EQ(error, "“" + string->UTF8String() + "” is not a number") << isLenient;
        continue;
      }
      const auto number = as<NSNumber>(value);
      ASSERT_TRUE(number) << string << isLenient << error;
      EXPECT_EQ(number->doubleValue(), expected) << string;
      EXPECT_EQ(number->kind(), kind == Whole      ? NumberKind::LongLong
                                : kind == Unsigned ? NumberKind::UnsignedLongLong
                                                   : NumberKind::Double)
          << string;
    }
}

TEST(NSNumberFormatter, LimitsOfReading) {
  const auto reader = formatter("0.##"_ns);
  reader->setAllowsFloats(false);
  reader->setMinimum(NSNumber::of(1));
  reader->setMaximum(NSNumber::of(10));
  for (const auto& [string, expected] : {std::pair{"5"_ns, ""},
                                         {"5.5"_ns, "“5.5” is not a whole number"},
                                         {"0"_ns, "“0” is below the minimum of 1"},
                                         {"11"_ns, "“11” is above the maximum of 10"}})
    EXPECT_EQ(read(reader, string).error, expected);
  const auto huge = ns(std::string(20'000, 'x'));
  EXPECT_LT(read(reader, huge).error.size(), 200u);
  EXPECT_EQ(reader->numberFromString(ns(std::string(5000, '9'))), nullptr);
}

// What is formatted is read as the same number, as far as the digits shown go.
TEST(NSNumberFormatter, RoundTripInEveryLocale) {
  std::mt19937_64 random(17);
  for (const char* name : {"en_US", "de_DE", "de_CH", "fr_FR", "ja_JP", "ar_EG", "hi_IN", "sv_SE",
                           "fa_IR", "he_IL", "es_ES", "en_US_POSIX"})
    for (const Style style :
         {Style::None, Style::Decimal, Style::Currency, Style::Percent, Style::Scientific}) {
      const auto each = NSNumberFormatter::init();
      each->setLocale(locale(name));
      each->setNumberStyle(style);
      each->setMaximumFractionDigits(style == Style::Scientific ? 15
                                     : style == Style::Percent  ? 2
                                                                : 4);
      for (int i = 0; i < 60; ++i) {
        const auto digits = static_cast<double>(static_cast<std::int64_t>(random()) >> 22);
        const double value = digits / 10000;
        const auto shown = each->stringFromNumber(NSNumber::numberWithDouble(value));
        const auto read = each->numberFromString(shown);
        ASSERT_NE(read, nullptr) << shown << " " << name;
        ASSERT_DOUBLE_EQ(read->doubleValue(), value) << shown << " " << name;
      }
    }
}

// The fast road for plain patterns and ICU itself, number by number.
TEST(NSNumberFormatter, FormatsAsIcuDoes) {
  std::mt19937_64 random(19);
  for (const char* name :
       {"en_US", "de_DE", "de_CH", "fr_FR", "ja_JP", "pt_PT", "sv_SE", "hi_IN", "ar_EG", "es_ES"})
    for (const char16_t* pattern :
         {u"#,##0.0", u"#,##0.###", u"#.##", u"#,##,##0.00", u"000.0##", u"#0.00;(#0.00)",
          u"#,##0.", u"'#'0.0#' €'", u"0.####################"}) {
      UErrorCode status = U_ZERO_ERROR;
      const icu::DecimalFormat reference(
          pattern, icu::DecimalFormatSymbols(icu::Locale(name), status), status);
      ASSERT_TRUE(U_SUCCESS(status));
      const auto ours = formatter(ns(pattern), name);
      const auto expectSame = [&](auto value) {
        icu::UnicodeString theirs;
        reference.format(value, theirs);
        const std::u16string expected(theirs.getBuffer(),
                                      static_cast<std::size_t>(theirs.length()));
        const Ref<NSString> shown = ours->stringFromNumber(NSNumber::of(value));
        ASSERT_EQ(shown->view(), expected) << value << " " << shown << " " << name;
      };
      for (int i = 0; i < 400; ++i) {
        const std::uint64_t bits = random();
        double value = std::bit_cast<double>(bits);  // of any size
        if (i % 4 == 1) value = static_cast<double>(static_cast<std::int64_t>(bits) >> 40) / 1000;
        if (i % 4 == 2) value = static_cast<double>(static_cast<std::int64_t>(bits) >> 50) / 16;
        if (i % 4 == 3) value = static_cast<double>(bits >> 54) / 10;  // ties that are none
        expectSame(value);
        expectSame(static_cast<std::int64_t>(bits) >> (bits % 64));
      }
      for (const double value : {0.0, -0.0, 0.5, 1.5, 2.5, -0.04, 0.05, 0.15, 9.95, 99.95, 999.95,
                                 9999.5, 1e15, 1e16, 1e21, 1e22, 1e-7, 4.9e-324, 1.7e308})
        expectSame(value);
    }
}

TEST(NSNumberFormatter, OneFormatterServesManyThreads) {
  for (const Style style : {Style::Decimal, Style::Currency, Style::SpellOut}) {
    const auto shared = NSNumberFormatter::init();
    shared->setLocale(locale("de_DE"));
    shared->setNumberStyle(style);
    expectServesManyThreads(shared, [](int i) { return NSNumber::of(i * 1001); });
  }
}

}  // namespace
}  // namespace qz::test
