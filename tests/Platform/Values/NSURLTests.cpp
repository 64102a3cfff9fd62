#include "Platform/Values/NSURL.h"

#include "Platform/Values/FileSystemPath.h"
#include "Platform/Values/NSPathUtilities.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

Ref<NSURL> url(std::string_view utf8) { return NSURL::URLWithString(ns(utf8)); }

std::string orNil(const Ref<NSString>& string) { return string ? string->UTF8String() : "nil"; }

std::string whole(const Ref<NSURL>& url) { return orNil(url->absoluteString()); }

TEST(NSURL, TellsItsComponents) {
  const auto full =
      url("HTTP://us%40er:pa:ss@ex%2Dample.org:8042/over//th%C3%A9re/?na%20me=x#no%73e");
  ASSERT_TRUE(full);
  EXPECT_EQ(orNil(full->scheme()), "HTTP");
  EXPECT_EQ(orNil(full->user()), "us@er");
  EXPECT_EQ(orNil(full->password()), "pa:ss");
  EXPECT_EQ(orNil(full->host()), "ex-ample.org");
  EXPECT_EQ(full->port()->intValue(), 8042);
  EXPECT_EQ(orNil(full->path()), "/over//thére");
  EXPECT_EQ(orNil(full->query()), "na%20me=x");
  EXPECT_EQ(orNil(full->fragment()), "no%73e");
  EXPECT_TRUE(full->hasDirectoryPath());
  EXPECT_EQ(whole(full->standardizedURL()),
            "http://us%40er:pa:ss@ex-ample.org:8042/over//th%C3%A9re/?na%20me=x#nose");

  EXPECT_EQ(orNil(url("mailto:a@b")->host()) + orNil(url("mailto:a@b")->path()), "nila@b");
  const auto empty = url("x://@:/?#");
  EXPECT_EQ(orNil(empty->user()) + orNil(empty->password()) + orNil(empty->host()) +
                orNil(empty->query()) + orNil(empty->fragment()),
            "nil");
  EXPECT_EQ(empty->port(), nullptr);
  EXPECT_EQ(orNil(url("http://[fe80::1%25eth0]:1/")->host()), "fe80::1%eth0");

  const auto parts = url("http://h/a/b%2Fc.d%2Ee/");
  EXPECT_EQ(orNil(parts->lastPathComponent()), "b/c.d.e");
  EXPECT_EQ(orNil(parts->pathExtension()), "e");
}

TEST(NSURL, RefusesWhatIsNotWellFormed) {
  for (const char* bad : {"", "a b", "http://h/ä", "a%", "a%2", "a%2G", "%zz://h", ":a", "1a:b",
                          "a_b:c", "a#b#c", "a[b]", "a^b", "<a>", "a\\b", "\"a\""})
    EXPECT_EQ(url(bad), nullptr) << bad;
  for (const char* badHost :
       {"http://h:x", "http://h:65536", "http://h:99999999999999999999", "http://a@b@c",
        "http://[::1", "http://]", "http://[::g]", "http://[::1]x", "http://[]", "http://[v.a]",
        "http://[fe80::1%25]", "http://h:1:2", "http://[1.2.3.4]"})
    EXPECT_EQ(url(badHost), nullptr) << badHost;
  for (const char* good :
       {"a", "//h", "/", "?", "#", "a:", "http://", "http://h:65535", "http://h:", "http://[::1]",
        "http://[v1.a:b]", "http://[::ffff:1.2.3.4]", "urn:a:b:c", "a/b:c", "?a:b/?", "..", "%00"})
    EXPECT_NE(url(good), nullptr) << good;
  EXPECT_EQ(NSURL::URLWithString(nullptr), nullptr);
  EXPECT_EQ(NSURL::URLWithString(ns(std::u16string_view(u"a\0b", 3))), nullptr);
}

