// Strings: taken apart, replaced in part, trimmed, filled up and normalised.

#include <unicode/normalizer2.h>
#include <unicode/unorm2.h>

#include <algorithm>
#include <string>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSCharacterSet.h"
#include "Platform/Values/NSMutableString.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/Characters.h"
#include "Platform/Values/detail/StringDescriptions.h"
#include "Platform/Values/detail/StringSearch.h"
#include "Platform/Values/detail/StringStorage.h"
#include "Platform/Values/detail/UnitBuffer.h"
#include "Platform/Values/detail/UnitSearch.h"

namespace qz {

using detail::requireString;

void detail::describeParts(ClassDescription<NSString>& is) {
  is.method<&NSString::stringByReplacingOccurrencesOfString_withString>(
        "stringByReplacingOccurrencesOfString:withString:")
      .method<&NSString::stringByReplacingOccurrencesOfString_withString_options_range>(
          "stringByReplacingOccurrencesOfString:withString:options:range:")
      .method<&NSString::componentsSeparatedByString>("componentsSeparatedByString:")
      .method<&NSString::componentsSeparatedByCharactersInSet>(
          "componentsSeparatedByCharactersInSet:")
      .method<&NSString::stringByTrimmingCharactersInSet>("stringByTrimmingCharactersInSet:")
      .method<&NSString::stringByPaddingToLength_withString_startingAtIndex>(
          "stringByPaddingToLength:withString:startingAtIndex:")
      .method<&NSString::precomposedStringWithCanonicalMapping>(
          "precomposedStringWithCanonicalMapping")
      .method<&NSString::decomposedStringWithCanonicalMapping>(
          "decomposedStringWithCanonicalMapping")
      .method<&NSString::precomposedStringWithCompatibilityMapping>(
          "precomposedStringWithCompatibilityMapping")
      .method<&NSString::decomposedStringWithCompatibilityMapping>(
          "decomposedStringWithCompatibilityMapping");
}

// Replacing ---------------------------------------------------------------------------------------

namespace {

// Adds `text` with each occurrence of `part` replaced. Answers how many there were; when there was
// none, nothing has been added.
std::uint32_t appendReplaced(detail::UnitBuffer& out, std::u16string_view text,
                             std::u16string_view part, std::u16string_view replacement) {
  std::uint32_t count = 0;
  std::size_t copied = 0;
  detail::forEachOccurrence(text, part, [&](std::size_t at) {
    if (count++ == 0 && replacement.size() <= part.size()) out.room(text.size());
    out.append(text.substr(copied, at - copied));
    out.append(replacement);
    copied = at + part.size();
    return true;
  });
  if (count != 0) out.append(text.substr(copied));
  return count;
}

// The same as the options ask, and within a range alone.
std::uint32_t appendReplaced(detail::UnitBuffer& out, std::u16string_view text,
                             std::u16string_view part, std::u16string_view replacement,
                             std::uint32_t options, NSRange within) {
  const std::vector<NSRange> found = detail::rangesOfPart(text, part, options, within);
  if (found.empty()) return 0;
  std::size_t copied = 0;
  for (const NSRange& each : found) {
    out.append(text.substr(copied, each.location - copied));
    out.append(replacement);
    copied = NSMaxRange(each);
  }
  out.append(text.substr(copied));
  return static_cast<std::uint32_t>(found.size());
}

}  // namespace

Ref<NSString> NSString::stringByReplacingOccurrencesOfString_withString(
    NSString* part, NSString* replacement) const {
  constexpr const char* operation = "stringByReplacingOccurrencesOfString:withString:";
  const std::u16string_view wanted = requireString(part, operation);
  detail::UnitBuffer out;
  const std::uint32_t count =
      appendReplaced(out, view(), wanted, requireString(replacement, operation));
  return count == 0 ? stringWithString(const_cast<NSString*>(this)) : out.toString();
}

Ref<NSString> NSString::stringByReplacingOccurrencesOfString_withString_options_range(
    NSString* part, NSString* replacement, std::uint32_t options, NSRange range) const {
  constexpr const char* operation =
      "stringByReplacingOccurrencesOfString:withString:options:range:";
  const std::u16string_view wanted = requireString(part, operation);
  const std::u16string_view units = requireString(replacement, operation);
  detail::requireRange(operation, range, length_);
  detail::UnitBuffer out;
  const std::uint32_t count = appendReplaced(out, view(), wanted, units, options, range);
  return count == 0 ? stringWithString(const_cast<NSString*>(this)) : out.toString();
}

std::uint32_t NSMutableString::replaceOccurrencesOfString_withString_options_range(
    NSString* part, NSString* replacement, std::uint32_t options, NSRange range) {
  constexpr const char* operation = "replaceOccurrencesOfString:withString:options:range:";
  const std::u16string_view wanted = requireString(part, operation);
  const std::u16string_view units = requireString(replacement, operation);
  detail::requireRange(operation, range, length_);
  detail::UnitBuffer out;
  const std::uint32_t count = appendReplaced(out, view(), wanted, units, options, range);
  if (count != 0) replace({0, length_}, out.view());
  return count;
}

// Components --------------------------------------------------------------------------------------

namespace {

/// What stands between separators.
class Pieces {
 public:
  explicit Pieces(const NSString* text) : text_(text) {}

