#include "Platform/System/NSBundle.h"

#include <sys/stat.h>
#include <unistd.h>

#include "Platform/System/detail/BundlePlaces.h"
#include "Platform/System/detail/Languages.h"
#include "tests/support/Diagnostics.h"
#include "tests/support/Letters.h"

namespace qz::test {
namespace {

class NSBundleTest : public ::testing::Test {
 protected:
  NSBundleTest() { prefer({}); }
  ~NSBundleTest() override { NSBundle::setPreferredLanguages(nullptr); }

  static void prefer(std::initializer_list<NSObject*> languages) {
    NSBundle::setPreferredLanguages(NSArray::arrayWithObjects(languages));
  }

  Ref<NSBundle> bundle() const { return NSBundle::bundleWithPath(ns(directory.path())); }

  std::string message(const std::string& key, NSString* table = nullptr) const {
    return bundle()->localizedStringForKey_value_table(ns(key), ""_ns, table)->UTF8String();
  }

  std::string resource(NSString* name, NSString* type, NSString* within = nullptr) const {
    Ref<NSString> path = bundle()->pathForResource_ofType_inDirectory(name, type, within);
    return path ? path->UTF8String().substr(directory.path().size() + 1) : "nil";
  }

  const Diagnostics diagnostics;
  const TemporaryDirectory directory;
};

TEST_F(NSBundleTest, WhoeverIsToldMayAsk) {
  static NSBundle* asked;
  directory.write("Info.plist", "{ broken");
  const Ref<NSBundle> broken = bundle();
  asked = broken;
  static int told;
  told = 0;
  NSSetDiagnosticFunction([](std::string_view) {
    ++told;
    EXPECT_EQ(asked->bundleIdentifier(), nullptr);
    EXPECT_TRUE(equal(asked->localizedStringForKey_value_table("k"_ns, nullptr, nullptr), "k"_ns));
  });
  EXPECT_EQ(message("k"), "k");
  EXPECT_EQ(told, 1);
}

TEST_F(NSBundleTest, PathsNeedBeNoText) {
  directory.write("\xFF/Info.plist", "{ CFBundleIdentifier = here; }");
  directory.write("\xFF/locale/en/\xFE.txt", "");
  const auto odd = ns(directory.path() + "/\xFF");
  const Ref<NSBundle> found = NSBundle::bundleWithPath(odd);
  ASSERT_TRUE(found);
  EXPECT_TRUE(equal(found->bundlePath(), odd));
  EXPECT_TRUE(equal(found->bundleIdentifier(), "here"_ns));
  const auto name = ns("\xFE");
  const auto path = [&](NSString* localization) {
    return found->pathForResource_ofType_inDirectory_forLocalization(name, "txt"_ns, nullptr,
                                                                     localization);
  };
  EXPECT_TRUE(equal(path("en"_ns), odd->stringByAppendingPathComponent("locale/en"_ns)
                                       ->stringByAppendingPathComponent(name)
                                       ->stringByAppendingString(".txt"_ns)));
  EXPECT_FALSE(path(ns({u"en\0x", 4})));
}

TEST_F(NSBundleTest, InformationComesFromInfoPlist) {
  directory.write("Info.plist", "{ CFBundleIdentifier = \"a.b\"; CFBundleVersion = \"1.2\"; }");
  EXPECT_TRUE(equal(bundle()->bundleIdentifier(), "a.b"_ns));
  EXPECT_EQ(bundle()->objectForInfoDictionaryKey("CFBundleName"_ns), nullptr);
  EXPECT_TRUE(equal(bundle()->developmentLocalization(), "en"_ns));
  EXPECT_EQ(bundle(), NSBundle::bundleWithPath(ns(directory.path() + "/./")));
  EXPECT_EQ(NSBundle::bundleWithIdentifier("a.b"_ns), bundle());
  EXPECT_TRUE(NSBundle::allBundles()->containsObject(bundle()));
  EXPECT_EQ(diagnostics.said(), "");

  EXPECT_EQ(NSBundle::bundleWithPath("/no/such/directory"_ns), nullptr);
  EXPECT_EQ(NSBundle::bundleWithIdentifier("../.."_ns), nullptr);
}

TEST_F(NSBundleTest, UnreadableInformationIsReportedOnceAndCountsAsNone) {
  directory.write("Info.plist", "{ CFBundleIdentifier = ");
  EXPECT_EQ(bundle()->bundleIdentifier(), nullptr);
  EXPECT_EQ(bundle()->infoDictionary()->count(), 0u);
  EXPECT_THAT(diagnostics.said(), HasSubstr("line 1, column 24"));
  EXPECT_EQ(std::ranges::count(diagnostics.said(), '\n'), 1);
}

TEST_F(NSBundleTest, ResourcesInThePreferredLanguage) {
  for (const char* file : {"a.txt", "only.txt", "sub/b", "locale/en/a.txt", "locale/de/a.txt",
                           "locale/de/sub/b", "locale/fr/only-fr"})
    directory.write(file, "");
  prefer({"de_AT"_ns});
  EXPECT_EQ(resource("a"_ns, "txt"_ns), "locale/de/a.txt");
  EXPECT_EQ(resource("b"_ns, ""_ns, "sub"_ns), "locale/de/sub/b");
  EXPECT_EQ(resource("only"_ns, "txt"_ns), "only.txt");
  EXPECT_EQ(resource("only-fr"_ns, nullptr), "nil");
  EXPECT_EQ(resource(ns(std::u16string_view(u"a.txt\0", 6)), nullptr), "nil");
  EXPECT_EQ(to_string(bundle()->pathForResource_ofType_inDirectory_forLocalization(
                "a"_ns, "txt"_ns, nullptr, nullptr)),
            directory.path() + "/a.txt");
  EXPECT_EQ(text(bundle()->localizations(), " "_ns), "de en fr");
  prefer({"ja"_ns, "fr-CA"_ns, "de"_ns});
  EXPECT_EQ(text(bundle()->preferredLocalizations(), " "_ns), "fr de en");
}

TEST_F(NSBundleTest, TextsInThePreferredLanguage) {
  directory.write("Info.plist", "CFBundleDevelopmentRegion = en;");
  directory.write("locale/en/Localizable.strings", "yes = Yes; no = No; both = Both;");
  directory.write("locale/de/Localizable.strings", "yes = Ja; empty = \"\";");
  directory.write("locale/de-AT/Localizable.strings", "no = Na;");
  directory.write("Localizable.strings", "yes = x; all = All;");
  directory.write("locale/de/Other.strings", "yes = Doch;");
  EXPECT_EQ(message("yes"), "Yes");
  // Each key comes from the best table that has it.
  prefer({"de_AT"_ns});
  for (const auto& [key, text] :
       {std::pair{"yes", "Ja"}, {"no", "Na"}, {"both", "Both"}, {"all", "All"}, {"empty", ""}})
    EXPECT_EQ(message(key), text);
  EXPECT_EQ(message("yes", "Other"_ns), "Doch");
  EXPECT_EQ(message("no", "Other"_ns), "no");
  EXPECT_EQ(message("yes", "No such table"_ns), "yes");
  EXPECT_EQ(diagnostics.said(), "");

  auto look = [this](NSString* key, NSString* value) {
    return bundle()->localizedStringForKey_value_table(key, value, nullptr)->UTF8String();
  };
  EXPECT_EQ(look("missing"_ns, nullptr), "missing");
  EXPECT_EQ(look("missing"_ns, "value"_ns), "value");
  EXPECT_EQ(look(nullptr, "value"_ns), "value");
}

TEST_F(NSBundleTest, MalformedTablesFallBackAndSaySoOnce) {
  directory.write("locale/en/Localizable.strings", "a = A;");
  directory.write("locale/de/Localizable.strings", "a = B\nb = C;");
  fs::create_directories(directory.path() + "/Dir.strings");
  ASSERT_EQ(::mkfifo((directory.path() + "/Pipe.strings").c_str(), 0600), 0);
  prefer({"de"_ns});
  EXPECT_EQ(message("a"), "A");
  EXPECT_EQ(message("b"), "b");
  prefer({"de"_ns, "fr"_ns});
  EXPECT_EQ(message("a"), "A");
  EXPECT_THAT(diagnostics.said(), HasSubstr("locale/de/Localizable.strings"));
  EXPECT_THAT(diagnostics.said(), HasSubstr("line 2, column 1"));
  EXPECT_EQ(std::ranges::count(diagnostics.said(), '\n'), 1);
  EXPECT_EQ(message("a", "Dir"_ns), "a");
  EXPECT_EQ(message("a", "Pipe"_ns), "a");
  EXPECT_EQ(std::ranges::count(diagnostics.said(), '\n'), 3);
}

TEST_F(NSBundleTest, ManyThreadsReadWhileLanguagesChange) {
  directory.write("locale/en/Localizable.strings", "k = en;");
  directory.write("locale/de/Localizable.strings", "k = de;");
  Ref<NSBundle> shared = bundle();
  std::atomic<int> wrong{0};
  std::atomic<bool> done{false};
  std::vector<std::thread> readers;
  for (int i = 0; i < 3; ++i)
    readers.emplace_back([&] {
      while (!done) {
        Ref<NSString> found = shared->localizedStringForKey_value_table("k"_ns, ""_ns, nullptr);
        if (!equal(found, "en"_ns) && !equal(found, "de"_ns)) ++wrong;
      }
    });
  for (int i = 0; i < 200; ++i) {
    prefer({i % 2 == 0 ? "de"_ns : "en"_ns});
    EXPECT_EQ(message("k"), i % 2 == 0 ? "de" : "en");
  }
  done = true;
  for (std::thread& each : readers) each.join();
  EXPECT_EQ(wrong, 0);
}

/// Starts the program anew, because the main bundle is looked for once; whether `test` holds there.
void expectAnew(const std::function<bool()>& test) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::_Exit(test() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

TEST_F(NSBundleTest, MainBundleIsFoundThroughTheEnvironment) {
  expectAnew([&] {
    const std::string name = detail::bundleNameOfModule(detail::executablePath());
    directory.write(name + ".resources/Info.plist", "CFBundleIdentifier = \"main.id\";");
    directory.write("Other/Info.plist", "CFBundleIdentifier = \"x.Other\";");
    directory.write("Wrong/Info.plist", "CFBundleIdentifier = \"x.Else\";");
    ::setenv("QZ_BUNDLE_PATH", ("/no/such:" + directory.path()).c_str(), 1);
    return equal(NSBundle::mainBundle()->bundleIdentifier(), "main.id"_ns) &&
           NSBundle::allBundles()->objectAtIndex(0) == NSBundle::mainBundle() &&
           NSBundle::bundleForClass(nullptr) == NSBundle::mainBundle() &&
           NSBundle::bundleWithIdentifier("x.Other"_ns) != nullptr &&
           NSBundle::bundleWithIdentifier("x.Wrong"_ns) == nullptr;
  });
}

TEST_F(NSBundleTest, MainBundleWithoutResourcesHasNoIdentifier) {
  expectAnew([] {
    ::unsetenv("QZ_BUNDLE_PATH");
    Ref<NSBundle> main = NSBundle::mainBundle();
    return main->bundleIdentifier() == nullptr && main->resourcePath() == nullptr &&
           main->infoDictionary()->count() == 0 && main->bundlePath()->length() > 1 &&
           equal(main->localizedStringForKey_value_table("k"_ns, ""_ns, nullptr), "k"_ns);
  });
}

TEST(BundlePlaces, FollowTheModulesPlace) {
  const std::array<const char*, 3> cases[] = {
      {"/usr/bin/program", "program", "/usr"},
      {"/usr/lib/x86_64-linux-gnu/libName.so.1.2", "Name", "/usr"},
      {"/bin/plugin.so", "plugin", "/"},
      {"/home/bin/me/a.sorted", "a.sorted", "/home"},
      {"/home/me/program", "program", ""},
  };
  for (const auto& [module, name, prefix] : cases) {
    EXPECT_EQ(detail::bundleNameOfModule(module), name);
    EXPECT_EQ(detail::prefixOfModule(module), prefix);
  }
  EXPECT_TRUE(detail::bundleCandidates("/usr/bin/p", "..").empty());
  EXPECT_TRUE(detail::bundleCandidates("/usr/bin/p", "a/b").empty());
}

std::string inOneLine(const std::vector<std::string>& all) {
  std::string joined;
  for (const std::string& each : all) joined += (joined.empty() ? "" : " ") + each;
  return joined;
}

TEST(Languages, OfTheEnvironment) {
  using Variables = std::map<std::string, const char*>;
  const auto languages = [](const Variables& variables) {
    return inOneLine(detail::languagesOfEnvironment([&](const char* name) {
      const auto found = variables.find(name);
      return found == variables.end() ? nullptr : found->second;
    }));
  };
  EXPECT_EQ(languages({{"LANG", "de_AT.UTF-8@euro"}}), "de-AT");
  EXPECT_EQ(languages({{"LANG", "de_DE"}, {"LC_MESSAGES", "fr_FR"}, {"LC_ALL", ""}}), "fr-FR");
  EXPECT_EQ(languages({{"LC_ALL", "C"}, {"LANG", "de_DE"}, {"LANGUAGE", "fr"}}), "");
  EXPECT_EQ(languages({{"LANG", "C.UTF-8"}, {"LANGUAGE", "fr"}}), "fr");
  EXPECT_EQ(languages({{"LANG", "de_DE"}, {"LANGUAGE", "::zh_TW:../x:de_DE:en:"}}),
            "zh-TW de-DE en");
  EXPECT_EQ(languages({{"LANG", "sr_RS.UTF-8@latin"}}), "sr-Latn-RS");
}

TEST(Languages, FitsAreOfTheSameLanguageAndScript) {
  const auto best = [](const char* language, const std::vector<std::string>& available) {
    return inOneLine(detail::fittingLocalizations(language, available));
  };
  EXPECT_EQ(best("de-AT", {"de", "de_AT"}), "de_AT de");
  EXPECT_EQ(best("de-CH", {"de-AT", "de"}), "de");
  EXPECT_EQ(best("de", {"de-AT", "en"}), "");
  EXPECT_EQ(best("zh-CN", {"zh-Hant", "zh-Hans"}), "zh-Hans");
  EXPECT_EQ(best("zh-TW", {"zh-Hans", "zh"}), "");
  EXPECT_EQ(best("zh-HK", {"zh", "zh-hant"}), "zh-hant");
  EXPECT_EQ(best("sr-Latn-RS", {"sr"}), "");
  EXPECT_EQ(best("../../etc", {"en"}), "");
}

}  // namespace
}  // namespace qz::test
