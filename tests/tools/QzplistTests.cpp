// The command qzplist, through its command line.
#include "tests/support/Command.h"

namespace qz::test {
namespace {

class Qzplist : public CommandTest {
 protected:
  Qzplist() : CommandTest("tools/qzplist") {}
};

TEST_F(Qzplist, ConvertsChecksAndPrints) {
  directory_.write("list",
                   "{ name = \"A \\\"b\\\"\\n\"; e = (); key = <0fbd>; list = (1, { x = y; }); }");
  expect("convert binary list -o list.binary", 0, "");
  expect("convert xml list.binary", 0, "");  // in its place
  expect("check list list.binary", 0, "list: text\nlist.binary: xml\n");
  const std::string shown =
      "{\n  \"e\": []\n  \"key\": <0fbd>\n  \"list\": [\n    \"1\"\n    {\n      \"x\": \"y\"\n"
      "    }\n  ]\n  \"name\": \"A \\\"b\\\"\\n\"\n}\n";
  expect("print list.binary", 0, shown);
  expect("convert binary <list | cat > piped", 0, "");
  expect("print < piped", 0, shown);

  directory_.write("bad", "<plist>\n<true>x</true></plist>");
  expect("check list bad none", 1,
         "list: text\nqzplist: bad: line 2, column 1: <true> is not empty\n"
         "qzplist: none: No such file or directory\n");
  directory_.write("numbers", "<plist><array><integer>1</integer></array></plist>");
  expect("convert text numbers", 1, "qzplist: numbers: root[0]: old-style text has no numbers\n");
  EXPECT_EQ(contents("numbers"), "<plist><array><integer>1</integer></array></plist>");
}

TEST_F(Qzplist, ReadsAndSetsByKeyPath) {
  directory_.write("list", "<plist><dict/></plist>");
  for (const std::string value :
       {"name 'Ada & <Grace>'", "a.b -t integer 18446744073709551615",
        "'dotted\\.key' -t bool true", "marks -t array '(1, <ff>)'", "marks.2 -t real 2.5",
        "marks.0 -t date 2024-02-29T12:00:00Z", "d -t data /w=="})
    expect("set list " + value, 0, "");
  expect("get list name", 0, "Ada & <Grace>\n");
  expect("get list a.b", 0, "18446744073709551615\n");
  expect("get list 'dotted\\.key'", 0, "true\n");
  expect("get list marks", 0, "[\n  2024-02-29T12:00:00Z\n  <ff>\n  2.5\n]\n");
  expect("get list a text", 1, "qzplist: -: root.b: old-style text has no numbers\n");
  expect("get list d text", 0, "<ff>\n");
  expect("remove list marks.0", 0, "");
  expect("get list marks.0", 0, "<ff>\n");
  expect("remove list name", 0, "");
  expect("get list name", 1, "qzplist: \"name\": there is no such key\n");
  expect("check list", 0, "list: xml\n");

  const std::string before = contents("list");
  expect("set list marks.7 x", 1, "qzplist: \"7\": the array has 2 elements\n");
  expect("set list marks.x x", 1, "qzplist: \"x\": an array is indexed by numbers\n");
  expect("set list d.x x", 1, "qzplist: \"x\": the value before is no dictionary or array\n");
  expect("set list n -t integer 1e5", 1, "qzplist: \"1e5\" is no value of the type integer\n");
  expect("set list n -t array '{}'", 1, "qzplist: this is no array\n");
  expect("remove list none", 1, "qzplist: \"none\": there is no such key\n");
  EXPECT_EQ(contents("list"), before);
}

TEST_F(Qzplist, RefusesWrongUse) {
  EXPECT_EQ(run("").status, 2);
  EXPECT_EQ(run("--help").status, 0);
  for (const char* arguments : {"frob", "convert", "convert yaml x", "convert xml x -o", "get x",
                                "set x y", "set x y -t colour z", "print a b"})
    EXPECT_EQ(run(arguments).status, 2) << arguments;
  expect("frob", 2, "qzplist: there is no command \"frob\" (see qzplist --help)\n");
  directory_.write("list", "{ a = b; }");
  for (const std::string arguments : {"print list", "get list '' binary", "check list"})
    EXPECT_EQ(run(arguments + " >/dev/full").status, 1) << arguments;
}

}  // namespace
}  // namespace qz::test
