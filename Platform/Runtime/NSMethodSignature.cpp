#include "Platform/Runtime/NSMethodSignature.h"

#include <cxxabi.h>

#include <cstdlib>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"

namespace qz {
namespace detail {

std::string typeName(const ValueType& type) {
  switch (type.kind) {
    case Kind::Void:
      return "void";
    case Kind::Object:
      return type.objectClass == nullptr ? "NSObject" : std::string(type.objectClass()->name());
    case Kind::Selector:
      return "Selector";
    default:
      break;
  }
  int status = 0;
  std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(type.type->name(), nullptr, nullptr, &status), &std::free);
  return name != nullptr ? name.get() : type.type->name();
}

}  // namespace detail

NSMethodSignature::NSMethodSignature(const detail::ValueType* answer,
                                     std::vector<const detail::ValueType*> arguments)
    : answer_(answer), arguments_(std::move(arguments)) {}

std::uint32_t NSMethodSignature::numberOfArguments() const noexcept {
  return static_cast<std::uint32_t>(arguments_.size() + 2);
}

Ref<NSString> NSMethodSignature::getArgumentTypeAtIndex(std::uint32_t index) const {
  if (index >= numberOfArguments())
    detail::raise(NSInvalidArgumentException, "NSMethodSignature: index " + std::to_string(index) +
                                                  " beyond " + std::to_string(numberOfArguments()) +
                                                  " arguments");
  if (index == 0) return "NSObject"_ns;
  if (index == 1) return "Selector"_ns;
  return NSString::stringWithUTF8String(detail::typeName(*arguments_[index - 2]));
}

Ref<NSString> NSMethodSignature::methodReturnType() const {
  return NSString::stringWithUTF8String(detail::typeName(*answer_));
}

bool NSMethodSignature::isEqual(NSObject* other) const {
  auto* signature = as<NSMethodSignature>(other);
  if (signature == nullptr || arguments_.size() != signature->arguments_.size()) return false;
  auto same = [](const detail::ValueType* a, const detail::ValueType* b) {
    return a->kind == b->kind && detail::typeName(*a) == detail::typeName(*b);
  };
  return same(answer_, signature->answer_) &&
         std::equal(arguments_.begin(), arguments_.end(), signature->arguments_.begin(), same);
}

std::size_t NSMethodSignature::hash() const {
  std::size_t hash = static_cast<std::size_t>(answer_->kind);
  for (const auto* type : arguments_) hash = hash * 31 + static_cast<std::size_t>(type->kind);
  return hash;
}

Ref<NSString> NSMethodSignature::description() const {
  std::string text = detail::typeName(*answer_) + " (";
  for (std::size_t i = 0; i < arguments_.size(); ++i)
    text += (i == 0 ? "" : ", ") + detail::typeName(*arguments_[i]);
  return NSString::stringWithUTF8String(text + ")");
}

void NSMethodSignature::describe(ClassDescription<NSMethodSignature>& is) {
  is.named("NSMethodSignature")
      .method<&NSMethodSignature::numberOfArguments>("numberOfArguments")
      .method<&NSMethodSignature::getArgumentTypeAtIndex>("getArgumentTypeAtIndex:")
      .method<&NSMethodSignature::methodReturnType>("methodReturnType");
}

}  // namespace qz
