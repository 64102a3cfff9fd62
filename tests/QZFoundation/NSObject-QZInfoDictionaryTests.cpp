#include "Platform/System/NSUserDefaults.h"
#include "Platform/Text/NSKeyedArchiver.h"
#include "Platform/Text/NSNumberFormatter.h"
#include "Platform/Text/NSTimeZone.h"
#include "QZFoundation/QZFoundation.h"
#include "tests/support/Files.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

Ref<NSDateFormatter> dateFormatter(NSDictionary* properties, NSObject* zone = nullptr) {
  auto info = NSMutableDictionary::of({{"properties"_ns, properties}});
  if (zone != nullptr) info->setObject_forKey(zone, "timeZoneSelector"_ns);
  return as<NSDateFormatter>(objectFromInfoDictionary(classOf<NSDateFormatter>(), info));
}

TEST(InfoDictionary, ChoosesTheClass) {
  EXPECT_EQ(objectFromInfoDictionary(classOf<NSObject>(), nullptr), nullptr);
  const auto classMade = [](Class* aClass, NSObject* named) {
    auto info = NSDictionary::of({{"class"_ns, named}});
    return objectFromInfoDictionary(aClass, info)->classObject();
  };
  EXPECT_EQ(classMade(classOf<NSFormatter>(), "NoSuchClass"_ns), classOf<NSFormatter>());
  EXPECT_EQ(classMade(classOf<NSFormatter>(), number(7)), classOf<NSFormatter>());
  EXPECT_EQ(classMade(classOf<NSObject>(), "NSDateFormatter"_ns), classOf<NSDateFormatter>());
  EXPECT_EQ(infoDictionary(NSArray::array())->count(), 0u);
  EXPECT_TRUE(
      refuses([] { objectFromInfoDictionary(classOf<NSNumber>(), NSDictionary::dictionary()); }));
  EXPECT_EQ(objectsFromInfoDictionaries(classOf<NSObject>(), nullptr)->count(), 0u);
  auto several = arrayOf({NSDictionary::dictionary(), "no dictionary"_ns});
  EXPECT_EQ(objectsFromInfoDictionaries(classOf<NSObject>(), several)->count(), 1u);
}

class SpecialOrder : public Derives<SpecialOrder, NSSortDescriptor> {
 public:
  static void describe(ClassDescription<SpecialOrder>& is) {
    is.named("SpecialOrder").initializer<&SpecialOrder::special>("initWithKey:ascending:selector:");
  }
  using Derives::Derives;
  static Ref<SpecialOrder> special(NSString* key, bool ascending, Selector selector) {
    return make<SpecialOrder>(key, ascending, selector);
  }
};

TEST(InfoDictionary, SortDescriptorsComeBack) {
  for (bool ascending : {true, false}) {
    auto was = NSSortDescriptor::initWithKey_ascending_selector("a.b"_ns, ascending,
                                                                "caseInsensitiveCompare:"_sel);
    auto info = infoDictionary(was);
    EXPECT_EQ(info->count(), 4u);
    EXPECT_TRUE(equal(info->objectForKey("class"_ns), "NSSortDescriptor"_ns));
    EXPECT_TRUE(equal(objectFromInfoDictionary(classOf<NSFormatter>(), info), was));
  }
  auto bare = as<NSSortDescriptor>(
      objectFromInfoDictionary(classOf<NSSortDescriptor>(), NSDictionary::dictionary()));
  EXPECT_TRUE(!bare->ascending() && bare->key() == nullptr);
  auto derived = make<SpecialOrder>("a"_ns, true, "compare:"_sel);
  auto again = objectFromInfoDictionary(classOf<NSObject>(), infoDictionary(derived));
  EXPECT_TRUE(isKind<SpecialOrder>(again) && equal(again, derived));
}

