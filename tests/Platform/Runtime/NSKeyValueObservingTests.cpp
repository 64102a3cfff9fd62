#include "Platform/Runtime/WeakRef.h"
#include "tests/support/Observers.h"

namespace qz::test {
namespace {

constexpr auto oldAndNew = NSKeyValueObservingOptionOld | NSKeyValueObservingOptionNew;
constexpr auto prior = NSKeyValueObservingOptionPrior;
constexpr auto initial = NSKeyValueObservingOptionInitial;

void add(NSObject* object, NSObject* observer, NSString* path,
         NSKeyValueObservingOptions options = oldAndNew, void* context = nullptr) {
  object->addObserver_forKeyPath_options_context(observer, path, options, context);
}

TEST(KeyValueObserving, TellsWhatWasAskedFor) {
  const std::pair<NSKeyValueObservingOptions, Lines> cases[] = {
      {0, {"value setting"}},
      {NSKeyValueObservingOptionOld, {"value setting old=1"}},
      {oldAndNew, {"value setting new=2 old=1"}},
      {oldAndNew | initial, {"value setting new=1", "value setting new=2 old=1"}},
      {prior, {"value setting prior", "value setting"}},
      {oldAndNew | prior, {"value setting old=1 prior", "value setting new=2 old=1"}},
  };
  for (const auto& [options, lines] : cases) {
    auto node = make<Node>(1);
    auto recorder = make<Recorder>();
    add(node, recorder, "value"_ns, options);
    node->setValue_forKey(number(2), "value"_ns);
    EXPECT_EQ(recorder->lines, lines) << options;
    node->removeObserver_forKeyPath(recorder, "value"_ns);
    node->setValue(3);
    EXPECT_EQ(recorder->lines.size(), lines.size());
  }
}

TEST(KeyValueObserving, EachWayToChangeAValueIsToldOnce) {
  struct {
    const char* what;
    void (*change)(Node* node);
    std::size_t times;
  } const cases[] = {
      {"set by key, through a setter with a guard",
       [](Node* node) { node->setValue_forKey(number(5), "value"_ns); }, 1},
      {"a field set by key", [](Node* node) { node->setValue_forKey(number(5), "plain"_ns); }, 1},
      {"a field set unannounced", [](Node* node) { node->plain = 5; }, 0},
      {"by hand",
       [](Node* node) {
         node->willChangeValueForKey("plain"_ns);
         node->willChangeValueForKey(ns("value"));
         node->plain = 5;
         node->didChangeValueForKey("plain"_ns);
         node->didChangeValueForKey("value"_ns);
       },
       2},
      {"by hand around a set by key",
       [](Node* node) {
         node->willChangeValueForKey("value"_ns);
         node->setValue_forKey(number(5), "value"_ns);
         node->didChangeValueForKey("value"_ns);
       },
       1},
      {"an end without a begin", [](Node* node) { node->didChangeValueForKey("value"_ns); }, 0},
      {"a class that leaves it to its setter",
       [](Node* node) { node->setValue_forKey(number(5), "silent"_ns); }, 0},
  };
  for (const auto& each : cases) {
    auto node = make<Node>(1);
    auto recorder = make<Recorder>();
    for (NSString* key : {"value"_ns, "plain"_ns, "silent"_ns}) add(node, recorder, key, 0);
    each.change(node);
    EXPECT_EQ(recorder->lines.size(), each.times) << each.what;
  }
}

TEST(KeyValueObserving, TheChangeIsADictionary) {
  auto node = make<Node>(1);
  auto recorder = make<Recorder>();
  int context = 0;
  add(node, recorder, "next"_ns, oldAndNew, &context);
  node->setNext(nullptr);
  Ref<NSDictionary> change = recorder->last;
  EXPECT_EQ(recorder->context, &context);
  EXPECT_TRUE(change->isEqual(NSDictionary::of({{NSKeyValueChangeKindKey, number(1)},
                                                {NSKeyValueChangeNewKey, NSNull::null()},
                                                {ns("NSKeyValueChangeOldKey"), NSNull::null()}})));
  EXPECT_EQ(change->objectForKey(number(1)), nullptr);
  EXPECT_TRUE(change->mutableCopy()->isEqual(change));
}

TEST(KeyValueObserving, FunctionsAndTypedChanges) {
  auto node = make<Node>(1);
  std::vector<std::pair<int, int>> seen;
  auto token =
      observe<int>(node, "value"_ns, [&](int before, int now) { seen.emplace_back(before, now); });
  std::optional<Ref<Node>> before;
  auto nodes = observe(node, "next"_ns, oldAndNew, [&](const ObservedChange& change) {
    EXPECT_EQ(change.object, node);
    EXPECT_EQ(change.newAs<Ref<NSNumber>>(), nullptr);  // it is none
    before = change.oldAs<Ref<Node>>();
  });
  node->setValue(7);
  node->setNext(make<Node>(2));
  EXPECT_EQ(seen, (std::vector<std::pair<int, int>>{{1, 7}}));
  EXPECT_EQ(before, Ref<Node>());
  auto moved = std::move(token);
  moved.invalidate();
  node->setValue(9);
  EXPECT_EQ(seen.size(), 1u);
  EXPECT_TRUE(nodes.isActive());
  node = nullptr;
  EXPECT_FALSE(nodes.isActive());
}

TEST(KeyValueObserving, RefusesWhatCannotBe) {
  auto node = make<Node>(1);
  auto recorder = make<Recorder>();
  add(node, recorder, "value"_ns, 0, &node);
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"does not observe \"next\"", [&] { node->removeObserver_forKeyPath(recorder, "next"_ns); }},
      {"does not observe \"value\"",
       [&] { node->removeObserver_forKeyPath_context(recorder, "value"_ns, &recorder); }},
      {"does not observe", [&] { node->removeObserver_forKeyPath(node, "value"_ns); }},
      {"observer is nil", [&] { add(node, nullptr, "value"_ns); }},
      {"key path is nil", [&] { add(node, recorder, nullptr); }},
      {"empty", [&] { add(node, recorder, ""_ns); }},
      {"empty", [&] { add(node, recorder, "next..value"_ns); }},
      {"NSArray",
       [&] {
         auto shelf = make<Setting>();
         shelf->setValue_forKey(arrayOf({node}), "parts"_ns);
         add(shelf, recorder, "parts.value"_ns);
       }},
      {"NSArray", [&] { add(NSArray::array(), recorder, "count"_ns); }},
  };
  for (const auto& [reason, code] : cases) EXPECT_TRUE(refuses(code, {reason}));
  EXPECT_TRUE(raises(NSUndefinedKeyException, [&] { add(node, recorder, "nothing.value"_ns); }));
  EXPECT_TRUE(raises(NSInternalInconsistencyException,
                     [&] {
                       add(node, node, "value"_ns);  // does not handle it
                       node->setValue(2);
                     },
                     {"Node", "value"}));
  EXPECT_EQ(recorder->lines.size(), 1u) << "told before the other one raised, and of nothing else";
}

