#include "tests/support/Test.h"

namespace qz::test {
namespace {

TEST(NSMutableString, ChangesAsAStandardStringDoes) {
  std::mt19937 random(5);
  for (int round = 0; round < 200; ++round) {
    auto text = NSMutableString::stringWithCapacity(static_cast<std::uint32_t>(random() % 30));
    std::u16string model;
    for (int step = 0; step < 60; ++step) {
      std::u16string other(random() % 6, static_cast<char16_t>(u'a' + step % 26));
      auto string = NSString::stringWithCharacters(other);
      // One time in five the text is put into itself.
      const bool isSelf = random() % 5 == 0 && model.size() < 2000;
      if (isSelf) {
        other = model;
        string = text;
      }
      const std::size_t from = random() % (model.size() + 1);
      const std::size_t count = random() % (model.size() - from + 1);
      const NSRange range{static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(count)};
      const std::function<void()> operations[] = {
          [&] { text->appendString(string), model += other; },
          [&] { text->insertString_atIndex(string, range.location), model.insert(from, other); },
          [&] { text->deleteCharactersInRange(range), model.erase(from, count); },
          [&] {
            text->replaceCharactersInRange_withString(range, string);
            model.replace(from, count, other);
          },
          [&] { text->appendFormat("<%@>"_ns, string), model += u"<" + other + u">"; },
          [&] {  // a part of the text's own units
            text->appendCharacters(text->view().substr(from, count));
            model += std::u16string(model, from, count);
          },
      };
      operations[random() % 6]();
      ASSERT_EQ(text->view(), model);
    }
    text->setString("done"_ns);
    ASSERT_EQ(text->view(), u"done");
  }
}

TEST(NSMutableString, CopiesKeepWhatWasThere) {
  auto text = NSMutableString::stringWithUTF8String("one");
  const auto kept = as<NSString>(text->copy());
  const auto described = text->description();
  const auto second = as<NSMutableString>(text->mutableCopy());
  const std::size_t hashBefore = text->hash();
  text->appendString("!"_ns);
  second->appendString("?"_ns);
  EXPECT_EQ(
      kept->UTF8String() + described->UTF8String() + text->UTF8String() + second->UTF8String(),
      "oneoneone!one?");
  EXPECT_NE(text->hash(), hashBefore);
  EXPECT_FALSE(isKind<NSMutableString>(kept.get()));
  text->deleteCharactersInRange({3, 1});
  EXPECT_TRUE(text->isEqual(kept) && kept->hash() == text->hash());
}

TEST(NSMutableString, RefusesAndStaysAsItWas) {
  auto text = NSMutableString::stringWithUTF8String("abc");
  EXPECT_TRUE(refusesRange([&] { text->insertString_atIndex("x"_ns, 4); }));
  EXPECT_TRUE(refusesRange([&] { text->deleteCharactersInRange({3, 1}); }));
  EXPECT_TRUE(refusesRange(
      [&] { text->replaceCharactersInRange_withString(NSMakeRange(1, UINT32_MAX), "x"_ns); }));
  EXPECT_TRUE(refuses([&] { text->appendString(nullptr); }));
  EXPECT_TRUE(refuses([&] { text->setString(nullptr); }));
  EXPECT_TRUE(refuses([&] { text->appendFormat("x%*d"_ns, 1'000'001, 1); }));
  EXPECT_EQ(text->UTF8String(), "abc");
}

}  // namespace
}  // namespace qz::test
