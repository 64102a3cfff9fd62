// UTF-8 and UTF-16, next to ICU's conversions.
#include <unicode/unistr.h>

#include "tests/support/Test.h"

namespace qz::test {
namespace {

std::u16string decodedByIcu(std::string_view bytes) {
  const auto units =
      icu::UnicodeString::fromUTF8({bytes.data(), static_cast<std::int32_t>(bytes.size())});
  return {units.getBuffer(), static_cast<std::size_t>(units.length())};
}

std::string encodedByIcu(std::u16string_view units) {
  std::string bytes;
  return icu::UnicodeString(units.data(), static_cast<std::int32_t>(units.size()))
      .toUTF8String(bytes);
}

void checkBytes(std::string_view text) {
  // A block of exactly this size: the address sanitizer sees a read one byte too far.
  auto copy = std::make_unique<char[]>(text.size());
  text.copy(copy.get(), text.size());
  const std::string_view bytes(copy.get(), text.size());
  const std::u16string expected = decodedByIcu(bytes);
  ASSERT_EQ(NSString::stringWithUTF8String(bytes)->view(), expected);
  ASSERT_EQ(NSMutableString::stringWithUTF8String(bytes)->view(), expected);
  const auto strict = NSString::stringWithValidUTF8String(bytes);
  ASSERT_EQ(bool(strict), encodedByIcu(expected) == bytes);
  if (strict) {
    ASSERT_EQ(strict->view(), expected);
    ASSERT_EQ(strict->UTF8String(), bytes);
  }
}

// Pieces whose neighbours decide what they mean.
std::vector<std::string> allPieces() {
  std::vector<std::string> all = {"a", "z", std::string(1, '\0'), "0123456789abcdef"};
  for (const char* whole : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xEF\xBF\xBD",
                            "\xEF\xBB\xBF", "\xF4\x8F\xBF\xBF"})
    all.emplace_back(whole);
  for (const char* part :
       {"\x80", "\xBF",     "\xC0",        "\xC1",         "\xC2",     "\xDF",
        "\xE0", "\xE0\x9F", "\xE0\xA0",    "\xED\xA0",     "\xED\x9F", "\xED\xA0\x80",
        "\xF0", "\xF0\x8F", "\xF0\x90",    "\xF0\x90\x80", "\xF4\x90", "\xF5",
        "\xFF", "\xE1\x80", "\xF1\x80\x80"})
    all.emplace_back(part);
  return all;
}
const std::vector<std::string> pieces = allPieces();

TEST(NSStringUtf, EveryPairOfBytesAndOfPieces) {
  for (unsigned first = 0; first < 256; ++first)
    for (unsigned second = 0; second < 256; ++second)
      checkBytes(std::string{static_cast<char>(first), static_cast<char>(second)});
  for (const std::string& a : pieces)
    for (const std::string& b : pieces)
      for (const std::string& c : pieces) checkBytes(a + b + c);
}

TEST(NSStringUtf, LongHostileTexts) {
  std::mt19937 random(1);
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    // Lengths around the vector blocks, the stack buffer and the adopted buffer.
    const std::size_t wanted = random() % (round % 50 == 0 ? 9000 : 300);
    while (text.size() < wanted) {
      if (random() % 4 == 0) text.append(random() % 40, 'x');
      text += pieces[random() % pieces.size()];
    }
    checkBytes(text);
  }
}

TEST(NSStringUtf, UnitsTurnIntoUtf8) {
  std::mt19937 random(2);
  const std::u16string_view alphabet = u"a\0\u007f\u0080\u07ff\u0800\uffff\xd800\xdbff\xdc00\xdfff";
  for (int round = 0; round < 20000; ++round) {
    std::u16string units;
    // Long ones are measured in blocks, whose borders may split a pair.
    for (std::size_t i = random() % (round % 4 == 0 ? 200 : 9); i > 0; --i) {
      if (random() % 8 == 0) units.append(random() % 40, u'y');
      units += alphabet[random() % alphabet.size()];
    }
    ASSERT_EQ(NSString::stringWithCharacters(units)->UTF8String(), encodedByIcu(units));
  }
}

}  // namespace
}  // namespace qz::test
