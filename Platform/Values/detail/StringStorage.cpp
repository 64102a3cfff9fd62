#include "Platform/Values/detail/StringStorage.h"

#include <algorithm>
#include <memory>
#include <string>

#include "Platform/Runtime/NSException.h"

namespace qz::detail {

void refuseLength(std::uint64_t length) {
  raise(NSMallocException, "a String of " + std::to_string(length) + " units is too long");
}

char16_t* reallocateUnits(char16_t* units, std::size_t count) {
  void* memory = std::realloc(units, std::max<std::size_t>(count, 1) * sizeof(char16_t));
  if (memory == nullptr)
    raise(NSMallocException, "no memory for " + std::to_string(count) + " units");
  return static_cast<char16_t*>(memory);
}

char16_t* shrinkUnits(char16_t* units, std::size_t count) noexcept {
  void* memory = std::realloc(units, std::max<std::size_t>(count, 1) * sizeof(char16_t));
  return memory != nullptr ? static_cast<char16_t*>(memory) : units;
}

Ref<NSString> makeString(std::u16string_view units) {
  return fillString(units.size(),
                    [units](char16_t* out) { std::copy(units.begin(), units.end(), out); });
}

Ref<NSString> adoptUnits(char16_t* units, std::size_t count) {
  std::unique_ptr<char16_t, decltype(&std::free)> owned(units, &std::free);
  const std::uint32_t length = checkedLength(count);
  if (length == 0) return ""_ns;
  auto string = qz::make<BufferString>(units, length);
  static_cast<void>(owned.release());
  return string;
}

NSString& requireString(NSString* argument, const char* operation) {
  if (argument == nullptr)
    raise(NSInvalidArgumentException, std::string(operation) + ": nil argument");
  return *argument;
}

}  // namespace qz::detail
