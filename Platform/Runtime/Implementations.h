/// @file
/// Plain functions behind operations, for code that replaces them: include this in source files.
///
///     Ref<NSString> shout(Person* self, NSString* greeting);
///
///     static Imp before = classOf<Person>()->replaceInstanceMethod(
///         "greet:"_sel, implementationOf<Person, &shout>());
///     …
///     callImplementation<Ref<NSString>>(before, self, "greet:"_sel, greeting);
#pragma once

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/Send.h"

#pragma GCC visibility push(default)

namespace qz {

/// An operation's plain function.
using Imp = detail::Imp;

/// That of a member of `T`, or of a function that takes the receiver first. It must answer and take
/// what the operation does which it replaces.
template <class T, auto Function>
constexpr Imp implementationOf() noexcept {
  return detail::InstanceMethod<T, Function>::spec().imp;
}

/// Calls a plain function, such as the one that was replaced, with just the types it has.
template <class R, class... A>
R callImplementation(Imp implementation, NSObject* receiver, Selector selector,
                     const A&... arguments) {
  detail::DispatchEntry entry;
  entry.imp = implementation;
  return detail::callExactly<R, A...>(entry, receiver, selector, arguments...);
}

}  // namespace qz

#pragma GCC visibility pop
