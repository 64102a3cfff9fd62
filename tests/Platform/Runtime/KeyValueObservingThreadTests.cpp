// Observing from several threads at a time: meant for the thread sanitizer.
#include "tests/support/Observers.h"
#include "tests/support/Threads.h"

namespace qz::test {
namespace {

TEST(KeyValueObservingThreads, AThreadMayEndInTheMiddleOfChanges) {
  auto node = make<Node>(0);
  int told = 0;
  auto token = observe(node, "value"_ns, 0, [&](const ObservedChange&) { ++told; });
  struct Late {
    ~Late() { node->setValue(2); }
    Node* node;
  };
  inThreads(1, [&](int) {
    thread_local Late late{node};  // made before what the thread keeps of changes, gone after it
    static_cast<void>(late);
    node->setValue(1);
  });
  EXPECT_EQ(told, 2);
  inThreads(1, [&](int) { node->willChangeValueForKey("value"_ns); });
  // Its stack of changes may lie where the last thread's did, which ended nothing.
  inThreads(1, [&](int) { node->setValue(3); });
  EXPECT_EQ(told, 3);
}

TEST(KeyValueObservingThreads, ObserversComeAndGoWhileOneThreadChanges) {
  auto node = make<Node>(0);
  node->setNext(make<Node>(0));
  std::atomic<bool> changing{true};
  std::atomic<int> told{0};
  std::thread changer([&] {
    for (int i = 1; changing; ++i) {
      node->setValue(i);
      node->next()->setValue(i);
    }
  });
  inThreads(3, [&](int seed) {
    std::mt19937 random(static_cast<unsigned>(seed));
    for (int i = 0; i < 400; ++i) {
      // No values: reading them here would race with the thread that changes them.
      auto token = observe(node, random() % 2 == 0 ? "value"_ns : "twice"_ns, 0,
                           [&](const ObservedChange&) { ++told; });
      auto dying = make<Recorder>();
      node->addObserver_forKeyPath_options_context(dying, "value"_ns, 0, nullptr);
      if (random() % 2 == 0) node->removeObserver_forKeyPath(dying, "value"_ns);
      if (random() % 4 == 0) std::this_thread::yield();
    }
  });
  const int before = told;
  auto last = observe(node, "value"_ns, 0, [&](const ObservedChange&) { ++told; });
  while (told == before) std::this_thread::yield();
  changing = false;
  changer.join();
  last.invalidate();
  node->setValue(0);  // the observers that died are noticed now at the latest
  EXPECT_FALSE(detail::isObserved(node));
}

TEST(KeyValueObservingThreads, ObservedOnesDieElsewhere) {
  // What one thread observes is let go by another at any moment.
  inThreads(3, [&](int seed) {
    std::mt19937 random(static_cast<unsigned>(seed));
    for (int round = 0; round < 200; ++round) {
      Ref<Node> root = make<Node>(0);
      root->setNext(make<Node>(1));
      auto token = observe(root, "next.value"_ns, 0, [](const ObservedChange&) {});
      std::thread other([inner = root->next(), mine = std::move(root)]() mutable {
        mine = nullptr;
        inner->setValue(2);
        inner = nullptr;
      });
      if (random() % 2 == 0) token.invalidate();
      other.join();
      EXPECT_FALSE(token.isActive());
    }
  });
}

}  // namespace
}  // namespace qz::test
