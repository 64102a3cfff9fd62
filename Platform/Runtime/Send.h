/// @file
/// Sending: operations named at run time.
///
///     auto order = send<NSComparisonResult>(a, "compare:"_sel, b);
///     Reply reply = a->performSelector_withObject("compare:"_sel, b);
#pragma once

#include <array>
#include <cstdint>
#include <utility>

#include "Platform/Runtime/Class.h"
#include "Platform/Runtime/NSObject.h"
#include "Platform/Runtime/detail/Dispatch.h"

namespace qz {

/// What a sent operation answered: one word, which the reply owns when it is an Object.
///
/// Converts to `Ref<NSObject>` when the operation answers an Object. Move only.
class Reply {
 public:
  Reply() noexcept = default;
  Reply(detail::Word word, const detail::ValueType* type) noexcept : word_(word), type_(type) {}
  Reply(Reply&& other) noexcept
      : word_(std::exchange(other.word_, 0)), type_(std::exchange(other.type_, nullptr)) {}
  Reply& operator=(Reply&& other) noexcept {
    std::swap(word_, other.word_);
    std::swap(type_, other.type_);
    return *this;
  }
  ~Reply();

  /// The raw word: an Object's address, a scalar's value (sign- or zero-extended), a floating
  /// value's bits; 0 for an operation that answers nothing, and for a message to nil.
  std::uintptr_t word() const noexcept { return word_; }

  /// Not nil and not zero.
  explicit operator bool() const noexcept { return word_ != 0; }

  bool isObject() const noexcept;

  /// The Object answered. Raises NSInvalidArgumentException when the operation answers a scalar;
  /// nil for an operation that answers nothing.
  Ref<NSObject> object() const&;
  Ref<NSObject> object() &&;
  operator Ref<NSObject>() && { return std::move(*this).object(); }  // NOLINT

  /// A truth value: for integers the low byte, as callers of byte-sized truth values see it; for
  /// floating values "not zero"; for Objects "not nil".
  bool boolValue() const noexcept;

  /// The integer answered, floating values truncated. Raises NSInvalidArgumentException for an
  /// Object.
  std::int64_t integerValue() const;

 private:
  detail::Word word_ = 0;
  const detail::ValueType* type_ = nullptr;
};

namespace detail {

template <class R>
R resultFromWord(Word word, Selector selector) {
  if constexpr (std::is_void_v<R>) {
    return;
  } else if constexpr (isRef<R>) {
    using O = typename R::Element;
    Ref<NSObject> owned(reinterpret_cast<NSObject*>(word), qz::adopt);
    if (!std::is_same_v<O, NSObject> && owned && !isKind<O>(owned.get())) [[unlikely]]
      refuseAnswer(selector, classOf<O>(), owned);
    return R(static_cast<O*>(owned.leak()), qz::adopt);
  } else if constexpr (kindOf<R>() == Kind::Value) {
    std::unique_ptr<R> value(reinterpret_cast<R*>(word));
    return value ? std::move(*value) : R();
  } else {
    static_assert(kindOf<R>() != Kind::Object, "ask for a Ref: the answer may be the only owner");
    return plainFromWord<R>(word);
  }
}

template <class R, class... A>
R sendThrough(const DispatchEntry& entry, NSObject* receiver, Selector selector,
              const A&... arguments) {
  static_assert(sizeof...(A) <= maxArguments);
  if (entry.shape == shapeOf<R, A...>() &&
      ((kindOf<R>() != Kind::Value && kindOf<R>() != Kind::Bytes) ||
       *entry.method->answer->type == typeid(R))) [[likely]] {
    constexpr bool plain = ((kindOf<A>() != Kind::Value && kindOf<A>() != Kind::Bytes) && ...);
    if constexpr (plain) {
      if constexpr (sizeof...(A) <= 3) {
        const std::array<Word, 3> words{toWord(arguments)...};
        return resultFromWord<R>(
            entry.imp(receiver, selector, words[0], words[1], words[2], nullptr), selector);
      } else {
        const std::array<Word, sizeof...(A)> words{toWord(arguments)...};
        return resultFromWord<R>(
            callWithWords(entry.imp, receiver, selector, words.data(), words.size()), selector);
      }
    }
  }
  const std::array<TypedWord, sizeof...(A)> typed{TypedWord{toWord(arguments), &valueType<A>}...};
  const ValueType* answer = &valueType<R>;
  return resultFromWord<R>(sendSlowly(entry, receiver, selector, typed, answer), selector);
}

}  // namespace detail

/// Sends `selector` with `arguments` and answers an `R`; a message to nil answers zero.
///
/// Scalars are converted as C++ converts them when the operation has another scalar type. An Object
/// of the wrong class, an Object where a scalar is wanted (or the other way round) and a wrong
/// number of arguments raise NSInvalidArgumentException. The same rules hold for the answer.
template <class R, class... A>
R send(NSObject* receiver, Selector selector, const A&... arguments) {
  if (receiver == nullptr) return R();
  return detail::sendThrough<R, A...>(detail::lookUp(receiver, selector), receiver, selector,
                                      arguments...);
}

/// The entry point of one operation, for loops that send it many times to Objects of one class.
///
/// Calling it with an Object of another class sends by name, so it never runs the wrong code; it
/// does not notice that an implementation was replaced after it was asked for.
class Implementation {
 public:
  Implementation() noexcept = default;
  Implementation(const detail::DispatchEntry& entry, Selector selector) noexcept
      : entry_(entry), selector_(selector) {}

  /// Whether there is such an operation.
  explicit operator bool() const noexcept { return entry_.method != nullptr; }

  Selector selector() const noexcept { return selector_; }

  /// Calls it; the rules of `send` hold.
  template <class R, class... A>
  R call(NSObject* receiver, const A&... arguments) const {
    if (receiver != nullptr && detail::vptrOf(receiver) == entry_.key) [[likely]]
      return detail::sendThrough<R, A...>(entry_, receiver, selector_, arguments...);
    return send<R, A...>(receiver, selector_, arguments...);
  }

  /// The plain function, for comparison and replacement.
  detail::Imp function() const noexcept { return entry_.imp; }

 private:
  detail::DispatchEntry entry_;
  Selector selector_;
};

}  // namespace qz
