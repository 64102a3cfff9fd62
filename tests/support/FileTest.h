// A directory and a file manager for one test.
#pragma once

#include "Platform/System/NSFileManager.h"
#include "tests/support/Files.h"
#include "tests/support/Test.h"

namespace qz::test {

class FileTest : public ::testing::Test {
 protected:
  explicit FileTest(bool inMemory = false)
      : directory(inMemory ? TemporaryDirectory::inMemory() : TemporaryDirectory()) {}

  /// A path in the directory; absolute ones and none are as they are.
  std::string at(const std::string& name) const {
    return name.empty() || name.front() == '/' ? name : directory.path() + '/' + name;
  }
  Ref<NSString> path(const std::string& name) const { return ns(at(name)); }

  int copyError(const std::string& from, const std::string& to) {
    Ref<NSError> error;
    return codeOf(manager->copyItemAtPath_toPath_error(path(from), path(to), &error), error);
  }
  /// 0 for none.
  static int codeOf(bool isDone, const Ref<NSError>& error) {
    EXPECT_EQ(isDone, !error);
    EXPECT_TRUE(!error || errno == error->code());
    return error ? error->code() : 0;
  }

  TemporaryDirectory directory;
  Ref<NSFileManager> manager = NSFileManager::defaultManager();
};

/// Knows the handler's generation of operations alone, and shows no names.
class PlainManager : public Derives<PlainManager, NSFileManager> {
 public:
  static void describe(ClassDescription<PlainManager>& is) { is.named("PlainManager"); }
  bool respondsToSelector(Selector selector) const override {
    return !selector.name().ends_with("error:") && !selector.name().starts_with("components") &&
           Derives::respondsToSelector(selector);
  }
};

}  // namespace qz::test
