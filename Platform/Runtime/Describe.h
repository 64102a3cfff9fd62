/// @file
/// The bodies of `ClassDescription`: include this in the source file that describes a class, never
/// in a header.
#pragma once

#include <array>
#include <string>
#include <type_traits>
#include <utility>

#include "Platform/Runtime/Class.h"
#include "Platform/Runtime/Derives.h"
#include "Platform/Runtime/detail/ClassBuilder.h"
#include "Platform/Runtime/detail/Dispatch.h"
#include "Platform/Runtime/detail/RuntimeLock.h"

#pragma GCC visibility push(default)

namespace qz {
namespace detail {

/// Takes one argument out of its word, refusing an Object of the wrong class.
template <class A>
struct ArgumentFromWord {
  using V = std::remove_cvref_t<A>;

  static decltype(auto) get(Word word, const NSObject* self, Selector selector,
                            std::size_t position) {
    if constexpr (isObjectType<V>) {
      using O = typename ObjectTypeOf<V>::type;
      auto* object = reinterpret_cast<NSObject*>(word);
      if constexpr (!std::is_same_v<O, NSObject>) {
        if (object != nullptr && !isKind<O>(object)) [[unlikely]]
          refuseArgument(self, selector, position, classOf<O>(), object);
      }
      return V(static_cast<O*>(object));
    } else if constexpr (kindOf<V>() == Kind::Value) {
      return static_cast<const V&>(*reinterpret_cast<const V*>(word));
    } else {
      return plainFromWord<V>(word);
    }
  }
};

/// The word of argument `I`: three travel in registers, the rest behind `more`.
template <std::size_t I>
Word argumentWord(Word a0, Word a1, Word a2, const Word* more) noexcept {
  if constexpr (I == 0)
    return a0;
  else if constexpr (I == 1)
    return a1;
  else if constexpr (I == 2)
    return a2;
  else
    return more[I - 3];
}

template <class... A>
inline constexpr std::array<const ValueType*, sizeof...(A)> argumentTypes{
    &valueType<std::remove_cvref_t<A>>...};

/// Makes the plain function and the shape of an operation. `Call` has a static
/// `R call(NSObject* self, A...)`.
template <class Call, class R, class... A>
struct MethodMaker {
  static_assert(sizeof...(A) <= maxArguments, "an operation takes at most eight arguments");
  using Answer = std::remove_cvref_t<R>;

  static Word imp(NSObject* self, Selector selector, Word a0, Word a1, Word a2, const Word* more) {
    return apply(self, selector, a0, a1, a2, more, std::index_sequence_for<A...>());
  }

  template <std::size_t... I>
  static Word apply(NSObject* self, [[maybe_unused]] Selector selector, [[maybe_unused]] Word a0,
                    [[maybe_unused]] Word a1, [[maybe_unused]] Word a2,
                    [[maybe_unused]] const Word* more, std::index_sequence<I...>) {
    if constexpr (std::is_void_v<R>) {
      Call::call(self,
                 ArgumentFromWord<A>::get(argumentWord<I>(a0, a1, a2, more), self, selector, I)...);
      return 0;
    } else {
      return answerToWord(Call::call(
          self, ArgumentFromWord<A>::get(argumentWord<I>(a0, a1, a2, more), self, selector, I)...));
    }
  }