TEST(KeyValueObserving, LatestRegistrationGoesFirstAndByContext) {
  auto node = make<Node>(1);
  auto recorder = make<Recorder>();
  int a = 0;
  int b = 0;
  for (void* context : {static_cast<void*>(&a), static_cast<void*>(&b), static_cast<void*>(&a)})
    add(node, recorder, "value"_ns, 0, context);
  node->removeObserver_forKeyPath_context(recorder, "value"_ns, &b);
  node->setValue(2);
  EXPECT_EQ(recorder->lines.size(), 2u);
  EXPECT_EQ(recorder->context, &a);
  node->removeObserver_forKeyPath(recorder, "value"_ns);
  node->removeObserver_forKeyPath(recorder, "value"_ns);
  EXPECT_FALSE(detail::isObserved(node));
}

TEST(KeyValueObserving, DependentKeys) {
  auto node = make<Node>(1);
  node->setNext(make<Node>(2));
  struct {
    NSString* key;
    std::function<void()> change;
    Lines lines;
  } const cases[] = {
      // Described with dependsOn; through a path; over another key; by a class's operation.
      {"twice"_ns, [&] { node->setValue(5); }, {"twice setting new=10 old=2"}},
      {"total"_ns, [&] { node->next()->setValue(3); }, {"total setting new=8 old=7"}},
      {"total"_ns, [&] { node->setNext(make<Node>(9)); }, {"total setting new=14 old=8"}},
      {"total"_ns, [&] { node->next()->setNext(make<Node>(1)); }, {"total setting new=15 old=14"}},
      {"label"_ns, [&] { node->setValue(6); }, {"label setting new=12 old=10"}},
      {"twice"_ns,
       [&] {  // the key itself around what it depends on
         const KeyValueChange changing(node, "twice"_ns);
         node->setValue(7);
       },
       {"twice setting new=14 old=12"}},
      {"ring"_ns, [&] { node->setValue(8); }, {"ring setting new=8 old=7"}},
  };
  for (const auto& each : cases) {
    auto recorder = make<Recorder>();
    add(node, recorder, each.key);
    each.change();
    EXPECT_EQ(recorder->lines, each.lines);
    node->removeObserver_forKeyPath(recorder, each.key);
  }
  EXPECT_FALSE(detail::isObserved(node));
  EXPECT_FALSE(detail::isObserved(node->next())) << "what was observed for the sake of a key stays";
}

