// Arrays of tests: of one-letter Strings, written as a text, of Numbers, and computed ones.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"

namespace qz::test {

/// A new String for each letter.
inline std::vector<Ref<NSObject>> letters(std::string_view text) {
  std::vector<Ref<NSObject>> all;
  for (char each : text) all.push_back(NSString::stringWithUTF8String(std::string_view(&each, 1)));
  return all;
}

/// The elements' descriptions, one behind the other.
inline std::string text(NSObject* array) {
  return as<NSArray>(array)->componentsJoinedByString(nullptr)->UTF8String();
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
  std::uint32_t count() const override { return count_; }
  Ref<NSObject> objectAtIndex(std::uint32_t index) const override {
    if (index >= count_) detail::raiseIndex("Computed", index, count_);
    return element_(index);
  }

 private:
  std::uint32_t count_;
  Element element_;
};

}  // namespace qz::test
