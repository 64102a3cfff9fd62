#include "Platform/Runtime/NSInvocation.h"

#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"

namespace qz {

using detail::Kind;
using detail::TypedWord;
using detail::ValueType;
using detail::Word;

namespace {

// `given` as a word of type `wanted`, borrowed.
Word converted(TypedWord given, const ValueType& wanted, const char* what) {
  if (detail::isScalar(given.type->kind) && detail::isScalar(wanted.kind))
    return detail::convertScalar(given.word, given.type->kind, wanted.kind);
  const bool sameKind = given.type->kind == wanted.kind;
  const bool typed = wanted.kind == Kind::Bytes || wanted.kind == Kind::Value;
  if (!sameKind || (typed && *given.type->type != *wanted.type))
    detail::raise(NSInvalidArgumentException, std::string("NSInvocation: ") + what +
                                                  " is of type " + detail::typeName(wanted) +
                                                  ", not " + detail::typeName(*given.type));
  if (wanted.kind == Kind::Object && wanted.objectClass != nullptr && given.word != 0) {
    auto* object = reinterpret_cast<NSObject*>(given.word);
    if (!object->isKindOfClass(wanted.objectClass()))
      detail::raise(NSInvalidArgumentException,
                    std::string("NSInvocation: ") + what + " is of class " +
                        std::string(wanted.objectClass()->name()) + ", not " +
                        std::string(object->classObject()->name()));
  }
  return given.word;
}

// A copy of a value that fits no word.
void* copied(Word word, const ValueType& type) {
  if (type.copy == nullptr)
    detail::raise(NSInvalidArgumentException, "NSInvocation: a value of type " +
                                                  detail::typeName(type) +
                                                  " cannot be kept, because it cannot be copied");
  return type.copy(reinterpret_cast<const void*>(word));
}

// Values that fit no word have none that would stand for zero.
void requireValue(const TypedWord& argument) {
  if (argument.type->kind == Kind::Value && argument.word == 0)
    detail::raise(NSInvalidArgumentException, "NSInvocation: the argument has not been set");
}

}  // namespace

Ref<NSInvocation> NSInvocation::invocationWithMethodSignature(NSMethodSignature* signature) {
  return make<NSInvocation>(signature);
}

NSInvocation::NSInvocation(NSMethodSignature* signature) : signature_(signature) {
  if (signature == nullptr)
    detail::raise(NSInvalidArgumentException, "NSInvocation needs a method signature");
  arguments_.resize(signature->argumentTypes().size());
  copies_.resize(arguments_.size());
}

NSInvocation::~NSInvocation() {
  dropReturn();
  if (!retained_) return;
  release(target_);
  for (std::size_t i = 0; i < arguments_.size(); ++i)
    if (signature_->argumentTypes()[i]->kind == Kind::Object)
      release(reinterpret_cast<NSObject*>(arguments_[i]));
}

Ref<NSMethodSignature> NSInvocation::methodSignature() const { return signature_; }
Ref<NSObject> NSInvocation::target() const { return Ref<NSObject>(target_); }

void NSInvocation::setTarget(NSObject* target) {
  if (retained_) {
    retain(target);
    release(target_);
  }
  target_ = target;
}

void NSInvocation::setTyped(TypedWord value, std::uint32_t index) {
  if (index < 2 || index - 2 >= arguments_.size())
    detail::raiseIndex("NSInvocation setArgument:atIndex:", index, arguments_.size() + 2);
  const std::size_t i = index - 2;
  const ValueType& wanted = *signature_->argumentTypes()[i];
  Word word = converted(value, wanted, "the argument");
  if (wanted.kind == Kind::Value) {
    copies_[i] = std::shared_ptr<void>(copied(word, wanted), wanted.destroy);
    word = reinterpret_cast<Word>(copies_[i].get());
  } else if (wanted.kind == Kind::Object && retained_) {
    retain(reinterpret_cast<NSObject*>(word));
    release(reinterpret_cast<NSObject*>(arguments_[i]));
  }
  arguments_[i] = word;
}

Word NSInvocation::typedArgument(std::uint32_t index, const ValueType& wanted) const {
  if (index < 2 || index - 2 >= arguments_.size())
    detail::raiseIndex("NSInvocation argumentAtIndex:", index, arguments_.size() + 2);
  const TypedWord has{arguments_[index - 2], signature_->argumentTypes()[index - 2]};
  requireValue(has);
  return converted(has, wanted, "what was asked for");
}

void NSInvocation::retainArguments() {
  if (retained_) return;
  retained_ = true;
  retain(target_);
  for (std::size_t i = 0; i < arguments_.size(); ++i)
    if (signature_->argumentTypes()[i]->kind == Kind::Object)
      retain(reinterpret_cast<NSObject*>(arguments_[i]));
}

Ref<NSObject> NSInvocation::copy() const {
  auto other = make<NSInvocation>(signature_);
  other->target_ = target_;
  other->selector_ = selector_;
  other->arguments_ = arguments_;
  other->copies_ = copies_;  // shared: what is kept is never changed
  if (retained_) other->retainArguments();
  return other;
}

void NSInvocation::invoke() { invokeWithTarget(target_); }

void NSInvocation::invokeWithTarget(NSObject* target) {
  dropReturn();
  if (target == nullptr) return;
  std::vector<TypedWord> typed;
  typed.reserve(arguments_.size());
  for (std::size_t i = 0; i < arguments_.size(); ++i) {
    typed.push_back({arguments_[i], signature_->argumentTypes()[i]});
    requireValue(typed.back());
  }
  const ValueType* answer = signature_->answerType();
  Ref<NSObject> alive(target);
  const Word word =
      detail::sendSlowly(detail::lookUp(target, selector_), target, selector_, typed, answer);
  dropReturn();  // the operation may have invoked this very invocation
  return_ = word;
}

Word NSInvocation::typedReturn(const ValueType& wanted) const {
  const ValueType& has = *signature_->answerType();
  if (has.kind == Kind::Void) return 0;
  return converted({return_, &has}, wanted, "what was asked for");
}

void NSInvocation::setTypedReturn(TypedWord value) {
  const ValueType& wanted = *signature_->answerType();
  Word word = converted(value, wanted, "the answer");
  if (wanted.kind == Kind::Object)
    retain(reinterpret_cast<NSObject*>(word));
  else if (wanted.kind == Kind::Value)
    word = reinterpret_cast<Word>(copied(word, wanted));
  dropReturn();
  return_ = word;
}

void NSInvocation::dropReturn() noexcept {
  const Reply dropped(std::exchange(return_, 0), signature_->answerType());
}

void NSInvocation::describe(ClassDescription<NSInvocation>& is) {
  is.named("NSInvocation")
      .classMethod<&NSInvocation::invocationWithMethodSignature>("invocationWithMethodSignature:")
      .method<&NSInvocation::methodSignature>("methodSignature")
      .property<&NSInvocation::target, &NSInvocation::setTarget>("target")
      .property<&NSInvocation::selector, &NSInvocation::setSelector>("selector")
      .method<&NSInvocation::retainArguments>("retainArguments")
      .method<&NSInvocation::argumentsRetained>("argumentsRetained")
      .method<&NSInvocation::invoke>("invoke")
      .method<&NSInvocation::invokeWithTarget>("invokeWithTarget:");
}

}  // namespace qz
