// The command qzfoundation-inspect, through its command line.

#include "tests/support/Command.h"
#include "tests/support/Files.h"
#include "tests/support/SourceTree.h"

namespace qz::test {
namespace {

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
  EXPECT_THAT(
      run("--markdown NSArray").output,
      HasSubstr("| - | `objectAtIndex:` | `objectAtIndex` | `(uint32_t)` | `NSObject` |  |\n"));
  expect("NSSuch", 1, "qzfoundation-inspect: NSSuch: there is no such class\n");
  EXPECT_EQ(run("--load none").status, 1);
  EXPECT_EQ(run("--such").status, 2);
}

// The page is checked in, so that a change of the interface shows where changes are read.
TEST_F(Inspect, ThePageOfOperationsIsWhatItPrints) {
  const std::string page = contentsOf(sourcePath("docs/operations.md"));
  const std::string printed = run("--markdown").output;
  const auto [a, b] = std::ranges::mismatch(page, printed);
  EXPECT_TRUE(page == printed) << "docs/operations.md is out of date from byte " << a - page.begin()
                               << " on. In the top folder:\n  " << program()
                               << " --markdown >docs/operations.md";
}

}  // namespace
}  // namespace qz::test