/// Paths of three keys over a random graph, against reading the path after every step.
TEST(KeyValueObserving, PathsFollowWhatIsReplaced) {
  std::mt19937 random(7);
  std::vector<WeakRef<Node>> all;
  const auto made = [&](int value) {
    auto node = make<Node>(value);
    all.emplace_back(node.get());
    return node;
  };
  std::vector<Ref<Node>> nodes;
  for (int i = 0; i < 6; ++i) nodes.push_back(made(i));
  const auto any = [&] { return nodes[random() % nodes.size()]; };
  const auto text = [](NSObject* value) {
    return value == NSNull::null() ? "(null)" : to_string(value);
  };
  const auto read = [&](Node* of) { return to_string(of->valueForKeyPath("next.next.value"_ns)); };

  Ref<Node> root = nodes[0];
  std::string told = read(root);
  auto token = observe(root, "next.next.value"_ns, oldAndNew, [&](const ObservedChange& change) {
    EXPECT_EQ(text(change.oldValue), told);
    told = text(change.newValue);
  });
  for (int step = 0; step < 3000; ++step) {
    const std::function<void()> changes[] = {
        [&] { any()->setNext(random() % 4 == 0 ? nullptr : any().get()); },
        [&] { any()->setValue_forKey(any(), "next"_ns); }, [&] { any()->setValue(step); },
        [&] { nodes[1 + random() % (nodes.size() - 1)] = made(step); },  // one on the way may go
    };
    changes[random() % 4]();
    ASSERT_EQ(told, read(root)) << step;
  }
  token.invalidate();
  for (Node* node : nodes) EXPECT_FALSE(detail::isObserved(node));
  for (const WeakRef<Node>& each : all)  // rings would stay
    if (const Ref<Node> node = each.load()) node->setNext(nullptr);
}

/// Applies the changes it is told of to an Array of its own.
class Mirror : public Derives<Mirror, NSObject> {
 public:
  static void describe(ClassDescription<Mirror>& is) { is.named("Mirror"); }
  void observeValueForKeyPath_ofObject_change_context(NSString*, NSObject*, NSDictionary* change,
                                                      void*) override {
    ++changes;
    const auto kind = as<NSNumber>(change->objectForKey(NSKeyValueChangeKindKey))->intValue();
    const auto now = as<NSArray>(change->objectForKey(NSKeyValueChangeNewKey));
    const auto before = as<NSArray>(change->objectForKey(NSKeyValueChangeOldKey));
    const auto places = as<NSIndexSet>(change->objectForKey(NSKeyValueChangeIndexesKey));
    ASSERT_NE(kind, 1) << "what changes elements is no setting";
    ASSERT_EQ(static_cast<bool>(before), kind != NSKeyValueChangeInsertion);
    ASSERT_EQ(static_cast<bool>(now), kind != NSKeyValueChangeRemoval);
    const auto indexes = places->indexes();
    for (std::size_t i = 0; before && i < indexes.size(); ++i)
      ASSERT_TRUE(elements->objectAtIndex(indexes[i])
                      ->isEqual(before->objectAtIndex(static_cast<std::uint32_t>(i))));
    if (kind != NSKeyValueChangeInsertion)
      for (auto each = indexes.rbegin(); each != indexes.rend(); ++each)
        elements->removeObjectAtIndex(*each);
    for (std::size_t i = 0; now && i < indexes.size(); ++i)
      elements->insertObject_atIndex(now->objectAtIndex(static_cast<std::uint32_t>(i)), indexes[i]);
  }
  Ref<NSMutableArray> elements = NSMutableArray::array();
  int changes = 0;
};

template <class Owner>
class ToMany : public ::testing::Test {};
using Owners = ::testing::Types<Setting, Accessing, Holding>;
TYPED_TEST_SUITE(ToMany, Owners);

