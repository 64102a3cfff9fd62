#include "Platform/Values/FileSystemPath.h"
#include "Platform/Values/NSPathUtilities.h"
#include "tests/support/Environment.h"
#include "tests/support/Letters.h"

namespace qz::test {
namespace {

TEST(NSStringPaths, TakesPathsApart) {
  struct Case {
    const char *path, *components, *last, *parent, *extension, *bare;
  };
  const Case cases[] = {
      {"", "", "", "", "", ""},
      {"/", "/", "/", "/", "", "/"},
      {"/a", "/|a", "a", "/", "", "/a"},
      {"//a", "/|a", "a", "/", "", "//a"},
      {"/a/b.c/", "/|a|b.c", "b.c", "/a", "c", "/a/b"},
      {"a//b///c.d.e", "a|b|c.d.e", "c.d.e", "a//b", "e", "a//b///c.d"},
      {"/.hidden.txt", "/|.hidden.txt", ".hidden.txt", "/", "txt", "/.hidden"},
      {"...", "...", "...", "", "", "..."},
      {"a.", "a.", "a.", "", "", "a."},
      {"a..b", "a..b", "a..b", "", "b", "a."},
      {"Ä/ö.ü", "Ä|ö.ü", "ö.ü", "Ä", "ü", "Ä/ö"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.path);
    const auto path = ns(each.path);
    EXPECT_EQ(text(path->pathComponents(), "|"_ns), each.components);
    EXPECT_EQ(path->lastPathComponent()->UTF8String(), each.last);
    EXPECT_EQ(path->stringByDeletingLastPathComponent()->UTF8String(), each.parent);
    EXPECT_EQ(path->pathExtension()->UTF8String(), each.extension);
    EXPECT_EQ(path->stringByDeletingPathExtension()->UTF8String(), each.bare);
    EXPECT_EQ(path->isAbsolutePath(), each.path[0] == '/');
  }
}

TEST(NSStringPaths, PutsPathsTogether) {
  const std::array<const char*, 3> joins[] = {
      {"", "", ""},          {"", "a/", "a"},     {"", "/a", "/a"}, {"/", "a", "/a"},
      {"/", "/", "/"},       {"a", "", "a"},      {"a/", "", "a"},  {"a//", "//b//", "a/b"},
      {"a", "b/c", "a/b/c"}, {"a", "..", "a/.."}, {"a", "/", "a"},
  };
  for (const auto& [path, component, expected] : joins)
    EXPECT_EQ(ns(path)->stringByAppendingPathComponent(ns(component))->UTF8String(), expected)
        << path << " + " << component;
  EXPECT_TRUE(refuses([] { "a"_ns->stringByAppendingPathComponent(nullptr); }));

  EXPECT_EQ(ns("a/b/")->stringByAppendingPathExtension("c"_ns)->UTF8String(), "a/b.c");
  EXPECT_EQ(ns("//")->stringByAppendingPathExtension("c"_ns)->UTF8String(), "/");
  EXPECT_TRUE(refuses([] { "a"_ns->stringByAppendingPathExtension("b/c"_ns); }, {"b/c"}));

  const auto path = [](std::initializer_list<NSObject*> components) {
    return NSString::pathWithComponents(NSArray::arrayWithObjects(components))->UTF8String();
  };
  EXPECT_EQ(path({"/"_ns, "usr"_ns, ""_ns, "lib/"_ns, "/x"_ns}), "/usr/lib/x");
  EXPECT_EQ(path({"a"_ns, "/"_ns, "b"_ns}), "a/b");
  EXPECT_EQ(NSString::pathWithComponents(nullptr)->length(), 0u);
}

// Agrees with the C++ library where the two have the same idea of a path.
TEST(NSStringPaths, ComponentsAreThoseOfTheStandardLibrary) {
  std::mt19937 random(11);
  for (int round = 0; round < 2000; ++round) {
    std::string path;
    for (std::size_t i = random() % 12; i > 0; --i) path += "ab./"[random() % 4];
    SCOPED_TRACE(path);
    std::string expected;
    for (const auto& each : fs::path(path)) {
      if (each.empty()) continue;  // what stands for a slash at the end
      if (!expected.empty()) expected += '|';
      expected += each == "//" ? "/" : each.string();
    }
    const auto components = ns(path)->pathComponents();
    EXPECT_EQ(text(components, "|"_ns), expected);
    EXPECT_TRUE(equal(NSString::pathWithComponents(components)->pathComponents(), components));
  }
}

TEST(NSStringPaths, TildeIsTheHomeDirectory) {
  const Environment home("HOME", "/home/me/");
  const std::string ofRoot = NSHomeDirectoryForUser("root"_ns)->UTF8String() + "/a";
  for (const auto& [path, expanded] : {std::pair<const char*, std::string>{"~", "/home/me"},
                                       {"~/a/", "/home/me/a"},
                                       {"a/~", "a/~"},
                                       {"~root/a", ofRoot},
                                       {"~nobody-by-this-name/a", "~nobody-by-this-name/a"}})
    EXPECT_EQ(ns(path)->stringByExpandingTildeInPath()->UTF8String(), expanded) << path;
  for (const auto& [path, shortened] :
       {std::pair{"/home/me", "~"}, {"/home/me/a/", "~/a"}, {"/home/me2", "/home/me2"}})
    EXPECT_EQ(ns(path)->stringByAbbreviatingWithTildeInPath()->UTF8String(), shortened) << path;
  {
    const Environment root("HOME", "/");
    EXPECT_EQ(ns("/a")->stringByAbbreviatingWithTildeInPath()->UTF8String(), "/a");
    EXPECT_EQ(ns("~/a")->stringByExpandingTildeInPath()->UTF8String(), "/a");
  }
  const Environment relative("HOME", "here");  // no home: the list of users is asked
  EXPECT_TRUE(NSHomeDirectory()->isAbsolutePath());
  EXPECT_EQ(NSHomeDirectoryForUser(nullptr), nullptr);
}

TEST(NSStringPaths, StandardPathsHaveNoDots) {
  const std::array<const char*, 2> cases[] = {
      {"", ""},
      {"a/..", "."},
      {"a/./b//c", "a/b/c"},
      {"/../a", "/a"},
      {"../../a", "../../a"},
      {"a/../../b", "../b"},
      {"/a/b/../..", "/"},
      {"a/...", "a/..."},
  };
  for (const auto& [path, expected] : cases)
    EXPECT_EQ(ns(path)->stringByStandardizingPath()->UTF8String(), expected) << path;
}

TEST(NSStringPaths, EveryFileNameComesBackFromItsString) {
  std::mt19937 random(3);
  for (int round = 0; round < 3000; ++round) {
    std::string name;
    for (std::size_t i = random() % 9; i > 0; --i)
      name +=
          random() % 2 != 0 ? static_cast<char>(1 + random() % 255) : "\xE2\x82\xAC"[random() % 3];
    const auto path = stringWithFileSystemPath(name);
    ASSERT_EQ(path->fileSystemRepresentation(), name);
    ASSERT_EQ(fileSystemPath(path), fs::path(name));
  }
  EXPECT_EQ(stringWithFileSystemPath("\xC3\xA4")->view(), u"ä");
  EXPECT_EQ(stringWithFileSystemPath("\xE4")->view(), std::u16string(1, 0xDCE4));
}

TEST(NSStringPaths, RefusesWhatNoFileCanBeNamed) {
  for (const auto& units : {std::u16string(u"a\0b", 3), std::u16string(1, 0xD800)})
    EXPECT_TRUE(refuses([&] { ns(units)->fileSystemRepresentation(); }));
  EXPECT_TRUE(refuses([] { fileSystemPath(nullptr); }));
}

TEST(NSPathUtilities, TellsOfTheUser) {
  EXPECT_GT(NSUserName()->length(), 0u);
  const Environment directory("TMPDIR", "/var/tmp");
  EXPECT_EQ(NSTemporaryDirectory()->UTF8String(), "/var/tmp");
  const Environment relative("TMPDIR", "tmp");
  EXPECT_EQ(NSTemporaryDirectory()->UTF8String(), "/tmp");
}

}  // namespace
}  // namespace qz::test