  static constexpr MethodSpec spec() {
    return {&imp, shapeOf<Answer, std::remove_cvref_t<A>...>(), &valueType<Answer>,
            argumentTypes<A...>};
  }
};

/// An instance operation of `T` made of a member or a free function.
template <class T, auto F, class Signature = decltype(F)>
struct InstanceMethod;

template <class T, auto F, class C, class R, class... A>
struct InstanceMethod<T, F, R (C::*)(A...)> {
  static R call(NSObject* self, A... arguments) {
    return (static_cast<T*>(self)->*F)(std::forward<A>(arguments)...);
  }
  static constexpr MethodSpec spec() { return MethodMaker<InstanceMethod, R, A...>::spec(); }
};
template <class T, auto F, class C, class R, class... A>
struct InstanceMethod<T, F, R (C::*)(A...) const> : InstanceMethod<T, F, R (C::*)(A...)> {};
template <class T, auto F, class C, class R, class... A>
struct InstanceMethod<T, F, R (C::*)(A...) noexcept> : InstanceMethod<T, F, R (C::*)(A...)> {};
template <class T, auto F, class C, class R, class... A>
struct InstanceMethod<T, F, R (C::*)(A...) const noexcept> : InstanceMethod<T, F, R (C::*)(A...)> {
};
template <class T, auto F, class R, class P, class... A>
struct InstanceMethod<T, F, R (*)(P, A...)> {
  static R call(NSObject* self, A... arguments) {
    return F(static_cast<T*>(self), std::forward<A>(arguments)...);
  }
  static constexpr MethodSpec spec() { return MethodMaker<InstanceMethod, R, A...>::spec(); }
};
template <class T, auto F, class R, class P, class... A>
struct InstanceMethod<T, F, R (*)(P, A...) noexcept> : InstanceMethod<T, F, R (*)(P, A...)> {};

/// A class-level operation made of a function that may ask for the receiving Class first.
template <auto F, class Signature = decltype(F)>
struct ClassMethod;

template <auto F, class R, class... A>
struct ClassMethod<F, R (*)(A...)> {
  static R call(NSObject*, A... arguments) { return F(std::forward<A>(arguments)...); }
  static constexpr MethodSpec spec() { return MethodMaker<ClassMethod, R, A...>::spec(); }
};
template <auto F, class R, class... A>
struct ClassMethod<F, R (*)(Class*, A...)> {
  static R call(NSObject* self, A... arguments) {
    return F(static_cast<Class*>(self), std::forward<A>(arguments)...);
  }
  static constexpr MethodSpec spec() { return MethodMaker<ClassMethod, R, A...>::spec(); }
};
template <auto F, class R, class... A>
struct ClassMethod<F, R (*)(A...) noexcept> : ClassMethod<F, R (*)(A...)> {};
template <auto F, class R, class... A>
struct ClassMethod<F, R (*)(Class*, A...) noexcept> : ClassMethod<F, R (*)(Class*, A...)> {};

/// An init form sent to an Object: what `alloc` answered only says where to look.
template <auto F, class Signature = decltype(F)>
struct Initializer;

template <auto F, class R, class... A>
struct Initializer<F, R (*)(A...)> {
  static R call(NSObject*, A... arguments) { return F(std::forward<A>(arguments)...); }
  static constexpr MethodSpec spec() { return MethodMaker<Initializer, R, A...>::spec(); }
};

Ref<NSString> boxText(const std::string& text);
std::string unboxText(NSString* text);

/// The accessors of a data member.
template <class T, auto Field, class Signature = decltype(Field)>
struct FieldAccess;

template <class T, auto Field, class C, class V>
struct FieldAccess<T, Field, V C::*> {
  static constexpr bool isText = std::is_same_v<V, std::string>;
  using Outer = std::conditional_t<isText, Ref<NSString>, V>;
  using Inner = std::conditional_t<isText, NSString*, V>;
  static_assert(isObjectType<V> || isText || isScalar(kindOf<V>()),
                "a field is a scalar, a std::string or a Ref");

