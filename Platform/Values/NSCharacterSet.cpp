#include "Platform/Values/NSCharacterSet.h"

#include <unicode/uniset.h>

#include <string>
#include <utility>
#include <vector>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/Characters.h"
#include "Platform/Values/detail/StringSearch.h"
#include "Platform/Values/detail/StringStorage.h"

namespace qz {
namespace {

using detail::CodePointSet;
using detail::requireString;

CodePointSet matching(const char16_t* pattern) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::UnicodeSet found(icu::UnicodeString(pattern), status);
  if (U_FAILURE(status))
    detail::raise(NSGenericException, std::string("no character data: ") + u_errorName(status));
  std::vector<CodePointSet::Range> ranges;
  for (std::int32_t i = 0; i < found.getRangeCount(); ++i)
    ranges.push_back({static_cast<char32_t>(found.getRangeStart(i)),
                      static_cast<char32_t>(found.getRangeEnd(i)) + 1});
  return CodePointSet(std::move(ranges));
}

// The set of a pattern, made once and kept for ever.
template <const auto& Pattern>
Ref<NSCharacterSet> standardSet() {
  static NSCharacterSet* const set = make<NSCharacterSet>(matching(Pattern)).leak();
  return set;
}

constexpr char16_t letters[] = u"[[:L:][:M:]]";
constexpr char16_t lowercaseLetters[] = u"[:Ll:]";
constexpr char16_t uppercaseLetters[] = u"[[:Lu:][:Lt:]]";
constexpr char16_t capitalizedLetters[] = u"[:Lt:]";
constexpr char16_t decimalDigits[] = u"[:Nd:]";
constexpr char16_t alphanumerics[] = u"[[:L:][:M:][:N:]]";
constexpr char16_t marks[] = u"[:M:]";
constexpr char16_t punctuation[] = u"[:P:]";
constexpr char16_t symbols[] = u"[:S:]";
constexpr char16_t controls[] = u"[[:Cc:][:Cf:]]";
constexpr char16_t unassigned[] = u"[:Cn:]";
constexpr char16_t blanks[] = u"[[:Zs:]\\u0009]";
constexpr char16_t newlines[] = u"[\\u000A-\\u000D\\u0085\\u2028\\u2029]";
constexpr char16_t blanksAndNewlines[] = u"[[:Zs:]\\u0009-\\u000D\\u0085\\u2028\\u2029]";
constexpr char16_t decomposables[] = u"[:NFD_QC=No:]";

CodePointSet pointsIn(std::u16string_view text) {
  std::vector<CodePointSet::Range> ranges;
  for (std::size_t at = 0; at < text.size();) {
    const detail::Character each = detail::characterAt(text, at);
    ranges.push_back({each.point, each.point + 1});
    at += each.width;
  }
  return CodePointSet(std::move(ranges));
}

CodePointSet pointsIn(NSRange range, const char* operation) {
  detail::requireRange(operation, range, CodePointSet::limit);
  return CodePointSet({{range.location, range.location + range.length}});
}

const CodePointSet& membersOf(NSCharacterSet* set, const char* operation) {
  return detail::requireSet(set, operation).members();
}

}  // namespace

void NSCharacterSet::describe(ClassDescription<NSCharacterSet>& is) {
  is.named("NSCharacterSet")
      .classMethod<&letterCharacterSet>("letterCharacterSet")
      .classMethod<&lowercaseLetterCharacterSet>("lowercaseLetterCharacterSet")
      .classMethod<&uppercaseLetterCharacterSet>("uppercaseLetterCharacterSet")
      .classMethod<&capitalizedLetterCharacterSet>("capitalizedLetterCharacterSet")
      .classMethod<&decimalDigitCharacterSet>("decimalDigitCharacterSet")
      .classMethod<&alphanumericCharacterSet>("alphanumericCharacterSet")
      .classMethod<&nonBaseCharacterSet>("nonBaseCharacterSet")
      .classMethod<&punctuationCharacterSet>("punctuationCharacterSet")
      .classMethod<&symbolCharacterSet>("symbolCharacterSet")
      .classMethod<&controlCharacterSet>("controlCharacterSet")
      .classMethod<&illegalCharacterSet>("illegalCharacterSet")
      .classMethod<&whitespaceCharacterSet>("whitespaceCharacterSet")
      .classMethod<&newlineCharacterSet>("newlineCharacterSet")
      .classMethod<&whitespaceAndNewlineCharacterSet>("whitespaceAndNewlineCharacterSet")
      .classMethod<&decomposableCharacterSet>("decomposableCharacterSet")
      .classMethod<&characterSetWithCharactersInString>("characterSetWithCharactersInString:")
      .classMethod<&characterSetWithRange>("characterSetWithRange:")
      .method<&NSCharacterSet::invertedSet>("invertedSet")
      .method<&NSCharacterSet::characterIsMember>("characterIsMember:")
      .method<&NSCharacterSet::longCharacterIsMember>("longCharacterIsMember:")
      .method<&NSCharacterSet::hasMemberInPlane>("hasMemberInPlane:")
      .method<&NSCharacterSet::isSupersetOfSet>("isSupersetOfSet:");
}

// Standard sets -----------------------------------------------------------------------------------

