/// @file
/// Private: paths as text, and as the bytes the system takes.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#pragma GCC visibility push(default)

namespace qz::detail {

/// Without the slashes at the end; "/" of a path that has nothing else.
std::u16string_view withoutTrailingSlashes(std::u16string_view path) noexcept;

/// Where the last component begins in a path without slashes at the end.
std::size_t lastComponentStart(std::u16string_view path) noexcept;

/// The components, of which the first is "/" when the path is absolute.
std::vector<std::u16string_view> componentsOfPath(std::u16string_view path);

/// Adds a component, behind a slash unless the path is empty or ends with one.
[[gnu::visibility("hidden")]] void appendComponent(std::u16string& path,
                                                   std::u16string_view component);

/// Where the "." of the extension is in a component; `npos` when there is none.
std::size_t extensionStart(std::u16string_view component) noexcept;

/// The bytes of a path; no value for lone surrogates other than those that stand for a byte.
std::optional<std::string> bytesOfPath(std::u16string_view path);

/// The path of any bytes; those that are not UTF-8 become U+DC80 to U+DCFF, one each.
std::u16string pathOfBytes(std::string_view bytes);

}  // namespace qz::detail

#pragma GCC visibility pop
