#include "QZFoundation/NSData-QZFoundation.h"

#include <zlib.h>

#include "tests/support/Files.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

std::string noise(std::size_t size) {
  std::string bytes(size, '\0');
  std::uint32_t state = 1;
  for (char& byte : bytes) byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  return bytes;
}

TEST(NSDataQZFoundation, CompressedDataIsOneZlibStream) {
  for (const std::string& bytes :
       {std::string(), std::string("a"), std::string(1 << 20, 'x'), noise(13), noise(1 << 20)}) {
    Ref<NSData> compressed = compressedData(NSData::dataWithBytes(bytes));
    ASSERT_TRUE(compressed);
    std::string back(bytes.size() + 1, '\0');
    uLongf length = back.size();
    ASSERT_EQ(uncompress(reinterpret_cast<Bytef*>(back.data()), &length,
                         static_cast<const Bytef*>(compressed->bytes()), compressed->length()),
              Z_OK);
    EXPECT_TRUE(std::string_view(back.data(), length) == bytes);
  }
}

TEST(NSDataQZFoundation, GzipFilesHoldTheBytes) {
  const TemporaryDirectory directory;
  const std::string path = directory.path() + "/ü.gz";
  const std::string bytes = noise(100'000);
  EXPECT_EQ(writeToGzipFile(NSData::dataWithBytes(bytes), ns(path)), 100'000);
  gzFile file = gzopen(path.c_str(), "rb");
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(gzdirect(file), 0);
  std::string back(bytes.size() + 1, '\0');
  EXPECT_EQ(gzread(file, back.data(), static_cast<unsigned>(back.size())), 100'000);
  gzclose(file);
  back.pop_back();
  EXPECT_TRUE(back == bytes);

  EXPECT_LE(writeToGzipFile(NSData::data(), ns(directory.path() + "/none/x.gz")), 0);
  EXPECT_FALSE(fs::exists(directory.path() + "/none"));
  EXPECT_LE(writeToGzipFile(NSData::data(), nullptr), 0);
}

TEST(NSDataQZFoundation, UUIDDataIsNewEachTime) {
  Ref<NSData> first = UUIDData(), second = UUIDData();
  EXPECT_EQ(first->length(), 16u);
  EXPECT_FALSE(first->isEqual(second));
}

}  // namespace
}  // namespace qz::test
