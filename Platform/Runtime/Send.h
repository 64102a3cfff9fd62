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

#pragma GCC visibility push(default)

namespace qz {

/// What a sent operation answered: one word, which the reply owns when it is an Object.
///
/// Converts to `Ref<NSObject>` when the operation answers an Object. Move only.
class Reply {
 public:
  Reply() noexcept = default;
  /// Takes over the word, and with it the Object that it may be.
  Reply(detail::Word word, const detail::ValueType* type) noexcept : word_(word), type_(type) {}
  Reply(Reply&& other) noexcept
      : word_(std::exchange(other.word_, 0)), type_(std::exchange(other.type_, nullptr)) {}
  Reply& operator=(Reply&& other) noexcept {
    std::swap(word_, other.word_);
    std::swap(type_, other.type_);
    return *this;
  }
  ~Reply() {
    if (word_ != 0 && type_ != nullptr &&
        (type_->kind == detail::Kind::Object || type_->kind == detail::Kind::Value))
      drop();
  }

  /// The raw word: an Object's address, a scalar's value (sign- or zero-extended), a floating
  /// value's bits; 0 for an operation that answers nothing, and for a message to nil.
  std::uintptr_t word() const noexcept { return word_; }

  /// Not nil and not zero.
  explicit operator bool() const noexcept { return word_ != 0; }

  /// Whether the operation answers Objects.
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
  void drop() noexcept;

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

/// Whether the operation takes and answers just these types, so that its function can be called
/// without more ado.
template <class R, class... A>
bool fitsExactly(const DispatchEntry& entry) noexcept {
  static_assert(sizeof...(A) <= maxArguments);
  constexpr bool plain = ((kindOf<A>() != Kind::Value && kindOf<A>() != Kind::Bytes) && ...);
  return plain && entry.shape == shapeOf<R, A...>() &&
         ((kindOf<R>() != Kind::Value && kindOf<R>() != Kind::Bytes) ||
          *entry.method->answer->type == typeid(R));
}

template <class R, class... A>
R callExactly(const DispatchEntry& entry, NSObject* receiver, Selector selector,
              const A&... arguments) {
  if constexpr (sizeof...(A) <= 3) {
    const std::array<Word, 3> words{toWord(arguments)...};
    return resultFromWord<R>(entry.imp(receiver, selector, words[0], words[1], words[2], nullptr),
                             selector);
  } else {
    const std::array<Word, sizeof...(A)> words{toWord(arguments)...};
    return resultFromWord<R>(
        callWithWords(entry.imp, receiver, selector, words.data(), words.size()), selector);
  }
}

/// With conversions and checks. Apart, so that what calls directly needs no stack.
template <class R, class... A>
[[gnu::noinline]] R sendConverting(NSObject* receiver, Selector selector, const A&... arguments) {
  const DispatchEntry& entry = lookUp(receiver, selector);
  if (fitsExactly<R, A...>(entry))
    return callExactly<R, A...>(entry, receiver, selector, arguments...);
  const std::array<TypedWord, sizeof...(A)> typed{TypedWord{toWord(arguments), &valueType<A>}...};
  const ValueType* answer = &valueType<R>;
  return resultFromWord<R>(sendSlowly(entry, receiver, selector, typed, answer), selector);
}

/// The same through what `Implementation` keeps.
template <class R, class... A>
[[gnu::noinline]] R callConverting(const DispatchEntry& entry, NSObject* receiver,
                                   Selector selector, const A&... arguments) {
  const std::array<TypedWord, sizeof...(A)> typed{TypedWord{toWord(arguments), &valueType<A>}...};
  const ValueType* answer = &valueType<R>;
  return resultFromWord<R>(sendSlowly(entry, receiver, selector, typed, answer), selector);
}

/// Sends with `count` Objects, whatever the operation answers.
Reply performSlowly(NSObject* receiver, Selector selector, Word first, Word second,
                    std::size_t count);

/// The perform family: Objects only, so no conversion can apply.
template <std::size_t count>
[[gnu::always_inline]] inline Reply perform(NSObject* receiver, Selector selector, Word first = 0,
                                            Word second = 0) {
  const DispatchEntry* entry = lookUpAtOnce(receiver, selector);
  if (entry != nullptr && (entry->shape & allObjectsBit) != 0 &&
      shapeArguments(entry->shape) <= count) [[likely]]
    return Reply(entry->imp(receiver, selector, first, second, 0, nullptr), entry->method->answer);
  return performSlowly(receiver, selector, first, second, count);
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
  const detail::DispatchEntry* entry = detail::lookUpAtOnce(receiver, selector);
  if (entry != nullptr && detail::fitsExactly<R, A...>(*entry)) [[likely]]
    return detail::callExactly<R, A...>(*entry, receiver, selector, arguments...);
  return detail::sendConverting<R, A...>(receiver, selector, arguments...);
}

inline Reply NSObject::performSelector(Selector selector) {
  return detail::perform<0>(this, selector);
}

inline Reply NSObject::performSelector_withObject(Selector selector, NSObject* object) {
  return detail::perform<1>(this, selector, detail::toWord(object));
}

inline Reply NSObject::performSelector_withObject_withObject(Selector selector, NSObject* first,
                                                             NSObject* second) {
  return detail::perform<2>(this, selector, detail::toWord(first), detail::toWord(second));
}

/// The entry point of one operation, for loops that send it many times to Objects of one class.
///
/// Calling it with an Object of another class sends by name, so it never runs the wrong code; it
/// does not notice that an implementation was replaced after it was asked for.
class Implementation {
 public:
  Implementation() noexcept = default;
  /// Made by `methodForSelector`.
  Implementation(const detail::DispatchEntry& entry, Selector selector) noexcept
      : entry_(entry), selector_(selector) {}

  /// Whether there is such an operation.
  explicit operator bool() const noexcept { return entry_.method != nullptr; }

  /// The operation that was asked for.
  Selector selector() const noexcept { return selector_; }

  /// Calls it; the rules of `send` hold.
  template <class R, class... A>
  R call(NSObject* receiver, const A&... arguments) const {
    if (receiver != nullptr && detail::vptrOf(receiver) == entry_.key) [[likely]] {
      if (detail::fitsExactly<R, A...>(entry_)) [[likely]]
        return detail::callExactly<R, A...>(entry_, receiver, selector_, arguments...);
      return detail::callConverting<R, A...>(entry_, receiver, selector_, arguments...);
    }
    return send<R, A...>(receiver, selector_, arguments...);
  }

  /// The plain function, for comparison and replacement.
  detail::Imp function() const noexcept { return entry_.imp; }

 private:
  detail::DispatchEntry entry_;
  Selector selector_;
};

}  // namespace qz

#pragma GCC visibility pop