  /// The next separator, of `width` units, stands at `at`.
  void cut(std::size_t at, std::size_t width) {
    pieces_.take(detail::makeString(text_->view().substr(start_, at - start_)));
    start_ = at + width;
  }

  Ref<NSArray> finish() {
    pieces_.take(text_->substringFromIndex(static_cast<std::uint32_t>(start_)));
    return pieces_.finish();
  }

 private:
  const NSString* text_;
  std::size_t start_ = 0;
  detail::ArrayBuilder pieces_;
};

}  // namespace

Ref<NSArray> NSString::componentsSeparatedByString(NSString* separator) const {
  const std::u16string_view between = requireString(separator, "componentsSeparatedByString:");
  Pieces pieces(this);
  detail::forEachOccurrence(view(), between, [&](std::size_t at) {
    pieces.cut(at, between.size());
    return true;
  });
  return pieces.finish();
}

Ref<NSArray> NSString::componentsSeparatedByCharactersInSet(NSCharacterSet* set) const {
  const detail::CodePointSet& members =
      detail::requireSet(set, "componentsSeparatedByCharactersInSet:").members();
  const std::u16string_view text = view();
  Pieces pieces(this);
  for (std::size_t at = 0; at < text.size();) {
    const detail::Character each = detail::characterAt(text, at);
    if (members.holds(each.point)) pieces.cut(at, each.width);
    at += each.width;
  }
  return pieces.finish();
}

// Ends --------------------------------------------------------------------------------------------

Ref<NSString> NSString::stringByTrimmingCharactersInSet(NSCharacterSet* set) const {
  const detail::CodePointSet& members =
      detail::requireSet(set, "stringByTrimmingCharactersInSet:").members();
  const std::u16string_view text = view();
  std::size_t start = 0;
  while (start < text.size()) {
    const detail::Character each = detail::characterAt(text, start);
    if (!members.holds(each.point)) break;
    start += each.width;
  }
  std::size_t end = text.size();
  while (end > start) {
    const detail::Character each = detail::characterBefore(text, end);
    if (!members.holds(each.point)) break;
    end -= each.width;
  }
  return substringWithRange(
      {static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(end - start)});
}

Ref<NSString> NSString::stringByPaddingToLength_withString_startingAtIndex(
    std::uint32_t length, NSString* padding, std::uint32_t index) const {
  constexpr const char* operation = "stringByPaddingToLength:withString:startingAtIndex:";
  const std::u16string_view pad = requireString(padding, operation);
  if (pad.empty())
    detail::raise(NSInvalidArgumentException, std::string(operation) + ": empty padding");
  if (index >= pad.size()) detail::raiseIndex(operation, index, pad.size());
  if (length <= length_) return substringToIndex(length);
  const std::u16string_view text = view();
  return detail::fillString(length, [=](char16_t* out) {
    char16_t* const end = out + length;
    out = std::copy(text.begin(), text.end(), out);
    for (std::size_t from = index; out != end; from = 0) {
      const std::size_t count = std::min(pad.size() - from, static_cast<std::size_t>(end - out));
      out = std::copy_n(pad.data() + from, count, out);
    }
  });
}

// Normal forms ------------------------------------------------------------------------------------

namespace {

using Form = const icu::Normalizer2* (*)(UErrorCode&);

Ref<NSString> normalized(const NSString& text, Form form) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* normalizer = form(status);
  const icu::UnicodeString source(false, text.view().data(),
                                  static_cast<std::int32_t>(text.length()));
  icu::UnicodeString result;
  if (U_SUCCESS(status) && normalizer->isNormalized(source, status))
    return NSString::stringWithString(const_cast<NSString*>(&text));
  if (U_SUCCESS(status)) normalizer->normalize(source, result, status);
  if (U_FAILURE(status))
    detail::raise(NSMallocException,
                  std::string("a text cannot be normalised: ") + u_errorName(status));
  return detail::makeString({result.getBuffer(), static_cast<std::size_t>(result.length())});
}

}  // namespace

Ref<NSString> NSString::precomposedStringWithCanonicalMapping() const {
  return normalized(*this, &icu::Normalizer2::getNFCInstance);
}

Ref<NSString> NSString::decomposedStringWithCanonicalMapping() const {
  return normalized(*this, &icu::Normalizer2::getNFDInstance);
}

Ref<NSString> NSString::precomposedStringWithCompatibilityMapping() const {
  return normalized(*this, &icu::Normalizer2::getNFKCInstance);
}

Ref<NSString> NSString::decomposedStringWithCompatibilityMapping() const {
  return normalized(*this, &icu::Normalizer2::getNFKDInstance);
}

}  // namespace qz
