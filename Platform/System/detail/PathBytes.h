/// @file
/// Private: a path as the system takes it, without an allocation for the usual lengths.
#pragma once

#include <array>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>

#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/PathText.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// The bytes of a path, ended by a zero, without slashes at the end: they mean nothing here, while
/// to the system a link's name with a slash would be what the link leads to. What cannot be a path
/// (nil, the empty text, one with a zero or with lone surrogates that stand for no byte) gives
/// none, and `error` says why.
class PathBytes {
 public:
  explicit PathBytes(const NSString* path) {
    if (path == nullptr || path->length() == 0) {
      error_ = ENOENT;
      return;
    }
    const std::u16string_view text = path->view();
    if (text.size() < short_.size() && narrow(text)) return;
    convert(text);
  }
  PathBytes(const PathBytes&) = delete;
  PathBytes& operator=(const PathBytes&) = delete;

  /// 0, or an `errno`: ENOENT for nil and the empty path, EINVAL for what no file can be named.
  int error() const noexcept { return error_; }

  /// Valid while this lives; "" when there is an error.
  const char* c_str() const noexcept { return bytes_; }

  std::string_view view() const noexcept { return {bytes_, size_}; }

 private:
  bool narrow(std::u16string_view text) noexcept {
    unsigned int all = 0;
    bool hasZero = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
      all |= text[i];
      hasZero |= text[i] == 0;
      short_[i] = static_cast<char>(text[i]);
    }
    if (all >= 0x80 || hasZero) return false;
    bytes_ = short_.data();
    size_ = lengthOf({bytes_, text.size()});
    short_[size_] = '\0';
    return true;
  }

  static std::size_t lengthOf(std::string_view path) noexcept {
    while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
    return path.size();
  }

  void convert(std::u16string_view text) {
    auto converted = bytesOfPath(text);
    if (!converted || converted->find('\0') != std::string::npos) {
      error_ = EINVAL;
      return;
    }
    long_ = std::move(*converted);
    long_.resize(lengthOf(long_));
    bytes_ = long_.c_str();
    size_ = long_.size();
  }

  int error_ = 0;
  const char* bytes_ = "";
  std::size_t size_ = 0;
  std::string long_;
  std::array<char, 256>
      short_;  // NOLINT(cppcoreguidelines-pro-type-member-init): only what is used
};

}  // namespace qz::detail

#pragma GCC visibility pop
