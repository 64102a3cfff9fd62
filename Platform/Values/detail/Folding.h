/// @file
/// Private: searches and comparisons that overlook case, accents or width.
///
/// Each character is replaced by what remains of it, and the remains are compared unit by unit. A
/// match consists of whole characters: never half a surrogate pair, nor half of what a character
/// becomes ("s" does not occur in "ß").
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/Values/NSRange.h"
#include "Platform/Values/NSStringCompareOptions.h"
#include "Platform/Values/detail/UnitBuffer.h"

namespace qz::detail {

/// What remains of one character.
class Remains {
 public:
  void clear() noexcept { size_ = 0; }
  void append(char32_t point) noexcept;
  void append(std::u16string_view units) noexcept;

  std::u16string_view view() const noexcept { return {units_.data(), size_}; }

 private:
  // Four code points at most come out of a canonical decomposition, three of a case folding.
  std::array<char16_t, 24> units_;
  std::size_t size_ = 0;
};

/// Replaces characters as a combination of compare options asks.
class Folding {
 public:
  /// Which of the compare options change what a character is compared as.
  static constexpr std::uint32_t mask =
      NSCaseInsensitiveSearch | NSDiacriticInsensitiveSearch | NSWidthInsensitiveSearch;

  explicit Folding(std::uint32_t options) noexcept
      : case_((options & NSCaseInsensitiveSearch) != 0),
        accents_((options & NSDiacriticInsensitiveSearch) != 0),
        width_((options & NSWidthInsensitiveSearch) != 0) {}

  void fold(char32_t point, Remains& out) const noexcept;

  /// Adds what remains of all characters.
  void append(std::u16string_view text, UnitBuffer& out) const;

  /// Whether marks behind a character belong to it, being overlooked.
  bool dropsMarks() const noexcept { return accents_; }

 private:
  void foldCase(char32_t point, Remains& out) const noexcept;

  bool case_, accents_, width_;
};

/// Finds a part, prepared once, in any number of texts. Locations outside the range asked for are
/// never touched; a pair that the range cuts in two counts as outside.
class FoldedSearch {
 public:
  FoldedSearch(std::u16string_view part, std::uint32_t options);

  NSRange first(std::u16string_view text, NSRange within) const noexcept;
  NSRange last(std::u16string_view text, NSRange within) const noexcept;
  NSRange atStart(std::u16string_view text, NSRange within) const noexcept;
  NSRange atEnd(std::u16string_view text, NSRange within) const noexcept;

 private:
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  std::size_t matchFrom(std::u16string_view text, std::size_t at) const noexcept;
  bool mayStart(std::u16string_view text, std::size_t at) const noexcept;

  Folding folding_;
  UnitBuffer wanted_;
};

/// How many units of `a` come to the same as a beginning of `b`.
std::size_t commonPrefix(std::u16string_view a, std::u16string_view b, std::uint32_t options);

}  // namespace qz::detail
