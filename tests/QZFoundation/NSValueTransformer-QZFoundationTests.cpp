#include "QZFoundation/NSValueTransformer-QZFoundation.h"

#include "Platform/System/detail/BundlePlaces.h"
#include "QZFoundation/QZFileValueTransformer.h"
#include "QZFoundation/QZMathValueTransformer.h"
#include "QZFoundation/QZWordSeparator.h"
#include "tests/support/Test.h"
#include "tests/support/Threads.h"

namespace qz::test {
namespace {

Ref<NSValueTransformer> named(const char* name) {
  return valueTransformerWithDynamicName(ns(name));
}

std::string there(const char* name, NSObject* value) {
  return to_string(named(name)->transformedValue(value));
}
std::string back(const char* name, NSObject* value) {
  return to_string(named(name)->reverseTransformedValue(value));
}
std::string math(const char* name, double value) {
  return there(name, NSNumber::of(value)) + " " + back(name, NSNumber::of(value));
}

TEST(ValueTransformers, AreFoundByName) {
  auto twice = NSValueTransformer::transformerWithFunctions(
      [](NSObject* value) { return NSNumber::of(2 * as<NSNumber>(value)->intValue()); });
  NSValueTransformer::setValueTransformer_forName(twice, "Twice"_ns);
  EXPECT_EQ(NSValueTransformer::valueTransformerForName("Twice"_ns), twice);
  EXPECT_EQ(valueTransformerWithDynamicName("Twice"_ns), twice);
  EXPECT_TRUE(NSValueTransformer::valueTransformerNames()->containsObject("Twice"_ns));
  EXPECT_TRUE(refuses([&] { twice->reverseTransformedValue(number(4)); }));
  NSValueTransformer::setValueTransformer_forName(nullptr, "Twice"_ns);
  EXPECT_EQ(NSValueTransformer::valueTransformerForName("Twice"_ns), nullptr);
  EXPECT_EQ(NSValueTransformer::valueTransformerForName(nullptr), nullptr);
  EXPECT_TRUE(refuses([&] { NSValueTransformer::setValueTransformer_forName(twice, nullptr); }));
  auto negated = NSValueTransformer::valueTransformerForName(NSNegateBooleanTransformerName);
  EXPECT_EQ(to_string(negated->reverseTransformedValue(nullptr)), "1");
}

TEST(ValueTransformers, AreRegisteredFromSeveralThreads) {
  inThreads(4, [](int t) {
    for (int i = 0; i < 500; ++i) {
      auto own = NSString::stringWithFormat("T%d-%d"_ns, t, i);
      NSValueTransformer::setValueTransformer_forName(make<NSValueTransformer>(), own);
      NSValueTransformer::setValueTransformer_forName(make<NSValueTransformer>(), "shared"_ns);
      auto shared = NSValueTransformer::valueTransformerForName("shared"_ns);
      EXPECT_TRUE(shared->transformedValue(own) == own);
      EXPECT_TRUE(NSValueTransformer::valueTransformerForName(own));
    }
  });
}

TEST(ValueTransformers, DynamicNamesMakeEachOnce) {
  auto made = named("QZMath-multiply-100");
  EXPECT_EQ(named("QZMath-multiply-100"), made);
  EXPECT_EQ(NSValueTransformer::valueTransformerForName("QZMath-multiply-100"_ns), made);
  for (const char* none : {"", "-", "NoSuch-1", "QZMath", "QZMath-add", "QZMath-add-1-2",
                           "QZMath-add--1", "QZFile-POSIX", "QZFile-posix-URL", "NSFunction"})
    EXPECT_EQ(named(none), nullptr) << none;
  EXPECT_EQ(valueTransformerWithDynamicName(nullptr), nullptr);
  // The platform's own class makes plain ones, whatever it is told.
  EXPECT_TRUE(named("NS-anything")->isMemberOfClass(classOf<NSValueTransformer>()));
  EXPECT_EQ(reasonRaised(NSInvalidArgumentException, [] { named("QZMath-power-2"); }),
            "QZMathValueTransformer invalid operator \"power\"");
  EXPECT_EQ(NSValueTransformer::valueTransformerForName("QZMath-power-2"_ns), nullptr);
}

TEST(ValueTransformers, MathGoesThereAndBack) {
  EXPECT_EQ(math("QZMath-multiply-100", 0.5), "50 0.005");
  EXPECT_EQ(math("QZMath-divide-0", 1), "inf 0");
  EXPECT_EQ(math("QZMath-add-x", 3), "3 3");
  EXPECT_EQ(math("QZMath-subtract-2.5", 3), "0.5 5.5");
  // For 2, 3, 4 and NaN against 3: what comes of it, and what comes back.
  for (const auto& [name, expected] : {std::pair{"QZMath-equals-3", "0 0,1 1,0 0,0 0,"},
                                       {"QZMath-notequal-3", "1 1,0 0,1 1,1 1,"},
                                       {"QZMath-greater-3", "0 1,0 1,1 0,0 0,"},
                                       {"QZMath-greaterorequal-3", "0 1,1 0,1 0,0 0,"},
                                       {"QZMath-less-3", "1 0,0 1,0 1,0 0,"},
                                       {"QZMath-lessorequal-3", "1 0,1 0,0 1,0 0,"}}) {
    std::string all;
    for (const double value : {2.0, 3.0, 4.0, std::nan("")}) all += math(name, value) + ",";
    EXPECT_EQ(all, expected) << name;
  }
  EXPECT_EQ(there("QZMath-multiply-100", nullptr) + back("QZMath-add-1", nullptr), "(null)(null)");
  EXPECT_EQ(there("QZMath-multiply-100", "1.5"_ns), "150");
  for (std::int32_t code : {-1, 10})
    EXPECT_TRUE(refuses([&] { QZMathValueTransformer::initWithMathOperation_operand(code, 1); }));
}

TEST(ValueTransformers, FilesChangeTheirStyle) {
  EXPECT_EQ(there("QZFile-POSIX-URL", "/tmp/a b"_ns), "file:///tmp/a%20b");
  EXPECT_EQ(back("QZFile-POSIX-URL", "file:///tmp/a%20b"_ns), "/tmp/a b");
  const std::string classic = there("QZFile-POSIX-HFS", "/usr/lib"_ns);
  EXPECT_TRUE(classic.ends_with(":usr:lib")) << classic;
  EXPECT_EQ(back("QZFile-POSIX-HFS", ns(classic)), "/usr/lib");
  EXPECT_EQ(there("QZFile-URL-POSIX", "not a url"_ns), "(null)");
  EXPECT_EQ(there("QZFile-POSIX-URL", ""_ns), "(null)");
  EXPECT_EQ(there("QZFile-POSIX-URL", number(1)), "(null)");

  const TemporaryDirectory directory;
  auto path = ns(directory.write("file", ""));
  auto exists = as<NSNumber>(named("QZFile-POSIX-exists")->transformedValue(path));
  EXPECT_EQ(exists->kind(), NumberKind::Bool);
  EXPECT_TRUE(exists->boolValue());
  EXPECT_EQ(there("QZFile-POSIX-exists", path->stringByAppendingString("2"_ns)), "0");
  const std::string reason =
      "\"exists\" cannot be used as the input style for a file value transformer";
  EXPECT_EQ(reasonRaised(NSInvalidArgumentException, [] { back("QZFile-POSIX-exists", "x"_ns); }),
            reason);
  EXPECT_EQ(reasonRaised(NSInvalidArgumentException, [] { there("QZFile-exists-URL", "x"_ns); }),
            reason);
  auto other = QZFileValueTransformer::initWithInputStyle_outputStyle(0, 4);
  EXPECT_EQ(other->transformedValue("/tmp"_ns), nullptr);
}

TEST(ValueTransformers, TextsAreChosenByNumber) {
  const auto shown = [](NSObject* value) { return there("QZAlternateText-Off-On", value); };
  for (const int on : {1, 7}) EXPECT_EQ(shown(number(on)), "On") << on;
  for (const int off : {0, -1}) EXPECT_EQ(shown(number(off)), "Off") << off;
  EXPECT_EQ(shown("1"_ns), "On");
  EXPECT_EQ(shown(NSNumber::of(NSNotFound)) + shown(NSNull::null()) + shown(nullptr), "");
  EXPECT_EQ(there("QZAlternateText", number(0)), "");
  EXPECT_TRUE(refuses([&] { back("QZAlternateText-Off-On", "On"_ns); }));
}

TEST(ValueTransformers, WordsAreSeparatedAtTitlecaseLetters) {
  send<void>(classOf<QZWordSeparator>(), "initialize"_sel);
  auto separator = NSValueTransformer::valueTransformerForName("QZWordSeparator"_ns);
  ASSERT_TRUE(separator);
  const auto words = [&](NSObject* value) { return to_string(separator->transformedValue(value)); };
  EXPECT_EQ(words("value"_ns), "Value");
  EXPECT_EQ(words("aǅbǈc"_ns), "A ǅb ǈc");
  EXPECT_EQ(words(""_ns), "");
  EXPECT_EQ(words(nullptr), "(null)");
  EXPECT_TRUE(refuses([&] { separator->reverseTransformedValue("Value"_ns); }));
}

// Starts the program anew, because the main bundle is looked for once.
TEST(ValueTransformers, AreLoadedFromTheMainBundle) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto load = [] {
    const TemporaryDirectory directory;
    const std::string bundle = detail::bundleNameOfModule(detail::executablePath()) + ".resources/";
    const char* const others = std::getenv("QZ_BUNDLE_PATH");
    ::setenv("QZ_BUNDLE_PATH", (directory.path() + ":" + (others ? others : "")).c_str(), 1);
    directory.write(bundle + "Info.plist", "{ }");
    directory.write(bundle + "Localizable.strings", "\"Off\" = \"Aus\";");
    const auto count = [] { return NSValueTransformer::valueTransformerNames()->count(); };
    const auto before = count();
    loadTransformers();  // there is no file
    for (const char* nothing :
         {"(QZWordSeparator)", "<plist>", "",
          "{ transformerClasses = QZWordSeparator; dynamicValueTransformerNames = { a = b; }; }",
          "{ transformerClasses = (NoSuch, QZMathValueTransformer, NSObject);"
          "  dynamicValueTransformerNames = (); }"}) {
      directory.write(bundle + "ValueTransformerInfo.plist", nothing);
      loadTransformers();
      EXPECT_EQ(count(), before) << nothing;
    }
    directory.write(bundle + "ValueTransformerInfo.plist",
                    "{ transformerClasses = (NoSuch, (), QZWordSeparator);"
                    "  dynamicValueTransformerNames = ((), \"NoSuch-1\", \"QZMath-power-2\","
                    "  \"QZMath-add-1\", \"QZFile-POSIX-URL\", \"QZAlternateText-Off-On\"); }");
    loadTransformers();
    EXPECT_EQ(count(), before + 4);
    for (const auto& [name, expected] : {std::pair{"QZWordSeparator"_ns, "1"},
                                         {"QZMath-add-1"_ns, "2"},
                                         {"QZFile-POSIX-URL"_ns, "file:///1"},
                                         {"QZAlternateText-Off-On"_ns, "On"}}) {
      const auto loaded = NSValueTransformer::valueTransformerForName(name);
      const auto value = name->hasPrefix("QZFile"_ns) ? "/1"_ns : "1"_ns;
      EXPECT_EQ(loaded ? to_string(loaded->transformedValue(value)) : "", expected) << name;
    }
    // Its texts are the application's.
    EXPECT_EQ(to_string(named("QZAlternateText-Off-On")->transformedValue("0"_ns)), "Aus");
  };
  EXPECT_EXIT((load(), std::_Exit(HasFailure())), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace qz::test
