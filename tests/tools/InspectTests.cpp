// The command qzfoundation-inspect, through its command line.
#include <gmock/gmock.h>

#include "tests/support/Command.h"

namespace qz::test {
namespace {

using testing::HasSubstr;

class Inspect : public CommandTest {
 protected:
  Inspect() : CommandTest("tools/qzfoundation-inspect") {}
};

TEST_F(Inspect, ListsClassesAsTheRunTimeHasThem) {
  const std::string version = run("QZVersionNumber").output;
  EXPECT_THAT(version, HasSubstr("QZVersionNumber : NSObject\n"));
  EXPECT_THAT(version, HasSubstr("  + versionWithString:  (NSString) -> QZVersionNumber\n"));
  EXPECT_THAT(version, HasSubstr("  - compare:  (QZVersionNumber) -> "));
  EXPECT_THAT(run("--tree").output, HasSubstr("\n  NSArray\n    NSMutableArray\n"));
  EXPECT_THAT(run("--markdown NSArray").output,
              HasSubstr("| - | `objectAtIndex:` | `objectAtIndex` | (unsigned int) | "));
  expect("NSSuch", 1, "qzfoundation-inspect: NSSuch: there is no such class\n");
  EXPECT_EQ(run("--load none").status, 1);
  EXPECT_EQ(run("--such").status, 2);
}

}  // namespace
}  // namespace qz::test
