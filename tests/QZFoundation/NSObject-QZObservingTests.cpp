#include "QZFoundation/NSObject-QZObserving.h"

#include "tests/support/Observers.h"

namespace qz::test {
namespace {

/// Follows the values and names of all Nodes under "parts".
class Follower : public Derives<Follower, NSObject> {
 public:
  static void describe(ClassDescription<Follower>& is);

  void start(NSObject* owner) {
    startObservationsForObject_key_forKeyPaths_options_context(this, owner, "parts"_ns, paths, 0,
                                                               &mark);
  }
  void end(NSObject* owner) {
    endObservationsForObject_key_forKeyPaths(this, owner, "parts"_ns, paths);
  }
  void observeValueForKeyPath_ofObject_change_context(NSString* keyPath, NSObject* object,
                                                      NSDictionary* change,
                                                      void* context) override {
    if (keyPath->isEqualToString("parts"_ns)) {
      EXPECT_EQ(context, nullptr);
      updateObservationsWithChange_forKeyPaths_options_context(this, change, paths, 0, &mark);
      return;
    }
    EXPECT_EQ(context, &mark);
    dispatchKVOWithSelector_object_keyPath_change(
        this, keyPath->isEqualToString("name"_ns) ? "named:"_sel : "valued:keyPath:change:"_sel,
        object, keyPath, change);
  }

  void named(NSObject*) { ++names; }
  void valued(NSObject* object, NSString* keyPath, NSDictionary* change) {
    EXPECT_TRUE(keyPath->isEqualToString("value"_ns));
    EXPECT_EQ(change->count(), 1u);
    last = static_cast<Node*>(object);
    ++values;
  }
  void changed() { ++plain; }
  void changedAt(NSObject*, NSString* path) { lastPath = Ref<NSString>(path); }

  int mark = 0;
  int names = 0;
  int values = 0;
  int plain = 0;
  Node* last = nullptr;
  Ref<NSString> lastPath;
  Ref<NSArray> paths = arrayOf({"name"_ns, "value"_ns});
};

void Follower::describe(ClassDescription<Follower>& is) {
  is.named("Follower")
      .method<&Follower::named>("named:")
      .method<&Follower::valued>("valued:keyPath:change:")
      .method<&Follower::changed>("changed")
      .method<&Follower::changedAt>("changed:path:");
}

TEST(NSObjectQZObserving, MembersAreFollowedAsTheyComeAndGo) {
  auto owner = make<Setting>();
  auto parts = owner->mutableArrayValueForKey("parts"_ns);
  auto follower = make<Follower>();
  std::vector<Ref<Node>> nodes;
  for (int i = 0; i < 8; ++i) nodes.push_back(make<Node>(i));
  parts->addObject(nodes[0]);
  follower->start(owner);
  std::mt19937 random(3);
  for (int step = 0; step < 400; ++step) {
    Node* node = nodes[random() % nodes.size()];
    const bool isThere = parts->containsObject(node);
    const auto operation = random() % 4;
    if (operation == 0 && !isThere) parts->addObject(node);
    if (operation == 1) parts->removeObject(node);
    if (operation == 2) owner->setParts(arrayOf({node}));  // all others go
    if (operation == 3 && !isThere && parts->count() > 0)
      parts->replaceObjectAtIndex_withObject(0, node);
    for (Node* each : nodes) {
      const int before = follower->values;
      each->setValue(step);
      ASSERT_EQ(follower->values - before, parts->containsObject(each) ? 1 : 0) << step;
    }
  }
  owner->setParts(arrayOf({nodes[3]}));
  nodes[3]->setValue_forKey("three"_ns, "name"_ns);
  EXPECT_EQ(follower->names, 1);
  nodes[3]->setValue(1);
  EXPECT_EQ(follower->last, nodes[3]);
  follower->end(owner);
  EXPECT_FALSE(detail::isObserved(owner));
  for (Node* each : nodes) EXPECT_FALSE(detail::isObserved(each));
}

TEST(NSObjectQZObserving, NothingToFollow) {
  auto owner = make<Setting>();
  auto follower = make<Follower>();
  follower->paths = nullptr;
  follower->start(owner);
  owner->setParts(NSArray::arrayWithObject(make<Node>(1)));
  owner->setParts(nullptr);
  follower->end(owner);
  EXPECT_FALSE(detail::isObserved(owner));
  // The paths may come as a Set, and a change without values has no members.
  updateObservationsWithChange_forKeyPaths_options_context(
      follower, NSDictionary::dictionary(), NSSet::setWithObject("value"_ns), 0, nullptr);
}

TEST(NSObjectQZObserving, DispatchesWithAsMuchAsTheOperationTakes) {
  auto follower = make<Follower>();
  auto node = make<Node>(1);
  for (const char* name : {"changed", "changed:path:", "unknown:"})
    dispatchKVOWithSelector_object_keyPath_change(follower, Selector::named(name), node, "key"_ns,
                                                  nullptr);
  EXPECT_EQ(follower->plain, 1);
  EXPECT_EQ(to_string(follower->lastPath), "key");
  dispatchKVOWithSelector_object_keyPath_change(nullptr, "changed"_sel, node, nullptr, nullptr);
}

}  // namespace
}  // namespace qz::test
