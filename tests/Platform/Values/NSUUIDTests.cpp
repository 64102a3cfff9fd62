#include "Platform/Values/NSUUID.h"

#include <regex>

#include "tests/support/Test.h"

namespace qz::test {
namespace {

TEST(NSUUID, NewOnesAreRandomAndMarkedSo) {
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i) {
    const auto uuid = CFUUIDCreate();
    const std::string text = CFUUIDCreateString(uuid)->UTF8String();
    static const std::regex form(
        "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    ASSERT_TRUE(std::regex_match(text, form)) << text;
    ASSERT_TRUE(seen.insert(text).second);
    ASSERT_TRUE(uuid->isEqual(NSUUID::initWithUUIDString(uuid->UUIDString())));
  }
}

TEST(NSUUID, TextAndBytesAreInTheSameOrder) {
  const auto uuid = NSUUID::initWithUUIDString("00112233-4455-6677-8899-aAbBcCdDeEfF"_ns);
  ASSERT_TRUE(uuid);
  for (std::uint8_t i = 0; i < 16; ++i) EXPECT_EQ(CFUUIDGetUUIDBytes(uuid)[i], i * 0x11);
  EXPECT_EQ(uuid->description()->UTF8String(), "00112233-4455-6677-8899-AABBCCDDEEFF");
  const auto same = NSUUID::initWithUUIDBytes(uuid->bytes());
  EXPECT_TRUE(same->isEqual(uuid) && same->hash() == uuid->hash());
}

TEST(NSUUID, RefusesOtherTexts) {
  for (NSString* bad :
       {""_ns, "00112233-4455-6677-8899-AABBCCDDEEF"_ns, "00112233-4455-6677-8899-AABBCCDDEEFFF"_ns,
        "00112233-4455-6677-8899-AABBCCDDEEFG"_ns, "001122334-455-6677-8899-AABBCCDDEEFF"_ns,
        "00112233-4455-6677-8899-AABBCCDDEEFÄ"_ns})
    EXPECT_EQ(NSUUID::initWithUUIDString(bad), nullptr);
  EXPECT_EQ(NSUUID::initWithUUIDString(nullptr), nullptr);
  EXPECT_TRUE(refuses([] { CFUUIDGetUUIDBytes(nullptr); }));
}

}  // namespace
}  // namespace qz::test
