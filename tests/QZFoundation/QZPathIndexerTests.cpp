#include "QZFoundation/QZPathIndexer.h"

#include "tests/support/Test.h"

namespace qz::test {
namespace {

Ref<QZPathIndexer> indexerOf(std::initializer_list<NSString*> paths) {
  auto indexer = make<QZPathIndexer>();
  for (NSString* each : paths) indexer->addPath(each);
  return indexer;
}

TEST(QZPathIndexer, PrefixesAreAsShortAsTheyCanBe) {
  const struct {
    std::initializer_list<NSString*> added;
    NSString* asked;
    const char* prefix;
  } cases[] = {
      {{}, "/a/x/f.txt"_ns, "x"},
      {{"/a/x/f.txt"_ns, "/b/x/f.txt"_ns}, "/a/x/f.txt"_ns, "…/a/x"},
      {{"/a/x/f.txt"_ns, "/b/x/f.txt"_ns}, "/q/x/f.txt"_ns, "…/q/x"},
      {{"/a/x/f.txt"_ns, "/b/x/g.txt"_ns}, "/a/x/f.txt"_ns, "x"},
      {{"/a/c/x/f"_ns, "/b/c/x/f"_ns}, "/b/c/x/f"_ns, "…/b/c/x"},
      // The whole folder, where all of its parts are needed.
      {{"/a/x/f"_ns, "a/x/f"_ns}, "/a/x/f"_ns, "/a/x"},
      {{"/x/f"_ns, "/a/x/f"_ns}, "/x/f"_ns, "/x"},
      {{"/f"_ns}, "/f"_ns, "/"},
      {{"f"_ns}, "f"_ns, ""},
      {{"/a/b/"_ns}, "/a/b"_ns, "a"},
  };
  for (const auto& each : cases)
    EXPECT_EQ(indexerOf(each.added)->prefixForPath(each.asked)->UTF8String(), each.prefix)
        << each.asked;
}

TEST(QZPathIndexer, RemovingLeavesNothingEmpty) {
  auto indexer = indexerOf({"/a/x/f"_ns, "/b/x/f"_ns, "/b/y/f"_ns, "/a/x/g"_ns, "/a/x/f"_ns});
  for (NSString* each : {"/never/added"_ns, "/never/f"_ns, "/c/x/f"_ns, "/b/x/f"_ns})
    indexer->removePath(each);
  EXPECT_EQ(indexer->prefixForPath("/a/x/f"_ns)->UTF8String(), "x");
  indexer->removePath("/a/x/f"_ns);
  const auto byFolder = as<NSDictionary>(indexer->pathsByFilename()->objectForKey("f"_ns));
  EXPECT_EQ(byFolder->count(), 1u);
  indexer->removePath("/b/y/f"_ns);
  indexer->removePath("/a/x/g"_ns);
  EXPECT_EQ(indexer->pathsByFilename()->count(), 0u);
  EXPECT_THAT(to_string(indexer), HasSubstr(": [pathsByFilename = {"));
}

TEST(QZPathIndexer, ContainsNoPath) {
  auto indexer = indexerOf({"/a/x/f"_ns, "f"_ns});
  for (NSString* each : {"/a/x/f"_ns, "f"_ns, "/a/x/g"_ns})
    EXPECT_FALSE(send<bool>(indexer, "containsPath:"_sel, each));
  EXPECT_TRUE(refuses([&] { indexer->addPath(nullptr); }));
}

}  // namespace
}  // namespace qz::test
