// Eight threads at the run-time at once. What can go wrong here shows under the thread sanitizer,
// or as a wrong answer.
#include "Platform/Runtime/WeakRef.h"
#include "tests/support/Person.h"
#include "tests/support/Test.h"
#include "tests/support/Threads.h"

namespace qz::test {
namespace {

constexpr int threadCount = 8;

template <int N>
class Late : public Derives<Late<N>, NSObject> {
 public:
  static void describe(ClassDescription<Late>& is) {
    static const std::string name = "Late" + std::to_string(N);
    is.named(name.c_str()).template method<&Late::which>("which").initialize([] { ++starts; });
  }
  int which() const { return N; }
  static inline std::atomic<int> starts{0};
};

template <int... N>
int askEach(std::integer_sequence<int, N...>) {
  return (send<int>(make<Late<N>>(), "which"_sel) + ...);
}
template <int... N>
int startsOf(std::integer_sequence<int, N...>) {
  return (Late<N>::starts + ...);
}

// More classes than a look-up table starts with, each answering the same Selector for itself.
TEST(ThreadSafety, ClassesAreMadeOnceWhileOthersDispatch) {
  constexpr auto each = std::make_integer_sequence<int, 40>();
  inThreads(threadCount, [&](int) { EXPECT_EQ(askEach(each), 40 * 39 / 2); });
  EXPECT_EQ(startsOf(each), 40);
}

class Switch : public Derives<Switch, NSObject> {
 public:
  static void describe(ClassDescription<Switch>& is) {
    is.named("Switch").method<&Switch::one>("which").method<&Switch::two>("other");
  }
  int one() const { return 1; }
  int two() const { return 2; }
};

TEST(ThreadSafety, ImplementationsAreReplacedWhileOthersSend) {
  std::atomic<bool> stop{false};
  Class* aClass = classOf<Switch>();
  const auto one = aClass->instanceMethod("which"_sel)->imp;
  const auto two = aClass->instanceMethod("other"_sel)->imp;
  inThreads(threadCount, [&](int t) {
    auto object = make<Switch>();
    if (t == 0) {
      for (int i = 0; i < 300; ++i) {
        aClass->replaceInstanceMethod("which"_sel, i % 2 == 0 ? two : one);
        const int answer = send<int>(object, "which"_sel);
        EXPECT_EQ(answer, i % 2 == 0 ? 2 : 1);  // this thread sees its own change at once
      }
      stop = true;
      return;
    }
    while (!stop) {
      const int answer = send<int>(object, "which"_sel);
      EXPECT_TRUE(answer == 1 || answer == 2);
      EXPECT_FALSE(object->respondsToSelector(Selector::named("no" + std::to_string(t))));
      EXPECT_EQ(Class::named("Switch"), aClass);
    }
  });
}

int ageOf(Person* person) { return person->age; }

TEST(ThreadSafety, KeysAreReadWhileClassesAreExtended) {
  auto ann = make<Person>("Ann"_ns, 30);
  ann->partner = make<Person>("Bob"_ns, 40);
  inThreads(threadCount, [&](int t) {
    for (int i = 0; i < 400; ++i) {
      EXPECT_EQ(as<NSNumber>(ann->valueForKeyPath("partner.age"_ns))->intValue(), 40);
      if (i % 100 == t) {
        static std::vector<std::string> names(64);
        auto& name = names[static_cast<std::size_t>(t * 8 + i / 100)];
        name = "added" + std::to_string(t) + std::to_string(i);
        extend<Person>("Threads").property<&ageOf>(name.c_str());
        EXPECT_EQ(to_string(ann->valueForKey(ns(name))), "30");
      }
    }
  });
}

/// Looks at itself while it is being destroyed.
class Dying : public Derives<Dying, NSObject> {
 public:
  static void describe(ClassDescription<Dying>& is) { is.named("Dying"); }
  explicit Dying(WeakRef<Dying>* self) : self_(self) { *self_ = WeakRef<Dying>(this); }
  ~Dying() override {
    EXPECT_EQ(self_->load(), nullptr);
    Ref<Dying> again(this);  // must not destroy the Object a second time
    WeakRef<Dying> late(this);
    EXPECT_TRUE(late.expired());
    EXPECT_EQ(send<std::size_t>(this, "hash"_sel), hash());
  }

 private:
  WeakRef<Dying>* self_;
};

TEST(WeakRef, DestructorsMayUseTheObject) {
  WeakRef<Dying> weak;
  { auto dying = make<Dying>(&weak); }
  EXPECT_TRUE(weak.expired());
}

TEST(WeakRef, LoadsRaceWithTheLastRelease) {
  for (int round = 0; round < 200; ++round) {
    auto strong = make<Person>("Ann"_ns, round);
    const WeakRef<Person> weak(strong);
    std::atomic<int> found{0};
    inThreads(threadCount, [&](int t) {
      if (t == 0) {
        strong = nullptr;
        return;
      }
      for (int i = 0; i < 20; ++i) {
        WeakRef<Person> mine(weak);
        if (Ref<Person> alive = mine.load()) {
          EXPECT_EQ(alive->age, round);
          ++found;
        }
      }
    });
    EXPECT_TRUE(weak.expired());
  }
}

}  // namespace
}  // namespace qz::test
