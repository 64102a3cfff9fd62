// Sending beyond the fast road: conversions, forwarding, and what is refused.
#include "Platform/Runtime/detail/Dispatch.h"

#include <cmath>
#include <limits>
#include <string>

#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/NSInvocation.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Runtime/detail/InvocationAccess.h"

namespace qz::detail {
namespace {

std::string describeCall(const NSObject* receiver, Selector selector) {
  Class* aClass = receiver->classObject();
  const bool toClass = aClass == classOf<Class>();
  const auto name = toClass ? static_cast<const Class*>(receiver)->name() : aClass->name();
  return std::string(toClass ? "+[" : "-[") + std::string(name) + " " +
         std::string(selector.name()) + "]";
}

std::string givenType(const TypedWord& given) {
  if (given.type->kind == Kind::Object && given.word != 0)
    return std::string(reinterpret_cast<NSObject*>(given.word)->classObject()->name());
  return typeName(*given.type);
}

[[noreturn]] void refuseKind(const NSObject* receiver, Selector selector, std::size_t position,
                             const ValueType& wanted, const TypedWord& given) {
  raise(NSInvalidArgumentException, describeCall(receiver, selector) + ": argument " +
                                        std::to_string(position + 1) + " is of type " +
                                        givenType(given) + ", not " + typeName(wanted));
}

bool sameType(const ValueType& a, const ValueType& b) {
  if (a.kind != b.kind) return false;
  return (a.kind != Kind::Bytes && a.kind != Kind::Value) || *a.type == *b.type;
}

// The operation's answer as the caller wants it; takes over the answer's ownership.
Word convertAnswer(Word word, const ValueType& has, const ValueType& wanted,
                   const NSObject* receiver, Selector selector) {
  if (sameType(has, wanted)) return word;
  if (isScalar(has.kind) && isScalar(wanted.kind))
    return convertScalar(word, has.kind, wanted.kind);
  const Reply dropped(word, &has);
  if (wanted.kind == Kind::Void || has.kind == Kind::Void) return 0;
  raise(NSInvalidArgumentException, describeCall(receiver, selector) + " answers " + typeName(has) +
                                        ", not " + typeName(wanted));
}

// A forwarded message's arguments, converted to what its signature says.
Word forward(NSObject* receiver, Selector selector, std::span<const TypedWord> arguments,
             const ValueType*& answer) {
  Ref<NSMethodSignature> signature = receiver->methodSignatureForSelector(selector);
  if (signature == nullptr) receiver->doesNotRecognizeSelector(selector);
  auto invocation = NSInvocation::invocationWithMethodSignature(signature);
  invocation->setTarget(receiver);
  invocation->setSelector(selector);
  const std::size_t taken = signature->argumentTypes().size();
  if (arguments.size() < taken)
    raise(NSInvalidArgumentException, describeCall(receiver, selector) + " takes " +
                                          std::to_string(taken) + " arguments, " +
                                          std::to_string(arguments.size()) + " given");
  for (std::size_t i = 0; i < taken; ++i)
    InvocationAccess::setArgument(*invocation, arguments[i], static_cast<std::uint32_t>(i + 2));
  receiver->forwardInvocation(invocation);
  const ValueType* has = signature->answerType();
  const Word word = InvocationAccess::takeReturn(*invocation);
  if (answer == nullptr) {
    answer = has;
    return word;
  }
  return convertAnswer(word, *has, *answer, receiver, selector);
}

template <class To>
Word fromDouble(double value) {
  if constexpr (std::is_same_v<To, bool>) {
    return value != 0;
  } else {
    // Out of range is undefined in C++; the nearest value is what a caller can work with.
    if (std::isnan(value)) return 0;
    constexpr auto low = static_cast<double>(std::numeric_limits<To>::min());
    constexpr auto high = static_cast<double>(std::numeric_limits<To>::max());
    if (value <= low) return toWord(std::numeric_limits<To>::min());
    if (value >= high) return toWord(std::numeric_limits<To>::max());
    return toWord(static_cast<To>(value));
  }
}

}  // namespace

Word convertScalar(Word word, Kind from, Kind to) noexcept {
  if (from == to) return word;
  if (isInteger(from) && isInteger(to)) {
    switch (to) {
      case Kind::Bool:
        return word != 0;
      case Kind::Int8:
        return toWord(static_cast<std::int8_t>(word));
      case Kind::UInt8:
        return toWord(static_cast<std::uint8_t>(word));
      case Kind::Int16:
        return toWord(static_cast<std::int16_t>(word));
      case Kind::UInt16:
        return toWord(static_cast<std::uint16_t>(word));
      case Kind::Int32:
        return toWord(static_cast<std::int32_t>(word));
      case Kind::UInt32:
        return toWord(static_cast<std::uint32_t>(word));
      default:
        return word;
    }
  }
  double value;
  if (from == Kind::Float)
    value = static_cast<double>(plainFromWord<float>(word));
  else if (from == Kind::Double)
    value = plainFromWord<double>(word);
  else if (from == Kind::UInt64)
    value = static_cast<double>(word);
  else
    value = static_cast<double>(static_cast<std::int64_t>(word));
  switch (to) {
    case Kind::Bool:
      return fromDouble<bool>(value);
    case Kind::Int8:
      return fromDouble<std::int8_t>(value);
    case Kind::UInt8:
      return fromDouble<std::uint8_t>(value);
    case Kind::Int16:
      return fromDouble<std::int16_t>(value);
    case Kind::UInt16:
      return fromDouble<std::uint16_t>(value);
    case Kind::Int32:
      return fromDouble<std::int32_t>(value);
    case Kind::UInt32:
      return fromDouble<std::uint32_t>(value);
    case Kind::Int64:
      return fromDouble<std::int64_t>(value);
    case Kind::UInt64:
      return fromDouble<std::uint64_t>(value);
    case Kind::Float:
      return toWord(static_cast<float>(value));
    default:
      return toWord(value);
  }
}

Word sendSlowly(const DispatchEntry& entry, NSObject* receiver, Selector selector,
                std::span<const TypedWord> arguments, const ValueType*& answer) {
  if (entry.method == nullptr) return forward(receiver, selector, arguments, answer);

  const Method& method = *entry.method;
  if (arguments.size() < method.arguments.size())
    raise(NSInvalidArgumentException, describeCall(receiver, selector) + " takes " +
                                          std::to_string(method.arguments.size()) + " arguments, " +
                                          std::to_string(arguments.size()) + " given");
  Word words[maxArguments] = {};
  for (std::size_t i = 0; i < method.arguments.size(); ++i) {
    const ValueType& wanted = *method.arguments[i];
    const TypedWord& given = arguments[i];
    if (sameType(*given.type, wanted))
      words[i] = given.word;
    else if (isScalar(given.type->kind) && isScalar(wanted.kind))
      words[i] = convertScalar(given.word, given.type->kind, wanted.kind);
    else
      refuseKind(receiver, selector, i, wanted, given);
  }
  const Word word = callWithWords(entry.imp, receiver, selector, words, method.arguments.size());
  if (answer == nullptr) {
    answer = method.answer;
    return word;
  }
  return convertAnswer(word, *method.answer, *answer, receiver, selector);
}

void refuseArgument(const NSObject* receiver, Selector selector, std::size_t position,
                    Class* wanted, const NSObject* given) {
  raise(NSInvalidArgumentException, describeCall(receiver, selector) + ": argument " +
                                        std::to_string(position + 1) + " is of class " +
                                        std::string(given->classObject()->name()) + ", not " +
                                        std::string(wanted->name()));
}

void refuseAnswer(Selector selector, Class* wanted, const NSObject* given) {
  raise(NSInvalidArgumentException, std::string(selector.name()) + " answered an Object of class " +
                                        std::string(given->classObject()->name()) + ", not " +
                                        std::string(wanted->name()));
}

}  // namespace qz::detail