TYPED_TEST(ToMany, MirrorFollowsEveryOperation) {
  auto owner = make<TypeParam>();
  Ref<NSMutableArray> view = owner->mutableArrayValueForKey("parts"_ns);
  auto mirror = make<Mirror>();
  add(owner, mirror, "parts"_ns);
  auto model = NSMutableArray::array();
  std::mt19937 random(11);
  const auto below = [&](std::uint32_t bound) {
    return static_cast<std::uint32_t>(random() % std::max(bound, 1U));
  };
  const auto some = [&] {
    auto list = NSMutableArray::array();
    for (std::uint32_t i = below(4); i > 0; --i)
      list->addObject(number(static_cast<int>(below(9))));
    return list;
  };
  for (int step = 0; step < 600; ++step) {
    const std::uint32_t size = model->count();
    const std::uint32_t at = below(size);
    const Ref<NSNumber> one = number(static_cast<int>(below(9)));
    const Ref<NSMutableArray> list = some();
    const NSRange range{at, below(size - at + 1)};
    const std::uint32_t other = below(size);
    const int changesBefore = mirror->changes;
    const std::function<void(NSMutableArray*)> operations[] = {
        [&](auto* array) { array->replaceObjectsInRange_withObjectsFromArray(range, list); },
        [&](auto* array) { array->addObject(one); },
        [&](auto* array) { array->insertObject_atIndex(one, at); },
        [&](auto* array) { array->addObjectsFromArray(list); },
        [&](auto* array) { array->removeObject(one); },
        [&](auto* array) { array->sortUsingSelector("compare:"_sel); },
        [&](auto* array) { step % 7 == 0 ? array->removeAllObjects() : void(); },
        // These want an element.
        [&](auto* array) { array->removeObjectAtIndex(at); },
        [&](auto* array) { array->replaceObjectAtIndex_withObject(at, one); },
        [&](auto* array) { array->exchangeObjectAtIndex_withObjectAtIndex(at, other); },
    };
    const auto operation = below(size > 0 ? 10 : 7);
    const int most = operation == 0 ? 2 : 1;
    for (NSMutableArray* array : {model.get(), view.get()}) operations[operation](array);
    ASSERT_TRUE(view->isEqual(model)) << operation;
    ASSERT_TRUE(owner->valueForKey("parts"_ns)->isEqual(model)) << operation;
    ASSERT_TRUE(mirror->elements->isEqual(model)) << operation;
    ASSERT_LE(mirror->changes - changesBefore, most) << operation;
  }
  EXPECT_TRUE(refusesRange([&] { view->removeObjectAtIndex(999); }));
  EXPECT_TRUE(refuses([&] { view->addObject(nullptr); }));
  EXPECT_TRUE(mirror->elements->isEqual(model));
}

TEST(KeyValueObserving, ArraysOfDictionariesAndWhatIsNoArray) {
  auto dictionary = make<NSMutableDictionary>();
  auto recorder = make<Recorder>();
  add(dictionary, recorder, "list"_ns);
  dictionary->mutableArrayValueForKey("list"_ns)->addObject(number(1));
  dictionary->setObject_forKey(number(2), "list"_ns);
  dictionary->removeObjectForKey("list"_ns);
  dictionary->setObject_forKey(number(3), number(4));
  dictionary->setDictionary(NSDictionary::of({{"list"_ns, number(5)}}));
  EXPECT_EQ(recorder->lines,
            (Lines{"list insertion new=(1) indexes=0", "list setting new=2 old=(1)",
                   "list setting new=(null) old=2", "list setting new=5 old=(null)"}));
  EXPECT_TRUE(
      refuses([&] { dictionary->mutableArrayValueForKey("list"_ns)->count(); }, {"NSNumber"}));
}

TEST(KeyValueObserving, OperatorsChangeWithWhatTheyAreOf) {
  auto shelf = make<Setting>();
  auto recorder = make<Recorder>();
  add(shelf, recorder, "parts.@count"_ns);
  add(shelf, recorder, "parts.@max.value"_ns);
  shelf->mutableArrayValueForKey("parts"_ns)->addObject(make<Node>(7));
  EXPECT_EQ(recorder->lines, (Lines{"parts.@count setting new=1 old=0",
                                    "parts.@max.value setting new=7 old=(null)"}));
  EXPECT_TRUE(refuses([&] { add(shelf, recorder, "@count"_ns); }));
}

