#include "Platform/System/NSUserDefaults.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Platform/Concurrency/NSNotificationCenter.h"
#include "Platform/Runtime/detail/Sanitizers.h"
#include "Platform/System/Diagnostics.h"
#include "Platform/System/detail/ArgumentDefaults.h"
#include "tests/support/Files.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

class UserDefaults : public testing::Test {
 protected:
  UserDefaults() {
    ::setenv("XDG_CONFIG_HOME", directory_.path().c_str(), 1);
    defaults_ = NSUserDefaults::initWithSuiteName("suite"_ns);
  }

  std::string file() const { return directory_.path() + "/suite/defaults.plist"; }

  std::string contents() const { return contentsOf(file()); }

  /// Runs `work` in another process, which then ends in good order; answers its number.
  template <class Work>
  static pid_t start(Work work) {
    const pid_t child = ::fork();
    if (child == 0) {
      work();
      std::exit(0);
    }
    return child;
  }
  static void expectEnd(pid_t child) {
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  }

  const TemporaryDirectory directory_;
  Ref<NSUserDefaults> defaults_;
};

/// With other processes at work. The thread sanitizer's run-time does not survive a fork of a
/// process that has threads, so it sees the other tests only.
class UserDefaultsOfProcesses : public UserDefaults {
 protected:
  void SetUp() override {
    if (detail::watchesThreads) GTEST_SKIP() << "forks while threads run";
  }
};

TEST_F(UserDefaults, TheFirstDomainWithAValueAnswers) {
  auto registered = NSMutableDictionary::of({{"n"_ns, "12.5x"_ns}, {"list"_ns, NSArray::array()}});
  defaults_->registerDefaults(registered);
  registered->removeAllObjects();  // a copy was taken
  EXPECT_EQ(defaults_->doubleForKey("n"_ns), 12.5);
  EXPECT_TRUE(defaults_->boolForKey("n"_ns));
  defaults_->setInteger_forKey(INT64_MAX, "n"_ns);
  EXPECT_EQ(to_string(defaults_->stringForKey("n"_ns)), "9223372036854775807");
  EXPECT_EQ(defaults_->dictionaryRepresentation()->count(),
            2u + defaults_->argumentDomain()->count());
  defaults_->removeObjectForKey("n"_ns);
  EXPECT_EQ(to_string(defaults_->valueForKey("n"_ns)), "12.5x");

  auto list = NSMutableArray::arrayWithObjects({"a"_ns, "b"_ns});
  defaults_->setObject_forKey(list, "list"_ns);
  list->removeAllObjects();
  EXPECT_EQ(defaults_->stringArrayForKey("list"_ns)->count(), 2u);
  EXPECT_FALSE(isKind<NSMutableArray>(defaults_->objectForKey("list"_ns)));
  defaults_->setObject_forKey(NSArray::arrayWithObject(NSNumber::of(1)), "list"_ns);
  EXPECT_EQ(defaults_->stringArrayForKey("list"_ns), nullptr);
}

TEST_F(UserDefaults, OnlyPropertyListsAndNamesAreTaken) {
  EXPECT_TRUE(refuses([&] { defaults_->setObject_forKey(NSNull::null(), "k"_ns); }, {"NSNull"}));
  EXPECT_TRUE(refuses([&] { defaults_->setObject_forKey("v"_ns, nullptr); }));
  EXPECT_TRUE(refuses([&] { defaults_->objectForKey(nullptr); }));
  for (NSString* name : {static_cast<NSString*>(nullptr), ""_ns, "a/b"_ns, ".."_ns})
    EXPECT_EQ(NSUserDefaults::initWithSuiteName(name), nullptr);
}

