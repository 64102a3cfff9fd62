// The command qzformat, through its command line.
#include "tests/support/Command.h"

namespace qz::test {
namespace {

class Qzformat : public CommandTest {
 protected:
  Qzformat() : CommandTest("tools/qzformat") {}
};

TEST_F(Qzformat, ShowsValuesAndReadsThem) {
  expect("duration 3725 -5.25 0", 0, "1:02:05\n-:05.250\n:00\n");
  expect("duration -r 1:30.5 1:60 -1:05", 1,
         "90.5\nqzformat: 1:60: Value 60 too large for seconds component\n-65\n");
  expect("duration -- -r", 1, "qzformat: -r: not a number\n");
  expect("size 1500000 1023 0 18446744073709551615", 0, "1.5 MB\n1.0 KB\n0 bytes\n--\n");
  expect("size -b 1572864 1023", 0, "1.5 MB\n1,023.0 bytes\n");
  expect("size -b -r '1.5 KB' '2 mb'", 0, "1024\n2097152\n");
  expect("version 01.2b3x ''", 0, "1.2b3\n\n");
  expect("transform QZMath-multiply-100 0.5 x", 0, "50\n0\n");
  expect("transform QZMath-multiply-100 -r 50", 0, "0.5\n");
  expect("transform QZAlternateText-Off-On 1 7 -1", 0, "On\nOn\nOff\n");
  expect("transform QZWordSeparator value", 0, "Value\n");
  expect("transform QZFile-POSIX-URL -r 'file:///a%20b' 'no url'", 1,
         "/a b\nqzformat: no url: cannot be shown\n");
}

TEST_F(Qzformat, ReadsLinesAndReportsWhatIsNoGood) {
  directory_.write("lines", "65\nx\n\n9223372036854775808\n1e3\n\xff\nnan");
  expect("duration < lines", 1,
         "01:05\nqzformat: x: not a number\nqzformat: : not a number\n:00\n16:40\n"
         "qzformat: \xff: not a number\nqzformat: nan: not a number\n");
  expect("transform QZFile-POSIX-exists lines none", 0, "1\n0\n");
  expect("transform QZWordSeparator -r Value", 1,
         "qzformat: Value: QZWordSeparator does not allow reverse transformation\n");
}

TEST_F(Qzformat, RefusesWrongUse) {
  EXPECT_EQ(run("").status, 2);
  EXPECT_EQ(run("--help").status, 0);
  for (const char* arguments :
       {"frob 1", "version -r 1.0", "transform", "transform NoSuch-1 1", "transform QZMath-add 1"})
    EXPECT_EQ(run(arguments).status, 2) << arguments;
  expect("transform QZMath-power-2 1", 2,
         "qzformat: QZMathValueTransformer invalid operator \"power\" (see qzformat --help)\n");
  EXPECT_EQ(run("size 1 > /dev/full").status, 1);
}

}  // namespace
}  // namespace qz::test