TEST(InfoDictionary, FormatterPropertiesAreSetAsFarAsTheyGo) {
  auto formatter = dateFormatter(NSDictionary::of({{"noSuchKey"_ns, "x"_ns},
                                                   {"dateFormat"_ns, "yyyy"_ns},
                                                   {"locale"_ns, "no locale"_ns},
                                                   {"lenient"_ns, NSNumber::of(true)}}));
  EXPECT_TRUE(equal(formatter->dateFormat(), "yyyy"_ns));
  EXPECT_TRUE(formatter->isLenient());
  EXPECT_TRUE(equal(propertyOrder(formatter), arrayOf({"formattingBehavior"_ns})));
  EXPECT_EQ(propertyOrder(make<NSFormatter>())->count(), 0u);
  EXPECT_EQ(formatKey(formatter), nullptr);
}

class Unordered : public Derives<Unordered, QZHMSFormatter> {
 public:
  static void describe(ClassDescription<Unordered>& is) {
    is.named("UnorderedFormatter").method<&Unordered::noOrder>("propertyOrder");
  }
  Ref<NSArray> noOrder() { return nullptr; }
};

TEST(InfoDictionary, ThereNeedBeNoOrder) {
  const auto off = NSDictionary::of({{"includeLeadingZero"_ns, NSNumber::of(false)}});
  auto made =
      objectFromInfoDictionary(classOf<Unordered>(), NSDictionary::of({{"properties"_ns, off}}));
  EXPECT_FALSE(as<Unordered>(made)->includeLeadingZero());
}

