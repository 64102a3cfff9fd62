// Linked with the archives: what nobody names in the source must be there all the same.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "Platform/Runtime/Class.h"
#include "QZFoundation/QZFoundation.h"
#include "tests/support/SourceTree.h"

namespace qz::test {
namespace {

TEST(StaticLink, EveryOperationIsFoundByName) {
  std::ifstream list(sourcePath("tests/data/operations.tsv"));
  ASSERT_TRUE(list.is_open());
  std::string line;
  std::getline(list, line);  // the heading
  int operations = 0;
  for (; std::getline(list, line); ++operations) {
    std::istringstream fields(line);
    std::string kind, className, name;
    std::getline(fields, kind, '\t');
    std::getline(fields, className, '\t');
    std::getline(fields, name);
    Class* aClass = Class::named(className);
    ASSERT_NE(aClass, nullptr) << className;
    const Selector selector = Selector::named(name);
    // An init form answers to the class and to what `alloc` answered.
    if (kind != "instance") {
      EXPECT_NE(aClass->classMethod(selector), nullptr) << "+" << className << " " << name;
    }
    if (kind != "class") {
      EXPECT_NE(aClass->instanceMethod(selector), nullptr) << "-" << className << " " << name;
    }
  }
  EXPECT_GT(operations, 100);
}

}  // namespace
}  // namespace qz::test
