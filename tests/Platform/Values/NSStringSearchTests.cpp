#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "tests/support/Test.h"

namespace qz::test {
namespace {

Ref<NSString> string(std::u16string_view units) { return NSString::stringWithCharacters(units); }

// Texts of few different characters, so that parts occur, overlap and almost occur.
struct RandomTexts {
  std::mt19937 random{20};
  std::u16string text(std::size_t longest, std::u16string_view alphabet) {
    std::u16string made(random() % (longest + 1), u' ');
    for (char16_t& unit : made) unit = alphabet[random() % alphabet.size()];
    return made;
  }
  NSRange rangeIn(std::size_t length) {
    const auto place = [&] { return static_cast<std::uint32_t>(random() % (length + 1)); };
    const auto [from, to] = std::minmax({place(), place()});
    return {from, to - from};
  }
};

NSRange expectedUnits(const std::u16string& text, const std::u16string& part, std::uint32_t options,
                      NSRange within) {
  const std::u16string searched = text.substr(within.location, within.length);
  if (part.empty()) return notFoundRange;
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i + part.size() <= searched.size(); ++i)
    if (searched.compare(i, part.size(), part) == 0) places.push_back(i);
  const bool backwards = (options & NSBackwardsSearch) != 0;
  if (places.empty()) return notFoundRange;
  const std::size_t place = backwards ? places.back() : places.front();
  const bool isAtEdge = backwards ? place + part.size() == searched.size() : place == 0;
  if ((options & NSAnchoredSearch) != 0 && !isAtEdge) return notFoundRange;
  return {within.location + static_cast<std::uint32_t>(place),
          static_cast<std::uint32_t>(part.size())};
}

TEST(NSStringSearch, FindsUnitsAsComparingEachPlaceDoes) {
  RandomTexts texts;
  for (int round = 0; round < 4000; ++round) {
    const std::u16string text = texts.text(90, u"ab\u0161");  // the last is "a" in its low byte
    const std::u16string part = texts.text(round % 2 == 0 ? 3 : 12, u"ab");
    const NSRange within = texts.rangeIn(text.size());
    for (std::uint32_t options : {0u, 2u, 4u, 8u, 12u})
      ASSERT_EQ(string(text)->rangeOfString_options_range(string(part), options, within),
                expectedUnits(text, part, options, within))
          << round << " " << options;
    ASSERT_EQ(string(text)->containsString(string(part)),
              !part.empty() && text.find(part) != text.npos);
  }
}

// Parts that fit at both ends almost everywhere: still found, and soon.
TEST(NSStringSearch, AdversarialTextsTakeLinearTime) {
  std::u16string text(400'000, u'a');
  std::u16string part(80'001, u'a');
  part[40'000] = u'b';
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(string(text)->rangeOfString(string(part)), notFoundRange);
  text[300'000] = u'b';
  EXPECT_EQ(string(text)->rangeOfString(string(part)), NSMakeRange(260'000, 80'001));
  // Quadratic time would be hundreds of times this.
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
}

// What remains of a text when case or accents are overlooked, by ICU's whole-text operations.
std::u16string remains(std::u16string_view text, std::uint32_t options) {
  icu::UnicodeString all(text.data(), static_cast<std::int32_t>(text.size()));
  UErrorCode status = U_ZERO_ERROR;
  if ((options & NSDiacriticInsensitiveSearch) != 0) {
    const icu::UnicodeString parts =
        icu::Normalizer2::getNFDInstance(status)->normalize(all, status);
    all.remove();
    for (std::int32_t i = 0; i < parts.length(); i = parts.moveIndex32(i, 1)) {
      const UChar32 c = parts.char32At(i);
      if (u_charType(c) != U_NON_SPACING_MARK || !u_hasBinaryProperty(c, UCHAR_DIACRITIC))
        all.append(c);
    }
  }
  if ((options & NSCaseInsensitiveSearch) != 0) all.foldCase();
  return {all.getBuffer(), static_cast<std::size_t>(all.length())};
}

bool cutsPair(std::u16string_view text, std::size_t at) {
  return at > 0 && at < text.size() && U16_IS_LEAD(text[at - 1]) && U16_IS_TRAIL(text[at]);
}

// Each piece of whole characters is tried; the first character counts, marks behind belong to it.
std::vector<NSRange> expectedMatches(const std::u16string& text, const std::u16string& part,
                                     std::uint32_t options, NSRange within) {
  std::vector<NSRange> all;
  const std::u16string wanted = remains(part, options);
  if (wanted.empty()) return all;
  const std::u16string_view units = text;
  for (std::size_t from = within.location; from < NSMaxRange(within); ++from) {
    if (cutsPair(text, from)) continue;
    const std::size_t width = cutsPair(text, from + 1) ? 2 : 1;
    if (remains(units.substr(from, width), options).empty()) continue;
    std::optional<std::size_t> end;
    for (std::size_t to = from + width; to <= NSMaxRange(within); ++to)
      if (!cutsPair(text, to) && remains(units.substr(from, to - from), options) == wanted)
        end = to;
    if (end)
      all.push_back({static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(*end - from)});
  }
  return all;
}

TEST(NSStringSearch, OverlooksCaseAndAccentsInWholeCharacters) {
  RandomTexts texts;
  constexpr std::u16string_view alphabet =
      u"aAsSzßſkK\u212a\u00e9eE\u0301\u0130iI\u0131\ufb01fF\U00010400\U00010428\u1f80\u03b9";
  for (int round = 0; round < 1500; ++round) {
    const std::u16string text = texts.text(24, alphabet);
    const std::u16string part = texts.text(3, alphabet);
    const NSRange within = texts.rangeIn(text.size());
    for (std::uint32_t options : {1u, 128u, 129u}) {
      const std::vector<NSRange> all = expectedMatches(text, part, options, within);
      const auto search = [&](std::uint32_t more) {
        return string(text)->rangeOfString_options_range(string(part), options | more, within);
      };
      ASSERT_EQ(search(0), all.empty() ? notFoundRange : all.front()) << round << " " << options;
      ASSERT_EQ(search(4), all.empty() ? notFoundRange : all.back()) << round << " " << options;
      const bool atStart = !all.empty() && all.front().location == within.location;
      ASSERT_EQ(search(8), atStart ? all.front() : notFoundRange) << round << " " << options;
      const auto atEnd = std::find_if(all.rbegin(), all.rend(), [&](NSRange each) {
        return NSMaxRange(each) == NSMaxRange(within);
      });
      ASSERT_EQ(search(12), atEnd != all.rend() ? *atEnd : notFoundRange) << round;
    }
  }
}

TEST(NSStringSearch, OverlooksWidthsAndRefusesWhatIsNotThere) {
  EXPECT_EQ("ＱＺ"_ns->rangeOfString_options("qz"_ns, 1 | 256), NSMakeRange(0, 2));
  EXPECT_EQ("ＱＺ"_ns->rangeOfString_options("qz"_ns, 1), notFoundRange);
  EXPECT_EQ(send<NSRange>("abcb"_ns, "rangeOfString:options:"_sel, "b"_ns, 4u), NSMakeRange(3, 1));
  EXPECT_TRUE(refusesRange(
      [] { "abc"_ns->rangeOfString_options_range("b"_ns, 0, NSMakeRange(2, 4000000000u)); },
      {"rangeOfString:options:range:", "{2, 4000000000}", "3"}));
  EXPECT_TRUE(refuses([] { "abc"_ns->rangeOfString(nullptr); }));
}

TEST(NSStringSearch, CharactersOfASet) {
  const auto set = NSCharacterSet::characterSetWithCharactersInString("x\U0001F600"_ns);
  NSString* text = "aXx\U0001F600\U0001F601"_ns;
  EXPECT_EQ(text->rangeOfCharacterFromSet(set), NSMakeRange(2, 1));
  EXPECT_EQ(text->rangeOfCharacterFromSet_options(set, 4), NSMakeRange(3, 2));
  EXPECT_EQ(text->rangeOfCharacterFromSet_options_range(set, 8, {3, 2}), NSMakeRange(3, 2));
  // A range that cuts the pair leaves a half, which is no member.
  EXPECT_EQ(text->rangeOfCharacterFromSet_options_range(set, 0, {3, 1}), notFoundRange);
}

TEST(NSStringSearch, NumericComparisonReadsNumbersOfAnyLength) {
  std::vector<NSString*> ordered = {""_ns, "1"_ns, "02"_ns, "10"_ns, "10a"_ns, "10a9"_ns};
  for (NSString* each :
       {"10a10"_ns, "10b"_ns, "99999999999999999999999999"_ns, "100000000000000000000000000"_ns,
        "A5"_ns, "a"_ns, "a1b"_ns, "a12"_ns, "a12.5"_ns, "a12.40"_ns, "file9"_ns, "file10"_ns})
    ordered.push_back(each);
  for (std::size_t i = 0; i < ordered.size(); ++i)
    for (std::size_t k = 0; k < ordered.size(); ++k)
      EXPECT_EQ(ordered[i]->compare_options(ordered[k], 64), int(i > k) - int(i < k))
          << ordered[i] << " " << ordered[k];
  EXPECT_EQ("x007y"_ns->compare_options("x7y"_ns, 64), NSOrderedSame);
  EXPECT_EQ("FILE10"_ns->compare_options("file9"_ns, 65), NSOrderedDescending);
  EXPECT_EQ("\u0662"_ns->compare_options("9"_ns, 64), NSOrderedDescending) << "ASCII digits only";
}

TEST(NSStringSearch, ComparesAsTheOptionsAsk) {
  EXPECT_EQ("Éa"_ns->compare_options("eb"_ns, 129), NSOrderedAscending);
  EXPECT_EQ("xxabc"_ns->compare_options_range("abd"_ns, 0, {2, 3}), NSOrderedAscending);
  EXPECT_EQ("ｱ"_ns->compare_options("ア"_ns, 256), NSOrderedSame);
  RandomTexts texts;
  constexpr std::u16string_view alphabet =
      u"aAbB_[k\u212aK\u00df\u017fsS\u0130\u00e9\u00c9\U00010400\U00010428";
  for (int round = 0; round < 4000; ++round) {
    const auto a = string(texts.text(6, alphabet));
    const auto b = string(texts.text(6, alphabet));
    ASSERT_EQ(a->compare_options(b, 1), a->caseInsensitiveCompare(b));
    ASSERT_EQ(a->compare_options(b, 0), a->compare(b));
    for (const std::uint32_t options : {1u, 129u}) {
      const std::u16string x = remains(*a, options), y = remains(*b, options);
      ASSERT_EQ(a->compare_options(b, options), x < y ? -1 : x > y ? 1 : 0) << a << " " << b;
    }
  }
  // Whatever the language: letters before case, where the units say otherwise.
  EXPECT_EQ("a"_ns->localizedCompare("B"_ns), NSOrderedAscending);
  EXPECT_EQ("a"_ns->localizedCaseInsensitiveCompare("A"_ns), NSOrderedSame);
}

TEST(NSStringSearch, CommonBeginnings) {
  EXPECT_TRUE("Straßen"_ns->commonPrefixWithString_options("STRASSEX"_ns, 1)->isEqual("Straße"_ns));
  EXPECT_TRUE("aß"_ns->commonPrefixWithString_options("as"_ns, 1)->isEqual("a"_ns));
  EXPECT_EQ("\U0001F600"_ns->commonPrefixWithString_options("\U0001F601"_ns, 0)->length(), 0u);
  EXPECT_TRUE("e\u0301x"_ns->commonPrefixWithString_options("ey"_ns, 128)->isEqual("e\u0301"_ns));
}

TEST(NSStringSearch, ReplacesAndSplitsAsFindAndAppendDo) {
  RandomTexts texts;
  for (int round = 0; round < 2000; ++round) {
    const std::u16string text = texts.text(80, u"abc");
    const std::u16string part = texts.text(2, u"ab");
    const std::u16string other = texts.text(4, u"aXY");
    std::u16string replaced;
    std::vector<std::u16string> pieces{u""};
    std::uint32_t count = 0;
    for (std::size_t i = 0; i < text.size();) {
      if (!part.empty() && text.compare(i, part.size(), part) == 0) {
        ++count;
        replaced += other;
        pieces.emplace_back();
        i += part.size();
      } else {
        replaced += text[i];
        pieces.back() += text[i++];
      }
    }
    const auto original = NSMutableString::stringWithCharacters(text);
    ASSERT_EQ(original->stringByReplacingOccurrencesOfString_withString(string(part), string(other))
                  ->view(),
              replaced);
    const auto split = original->componentsSeparatedByString(string(part));
    ASSERT_EQ(split->count(), pieces.size());
    for (std::uint32_t i = 0; i < split->count(); ++i)
      ASSERT_EQ(as<NSString>(split->objectAtIndex(i))->view(), pieces[i]);
    ASSERT_EQ(original->replaceOccurrencesOfString_withString_options_range(
                  string(part), string(other), 0, {0, original->length()}),
              count);
    ASSERT_EQ(original->view(), replaced);
  }
}

TEST(NSStringSearch, ReplacesWithinRangesFromEitherEnd) {
  auto text = NSMutableString::stringWithUTF8String("aaaXaAa");
  const auto replaced = [&](std::uint32_t options, NSRange range) {
    return text
        ->stringByReplacingOccurrencesOfString_withString_options_range("aa"_ns, "-"_ns, options,
                                                                        range)
        ->UTF8String();
  };
  EXPECT_EQ(replaced(0, {0, 7}), "-aXaAa");
  EXPECT_EQ(replaced(4, {0, 7}), "a-XaAa");
  EXPECT_EQ(replaced(1, {3, 4}), "aaaX-a");
  EXPECT_EQ(replaced(1 | 4 | 8, {0, 7}), "aaaXa-");
  EXPECT_EQ(replaced(8, {1, 3}), "a-XaAa");
  // Its own text may be what is looked for and what takes its place.
  EXPECT_EQ(text->replaceOccurrencesOfString_withString_options_range(text, text, 0, {0, 7}), 1u);
  EXPECT_EQ(text->UTF8String(), "aaaXaAa");
  EXPECT_TRUE(refusesRange([&] { replaced(0, {7, 1}); }, {"{7, 1}"}));
}

TEST(NSStringSearch, PiecesBetweenMembersOfASet) {
  const auto pieces = [](NSString* text, NSString* members) {
    const auto set = NSCharacterSet::characterSetWithCharactersInString(members);
    return text->componentsSeparatedByCharactersInSet(set)
        ->componentsJoinedByString("|"_ns)
        ->UTF8String();
  };
  EXPECT_EQ(pieces(""_ns, ","_ns), "");
  EXPECT_EQ(pieces(",a;;b,"_ns, ",;"_ns), "|a||b|");
  EXPECT_EQ(pieces("1\U0001F6002\U0001F6013\u20ac4"_ns, "\U0001F600\u20ac"_ns), "1|2\U0001F6013|4");
}

TEST(NSStringSearch, TrimsPadsAndNormalizes) {
  const auto blanks = NSCharacterSet::whitespaceAndNewlineCharacterSet();
  const auto faces = NSCharacterSet::characterSetWithCharactersInString("\U0001F600"_ns);
  EXPECT_EQ(" \t\u2028a b\u3000\n"_ns->stringByTrimmingCharactersInSet(blanks)->UTF8String(),
            "a b");
  EXPECT_EQ(
      "\U0001F600\U0001F601\U0001F600"_ns->stringByTrimmingCharactersInSet(faces)->UTF8String(),
      "\U0001F601");
  const auto padded = [](std::uint32_t length, NSString* padding, std::uint32_t index) {
    return "abc"_ns->stringByPaddingToLength_withString_startingAtIndex(length, padding, index)
        ->UTF8String();
  };
  EXPECT_EQ(padded(9, ".-="_ns, 1), "abc-=.-=.");
  EXPECT_TRUE(refusesRange([&] { padded(9, "."_ns, 1); }));
  EXPECT_TRUE(refuses([&] { padded(9, ""_ns, 0); }));
  EXPECT_TRUE("e\u0301"_ns->precomposedStringWithCanonicalMapping()->isEqual("é"_ns));
  EXPECT_TRUE("é\uac01"_ns->decomposedStringWithCanonicalMapping()->isEqual(
      "e\u0301\u1100\u1161\u11a8"_ns));
  EXPECT_TRUE("ﬁ²"_ns->precomposedStringWithCompatibilityMapping()->isEqual("fi2"_ns));
  EXPECT_TRUE("ﬁé"_ns->decomposedStringWithCompatibilityMapping()->isEqual("fie\u0301"_ns));
}

}  // namespace
}  // namespace qz::test
