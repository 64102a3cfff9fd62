#include "Platform/Values/detail/Folding.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <vector>

#include "Platform/Values/detail/Characters.h"
#include "Platform/Values/detail/UnitKinds.h"

namespace qz::detail {
namespace {

const UNormalizer2* canonical() noexcept {
  UErrorCode status = U_ZERO_ERROR;
  return unorm2_getNFDInstance(&status);
}

const UNormalizer2* compatible() noexcept {
  UErrorCode status = U_ZERO_ERROR;
  return unorm2_getNFKDInstance(&status);
}

// Accents and points; not the vowel signs of Indic scripts, without which a word is another one.
bool isAccent(char32_t point) noexcept {
  const auto c = static_cast<UChar32>(point);
  return u_charType(c) == U_NON_SPACING_MARK && u_hasBinaryProperty(c, UCHAR_DIACRITIC);
}

// Ideographs, which are the bulk of some texts, remain what they are.
constexpr bool isIdeograph(char32_t point) noexcept { return point >= 0x3400 && point <= 0x9FFF; }

// The text of a full-width or half-width form as it is written in its usual width.
char32_t usualWidth(char32_t point) noexcept {
  const std::int32_t kind =
      u_getIntPropertyValue(static_cast<UChar32>(point), UCHAR_DECOMPOSITION_TYPE);
  if (kind != U_DT_WIDE && kind != U_DT_NARROW) return point;
  std::array<char16_t, 4> units;
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t count =
      unorm2_getRawDecomposition(compatible(), static_cast<UChar32>(point), units.data(),
                                 static_cast<std::int32_t>(units.size()), &status);
  if (U_FAILURE(status) || count < 1) return point;
  return characterAt({units.data(), static_cast<std::size_t>(count)}, 0).point;
}

}  // namespace

void Remains::append(char32_t point) noexcept {
  if (size_ + 2 <= units_.size())
    size_ = static_cast<std::size_t>(encodeUtf16(point, &units_[size_]) - units_.data());
}

void Remains::append(std::u16string_view units) noexcept {
  for (const char16_t unit : units)
    if (size_ < units_.size()) units_[size_++] = unit;
}

void Folding::foldCase(char32_t point, Remains& out) const noexcept {
  if (!case_ || isIdeograph(point)) {
    out.append(point);
    return;
  }
  if (point < 0x80) {
    out.append(char32_t{toAsciiLower(static_cast<char16_t>(point))});
    return;
  }
  Remains whole;
  whole.append(point);
  std::array<char16_t, 8> folded;
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t count =
      u_strFoldCase(folded.data(), static_cast<std::int32_t>(folded.size()), whole.view().data(),
                    static_cast<std::int32_t>(whole.view().size()), U_FOLD_CASE_DEFAULT, &status);
  if (U_FAILURE(status))
    out.append(point);
  else
    out.append({folded.data(), static_cast<std::size_t>(count)});
}

void Folding::fold(char32_t point, Remains& out) const noexcept {
  out.clear();
  if (point < 0x80) {
    out.append(case_ ? char32_t{toAsciiLower(static_cast<char16_t>(point))} : point);
    return;
  }
  if (width_) point = usualWidth(point);
  if (!accents_ || isIdeograph(point)) {
    foldCase(point, out);
    return;
  }
  std::array<char16_t, 8> parts;
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t count =
      unorm2_getDecomposition(canonical(), static_cast<UChar32>(point), parts.data(),
                              static_cast<std::int32_t>(parts.size()), &status);
  if (U_FAILURE(status) || count < 0) {
    if (!isAccent(point)) foldCase(point, out);
    return;
  }
  const std::u16string_view decomposed(parts.data(), static_cast<std::size_t>(count));
  for (std::size_t at = 0; at < decomposed.size();) {
    const Character each = characterAt(decomposed, at);
    if (!isAccent(each.point)) foldCase(each.point, out);
    at += each.width;
  }
}

void Folding::append(std::u16string_view text, UnitBuffer& out) const {
  Remains remains;
  for (std::size_t at = 0; at < text.size();) {
    const Character each = characterAt(text, at);
    fold(each.point, remains);
    out.append(remains.view());
    at += each.width;
  }
}

// Searching ---------------------------------------------------------------------------------------

namespace {

// The text up to the range's end, and where the range starts, both moved to whole characters.
struct Bounds {
  std::u16string_view text;
  std::size_t start;
  bool isWholeAtStart, isWholeAtEnd;
};

Bounds boundsOf(std::u16string_view text, NSRange within) noexcept {
  const std::size_t end = NSMaxRange(within);
  const bool cutsFirst = splitsPair(text, within.location);
  const bool cutsLast = splitsPair(text, end);
  const std::size_t start = within.location + std::size_t{cutsFirst};
  const std::size_t upTo = std::max(start, end - std::size_t{cutsLast});
  return {text.substr(0, std::min(upTo, text.size())), std::min(start, text.size()), !cutsFirst,
          !cutsLast};
}

NSRange rangeBetween(std::size_t from, std::size_t to) noexcept {
  return {static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to - from)};
}

}  // namespace

