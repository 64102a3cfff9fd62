/// @file
/// Private: sets of code points, as sorted ranges with bitmaps in front.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#pragma GCC visibility push(default)

namespace qz::detail {

/// Any set of 0 … 0x10FFFF. The ranges are the set, and tell equality; the bitmaps answer for
/// single units: one of 256 bits always, and pages of as many for the rest of the first plane where
/// the set has members there. Immutable but for assignment.
class CodePointSet {
 public:
  static constexpr char32_t limit = 0x110000;

  /// From `first` on, before `end`.
  struct Range {
    char32_t first;
    char32_t end;
    friend bool operator==(Range, Range) noexcept = default;
  };

  CodePointSet() noexcept = default;

  /// The union of ranges in any order; what is beyond `limit` is cut off.
  explicit CodePointSet(std::vector<Range> ranges);

  bool holdsUnit(char16_t unit) const noexcept {
    if (unit < 0x100) return isSet(latin_, unit);
    if (pages_.empty()) return false;
    return isSet(pages_[pageOf_[unit >> 8]], unit & 0xFFu);
  }
  bool holds(char32_t point) const noexcept {
    return point < 0x10000 ? holdsUnit(static_cast<char16_t>(point)) : holdsAbove(point);
  }

  std::span<const Range> ranges() const noexcept { return ranges_; }
  bool isSupersetOf(const CodePointSet& other) const noexcept;

  CodePointSet inverted() const;
  CodePointSet unionWith(const CodePointSet& other) const;
  CodePointSet intersectionWith(const CodePointSet& other) const;
  CodePointSet without(const CodePointSet& other) const;

  friend bool operator==(const CodePointSet& a, const CodePointSet& b) noexcept {
    return a.ranges_ == b.ranges_;
  }

 private:
  using Page = std::array<std::uint64_t, 4>;

  static bool isSet(const Page& page, std::size_t bit) noexcept {
    return (page[bit >> 6] >> (bit & 63u) & 1u) != 0;
  }
  bool holdsAbove(char32_t point) const noexcept;
  void makePages();

  Page latin_{};
  std::vector<Range> ranges_;
  // Which of the pages stands for units with this high byte. Without pages nothing is above U+00FF
  // in the first plane.
  std::vector<Page> pages_;
  std::array<std::uint8_t, 256> pageOf_{};
};

}  // namespace qz::detail

#pragma GCC visibility pop
