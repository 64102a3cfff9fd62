/// @file
/// A message as an Object: kept, changed, sent later or elsewhere.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Platform/Runtime/NSMethodSignature.h"
#include "Platform/Runtime/Send.h"

#pragma GCC visibility push(default)

namespace qz {
namespace detail {
struct InvocationAccess;
}

/// A target, a Selector, arguments and, once invoked, an answer.
///
/// Arguments count from 2, as in NSMethodSignature. Objects among them (and the target) are
/// borrowed until `retainArguments`; scalars are copied. Not safe for use by two threads at a time.
class NSInvocation : public Derives<NSInvocation, NSObject> {
 public:
  static void describe(ClassDescription<NSInvocation>& is);

  /// An invocation whose arguments are zero. Raises NSInvalidArgumentException for nil.
  static Ref<NSInvocation> invocationWithMethodSignature(NSMethodSignature* signature);
  explicit NSInvocation(NSMethodSignature* signature);
  ~NSInvocation() override;

  /// The signature it was made with.
  Ref<NSMethodSignature> methodSignature() const;

  /// Whom the message goes to, and which one it is: arguments 0 and 1. Nil and the null Selector at
  /// first.
  Ref<NSObject> target() const;
  void setTarget(NSObject* target);
  Selector selector() const noexcept { return selector_; }
  void setSelector(Selector selector) noexcept { selector_ = selector; }

  /// Sets argument `index` (2 or more), converting scalars, and answers it. Raises NSRangeException
  /// for an index out of range, NSInvalidArgumentException for a value that is not of the
  /// argument's type. Values that fit no word are copied; asking for one that has not been set
  /// raises NSInvalidArgumentException.
  template <class A>
  void setArgument_atIndex(const A& value, std::uint32_t index) {
    setTyped({detail::toWord(value), &detail::valueType<A>}, index);
  }
  template <class A>
  A argumentAtIndex(std::uint32_t index) const {
    detail::Word word = typedArgument(index, detail::valueType<A>);
    if constexpr (detail::isRef<A>)
      return detail::resultFromWord<A>(detail::answerToWord(reinterpret_cast<NSObject*>(word)),
                                       selector_);
    else if constexpr (detail::kindOf<A>() == detail::Kind::Value)
      return *reinterpret_cast<const A*>(word);
    else
      return detail::plainFromWord<A>(word);
  }

  /// Keeps the target and every Object argument alive as long as the invocation. Idempotent; what
  /// is set afterwards is kept as well.
  void retainArguments();
  bool argumentsRetained() const noexcept { return retained_; }

  /// Another invocation of the same message, not yet invoked, which keeps its arguments if this one
  /// does.
  Ref<NSObject> copy() const override;

  /// Sends the message to the target (nil: nothing, and the answer is zero). Raises
  /// NSInvalidArgumentException when an argument that fits no word has not been set, and what
  /// sending raises.
  void invoke();
  void invokeWithTarget(NSObject* target);

  /// The answer; zero before `invoke`. Raises NSInvalidArgumentException when it is of another
  /// kind that does not convert.
  template <class R>
  R returnValue() const {
    detail::Word word = typedReturn(detail::valueType<R>);
    if constexpr (detail::isRef<R>)
      return detail::resultFromWord<R>(detail::answerToWord(reinterpret_cast<NSObject*>(word)),
                                       selector_);
    else if constexpr (detail::kindOf<R>() == detail::Kind::Value)
      return word == 0 ? R() : *reinterpret_cast<const R*>(word);
    else
      return detail::plainFromWord<R>(word);
  }

  /// Sets the answer, for `forwardInvocation` to answer without another Object. Raises
  /// NSInvalidArgumentException for a value of another type.
  template <class R>
  void setReturnValue(const R& value) {
    setTypedReturn({detail::toWord(value), &detail::valueType<R>});
  }

 private:
  friend struct detail::InvocationAccess;

  void setTyped(detail::TypedWord value, std::uint32_t index);
  detail::Word typedArgument(std::uint32_t index, const detail::ValueType& wanted) const;
  detail::Word typedReturn(const detail::ValueType& wanted) const;
  void setTypedReturn(detail::TypedWord value);
  void dropReturn() noexcept;

  Ref<NSMethodSignature> signature_;
  NSObject* target_ = nullptr;
  Selector selector_;
  std::vector<detail::Word> arguments_;
  std::vector<std::shared_ptr<void>> copies_;  // arguments that fit no word
  detail::Word return_ = 0;                    // owns its Object or value
  bool retained_ = false;
};

}  // namespace qz

#pragma GCC visibility pop
