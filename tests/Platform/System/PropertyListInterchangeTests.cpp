// What Python's plistlib writes is read here, and the other way round, for every kind of value.
#include "Platform/System/NSPropertyListUID.h"
#include "tests/support/FileTest.h"
#include "tests/support/PropertyLists.h"

namespace qz::test {
namespace {

class PropertyListInterchange : public FileTest {
 protected:
  void SetUp() override {
    if (std::system("python3 -c 'import plistlib' >/dev/null 2>&1") != 0)
      GTEST_SKIP() << "python3 with plistlib is not installed";
  }

  void run(const std::string& script) const {
    directory.write("script.py",
                    "import plistlib, datetime\nd = '" + directory.path() + "/'\n" + script);
    ASSERT_EQ(std::system(("python3 " + at("script.py")).c_str()), 0);
  }

  Ref<NSObject> readFile(const std::string& name) const { return read(contentsOf(at(name))); }
  void write(NSObject* list, NSPropertyListFormat format, const std::string& name) const {
    directory.write(name, written(list, format));
  }
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
  const auto bytes = [](NSObject* list) { return written(list, NSPropertyListXMLFormat); };
  EXPECT_TRUE(bytes(readFile("theirs.binary")) == bytes(lists));
  EXPECT_TRUE(bytes(readFile("theirs.xml")) == bytes(readFile("lines.binary")));
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
    auto values = as<NSArray>(readFile(name));
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
  auto uids = as<NSArray>(readFile("uids"));
  EXPECT_EQ(as<NSPropertyListUID>(uids->objectAtIndex(1))->unsignedLongLongValue(),
            std::uint64_t{1} << 40);
  write(uids, NSPropertyListBinaryFormat, "ours.uids");
  run("assert plistlib.load(open(d + 'ours.uids', 'rb')) == [plistlib.UID(0), "
      "plistlib.UID(2**40)]");
}

}  // namespace
}  // namespace qz::test
