#include "Platform/System/detail/PropertyListFault.h"

#include <algorithm>
#include <utility>

#include "Platform/Values/detail/Utf.h"

namespace qz::detail {
namespace {

// Leaves the position in the last line to `fault.column`, counted in elements of the text.
template <class Unit>
std::size_t startOfLine(std::basic_string_view<Unit> text, std::size_t position,
                        PropertyListFault& fault) {
  std::size_t start = 0;
  for (std::size_t i = 0; i < position; ++i) {
    const bool endsLine =
        text[i] == '\n' || (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n'));
    if (!endsLine) continue;
    ++fault.line;
    start = i + 1;
  }
  return start;
}

}  // namespace

std::string PropertyListFault::text() const {
  if (line == 0) return "byte " + std::to_string(byte) + ": " + reason;
  return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + reason;
}

PropertyListFault faultInText(std::u16string_view text, PropertyListFailure failure) {
  PropertyListFault fault{std::move(failure.reason), 1, 1};
  const std::size_t position = std::min(failure.position, text.size());
  fault.column = static_cast<std::uint32_t>(position - startOfLine(text, position, fault) + 1);
  return fault;
}

PropertyListFault faultInText(std::string_view utf8, PropertyListFailure failure) {
  PropertyListFault fault{std::move(failure.reason), 1, 1};
  const std::size_t position = std::min(failure.position, utf8.size());
  const std::size_t start = startOfLine(utf8, position, fault);
  fault.column = static_cast<std::uint32_t>(utf16Length(utf8.substr(start, position - start)) + 1);
  return fault;
}

PropertyListFault faultInBytes(PropertyListFailure failure) {
  PropertyListFault fault{std::move(failure.reason)};
  fault.byte = failure.position;
  return fault;
}

}  // namespace qz::detail
