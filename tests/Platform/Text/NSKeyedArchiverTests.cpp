#include "Platform/Text/NSKeyedArchiver.h"

#include "Platform/Collections/NSCountedSet.h"
#include "Platform/Collections/NSMutableSet.h"
#include "Platform/Collections/NSSortDescriptor.h"
#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/System/NSPropertyListUID.h"
#include "Platform/Values/NSIndexPath.h"
#include "Platform/Values/NSMutableData.h"
#include "Platform/Values/NSURL.h"
#include "Platform/Values/NSUUID.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

/// A node that refers to others.
class Node : public Derives<Node, NSObject> {
 public:
  static void describe(ClassDescription<Node>& is) {
    is.named("ArchivedNode")
        .method<&Node::encodeWithCoder>("encodeWithCoder:")
        .initializer<&Node::initWithCoder>("initWithCoder:");
  }

  void encodeWithCoder(NSCoder* coder) const {
    coder->encodeObject_forKey(name, "name"_ns);
    coder->encodeObject_forKey(next, "next"_ns);
    coder->encodeInt64_forKey(count, "count"_ns);
    coder->encodeDouble_forKey(0.5, "half"_ns);
    coder->encodeBool_forKey(true, "yes"_ns);
  }
  static Ref<Node> initWithCoder(NSCoder* coder) {
    auto node = make<Node>();
    node->name = as<NSString>(coder->decodeObjectForKey("name"_ns));
    node->next = coder->decodeObjectForKey("next"_ns);
    node->count = coder->decodeInt64ForKey("count"_ns);
    if (node->count == 13) detail::raise(NSGenericException, "unlucky");
    node->half = coder->decodeDoubleForKey("half"_ns);
    node->yes = coder->decodeBoolForKey("yes"_ns) && coder->containsValueForKey("yes"_ns);
    EXPECT_EQ(coder->decodeIntForKey("missing"_ns), 0);
    EXPECT_FALSE(coder->decodeObjectForKey("missing"_ns));
    return node;
  }

  Ref<NSString> name;
  Ref<NSObject> next;
  std::int64_t count = 0;
  double half = 0;
  bool yes = false;
};

/// Compares in its own way, and cannot say so to an archive.
class Backwards : public Derives<Backwards, NSSortDescriptor> {
 public:
  using Derives::Derives;
  static void describe(ClassDescription<Backwards>& is) { is.named("ArchivedBackwards"); }
};

Ref<NSData> archived(NSObject* root) { return NSKeyedArchiver::archivedDataWithRootObject(root); }

Ref<NSObject> unarchived(NSData* data, std::string* problem, bool expectsNodes = true) {
  Ref<NSError> error;
  auto classes = expectsNodes
                     ? arrayOf({classOf<Node>(), classOf<NSSortDescriptor>(), classOf<NSURL>(),
                                classOf<NSUUID>(), classOf<NSIndexPath>()})
                     : NSArray::array();
  auto object = NSKeyedUnarchiver::unarchivedObjectOfClasses_fromData_error(classes, data, &error);
  *problem = textOf(error);
  EXPECT_TRUE(!error || !object);
  return object;
}

TEST(KeyedArchive, CollectionsAndValuesComeBackInTheirKinds) {
  auto shared = NSMutableString::stringWithString("shared"_ns);
  auto root = NSArray::arrayWithObjects(
      {"$null"_ns, NSNumber::of(true), NSNumber::of(0.1f), NSNumber::of(UINT64_MAX), dateAt(1e9),
       NSData::dataWithBytes("\x00\x01"), NSNull::null(), shared, shared,
       NSMutableData::dataWithBytes("m"), NSMutableArray::arrayWithObject("e"_ns),
       NSSet::setWithObjects({"a"_ns, NSNumber::of(1)}), NSMutableSet::setWithObject("b"_ns),
       NSCountedSet::setWithArray(arrayOf({"c"_ns, "d"_ns, "c"_ns})),
       NSDictionary::of({{NSNumber::of(1), NSArray::array()}}),
       NSMutableDictionary::of({{"k"_ns, NSNull::null()}})});
  std::string problem;
  auto again = as<NSArray>(unarchived(archived(root), &problem, false));
  ASSERT_TRUE(again) << problem;
  EXPECT_TRUE(equal(again, root)) << again;
  for (std::uint32_t i = 0; i < root->count(); ++i)
    EXPECT_EQ(again->objectAtIndex(i)->classObject(), root->objectAtIndex(i)->classObject()) << i;
  EXPECT_EQ(again->objectAtIndex(7), again->objectAtIndex(8));
  EXPECT_EQ(unarchived(archived(nullptr), &problem), nullptr);
  EXPECT_EQ(problem, "");
}

