// What Python's plistlib writes is read here, and the other way round, for every kind of value.
#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/System/NSPropertyListUID.h"
#include "tests/support/RandomPropertyList.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

class PropertyListInterchange : public testing::Test {
 protected:
  void SetUp() override {
    if (std::system("python3 -c 'import plistlib' >/dev/null 2>&1") != 0)
      GTEST_SKIP() << "python3 with plistlib is not installed";
  }

  std::string path(const std::string& name) const { return directory_.path() + "/" + name; }

  void run(const std::string& script) const {
    std::ofstream(path("script.py")) << "import plistlib, datetime\n"
                                     << "d = '" << directory_.path() << "/'\n"
                                     << script;
    ASSERT_EQ(std::system(("python3 " + path("script.py")).c_str()), 0);
  }

  Ref<NSObject> read(const std::string& name) const {
    Ref<NSString> problem;
    auto list =
        NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
            NSData::dataWithContentsOfFile(ns(path(name))), 0, nullptr, &problem);
    EXPECT_TRUE(list) << name << ": " << problem;
    return list;
  }

  static Ref<NSData> data(NSObject* list, NSPropertyListFormat format) {
    Ref<NSString> problem;
    auto bytes = NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
        list, format, &problem);
    EXPECT_TRUE(bytes) << problem;
    return bytes;
  }

  void write(NSObject* list, NSPropertyListFormat format, const std::string& name) const {
    data(list, format)->writeToFile_atomically(ns(path(name)), false);
  }

  TemporaryDirectory directory_;
};

TEST_F(PropertyListInterchange, AThousandRandomListsGoThereAndBack) {
  std::mt19937_64 random(42);
  auto lists = NSMutableArray::array();
  for (int i = 0; i < 1000; ++i) lists->addObject(randomPropertyList(random, 3));
  write(lists, NSPropertyListXMLFormat, "ours.xml");
  write(lists, NSPropertyListBinaryFormat, "ours.binary");
  run(R"(
x = plistlib.load(open(d + 'ours.xml', 'rb'), fmt=plistlib.FMT_XML)
b = plistlib.load(open(d + 'ours.binary', 'rb'), fmt=plistlib.FMT_BINARY)
assert repr(x) == repr(b) and len(x) == 1000
plistlib.dump(x, open(d + 'theirs.binary', 'wb'), fmt=plistlib.FMT_BINARY)
# Its XML turns CR into LF, also where two keys then become one.
def lf(v):
    if isinstance(v, str): return v.replace('\r\n', '\n').replace('\r', '\n')
    if isinstance(v, list): return [lf(e) for e in v]
    if isinstance(v, dict): return {lf(k): lf(e) for k, e in v.items()}
    return v
plistlib.dump(lf(x), open(d + 'theirs.xml', 'wb'), fmt=plistlib.FMT_XML)
plistlib.dump(lf(x), open(d + 'lines.binary', 'wb'), fmt=plistlib.FMT_BINARY)
)");
  // The text tells kinds apart that are equal to `isEqual:`.
  const auto bytes = [](NSObject* list) { return data(list, NSPropertyListXMLFormat); };
  EXPECT_TRUE(equal(bytes(read("theirs.binary")), bytes(lists)));
  EXPECT_TRUE(equal(bytes(read("theirs.xml")), bytes(read("lines.binary"))));
}

TEST_F(PropertyListInterchange, KindsAtTheirEdges) {
  run(R"(
values = [0, 1, 255, 256, -1, 2**31, -2**63, 2**63 - 1, 2**63, 2**64 - 1, 65536, True, False,
          0.1, 1.0, -0.0, 5e-324, ' \n ', '1', float('inf'), float('-inf'), float('nan'), b'', bytes(range(256)), '', 'ü😀', [], {},
          datetime.datetime(2001, 1, 1), datetime.datetime(1, 1, 1), datetime.datetime(9999, 12, 31, 23, 59, 59)]
plistlib.dump(values, open(d + 'xml', 'wb'), fmt=plistlib.FMT_XML)
plistlib.dump(values, open(d + 'binary', 'wb'), fmt=plistlib.FMT_BINARY)
plistlib.dump([plistlib.UID(0), plistlib.UID(2**40)], open(d + 'uids', 'wb'), fmt=plistlib.FMT_BINARY)
)");
  for (const char* name : {"xml", "binary"}) {
    auto values = as<NSArray>(read(name));
    ASSERT_TRUE(values);
    write(values, NSPropertyListXMLFormat, "ours.xml");
    write(values, NSPropertyListBinaryFormat, "ours.binary");
    run(R"(
for name in ['ours.xml', 'ours.binary']:
    ours = plistlib.load(open(d + name, 'rb'))
    theirs = plistlib.load(open(d + ')" +
        std::string(name) + R"(', 'rb'))
    assert repr(ours) == repr(theirs), (ours, theirs)
)");
  }
  auto uids = as<NSArray>(read("uids"));
  EXPECT_EQ(as<NSPropertyListUID>(uids->objectAtIndex(1))->unsignedLongLongValue(),
            std::uint64_t{1} << 40);
  write(uids, NSPropertyListBinaryFormat, "ours.uids");
  run("assert plistlib.load(open(d + 'ours.uids', 'rb')) == [plistlib.UID(0), "
      "plistlib.UID(2**40)]");
}

}  // namespace
}  // namespace qz::test
