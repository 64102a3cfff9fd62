/// @file
/// `WeakRef<T>` knows an Object without keeping it alive, and reads nil once it is gone.
#pragma once

#include <cstddef>
#include <utility>

#include "Platform/Runtime/NSObject.h"

#pragma GCC visibility push(default)

namespace qz {
namespace detail {

struct WeakBox;

/// The box shared by all weak references to `object`, with one count for the caller; null for nil
/// and for an Object that is being destroyed.
WeakBox* weakBoxOf(const NSObject* object);
void retainBox(WeakBox* box) noexcept;
void releaseBox(WeakBox* box) noexcept;

/// The Object, with one count for the caller; null once its last owner has let go.
NSObject* loadBox(WeakBox* box) noexcept;

}  // namespace detail

/// A weak handle: for delegates, parents, observers and targets.
///
///     WeakRef<Delegate> delegate = someone;
///     if (Ref<Delegate> alive = delegate.load()) alive->didChange();
///
/// `load` may be called while other threads release the Object: it answers either an owner or nil.
/// One WeakRef may not be written while another thread reads it. The first weak reference to an
/// Object allocates a small box; Objects that have none pay nothing.
template <class T>
class WeakRef {
 public:
  /// Nil, or weakly what the argument refers to.
  constexpr WeakRef() noexcept = default;
  constexpr WeakRef(std::nullptr_t) noexcept {}                             // NOLINT
  WeakRef(T* object) : box_(detail::weakBoxOf(object)), object_(object) {}  // NOLINT
  WeakRef(const Ref<T>& object) : WeakRef(object.get()) {}                  // NOLINT
  WeakRef(const WeakRef& other) noexcept : box_(other.box_), object_(other.object_) {
    detail::retainBox(box_);
  }
  WeakRef(WeakRef&& other) noexcept
      : box_(std::exchange(other.box_, nullptr)), object_(std::exchange(other.object_, nullptr)) {}
  ~WeakRef() { detail::releaseBox(box_); }

  /// Refers to what `other` does from now on.
  WeakRef& operator=(WeakRef other) noexcept {
    std::swap(box_, other.box_);
    std::swap(object_, other.object_);
    return *this;
  }

  /// The Object, kept alive by the answer; nil when it is gone.
  Ref<T> load() const noexcept {
    NSObject* alive = detail::loadBox(box_);
    return alive == nullptr ? Ref<T>() : Ref<T>(object_, adopt);
  }

  /// Whether the Object is gone (or never was). Another thread may end it right after.
  bool expired() const noexcept { return !load(); }

 private:
  detail::WeakBox* box_ = nullptr;
  T* object_ = nullptr;  // only used while the box says the Object lives
};

}  // namespace qz

#pragma GCC visibility pop
