// Index paths, and the trees they lead through.
#include "QZFoundation/NSIndexPath-QZFoundation.h"

#include "QZFoundation/NSObject-QZIndexPath.h"
#include "tests/support/Letters.h"

namespace qz::test {
namespace {

using Children = std::initializer_list<NSObject*>;

Ref<NSIndexPath> path(std::initializer_list<std::uint32_t> indexes) {
  return NSIndexPath::indexPathWithIndexes(indexes);
}

TEST(NSIndexPathQZFoundation, JoinsAndShortens) {
  EXPECT_EQ(to_string(indexPathByAppendingPath(path({1, 2}), path({3}))), "1.2.3");
  EXPECT_EQ(to_string(indexPathByAppendingPath(path({1}), nullptr)), "1");
  EXPECT_EQ(to_string(indexPathByRemovingFirstIndex(path({1, 2, 3}))), "2.3");
  EXPECT_EQ(send<Ref<NSIndexPath>>(path({}), "indexPathByRemovingFirstIndex"_sel)->length(), 0u);
}

Ref<NSDictionary> node(NSObject* name, Children children) {
  return NSDictionary::dictionaryWithObjectsAndKeys(NSArray::arrayWithObjects(children),
                                                    "children"_ns, name, "name"_ns);
}

// root ( a ( a1 a2 ), nameless ( b1 ), a ( a3 ) )
Ref<NSDictionary> tree() {
  return node("root"_ns, {node("a"_ns, {node("a1"_ns, {}), node("a2"_ns, {})}),
                          node(nullptr, {node("b1"_ns, {})}), node("a"_ns, {node("a3"_ns, {})})});
}

Ref<NSArray> valuesAlong(NSObject* root, NSIndexPath* path, NSString* key = "name"_ns,
                         NSString* childKey = "children"_ns) {
  return valuePathForIndexPath_valueKeyPath_childKey(root, path, key, childKey);
}

TEST(NSObjectQZIndexPath, ReadsTheValuesAlongAPath) {
  const struct {
    Ref<NSIndexPath> path;
    const char* values;
  } cases[] = {{path({0, 1}), "a a2"},
               {path({0, 2}), "a <null>"},
               {path({2, 0, 0, 0, 0}), "a a3 <null>"},
               {path({1, 0}), "<null> b1"},
               {nullptr, ""}};
  auto root = tree();
  for (const auto& each : cases)
    EXPECT_EQ(text(valuesAlong(root, each.path), " "_ns), each.values) << each.path;
  EXPECT_EQ(text(valuesAlong(root, path({0, 0}), "name.length"_ns), " "_ns), "1 2");
  auto all = valuePathsForIndexPaths_valueKeyPath_childKey(root, arrayOf({path({0}), path({0, 9})}),
                                                           "name"_ns, "children"_ns);
  ASSERT_EQ(all->count(), 2u);
  EXPECT_EQ(text(all->objectAtIndex(1), " "_ns), "a <null>");
}

TEST(NSObjectQZIndexPath, FindsThePathOfValues) {
  auto root = tree();
  const auto found = [&](Children values) {
    return to_string(send<Ref<NSIndexPath>>(root, "indexPathForValues:valueKeyPath:childKey:"_sel,
                                            NSArray::arrayWithObjects(values).get(), "name"_ns,
                                            "children"_ns));
  };
  EXPECT_EQ(found({"a"_ns, "a2"_ns}), "0.1");
  EXPECT_EQ(found({"a"_ns, "a3"_ns}), "(null)");  // the first child of that name decides
  EXPECT_EQ(found({"a"_ns, "a1"_ns, "x"_ns}), "(null)");
  EXPECT_EQ(found({NSNull::null(), "b1"_ns}), "(null)");  // nil is not Null
  auto wanted =
      arrayOf({arrayOf({"x"_ns}), arrayOf({"a"_ns, "a1"_ns}), NSArray::array(), arrayOf({"y"_ns})});
  auto paths =
      indexPathsForValuePaths_valueKeyPath_childKey(root, wanted, "name"_ns, "children"_ns);
  EXPECT_EQ(text(paths, " "_ns), "0.0 ");  // two of four, the second one empty
  EXPECT_EQ(paths->count(), 2u);
}

TEST(NSObjectQZIndexPath, EndsInTreesThatAreNone) {
  auto loop = NSMutableDictionary::of({{"name"_ns, "again"_ns}});
  loop->setObject_forKey(arrayOf({loop}), "children"_ns);
  std::vector<std::uint32_t> zeros(5000);
  const auto deep = NSIndexPath::indexPathWithIndexes(std::span(zeros));
  auto values = valuesAlong(loop, deep);
  EXPECT_EQ(values->count(), 5000u);
  EXPECT_TRUE(indexPathForValues_valueKeyPath_childKey(loop, values, "name"_ns, "children"_ns)
                  ->isEqual(deep));
  loop->removeAllObjects();

  auto leaf = NSDictionary::of({{"name"_ns, "leaf"_ns}});
  EXPECT_EQ(text(valuesAlong(leaf, path({0})), " "_ns), "<null>");
  EXPECT_FALSE(indexPathForValues_valueKeyPath_childKey(leaf, values, "name"_ns, "children"_ns));
  EXPECT_TRUE(refuses([&] { valuesAlong(leaf, path({0}), "name"_ns, "name"_ns); }, {"NSString"}));
  EXPECT_TRUE(raises(NSUndefinedKeyException, [&] { valuesAlong("text"_ns, path({0})); }));
}

}  // namespace
}  // namespace qz::test
