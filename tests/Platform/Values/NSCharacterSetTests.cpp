#include <unicode/uchar.h>

#include <bitset>

#include "tests/support/Test.h"

namespace qz::test {
namespace {

// Each code point's category, asked of ICU one at a time.
TEST(NSCharacterSet, StandardSetsFollowTheCategories) {
  const auto category = [](std::uint32_t mask) {
    return [mask](UChar32 c) { return (U_MASK(u_charType(c)) & mask) != 0; };
  };
  const auto newline = [](UChar32 c) {
    return (c >= 0xA && c <= 0xD) || c == 0x85 || c == 0x2028 || c == 0x2029;
  };
  const auto blank = [](UChar32 c) { return c == 9 || u_charType(c) == U_SPACE_SEPARATOR; };
  using S = NSCharacterSet;
  const std::pair<Ref<S>, std::function<bool(UChar32)>> all[] = {
      {S::letterCharacterSet(), category(U_GC_L_MASK | U_GC_M_MASK)},
      {S::lowercaseLetterCharacterSet(), category(U_GC_LL_MASK)},
      {S::uppercaseLetterCharacterSet(), category(U_GC_LU_MASK | U_GC_LT_MASK)},
      {S::capitalizedLetterCharacterSet(), category(U_GC_LT_MASK)},
      {S::decimalDigitCharacterSet(), category(U_GC_ND_MASK)},
      {S::alphanumericCharacterSet(), category(U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK)},
      {S::nonBaseCharacterSet(), category(U_GC_M_MASK)},
      {S::punctuationCharacterSet(), category(U_GC_P_MASK)},
      {S::symbolCharacterSet(), category(U_GC_S_MASK)},
      {S::controlCharacterSet(), category(U_GC_CC_MASK | U_GC_CF_MASK)},
      {S::illegalCharacterSet(), category(U_GC_CN_MASK)},
      {S::whitespaceCharacterSet(), blank},
      {S::newlineCharacterSet(), newline},
      {S::whitespaceAndNewlineCharacterSet(), [&](UChar32 c) { return blank(c) || newline(c); }},
  };
  for (const auto& [set, isMember] : all) {
    const auto inverted = set->invertedSet();
    for (UChar32 c = 0; c < 0x110000; ++c) {
      const bool holds = isMember(c);
      const auto point = static_cast<char32_t>(c);
      ASSERT_EQ(set->longCharacterIsMember(point), holds) << set << " " << c;
      ASSERT_EQ(inverted->longCharacterIsMember(point), !holds) << c;
      if (c < 0x10000) {
        ASSERT_EQ(set->characterIsMember(static_cast<char16_t>(c)), holds);
      }
    }
  }
  EXPECT_EQ(S::letterCharacterSet(), S::letterCharacterSet()) << "shared";
}

// Every operation against a plain table of bits, on ranges that touch, overlap and cross planes.
TEST(NSCharacterSet, ChangesAsATableOfBitsDoes) {
  using Table = std::bitset<0x20000>;
  std::mt19937 random(9);
  for (int round = 0; round < 20; ++round) {
    const auto set = NSMutableCharacterSet::characterSet();
    const auto other = NSMutableCharacterSet::characterSet();
    Table bits, otherBits;
    const auto mark = [](Table& table, NSRange range, bool value) {
      for (std::uint64_t p = range.location; p < NSMaxRange(range); ++p) table.set(p, value);
    };
    for (int step = 0; step < 40; ++step) {
      const std::uint32_t bounds[] = {0x120, 0x300, 0x1fff0};
      NSRange range{static_cast<std::uint32_t>(random() % bounds[random() % 3]),
                    static_cast<std::uint32_t>(random() % 40)};
      if (range.location > 0x1fe00) range.location = 0xfff0;
      const std::function<void()> operations[] = {
          [&] { set->removeCharactersInRange(range), mark(bits, range, false); },
          [&] { other->addCharactersInRange(range), mark(otherBits, range, true); },
          [&] { set->formUnionWithCharacterSet(other), bits |= otherBits; },
          [&] { set->formIntersectionWithCharacterSet(other), bits &= otherBits; },
          [&] { set->addCharactersInRange(range), mark(bits, range, true); },
      };
      const auto operation = random() % 7;
      if (operation != 3 || step % 4 == 0) operations[std::min<std::size_t>(operation, 4)]();
    }
    for (char32_t p = 0; p < bits.size(); ++p)
      ASSERT_EQ(set->longCharacterIsMember(p), bits.test(p)) << std::uint32_t{p};
    EXPECT_EQ(set->isSupersetOfSet(other), (bits & otherBits) == otherBits);
    EXPECT_EQ(set->hasMemberInPlane(1), (bits >> 0x10000).any());
    const Ref<NSObject> copy = set->copy();
    EXPECT_TRUE(copy->isEqual(set));
    EXPECT_EQ(copy->hash(), set->hash());
    set->invert();
    EXPECT_FALSE(copy->isEqual(set));
    EXPECT_TRUE(set->longCharacterIsMember(0x10ffff));
    set->invert();
    EXPECT_TRUE(copy->isEqual(set));
  }
}

TEST(NSCharacterSet, IsMadeOfCharactersAndRanges) {
  const auto set = NSCharacterSet::characterSetWithCharactersInString("a\U0001F600a"_ns);
  EXPECT_TRUE(set->longCharacterIsMember(0x1F600));
  EXPECT_FALSE(set->characterIsMember(0xD83D)) << "half of a pair";
  EXPECT_TRUE(set->isEqual(NSCharacterSet::characterSetWithCharactersInString("\U0001F600a"_ns)));
  const auto mutableSet = as<NSMutableCharacterSet>(set->mutableCopy());
  mutableSet->removeCharactersInString("\U0001F600"_ns);
  EXPECT_TRUE(mutableSet->isEqual(NSCharacterSet::characterSetWithRange({u'a', 1})));
  EXPECT_TRUE(refusesRange([] { NSCharacterSet::characterSetWithRange({0x10ffff, 2}); }));
  EXPECT_TRUE(refuses([&] { mutableSet->addCharactersInString(nullptr); }));
}

}  // namespace
}  // namespace qz::test