TEST(KeyedArchive, ObjectsSayThemselves) {
  auto tail = make<Node>();
  auto head = make<Node>();
  head->name = "head"_ns;
  head->count = -5;
  head->next = arrayOf({tail, tail});
  auto data = archived(head);
  std::string problem;
  auto again = as<Node>(unarchived(data, &problem));
  ASSERT_TRUE(again) << problem;
  EXPECT_TRUE(equal(again->name, "head"_ns) && again->count == -5);
  EXPECT_TRUE(again->half == 0.5 && again->yes);
  auto tails = as<NSArray>(again->next);
  EXPECT_EQ(tails->objectAtIndex(0), tails->objectAtIndex(1));

  EXPECT_EQ(unarchived(data, &problem, /*expectsNodes=*/false), nullptr);
  EXPECT_EQ(problem, "the class ArchivedNode is not expected");
  head->count = 13;
  EXPECT_EQ(unarchived(archived(head), &problem), nullptr);
  EXPECT_EQ(problem, "NSGenericException: unlucky");
  head->next = head;  // may be written, and cannot be read: who is asked for whom first?
  EXPECT_EQ(unarchived(archived(head), &problem), nullptr);
  EXPECT_NE(problem.find("refers to itself"), std::string::npos) << problem;
  head->next = nullptr;
}

TEST(KeyedArchive, ValuesOfThePlatformSayThemselves) {
  const auto base = NSURL::URLWithString("http://host/a/b"_ns);
  const auto root = NSArray::arrayWithObjects(
      {NSSortDescriptor::initWithKey_ascending_selector("name.family"_ns, false,
                                                        "caseInsensitiveCompare:"_sel),
       NSSortDescriptor::initWithKey_ascending(nullptr, true), base,
       NSURL::URLWithString_relativeToURL("../c?d#e"_ns, base), NSUUID::UUID(),
       NSIndexPath::indexPath(), NSIndexPath::indexPathWithIndexes({1, 0, UINT32_MAX})});
  std::string problem;
  const auto again = as<NSArray>(unarchived(archived(root), &problem));
  ASSERT_TRUE(again) << problem;
  EXPECT_TRUE(equal(again, root)) << again;
  EXPECT_EQ(as<NSURL>(again->objectAtIndex(3))->baseURL(), again->objectAtIndex(2));
}

TEST(KeyedArchive, BreachesRaise) {
  auto archiver = make<NSKeyedArchiver>();
  const auto encode = [&](NSObject* object, NSString* key) {
    return refuses([&] { archiver->encodeObject_forKey(object, key); });
  };
  const auto mixed = arrayOf({"v"_ns, make<NSObject>()});
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(encode(mixed, "k"_ns)) << "also the second time";
  EXPECT_TRUE(encode(make<Backwards>("k"_ns, true), "k"_ns));
  EXPECT_TRUE(encode("v"_ns, nullptr));
  EXPECT_TRUE(encode("v"_ns, "$class"_ns));
  EXPECT_TRUE(refuses([&] { archiver->decodeObjectForKey("k"_ns); }));
  Ref<NSObject> deep = ""_ns;
  for (int i = 0; i < 1001; ++i) deep = arrayOf({deep});
  EXPECT_TRUE(refuses([&] { archived(deep); }, {"too deep"}));
}

