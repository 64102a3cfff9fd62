// Strings: equality, order and search.

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstring>

#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/StringStorage.h"
#include "Platform/Values/detail/UnitKinds.h"

namespace qz {
namespace {

using detail::requireString;

NSComparisonResult resultOf(std::int64_t difference) noexcept {
  if (difference < 0) return NSOrderedAscending;
  return difference > 0 ? NSOrderedDescending : NSOrderedSame;
}

bool sameUnits(const char16_t* a, const char16_t* b, std::size_t count) noexcept {
  return count == 0 || std::memcmp(a, b, count * sizeof(char16_t)) == 0;
}

std::int64_t lengthDifference(std::u16string_view a, std::u16string_view b) noexcept {
  return static_cast<std::int64_t>(a.size()) - static_cast<std::int64_t>(b.size());
}

// The difference of the first units that differ, else of the lengths. Four units a step.
std::int64_t difference(std::u16string_view a, std::u16string_view b) noexcept {
  const std::size_t common = std::min(a.size(), b.size());
  std::size_t i = 0;
  for (; i + 4 <= common; i += 4) {
    std::uint64_t wordOfA, wordOfB;
    std::memcpy(&wordOfA, a.data() + i, sizeof wordOfA);
    std::memcpy(&wordOfB, b.data() + i, sizeof wordOfB);
    if (wordOfA != wordOfB) break;
  }
  for (; i < common; ++i)
    if (a[i] != b[i]) return std::int64_t{a[i]} - b[i];
  return lengthDifference(a, b);
}

std::int64_t foldedDifference(std::u16string_view a, std::u16string_view b) noexcept {
  const std::size_t common = std::min(a.size(), b.size());
  std::size_t i = 0;
  for (; i < common && a[i] < 0x80 && b[i] < 0x80; ++i) {
    const std::int64_t unitDifference =
        std::int64_t{detail::toAsciiLower(a[i])} - detail::toAsciiLower(b[i]);
    if (unitDifference != 0) return unitDifference;
  }
  if (i == common) return lengthDifference(a, b);
  // Folding looks at one character at a time, so what was the same so far may be left out.
  a.remove_prefix(i);
  b.remove_prefix(i);
  UErrorCode status = U_ZERO_ERROR;
  return u_strCaseCompare(a.data(), static_cast<std::int32_t>(a.size()), b.data(),
                          static_cast<std::int32_t>(b.size()), U_FOLD_CASE_DEFAULT, &status);
}

}  // namespace

bool NSString::isEqualToString(NSString* other) const noexcept {
  if (other == this) return true;
  return other != nullptr && other->length_ == length_ && sameUnits(units_, other->units_, length_);
}

bool NSString::isEqual(NSObject* other) const {
  if (other == this) return true;
  if (other == nullptr) return false;
  // Of the very same kind: a String for sure.
  if (detail::vptrOf(other) != detail::vptrOf(this) && !isKind<NSString>(other)) return false;
  return isEqualToString(static_cast<NSString*>(other));
}

std::size_t NSString::hash() const {
  std::uint32_t known = hash_.load(std::memory_order_relaxed);
  if (known == 0) {
    known = detail::hashUnits(units_, length_);
    hash_.store(known, std::memory_order_relaxed);
  }
  return known;
}

NSComparisonResult NSString::compare(NSString* other) const {
  return resultOf(difference(view(), requireString(other, "compare:")));
}

NSComparisonResult NSString::caseInsensitiveCompare(NSString* other) const {
  return resultOf(foldedDifference(view(), requireString(other, "caseInsensitiveCompare:")));
}

bool NSString::hasPrefix(NSString* part) const {
  const std::u16string_view units = requireString(part, "hasPrefix:");
  return units.size() <= length_ && sameUnits(units_, units.data(), units.size());
}

bool NSString::hasSuffix(NSString* part) const {
  const std::u16string_view units = requireString(part, "hasSuffix:");
  return units.size() <= length_ &&
         sameUnits(units_ + (length_ - units.size()), units.data(), units.size());
}

NSRange NSString::rangeOfString(NSString* part) const {
  const std::u16string_view units = requireString(part, "rangeOfString:");
  if (units.empty()) return notFoundRange;
  const std::size_t at = view().find(units);
  if (at == std::u16string_view::npos) return notFoundRange;
  return {static_cast<std::uint32_t>(at), static_cast<std::uint32_t>(units.size())};
}

}  // namespace qz
