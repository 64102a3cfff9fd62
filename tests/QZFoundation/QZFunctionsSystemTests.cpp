#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Platform/Runtime/Implementations.h"
#include "QZFoundation/NSTask-QZFoundation.h"
#include "QZFoundation/QZFunctions.h"
#include "QZFoundation/QZVersionNumber.h"
#include "tests/support/Environment.h"
#include "tests/support/Person.h"

namespace qz::test {
namespace {

std::string paths(NSSearchPathDirectory kind, std::uint32_t mask, bool expand,
                  NSString* subPath = nullptr) {
  auto found = QZSearchPathForDirectoriesInDomains(kind, mask, expand, subPath);
  return to_string(found->componentsJoinedByString(" "_ns));
}

TEST(QZFunctions, DirectoriesOfTheApplication) {
  const TemporaryDirectory home;
  const Environment inHome("HOME", home.path());
  EXPECT_EQ(QZApplicationSupportSubPath()->UTF8String(), "Application Support/foundation-tests");
  const std::string caches = home.path() + "/Library/Caches/foundation-tests";
  EXPECT_EQ(QZCacheDirectory()->UTF8String(), caches);
  EXPECT_TRUE(fs::is_directory(caches));
  // Where it cannot be made, the path is answered all the same.
  const Environment nowhere("HOME", "/proc/nowhere");
  EXPECT_EQ(QZCacheDirectory()->UTF8String(), "/proc/nowhere/Library/Caches/foundation-tests");
}

TEST(QZFunctions, StandardDirectories) {
  const TemporaryDirectory home;
  const Environment inHome("HOME", home.path());
  const Environment config("XDG_CONFIG_HOME", home.path() + "/conf");
  const Environment data("XDG_DATA_HOME", "relative/and/ignored");
  const Environment cache("XDG_CACHE_HOME", "/elsewhere/cache");
  home.write("conf/user-dirs.dirs",
             "# written by hand\nXDG_DESKTOP_DIR=\"$HOME/Schreib\\\"tisch\"\n"
             "XDG_MUSIC_DIR=\"/mnt/music\"\nXDG_VIDEOS_DIR=\"Videos here\"\n");
  EXPECT_EQ(paths(NSLibraryDirectory, NSAllDomainsMask, false),
            "~/.local/share /usr/local/share /usr/share");
  EXPECT_EQ(paths(NSLibraryDirectory, NSUserDomainMask | NSSystemDomainMask, true, "a/b"_ns),
            home.path() + "/.local/share/a/b /usr/share/a/b");
  EXPECT_EQ(paths(NSCachesDirectory, NSUserDomainMask, false), "/elsewhere/cache");
  EXPECT_EQ(paths(NSDesktopDirectory, NSAllDomainsMask, false), "~/Schreib\"tisch");
  EXPECT_EQ(paths(NSMusicDirectory, NSUserDomainMask, true), "/mnt/music");
  EXPECT_EQ(paths(NSMoviesDirectory, NSUserDomainMask, false), "~/Videos");
  EXPECT_EQ(paths(NSDocumentDirectory, NSLocalDomainMask | NSNetworkDomainMask, true), "");
  EXPECT_EQ(paths(static_cast<NSSearchPathDirectory>(999), NSAllDomainsMask, true), "");
}

TEST(QZFunctions, SystemVersionComesFromTheReleaseFile) {
  // The file's own words, by the shell.
  const auto told = dataByRunningTask_withArguments(
      "/bin/sh"_ns, arrayOf({"-c"_ns, ". /etc/os-release; printf '%s' \"$VERSION_ID\""_ns}));
  const auto version = QZSystemVersionNumber();
  const auto number = QZVersionNumber::versionWithString(ns(told->view()));
  EXPECT_TRUE(told->length() == 0 ? version == nullptr : equal(version, number)) << number;
}

TEST(QZFunctions, TellsWhetherADebuggerTraces) {
  const auto tracedChild = [](bool traced) {
    const pid_t child = ::fork();
    if (child == 0) {
      if (traced && ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) ::_exit(2);
      ::_exit(QZProcessIsBeingTraced() ? 1 : 0);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) == child && WIFSTOPPED(status))
      ::ptrace(PTRACE_CONT, child, nullptr, nullptr);
    return WEXITSTATUS(status);
  };
  if (QZProcessIsBeingTraced()) GTEST_SKIP() << "a debugger traces the tests";
  EXPECT_EQ(tracedChild(false), 0);
  const int answer = tracedChild(true);
  if (answer == 2) GTEST_SKIP() << "tracing is not allowed here";
  EXPECT_EQ(answer, 1);
}

TEST(QZFunctions, RangesWithinRanges) {
  static_assert(QZRangeContainsRange({10, 5}, {12, 3}));
  static_assert(!QZRangeContainsRange({10, 5}, {12, 4}));
  static_assert(!QZRangeContainsRange({10, 5}, {10, 0}));
  static_assert(!QZRangeContainsRange({10, 5}, {9, 2}));
  static_assert(!QZRangeContainsRange({10, 5}, {15, 0}));
  static_assert(!QZRangeContainsRange({0, 0}, {0, 0}));
  static_assert(QZRangeContainsRange({0, 0xFFFFFFFF}, {0xFFFFFFFE, 1}));
}

TEST(QZFunctions, RectanglesFitted) {
  EXPECT_EQ(QZFitCenteredRect({4, 1}, NSMakeRect(0, 0, 100, 100)), NSMakeRect(0, 12.5, 100, 25));
  EXPECT_EQ(QZFitCenteredRect({1, 2}, NSMakeRect(0, 0, 100, 100)), NSMakeRect(25, 0, 50, 100));
  EXPECT_EQ(QZFitCenteredRect({2, 2}, NSMakeRect(3, 4, 10, 10)), NSMakeRect(3, 9, 10, 10));
  for (const NSSize size : {NSSize{0, 0}, NSSize{1, 0}, NSSize{0, 1}})
    for (const NSRect& rect : {NSRect(), NSMakeRect(1, 2, 0, 5), NSMakeRect(1, 2, 5, 0)}) {
      const NSRect fitted = QZFitCenteredRect(size, rect);
      for (float each : {fitted.origin.x, fitted.origin.y, fitted.size.width, fitted.size.height})
        EXPECT_TRUE(std::isfinite(each));
    }
  EXPECT_EQ(QZCenterOfRect(NSMakeRect(1, 2, 3, 5)), NSMakePoint(2.5, 4.5));
}

Imp greetBefore = nullptr;

Ref<NSString> greetTwice(Person* self, NSString* greeting) {
  auto once = callImplementation<Ref<NSString>>(greetBefore, self, "greet:"_sel, greeting);
  return NSString::stringWithFormat("%@ %@"_ns, once, once);
}

TEST(QZFunctions, ReplacedOperationsReachSubclassesAndUsedCallSites) {
  auto worker = make<Worker>("Wim"_ns);
  const auto ask = [&] { return to_string(send<Ref<NSString>>(worker, "greet:"_sel, "Hi"_ns)); };
  Class* person = classOf<Person>();
  greetBefore =
      QZReplaceMethodImplementation(person, "greet:"_sel, implementationOf<Person, &greetTwice>());
  EXPECT_EQ(ask(), "Hi, Wim Hi, Wim");
  QZReplaceMethodImplementation(person, "greet:"_sel, greetBefore);
  EXPECT_EQ(ask(), "Hi, Wim");

  // By the operation of the same class, and of another one.
  auto name = QZReplaceMethodImplementationWithSelector(person, "title"_sel, "name"_sel);
  EXPECT_EQ(to_string(send<Ref<NSString>>(worker, "title"_sel)), "Wim");
  QZReplaceMethodImplementation(person, "title"_sel, name);
  auto own = QZReplaceMethodImplementationWithSelectorOnClass(
      classOf<Worker>(), "title"_sel, classOf<NSObject>(), "description"_sel);
  EXPECT_EQ(send<Ref<NSString>>(worker, "title"_sel)->UTF8String().substr(0, 7), "<Worker");
  QZReplaceMethodImplementation(classOf<Worker>(), "title"_sel, own);
}

TEST(QZFunctions, OperationsThatCannotBeReplaced) {
  Class* person = classOf<Person>();
  const Imp imp = implementationOf<Person, &greetTwice>();
  EXPECT_EQ(QZReplaceMethodImplementation(person, "noSuchThing"_sel, imp), nullptr);
  EXPECT_EQ(QZReplaceMethodImplementation(nullptr, "greet:"_sel, imp), nullptr);
  EXPECT_FALSE(person->instancesRespondToSelector("noSuchThing"_sel));
  EXPECT_TRUE(refuses([&] { QZReplaceMethodImplementation(person, "greet:"_sel, nullptr); }));
  const auto replaceName = [&](Selector by) {
    return [=] { QZReplaceMethodImplementationWithSelector(person, "name"_sel, by); };
  };
  EXPECT_TRUE(refuses(replaceName("noSuchThing"_sel), {"Person noSuchThing", "does not exist"}));
  EXPECT_TRUE(refuses(replaceName("greet:"_sel), {"something else"}));
}

}  // namespace
}  // namespace qz::test