// Of the examples of RFC 3986, 5.4, those that differ in more than their names.
TEST(NSURL, ResolvesAsTheStandardShows) {
  const auto base = url("http://a/b/c/d;p?q");
  const std::array<const char*, 2> cases[] = {
      {"g:h", "g:h"},
      {"g", "http://a/b/c/g"},
      {"g/", "http://a/b/c/g/"},
      {"/g", "http://a/g"},
      {"//g", "http://g"},
      {"?y", "http://a/b/c/d;p?y"},
      {"g?y#s", "http://a/b/c/g?y#s"},
      {"", "http://a/b/c/d;p?q"},
      {"..", "http://a/b/"},
      {"../../g", "http://a/g"},
      {"../../../g", "http://a/g"},
      {"/../g", "http://a/g"},
      {"..g", "http://a/b/c/..g"},
      {"g/../h", "http://a/b/c/h"},
      {"g;x=1/./y", "http://a/b/c/g;x=1/y"},
      {"g?y/./x", "http://a/b/c/g?y/./x"},
      {"http:g", "http:g"},
  };
  for (const auto& [reference, expected] : cases) {
    const auto resolved = NSURL::URLWithString_relativeToURL(ns(reference), base);
    EXPECT_EQ(whole(resolved), expected) << reference;
    EXPECT_EQ(orNil(resolved->relativeString()), reference);
    EXPECT_TRUE(resolved->isEqual(url(expected)));
    EXPECT_EQ(resolved->hash(), resolved->absoluteURL()->hash());
  }
  const auto onHost = NSURL::URLWithString_relativeToURL("g"_ns, url("http://h"));
  EXPECT_EQ(whole(onHost), "http://h/g");
  // Two slashes must not turn into a host.
  const auto slashes = NSURL::URLWithString_relativeToURL("/..//g"_ns, url("x:/a"));
  EXPECT_EQ(whole(slashes), "x:/.//g");
}

TEST(NSURL, FilesHaveTheirPaths) {
  const auto file = NSURL::fileURLWithPath("/tmp/a b?#%:ä/"_ns);
  EXPECT_EQ(whole(file), "file:///tmp/a%20b%3F%23%25:%C3%A4/");
  EXPECT_EQ(orNil(file->path()), "/tmp/a b?#%:ä");
  EXPECT_TRUE(file->isFileURL() && file->hasDirectoryPath());
  EXPECT_EQ(whole(NSURL::fileURLWithPath_isDirectory("/a"_ns, true)), "file:///a/");
  EXPECT_EQ(whole(NSURL::fileURLWithPath_isDirectory("/a/"_ns, false)), "file:///a");

  const auto relative = NSURL::fileURLWithPath("a:b/../c"_ns);
  EXPECT_EQ(orNil(relative->relativePath()), "a:b/../c");
  EXPECT_EQ(fileSystemPath(relative->path()), fs::current_path() / "c");

  // Bytes that are no UTF-8 are kept all the way.
  const auto stray = NSURL::fileURLWithPath(stringWithFileSystemPath("/x/\xFF\xC3"));
  EXPECT_EQ(whole(stray), "file:///x/%FF%C3");
  EXPECT_EQ(stray->fileSystemRepresentation(), "/x/\xFF\xC3");

  EXPECT_EQ(NSURL::fileURLWithPath(nullptr), nullptr);
  EXPECT_EQ(NSURL::fileURLWithPath(""_ns), nullptr);
  for (const auto& units : {std::u16string(u"/a\0b", 4), std::u16string(1, 0xD800)})
    EXPECT_EQ(NSURL::fileURLWithPath(ns(units)), nullptr);
  EXPECT_TRUE(refuses([] { url("file:///a%00b")->fileSystemRepresentation(); }));
}

TEST(NSURL, MakesOthers) {
  const std::array<const char*, 3> appended[] = {
      {"http://h", "a b", "http://h/a%20b"},
      {"http://h/x/?q#f", "/y/", "http://h/x/y/?q#f"},
      {"a", "b:c", "a/b:c"},
      {"?q", "b:c", "./b:c?q"},
      {"file:///", "a", "file:///a"},
  };
  for (const auto& [from, component, expected] : appended)
    EXPECT_EQ(whole(url(from)->URLByAppendingPathComponent(ns(component))), expected);
  const std::array<const char*, 2> deleted[] = {
      {"http://h/a/b", "http://h/a/"},
      {"http://h/a/b/", "http://h/a/"},
      {"http://h", "http://h"},
      {"a", "./"},
  };
  for (const auto& [from, expected] : deleted)
    EXPECT_EQ(whole(url(from)->URLByDeletingLastPathComponent()), expected);
  const std::array<const char*, 2> standard[] = {
      {"HTTP://EX.org/a/../%7eb/%c3%a4?%7E#%2f", "http://ex.org/~b/%C3%A4?~#%2F"},
      {"http://%45x%c3%84/", "http://ex%C3%84/"},
      {"../a", "../a"},
      {"x:/..//a", "x:/.//a"},
  };
  for (const auto& [from, expected] : standard)
    EXPECT_EQ(whole(url(from)->standardizedURL()), expected);
  EXPECT_TRUE(refuses([] { url("a")->URLByAppendingPathComponent(nullptr); }));
}

// Classic paths -----------------------------------------------------------------------------------

