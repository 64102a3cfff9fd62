#include "Platform/Values/NSURL.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

std::string replaced(std::string_view escaped, NSString* kept) {
  const auto plain = CFURLCreateStringByReplacingPercentEscapes(ns(escaped), kept);
  return plain ? plain->UTF8String() : "nil";
}

TEST(PercentEscapes, AreAddedAndTakenAway) {
  const auto plain = ns("a-Z_0~. /%\xC3\xA4\xF0\x9F\x98\x80");
  const auto escaped = plain->stringByAddingPercentEncoding();
  EXPECT_EQ(escaped->UTF8String(), "a-Z_0~.%20%2F%25%C3%A4%F0%9F%98%80");
  EXPECT_TRUE(equal(escaped->stringByRemovingPercentEncoding(), plain));

  const auto allowed = NSCharacterSet::characterSetWithCharactersInString("a/ä"_ns);
  EXPECT_EQ(ns("a/bä")->stringByAddingPercentEncodingWithAllowedCharacters(allowed)->UTF8String(),
            "a/%62%C3%A4");
  EXPECT_TRUE(refuses([] { "a"_ns->stringByAddingPercentEncodingWithAllowedCharacters(nullptr); }));
  EXPECT_EQ(ns(std::u16string(1, 0xDC00))->stringByAddingPercentEncoding(), nullptr);
}

TEST(PercentEscapes, EveryCharacterComesBack) {
  std::mt19937 random(1);
  for (int round = 0; round < 2000; ++round) {
    std::u16string units;
    for (std::size_t i = random() % 6; i > 0; --i) {
      auto point = static_cast<char32_t>(random() % (random() % 2 != 0 ? 0x100 : 0x110000));
      if (point >= 0xD800 && point < 0xE000) point = U'%';
      if (point < 0x10000) {
        units += static_cast<char16_t>(point);
      } else {
        units += static_cast<char16_t>(0xD7C0 + (point >> 10));
        units += static_cast<char16_t>(0xDC00 + (point & 0x3FF));
      }
    }
    const auto plain = ns(units);
    ASSERT_TRUE(
        equal(plain->stringByAddingPercentEncoding()->stringByRemovingPercentEncoding(), plain));
  }
}

TEST(PercentEscapes, AreReplacedUnlessTheyAreToStay) {
  EXPECT_EQ(replaced("%41%2f%C3%a4b%2F", "/ä"_ns), "A%2f%C3%a4b%2F");
  EXPECT_EQ(replaced("%41%zz", nullptr), "%41%zz");
  EXPECT_EQ(replaced("%00", ""_ns), std::string(1, '\0'));
  // Cut, ill-formed, overlong, a surrogate, beyond the last character, a letter between the bytes.
  for (const char* bad : {"%", "%4", "a%4g", "%C3", "%C3%", "%C3a4", "%C3%41", "%80", "%C0%80",
                          "%ED%A0%80", "%F4%90%80%80", "%E2%82", "%FF", "%C3x%A4"})
    EXPECT_EQ(replaced(bad, ""_ns), "nil") << bad;
  EXPECT_EQ(CFURLCreateStringByReplacingPercentEscapes(nullptr, ""_ns), nullptr);
}

}  // namespace
}  // namespace qz::test
