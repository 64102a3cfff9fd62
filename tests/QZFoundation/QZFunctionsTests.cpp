#include "QZFoundation/QZFunctions.h"

#include <regex>

#include "Platform/System/detail/BundlePlaces.h"
#include "Platform/System/detail/OldStylePropertyList.h"
#include "QZFoundation/QZIndexMap.h"
#include "QZFoundation/detail/LibraryBundle.h"
#include "tests/support/Files.h"
#include "tests/support/Person.h"
#include "tests/support/SourceTree.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

const std::vector<std::string> languages{"de", "en", "es", "fr", "ja", "zh-Hans"};

std::string tableText(const std::string& language) {
  return contentsOf(
      sourcePath("resources/QZFoundation/locale/" + language + "/Localizable.strings"));
}

Ref<NSDictionary> table(const std::string& language) {
  detail::PropertyListFault fault;
  auto entries = detail::readOldStyleDictionary(tableText(language), true, &fault);
  EXPECT_TRUE(entries) << language << ": " << fault.text();
  return entries;
}

// "1@", "2d": which argument each placeholder prints, and how, in the order of the arguments.
std::vector<std::string> placeholders(const std::string& format) {
  static const std::regex one("%(?:([0-9]+)\\$)?([@a-zA-Z%])");
  std::vector<std::string> found;
  int next = 1;
  for (std::sregex_iterator it(format.begin(), format.end(), one), end; it != end; ++it) {
    if ((*it)[2] == "%") continue;
    found.push_back(((*it)[1].matched ? (*it)[1].str() : std::to_string(next++)) + (*it)[2].str());
  }
  std::sort(found.begin(), found.end());
  return found;
}

class LibraryMessages : public ::testing::Test {
 protected:
  ~LibraryMessages() override { NSBundle::setPreferredLanguages(nullptr); }

  static std::string message(const std::string& language, NSString* key) {
    NSBundle::setPreferredLanguages(NSArray::arrayWithObject(ns(language)));
    return to_string(
        detail::libraryBundle()->localizedStringForKey_value_table(key, ""_ns, nullptr));
  }
};

TEST_F(LibraryMessages, EveryTableHasEveryKeyWithTheSamePlaceholders) {
  auto english = table("en");
  ASSERT_GT(english->count(), 0u);
  for (const std::string& language : languages) {
    auto entries = table(language);
    EXPECT_EQ(entries->count(), english->count()) << language;
    // Before each entry is a comment for the translator.
    const std::string text = tableText(language);
    std::size_t commented = 0;
    for (std::size_t at = 0; (at = text.find("*/\n\"", at)) != text.npos; ++at) ++commented;
    EXPECT_EQ(commented, english->count()) << language;
    for (const auto& [key, value] : english) {
      const std::string original = as<NSString>(key)->UTF8String();
      auto translated = as<NSString>(entries->objectForKey(key));
      ASSERT_TRUE(translated) << language << ": " << original;
      EXPECT_EQ(placeholders(translated->UTF8String()), placeholders(original)) << language;
      EXPECT_EQ(equal(translated, key), language == "en") << language << ": " << original;
    }
  }
}

TEST_F(LibraryMessages, EveryMessageInTheSourcesHasItsEntry) {
  static const std::regex call(
      R"re(QZLocalizedString(?:FromTableInBundle)?\(\s*"((?:[^"\\]|\\.)*)"_ns)re");
  auto english = table("en");
  int messages = 0;
  for (const auto& entry : fs::recursive_directory_iterator(sourcePath("QZFoundation"))) {
    if (entry.path().extension() != ".cpp") continue;
    const std::string source = contentsOf(entry.path());
    for (std::sregex_iterator it(source.begin(), source.end(), call), end; it != end; ++it) {
      const std::string key = std::regex_replace((*it)[1].str(), std::regex("\\\\(.)"), "$1");
      EXPECT_TRUE(english->objectForKey(ns(key))) << key;
      ++messages;
    }
  }
  EXPECT_GE(messages, 1);
}

TEST_F(LibraryMessages, AreFoundByTheUsersLanguage) {
  NSBundle* bundle = detail::libraryBundle();
  ASSERT_NE(bundle, nullptr);
  EXPECT_EQ(NSBundle::bundleWithIdentifier(detail::libraryBundleIdentifier), bundle);
  EXPECT_TRUE(bundle->objectForInfoDictionaryKey("CFBundleVersion"_ns));
  // A class belongs where it was described: in the library, unless the program has that inside it.
  EXPECT_EQ(NSBundle::bundleForClass(classOf<Person>()), NSBundle::mainBundle());
  EXPECT_EQ(NSBundle::bundleForClass(classOf<QZIndexMap>()) == bundle,
            detail::libraryAt(classOf<QZIndexMap>()->name().data()).has_value());

  NSString* const key = "Source file does not exist"_ns;
  EXPECT_EQ(message("de_AT", key), "Die Ausgangsdatei existiert nicht");
  EXPECT_EQ(message("zh_CN", key), "源文件不存在");
  EXPECT_EQ(message("zh_TW", key), key->UTF8String()) << "simplified for readers of traditional";
  EXPECT_EQ(message("tlh", key), key->UTF8String());
}

TEST_F(LibraryMessages, TheTextFoundIsTheFormat) {
  NSBundle::setPreferredLanguages(arrayOf({"de"_ns}));
  const auto library = detail::libraryBundle();
  EXPECT_EQ(to_string(QZLocalizedStringFromTableInBundle("Value %d too large for %@ component"_ns,
                                                         nullptr, library, "c"_ns, 60, "x"_ns)),
            "Der Wert 60 ist zu groß für den Bestandteil „x“");
  // A table that is not there: the key is the format, and the comment does nothing.
  EXPECT_EQ(to_string(QZLocalizedStringFromTableInBundle("Could not link %@ to %@ (%@)"_ns, "C"_ns,
                                                         library, "/%@"_ns, "/b"_ns, "why"_ns)),
            "Could not link /b to why ((null))");
  EXPECT_EQ(to_string(QZLocalizedString("Created %@"_ns, "%@%d"_ns, "/x"_ns)), "Created /x");
  EXPECT_EQ(to_string(QZLocalizedString("%n 5%"_ns, nullptr)), "%n 5%");
  EXPECT_EQ(QZLocalizedString(nullptr, nullptr)->length(), 0u);
}

// What a translator got wrong must not crash the program.
TEST_F(LibraryMessages, ATranslationWithOtherPlaceholdersPrintsSomethingOdd) {
  const TemporaryDirectory directory;
  directory.write("Localizable.strings", "\"k %@\" = \"%d %s %5$@ %*d %n %@\";");
  auto bundle = NSBundle::bundleWithPath(ns(directory.path()));
  auto text = QZLocalizedStringFromTableInBundle("k %@"_ns, nullptr, bundle, nullptr, "x"_ns);
  EXPECT_EQ(text->UTF8String().substr(0, 1), "x");
}

}  // namespace
}  // namespace qz::test
