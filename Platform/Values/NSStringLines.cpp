// Strings: their lines and paragraphs.

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/LineEnds.h"
#include "Platform/Values/detail/StringDescriptions.h"

namespace qz {

void detail::describeLines(ClassDescription<NSString>& is) {
  is.method<&NSString::lineRangeForRange>("lineRangeForRange:")
      .method<&NSString::paragraphRangeForRange>("paragraphRangeForRange:")
      .method<&NSString::getLineStart_end_contentsEnd_forRange>(
          "getLineStart:end:contentsEnd:forRange:");
}

namespace {

constexpr char16_t lineSeparator = 0x2028;

struct Lines {
  std::size_t start, contentsEnd, end;
};

// The end of the line, or paragraph, that has the unit at `at`.
template <bool Paragraphs>
std::size_t contentsEndFrom(std::u16string_view text, std::size_t at) noexcept {
  at = detail::findLineEnd(text, at);
  if constexpr (Paragraphs)
    while (at < text.size() && text[at] == lineSeparator) at = detail::findLineEnd(text, at + 1);
  return at;
}

template <bool Paragraphs>
Lines linesOf(std::u16string_view text, NSRange range) noexcept {
  const auto endsBefore = [text](std::size_t at) {
    const char16_t unit = text[at - 1];
    if (!detail::isLineEnd(unit) || (Paragraphs && unit == lineSeparator)) return false;
    return unit != u'\r' || at == text.size() || text[at] != u'\n';
  };
  Lines lines{};
  lines.start = range.location;
  while (lines.start > 0 && !endsBefore(lines.start)) --lines.start;
  std::size_t last = range.location;
  if (range.length > 1) last = NSMaxRange(range) - 1;
  // Between the halves of one terminator: its first half is where the contents end.
  const bool isLineFeed = last > lines.start && last < text.size() && text[last] == u'\n';
  if (isLineFeed && text[last - 1] == u'\r') --last;
  lines.contentsEnd = contentsEndFrom<Paragraphs>(text, last);
  lines.end = detail::skipLineEnd(text, lines.contentsEnd);
  return lines;
}

NSRange rangeOf(const Lines& lines) noexcept {
  return {static_cast<std::uint32_t>(lines.start),
          static_cast<std::uint32_t>(lines.end - lines.start)};
}

}  // namespace

NSRange NSString::lineRangeForRange(NSRange range) const {
  detail::requireRange("lineRangeForRange:", range, length_);
  return rangeOf(linesOf<false>(view(), range));
}

NSRange NSString::paragraphRangeForRange(NSRange range) const {
  detail::requireRange("paragraphRangeForRange:", range, length_);
  return rangeOf(linesOf<true>(view(), range));
}

void NSString::getLineStart_end_contentsEnd_forRange(std::uint32_t* start, std::uint32_t* end,
                                                     std::uint32_t* contentsEnd,
                                                     NSRange range) const {
  detail::requireRange("getLineStart:end:contentsEnd:forRange:", range, length_);
  const Lines lines = linesOf<false>(view(), range);
  if (start != nullptr) *start = static_cast<std::uint32_t>(lines.start);
  if (end != nullptr) *end = static_cast<std::uint32_t>(lines.end);
  if (contentsEnd != nullptr) *contentsEnd = static_cast<std::uint32_t>(lines.contentsEnd);
}

}  // namespace qz
