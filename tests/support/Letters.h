// Arrays of tests: of one-letter Strings, written as a text, of Numbers, and computed ones.
#pragma once

#include "tests/support/Test.h"

namespace qz::test {

/// A new String for each letter.
inline std::vector<Ref<NSObject>> letters(std::string_view text) {
  std::vector<Ref<NSObject>> all;
  for (char each : text) all.push_back(NSString::stringWithUTF8String(std::string_view(&each, 1)));
  return all;
}

/// The elements' descriptions, one behind the other.
inline std::string text(NSObject* array, NSString* between = nullptr) {
  return as<NSArray>(array)->componentsJoinedByString(between)->UTF8String();
}

inline Ref<NSArray> numbers(std::initializer_list<int> values) {
  std::vector<Ref<NSObject>> all;
  for (int value : values) all.push_back(NSNumber::numberWithInt(value));
  return NSArray::fromRange(all);
}

/// An Array as an application makes one of its own: it makes each element when it is asked for.
class Computed : public Derives<Computed, NSArray> {
 public:
  using Element = std::function<Ref<NSObject>(std::uint32_t index)>;
  static void describe(ClassDescription<Computed>& is) { is.named("ComputedArray"); }
  Computed(std::uint32_t count, Element element) : count_(count), element_(std::move(element)) {}
  explicit Computed(std::vector<Ref<NSObject>> kept)
      : Computed(static_cast<std::uint32_t>(kept.size()), [kept](auto i) { return kept[i]; }) {}
  static Ref<NSArray> fromRange(const std::vector<Ref<NSObject>>& kept) {
    return make<Computed>(kept);
  }
  std::uint32_t count() const override { return count_; }
  Ref<NSObject> objectAtIndex(std::uint32_t index) const override {
    if (index >= count_) detail::raiseIndex("Computed", index, count_);
    return element_(index);
  }

 private:
  std::uint32_t count_;
  Element element_;
};

/// For tests of what every kind of MutableArray does.
template <class Kind>
class MutableArrayOf : public testing::Test {
 public:
  static Ref<NSMutableArray> of(std::string_view text) {
    Ref<NSMutableArray> array = make<Kind>();
    for (const auto& each : letters(text)) array->addObject(each);
    return array;
  }
};

}  // namespace qz::test
