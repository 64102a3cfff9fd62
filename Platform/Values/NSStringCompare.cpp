// Strings: equality and order.

#include <unicode/coll.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/Folding.h"
#include "Platform/Values/detail/StringStorage.h"
#include "Platform/Values/detail/UnitBuffer.h"
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

// How long the beginning is that both have. Four units a step.
std::size_t firstDifference(std::u16string_view a, std::u16string_view b) noexcept {
  const std::size_t common = std::min(a.size(), b.size());
  std::size_t i = 0;
  for (; i + 4 <= common; i += 4) {
    std::uint64_t wordOfA, wordOfB;
    std::memcpy(&wordOfA, a.data() + i, sizeof wordOfA);
    std::memcpy(&wordOfB, b.data() + i, sizeof wordOfB);
    if (wordOfA != wordOfB) break;
  }
  while (i < common && a[i] == b[i]) ++i;
  return i;
}

// The difference of the first units that differ, else of the lengths.
std::int64_t difference(std::u16string_view a, std::u16string_view b) noexcept {
  const std::size_t i = firstDifference(a, b);
  if (i < a.size() && i < b.size()) return std::int64_t{a[i]} - b[i];
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

// Options -----------------------------------------------------------------------------------------

namespace {

// From `at` on: the end of the digits there.
std::size_t endOfDigits(std::u16string_view text, std::size_t at) noexcept {
  while (at < text.size() && detail::isDigit(text[at])) ++at;
  return at;
}

// Numbers of any length, zeros in front not counting; both positions move behind theirs.
std::int64_t numberDifference(std::u16string_view a, std::size_t& atA, std::u16string_view b,
                              std::size_t& atB) noexcept {
  while (atA < a.size() && a[atA] == u'0') ++atA;
  while (atB < b.size() && b[atB] == u'0') ++atB;
  const std::u16string_view numberA = a.substr(atA, endOfDigits(a, atA) - atA);
  const std::u16string_view numberB = b.substr(atB, endOfDigits(b, atB) - atB);
  atA += numberA.size();
  atB += numberB.size();
  const std::int64_t byLength = lengthDifference(numberA, numberB);
  return byLength != 0 ? byLength : difference(numberA, numberB);
}

std::int64_t numericDifference(std::u16string_view a, std::u16string_view b) noexcept {
  // What both begin with is the same, but for a number that may go on behind it.
  std::size_t i = firstDifference(a, b);
  while (i > 0 && detail::isDigit(a[i - 1])) --i;
  std::size_t j = i;
  while (i < a.size() && j < b.size()) {
    if (detail::isDigit(a[i]) && detail::isDigit(b[j])) {
      const std::int64_t byNumber = numberDifference(a, i, b, j);
      if (byNumber != 0) return byNumber;
    } else if (a[i] != b[j]) {
      return std::int64_t{a[i]} - b[j];
    } else {
      ++i;
      ++j;
    }
  }
  return lengthDifference(a.substr(i), b.substr(j));
}

std::int64_t difference(std::u16string_view a, std::u16string_view b, std::uint32_t options) {
  const bool numeric = (options & NSNumericSearch) != 0;
  const std::uint32_t overlooked = options & detail::Folding::mask;
  if (overlooked == 0) return numeric ? numericDifference(a, b) : difference(a, b);
  if (overlooked == NSCaseInsensitiveSearch && !numeric) return foldedDifference(a, b);
  const detail::Folding folding(options);
  detail::UnitBuffer foldedA, foldedB;
  folding.append(a, foldedA);
  folding.append(b, foldedB);
  return numeric ? numericDifference(foldedA.view(), foldedB.view())
                 : difference(foldedA.view(), foldedB.view());
}

}  // namespace

NSComparisonResult NSString::compare_options(NSString* other, std::uint32_t options) const {
  return resultOf(difference(view(), requireString(other, "compare:options:"), options));
}

NSComparisonResult NSString::compare_options_range(NSString* other, std::uint32_t options,
                                                   NSRange range) const {
  constexpr const char* operation = "compare:options:range:";
  const std::u16string_view theirs = requireString(other, operation);
  detail::requireRange(operation, range, length_);
  return resultOf(difference(view().substr(range.location, range.length), theirs, options));
}

// Languages ---------------------------------------------------------------------------------------

namespace {

// A collator of the user's language; never changed again, so any thread may use it. A user who has
// set none gets the order that most languages share: ICU's for "C" is that of the code points.
const icu::Collator& makeCollator(icu::Collator::ECollationStrength strength) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Locale user;
  const bool isUnset = std::string_view(user.getVariant()) == "POSIX";
  std::unique_ptr<icu::Collator> collator(
      icu::Collator::createInstance(isUnset ? icu::Locale::getRoot() : user, status));
  if (U_FAILURE(status) || collator == nullptr)
    detail::raise(NSGenericException, std::string("no collation: ") + u_errorName(status));
  collator->setStrength(strength);
  return *collator.release();
}

NSComparisonResult collated(const icu::Collator& collator, std::u16string_view a,
                            std::u16string_view b) {
  UErrorCode status = U_ZERO_ERROR;
  return static_cast<NSComparisonResult>(
      collator.compare(a.data(), static_cast<std::int32_t>(a.size()), b.data(),
                       static_cast<std::int32_t>(b.size()), status));
}

}  // namespace

NSComparisonResult NSString::localizedCompare(NSString* other) const {
  static const icu::Collator& collator = makeCollator(icu::Collator::TERTIARY);
  return collated(collator, view(), requireString(other, "localizedCompare:"));
}

NSComparisonResult NSString::localizedCaseInsensitiveCompare(NSString* other) const {
  static const icu::Collator& collator = makeCollator(icu::Collator::SECONDARY);
  return collated(collator, view(), requireString(other, "localizedCaseInsensitiveCompare:"));
}

}  // namespace qz
