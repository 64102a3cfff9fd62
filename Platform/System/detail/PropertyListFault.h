/// @file
/// Private: what is wrong with a property list, and where.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qz::detail {

/// Property lists nested deeper than this are neither read nor written. Each level takes a few
/// hundred bytes of stack, and comparing two lists goes down as far.
inline constexpr std::uint32_t deepestPropertyList = 512;

/// Why bytes could not be read, and where. Lines and columns count from 1, columns in code units;
/// where there are no lines (line 0), `byte` counts from the first byte, 0.
struct PropertyListFault {
  std::string reason;
  std::uint32_t line = 0;
  std::uint32_t column = 0;
  std::uint64_t byte = 0;

  /// "line 3, column 7: a semicolon is missing", or "byte 21: …".
  std::string text() const;
};

/// What a reader throws to itself: a reason and how many units or bytes lie before the place.
struct PropertyListFailure {
  std::string reason;
  std::size_t position;
};

/// The place in a text. CR LF is one end of a line.
PropertyListFault faultInText(std::u16string_view text, PropertyListFailure failure);
PropertyListFault faultInText(std::string_view utf8, PropertyListFailure failure);

/// The place in a binary list.
PropertyListFault faultInBytes(PropertyListFailure failure);

}  // namespace qz::detail
