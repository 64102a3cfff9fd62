// Strings: finding texts and characters in them.

#include <algorithm>
#include <optional>
#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSCharacterSet.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/Characters.h"
#include "Platform/Values/detail/Folding.h"
#include "Platform/Values/detail/StringDescriptions.h"
#include "Platform/Values/detail/StringSearch.h"
#include "Platform/Values/detail/StringStorage.h"
#include "Platform/Values/detail/UnitSearch.h"

namespace qz {

using detail::requireString;

void detail::describeSearching(ClassDescription<NSString>& is) {
  is.method<&NSString::compare_options>("compare:options:")
      .method<&NSString::compare_options_range>("compare:options:range:")
      .method<&NSString::localizedCompare>("localizedCompare:")
      .method<&NSString::localizedCaseInsensitiveCompare>("localizedCaseInsensitiveCompare:")
      .method<&NSString::containsString>("containsString:")
      .method<&NSString::rangeOfString>("rangeOfString:")
      .method<&NSString::rangeOfString_options>("rangeOfString:options:")
      .method<&NSString::rangeOfString_options_range>("rangeOfString:options:range:")
      .method<&NSString::rangeOfCharacterFromSet>("rangeOfCharacterFromSet:")
      .method<&NSString::rangeOfCharacterFromSet_options>("rangeOfCharacterFromSet:options:")
      .method<&NSString::rangeOfCharacterFromSet_options_range>(
          "rangeOfCharacterFromSet:options:range:")
      .method<&NSString::commonPrefixWithString_options>("commonPrefixWithString:options:");
}

namespace {

NSRange rangeAt(std::size_t location, std::size_t length) noexcept {
  return {static_cast<std::uint32_t>(location), static_cast<std::uint32_t>(length)};
}

NSRange foundUnits(std::u16string_view text, std::u16string_view part, std::uint32_t options,
                   NSRange within) {
  const std::u16string_view searched = text.substr(within.location, within.length);
  const bool backwards = (options & NSBackwardsSearch) != 0;
  std::size_t at = searched.npos;
  if ((options & NSAnchoredSearch) == 0) {
    at = backwards ? detail::findLastUnits(searched, part) : detail::findUnits(searched, part);
  } else if (!part.empty() && (backwards ? searched.ends_with(part) : searched.starts_with(part))) {
    at = backwards ? searched.size() - part.size() : 0;
  }
  return at == searched.npos ? notFoundRange : rangeAt(within.location + at, part.size());
}

NSRange foundFolded(const detail::FoldedSearch& search, std::u16string_view text,
                    std::uint32_t options, NSRange within) noexcept {
  const bool backwards = (options & NSBackwardsSearch) != 0;
  if ((options & NSAnchoredSearch) != 0)
    return backwards ? search.atEnd(text, within) : search.atStart(text, within);
  return backwards ? search.last(text, within) : search.first(text, within);
}

}  // namespace

// For a part that is looked for once.
NSRange detail::rangeOfPart(std::u16string_view text, std::u16string_view part,
                            std::uint32_t options, NSRange within) {
  if ((options & Folding::mask) == 0) return foundUnits(text, part, options, within);
  return foundFolded(FoldedSearch(part, options), text, options, within);
}

std::vector<NSRange> detail::rangesOfPart(std::u16string_view text, std::u16string_view part,
                                          std::uint32_t options, NSRange within) {
  std::vector<NSRange> found;
  constexpr std::uint32_t placing = NSBackwardsSearch | NSAnchoredSearch;
  if ((options & (Folding::mask | placing)) == 0) {
    forEachOccurrence(text.substr(within.location, within.length), part, [&](std::size_t at) {
      found.push_back(rangeAt(within.location + at, part.size()));
      return true;
    });
    return found;
  }
  std::optional<FoldedSearch> folded;
  if ((options & Folding::mask) != 0) folded.emplace(part, options);
  for (;;) {
    const NSRange next = folded ? foundFolded(*folded, text, options, within)
                                : foundUnits(text, part, options, within);
    if (next.location == NSNotFound) break;
    found.push_back(next);
    if ((options & NSAnchoredSearch) != 0) break;
    const auto end = static_cast<std::uint32_t>(NSMaxRange(within));
    const auto behind = static_cast<std::uint32_t>(NSMaxRange(next));
    within = (options & NSBackwardsSearch) != 0
                 ? NSRange{within.location, next.location - within.location}
                 : NSRange{behind, end - behind};
  }
  if ((options & NSBackwardsSearch) != 0) std::reverse(found.begin(), found.end());
  return found;
}

const NSCharacterSet& detail::requireSet(NSCharacterSet* set, const char* operation) {
  if (set == nullptr) raise(NSInvalidArgumentException, std::string(operation) + ": nil argument");
  return *set;
}

bool NSString::containsString(NSString* part) const {
  return detail::findUnits(view(), requireString(part, "containsString:")) != view().npos;
}

NSRange NSString::rangeOfString(NSString* part) const {
  return foundUnits(view(), requireString(part, "rangeOfString:"), 0, {0, length_});
}

NSRange NSString::rangeOfString_options(NSString* part, std::uint32_t options) const {
  return detail::rangeOfPart(view(), requireString(part, "rangeOfString:options:"), options,
                             {0, length_});
}

NSRange NSString::rangeOfString_options_range(NSString* part, std::uint32_t options,
                                              NSRange range) const {
  constexpr const char* operation = "rangeOfString:options:range:";
  const std::u16string_view units = requireString(part, operation);
  detail::requireRange(operation, range, length_);
  return detail::rangeOfPart(view(), units, options, range);
}

// Characters --------------------------------------------------------------------------------------

NSRange detail::rangeOfMember(std::u16string_view text, const CodePointSet& set,
                              std::uint32_t options) noexcept {
  const bool anchored = (options & NSAnchoredSearch) != 0;
  if ((options & NSBackwardsSearch) != 0) {
    for (std::size_t at = text.size(); at > 0;) {
      const Character each = characterBefore(text, at);
      at -= each.width;
      if (set.holds(each.point)) return rangeAt(at, each.width);
      if (anchored) break;
    }
    return notFoundRange;
  }
  for (std::size_t at = 0; at < text.size();) {
    const Character each = characterAt(text, at);
    if (set.holds(each.point)) return rangeAt(at, each.width);
    if (anchored) break;
    at += each.width;
  }
  return notFoundRange;
}

NSRange NSString::rangeOfCharacterFromSet(NSCharacterSet* set) const {
  return detail::rangeOfMember(view(),
                               detail::requireSet(set, "rangeOfCharacterFromSet:").members(), 0);
}

NSRange NSString::rangeOfCharacterFromSet_options(NSCharacterSet* set,
                                                  std::uint32_t options) const {
  return detail::rangeOfMember(
      view(), detail::requireSet(set, "rangeOfCharacterFromSet:options:").members(), options);
}

NSRange NSString::rangeOfCharacterFromSet_options_range(NSCharacterSet* set, std::uint32_t options,
                                                        NSRange range) const {
  constexpr const char* operation = "rangeOfCharacterFromSet:options:range:";
  const detail::CodePointSet& members = detail::requireSet(set, operation).members();
  detail::requireRange(operation, range, length_);
  NSRange found =
      detail::rangeOfMember(view().substr(range.location, range.length), members, options);
  if (found.location != NSNotFound) found.location += range.location;
  return found;
}

Ref<NSString> NSString::commonPrefixWithString_options(NSString* other,
                                                       std::uint32_t options) const {
  const std::u16string_view theirs = requireString(other, "commonPrefixWithString:options:");
  return substringToIndex(
      static_cast<std::uint32_t>(detail::commonPrefix(view(), theirs, options)));
}

}  // namespace qz
