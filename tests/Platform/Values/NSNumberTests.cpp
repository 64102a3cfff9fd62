#include <cfloat>

#include "tests/support/Test.h"

namespace qz::test {
namespace {

// Wide enough for every integer of 64 bits and every double, so it compares them exactly.
using Exact = long double;
static_assert(LDBL_MANT_DIG >= 64);

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
  EXPECT_TRUE(refuses([&] { all[0].number->compare(nullptr); }));
}

template <class T>
T clamped(Exact value) {
  if (std::isnan(value)) return 0;
  using Limits = std::numeric_limits<T>;
  return static_cast<T>(std::clamp<Exact>(std::trunc(value), Limits::min(), Limits::max()));
}

// Floating numbers convert to the nearest integer, integers by their low bits.
template <class T>
T converted(NSNumber* number, Exact value) {
  if (isFloatingKind(number->kind())) return clamped<T>(value);
  if (value < 0) return static_cast<T>(static_cast<std::int64_t>(value));
  return static_cast<T>(static_cast<std::uint64_t>(value));
}

TEST(NSNumber, ConvertsToEveryKind) {
  for (const auto& [n, exact] : samples()) {
    EXPECT_EQ(n->charValue(), converted<std::int8_t>(n, exact)) << n;
    EXPECT_EQ(n->unsignedCharValue(), converted<std::uint8_t>(n, exact)) << n;
    EXPECT_EQ(n->shortValue(), converted<std::int16_t>(n, exact)) << n;
    EXPECT_EQ(n->unsignedShortValue(), converted<std::uint16_t>(n, exact)) << n;
    EXPECT_EQ(n->intValue(), converted<std::int32_t>(n, exact)) << n;
    EXPECT_EQ(n->unsignedIntValue(), converted<std::uint32_t>(n, exact)) << n;
    EXPECT_EQ(n->longValue(), converted<std::int32_t>(n, exact)) << n;
    EXPECT_EQ(n->unsignedLongValue(), converted<std::uint32_t>(n, exact)) << n;
    EXPECT_EQ(n->longLongValue(), converted<std::int64_t>(n, exact)) << n;
    EXPECT_EQ(n->unsignedLongLongValue(), converted<std::uint64_t>(n, exact)) << n;
  }
  EXPECT_EQ(NSNumber::of(UINT64_MAX)->doubleValue(), 0x1p64);
  EXPECT_EQ(NSNumber::of(INT64_MIN)->doubleValue(), -0x1p63);
  // Rounded to double first, this would end up one step lower.
  EXPECT_EQ(NSNumber::of((std::int64_t{1} << 60) + (std::int64_t{1} << 36) + 1)->floatValue(),
            0x1.000002p60f);
  EXPECT_TRUE(NSNumber::of(256)->boolValue());
  EXPECT_TRUE(NSNumber::of(nan)->boolValue());
  EXPECT_FALSE(NSNumber::of(-0.0)->boolValue());
}

TEST(NSNumber, RemembersItsKind) {
  using N = NSNumber;
  const Ref<N> all[] = {
      N::numberWithBool(true),          N::numberWithChar(1),
      N::numberWithUnsignedChar(1),     N::numberWithShort(1),
      N::numberWithUnsignedShort(1),    N::numberWithInt(1),
      N::numberWithUnsignedInt(1),      N::numberWithLong(1),
      N::numberWithUnsignedLong(1),     N::numberWithLongLong(1),
      N::numberWithUnsignedLongLong(1), N::numberWithFloat(1),
      N::numberWithDouble(1),
  };
  int kind = 0;
  for (const auto& each : all) {
    EXPECT_EQ(static_cast<int>(each->kind()), kind++);
    EXPECT_EQ(each->copy(), each);
    EXPECT_EQ(to_string(each), "1");
  }
  EXPECT_EQ(NSNumber::of(1L)->kind(), NumberKind::LongLong);
  EXPECT_EQ(NSNumber::of(1UL)->kind(), NumberKind::UnsignedLongLong);
  EXPECT_EQ(NSNumber::of('a')->kind(), NumberKind::Char);
}

TEST(NSNumber, SharesSmallIntsAndTruthValues) {
  for (int value : {-129, -128, -1, 0, 1023, 1024, INT32_MIN, INT32_MAX}) {
    const bool isShared = value >= -128 && value < 1024;
    Ref<NSNumber> number = NSNumber::numberWithInt(value);
    EXPECT_EQ(number == NSNumber::numberWithInt(value), isShared);
    EXPECT_EQ(number->retainCount(), isShared ? 0x7FFFFFFFu : 1u);
  }
}

TEST(NSNumber, WritesTheShortestTextThatReadsBack) {
  const std::vector<std::pair<Ref<NSNumber>, std::string>> rows{
      {NSNumber::of(false), "0"},
      {NSNumber::of(UINT64_MAX), "18446744073709551615"},
      {NSNumber::of(-0.0), "-0"},
      {NSNumber::of(0.1f), "0.1"},
      {NSNumber::of(static_cast<double>(0.1f)), "0.10000000149011612"},
      {NSNumber::of(0.1 + 0.2), "0.30000000000000004"},
      {NSNumber::of(9007199254740993.0), "9007199254740992"},
      {NSNumber::of(1e16), "1e+16"},
      {NSNumber::of(0.0001), "0.0001"},
      {NSNumber::of(0.00001), "1e-05"},
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

}  // namespace
}  // namespace qz::test