// Whatever a configuration file has, there is a formatter, and it can be used.
TEST(InfoDictionary, NonsenseIsPassedOver) {
  const auto list = NSMutableArray::arrayWithObject(NSDictionary::of({{"a"_ns, "b"_ns}}));
  std::vector<Ref<NSObject>> nonsense = {list, list->objectAtIndex(0), NSNull::null(),
                                         NSData::dataWithBytes("\xff"), NSDate::date()};
  for (const std::string& text : {std::string(), std::string("~%;'#"), std::string(10'000, '#')})
    nonsense.push_back(ns(text));
  for (const double number : {-1.0, 1e300, std::nan("")}) nonsense.push_back(NSNumber::of(number));
  for (const auto& number : {NSNumber::of(INT64_MIN), NSNumber::of(UINT64_MAX)})
    nonsense.push_back(number);
  for (Class* const aClass : {classOf<NSNumberFormatter>(), classOf<NSDateFormatter>(),
                              classOf<QZHMSFormatter>(), classOf<QZStorageSizeFormatter>()}) {
    std::vector<std::string> keys = {"formatKey", "noSuchKey", "formattingBehavior"};
    for (const std::string_view key : aClass->propertyKeys()) keys.emplace_back(key);
    for (const std::string& key : keys)
      for (NSObject* value : nonsense) {
        const auto name = ns(key);
        const auto made = as<NSFormatter>(objectFromInfoDictionary(
            aClass, NSDictionary::of({{"properties"_ns, NSDictionary::of({{name, value}})},
                                      {"class"_ns, value},
                                      {"timeZoneSelector"_ns, value}})));
        ASSERT_TRUE(made) << name << " " << value;
        made->stringForObjectValue(NSNumber::of(-1234.5));
        made->stringForObjectValue(NSDate::date());
        made->getObjectValue_forString_errorDescription(nullptr, "1"_ns, nullptr);
      }
  }
  for (NSObject* value : nonsense)
    objectFromInfoDictionary(
        classOf<NSSortDescriptor>(),
        NSDictionary::of({{"key"_ns, value}, {"ascending"_ns, value}, {"selector"_ns, value}}));
}

TEST(InfoDictionary, DateFormattersHaveBehaviours) {
  const TemporaryDirectory directory;
  ::setenv("XDG_CONFIG_HOME", directory.path().c_str(), 1);
  auto defaults = NSUserDefaults::standardUserDefaults();
  defaults->registerDefaults(NSDictionary::of({{"InfoTestFormat"_ns, "%Y!"_ns}}));
  const auto old = number(1000);
  auto percent = dateFormatter(NSDictionary::of(
      {{"formatterBehavior"_ns, old}, {"format"_ns, "%d"_ns}, {"lenient"_ns, number(1)}}));
  EXPECT_EQ(percent->formatterBehavior(), NSDateFormatterBehavior::PercentFormat);
  EXPECT_TRUE(percent->allowsNaturalLanguage());
  EXPECT_FALSE(percent->isLenient());  // nothing else counts
  auto byKey = dateFormatter(NSDictionary::of({{"formatterBehavior"_ns, old},
                                               {"format"_ns, "%d"_ns},
                                               {"formatKey"_ns, "InfoTestFormat"_ns}}));
  EXPECT_TRUE(equal(byKey->dateFormat(), "%Y!"_ns));
  auto byMissingKey = dateFormatter(
      NSDictionary::of({{"formatterBehavior"_ns, old}, {"formatKey"_ns, "NoSuchDefault"_ns}}));
  EXPECT_TRUE(equal(byMissingKey->stringFromDate(NSDate::date()), ""_ns));

  auto styled = dateFormatter(NSDictionary::of({{"formatterBehavior"_ns, number(1040)},
                                                {"dateStyle"_ns, number(3)},
                                                {"timeStyle"_ns, number(1)}}),
                              "systemTimeZone"_ns);
  EXPECT_EQ(styled->dateStyle(), NSDateFormatterStyle::Long);
  EXPECT_TRUE(equal(styled->timeZone(), NSTimeZone::systemTimeZone()));
  setFormatKey(styled, "InfoTestFormat"_ns);
  EXPECT_TRUE(equal(styled->dateFormat(), "%Y!"_ns));
  EXPECT_TRUE(refuses([] { setFormatKey(make<NSFormatter>(), "InfoTestFormat"_ns); }));
}

TEST(InfoDictionary, DefaultsAreRegisteredFromFiles) {
  const TemporaryDirectory directory;
  ::setenv("XDG_CONFIG_HOME", directory.path().c_str(), 1);
  auto defaults = NSUserDefaults::initWithSuiteName("loads"_ns);
  const auto path = [&](const std::string& name, const std::string& bytes) {
    return ns(directory.write(name, bytes));
  };
  for (const Ref<NSString>& none : {path("array", "(a, b)"), path("broken", "<plist>"),
                                    Ref<NSString>("/no/such/file"_ns), Ref<NSString>()})
    EXPECT_FALSE(loadDefaultsFromFile(defaults, none)) << none;
  EXPECT_FALSE(loadDefaultsFromBundle(defaults, nullptr));
  EXPECT_EQ(defaults->registrationDomain()->count(), 0u);
  path("b.resources/Defaults.plist", "{ size = 12; }");
  path("b.resources/Info.plist", "{}");
  EXPECT_TRUE(loadDefaultsFromBundle(
      defaults, NSBundle::bundleWithPath(ns(directory.path() + "/b.resources"))));
  EXPECT_EQ(defaults->integerForKey("size"_ns), 12);
}

TEST(InfoDictionary, CodersTakeValuesByKey) {
  auto from = NSMutableDictionary::of({{"a"_ns, "1"_ns}, {"b"_ns, number(2)}});
  auto keys = arrayOf({"a"_ns, "b"_ns, "missing"_ns});
  auto archiver = make<NSKeyedArchiver>();
  encodeValuesOfObject_forKeys(archiver, from, keys);
  auto reader = NSKeyedUnarchiver::initForReadingFromData_classes_error(archiver->encodedData(),
                                                                        nullptr, nullptr);
  auto to = NSMutableDictionary::of({{"missing"_ns, "goes"_ns}});
  decodeValuesToObject_forKeys(reader, to, keys);
  EXPECT_TRUE(equal(to, from)) << to;
}

}  // namespace
}  // namespace qz::test