TEST(KeyValueObserving, NeitherSideKeepsTheOtherAlive) {
  auto node = make<Node>(1);
  WeakRef<Node> weakNode = node;
  {
    auto recorder = make<Recorder>();
    WeakRef<Recorder> weakRecorder = recorder;
    add(node, recorder, "next.value"_ns);
    recorder = nullptr;
    EXPECT_TRUE(weakRecorder.expired());
  }
  auto inner = make<Node>(2);
  node->setNext(inner);  // nobody to tell, which is noticed
  EXPECT_FALSE(detail::isObserved(node));

  auto recorder = make<Recorder>();
  add(node, recorder, "next.value"_ns, NSKeyValueObservingOptionNew);
  node = nullptr;
  EXPECT_TRUE(weakNode.expired());
  EXPECT_FALSE(detail::isObserved(inner)) << "the path ended with its begin";
  inner->setValue(3);
  EXPECT_EQ(recorder->lines, Lines());

  // An observer that takes itself off while it is being destroyed, first or last.
  auto observed = make<Node>(1);
  { auto quitter = make<Quitter>(observed); }
  observed->setValue(2);
  EXPECT_FALSE(detail::isObserved(observed));
}

TEST(KeyValueObserving, ChangesToTheListDuringDelivery) {
  auto node = make<Node>(1);
  Lines order;
  KeyValueObservation first, second, third, added;
  const auto note = [&](const char* who) { order.emplace_back(who); };
  first = observe(node, "value"_ns, 0, [&](const ObservedChange&) {
    note("first");
    second.invalidate();
    if (!added.isActive())
      added = observe(node, "value"_ns, 0, [&](const ObservedChange&) { note("added"); });
  });
  second = observe(node, "value"_ns, 0, [&](const ObservedChange&) { note("second"); });
  third = observe(node, "value"_ns, 0, [&](const ObservedChange&) {
    note("third");
    third.invalidate();  // its own function, which goes on
    note("still third");
  });
  node->setValue(2);
  EXPECT_EQ(order, (Lines{"first", "third", "still third"}));
  order.clear();
  node->setValue(3);
  EXPECT_EQ(order, (Lines{"first", "added"}));

  // The observed Object's last owner lets go while it is told.
  Ref<Node> last = make<Node>(1);
  bool told = false;
  auto token =
      observe(last, "value"_ns, NSKeyValueObservingOptionNew, [&](const ObservedChange& change) {
        last = nullptr;
        told = change.newAs<int>() == 2 && change.object->hash() != 0;
      });
  last->setValue(2);
  EXPECT_TRUE(told);
}

TEST(KeyValueObserving, AChangeMadeByAnObserverIsAnotherChange) {
  auto node = make<Node>(1);
  auto recorder = make<Recorder>();
  auto clamp = observe<int>(node, "value"_ns, [&](int, int now) {
    if (now > 10) node->setValue(10);
  });
  add(node, recorder, "value"_ns);
  node->setValue(99);
  EXPECT_EQ(recorder->lines, (Lines{"value setting new=10 old=99", "value setting new=99 old=1"}));
}

TEST(KeyValueObserving, ExceptionsLoseNobody) {
  auto node = make<Node>(1);
  auto fails = observe(node, "value"_ns, 0, [](const ObservedChange&) {
    NSException::raise_reason(NSGenericException, "no"_ns);
  });
  auto recorder = make<Recorder>();
  add(node, recorder, "value"_ns);
  EXPECT_TRUE(raises(NSGenericException, [&] { node->setValue(2); }, {"no"}));
  EXPECT_TRUE(refusesRange([&] {
    const KeyValueChange changing(node, "value"_ns);
    NSException::raise_reason(NSRangeException, "while changing"_ns);
  }));
  EXPECT_EQ(recorder->lines.size(), 2u);
  // An observer that raises before the change stops it, and nothing is left under way.
  auto objects = observe(node, "name"_ns, prior, [](const ObservedChange&) {
    NSException::raise_reason(NSGenericException, "not now"_ns);
  });
  EXPECT_TRUE(raises(NSGenericException, [&] { node->setValue_forKey("x"_ns, "name"_ns); }));
  EXPECT_EQ(node->valueForKey("name"_ns)->hash(), ""_ns->hash());
  objects.invalidate();
  add(node, recorder, "name"_ns, 0);
  node->setValue_forKey("x"_ns, "name"_ns);
  EXPECT_EQ(recorder->lines.back(), "name setting");
}

}  // namespace
}  // namespace qz::test
