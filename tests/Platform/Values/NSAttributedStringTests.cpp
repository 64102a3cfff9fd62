#include "Platform/Values/NSAttributedString.h"

#include "Platform/Values/NSMutableAttributedString.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

using Attributes = std::map<std::u16string, int>;

Ref<NSDictionary> dictionaryOf(const Attributes& attributes) {
  auto all = NSMutableDictionary::dictionary();
  for (const auto& [name, value] : attributes) all->setObject_forKey(number(value), ns(name));
  return all;
}

// One entry for each unit, which is what the runs stand for.
struct Model {
  std::u16string text;
  std::vector<Attributes> attributes;
};

void expectSame(NSAttributedString* string, const Model& model) {
  ASSERT_EQ(string->string()->view(), model.text);
  for (std::uint32_t at = 0; at < model.text.size();) {
    NSRange range;
    const auto here = string->attributesAtIndex_effectiveRange(at, &range);
    ASSERT_TRUE(equal(here, dictionaryOf(model.attributes[at])));
    std::size_t end = at;
    while (end < model.text.size() && model.attributes[end] == model.attributes[at]) ++end;
    ASSERT_EQ(range, NSMakeRange(at, static_cast<std::uint32_t>(end - at)));
    at = static_cast<std::uint32_t>(end);
  }
}

TEST(NSMutableAttributedString, ChangesAsUnitsWithAttributesDo) {
  std::mt19937 random(21);
  for (int round = 0; round < 150; ++round) {
    auto string = make<NSMutableAttributedString>();
    Model model;
    for (int step = 0; step < 40; ++step) {
      const std::size_t from = random() % (model.text.size() + 1);
      const std::size_t count = random() % (model.text.size() - from + 1);
      const NSRange range{static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(count)};
      const auto first = model.attributes.begin() + static_cast<std::ptrdiff_t>(from);
      const auto last = first + static_cast<std::ptrdiff_t>(count);
      const int value = static_cast<int>(random() % 2);
      const std::u16string name(1, random() % 2 != 0 ? u'a' : u'b');
      const auto nameString = ns(name);
      const std::u16string added(random() % 4, static_cast<char16_t>(u'A' + step % 26));
      const auto replaceInModel = [&](Attributes taken) {
        const auto place = model.attributes.erase(first, last);
        model.attributes.insert(place, added.size(), taken);
        model.text.replace(from, count, added);
      };
      switch (random() % 6) {
        case 0:
          string->setAttributes_range(dictionaryOf({{name, value}}), range);
          std::fill(first, last, Attributes{{name, value}});
          break;
        case 1:
          string->addAttribute_value_range(nameString, number(value), range);
          for (auto each = first; each != last; ++each) (*each)[name] = value;
          break;
        case 2:
          string->removeAttribute_range(nameString, range);
          for (auto each = first; each != last; ++each) each->erase(name);
          break;
        case 3:
          string->replaceCharactersInRange_withString(range, ns(added));
          replaceInModel(count == 0 && from > 0     ? *(first - 1)
                         : from < model.text.size() ? *first
                                                    : Attributes());
          break;
        case 4:
          string->replaceCharactersInRange_withAttributedString(
              range, NSAttributedString::initWithString_attributes(ns(added),
                                                                   dictionaryOf({{name, value}})));
          replaceInModel({{name, value}});
          break;
        default:
          string->deleteCharactersInRange(range);
          model.attributes.erase(first, last);
          model.text.erase(from, count);
      }
      ASSERT_NO_FATAL_FAILURE(expectSame(string, model));
    }
    const auto half = static_cast<std::uint32_t>(model.text.size() / 2);
    const auto front = string->attributedSubstringFromRange({0, half});
    auto whole = NSMutableAttributedString::initWithAttributedString(front);
    whole->appendAttributedString(
        string->attributedSubstringFromRange({half, string->length() - half}));
    EXPECT_TRUE(whole->isEqual(string) && whole->hash() == string->hash());
    whole->appendAttributedString(whole);  // itself
    EXPECT_EQ(whole->length(), 2 * string->length());
  }
}

TEST(NSAttributedString, OneAttributeReachesOverRuns) {
  const auto string = NSMutableAttributedString::initWithString("abcdef"_ns);
  string->addAttribute_value_range("x"_ns, "1"_ns, {1, 4});
  string->addAttribute_value_range("y"_ns, "2"_ns, {2, 1});
  NSRange range;
  const auto value = string->attribute_atIndex_effectiveRange("x"_ns, 3, &range);
  EXPECT_TRUE(equal(value, "1"_ns));
  EXPECT_EQ(range, NSMakeRange(1, 4));
  EXPECT_EQ(string->attribute_atIndex_effectiveRange("y"_ns, 4, &range), nullptr);
  EXPECT_EQ(range, NSMakeRange(3, 3));
}

TEST(NSAttributedString, KeepsWhatWasThere) {
  auto text = NSMutableString::stringWithUTF8String("abc");
  auto attributes = as<NSMutableDictionary>(dictionaryOf({{u"a", 1}})->mutableCopy());
  const auto string = NSAttributedString::initWithString_attributes(text, attributes);
  const auto changing = NSMutableAttributedString::initWithAttributedString(string);
  const auto copy = as<NSAttributedString>(changing->copy());
  text->setString("x"_ns);
  attributes->removeAllObjects();
  changing->setAttributes_range(nullptr, {0, 3});
  EXPECT_TRUE(string->isEqual(copy));
  EXPECT_FALSE(string->isEqual(changing));
  EXPECT_EQ(string->attributesAtIndex_effectiveRange(0, nullptr)->count(), 1u);
  EXPECT_FALSE(isKind<NSMutableAttributedString>(copy.get()));
}

TEST(NSAttributedString, RefusesAndStaysAsItWas) {
  const auto string = NSMutableAttributedString::initWithString("abc"_ns);
  string->setAttributes_range(dictionaryOf({{u"a", 1}}), {1, 1});
  const auto before = string->copy();
  EXPECT_TRUE(refusesRange([&] { string->attributesAtIndex_effectiveRange(3, nullptr); }));
  EXPECT_TRUE(refusesRange([&] { string->setAttributes_range(nullptr, {2, 2}); }));
  EXPECT_TRUE(refusesRange([&] { string->removeAttribute_range("a"_ns, {4, 0}); }));
  EXPECT_TRUE(refusesRange([&] { string->deleteCharactersInRange({1, UINT32_MAX}); }));
  EXPECT_TRUE(refusesRange([&] { string->insertAttributedString_atIndex(string, 4); }));
  EXPECT_TRUE(refusesRange([&] { string->attributedSubstringFromRange({3, 1}); }));
  EXPECT_TRUE(refuses([&] { string->appendAttributedString(nullptr); }));
  EXPECT_TRUE(refuses([&] { string->addAttribute_value_range("a"_ns, nullptr, {0, 1}); }));
  EXPECT_TRUE(refuses([] { NSAttributedString::initWithString(nullptr); }));
  EXPECT_TRUE(string->isEqual(before));
}

}  // namespace
}  // namespace qz::test
