// A Dictionary as an application makes one of its own.
#pragma once

#include "tests/support/Test.h"

namespace qz::test {

using Entries = std::initializer_list<NSDictionary::Entry>;

/// A Dictionary of an application that keeps its entries in a list.
class ListDictionary : public Derives<ListDictionary, NSDictionary> {
 public:
  static void describe(ClassDescription<ListDictionary>& is) { is.named("ListDictionary"); }

  static Ref<NSDictionary> of(Entries entries) { return make<ListDictionary>(entries); }
  explicit ListDictionary(Entries entries) {
    for (const auto& [key, object] : entries) entries_.emplace_back(key, object);
  }
  std::uint32_t count() const override { return static_cast<std::uint32_t>(entries_.size()); }
  Ref<NSObject> objectForKey(NSObject* wanted) const override {
    for (const auto& [key, object] : entries_)
      if (key->isEqual(wanted)) return object;
    return nullptr;
  }
  Ref<NSEnumerator> keyEnumerator() const override {
    return NSEnumerator::enumeratorWithBlock([this, i = std::size_t{0}]() mutable {
      return i < entries_.size() ? entries_[i++].first : nullptr;
    });
  }

 private:
  std::vector<std::pair<Ref<NSObject>, Ref<NSObject>>> entries_;
};

}  // namespace qz::test
