/// @file
/// Key-value observing: being told when the value at a key path changes.
///
///     auto token = observe<int>(person, "age"_ns, [](int before, int now) { … });
///     person->setValue_forKey(NSNumber::of(31), "age"_ns);   // told: 30, 31
///
/// or with an Object that observes:
///
///     person->addObserver_forKeyPath_options_context(
///         this, "employer.name"_ns, NSKeyValueObservingOptionNew, nullptr);
///
/// Setting by key announces the change by itself. Code that changes a value in another way does it
/// under a guard, and costs one test while nobody observes:
///
///     void Person::setAge(int age) {
///       KeyValueChange changing(this, "age"_ns);
///       age_ = age;
///     }
///
/// What holds:
/// - Observers are told in the thread that makes the change, before the setter returns, in the
///   order in which they were registered. A change inside a change of the same property in the same
///   thread (a setter under `setValue:forKey:`) belongs to the outer one: observers are told once.
///   A change that an observer makes while it is told is another change, and told at once, so
///   observers further on in the order hear of it first.
/// - A path of several keys follows the Objects on the way when they are replaced, provided their
///   changes are announced. It cannot lead through Arrays and Sets: observe their elements. It may
///   end with an operator, as "parts.@count", which changes whenever "parts" does.
/// - Observers and what they observe may go at any time: neither keeps the other alive, and what is
///   left of the registration goes too. During delivery the observer and the observed are kept.
/// - An observer that is removed during delivery is not told any more; one that is added is told
///   from the next change on. One removed by another thread may be in the middle of being told.
/// - An observer that raises does not keep others from being told; the first exception is raised
///   again when all have been, unless the change itself ended by an exception.
/// - Adding, removing and announcing are safe from any thread. Whether one thread may change a
///   property while another reads or changes it is for its class to say, as without observers.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>

#include "Platform/Runtime/Class.h"
#include "Platform/Runtime/NSObject.h"
#include "Platform/Runtime/detail/KeyValue.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

// What an observer wants to be told; added together.

inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionNew = 1;  ///< The value after.
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionOld = 2;  ///< And before.
/// The value that is there when the observer is added, at once.
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionInitial = 4;
/// Before each change as well, with NSKeyValueChangeNotificationIsPriorKey and without a new value.
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionPrior = 8;

/// What happened: a value was set; elements were inserted, removed or replaced at indices.
enum NSKeyValueChange : std::uint32_t {
  NSKeyValueChangeSetting = 1,
  NSKeyValueChangeInsertion = 2,
  NSKeyValueChangeRemoval = 3,
  NSKeyValueChangeReplacement = 4,
};

// What a change Dictionary holds.

/// The NSKeyValueChange as a Number; always there.
inline NSString* const NSKeyValueChangeKindKey = detail::literal<"NSKeyValueChangeKindKey">();
/// When asked for: the value before and after, Null for nil; of an indexed change the Arrays of the
/// elements that were and are at the indices (no old one of an insertion, no new one of a removal).
inline NSString* const NSKeyValueChangeOldKey = detail::literal<"NSKeyValueChangeOldKey">();
inline NSString* const NSKeyValueChangeNewKey = detail::literal<"NSKeyValueChangeNewKey">();
/// An NSIndexSet, of an indexed change: where the elements were removed, and where they now are.
inline NSString* const NSKeyValueChangeIndexesKey = detail::literal<"NSKeyValueChangeIndexesKey">();
/// True in what is told before the change.
inline NSString* const NSKeyValueChangeNotificationIsPriorKey =
    detail::literal<"NSKeyValueChangeNotificationIsPriorKey">();

namespace detail {
struct ChangeFrame;

/// The value of an observed property as a `T`; nil as zero, and what is no `T` as nil.
template <class T>
T valueAs(NSObject* value) {
  if constexpr (isRef<T>) {
    return T(as<typename T::Element>(value));
  } else if constexpr (std::is_same_v<T, std::string>) {
    return value == nullptr ? std::string() : to_string(value);
  } else {
    static_assert(std::is_arithmetic_v<T>, "a scalar, a std::string or a Ref");
    return value == nullptr ? T() : plainFromWord<T>(unboxWord(value, kindOf<T>()));
  }
}
}  // namespace detail

