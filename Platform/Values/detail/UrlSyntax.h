/// @file
/// Private: the generic syntax of URLs, RFC 3986.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace qz::detail {

/// The components of a URL as they stand, escapes and all; a component that is missing is another
/// thing than an empty one. The path is never missing.
struct UrlParts {
  std::optional<std::u16string_view> scheme;
  std::optional<std::u16string_view> user;
  std::optional<std::u16string_view> password;
  std::optional<std::u16string_view> host;  // there is one, maybe empty, where there is "//"
  std::optional<std::u16string_view> port;
  std::u16string_view path;
  std::optional<std::u16string_view> query;
  std::optional<std::u16string_view> fragment;
};

/// The components of `text`, into which they point; no value when it is not well formed, which
/// also means a port above 65535.
std::optional<UrlParts> parseUrl(std::u16string_view text);

/// The opposite. A path that would be read as something else gets "./" or "/." before it.
std::u16string composeUrl(const UrlParts& parts);

/// The URL that `reference` means where it stands in a document at `base`.
std::u16string resolveUrl(const UrlParts& base, const UrlParts& reference);

/// A path without its "." and ".." components: "/a/b/../c/." is "/a/c/".
std::u16string removeDotSegments(std::u16string_view path);

}  // namespace qz::detail

#pragma GCC visibility pop
