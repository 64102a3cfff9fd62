// Objects that make life hard for a hash table.
#pragma once

#include "tests/support/Test.h"

namespace qz::test {

/// A key with its own ideas of hash and equality.
class Key : public Derives<Key, NSObject> {
 public:
  static void describe(ClassDescription<Key>& is) { is.named("TestKey"); }

  explicit Key(int number, std::size_t hash) : number_(number), hash_(hash) { ++alive; }
  ~Key() override { --alive; }

  Ref<NSObject> copy() const override { return Ref<NSObject>(const_cast<Key*>(this)); }
  std::size_t hash() const override { return hash_; }
  bool isEqual(NSObject* other) const override {
    if (whenCompared) whenCompared();
    return isKind<Key>(other) && static_cast<Key*>(other)->number_ == number_;
  }

  std::function<void()> whenCompared;
  static inline int alive = 0;

 private:
  int number_;
  std::size_t hash_;
};

/// Runs something when it is destroyed.
class Farewell : public Derives<Farewell, NSObject> {
 public:
  static void describe(ClassDescription<Farewell>& is) { is.named("TestFarewell"); }
  explicit Farewell(std::function<void()> last) : last_(std::move(last)) {}
  ~Farewell() override { last_(); }

 private:
  std::function<void()> last_;
};

}  // namespace qz::test
