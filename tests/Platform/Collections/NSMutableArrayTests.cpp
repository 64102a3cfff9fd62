// What every kind of MutableArray does: the library's, one of a derived class that uses the storage
// it inherits, and one that overrides the primitives.
#include "Platform/Collections/NSPredicate.h"
#include "tests/Platform/Collections/HashedKeys.h"
#include "tests/support/Holder.h"
#include "tests/support/Letters.h"

namespace qz::test {
namespace {

class Titled : public Derives<Titled, NSMutableArray> {
 public:
  static void describe(ClassDescription<Titled>& is) {
    is.named("Titled").field<&Titled::title>("title");
  }
  std::string title = "none";
};

class Deck : public Derives<Deck, NSMutableArray> {
 public:
  static void describe(ClassDescription<Deck>& is) { is.named("Deck"); }
  std::uint32_t count() const override { return static_cast<std::uint32_t>(cards_.size()); }
  Ref<NSObject> objectAtIndex(std::uint32_t index) const override { return cards_[check(index)]; }
  void insertObject_atIndex(NSObject* object, std::uint32_t index) override {
    if (object == nullptr) detail::raise(NSInvalidArgumentException, "nil");
    if (index != count()) check(index);
    cards_.insert(cards_.begin() + index, object);
    didChange();
  }
  void removeObjectAtIndex(std::uint32_t index) override {
    const Ref<NSObject> removed = cards_[check(index)];
    cards_.erase(cards_.begin() + index);
    didChange();
  }
  void replaceObjectAtIndex_withObject(std::uint32_t index, NSObject* object) override {
    if (object == nullptr) detail::raise(NSInvalidArgumentException, "nil");
    const Ref<NSObject> replaced = std::exchange(cards_[check(index)], Ref<NSObject>(object));
    didChange();
  }

