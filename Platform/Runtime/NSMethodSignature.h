/// @file
/// The types of an operation.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Platform/Runtime/Derives.h"
#include "Platform/Runtime/detail/Dispatch.h"

#pragma GCC visibility push(default)

namespace qz {

/// What an operation takes and answers. Immutable; any thread.
///
/// Two arguments are hidden: the receiver (0) and the Selector (1). Those of the call start at 2.
class NSMethodSignature : public Derives<NSMethodSignature, NSObject> {
 public:
  static void describe(ClassDescription<NSMethodSignature>& is);

  /// Of a C++ function type: `NSMethodSignature::of<Ref<NSString>(NSObject*, int)>()`.
  template <class F>
  static Ref<NSMethodSignature> of() {
    return ofFunction(static_cast<F*>(nullptr));
  }

  /// Of the run-time's records of types, those of the call's arguments only.
  NSMethodSignature(const detail::ValueType* answer,
                    std::vector<const detail::ValueType*> arguments);

  /// Counts the two hidden arguments.
  std::uint32_t numberOfArguments() const noexcept;

  /// A readable name of the type: "int", "double", "NSString", "void". Raises
  /// NSInvalidArgumentException for an index not below `numberOfArguments`.
  Ref<NSString> getArgumentTypeAtIndex(std::uint32_t index) const;
  Ref<NSString> methodReturnType() const;

  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;
  Ref<NSString> description() const override;

  /// The run-time's records of the types, without the hidden arguments.
  const detail::ValueType* answerType() const noexcept { return answer_; }
  const std::vector<const detail::ValueType*>& argumentTypes() const noexcept { return arguments_; }

 private:
  template <class R, class... A>
  static Ref<NSMethodSignature> ofFunction(R (*)(A...)) {
    return make<NSMethodSignature>(
        &detail::valueType<std::remove_cvref_t<R>>,
        std::vector<const detail::ValueType*>{&detail::valueType<std::remove_cvref_t<A>>...});
  }

  const detail::ValueType* answer_;
  std::vector<const detail::ValueType*> arguments_;  // without the hidden ones
};

namespace detail {
/// A readable name of a type, for messages.
std::string typeName(const ValueType& type);
}  // namespace detail

}  // namespace qz

#pragma GCC visibility pop