TEST_F(UserDefaultsOfProcesses, AreThereInTheNextProcess) {
  // Neither of the writers waits for anything: one is written at its end, the other while it runs.
  expectEnd(start([this] {
    defaults_->setObject_forKey("first"_ns, "a"_ns);
    defaults_->setBool_forKey(true, "truth"_ns);
  }));
  EXPECT_TRUE(defaults_->synchronize());
  EXPECT_EQ(to_string(defaults_->objectForKey("a"_ns)), "first");
  EXPECT_EQ(as<NSNumber>(defaults_->objectForKey("truth"_ns))->kind(), NumberKind::Bool);

  defaults_->removeObjectForKey("a"_ns);
  defaults_->setObject_forKey("x\x01"_ns, "control"_ns);  // which XML has no room for
  for (int i = 0; i < 1000 && contents().find("first") != std::string::npos; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_TRUE(contents().starts_with("bplist00"));
  expectEnd(start([this] {
    const bool isGone = defaults_->objectForKey("a"_ns) == nullptr;
    const bool isThere = equal(defaults_->objectForKey("control"_ns), "x\x01"_ns);
    if (!isGone || !isThere) ::_exit(1);
  }));
}

TEST_F(UserDefaultsOfProcesses, SeveralProcessesWriteAtOnce) {
  constexpr int processes = 4, names = 20;
  std::vector<pid_t> children;
  for (int p = 0; p < processes; ++p)
    children.push_back(start([this, p] {
      for (int n = 0; n < names; ++n) {
        defaults_->setInteger_forKey(n, NSString::stringWithFormat("%d-%d"_ns, p, n));
        defaults_->setInteger_forKey(p, "last"_ns);
        if (!defaults_->synchronize()) ::_exit(1);
      }
    }));
  for (pid_t child : children) expectEnd(child);
  // What another process removed and what this one sets meet.
  defaults_->setInteger_forKey(7, "mine"_ns);
  expectEnd(start([this] { defaults_->removeObjectForKey("0-0"_ns); }));
  EXPECT_TRUE(defaults_->synchronize());
  EXPECT_EQ(defaults_->objectForKey("0-0"_ns), nullptr);
  EXPECT_EQ(defaults_->integerForKey("mine"_ns), 7);
  for (int p = 0; p < processes; ++p)
    EXPECT_EQ(defaults_->integerForKey(NSString::stringWithFormat("%d-%d"_ns, p, names - 1)),
              names - 1);
}

TEST_F(UserDefaults, ADamagedFileIsKept) {
  static std::string said;
  static NSUserDefaults* asked;
  asked = defaults_;
  // Whoever is told may ask for a setting, such as where to write it.
  NSSetDiagnosticFunction([](std::string_view text) {
    said += text;
    EXPECT_EQ(asked->objectForKey("log"_ns), nullptr);
  });
  directory_.write("suite/defaults.plist", "<plist><dict><key>");
  EXPECT_EQ(defaults_->objectForKey("k"_ns), nullptr);
  EXPECT_TRUE(defaults_->synchronize());
  NSSetDiagnosticFunction(nullptr);
  EXPECT_EQ(said.find("cannot be used"), said.rfind("cannot be used"));  // once
  EXPECT_NE(said.find("line 1, column"), std::string::npos) << said;
  defaults_->setObject_forKey("v"_ns, "k"_ns);
  EXPECT_TRUE(defaults_->synchronize());
  EXPECT_NE(contents().find("<string>v</string>"), std::string::npos);
  EXPECT_EQ(contentsOf(file() + ".damaged"), "<plist><dict><key>");
}

TEST_F(UserDefaults, WhatCannotBeWrittenStaysSet) {
  directory_.write("suite", "a file in the folder's place");
  defaults_->setObject_forKey("v"_ns, "k"_ns);
  Ref<NSError> error;
  EXPECT_FALSE(defaults_->synchronizeReturningError(&error));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), ENOTDIR) << error;
  EXPECT_EQ(to_string(defaults_->objectForKey("k"_ns)), "v");
  fs::remove(directory_.path() + "/suite");
  EXPECT_TRUE(defaults_->synchronize());
  EXPECT_NE(contents().find("<string>v</string>"), std::string::npos);
}

TEST_F(UserDefaults, NobodyWaitsForTheFile) {
  defaults_->setObject_forKey("old"_ns, "k"_ns);
  ASSERT_TRUE(defaults_->synchronize());
  defaults_->setObject_forKey("new"_ns, "k"_ns);
  // Another process at the file; it leaves when a value was read and set meanwhile.
  const int other = ::open((file() + ".lock").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::flock(other, LOCK_EX), 0);
  std::thread writer([&] { EXPECT_TRUE(defaults_->synchronize()); });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // it is waiting by now
  EXPECT_EQ(to_string(defaults_->objectForKey("k"_ns)), "new");
  defaults_->setObject_forKey("newer"_ns, "k"_ns);
  ::close(other);
  writer.join();
  EXPECT_EQ(to_string(defaults_->objectForKey("k"_ns)), "newer");
  EXPECT_TRUE(defaults_->synchronize());
  EXPECT_NE(contents().find("<string>newer</string>"), std::string::npos);
}

TEST_F(UserDefaultsOfProcesses, ChangesAreAnnounced) {
  int count = 0;
  auto token = NSNotificationCenter::defaultCenter()->observe(
      NSUserDefaultsDidChangeNotification, defaults_, [&](NSNotification*) { ++count; });
  defaults_->setInteger_forKey(1, "a"_ns);
  defaults_->registerDefaults(NSDictionary::of({{"b"_ns, "c"_ns}}));
  EXPECT_EQ(count, 2);
  EXPECT_TRUE(defaults_->synchronize());
  EXPECT_EQ(count, 2);  // nobody else wrote
  expectEnd(start([this] { defaults_->setInteger_forKey(2, "a"_ns); }));
  EXPECT_TRUE(defaults_->synchronize());
  EXPECT_EQ(count, 3);
  EXPECT_EQ(defaults_->integerForKey("a"_ns), 2);
}

TEST(ArgumentDefaults, NamesAndValuesAreTold) {
  auto words = arrayOf({"program"_ns, "-first"_ns, "one two"_ns, "file"_ns, "-list"_ns,
                        "(a, {b = c;})"_ns, "--long"_ns, "x"_ns, "-minus"_ns, "-5"_ns, "-flag"_ns,
                        "-first"_ns, "(broken"_ns, "-3"_ns, "-end"_ns});
  auto values = detail::defaultsOfArguments(words);
  EXPECT_EQ(values->count(), 3u);
  EXPECT_EQ(to_string(values->objectForKey("first"_ns)), "(broken");
  EXPECT_EQ(as<NSArray>(values->objectForKey("list"_ns))->count(), 2u);
  EXPECT_EQ(to_string(values->objectForKey("minus"_ns)), "-5");
}

}  // namespace
}  // namespace qz::test
