#include "Platform/Values/NSNumber.h"

#include <cfloat>

#include "tests/support/Test.h"

namespace qz::test {
namespace {

// Wide enough for every integer of 64 bits and every double, so it compares them exactly.
using Exact = long double;
static_assert(LDBL_MANT_DIG >= 64);

constexpr double infinity = std::numeric_limits<double>::infinity();
const double nan = std::nan("");

struct Sample {
  Ref<NSNumber> number;
  Exact value;
};

template <class T>
void add(std::vector<Sample>& to, std::initializer_list<T> values) {
  for (T value : values) to.push_back({NSNumber::of(value), static_cast<Exact>(value)});
}

/// Every kind at and around the places where one kind's range or precision ends.
std::vector<Sample> samples() {
  std::vector<Sample> all;
  add<bool>(all, {false, true});
  add<std::int8_t>(all, {-128, -1, 0, 1, 127});
  add<std::uint8_t>(all, {0, 1, 128, 255});
  add<std::int16_t>(all, {-32768, -1, 32767});
  add<std::uint16_t>(all, {1, 65535});
  add<std::int32_t>(all, {INT32_MIN, -129, -128, -1, 0, 1, 2, 1023, 1024, INT32_MAX});
  add<std::uint32_t>(all, {0u, 1u, 1u << 31, UINT32_MAX});
  add<std::int64_t>(all, {INT64_MIN, INT64_MIN + 1, -(1LL << 53) - 1, -(1LL << 53), -1, 0, 1,
                          1LL << 53, (1LL << 53) + 1, INT64_MAX - 1, INT64_MAX});
  add<std::uint64_t>(all, {0ull, 1ull, (1ull << 53) + 1, 1ull << 63, (1ull << 63) + 1,
                           UINT64_MAX - 1, UINT64_MAX});
  add<float>(all, {-0.5f, 0.1f, 1.0f, 16777216.0f, 16777218.0f, 0x1p63f, FLT_MAX, -FLT_MAX});
  const double two53 = 0x1p53, two63 = 0x1p63, two64 = 0x1p64;
  add<double>(all, {0.0, -0.0, 0.1, 0.5, -0.5, 1.0, 1.5, -1.0, two53, two53 + 2, -two53});
  add<double>(all, {DBL_MIN, DBL_TRUE_MIN, DBL_MAX, -DBL_MAX, infinity, -infinity, nan, -nan});
  for (double edge : {two63, -two63, two64})
    add<double>(all, {edge, std::nextafter(edge, 0.0), std::nextafter(edge, 2 * edge)});
  all.push_back({NSNumber::numberWithLong(-7), -7});
  all.push_back({NSNumber::numberWithUnsignedLong(UINT32_MAX), UINT32_MAX});
  return all;
}

int orderOf(Exact a, Exact b) {
  if (std::isnan(a) || std::isnan(b)) return int(std::isnan(b)) - int(std::isnan(a));
  return int(a > b) - int(a < b);
}

TEST(NSNumber, ComparesAndHashesByExactValueAcrossKinds) {
  const std::vector<Sample> all = samples();
  for (const Sample& a : all) {
    for (const Sample& b : all) {
      const int order = orderOf(a.value, b.value);
      ASSERT_EQ(a.number->compare(b.number), order)
          << a.number << " (kind " << int(a.number->kind()) << ") with " << b.number << " (kind "
          << int(b.number->kind()) << ")";
      ASSERT_EQ(a.number->isEqual(b.number), order == 0) << a.number << " and " << b.number;
      if (order == 0) {
        ASSERT_EQ(a.number->hash(), b.number->hash()) << a.number;
      }
    }
  }
  EXPECT_FALSE(all[0].number->isEqual("0"_ns));
  EXPECT_FALSE(all[0].number->isEqual(nullptr));
  EXPECT_FALSE(all[0].number->isEqualToNumber(nullptr));
}

template <class T>
T clamped(Exact value) {
  if (std::isnan(value)) return 0;
  const Exact whole = std::trunc(value);
  if (whole < static_cast<Exact>(std::numeric_limits<T>::min()))
    return std::numeric_limits<T>::min();
  if (whole > static_cast<Exact>(std::numeric_limits<T>::max()))
    return std::numeric_limits<T>::max();
  return static_cast<T>(whole);
}

TEST(NSNumber, FloatingNumbersConvertToTheNearestInteger) {
  for (const auto& [number, value] : samples()) {
    if (!isFloatingKind(number->kind())) continue;
    for (const Ref<NSNumber>& n : {number, NSNumber::of(-number->doubleValue())}) {
      const Exact exact = n == number ? value : -value;
      EXPECT_EQ(n->charValue(), clamped<std::int8_t>(exact)) << n;
      EXPECT_EQ(n->unsignedCharValue(), clamped<std::uint8_t>(exact)) << n;
      EXPECT_EQ(n->shortValue(), clamped<std::int16_t>(exact)) << n;
      EXPECT_EQ(n->unsignedShortValue(), clamped<std::uint16_t>(exact)) << n;
      EXPECT_EQ(n->intValue(), clamped<std::int32_t>(exact)) << n;
      EXPECT_EQ(n->unsignedIntValue(), clamped<std::uint32_t>(exact)) << n;
      EXPECT_EQ(n->longValue(), clamped<std::int32_t>(exact)) << n;
      EXPECT_EQ(n->unsignedLongValue(), clamped<std::uint32_t>(exact)) << n;
      EXPECT_EQ(n->longLongValue(), clamped<std::int64_t>(exact)) << n;
      EXPECT_EQ(n->unsignedLongLongValue(), clamped<std::uint64_t>(exact)) << n;
    }
  }
}

TEST(NSNumber, IntegersConvertByTheirLowBits) {
  EXPECT_EQ(NSNumber::of(300)->charValue(), 44);
  EXPECT_EQ(NSNumber::of(-1)->unsignedCharValue(), 255);
  EXPECT_EQ(NSNumber::of(40000)->shortValue(), -25536);
  EXPECT_EQ(NSNumber::of(UINT32_MAX)->intValue(), -1);
  EXPECT_EQ(NSNumber::of(std::int64_t{0x1'2345'6789})->unsignedIntValue(), 0x2345'6789u);
  EXPECT_EQ(NSNumber::of(-1)->unsignedLongLongValue(), UINT64_MAX);
  EXPECT_EQ(NSNumber::of(UINT64_MAX)->longLongValue(), -1);
  EXPECT_EQ(NSNumber::of(UINT64_MAX)->doubleValue(), 0x1p64);
  EXPECT_EQ(NSNumber::of(INT64_MIN)->doubleValue(), -0x1p63);
  // Rounded to double first, this would end up one step lower.
  EXPECT_EQ(NSNumber::of((std::int64_t{1} << 60) + (std::int64_t{1} << 36) + 1)->floatValue(),
            0x1.000002p60f);
  EXPECT_TRUE(NSNumber::of(256)->boolValue());
  EXPECT_TRUE(NSNumber::of(0.25)->boolValue());
  EXPECT_TRUE(NSNumber::of(nan)->boolValue());
  EXPECT_FALSE(NSNumber::of(-0.0)->boolValue());
}

TEST(NSNumber, RemembersItsKind) {
  using N = NSNumber;
  const Ref<N> all[] = {N::numberWithBool(true),
                        N::numberWithChar(1),
                        N::numberWithUnsignedChar(1),
                        N::numberWithShort(1),
                        N::numberWithUnsignedShort(1),
                        N::numberWithInt(1),
                        N::numberWithUnsignedInt(1),
                        N::numberWithLong(1),
                        N::numberWithUnsignedLong(1),
                        N::numberWithLongLong(1),
                        N::numberWithUnsignedLongLong(1),
                        N::numberWithFloat(1),
                        N::numberWithDouble(1)};
  int kind = 0;
  for (const auto& each : all) {
    EXPECT_EQ(static_cast<int>(each->kind()), kind++);
    EXPECT_EQ(each->copy(), each);
    EXPECT_EQ(to_string(each), "1");
  }
  EXPECT_EQ(NSNumber::of(1L)->kind(), NumberKind::LongLong);
  EXPECT_EQ(NSNumber::of(1UL)->kind(), NumberKind::UnsignedLongLong);
  EXPECT_EQ(NSNumber::of('a')->kind(), NumberKind::Char);
  EXPECT_EQ(NSNumber::of(1.5L)->kind(), NumberKind::Double);
}

TEST(NSNumber, SharesSmallIntsAndTruthValues) {
  for (int value : {-129, -128, -1, 0, 1023, 1024, INT32_MIN, INT32_MAX}) {
    const bool isShared = value >= -128 && value < 1024;
    Ref<NSNumber> number = NSNumber::numberWithInt(value);
    EXPECT_EQ(number == NSNumber::numberWithInt(value), isShared);
    EXPECT_EQ(number->intValue(), value);
    EXPECT_EQ(number->retainCount(), isShared ? 0x7FFFFFFFu : 1u);
  }
  EXPECT_EQ(NSNumber::numberWithBool(true), NSNumber::of(true));
  EXPECT_FALSE(NSNumber::numberWithBool(true) == NSNumber::numberWithBool(false));
}

TEST(NSNumber, WritesTheShortestTextThatReadsBack) {
  const std::vector<std::pair<Ref<NSNumber>, std::string>> rows{
      {NSNumber::of(false), "0"},
      {NSNumber::of(UINT64_MAX), "18446744073709551615"},
      {NSNumber::of(100000.0), "100000"},
      {NSNumber::of(-0.0), "-0"},
      {NSNumber::of(0.1), "0.1"},
      {NSNumber::of(0.1f), "0.1"},
      {NSNumber::of(static_cast<double>(0.1f)), "0.10000000149011612"},
      {NSNumber::of(0.1 + 0.2), "0.30000000000000004"},
      {NSNumber::of(9007199254740993.0), "9007199254740992"},
      {NSNumber::of(1e16), "1e+16"},
      {NSNumber::of(0.0001), "0.0001"},
      {NSNumber::of(0.00001), "1e-05"},
      {NSNumber::of(infinity), "inf"},
      {NSNumber::of(-nan), "nan"}};
  for (const auto& [number, text] : rows) {
    EXPECT_EQ(number->stringValue()->UTF8String(), text);
    EXPECT_EQ(to_string(number), text);
  }
  for (const auto& [number, value] : samples())
    if (number->kind() == NumberKind::Double && !std::isnan(value)) {
      EXPECT_EQ(std::strtod(to_string(number).c_str(), nullptr), number->doubleValue());
    }
}

TEST(NSNumber, ComparesWithNumbersOnly) {
  auto number = NSNumber::of(1);
  EXPECT_TRUE(refuses([&] { number->compare(nullptr); }));
  EXPECT_TRUE(refuses([&] { send<NSComparisonResult>(number, "compare:"_sel, "1"_ns); }));
}

TEST(NSNull, IsOneObject) {
  EXPECT_EQ(NSNull::null(), send<Ref<NSNull>>(classOf<NSNull>(), "null"_sel));
  EXPECT_EQ(NSNull::null()->copy(), NSNull::null());
  EXPECT_EQ(to_string(NSNull::null()), "<null>");
  EXPECT_EQ(NSNull::null()->retainCount(), 0x7FFFFFFFu);
  EXPECT_FALSE(NSNull::null()->isEqual(NSNumber::of(0)));
}

}  // namespace
}  // namespace qz::test
