/// @file
/// Private: what `for (NSObject* each : array)` walks with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "Platform/Runtime/Class.h"
#include "Platform/Runtime/NSObject.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// The count of changes of what never changes.
inline constinit const std::uint32_t neverChanged = 0;

/// Raises NSGenericException: the collection changed while it was being enumerated.
[[noreturn]] void raiseChanged();

/// Raises NSInvalidArgumentException: an element is no `wanted`.
[[noreturn]] void refuseElement(const Class* wanted, const NSObject* given);

/// The element at `index` for all who walk or copy: Null where a derived class answers nil, so that
/// nobody meets an element that is none.
Ref<NSObject> elementAt(const NSArray* array, std::uint32_t index);

/// Walks an Array, which must outlive it. Reads contiguous storage directly and asks any other
/// Array for each element once, keeping that element alive while it stands there.
class ArrayIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = NSObject*;
  using difference_type = std::ptrdiff_t;
  using pointer = NSObject* const*;
  using reference = NSObject*;

  ArrayIterator() = default;

  /// The first place of `array`; nil has none.
  static ArrayIterator first(const NSArray* array);

  /// The place `from` in a walk that ends before `to`, which is not above the count.
  static ArrayIterator within(const NSArray* array, std::uint32_t from, std::uint32_t to);

  /// The place behind the last.
  static ArrayIterator last(const NSArray* array);

  NSObject* operator*() const {
    if (*changes_ != expected_) [[unlikely]]
      raiseChanged();
    return elements_ != nullptr ? elements_[index_] : element_.get();
  }

  ArrayIterator& operator++() {
    if (*changes_ != expected_) [[unlikely]]
      raiseChanged();
    ++index_;
    if (elements_ == nullptr && index_ < end_) element_ = elementAt(array_, index_);
    return *this;
  }
  ArrayIterator operator++(int) {
    ArrayIterator before = *this;
    ++*this;
    return before;
  }

  friend bool operator==(const ArrayIterator& a, const ArrayIterator& b) noexcept {
    return a.index_ == b.index_;
  }

  /// Where it stands, and whether that is behind the walk's end.
  std::uint32_t index() const noexcept { return index_; }
  bool isAtEnd() const noexcept { return index_ >= end_; }

 private:
  NSObject* const* elements_ = nullptr;
  const std::uint32_t* changes_ = &neverChanged;
  std::uint32_t expected_ = 0;
  std::uint32_t index_ = 0;
  std::uint32_t end_ = 0;
  const NSArray* array_ = nullptr;
  Ref<NSObject> element_;
};

/// The same, answering each element as a `T`.
template <class T>
class TypedArrayIterator : public ArrayIterator {
 public:
  using value_type = T*;
  using pointer = T* const*;
  using reference = T*;

  TypedArrayIterator() = default;
  explicit TypedArrayIterator(ArrayIterator place) : ArrayIterator(std::move(place)) {}

  T* operator*() const {
    NSObject* object = ArrayIterator::operator*();
    if (!isKind<T>(object)) [[unlikely]]
      refuseElement(classOf<T>(), object);
    return static_cast<T*>(object);
  }
  TypedArrayIterator& operator++() {
    ArrayIterator::operator++();
    return *this;
  }
  TypedArrayIterator operator++(int) {
    TypedArrayIterator before = *this;
    ++*this;
    return before;
  }
};

}  // namespace qz::detail

#pragma GCC visibility pop
