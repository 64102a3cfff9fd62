/// @file
/// Private: what `for (NSObject* each : array)` walks with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "Platform/Runtime/Class.h"
#include "Platform/Runtime/NSObject.h"

namespace qz::detail {

/// The count of changes of what never changes.
inline constinit const std::uint32_t neverChanged = 0;

/// Raises NSGenericException: the collection changed while it was being enumerated.
[[noreturn]] void raiseChanged();

/// Raises NSInvalidArgumentException: an element is no `wanted`.
[[noreturn]] void refuseElement(const Class* wanted, const NSObject* given);

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
    if (elements_ == nullptr && index_ < count_) element_ = elementOf(array_, index_);
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

 private:
  static Ref<NSObject> elementOf(const NSArray* array, std::uint32_t index);

  NSObject* const* elements_ = nullptr;
  const std::uint32_t* changes_ = &neverChanged;
  std::uint32_t expected_ = 0;
  std::uint32_t index_ = 0;
  std::uint32_t count_ = 0;
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