Ref<NSCharacterSet> NSCharacterSet::letterCharacterSet() { return standardSet<letters>(); }
Ref<NSCharacterSet> NSCharacterSet::lowercaseLetterCharacterSet() {
  return standardSet<lowercaseLetters>();
}
Ref<NSCharacterSet> NSCharacterSet::uppercaseLetterCharacterSet() {
  return standardSet<uppercaseLetters>();
}
Ref<NSCharacterSet> NSCharacterSet::capitalizedLetterCharacterSet() {
  return standardSet<capitalizedLetters>();
}
Ref<NSCharacterSet> NSCharacterSet::decimalDigitCharacterSet() {
  return standardSet<decimalDigits>();
}
Ref<NSCharacterSet> NSCharacterSet::alphanumericCharacterSet() {
  return standardSet<alphanumerics>();
}
Ref<NSCharacterSet> NSCharacterSet::nonBaseCharacterSet() { return standardSet<marks>(); }
Ref<NSCharacterSet> NSCharacterSet::punctuationCharacterSet() { return standardSet<punctuation>(); }
Ref<NSCharacterSet> NSCharacterSet::symbolCharacterSet() { return standardSet<symbols>(); }
Ref<NSCharacterSet> NSCharacterSet::controlCharacterSet() { return standardSet<controls>(); }
Ref<NSCharacterSet> NSCharacterSet::illegalCharacterSet() { return standardSet<unassigned>(); }
Ref<NSCharacterSet> NSCharacterSet::whitespaceCharacterSet() { return standardSet<blanks>(); }
Ref<NSCharacterSet> NSCharacterSet::newlineCharacterSet() { return standardSet<newlines>(); }
Ref<NSCharacterSet> NSCharacterSet::whitespaceAndNewlineCharacterSet() {
  return standardSet<blanksAndNewlines>();
}
Ref<NSCharacterSet> NSCharacterSet::decomposableCharacterSet() {
  return standardSet<decomposables>();
}

// Making and asking -------------------------------------------------------------------------------

Ref<NSCharacterSet> NSCharacterSet::characterSetWithCharactersInString(NSString* characters) {
  return make<NSCharacterSet>(
      pointsIn(requireString(characters, "characterSetWithCharactersInString:").view()));
}

Ref<NSCharacterSet> NSCharacterSet::characterSetWithRange(NSRange range) {
  return make<NSCharacterSet>(pointsIn(range, "characterSetWithRange:"));
}

Ref<NSCharacterSet> NSCharacterSet::invertedSet() const {
  return make<NSCharacterSet>(members_.inverted());
}

bool NSCharacterSet::hasMemberInPlane(std::uint8_t plane) const noexcept {
  const char32_t first = char32_t{plane} << 16;
  for (const CodePointSet::Range& range : members_.ranges())
    if (range.first < first + 0x10000 && range.end > first) return true;
  return false;
}

bool NSCharacterSet::isSupersetOfSet(NSCharacterSet* other) const {
  return members_.isSupersetOf(membersOf(other, "isSupersetOfSet:"));
}

bool NSCharacterSet::isEqual(NSObject* other) const {
  if (other == this) return true;
  if (other == nullptr || !isKind<NSCharacterSet>(other)) return false;
  return members_ == static_cast<NSCharacterSet*>(other)->members_;
}

std::size_t NSCharacterSet::hash() const {
  std::size_t hash = members_.ranges().size();
  for (const CodePointSet::Range& range : members_.ranges())
    hash = (hash ^ (std::size_t{range.first} << 32 | range.end)) * 0x9FB21C651E98DF25u;
  return hash ^ hash >> 32;
}

Ref<NSObject> NSCharacterSet::copy() const { return const_cast<NSCharacterSet*>(this); }

Ref<NSObject> NSCharacterSet::mutableCopy() const { return make<NSMutableCharacterSet>(members_); }

// Changing ----------------------------------------------------------------------------------------

void NSMutableCharacterSet::describe(ClassDescription<NSMutableCharacterSet>& is) {
  is.named("NSMutableCharacterSet")
      .classMethod<&characterSet>("characterSet")
      .method<&NSMutableCharacterSet::addCharactersInRange>("addCharactersInRange:")
      .method<&NSMutableCharacterSet::addCharactersInString>("addCharactersInString:")
      .method<&NSMutableCharacterSet::removeCharactersInRange>("removeCharactersInRange:")
      .method<&NSMutableCharacterSet::removeCharactersInString>("removeCharactersInString:")
      .method<&NSMutableCharacterSet::formUnionWithCharacterSet>("formUnionWithCharacterSet:")
      .method<&NSMutableCharacterSet::formIntersectionWithCharacterSet>(
          "formIntersectionWithCharacterSet:")
      .method<&NSMutableCharacterSet::invert>("invert");
}

Ref<NSMutableCharacterSet> NSMutableCharacterSet::characterSet() {
  return make<NSMutableCharacterSet>();
}

void NSMutableCharacterSet::addCharactersInRange(NSRange range) {
  members_ = members_.unionWith(pointsIn(range, "addCharactersInRange:"));
}

void NSMutableCharacterSet::addCharactersInString(NSString* characters) {
  members_ =
      members_.unionWith(pointsIn(requireString(characters, "addCharactersInString:").view()));
}

void NSMutableCharacterSet::removeCharactersInRange(NSRange range) {
  members_ = members_.without(pointsIn(range, "removeCharactersInRange:"));
}

void NSMutableCharacterSet::removeCharactersInString(NSString* characters) {
  members_ =
      members_.without(pointsIn(requireString(characters, "removeCharactersInString:").view()));
}

void NSMutableCharacterSet::formUnionWithCharacterSet(NSCharacterSet* other) {
  members_ = members_.unionWith(membersOf(other, "formUnionWithCharacterSet:"));
}

void NSMutableCharacterSet::formIntersectionWithCharacterSet(NSCharacterSet* other) {
  members_ = members_.intersectionWith(membersOf(other, "formIntersectionWithCharacterSet:"));
}

void NSMutableCharacterSet::invert() { members_ = members_.inverted(); }

Ref<NSObject> NSMutableCharacterSet::copy() const { return make<NSCharacterSet>(members_); }

}  // namespace qz
