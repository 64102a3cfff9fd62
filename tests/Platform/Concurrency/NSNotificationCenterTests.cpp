#include "Platform/Concurrency/NSNotificationCenter.h"

#include "tests/support/Test.h"
#include "tests/support/Threads.h"

namespace qz::test {
namespace {

/// Writes down what it is told, and then does something.
class Listener : public Derives<Listener, NSObject> {
 public:
  static void describe(ClassDescription<Listener>& is) {
    is.named("Listener").method<&Listener::hear>("hear:");
  }
  explicit Listener(std::string itsName = "", std::string* itsLog = nullptr)
      : name(std::move(itsName)), log(itsLog) {}
  void hear(NSNotification* notification) {
    ++heard;
    if (log != nullptr) *log += name;
    last = Ref<NSNotification>(notification);
    if (then) then();
  }

  std::string name;
  std::string* log;
  int heard = 0;
  Ref<NSNotification> last;
  std::function<void()> then;
};

class NSNotificationCenterTest : public ::testing::Test {
 protected:
  void add(NSObject* observer, NSString* name, NSObject* object) {
    center->addObserver_selector_name_object(observer, "hear:"_sel, name, object);
  }
  void post(NSString* name, NSObject* object = nullptr) {
    center->postNotificationName_object(name, object);
  }
  std::string log;
  Ref<NSNotificationCenter> center = make<NSNotificationCenter>();
  Ref<NSObject> sender = make<NSObject>();
  Ref<NSObject> stranger = make<NSObject>();
};

TEST_F(NSNotificationCenterTest, FiltersByNameAndSenderInTheOrderOfAdding) {
  std::vector<Ref<Listener>> listeners;
  for (const char* name : {"a", "b", "c", "d", "e"})
    listeners.push_back(make<Listener>(name, &log));
  add(listeners[0], nullptr, sender);
  add(listeners[1], "Saved"_ns, nullptr);
  add(listeners[2], nullptr, nullptr);
  add(listeners[3], "Saved"_ns, sender);
  add(listeners[4], ns("Saved"), sender);
  const std::vector<std::tuple<NSString*, NSObject*, std::string>> cases{
      {"Saved"_ns, sender, "abcde"}, {"Saved"_ns, stranger, "bc"}, {"Closed"_ns, nullptr, "c"}};
  for (const auto& [name, from, expected] : cases) {
    log.clear();
    post(name, from);
    EXPECT_EQ(log, expected) << name;
  }
}

TEST_F(NSNotificationCenterTest, HandsOverTheNotification) {
  auto listener = make<Listener>();
  add(listener, "Saved"_ns, nullptr);
  auto info = NSDictionary::dictionaryWithObject_forKey("x"_ns, "path"_ns);
  center->postNotificationName_object_userInfo("Saved"_ns, sender, info);
  auto other = NSNotification::notificationWithName_object_userInfo("Saved"_ns, sender, info);
  EXPECT_TRUE(other->isEqual(listener->last));
  center->postNotification(other);
  EXPECT_EQ(listener->last, other);
}

TEST_F(NSNotificationCenterTest, RemovesWhatWasAskedFor) {
  auto one = make<Listener>("1", &log);
  auto two = make<Listener>("2", &log);
  for (NSObject* each : {one.get(), two.get(), one.get()}) {
    add(each, "A"_ns, nullptr);
    add(each, "A"_ns, sender);
    add(each, "B"_ns, sender);
  }
  center->removeObserver_name_object(one, "A"_ns, sender);
  post("A"_ns, sender);
  EXPECT_EQ(log, "1221");
  log.clear();
  center->removeObserver_name_object(one, nullptr, sender);
  post("B"_ns, sender);
  post("A"_ns);
  EXPECT_EQ(log, "2121");
  log.clear();
  center->removeObserver(one);
  center->removeObserver(one);
  center->removeObserver(nullptr);
  post("A"_ns);
  EXPECT_EQ(log, "2");
}

TEST_F(NSNotificationCenterTest, ChangesWhileTelling) {
  auto first = make<Listener>("1", &log);
  auto second = make<Listener>("2", &log);
  auto third = make<Listener>("3", &log);
  auto late = make<Listener>("4", &log);
  for (NSObject* each : {first.get(), second.get(), third.get()}) add(each, "A"_ns, nullptr);
  bool isFirst = true;
  first->then = [&] {
    if (!std::exchange(isFirst, false)) return;
    center->removeObserver(second);
    add(late, "A"_ns, nullptr);
    post("A"_ns);  // told in full before the rest is told of the first
    third = nullptr;
  };
  post("A"_ns);
  EXPECT_EQ(log, "1134");
  log.clear();
  post("A"_ns);
  EXPECT_EQ(log, "14");
}

TEST_F(NSNotificationCenterTest, ForgetsTheDead) {
  for (int i = 0; i < 10'000; ++i) {
    auto observer = make<Listener>();
    auto from = make<NSObject>();
    add(observer, "A"_ns, i % 2 == 0 ? from.get() : nullptr);
    if (i % 3 == 0) post("A"_ns, from);
  }
  // An Object in the place of one that is gone is another one.
  auto listener = make<Listener>();
  for (int i = 0; i < 100; ++i) {
    add(listener, "B"_ns, make<NSObject>());
    post("B"_ns, make<NSObject>());
  }
  EXPECT_EQ(listener->heard, 0);
}

TEST_F(NSNotificationCenterTest, FunctionsAreToldWhileTheirTokenLives) {
  int told = 0;
  auto alive = std::make_shared<int>();
  Ref<NSNotificationToken> token =
      center->observe("A"_ns, nullptr, [&told, alive](NSNotification*) { ++told; });
  post("A"_ns);
  EXPECT_EQ(told, 1);
  token = nullptr;
  EXPECT_EQ(alive.use_count(), 1);
  post("A"_ns);
  EXPECT_EQ(told, 1);
  // Letting go of itself while it is told.
  token = center->observe("A"_ns, nullptr, [&](NSNotification*) {
    token = nullptr;  // the centre keeps it until this returns
    ++told;
  });
  post("A"_ns);
  post("A"_ns);
  EXPECT_EQ(told, 2);
}

TEST_F(NSNotificationCenterTest, ExceptionsReachThePoster) {
  auto first = make<Listener>("1", &log);
  auto second = make<Listener>("2", &log);
  add(first, "A"_ns, nullptr);
  add(second, "A"_ns, nullptr);
  first->then = [] { throw std::runtime_error("no"); };
  EXPECT_THROW(post("A"_ns), std::runtime_error);
  EXPECT_EQ(log, "1");
  first->then = nullptr;
  post("A"_ns);
  EXPECT_EQ(log, "112");
}

TEST_F(NSNotificationCenterTest, RefusesNil) {
  EXPECT_TRUE(refuses([&] { add(nullptr, "A"_ns, nullptr); }));
  EXPECT_TRUE(refuses(
      [&] { center->addObserver_selector_name_object(sender, Selector(), "A"_ns, nullptr); }));
  EXPECT_TRUE(refuses([&] { center->postNotification(nullptr); }));
  EXPECT_TRUE(refuses([&] { post(nullptr); }));
  EXPECT_TRUE(refuses([&] { (void)center->observe("A"_ns, nullptr, nullptr); }));
}

// Posting, adding, removing and dying on several threads; the thread sanitizer watches.
TEST_F(NSNotificationCenterTest, AnyThread) {
  std::atomic<int> told{0};
  Ref<NSNotificationToken> lasting =
      center->observe("A"_ns, nullptr, [&](NSNotification*) { ++told; });
  constexpr int rounds = 300;
  inThreads(4, [&](int t) {
    for (int i = 0; i < rounds; ++i) {
      if (t % 2 == 0) {
        post("A"_ns, sender);
        continue;
      }
      Ref<NSNotificationToken> brief =
          center->observe(i % 2 == 0 ? "A"_ns : nullptr, i % 3 == 0 ? sender.get() : nullptr,
                          [](NSNotification*) {});
      if (i % 5 == 0) center->removeObserver(brief);
    }
  });
  EXPECT_EQ(told, 2 * rounds);
}

}  // namespace
}  // namespace qz::test
