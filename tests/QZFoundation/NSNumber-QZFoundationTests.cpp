#include "QZFoundation/NSNumber-QZFoundation.h"

#include "Platform/Values/NSMutableData.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

TEST(NSNumberQZFoundation, IsReadFromBytes) {
  const struct {
    std::string_view bytes;
    bool isSigned;
    int order;
    NumberKind kind;
    const char* value;
  } cases[] = {
      {"\xFF"sv, true, 2, NumberKind::Char, "-1"},
      {"\xFF\xFE"sv, true, 1, NumberKind::Short, "-257"},
      {"\xFF\xFE"sv, true, 0, NumberKind::Short, "-257"},
      {"\xFF\xFE"sv, false, 2, NumberKind::UnsignedShort, "65534"},
      {"\x80\0\0\1"sv, true, 2, NumberKind::Long, "-2147483647"},
      {"\x80\0\0\1"sv, false, -2, NumberKind::UnsignedLong, "16777344"},
      {"\x80\0\0\0\0\0\0\0"sv, true, 2, NumberKind::LongLong, "-9223372036854775808"},
      {"\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE"sv, false, 2, NumberKind::UnsignedLongLong,
       "18446744073709551614"},
  };
  for (const auto& each : cases) {
    const auto data = NSData::dataWithBytes(each.bytes);
    const auto number = numberWithData_isSigned_byteOrder(data, each.isSigned, each.order);
    ASSERT_TRUE(number) << each.value;
    EXPECT_EQ(number->stringValue()->UTF8String(), each.value);
    EXPECT_EQ(number->kind(), each.kind);
  }
  for (std::size_t length : {0u, 3u, 5u, 6u, 7u, 9u, 1000u})
    EXPECT_FALSE(
        numberWithData_isSigned_byteOrder(NSData::dataWithBytes(std::string(length, 'x')), true, 2))
        << length;
  EXPECT_FALSE(numberWithData_isSigned_byteOrder(nullptr, true, 2));
}

TEST(NSNumberQZFoundation, LooksAtTheLowByteOfATruthValue) {
  const auto data = NSData::dataWithBytes("\xFF"sv);
  for (const auto& [sent, value] : {std::pair{256, 255}, {257, -1}, {-1, -1}, {0, 255}}) {
    const auto number = send<Ref<NSNumber>>(
        classOf<NSNumber>(), "numberWithData:isSigned:byteOrder:"_sel, data.get(), sent, 1);
    EXPECT_EQ(number->intValue(), value) << sent;
  }
}

TEST(NSNumberQZFoundation, ReadsBackWhatWasWritten) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 200; ++i) {
    const std::uint64_t bits = random() >> random() % 64;
    for (const auto order : {NS_LittleEndian, NS_BigEndian}) {
      const auto data = NSMutableData::data();
      data->appendInteger(bits, order);
      ASSERT_EQ(numberWithData_isSigned_byteOrder(data, false, order)->unsignedLongLongValue(),
                bits);
      ASSERT_EQ(numberWithData_isSigned_byteOrder(data, true, order)->longLongValue(),
                static_cast<std::int64_t>(bits));
    }
  }
}

TEST(NSNumberQZFoundation, AddsAndKnowsItsKind) {
  const auto sum = numberByAddingNumber(number(2), NSNumber::of(0.5f));
  EXPECT_EQ(sum->doubleValue(), 2.5);
  EXPECT_EQ(numberByAddingNumber(NSNumber::of(true), NSNumber::of(1u))->kind(), NumberKind::Double);
  EXPECT_EQ(numberByAddingNumber(sum, nullptr)->doubleValue(), 2.5);
  for (const auto& number : {NSNumber::of(true), NSNumber::of(std::int8_t{1}), number(1),
                             NSNumber::of(1.0f), NSNumber::of(1.0)}) {
    const auto kind = number->kind();
    EXPECT_EQ(isBool(number), kind == NumberKind::Bool);
    EXPECT_EQ(send<bool>(number, "isFloat"_sel),
              kind == NumberKind::Float || kind == NumberKind::Double);
  }
}

}  // namespace
}  // namespace qz::test
