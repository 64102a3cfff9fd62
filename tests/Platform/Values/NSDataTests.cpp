#include "Platform/Values/NSData.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSMutableData.h"
#include "Platform/Values/NSString.h"
#include "tests/support/Raises.h"

namespace qz {
namespace {

using test::raises;
using namespace std::string_view_literals;

TEST(NSData, IsTheSameHoweverMade) {
  for (std::size_t length : {0u, 1u, 5u, 128u, 129u, 4000u}) {
    const std::string bytes(length, '\x80');
    void* buffer = std::malloc(length + 1);
    std::memcpy(buffer, bytes.data(), length);
    const auto count = static_cast<std::uint32_t>(length);
    const auto plain = NSData::dataWithBytes(bytes);
    const Ref<NSData> all[] = {plain, NSData::dataWithBytesNoCopy_length(buffer, count),
                               NSMutableData::dataWithBytes(bytes),
                               send<Ref<NSData>>(classOf<NSData>(), "dataWithBytes:length:"_sel,
                                                 static_cast<const void*>(bytes.data()), count)};
    for (const auto& each : all) {
      EXPECT_EQ(each->view(), bytes);
      EXPECT_TRUE(each->isEqual(plain) && plain->isEqual(each));
      EXPECT_EQ(each->hash(), plain->hash());
      EXPECT_FALSE(each->isEqual(NSData::dataWithBytes(bytes + "x")));
    }
    EXPECT_EQ(plain->copy(), plain);
    EXPECT_NE(all[2]->copy(), all[2]);
  }
}

TEST(NSData, ReadsPartsAndDescribesItself) {
  const auto data = NSData::dataWithBytes("Hello\xff"sv);
  char buffer[8] = "-------";
  data->getBytes_range(buffer, {1, 3});
  data->getBytes_length(buffer + 4, 2);
  EXPECT_STREQ(buffer, "ell-He-");
  data->getBytes_length(buffer, 4000000000u);
  EXPECT_EQ(std::string_view(buffer, 7), "Hello\xff-");
  EXPECT_EQ(data->description()->UTF8String(), "<48656c6c 6fff>");
  EXPECT_EQ(NSData::data()->description()->UTF8String(), "<>");
  EXPECT_EQ(data->subdataWithRange({5, 1})->view(), "\xff");
  EXPECT_TRUE(raises(NSRangeException, [&] { data->subdataWithRange({5, 2}); }, {"{5, 2}", "6"}));
  EXPECT_TRUE(raises(NSRangeException, [&] { data->getBytes_range(buffer, {7, 0}); }));
  EXPECT_TRUE(raises(NSInvalidArgumentException, [] { NSData::dataWithData(nullptr); }));
}

TEST(NSMutableData, ChangesAsAStringOfBytesDoes) {
  std::mt19937 random(3);
  const auto data = NSMutableData::data();
  std::string expected;
  for (int step = 0; step < 5000; ++step) {
    const auto length = static_cast<std::uint32_t>(expected.size());
    const auto location = static_cast<std::uint32_t>(random() % (length + 1));
    const NSRange range{location, static_cast<std::uint32_t>(random() % (length - location + 1))};
    std::string bytes(random() % 50, static_cast<char>(random()));
    switch (random() % 6) {
      case 0:
        data->appendBytes(std::as_bytes(std::span(bytes)));
        expected += bytes;
        break;
      case 1:
        data->replaceBytesInRange_withBytes_length(range, bytes.data(),
                                                   static_cast<std::uint32_t>(bytes.size()));
        expected.replace(range.location, range.length, bytes);
        break;
      case 2:  // its own bytes, which move while they are read
        bytes = expected.substr(range.location, range.length);
        data->replaceBytesInRange_withBytes_length(
            {location / 2, 0}, static_cast<const std::byte*>(data->bytes()) + location,
            range.length);
        expected.insert(location / 2, bytes);
        break;
      case 3:
        data->setLength(length > 300 ? 20 : length + 7);
        expected.resize(length > 300 ? 20 : length + 7, '\0');
        break;
      case 4:
        data->resetBytesInRange(range);
        expected.replace(range.location, range.length, range.length, '\0');
        break;
      default:
        if (length < 400) {
          data->appendData(data);
          expected += std::string(expected);
        }
    }
    ASSERT_EQ(data->view(), expected) << step;
  }
  EXPECT_TRUE(raises(NSMallocException, [&] { data->increaseLengthBy(0xFFFFFFFF); }));
  EXPECT_TRUE(raises(NSRangeException, [&] { data->resetBytesInRange({4000, 1}); }));
  EXPECT_EQ(data->view(), expected);
  EXPECT_EQ(NSMutableData::dataWithLength(3)->view(), "\0\0\0"sv);
}

}  // namespace
}  // namespace qz