FoldedSearch::FoldedSearch(std::u16string_view part, std::uint32_t options) : folding_(options) {
  folding_.append(part, wanted_);
}

// Where the match that starts with the character at `at` ends; `none` when there is none.
std::size_t FoldedSearch::matchFrom(std::u16string_view text, std::size_t at) const noexcept {
  std::u16string_view left = wanted_.view();
  Remains remains;
  bool isFirst = true;
  while (!left.empty()) {
    if (at >= text.size()) return none;
    const Character each = characterAt(text, at);
    folding_.fold(each.point, remains);
    if (isFirst && remains.view().empty()) return none;
    if (!left.starts_with(remains.view())) return none;
    left.remove_prefix(remains.view().size());
    at += each.width;
    isFirst = false;
  }
  while (folding_.dropsMarks() && at < text.size()) {
    const Character each = characterAt(text, at);
    folding_.fold(each.point, remains);
    if (!remains.view().empty()) break;
    at += each.width;
  }
  return isFirst ? none : at;
}

// A cheap test ahead of `matchFrom`.
bool FoldedSearch::mayStart(std::u16string_view text, std::size_t at) const noexcept {
  const char16_t unit = text[at];
  if (unit >= 0x80) return true;
  const char16_t wanted = wanted_.view().front();
  return unit == wanted || toAsciiLower(unit) == wanted;
}

NSRange FoldedSearch::first(std::u16string_view text, NSRange within) const noexcept {
  if (wanted_.view().empty()) return notFoundRange;
  const Bounds in = boundsOf(text, within);
  for (std::size_t at = in.start; at < in.text.size(); at += characterAt(in.text, at).width) {
    if (!mayStart(in.text, at)) continue;
    const std::size_t end = matchFrom(in.text, at);
    if (end != none) return rangeBetween(at, end);
  }
  return notFoundRange;
}

NSRange FoldedSearch::last(std::u16string_view text, NSRange within) const noexcept {
  if (wanted_.view().empty()) return notFoundRange;
  const Bounds in = boundsOf(text, within);
  for (std::size_t at = in.text.size(); at > in.start;) {
    at -= characterBefore(in.text, at).width;
    if (!mayStart(in.text, at)) continue;
    const std::size_t end = matchFrom(in.text, at);
    if (end != none) return rangeBetween(at, end);
  }
  return notFoundRange;
}

NSRange FoldedSearch::atStart(std::u16string_view text, NSRange within) const noexcept {
  const Bounds in = boundsOf(text, within);
  if (wanted_.view().empty() || !in.isWholeAtStart) return notFoundRange;
  const std::size_t end = matchFrom(in.text, in.start);
  return end == none ? notFoundRange : rangeBetween(in.start, end);
}

NSRange FoldedSearch::atEnd(std::u16string_view text, NSRange within) const noexcept {
  const Bounds in = boundsOf(text, within);
  if (wanted_.view().empty() || !in.isWholeAtEnd) return notFoundRange;
  // Backwards, until what remains of the characters is as long as what is wanted.
  Remains remains;
  std::size_t length = 0;
  for (std::size_t at = in.text.size(); at > in.start && length < wanted_.size();) {
    const Character each = characterBefore(in.text, at);
    at -= each.width;
    folding_.fold(each.point, remains);
    length += remains.view().size();
    if (length == wanted_.size() && matchFrom(in.text, at) == in.text.size())
      return rangeBetween(at, in.text.size());
  }
  return notFoundRange;
}

std::size_t commonPrefix(std::u16string_view a, std::u16string_view b, std::uint32_t options) {
  if ((options & Folding::mask) == 0) {
    const auto [endOfA, endOfB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    const auto length = static_cast<std::size_t>(endOfA - a.begin());
    return splitsPair(a, length) || splitsPair(b, length) ? length - 1 : length;
  }
  const Folding folding(options);
  UnitBuffer other;
  std::vector<bool> endsAt{true};  // for each length of `other`: whether a character of `b` ends
  Remains remains;
  for (std::size_t at = 0; at < b.size();) {
    const Character each = characterAt(b, at);
    folding.fold(each.point, remains);
    other.append(remains.view());
    endsAt.resize(other.size() + 1);
    endsAt.back() = true;
    at += each.width;
  }
  const std::u16string_view wanted = other.view();
  std::size_t common = 0;
  std::size_t matched = 0;
  for (std::size_t at = 0; at < a.size();) {
    const Character each = characterAt(a, at);
    folding.fold(each.point, remains);
    if (!wanted.substr(matched).starts_with(remains.view())) break;
    matched += remains.view().size();
    at += each.width;
    if (endsAt[matched]) common = at;
  }
  return common;
}

}  // namespace qz::detail