namespace qz {

void Reply::drop() noexcept {
  if (type_->kind == detail::Kind::Object)
    release(reinterpret_cast<NSObject*>(word_));
  else
    type_->destroy(reinterpret_cast<void*>(word_));
}

bool Reply::isObject() const noexcept {
  return type_ != nullptr && type_->kind == detail::Kind::Object;
}

Ref<NSObject> Reply::object() const& {
  if (isObject()) return Ref<NSObject>(reinterpret_cast<NSObject*>(word_));
  if (type_ != nullptr && type_->kind != detail::Kind::Void)
    detail::raise(NSInvalidArgumentException,
                  "the operation answers " + detail::typeName(*type_) + ", not an Object");
  return nullptr;
}

Ref<NSObject> Reply::object() && {
  if (!isObject()) return static_cast<const Reply&>(*this).object();
  return Ref<NSObject>(reinterpret_cast<NSObject*>(std::exchange(word_, 0)), adopt);
}

bool Reply::boolValue() const noexcept {
  if (type_ == nullptr) return false;
  if (detail::isInteger(type_->kind)) return (word_ & 0xFF) != 0;
  if (detail::isFloating(type_->kind))
    return detail::convertScalar(word_, type_->kind, detail::Kind::Bool) != 0;
  return word_ != 0;
}

std::int64_t Reply::integerValue() const {
  if (type_ == nullptr || type_->kind == detail::Kind::Void) return 0;
  if (!detail::isInteger(type_->kind) && !detail::isFloating(type_->kind))
    detail::raise(NSInvalidArgumentException,
                  "the operation answers " + detail::typeName(*type_) + ", not an integer");
  return static_cast<std::int64_t>(detail::convertScalar(word_, type_->kind, detail::Kind::Int64));
}

Reply detail::performSlowly(NSObject* receiver, Selector selector, Word first, Word second,
                            std::size_t count) {
  const DispatchEntry& entry = lookUp(receiver, selector);
  if ((entry.shape & allObjectsBit) != 0 && shapeArguments(entry.shape) <= count)
    return Reply(entry.imp(receiver, selector, first, second, 0, nullptr), entry.method->answer);
  const TypedWord typed[] = {{first, &valueType<NSObject*>}, {second, &valueType<NSObject*>}};
  const ValueType* answer = nullptr;
  const Word word = sendSlowly(entry, receiver, selector, {typed, count}, answer);
  return Reply(word, answer);
}

}  // namespace qz