/// Announces a change of `key` of `object` while it lives: made before the change, destroyed after
/// it, in one thread. Both arguments must outlive it.
class KeyValueChange {
 public:
  /// The value under `key` becomes another one.
  KeyValueChange(NSObject* object, NSString* key) {
    if (detail::isObserved(object)) [[unlikely]]
      frame_ = begin(object, key, NSKeyValueChangeSetting, nullptr);
  }

  /// Elements are inserted at, removed from or replaced at `indexes` of the Array under `key`; the
  /// indices of an insertion are those that the elements have after it.
  KeyValueChange(NSObject* object, NSString* key, NSKeyValueChange kind, NSIndexSet* indexes) {
    if (detail::isObserved(object)) [[unlikely]]
      frame_ = begin(object, key, kind, indexes);
  }

  /// Raises what an observer raised, except while another exception is under way.
  ~KeyValueChange() noexcept(false) {
    if (frame_ != nullptr) [[unlikely]]
      end(frame_);
  }
  KeyValueChange(const KeyValueChange&) = delete;
  KeyValueChange& operator=(const KeyValueChange&) = delete;

 private:
  // No operation takes the guard's address, so that it stays in a register.
  static detail::ChangeFrame* begin(NSObject* object, NSString* key, NSKeyValueChange kind,
                                    NSIndexSet* indexes);
  static void end(detail::ChangeFrame* frame);

  detail::ChangeFrame* frame_ = nullptr;
};

/// A change as a function is told of it; what it points to is valid during the call.
struct ObservedChange {
  NSObject* object;       ///< On which the key path was observed.
  NSString* keyPath;      ///< As it was registered.
  NSKeyValueChange kind;  ///< Set anew, or elements inserted, removed or replaced.
  NSObject* oldValue;     ///< When asked for; nil for nil.
  NSObject* newValue;     ///< When asked for; nil for nil, and before the change.
  NSIndexSet* indexes;    ///< Nil unless the change is an indexed one.
  bool isPrior;           ///< The change is about to be made.

  /// Scalars by `intValue`, `doubleValue`, …; nil as zero, and an Object of another class as nil.
  template <class T>
  T oldAs() const {
    return detail::valueAs<T>(oldValue);
  }
  template <class T>
  T newAs() const {
    return detail::valueAs<T>(newValue);
  }
};

/// A function that is told of changes, in the thread that makes them.
using KeyValueObserver = std::function<void(const ObservedChange& change)>;

/// Keeps a function registered, as long as it lives. Move only; keeps no other Object alive.
class [[nodiscard]] KeyValueObservation {
 public:
  KeyValueObservation() noexcept = default;
  /// For `observe`, which makes the registration.
  explicit KeyValueObservation(Ref<NSObject> observation) noexcept
      : observation_(std::move(observation)) {}
  KeyValueObservation(KeyValueObservation&& other) noexcept = default;
  KeyValueObservation& operator=(KeyValueObservation&& other) noexcept {
    if (this != &other) invalidate();
    observation_ = std::move(other.observation_);
    return *this;
  }
  ~KeyValueObservation() { invalidate(); }

  /// Unregisters the function; nothing when that has been done. The function itself may call it.
  void invalidate() noexcept;

  /// Whether changes are still reported: false as well once the observed Object is gone.
  bool isActive() const noexcept;

 private:
  Ref<NSObject> observation_;
};

/// Calls `observer` at each change of the value at `keyPath` of `object`, until the answer goes.
/// The rules of `addObserver:forKeyPath:options:context:` hold.
KeyValueObservation observe(NSObject* object, NSString* keyPath, NSKeyValueObservingOptions options,
                            KeyValueObserver observer);

/// Calls `observer(T before, T now)` at each change of a value of type `T`.
template <class T, class F>
KeyValueObservation observe(NSObject* object, NSString* keyPath, F observer) {
  return observe(object, keyPath, NSKeyValueObservingOptionOld | NSKeyValueObservingOptionNew,
                 [observer = std::move(observer)](const ObservedChange& change) mutable {
                   observer(change.oldAs<T>(), change.newAs<T>());
                 });
}

}  // namespace qz

#pragma GCC visibility pop
