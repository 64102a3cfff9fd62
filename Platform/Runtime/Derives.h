/// @file
/// How a class is declared.
///
///     // Person.h
///     class Person : public Derives<Person, NSObject> {
///      public:
///       Ref<NSString> name() const;
///       static void describe(ClassDescription<Person>& is);
///     };
///
///     // Person.cpp
///     #include "Platform/Runtime/Describe.h"
///     void Person::describe(ClassDescription<Person>& is) {
///       is.named("Person").property<&Person::name>("name");
///     }
#pragma once

#include <initializer_list>
#include <type_traits>

#include "Platform/Runtime/Class.h"
#include "Platform/Runtime/NSObject.h"

#pragma GCC visibility push(default)

namespace qz {

/// The base of every class: inherits `Base` and its constructors, and answers for the class.
///
/// A class that forgets its own `describe` inherits one of the wrong type and does not compile.
template <class Self, class Base>
class Derives : public Base {
 public:
  /// The class above, for `Super::description()` in an override.
  using Super = Base;
  using Base::Base;

  /// The Class of `Self`.
  Class* classObject() const override { return classOf<Self>(); }
};

/// Says what a class offers at run time. Members are template values, so that each entry is a plain
/// function; their bodies are in Describe.h, for the source file that describes the class.
///
/// Duplicate names, arities that do not fit the name and accessors that do not match their property
/// raise NSInternalInconsistencyException when the class is first mentioned, in every build type.
template <class T>
class ClassDescription {
 public:
  /// Made by the run-time, which calls `describe` with it.
  explicit ClassDescription(detail::ClassBuilder& builder) : builder_(builder) {}

  /// The name by which `NSClassFromString` finds the class. Required, once.
  ClassDescription& named(const char* name);

  /// An operation: a member function, or a function whose first parameter is the receiver.
  template <auto Function>
  ClassDescription& method(const char* name);

  /// A class-level operation: a function, with the receiving Class as first parameter if wanted.
  template <auto Function>
  ClassDescription& classMethod(const char* name);

  /// An init form: a function that answers a new Object, sent to the class or to what `alloc`
  /// answered (which is then let go).
  template <auto Function>
  ClassDescription& initializer(const char* name);

  /// A property read through a member function without parameters, and written through one with a
  /// single parameter of the same type. Its getter answers by Selector too, as does `setName:`.
  template <auto Getter>
  ClassDescription& property(const char* key);
  template <auto Getter, auto Setter>
  ClassDescription& property(const char* key);

  /// A data member as a property: a scalar, a String or a `Ref`.
  template <auto Field>
  ClassDescription& field(const char* key);
  template <auto Field>
  ClassDescription& readOnlyField(const char* key);

  /// Of the property described last: its value changes whenever one of these key paths does.
  ///
  ///     .property<&Person::fullName>("fullName").dependsOn({"firstName", "lastName"})
  ClassDescription& dependsOn(std::initializer_list<const char*> keyPaths);

  /// Runs once, in one thread, before the first message to the class or its Objects is dispatched
  /// and before the class makes an Object; the class above has had its turn.
  ClassDescription& initialize(void (*function)());

 private:
  detail::ClassBuilder& builder_;
};

namespace detail {

template <class T>
struct SpecOf {
  static Class* superclass() {
    if constexpr (std::is_same_v<T, NSObject> || std::is_same_v<T, Class>)
      return std::is_same_v<T, Class> ? classOf<NSObject>() : nullptr;
    else
      return classOf<typename T::Super>();
  }
  static NSObject* make() {
    if constexpr (std::is_default_constructible_v<T> && !std::is_abstract_v<T>)
      return new T();
    else
      return nullptr;
  }
  static void describe(ClassBuilder& builder) {
    constexpr bool isDescribed = requires(ClassDescription<T> & is) { T::describe(is); };
    static_assert(isDescribed,
                  "a class needs a public `static void describe(ClassDescription<ItsName>& is)`");
    if constexpr (isDescribed) {
      ClassDescription<T> is(builder);
      T::describe(is);
    }
  }
  static constexpr ClassSpec spec{
      &classSlot<T>, &superclass,
      std::is_default_constructible_v<T> && !std::is_abstract_v<T> ? &make : nullptr, &describe};
};

}  // namespace detail
}  // namespace qz

#pragma GCC visibility pop
