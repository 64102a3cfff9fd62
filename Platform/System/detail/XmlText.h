/// @file
/// Private: the texts of XML, as they stand in a file and as they are meant.
#pragma once

#include <string>
#include <string_view>

namespace qz::detail {

constexpr bool isXmlBlank(char c) noexcept {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// Whether the text stands for itself: nothing escaped, no end of line to change, no forbidden
/// character of one byte.
bool isPlainXmlText(std::string_view text) noexcept;

/// Appends what the text means: with ends of lines as LF and, if `unescapes`, references replaced
/// by their characters. Throws a PropertyListFailure with the place in `text` for unknown entities
/// and for what XML does not allow.
void appendXmlText(std::string_view text, bool unescapes, std::string& out);

}  // namespace qz::detail
