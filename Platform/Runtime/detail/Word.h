/// @file
/// Private: how C++ values travel in the one-word arguments and answers of a dispatched operation.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "Platform/Runtime/Ref.h"
#include "Platform/Runtime/Selector.h"

#pragma GCC visibility push(default)

namespace qz {

class Class;
class NSObject;

template <class T>
Class* classOf();

namespace detail {

/// One argument or answer. Objects travel as pointers (an answer carries one count), integers
/// sign- or zero-extended, floating values by their bits, small plain structs by their bytes, and
/// anything else as a pointer to a value (an answer's is allocated and owned by the receiver).
using Word = std::uintptr_t;
static_assert(sizeof(Word) == 8, "dispatch packs 64-bit values into a word");

enum class Kind : std::uint8_t {
  Void,
  Object,
  Selector,
  Bool,
  Int8,
  UInt8,
  Int16,
  UInt16,
  Int32,
  UInt32,
  Int64,
  UInt64,
  Float,
  Double,
  Bytes,  // a trivially copyable value of at most 8 bytes, pointers included
  Value,  // any other value, by address
};

constexpr bool isInteger(Kind kind) noexcept { return kind >= Kind::Bool && kind <= Kind::UInt64; }
constexpr bool isFloating(Kind kind) noexcept {
  return kind == Kind::Float || kind == Kind::Double;
}
constexpr bool isScalar(Kind kind) noexcept { return isInteger(kind) || isFloating(kind); }

/// Describes the C++ type of an argument, an answer or a property.
struct ValueType {
  Kind kind;
  const std::type_info* type = nullptr;  ///< Of anything but Objects.
  Class* (*objectClass)() = nullptr;     ///< Objects: the class asked for; null for any Object.
  void* (*copy)(const void*) =
      nullptr;  ///< Value: a copy on the heap; null when it cannot be copied.
  void (*destroy)(void*) noexcept = nullptr;  ///< Value: destroys a copy or an answer.
};

template <class T>
inline constexpr bool isObjectPointer = false;
template <class T>
inline constexpr bool isObjectPointer<T*> = std::is_same_v<std::remove_const_t<T>, NSObject> ||
                                            (!std::is_void_v<T> &&
                                             requires(T * p) { static_cast<const NSObject*>(p); });

template <class T>
struct ObjectTypeOf {
  using type = std::remove_const_t<std::remove_pointer_t<T>>;
};
template <class T>
struct ObjectTypeOf<Ref<T>> {
  using type = T;
};

/// True for `T*` and `Ref<T>` of an Object class.
template <class T>
inline constexpr bool isObjectType = isObjectPointer<T> || isRef<T>;

template <class T>
constexpr Kind kindOf() {
  if constexpr (std::is_pointer_v<T> && std::is_class_v<std::remove_pointer_t<T>>)
    static_assert(sizeof(std::remove_pointer_t<T>) != 0, "include the header of this class");
  if constexpr (std::is_void_v<T>) {
    return Kind::Void;
  } else if constexpr (isObjectType<T> || std::is_same_v<T, std::nullptr_t>) {
    return Kind::Object;
  } else if constexpr (std::is_same_v<T, qz::Selector>) {
    return Kind::Selector;
  } else if constexpr (std::is_enum_v<T>) {
    return kindOf<std::underlying_type_t<T>>();
  } else if constexpr (std::is_same_v<T, bool>) {
    return Kind::Bool;
  } else if constexpr (std::is_integral_v<T>) {
    constexpr bool isSigned = std::is_signed_v<T>;
    switch (sizeof(T)) {
      case 1:
        return isSigned ? Kind::Int8 : Kind::UInt8;
      case 2:
        return isSigned ? Kind::Int16 : Kind::UInt16;
      case 4:
        return isSigned ? Kind::Int32 : Kind::UInt32;
      default:
        return isSigned ? Kind::Int64 : Kind::UInt64;
    }
  } else if constexpr (std::is_same_v<T, float>) {
    return Kind::Float;
  } else if constexpr (std::is_same_v<T, double>) {
    return Kind::Double;
  } else if constexpr (std::is_trivially_copyable_v<T> && sizeof(T) <= sizeof(Word)) {
    return Kind::Bytes;
  } else {
    return Kind::Value;
  }
}

template <class T>
void destroyValue(void* value) noexcept {
  delete static_cast<T*>(value);
}

template <class T>
void* copyValue(const void* value) {
  return new T(*static_cast<const T*>(value));
}

template <class T>
Class* objectClassOf() {
  return classOf<T>();
}

template <class T>
constexpr ValueType makeValueType() {
  constexpr Kind kind = kindOf<T>();
  if constexpr (kind == Kind::Object && !std::is_same_v<T, std::nullptr_t>) {
    using O = typename ObjectTypeOf<T>::type;
    if constexpr (std::is_same_v<O, NSObject>)
      return {.kind = kind};
    else
      return {.kind = kind, .objectClass = &objectClassOf<O>};
  } else if constexpr (kind == Kind::Value && std::is_copy_constructible_v<T>) {
    return {kind, &typeid(T), nullptr, &copyValue<T>, &destroyValue<T>};
  } else if constexpr (kind == Kind::Value) {
    return {kind, &typeid(T), nullptr, nullptr, &destroyValue<T>};
  } else if constexpr (std::is_void_v<T>) {
    return {.kind = kind};
  } else {
    return {.kind = kind, .type = &typeid(T)};
  }
}

template <class T>
inline constexpr ValueType valueType = makeValueType<T>();

/// A word holding `value`, borrowed from the caller for the length of the call.
template <class T>
Word toWord(const T& value) noexcept {
  constexpr Kind kind = kindOf<T>();
  if constexpr (std::is_same_v<T, std::nullptr_t>) {
    return 0;
  } else if constexpr (isRef<T>) {
    return reinterpret_cast<Word>(static_cast<const NSObject*>(value.get()));
  } else if constexpr (kind == Kind::Object) {
    return reinterpret_cast<Word>(static_cast<const NSObject*>(value));
  } else if constexpr (kind == Kind::Selector) {
    return reinterpret_cast<Word>(value.record());
  } else if constexpr (isInteger(kind)) {
    if constexpr (std::is_enum_v<T>)
      return static_cast<Word>(static_cast<std::underlying_type_t<T>>(value));
    else
      return static_cast<Word>(value);
  } else if constexpr (kind == Kind::Value) {
    return reinterpret_cast<Word>(std::addressof(value));
  } else {
    Word word = 0;
    std::memcpy(&word, std::addressof(value), sizeof value);
    return word;
  }
}

/// The value a word holds, for every kind but Object and Value.
template <class T>
T plainFromWord(Word word) noexcept {
  constexpr Kind kind = kindOf<T>();
  if constexpr (kind == Kind::Selector) {
    return qz::Selector(reinterpret_cast<const SelectorRecord*>(word));
  } else if constexpr (kind == Kind::Bool) {
    return word != 0;
  } else if constexpr (isInteger(kind)) {
    return static_cast<T>(word);
  } else {
    T value;
    std::memcpy(static_cast<void*>(&value), &word, sizeof value);
    return value;
  }
}

/// Turns an operation's answer into a word that owns it.
template <class T>
Word answerToWord(T&& value) {
  using V = std::remove_cvref_t<T>;
  if constexpr (isRef<V>) {
    if constexpr (std::is_lvalue_reference_v<T>)
      return reinterpret_cast<Word>(static_cast<const NSObject*>(V(value).leak()));
    else
      return reinterpret_cast<Word>(static_cast<const NSObject*>(value.leak()));
  } else if constexpr (kindOf<V>() == Kind::Object) {
    retain(value);
    return toWord(value);
  } else if constexpr (kindOf<V>() == Kind::Value) {
    return reinterpret_cast<Word>(new V(std::forward<T>(value)));
  } else {
    return toWord(value);
  }
}

/// Converts a scalar word from one scalar kind to another: integers as C++ does; a floating value
/// that an integer kind cannot hold becomes the nearest that it can, and a NaN 0.
Word convertScalar(Word word, Kind from, Kind to) noexcept;

}  // namespace detail
}  // namespace qz

#pragma GCC visibility pop
