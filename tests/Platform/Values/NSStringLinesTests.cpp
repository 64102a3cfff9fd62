#include "tests/support/Test.h"

namespace qz::test {
namespace {

struct Line {
  std::uint32_t start, contentsEnd, end;
};

// The lines from the front, as a person would mark them.
std::vector<Line> linesOf(const std::u16string& text, bool paragraphs) {
  std::vector<Line> lines;
  std::uint32_t start = 0;
  for (std::uint32_t i = 0; i < text.size(); ++i) {
    const std::u16string_view ends = paragraphs ? u"\n\r\u0085\u2029" : u"\n\r\u0085\u2028\u2029";
    if (ends.find(text[i]) == ends.npos) continue;
    const std::uint32_t width = text.compare(i, 2, u"\r\n") == 0 ? 2 : 1;
    lines.push_back({start, i, i + width});
    start = i + width;
    i = start - 1;
  }
  const auto length = static_cast<std::uint32_t>(text.size());
  lines.push_back({start, length, length});
  return lines;
}

// VT, FF and U+001C end nothing; U+0A0D and U+2A28 have the same bytes as units that do.
TEST(NSStringLines, AreWhatTheTerminatorsMakeThem) {
  std::mt19937 random(4);
  constexpr std::u16string_view alphabet =
      u"aaaa\n\r\r\n\u0085\u2028\u2029\u000b\u000c\u001c\u0a0d\u2a28";
  for (int round = 0; round < 3000; ++round) {
    std::u16string units(random() % 40, u'a');
    for (char16_t& unit : units)
      if (round % 3 != 0 || random() % 8 == 0) unit = alphabet[random() % alphabet.size()];
    const auto text = NSString::stringWithCharacters(units);
    const auto location = static_cast<std::uint32_t>(random() % (units.size() + 1));
    const auto length = static_cast<std::uint32_t>(random() % (units.size() - location + 1));
    const std::uint32_t last = location + (length > 1 ? length - 1 : 0);
    for (bool paragraphs : {false, true}) {
      Line first{}, final{};
      for (const Line& line : linesOf(units, paragraphs)) {
        if (line.start <= location) first = line;
        if (line.start <= last) final = line;
      }
      const NSRange expected{first.start, final.end - first.start};
      const NSRange range{location, length};
      ASSERT_EQ(paragraphs ? text->paragraphRangeForRange(range) : text->lineRangeForRange(range),
                expected)
          << round;
      if (paragraphs) continue;
      std::uint32_t start, end, contentsEnd;
      text->getLineStart_end_contentsEnd_forRange(&start, &end, &contentsEnd, range);
      ASSERT_EQ(start, first.start);
      ASSERT_EQ(end, final.end);
      ASSERT_EQ(contentsEnd, final.contentsEnd) << round;
    }
  }
}

TEST(NSStringLines, RefuseRangesBeyondTheText) {
  EXPECT_TRUE(refusesRange([] { "ab"_ns->lineRangeForRange(NSMakeRange(1, 2)); },
                           {"lineRangeForRange:", "{1, 2}", "2"}));
  EXPECT_EQ("ab\n"_ns->lineRangeForRange({3, 0}), NSMakeRange(3, 0));
  "ab"_ns->getLineStart_end_contentsEnd_forRange(nullptr, nullptr, nullptr, {2, 0});
}

}  // namespace
}  // namespace qz::test