  struct Get {
    static Outer call(NSObject* self) {
      if constexpr (isText)
        return boxText(static_cast<T*>(self)->*Field);
      else
        return static_cast<T*>(self)->*Field;
    }
  };
  struct Set {
    static void call(NSObject* self, Inner value) {
      if constexpr (isText)
        static_cast<T*>(self)->*Field = unboxText(value);
      else
        static_cast<T*>(self)->*Field = std::move(value);
    }
  };
  static constexpr MethodSpec getter() { return MethodMaker<Get, Outer>::spec(); }
  static constexpr MethodSpec setter() { return MethodMaker<Set, void, Inner>::spec(); }
};

/// The single parameter's type of a setter, and a getter's answer, without Ref or pointer.
constexpr bool sameProperty(const MethodSpec& getter, const MethodSpec& setter) {
  return getter.arguments.empty() && setter.arguments.size() == 1 &&
         getter.answer->kind == setter.arguments[0]->kind &&
         getter.answer->objectClass == setter.arguments[0]->objectClass;
}

}  // namespace detail

/// @cond  The members above are documented in Derives.h.
template <class T>
ClassDescription<T>& ClassDescription<T>::named(const char* name) {
  builder_.setName(name);
  return *this;
}

template <class T>
template <auto Function>
ClassDescription<T>& ClassDescription<T>::method(const char* name) {
  builder_.addMethod(name, detail::InstanceMethod<T, Function>::spec());
  return *this;
}

template <class T>
template <auto Function>
ClassDescription<T>& ClassDescription<T>::classMethod(const char* name) {
  builder_.addClassMethod(name, detail::ClassMethod<Function>::spec());
  return *this;
}

template <class T>
template <auto Function>
ClassDescription<T>& ClassDescription<T>::initializer(const char* name) {
  builder_.addClassMethod(name, detail::ClassMethod<Function>::spec());
  builder_.addMethod(name, detail::Initializer<Function>::spec());
  return *this;
}

template <class T>
template <auto Getter>
ClassDescription<T>& ClassDescription<T>::property(const char* key) {
  constexpr auto getter = detail::InstanceMethod<T, Getter>::spec();
  static_assert(getter.arguments.empty() && getter.answer->kind != detail::Kind::Void,
                "a getter takes nothing and answers something");
  builder_.addProperty(key, getter, nullptr);
  return *this;
}

template <class T>
template <auto Getter, auto Setter>
ClassDescription<T>& ClassDescription<T>::property(const char* key) {
  constexpr auto getter = detail::InstanceMethod<T, Getter>::spec();
  constexpr auto setter = detail::InstanceMethod<T, Setter>::spec();
  static_assert(detail::sameProperty(getter, setter), "getter and setter differ in type");
  builder_.addProperty(key, getter, &setter);
  return *this;
}

template <class T>
template <auto Field>
ClassDescription<T>& ClassDescription<T>::field(const char* key) {
  constexpr auto setter = detail::FieldAccess<T, Field>::setter();
  builder_.addProperty(key, detail::FieldAccess<T, Field>::getter(), &setter);
  return *this;
}

template <class T>
template <auto Field>
ClassDescription<T>& ClassDescription<T>::readOnlyField(const char* key) {
  builder_.addProperty(key, detail::FieldAccess<T, Field>::getter(), nullptr);
  return *this;
}

template <class T>
ClassDescription<T>& ClassDescription<T>::dependsOn(std::initializer_list<const char*> keyPaths) {
  for (const char* keyPath : keyPaths) builder_.addDependency(keyPath);
  return *this;
}

template <class T>
ClassDescription<T>& ClassDescription<T>::initialize(void (*function)()) {
  builder_.setInitialize(function);
  return *this;
}
/// @endcond

/// Adds operations to a class that exists; the name tells later readers where they came from.
///
///     extend<NSArray>("QZFoundation").method<&reversedArray>("reversedArray");
///
/// An operation may stand again in a class below, and the nearest one answers; within one class a
/// second description of a name raises. Takes effect at once, also for Objects that exist.
template <class T>
class Extension {
 public:
  /// Of class `T`; `category` is a name for people.
  explicit Extension(std::string_view category) : builder_(classOf<T>(), category) {}

  /// As those of ClassDescription.
  template <auto Function>
  Extension& method(const char* name) {
    builder_.addMethod(name, detail::InstanceMethod<T, Function>::spec());
    return *this;
  }
  template <auto Function>
  Extension& classMethod(const char* name) {
    builder_.addClassMethod(name, detail::ClassMethod<Function>::spec());
    return *this;
  }
  template <auto Function>
  Extension& initializer(const char* name) {
    builder_.addClassMethod(name, detail::ClassMethod<Function>::spec());
    builder_.addMethod(name, detail::Initializer<Function>::spec());
    return *this;
  }
  /// Puts the function in the place of the operation by that name which the class has already, for
  /// its Objects and those of the classes below that have none of their own. Raises
  /// NSInternalInconsistencyException when there is none, and when it takes or answers something
  /// else.
  template <auto Function>
  Extension& replace(const char* name) {
    builder_.replaceMethod(name, detail::InstanceMethod<T, Function>::spec());
    return *this;
  }
  template <auto Getter>
  Extension& property(const char* key) {
    builder_.addProperty(key, detail::InstanceMethod<T, Getter>::spec(), nullptr);
    return *this;
  }
  template <auto Getter, auto Setter>
  Extension& property(const char* key) {
    constexpr auto getter = detail::InstanceMethod<T, Getter>::spec();
    constexpr auto setter = detail::InstanceMethod<T, Setter>::spec();
    static_assert(detail::sameProperty(getter, setter), "getter and setter differ in type");
    builder_.addProperty(key, getter, &setter);
    return *this;
  }

 private:
  detail::RuntimeGuard guard_;
  detail::ClassBuilder builder_;
};

/// Opens class `T` for more operations; `category` must be a literal.
template <class T>
Extension<T> extend(std::string_view category) {
  return Extension<T>(category);
}

/// Picks one function of several by that name: `overload<Ref<NSObject>(NSArray*)>(&deepCopy)`.
template <class F>
constexpr F* overload(F* function) noexcept {
  return function;
}

}  // namespace qz

#pragma GCC visibility pop
