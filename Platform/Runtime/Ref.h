/// @file
/// `Ref<T>` owns an Object; `T*` borrows one.
///
/// Every function that hands back an Object hands back a `Ref`; every parameter is a `T*` that the
/// callee may use until it returns. There is no pool to drain: when the last `Ref` goes, so does
/// the Object.
///
///     Ref<NSString> name = person->name();   // owns
///     print(name);                           // borrows: converts to NSString*
#pragma once

#include <cassert>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <type_traits>
#include <utility>

#if defined(__clang__)
#define QZ_LIFETIME_BOUND [[clang::lifetimebound]]
#else
#define QZ_LIFETIME_BOUND
#endif

#pragma GCC visibility push(default)

namespace qz {

class NSObject;

/// Adds one owner to `object`; nil is allowed. Any thread. Prefer `Ref`.
void retain(const NSObject* object) noexcept;

/// Takes one owner from `object` and destroys it when that was the last; nil is allowed. Any
/// thread.
void release(const NSObject* object) noexcept;

/// Tells `Ref` to take over a count that the caller already owns.
struct AdoptTag {};
inline constexpr AdoptTag adopt{};

namespace detail {
// `begin` and `end` of a collection are functions beside its class, found where a Ref is walked.
template <class T>
auto beginOf(T* object) -> decltype(begin(object)) {
  return begin(object);
}
template <class T>
auto endOf(T* object) -> decltype(end(object)) {
  return end(object);
}
}  // namespace detail

/// A strong, nullable handle to an Object of class `T`. The size of a pointer.
///
/// Distinct `Ref`s to one Object may be used from distinct threads; one `Ref` may not be written
/// while another thread reads it.
template <class T>
class Ref {
 public:
  /// The class of the Object.
  using Element = T;

  /// Null: no Object.
  constexpr Ref() noexcept = default;
  constexpr Ref(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor)

  /// Retains `object`; nil gives a null handle.
  Ref(T* object) noexcept : object_(object) {  // NOLINT(google-explicit-constructor)
    retain(object_);
  }

  /// Takes over the count that the caller owns.
  Ref(T* object, AdoptTag) noexcept : object_(object) {}

  /// One owner more, or the other's place as an owner; also from a Ref to a derived class.
  Ref(const Ref& other) noexcept : object_(other.object_) { retain(object_); }
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <class U>
  requires std::is_convertible_v<U*, T*> Ref(const Ref<U>& other)
  noexcept : object_(other.get()) {  // NOLINT
    retain(object_);
  }
  template <class U>
  requires std::is_convertible_v<U*, T*> Ref(Ref<U>&& other)
  noexcept : object_(other.leak()) {}  // NOLINT

  ~Ref() { release(object_); }

  /// Lets go of the Object it had after it has taken the other one.
  Ref& operator=(const Ref& other) noexcept {
    Ref(other).swap(*this);
    return *this;
  }
  Ref& operator=(Ref&& other) noexcept {
    Ref(std::move(other)).swap(*this);
    return *this;
  }

  /// Exchanges the Objects; counts stay as they are.
  void swap(Ref& other) noexcept { std::swap(object_, other.object_); }

  /// The Object, borrowed: valid while some `Ref` to it lives.
  T* get() const noexcept QZ_LIFETIME_BOUND { return object_; }
  operator T*() const noexcept QZ_LIFETIME_BOUND { return object_; }  // NOLINT

  /// The Object's members. Debug builds stop at nil.
  T* operator->() const noexcept QZ_LIFETIME_BOUND {
    assert(object_ != nullptr && "a member of nil was called");
    return object_;
  }
  T& operator*() const& noexcept QZ_LIFETIME_BOUND {
    assert(object_ != nullptr && "nil was dereferenced");
    return *object_;
  }
  /// Not of a temporary: `for (auto* each : *answer())` would walk an Array that is gone. Loop over
  /// `answer()` itself, which the loop keeps.
  T& operator*() const&& = delete;

  /// Not nil.
  explicit operator bool() const noexcept { return object_ != nullptr; }

  /// Of a collection or an enumerator, for loops and ranges: `answer() | std::views::take(3)` keeps
  /// the answer, as a loop does. Null has no elements.
  template <class U = T>
  auto begin() const -> decltype(detail::beginOf(static_cast<U*>(nullptr))) {
    return detail::beginOf(static_cast<U*>(object_));
  }
  template <class U = T>
  auto end() const -> decltype(detail::endOf(static_cast<U*>(nullptr))) {
    return detail::endOf(static_cast<U*>(object_));
  }

  /// Gives the count up to the caller, who must hand it to `Ref(object, adopt)` or `release`.
  [[nodiscard]] T* leak() noexcept { return std::exchange(object_, nullptr); }

 private:
  T* object_ = nullptr;
};

/// Whether both are the same Object, or both nil; `isEqual` compares values.
template <class T, class U>
bool operator==(const Ref<T>& a, const Ref<U>& b) noexcept {
  return a.get() == b.get();
}
template <class T, class U>
bool operator==(const Ref<T>& a, U* b) noexcept {
  return a.get() == b;
}
template <class T>
bool operator==(const Ref<T>& a, std::nullptr_t) noexcept {
  return a.get() == nullptr;
}

/// A new Object of class `T`, constructed with `args`, owned by the caller.
template <class T, class... Args>
[[nodiscard]] Ref<T> make(Args&&... args) {
  return Ref<T>(new T(std::forward<Args>(args)...), adopt);
}

namespace detail {
template <class T>
struct IsRef : std::false_type {};
template <class T>
struct IsRef<Ref<T>> : std::true_type {};
template <class T>
inline constexpr bool isRef = IsRef<std::remove_cvref_t<T>>::value;
}  // namespace detail

}  // namespace qz

#pragma GCC visibility pop
