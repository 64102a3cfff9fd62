#include "QZFoundation/QZStorageSizeFormatter.h"

#include "tests/support/Formatters.h"

namespace qz::test {
namespace {

constexpr std::int32_t binary = 0;
constexpr std::int32_t decimal = 1;

Ref<QZStorageSizeFormatter> formatter(std::int32_t mode, const char* locale = "en_US") {
  auto made = QZStorageSizeFormatter::init();
  made->setFormat("#,##0.0;0;#,##0.0"_ns);
  made->setLocale(test::locale(locale));
  made->setStorageSizeMode(mode);
  return made;
}

std::string text(QZStorageSizeFormatter* formatter, std::uint64_t bytes) {
  return to_string(formatter->stringForObjectValue(NSNumber::of(bytes)));
}

TEST(QZStorageSizeFormatter, Formatting) {
  const struct {
    std::uint64_t bytes;
    const char* binary;
    const char* decimal;
  } cases[] = {
      {0, "0 bytes", "0 bytes"},
      {1000, "1,000.0 bytes", "1.0 KB"},
      {1023, "1,023.0 bytes", "1.0 KB"},
      {1024, "1.0 KB", "1.0 KB"},
      {1572864, "1.5 MB", "1.6 MB"},
      {999'999, "976.6 KB", "1,000.0 KB"},
      {1ull << 30, "1.0 GB", "1.1 GB"},
      {5'000'000'300'000'000'000, "4,547,474.0 TB", "5,000,000.5 TB"},  // in single precision
      {INT64_MAX, "8,388,608.0 TB", "9,223,372.0 TB"},
      {1ull << 63, "--", "--"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(text(formatter(binary), each.bytes), each.binary);
    EXPECT_EQ(text(formatter(decimal), each.bytes), each.decimal);
  }
  EXPECT_EQ(text(formatter(decimal, "de_DE"), 1'500'000), "1,5 MB");
  EXPECT_EQ(text(formatter(decimal, "ar_EG"), 1'500'000), "١٫٥ MB");
  EXPECT_EQ(to_string(QZStorageSizeFormatter::storageSizeStringForBytes(1'500'000)), "1.5 MB");
}

TEST(QZStorageSizeFormatter, OtherValues) {
  const auto sizes = formatter(decimal);
  const auto shown = [&](double value) {
    return to_string(sizes->stringForObjectValue(NSNumber::of(value)));
  };
  EXPECT_EQ(shown(-1), "--");
  EXPECT_EQ(shown(-0.5), "0.5 bytes");  // no bytes, so the number itself: without its sign here
  EXPECT_EQ(shown(std::nan("")), "NaN bytes");
  EXPECT_EQ(shown(HUGE_VAL), "18,446,744.0 TB");
  EXPECT_EQ(sizes->stringForObjectValue("12"_ns), nullptr);
  EXPECT_EQ(sizes->stringForObjectValue(nullptr), nullptr);
  EXPECT_EQ(to_string(sizes->editingStringForObjectValue(NSNumber::of(1572864))), "1,572,864.0");
  const auto plain = QZStorageSizeFormatter::init();
  plain->setLocale(locale("en_US"));
  EXPECT_EQ(text(plain, 1'234'567), "1.235 MB");
  const auto copy = as<QZStorageSizeFormatter>(formatter(binary)->copy());
  EXPECT_EQ(text(copy, 1'000'000), "976.6 KB");
  const auto archived = as<QZStorageSizeFormatter>(throughArchive(copy));
  EXPECT_EQ(text(archived, 1'000'000), "1.0 MB");  // the mode is not archived
}

TEST(QZStorageSizeFormatter, Parsing) {
  constexpr std::uint64_t fails = UINT64_MAX - 1;
  const struct {
    NSString* text;
    std::uint64_t binary, decimal;
  } cases[] = {
      {"2 mb"_ns, 2097152, 2'000'000},
      {" 1 0 MB"_ns, 10485760, 10'000'000},
      {"1.5 KB"_ns, 1024, 1000},  // one kilobyte: cut first
      {"3 KB extra"_ns, 3072, 3000},
      {"1,023.0 bytes"_ns, 1023, 1023},
      {"100"_ns, 100, 100},
      {"1 KB 2 TB"_ns, fails, fails},  // the greatest unit decides, and "1KB2" is no number
      {"5 MB 6 MB"_ns, fails, fails},  // the last one
      {"100 "_ns, fails, fails},       // without a unit, blanks stay
      {"abc KB"_ns, fails, fails},
      {""_ns, fails, fails},
      {"-1"_ns, fails, fails},  // the pattern has no minus sign
      {"1x0 KB"_ns, fails, fails},
      {"18446744073709551615"_ns, UINT64_MAX, UINT64_MAX},
      {"18446744073709551615 KB"_ns, UINT64_MAX - 1023, UINT64_MAX - 999},  // wraps around
      {"99999999999999999999999 bytes"_ns, UINT64_MAX, UINT64_MAX},
      {"99999999 TB"_ns, 99999999ull << 40, 99999999ull * 1'000'000'000'000},
  };
  for (const auto& each : cases)
    for (const std::int32_t mode : {binary, decimal}) {
      const auto number = as<NSNumber>(read(formatter(mode), each.text).value);
      EXPECT_EQ(number ? number->unsignedLongLongValue() : fails,
                mode == binary ? each.binary : each.decimal)
          << each.text;
    }
  EXPECT_TRUE(refuses([] {
    formatter(binary)->getObjectValue_forString_errorDescription(nullptr, nullptr, nullptr);
  }));
}

// Whole multiples of a unit come back; all else is cut to them.
TEST(QZStorageSizeFormatter, RoundTrip) {
  for (const char* locale : {"en_US", "de_DE", "fr_FR", "ja_JP", "ar_EG", "hi_IN", "sv_SE"})
    for (const std::int32_t mode : {binary, decimal}) {
      const auto sizes = formatter(mode, locale);
      const std::uint64_t kilobyte = mode == binary ? 1024 : 1000;
      std::uint64_t unit = 1;
      for (int i = 0; i < 5; ++i, unit *= kilobyte)
        for (const std::uint64_t count : {1, 7, 999}) {
          const auto shown = sizes->stringForObjectValue(NSNumber::of(count * unit));
          const auto number = as<NSNumber>(read(sizes, shown).value);
          ASSERT_TRUE(number) << shown;
          ASSERT_EQ(number->unsignedLongLongValue(), count * unit) << shown;
        }
    }
}

}  // namespace
}  // namespace qz::test
