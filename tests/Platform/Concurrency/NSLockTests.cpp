#include "Platform/Concurrency/NSLock.h"

#include "Platform/Concurrency/ObjectLock.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

template <class F>
auto elsewhere(F function) {
  decltype(function()) result{};
  std::thread([&] { result = function(); }).join();
  return result;
}

/// Whether another thread gets the lock, and gives it back.
template <class Lock>
bool isFree(const Ref<Lock>& lock) {
  return elsewhere([&] { return lock->lockBeforeDate(nullptr) && (lock->unlock(), true); });
}

TEST(NSLock, ExcludesAndRefusesMisuse) {
  auto lock = make<NSLock>();
  lock->setName("updates"_ns);
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [&] { lock->unlock(); }, {"updates"}));
  lock->lock();
  EXPECT_FALSE(lock->tryLock());
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [&] { lock->lock(); }));
  EXPECT_FALSE(elsewhere([&] { return lock->tryLock(); }));
  EXPECT_FALSE(elsewhere([&] { return lock->lockBeforeDate(inSeconds(0.01)); }));
  EXPECT_TRUE(elsewhere([&] {
    return static_cast<bool>(raises(NSInternalInconsistencyException, [&] { lock->unlock(); }));
  }));
  lock->unlock();
  EXPECT_TRUE(isFree(lock));
  std::unique_lock guard(*lock, std::try_to_lock);
  EXPECT_TRUE(guard.owns_lock());
}

TEST(NSLock, RecursiveOnesCount) {
  auto lock = make<NSRecursiveLock>();
  lock->lock();
  EXPECT_TRUE(lock->tryLock());
  EXPECT_TRUE(send<bool>(lock, "lockBeforeDate:"_sel, NSDate::distantFuture()));
  lock->unlock();
  lock->unlock();
  EXPECT_FALSE(elsewhere([&] { return lock->tryLock(); }));
  lock->unlock();
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [&] { lock->unlock(); }));
  EXPECT_TRUE(isFree(lock));
}

TEST(NSLock, ConditionsWakeOneOrAllOrTimeOut) {
  auto condition = make<NSCondition>();
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [&] { condition->wait(); }));
  condition->lock();
  EXPECT_FALSE(condition->waitUntilDate(NSDate::distantPast()));
  EXPECT_FALSE(condition->waitUntilDate(inSeconds(0.01)));
  EXPECT_FALSE(condition->tryLock());  // a wait that is over has the lock again
  condition->unlock();

  int turns = 0;
  int woken = 0;
  const auto wait = [&] {
    condition->lock();
    while (turns == 0) condition->wait();
    --turns;
    ++woken;
    condition->unlock();
  };
  std::thread one(wait);
  std::thread two(wait);
  condition->lock();
  turns = 1;
  condition->signal();
  condition->unlock();
  condition->lock();
  turns += 1;
  condition->broadcast();
  condition->unlock();
  one.join();
  two.join();
  EXPECT_EQ(woken, 2);
}

TEST(NSLock, ConditionLocksHandOverInTurns) {
  auto lock = NSConditionLock::initWithCondition(0);
  EXPECT_FALSE(lock->tryLockWhenCondition(1));
  EXPECT_FALSE(lock->lockWhenCondition_beforeDate(1, inSeconds(0.01)));
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [&] { lock->unlock(); }));
  std::string text;
  std::thread other([&] {
    for (int i = 0; i < 50; ++i) {
      lock->lockWhenCondition(1);
      text += 'b';
      lock->unlockWithCondition(0);
    }
  });
  for (int i = 0; i < 50; ++i) {
    lock->lockWhenCondition(0);
    text += 'a';
    lock->unlockWithCondition(1);
  }
  other.join();
  EXPECT_THAT(text, ::testing::MatchesRegex("(ab)+"));
  EXPECT_EQ(text.size(), 100u);
  EXPECT_TRUE(lock->tryLock());
  lock->unlock();
}

TEST(NSLock, EveryObjectHasOneOfItsOwn) {
  auto object = make<NSObject>();
  auto other = make<NSObject>();
  int count = 0;
  const auto work = [&] {
    for (int i = 0; i < 1000; ++i) {
      ObjectLock outer(object);
      ObjectLock inner(object);  // recursive
      ++count;
    }
  };
  { const std::jthread one(work), two(work); }
  EXPECT_EQ(count, 2000);
  ObjectLock held(object);
  EXPECT_TRUE(elsewhere([&] {
    ObjectLock notInTheWay(other);
    ObjectLock ofNil(nullptr);
    return true;
  }));
}

}  // namespace
}  // namespace qz::test
