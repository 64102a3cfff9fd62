/// @file
/// Private: enters descriptions into a class's tables.
#pragma once

#include <span>
#include <string_view>

#include "Platform/Runtime/Class.h"
#include "Platform/Runtime/detail/Dispatch.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// One operation, as the describing templates see it.
struct MethodSpec {
  Imp imp;
  Shape shape;
  const ValueType* answer;
  std::span<const ValueType* const> arguments;
};

/// Adds to a class under the run-time's lock, which the caller holds while it lives.
class ClassBuilder {
 public:
  ClassBuilder(Class* aClass, std::string_view category) noexcept
      : class_(aClass), category_(category) {}

  void setName(std::string_view name);
  void addMethod(std::string_view name, const MethodSpec& spec);
  void addClassMethod(std::string_view name, const MethodSpec& spec);

  /// Replaces the implementation of an operation that the class has or inherits.
  void replaceMethod(std::string_view name, const MethodSpec& spec);

  /// Adds the property and its accessors; `setter` is null for a read-only one.
  void addProperty(std::string_view key, const MethodSpec& getter, const MethodSpec* setter);

  /// The property added last changes whenever the value at `keyPath` does.
  void addDependency(std::string_view keyPath);
  void setInitialize(void (*function)());

 private:
  Class* class_;
  std::string_view category_;
};

}  // namespace qz::detail

#pragma GCC visibility pop
