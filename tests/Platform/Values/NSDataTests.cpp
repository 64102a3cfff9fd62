#include "Platform/Values/NSMutableData.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

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
  EXPECT_TRUE(refusesRange([&] { data->subdataWithRange({5, 2}); }, {"{5, 2}", "6"}));
  EXPECT_TRUE(refusesRange([&] { data->getBytes_range(buffer, {7, 0}); }));
  EXPECT_TRUE(refuses([] { NSData::dataWithData(nullptr); }));
}

TEST(NSData, FindsBytes) {
  const auto data = NSData::dataWithBytes("abcabcab"sv);
  const struct {
    std::string_view sought;
    std::uint32_t options;
    NSRange range, found;
  } cases[] = {
      {"abc", 0, {0, 8}, {0, 3}},
      {"abc", 0, {1, 7}, {3, 3}},
      {"abc", NSDataSearchBackwards, {0, 8}, {3, 3}},
      {"abc", NSDataSearchAnchored, {3, 5}, {3, 3}},
      {"ab", NSDataSearchAnchored | NSDataSearchBackwards, {0, 8}, {6, 2}},
      {"bc", NSDataSearchAnchored | NSDataSearchBackwards, {0, 8}, notFoundRange},
      {"", 0, {0, 8}, notFoundRange},
      {"abcabcabc", NSDataSearchBackwards, {0, 8}, notFoundRange},
  };
  for (const auto& each : cases)
    EXPECT_EQ(data->rangeOfData_options_range(NSData::dataWithBytes(each.sought), each.options,
                                              each.range),
              each.found)
        << each.sought << each.options;
  EXPECT_TRUE(refusesRange([&] { data->rangeOfData_options_range(data, 0, {5, 4}); }));
}

TEST(NSData, KnowsBothOrdersOfBytes) {
  const auto data = NSMutableData::data();
  data->appendInteger<std::uint32_t>(0x01020304, NS_BigEndian);
  data->appendInteger<std::int16_t>(-2, NS_LittleEndian);
  EXPECT_EQ(data->view(), "\1\2\3\4\xFE\xFF"sv);
  EXPECT_EQ(data->integerAtLocation<std::uint16_t>(1, NS_UnknownByteOrder), 0x0302);
  EXPECT_EQ(data->integerAtLocation<std::int16_t>(4, NS_LittleEndian), -2);
  EXPECT_TRUE(refusesRange([&] { data->integerAtLocation<std::uint64_t>(0, NS_BigEndian); }));
}

TEST(NSData, IsTextInBase64) {
  const std::pair<std::string_view, const char*> cases[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"\xFB\xFF\0"sv, "+/8A"}};
  for (const auto& [bytes, text] : cases) {
    const auto data = NSData::dataWithBytes(bytes);
    const auto written = NSString::stringWithUTF8String(text);
    EXPECT_EQ(data->base64EncodedStringWithOptions(0)->UTF8String(), text);
    EXPECT_EQ(data->base64EncodedDataWithOptions(0)->view(), text);
    EXPECT_EQ(NSData::initWithBase64EncodedString_options(written, 0)->view(), bytes);
    EXPECT_EQ(
        NSMutableData::initWithBase64EncodedData_options(NSData::dataWithBytes(text), 0)->view(),
        bytes);
  }
  for (NSString* wrong : {"Zg"_ns, "Zg="_ns, "Zg==="_ns, "="_ns, "===="_ns, "Z==="_ns, "Zh=="_ns,
                          "Zm9="_ns, "Zg==Zg=="_ns, "Zg=v"_ns, "Zm 9v"_ns, "Zm9v\n"_ns, "Zm9ö"_ns,
                          static_cast<NSString*>(nullptr)})
    EXPECT_FALSE(NSData::initWithBase64EncodedString_options(wrong, 0)) << wrong;
}

TEST(NSData, HasBase64InLines) {
  const struct {
    std::uint32_t options;
    std::size_t bytes, length;
    std::string_view end;
  } cases[] = {
      {NSDataBase64Encoding64CharacterLineLength, 48, 64, ""},
      {NSDataBase64Encoding64CharacterLineLength, 49, 64, "\r\n"},
      {NSDataBase64Encoding76CharacterLineLength | NSDataBase64EncodingEndLineWithLineFeed, 200, 76,
       "\n"},
      {NSDataBase64Encoding76CharacterLineLength | NSDataBase64EncodingEndLineWithCarriageReturn,
       114, 76, "\r"},
  };
  for (const auto& each : cases) {
    const auto data = NSData::dataWithBytes(std::string(each.bytes, 'b'));
    const auto text = data->base64EncodedStringWithOptions(each.options);
    const std::string all = data->base64EncodedStringWithOptions(0)->UTF8String();
    std::string lines;
    for (std::size_t at = 0; at < all.size(); at += each.length)
      lines.append(at == 0 ? "" : each.end).append(all, at, each.length);
    EXPECT_EQ(text->UTF8String(), lines);
    EXPECT_TRUE(NSData::initWithBase64EncodedString_options(
                    text, NSDataBase64DecodingIgnoreUnknownCharacters)
                    ->isEqual(data));
  }
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
    const auto size = static_cast<std::uint32_t>(bytes.size());
    const std::uint32_t wanted = length > 300 ? 20 : length + 7;
    const std::function<void()> operations[] = {
        [&] { data->appendBytes(std::as_bytes(std::span(bytes))), expected += bytes; },
        [&] {
          data->replaceBytesInRange_withBytes_length(range, bytes.data(), size);
          expected.replace(range.location, range.length, bytes);
        },
        [&] {  // its own bytes, which move while they are read
          bytes = expected.substr(range.location, range.length);
          data->replaceBytesInRange_withBytes_length(
              {location / 2, 0}, static_cast<const std::byte*>(data->bytes()) + location,
              range.length);
          expected.insert(location / 2, bytes);
        },
        [&] { data->setLength(wanted), expected.resize(wanted, '\0'); },
        [&] {
          data->resetBytesInRange(range);
          expected.replace(range.location, range.length, range.length, '\0');
        },
        [&] { data->appendData(data), expected += std::string(expected); },
    };
    operations[random() % (length < 400 ? 6 : 5)]();
    ASSERT_EQ(data->view(), expected) << step;
  }
  EXPECT_TRUE(raises(NSMallocException, [&] { data->increaseLengthBy(0xFFFFFFFF); }));
  EXPECT_TRUE(refusesRange([&] { data->resetBytesInRange({4000, 1}); }));
  EXPECT_EQ(data->view(), expected);
}

}  // namespace
}  // namespace qz::test
