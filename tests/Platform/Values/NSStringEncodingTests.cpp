#include <unicode/unistr.h>

#include "tests/support/Test.h"

namespace qz::test {
namespace {

constexpr std::uint32_t unicodeEncodings[] = {4,          10,         0x90000100, 0x94000100,
                                              0x8C000100, 0x98000100, 0x9C000100};

Ref<NSString> decoded(std::string_view bytes, std::uint32_t encoding) {
  return NSString::initWithData_encoding(NSData::dataWithBytes(bytes), encoding);
}

TEST(NSStringEncoding, KnownBytes) {
  // A mark and the order it tells, or the high byte first.
  for (const std::string_view each :
       {"\xfe\xff\0a\0\xe9"sv, "\xff\xfe\x61\0\xe9\0"sv, "\0a\0\xe9"sv})
    EXPECT_TRUE(decoded(each, NSUTF16StringEncoding)->isEqual("aé"_ns));
  EXPECT_EQ(decoded("\xfe\xff\0a"sv, NSUTF16BigEndianStringEncoding)->view(), u"\uFEFFa");
  EXPECT_EQ(""_ns->dataUsingEncoding(NSUTF16StringEncoding)->length(), 2u);
  EXPECT_TRUE(decoded("a\xe9\x80"sv, NSISOLatin1StringEncoding)->isEqual("aé\u0080"_ns));
  const auto windows = encodingNamed("Windows-1252");
  EXPECT_TRUE(decoded("\x80\x99"sv, windows)->isEqual("€™"_ns));
  EXPECT_EQ("€™"_ns->dataUsingEncoding(windows)->view(), "\x80\x99"sv);
}

TEST(NSStringEncoding, NamesAndNumbersAgree) {
  EXPECT_EQ(encodingNamed("utf8"), 4u);
  EXPECT_EQ(encodingNamed("UTF-16LE"), 0x94000100u);
  EXPECT_EQ(encodingNamed("no such charset"), 0u);
  EXPECT_EQ(encodingNamed("cp1252"), encodingNamed("windows-1252"));
  for (std::uint32_t unknown : {0u, 99u, 0x20FFFFFFu, 0xFFFFFFFFu})
    EXPECT_TRUE(refuses([&] { "a"_ns->dataUsingEncoding(unknown); }, {std::to_string(unknown)}));
}

TEST(NSStringEncoding, RefusesWhatIsIllFormedOrCannotBeTold) {
  EXPECT_EQ(decoded("a\x80", 1), nullptr);
  EXPECT_EQ(decoded("\0a\0"sv, 10), nullptr) << "half a unit";
  EXPECT_EQ(decoded("\xd8\0\0a"sv, 0x90000100), nullptr) << "half a pair";
  EXPECT_EQ(decoded("\0\x11\0\0"sv, 0x98000100), nullptr) << "beyond Unicode";
  EXPECT_EQ(decoded("\0\0\xd8\0"sv, 0x98000100), nullptr) << "a surrogate";
  EXPECT_EQ(decoded("\x82"sv, encodingNamed("Shift_JIS")), nullptr) << "half a character";
  EXPECT_EQ(NSString::initWithData_encoding(nullptr, 4), nullptr);

  const auto lossy = [](NSString* text, std::uint32_t encoding) {
    EXPECT_EQ(text->dataUsingEncoding(encoding), nullptr);
    EXPECT_FALSE(text->canBeConvertedToEncoding(encoding));
    EXPECT_EQ(text->lengthOfBytesUsingEncoding(encoding), 0u);
    return std::string(text->dataUsingEncoding_allowLossyConversion(encoding, true)->view());
  };
  EXPECT_EQ(lossy("é\U0001F600x"_ns, 1), "??x");
  EXPECT_EQ(lossy("é\U0001F600€"_ns, 5), "\xe9??");
  EXPECT_EQ(lossy("€\U0001F600日x"_ns, encodingNamed("windows-1252")), "\x80??x");
  const auto lone = NSString::stringWithCharacters(u"a\xd83d");
  EXPECT_EQ(lossy(lone, 4), "a\xef\xbf\xbd");
  EXPECT_EQ(lossy(lone, 0x98000100), "\0\0\0a\0\0\xff\xfd"sv);
  EXPECT_EQ(lossy(lone, encodingNamed("windows-1252")), "a?");
}

// Random text through every encoding and back; the lengths cross the converters' buffers.
TEST(NSStringEncoding, RoundTripsAndAgreesWithIcu) {
  std::mt19937 random(8);
  constexpr std::u16string_view alphabet = u"abcdefgh\u00e9\u00ff\u0416\u20ac\u65e5\u3042";
  for (std::size_t length : {0u, 1u, 15u, 300u, 5000u, 20000u}) {
    std::u16string units;
    while (units.size() < length) {
      units += alphabet[random() % alphabet.size()];
      if (random() % 8 == 0) units += u"\U0001F600";
    }
    const auto text = NSString::stringWithCharacters(units);
    for (std::uint32_t encoding : unicodeEncodings) {
      const auto data = text->dataUsingEncoding(encoding);
      ASSERT_TRUE(NSString::initWithData_encoding(data, encoding)->isEqual(text)) << encoding;
      ASSERT_EQ(text->lengthOfBytesUsingEncoding(encoding), data->length());
    }
    // Written in pieces, none of which may end within a pair.
    for (std::size_t i = 0; i < 3; ++i) {
      std::u16string before(4094 + i, u'a');
      std::u16string after = before;
      after.append(units).append(u"\U0001F600");
      before.append(u"\U0001F600").append(units);
      const auto shifted = NSString::stringWithCharacters(after);
      const auto pair = NSString::stringWithCharacters(before);
      ASSERT_EQ(shifted->UTF8String(), shifted->dataUsingEncoding(4)->view());
      ASSERT_EQ(pair->UTF8String(), pair->dataUsingEncoding(4)->view());
    }
    for (const char* name :
         {"Shift_JIS", "GB18030", "UTF-7", "KOI8-R", "UTF-8", "UTF-16BE", "UTF-16LE", "UTF-32BE"}) {
      const auto encoding = encodingNamed(name);
      std::string expected(units.size() * 6 + 16, '\0');
      const icu::UnicodeString source(units.data(), static_cast<std::int32_t>(units.size()));
      expected.resize(static_cast<std::size_t>(source.extract(
          0, source.length(), expected.data(), static_cast<std::uint32_t>(expected.size()), name)));
      const auto data = text->dataUsingEncoding(encoding);
      if (data == nullptr) {  // a charset without some of the characters
        ASSERT_TRUE(name == "KOI8-R"sv || name == "Shift_JIS"sv) << name;
        continue;
      }
      ASSERT_EQ(data->view(), expected) << name;
      ASSERT_TRUE(NSString::initWithData_encoding(data, encoding)->isEqual(text)) << name;
    }
  }
}

}  // namespace
}  // namespace qz::test
