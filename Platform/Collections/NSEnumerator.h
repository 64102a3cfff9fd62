/// @file
/// Enumerators: walks over collections, one Object at a time.
#pragma once

#include <cstddef>
#include <functional>
#include <iterator>

#include "Platform/Runtime/Derives.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;

/// A walk that answers one Object after another, once.
///
///     Ref<NSEnumerator> names = people->objectEnumerator();
///     while (Ref<NSObject> name = names->nextObject()) greet(name);
///     for (NSObject* name : people->objectEnumerator()) greet(name);
///
/// The enumerator of a collection keeps that collection alive. A derived class overrides
/// `nextObject`. One enumerator may be used by one thread at a time.
class NSEnumerator : public Derives<NSEnumerator, NSObject> {
 public:
  static void describe(ClassDescription<NSEnumerator>& is);

  /// An enumerator that calls `next` for each Object until it answers nil, and never after that.
  /// Keeps `next`. An empty function raises NSInvalidArgumentException.
  static Ref<NSEnumerator> enumeratorWithBlock(std::function<Ref<NSObject>()> next);

  /// The next Object; nil at the end and ever after. Raises NSGenericException when the collection
  /// has changed since the enumerator was made.
  virtual Ref<NSObject> nextObject() = 0;

  /// The Objects that are left; the enumerator is at its end afterwards.
  virtual Ref<NSArray> allObjects();
};

namespace detail {

/// Walks an enumerator, keeping the Object alive at which it stands.
class EnumeratorIterator {
 public:
  using iterator_concept = std::input_iterator_tag;
  using value_type = NSObject*;
  using difference_type = std::ptrdiff_t;

  EnumeratorIterator() = default;
  explicit EnumeratorIterator(NSEnumerator* enumerator) : enumerator_(enumerator) { ++*this; }

  NSObject* operator*() const noexcept { return object_.get(); }
  EnumeratorIterator& operator++() {
    object_ = enumerator_ == nullptr ? nullptr : enumerator_->nextObject();
    return *this;
  }
  void operator++(int) { ++*this; }

  friend bool operator==(const EnumeratorIterator& place, std::default_sentinel_t) noexcept {
    return !place.object_;
  }

 private:
  NSEnumerator* enumerator_ = nullptr;
  Ref<NSObject> object_;
};

}  // namespace detail

/// For `for (NSObject* each : enumerator)`: the Objects that are left; nil has none.
inline detail::EnumeratorIterator begin(NSEnumerator* enumerator) {
  return detail::EnumeratorIterator(enumerator);
}
inline std::default_sentinel_t end(NSEnumerator*) noexcept { return std::default_sentinel; }

}  // namespace qz

#pragma GCC visibility pop
