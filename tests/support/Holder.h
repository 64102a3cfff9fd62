// Elements for tests of Arrays: Objects that answer something of each sort, and count how often
// they are asked.
#pragma once

#include "tests/support/Letters.h"

namespace qz::test {

/// Holds a value, under several keys.
class Holder : public Derives<Holder, NSObject> {
 public:
  static void describe(ClassDescription<Holder>& is) {
    is.named("Holder")
        .method<&Holder::value>("value")
        .method<&Holder::number>("number")
        .method<&Holder::huge>("huge")
        .method<&Holder::trouble>("trouble")
        .method<&Holder::valueOr>("valueOr:")
        .method<&Holder::isAbove>("isAbove:")
        .method<&Holder::takeNote>("takeNote");
  }
  explicit Holder(NSObject* held, int itsNumber = 0) : held_(held), number_(itsNumber) {}

  Ref<NSObject> value() {
    ++reads;
    return held_;
  }
  int number() {
    ++reads;
    if (whenRead) whenRead();
    return number_;
  }
  std::uint64_t huge() const { return ~std::uint64_t{0}; }
  Ref<NSObject> trouble() const { detail::raise(NSGenericException, "trouble"); }
  Ref<NSObject> valueOr(NSObject* other) const { return held_ ? held_ : Ref<NSObject>(other); }
  /// Not a truth value: how far above.
  int isAbove(NSNumber* other) const { return number_ - (other ? other->intValue() : 0); }
  void takeNote() {}

  int reads = 0;
  std::function<void()> whenRead;

 private:
  Ref<NSObject> held_;
  int number_;
};

/// Has a way of its own to answer for a key.
class Oracle : public Derives<Oracle, Holder> {
 public:
  static void describe(ClassDescription<Oracle>& is) { is.named("Oracle"); }
  using Derives::Derives;
  Ref<NSObject> valueForKey(NSString* key) override {
    if (key->isEqualToString("number"_ns)) return NSNumber::numberWithInt(1000);
    return Derives::valueForKey(key);
  }
};

}  // namespace qz::test
