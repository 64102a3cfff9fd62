/// @file
/// Classes, found by name, extended and changed while the program runs.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string_view>
#include <vector>

#include "Platform/Runtime/NSObject.h"
#include "Platform/Runtime/detail/Dispatch.h"

#pragma GCC visibility push(default)

namespace qz {

namespace detail {
class ClassBuilder;
struct ClassSpec;
struct ClassTables;
Class* registerClass(const ClassSpec& spec);
}  // namespace detail

/// A class at run time: its name, what it descends from, its operations and its properties. Itself
/// an Object, to which class-level operations are sent:
///
///     Class* person = NSClassFromString("Person"_ns);
///     Ref<NSObject> someone = person->newObject();
///     auto empty = send<Ref<NSArray>>(classOf<NSArray>(), "array"_sel);
///
/// A Class is made when it is first mentioned and never goes away. All members may be called from
/// any thread, while other threads dispatch.
class Class final : public NSObject {
 public:
  static void describe(ClassDescription<Class>& is);

  /// The class by that name, or nil. Classes of this library are known from the start; a class of
  /// the application is known once it has been mentioned (`classOf<Person>()`).
  static Class* named(std::string_view name);

  Class* classObject() const override;
  Ref<NSString> description() const override;

  /// The name, UTF-8, valid for ever.
  std::string_view name() const noexcept { return name_; }

  /// The class above; nil for the root.
  Class* superclassObject() const noexcept { return superclass_; }

  /// True for `other` itself and for everything that descends from it. Constant time.
  bool isSubclassOfClass(const Class* other) const noexcept {
    return other != nullptr && other->depth_ <= depth_ && ancestors_[other->depth_] == other;
  }

  /// A new Object, default constructed. Raises NSInvalidArgumentException for a class that cannot
  /// be made so.
  Ref<NSObject> newObject();

  /// Whether `newObject` can succeed.
  bool canMakeObjects() const noexcept { return factory_ != nullptr; }

  /// Whether Objects of this class answer `selector`.
  bool instancesRespondToSelector(Selector selector) const;

  /// The implementation that Objects of this class use for `selector`; null when there is none.
  const detail::Method* instanceMethod(Selector selector) const;

  /// The implementation of a class-level operation; null when there is none.
  const detail::Method* classMethod(Selector selector) const;

  /// Puts `imp` in place of the implementation that Objects of this class and, unless they have
  /// one of their own, its subclasses use. Every later send sees it, also through call sites that
  /// have sent before. Answers the implementation replaced, or null (and changes nothing) when the
  /// class has no such operation. The shape must be the old one's.
  detail::Imp replaceInstanceMethod(Selector selector, detail::Imp imp);

  /// Names of the operations described for this very class, in no particular order.
  std::vector<Selector> instanceSelectors() const;
  std::vector<Selector> classSelectors() const;

  /// Keys of the properties described for this very class, in the order described.
  std::vector<std::string_view> propertyKeys() const;

  /// Runs the class's one-time function (and those of the classes above) unless that was done.
  /// Dispatching and `newObject` do it by themselves.
  void ensureInitialized();

  bool respondsToSelector(Selector selector) const override;
  Ref<NSMethodSignature> methodSignatureForSelector(Selector selector) const override;
  [[noreturn]] void doesNotRecognizeSelector(Selector selector) const override;

 private:
  friend class detail::ClassBuilder;
  friend struct detail::ClassTables;
  friend Class* detail::registerClass(const detail::ClassSpec& spec);

  explicit Class(ImmortalTag tag) noexcept : NSObject(tag) {}

  std::string_view name_;
  Class* superclass_ = nullptr;
  std::uint32_t depth_ = 0;
  const Class** ancestors_ = nullptr;  // [0] is the root, [depth_] this class
  NSObject* (*factory_)() = nullptr;
  detail::ClassTables* tables_ = nullptr;
};

namespace detail {

/// What `Derives` knows of a class at compile time.
struct ClassSpec {
  std::atomic<Class*>* slot;
  Class* (*superclass)();
  NSObject* (*factory)();
  void (*describe)(ClassBuilder& builder);
};

template <class T>
inline constinit std::atomic<Class*> classSlot{nullptr};

/// The first virtual tables that were seen to belong to a `T`; saves the walk in argument checks.
/// They stay, so that threads which meet several classes in turn only read.
using KnownVptrs = std::array<std::atomic<std::uintptr_t>, 4>;

template <class T>
inline constinit KnownVptrs knownVptrs{};

template <class T>
struct SpecOf;

bool isKindOfSlowly(const NSObject* object, Class* wanted, KnownVptrs& known);

}  // namespace detail

/// The Class of a C++ class that was declared with `Derives`. After the first time, one load.
template <class T>
Class* classOf() {
  Class* known = detail::classSlot<T>.load(std::memory_order_acquire);
  if (known != nullptr) [[likely]]
    return known;
  return detail::registerClass(detail::SpecOf<T>::spec);
}

/// Whether `object` is a `T` (or of a class below); false for nil.
template <class T>
bool isKind(const NSObject* object) {
  if (object == nullptr) return false;
  if constexpr (std::is_same_v<T, NSObject>) {
    return true;
  } else {
    detail::KnownVptrs& known = detail::knownVptrs<T>;
    const std::uintptr_t vptr = detail::vptrOf(object);
    if (vptr == known[0].load(std::memory_order_relaxed) ||
        vptr == known[1].load(std::memory_order_relaxed)) [[likely]]
      return true;
    return detail::isKindOfSlowly(object, classOf<T>(), known);
  }
}

/// `object` as a `T`, or nil when it is none.
template <class T>
T* as(NSObject* object) {
  return isKind<T>(object) ? static_cast<T*>(object) : nullptr;
}
template <class T>
const T* as(const NSObject* object) {
  return isKind<T>(object) ? static_cast<const T*>(object) : nullptr;
}
template <class T, class U>
Ref<T> as(const Ref<U>& object) {
  return Ref<T>(as<T>(static_cast<NSObject*>(object.get())));
}
/// Hands the owner's count on.
template <class T, class U>
Ref<T> as(Ref<U>&& object) {
  if (!isKind<T>(static_cast<NSObject*>(object.get()))) return nullptr;
  return Ref<T>(static_cast<T*>(static_cast<NSObject*>(object.leak())), adopt);
}

/// The class by that name, or nil.
Class* NSClassFromString(NSString* name);

/// The name of a class; nil for nil.
Ref<NSString> NSStringFromClass(Class* aClass);

/// The Selector by that name, made when it is new; null for nil.
Selector NSSelectorFromString(NSString* name);

/// The name of an operation; nil for the null Selector.
Ref<NSString> NSStringFromSelector(Selector selector);

}  // namespace qz

#pragma GCC visibility pop