 private:
  std::uint32_t check(std::uint32_t index) const {
    if (index >= count()) detail::raiseIndex("Deck", index, count());
    return index;
  }
  std::vector<Ref<NSObject>> cards_;
};

template <class Kind>
using EveryMutableArray = MutableArrayOf<Kind>;
using Kinds = ::testing::Types<NSMutableArray, Titled, Deck>;
TYPED_TEST_SUITE(EveryMutableArray, Kinds);

TYPED_TEST(EveryMutableArray, AddsRemovesAndReplaces) {
  auto array = this->of("abc");
  array->replaceObjectAtIndex_withObject(1, "y"_ns);
  array->exchangeObjectAtIndex_withObjectAtIndex(0, 1);
  array->addObjectsFromArray(array);
  EXPECT_EQ(text(array), "yacyac");
  array->replaceObjectsInRange_withObjectsFromArray({1, 4}, array);
  EXPECT_EQ(text(array), "yyacyacc");
  array->replaceObjectsInRange_withObjectsFromArray({1, 6}, arrayOf({"q"_ns}));
  EXPECT_EQ(text(array), "yqc");
  array->setArray(array);
  array->removeLastObject();
  EXPECT_EQ(text(array), "yq");
  array->setArray(this->of("mn"));
  EXPECT_EQ(text(array), "mn");
}

TYPED_TEST(EveryMutableArray, RemovesEveryEqualElement) {
  auto array = this->of("abacada");
  array->removeObject(array->objectAtIndex(0).get());
  array->removeObjectIdenticalTo("b"_ns);  // equal only
  array->removeObjectIdenticalTo(array->objectAtIndex(2).get());
  EXPECT_EQ(text(array), "bc");
  array = this->of("the quick brown fox");
  array->removeObjectsInArray(this->of("aeiou"));
  EXPECT_EQ(text(array), "th qck brwn fx");
  array->removeObjectsInArray(this->of("abcdefghijklm nopqrstu"));
  EXPECT_EQ(text(array), "wx");
  array->filterUsingPredicate(
      NSPredicate::predicateWithBlock([](NSObject* each) { return to_string(each) > "w"; }));
  EXPECT_EQ(text(array), "x");
}

TYPED_TEST(EveryMutableArray, RefusesWithoutChanging) {
  auto array = this->of("abc");
  const std::function<void()> nils[] = {
      [&] { array->addObject(nullptr); },
      [&] { array->insertObject_atIndex(nullptr, 0); },
      [&] { array->replaceObjectAtIndex_withObject(0, nullptr); },
  };
  for (const auto& code : nils) EXPECT_TRUE(refuses(code));
  const std::function<void()> beyond[] = {
      [&] { array->insertObject_atIndex("x"_ns, 4); },
      [&] { array->removeObjectAtIndex(3); },
      [&] { array->replaceObjectAtIndex_withObject(3, "x"_ns); },
      [&] { array->exchangeObjectAtIndex_withObjectAtIndex(0, 3); },
      [&] { array->removeObjectsInRange(NSMakeRange(2, 2)); },
      [&] { array->removeObject_inRange("c"_ns, NSMakeRange(2, 2)); },
      [&] { array->insertObjectsFromArray_atIndex(array, 4); },
      [&] { array->replaceObjectsInRange_withObjectsFromArray(NSMakeRange(4, 0), array); },
      [&] {
        array->replaceObjectsInRange_withObjectsFromArray_range({0, 1}, array, {2, 2});
      },
  };
  for (const auto& code : beyond) EXPECT_TRUE(refusesRange(code)) << (&code - beyond);
  EXPECT_TRUE(raises(NSGenericException, [&] {
    array->filterUsingPredicate(NSPredicate::predicateWithBlock(
        [](NSObject*) -> bool { detail::raise(NSGenericException, "no"); }));
  }));
  EXPECT_EQ(text(array), "abc");
  EXPECT_TRUE(refusesRange([&] { this->of("")->removeLastObject(); }));
}

TYPED_TEST(EveryMutableArray, SortsInPlaceOrNotAtAll) {
  auto array = this->of("the quick brown fox jumps");
  int left = 30;
  EXPECT_THROW(array->sortUsingComparator([&](NSObject* a, NSObject* b) {
    if (--left == 0) throw 1;
    return send<NSComparisonResult>(b, "compare:"_sel, a);
  }),
               int);
  EXPECT_EQ(text(array), "the quick brown fox jumps");
  EXPECT_TRUE(raises(NSGenericException, [&] {
    array->sortUsingComparator([&](NSObject*, NSObject*) {
      array->removeAllObjects();
      return NSOrderedDescending;
    });
  }));
  EXPECT_EQ(array->count(), 0u);
  array->addObjectsFromArray(this->of("quicksort"));
  array->sortUsingSelector("compare:"_sel);
  EXPECT_EQ(text(array), "cikoqrstu");
  array->sortUsingFunction_context(
      [](NSObject* a, NSObject* b, void*) {
        return send<NSComparisonResult>(b, "compare:"_sel, a);
      },
      nullptr);
  EXPECT_EQ(text(array), "utsrqokic");
}

TYPED_TEST(EveryMutableArray, NoticesAChangeDuringAWalk) {
  const std::function<void(NSMutableArray*)> changes[] = {
      [](auto* array) { array->addObject("x"_ns); },
      [](auto* array) { array->removeAllObjects(); },
      [](auto* array) { array->removeObjectAtIndex(0); },
      [](auto* array) { array->replaceObjectAtIndex_withObject(0, "x"_ns); },
      [](auto* array) { array->sortUsingSelector("compare:"_sel); },
      [](auto* array) {
        for (int i = 0; i < 100; ++i) array->addObject("y"_ns);
      },
  };
  for (const auto& change : changes) {
    auto array = this->of("cba");
    EXPECT_TRUE(raises(NSGenericException, [&] {
      for ([[maybe_unused]] NSObject* each : array) change(array);
    }));
    array = this->of("cba");
    auto enumerator = array->reverseObjectEnumerator();
    enumerator->nextObject();
    change(array);
    EXPECT_TRUE(raises(NSGenericException, [&] { enumerator->nextObject(); }));
  }
}

TYPED_TEST(EveryMutableArray, IsInOrderWhenAnElementGoes) {
  Ref<NSMutableArray> array = make<TypeParam>();
  std::vector<std::string> seen;
  const auto add = [&](std::string_view name) {
    array->addObject(make<Farewell>([&seen, &array, name] {
      seen.push_back(std::string(name) + std::to_string(array->count()));
      if (name == "more") array->addObject("x"_ns);
    }));
  };
  for (auto name : {"a", "b", "c", "d", "more", "f"}) add(name);
  array->removeObjectAtIndex(0);
  array->replaceObjectAtIndex_withObject(0, "x"_ns);
  array->removeObjectsInRange({1, 1});
  array->filterUsingPredicate(NSPredicate::predicateWithValue(false));
  EXPECT_EQ(seen.size(), 6u);
  EXPECT_EQ(seen[0] + seen[1] + seen[2], "a5b5c4");
  EXPECT_EQ(text(array), "x");
}

TYPED_TEST(EveryMutableArray, DoesAsAVectorDoes) {
  std::mt19937 random(7);
  const auto pick = [&](std::size_t below) {
    return static_cast<std::uint32_t>(random() % (below + 1));
  };
  Ref<NSMutableArray> array = make<TypeParam>();
  std::string model;
  for (int step = 0; step < 3000; ++step) {
    const char letter = static_cast<char>('a' + pick(25));
    const auto object = letters({&letter, 1})[0];
    const std::uint32_t at = pick(model.size());
    const std::uint32_t length = pick(std::min<std::size_t>(model.size() - at, 9));
    const NSRange range{at, length};
    const auto other = this->of("12345");
    const std::function<void()> operations[] = {
        [&] { array->addObject(object), model += letter; },
        [&] { array->insertObject_atIndex(object, at), model.insert(at, 1, letter); },
        [&] { array->removeObjectsInRange(range), model.erase(at, length); },
        [&] { array->removeObject(object), std::erase(model, letter); },
        [&] { array->insertObjectsFromArray_atIndex(this->of("xy"), at), model.insert(at, "xy"); },
        [&] {
          array->replaceObjectsInRange_withObjectsFromArray(range, other);
          model.replace(at, length, "12345");
        },
        [&] {
          array->replaceObjectsInRange_withObjectsFromArray_range(range, other, {1, 3});
          model.replace(at, length, "234");
        },
        [&] {
          const auto end = model.begin() + at + length;
          array->removeObject_inRange(object, range);
          model.erase(std::remove(model.begin() + at, end, letter), end);
        },
    };
    operations[pick(7)]();
    ASSERT_EQ(text(array), model) << "step " << step;
  }
}

TEST(NSMutableArray, IsMadeByClassAndTakesAnyHint) {
  auto titled = send<Ref<NSMutableArray>>(classOf<Titled>(), "arrayWithObject:"_sel, "a"_ns);
  EXPECT_TRUE(isKind<Titled>(titled.get()));
  EXPECT_EQ(text(titled), "a");
  auto hinted = NSMutableArray::arrayWithCapacity(0xFFFFFFFF);
  hinted->addObject("b"_ns);
  EXPECT_EQ(hinted->count(), 1u);
}

TEST(NSMutableArray, KeepsAnElementAliveThatLeavesDuringItsOwnMessage) {
  auto family = NSMutableArray::array();
  for (int i = 0; i < 3; ++i) {
    auto each = make<Holder>(nullptr, i);
    each->whenRead = [&family, self = each.get()] { family->removeObjectIdenticalTo(self); };
    family->addObject(each);
  }
  EXPECT_TRUE(
      raises(NSGenericException, [&] { family->makeObjectsPerformSelector("number"_sel); }));
  EXPECT_EQ(family->count(), 2u);
}

}  // namespace
}  // namespace qz::test