TEST(KeyedArchive, DamagedArchivesAreErrors) {
  auto head = make<Node>();
  head->name = "n"_ns;
  head->next = NSDictionary::of({{"k"_ns, NSSet::setWithObject(make<Node>())}});
  const auto data = archived(head);
  std::string problem;
  for (std::uint32_t i = 0; i < data->length(); ++i) {
    EXPECT_EQ(unarchived(data->subdataWithRange({0, i}), &problem), nullptr);
    EXPECT_NE(problem, "");
  }

  const auto uid = [](std::uint64_t n) { return NSPropertyListUID::UIDWithUnsignedLongLong(n); };
  const auto archiveOf = [&](std::initializer_list<NSObject*> objects) {
    auto list = NSDictionary::of({{"$version"_ns, NSNumber::of(1)},
                                  {"$top"_ns, NSDictionary::of({{"root"_ns, uid(1)}})},
                                  {"$objects"_ns, NSArray::arrayWithObjects(objects)}});
    return NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
        list, NSPropertyListBinaryFormat, nullptr);
  };
  const auto archive = [&](NSObject* object, NSObject* name) {
    return archiveOf({"$null"_ns, object, name});
  };
  const auto ofClass = [&](std::uint64_t number, NSString* key, NSObject* value) {
    return NSDictionary::of({{"$class"_ns, uid(number)}, {key, value}});
  };
  const auto one = NSArray::arrayWithObject(uid(1));
  using Case = std::tuple<Ref<NSObject>, Ref<NSObject>, const char*>;
  for (const auto& [object, name, expected] : std::vector<Case>{
           {NSArray::array(), ""_ns, "an object is of the class NSArray"},
           {NSDictionary::dictionary(), ""_ns, "there is no NSObject under $class"},
           {ofClass(9, "x"_ns, ""_ns), ""_ns, "there is no object 9"},
           {ofClass(2, "x"_ns, ""_ns), NSNumber::of(1), "a class has no name"},
           {ofClass(2, "x"_ns, ""_ns), "NoSuch"_ns, "there is no class NoSuch"},
           {ofClass(2, "x"_ns, ""_ns), "NSArray"_ns, "there is no NSArray under NS.objects"},
           {ofClass(2, "NS.objects"_ns, one), "NSArray"_ns, "object 1 refers to itself"},
           {ofClass(2, "NS.objects"_ns, NSArray::arrayWithObject(uid(0))), "NSSet"_ns,
            "an element is nil"},
           {ofClass(2, "x"_ns, ""_ns), "NSBundle"_ns, "the class NSBundle is not expected"},
           {ofClass(2, "selector"_ns, uid(2)), "NSSortDescriptor"_ns,
            "NSInvalidArgumentException: \"NSSortDescriptor\" does not compare with another "
            "object"},
           {ofClass(2, "text"_ns, uid(2)), "NSUUID"_ns,
            "NSInvalidArgumentException: \"NSUUID\" is no UUID"},
       }) {
    EXPECT_EQ(unarchived(archive(object, name), &problem), nullptr);
    EXPECT_EQ(problem, expected);
  }
  const auto node = NSArray::arrayWithObject(uid(3));
  const auto keyed =
      NSDictionary::of({{"$class"_ns, uid(2)}, {"NS.keys"_ns, node}, {"NS.objects"_ns, node}});
  EXPECT_EQ(unarchived(archiveOf({"$null"_ns, keyed, "NSDictionary"_ns,
                                  ofClass(4, "count"_ns, uid(0)), "ArchivedNode"_ns}),
                       &problem),
            nullptr);
  EXPECT_NE(problem.find("copy"), std::string::npos) << problem << ": a key that has no copy";
  EXPECT_EQ(unarchived(nullptr, &problem), nullptr);
  EXPECT_EQ(problem, "there is no data");
  EXPECT_EQ(unarchived(NSData::dataWithBytes("{ a = b; }"), &problem), nullptr);
  EXPECT_EQ(problem, "there is no NSNumber under $version");
}

}  // namespace
}  // namespace qz::test