std::string converted(const Ref<NSString>& path, URLPathStyle from, URLPathStyle to) {
  return orNil(CFURLCopyFileSystemPath(CFURLCreateWithFileSystemPath(path, from, false), to));
}

TEST(ClassicPaths, AreTheSamePlaces) {
  const std::array<const char*, 2> both[] = {{"/", "Root:"},
                                             {"/Volumes", "Root:Volumes"},
                                             {"/Volumes/D/x", "D:x"},
                                             {"/a:b", "Root:a/b"},
                                             {"a/b", ":a:b"},
                                             {"../..", ":::"},
                                             {"a/../b", ":a::b"},
                                             {".", ":"},
                                             {"/a/..", "Root:a::"},
                                             {"/Volumes/D/../E", "D::E"},
                                             {"/Volumes/A:B/c", "A/B:c"},
                                             {"/Volumes/Root/x", "Root:Volumes:Root:x"},
                                             {"/%41ö", "Root:%41ö"}};
  for (const auto& [posix, classic] : both) {
    EXPECT_EQ(converted(ns(posix), URLPathStyle::POSIX, URLPathStyle::HFS), classic);
    EXPECT_EQ(converted(ns(classic), URLPathStyle::HFS, URLPathStyle::POSIX), posix);
  }
  const std::array<const char*, 2> read[] = {
      {"Root", "/"}, {"D", "/Volumes/D"}, {":a:", "a"}, {"Root:Volumes:D", "/Volumes/D"}};
  for (const auto& [classic, posix] : read)
    EXPECT_EQ(converted(ns(classic), URLPathStyle::HFS, URLPathStyle::POSIX), posix);
  for (const char* bad : {"", "Root:.", "Root:..:a", "..:a", ":.:a"})
    EXPECT_EQ(converted(ns(bad), URLPathStyle::HFS, URLPathStyle::POSIX), "nil") << bad;
  EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, URLPathStyle::HFS, false), nullptr);
  EXPECT_EQ(CFURLCreateWithFileSystemPath("a"_ns, URLPathStyle(2), false), nullptr);
  EXPECT_EQ(CFURLCopyFileSystemPath(nullptr, URLPathStyle::POSIX), nullptr);
}

TEST(ClassicPaths, ComeBackForEveryName) {
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    std::string path(random() % 2, '/');
    if (random() % 3 == 0) path = "/Volumes/";
    const std::size_t count = 1 + random() % 4;
    for (std::size_t i = 0; i < count; ++i) {
      std::string name;
      for (std::size_t k = 1 + random() % 3; k > 0; --k) {
        char byte = static_cast<char>(1 + random() % 255);
        if (random() % 3 == 0) byte = ":.%"[random() % 3];
        name += byte == '/' ? ':' : byte;
      }
      if (name == ".") name = "Root";
      path += (i > 0 ? "/" : "") + name;
    }
    const auto posix = stringWithFileSystemPath(path);
    const auto classic = CFURLCopyFileSystemPath(
        CFURLCreateWithFileSystemPath(posix, URLPathStyle::POSIX, false), URLPathStyle::HFS);
    ASSERT_TRUE(classic) << path;
    const auto again = CFURLCopyFileSystemPath(
        CFURLCreateWithFileSystemPath(classic, URLPathStyle::HFS, false), URLPathStyle::POSIX);
    ASSERT_TRUE(equal(again, posix)) << path << " -> " << classic;
  }
}

TEST(ClassicPaths, BeginWithTheNameThatIsSet) {
  const auto before = NSStartupVolumeName();
  NSSetStartupVolumeName("Disk/1"_ns);
  EXPECT_EQ(converted("/a"_ns, URLPathStyle::POSIX, URLPathStyle::HFS), "Disk/1:a");
  EXPECT_EQ(converted("Root:a"_ns, URLPathStyle::HFS, URLPathStyle::POSIX), "/Volumes/Root/a");
  EXPECT_EQ(converted("/Volumes/Disk:1/a"_ns, URLPathStyle::POSIX, URLPathStyle::HFS),
            "Disk/1:Volumes:Disk/1:a");
  for (NSString* bad : {""_ns, "a:b"_ns})
    EXPECT_TRUE(refuses([&] { NSSetStartupVolumeName(bad); }));
  EXPECT_TRUE(refuses([] { NSSetStartupVolumeName(nullptr); }));
  EXPECT_EQ(orNil(NSStartupVolumeName()), "Disk/1");
  NSSetStartupVolumeName(before);
}

}  // namespace
}  // namespace qz::test
