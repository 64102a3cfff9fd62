#include "Platform/Values/NSMutableAttributedString.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSMutableString.h"
#include "Platform/Values/detail/StringStorage.h"

namespace qz {

using detail::requireString;

void NSMutableAttributedString::describe(ClassDescription<NSMutableAttributedString>& is) {
  using Self = NSMutableAttributedString;
  is.named("NSMutableAttributedString")
      .initializer<&Self::initWithString>("initWithString:")
      .initializer<&Self::initWithString_attributes>("initWithString:attributes:")
      .initializer<&Self::initWithAttributedString>("initWithAttributedString:")
      .method<&Self::setAttributes_range>("setAttributes:range:")
      .method<&Self::addAttributes_range>("addAttributes:range:")
      .method<&Self::addAttribute_value_range>("addAttribute:value:range:")
      .method<&Self::removeAttribute_range>("removeAttribute:range:")
      .method<&Self::replaceCharactersInRange_withString>("replaceCharactersInRange:withString:")
      .method<&Self::replaceCharactersInRange_withAttributedString>(
          "replaceCharactersInRange:withAttributedString:")
      .method<&Self::deleteCharactersInRange>("deleteCharactersInRange:")
      .method<&Self::appendAttributedString>("appendAttributedString:")
      .method<&Self::insertAttributedString_atIndex>("insertAttributedString:atIndex:")
      .method<&Self::setAttributedString>("setAttributedString:");
}

namespace {

NSAttributedString& requireText(NSAttributedString* string, const char* operation) {
  if (string == nullptr)
    detail::raise(NSInvalidArgumentException, std::string(operation) + ": nil argument");
  return *string;
}

}  // namespace

// Making ------------------------------------------------------------------------------------------

NSMutableAttributedString::NSMutableAttributedString() : NSMutableAttributedString(""_ns, {}) {}

NSMutableAttributedString::NSMutableAttributedString(NSString* text, Runs runs)
    : Derives(NSMutableString::stringWithString(text), std::move(runs)) {}

Ref<NSMutableAttributedString> NSMutableAttributedString::initWithString(NSString* string) {
  return initWithString_attributes(string, nullptr);
}

Ref<NSMutableAttributedString> NSMutableAttributedString::initWithString_attributes(
    NSString* string, NSDictionary* attributes) {
  return initWithAttributedString(
      NSAttributedString::initWithString_attributes(string, attributes));
}

Ref<NSMutableAttributedString> NSMutableAttributedString::initWithAttributedString(
    NSAttributedString* other) {
  const NSAttributedString& source = requireText(other, "initWithAttributedString:");
  return static_cast<NSMutableAttributedString*>(source.mutableCopy().get());
}

Ref<NSObject> NSMutableAttributedString::copy() const {
  return attributedSubstringFromRange({0, length()});
}

// Changing ----------------------------------------------------------------------------------------

// Every change comes down to this: `added`, which counts from the start of `range`, takes the place
// of the range's runs, and `text`, unless it is nil, that of its units. What can fail comes first.
void NSMutableAttributedString::replaceRuns(NSRange range, Runs added, NSString* text) {
  // The runs before the one that may grow or be cut stay where they are.
  const std::size_t kept = range.location == 0 ? 0 : runAt(range.location - 1);
  Runs changed;
  const auto append = [&changed](std::uint64_t end, const Ref<NSDictionary>& attributes) {
    if (!changed.empty() && equal(changed.back().attributes, attributes))
      changed.back().end = end;
    else
      changed.push_back({end, attributes});
  };
  if (range.location > 0) append(range.location, runs_[kept].attributes);
  for (const Run& each : added) append(range.location + each.end, each.attributes);
  const std::uint64_t oldEnd = NSMaxRange(range);
  const std::uint64_t newEnd = range.location + (added.empty() ? 0 : added.back().end);
  if (oldEnd < length())
    for (std::size_t run = runAt(static_cast<std::uint32_t>(oldEnd)); run < runs_.size(); ++run)
      append(runs_[run].end - oldEnd + newEnd, runs_[run].attributes);

  const std::size_t count = kept + changed.size();
  if (count > runs_.capacity()) runs_.reserve(std::max(count, 2 * runs_.capacity()));
  if (text != nullptr)
    static_cast<NSMutableString*>(text_.get())->replaceCharactersInRange_withString(range, text);
  runs_.erase(runs_.begin() + static_cast<std::ptrdiff_t>(kept), runs_.end());
  std::move(changed.begin(), changed.end(), std::back_inserter(runs_));
}

template <class Change>
void NSMutableAttributedString::changeAttributes(NSRange range, Change change) {
  Runs runs = runsOf(range);
  for (Run& each : runs) {
    auto attributes = NSMutableDictionary::dictionaryWithDictionary(each.attributes);
    change(attributes.get());
    each.attributes = NSDictionary::dictionaryWithDictionary(attributes);
  }
  replaceRuns(range, std::move(runs), nullptr);
}

void NSMutableAttributedString::setAttributes_range(NSDictionary* attributes, NSRange range) {
  detail::requireRange("setAttributes:range:", range, length());
  Runs runs;
  if (range.length > 0)
    runs.push_back({range.length, NSDictionary::dictionaryWithDictionary(attributes)});
  replaceRuns(range, std::move(runs), nullptr);
}

void NSMutableAttributedString::addAttributes_range(NSDictionary* attributes, NSRange range) {
  detail::requireRange("addAttributes:range:", range, length());
  changeAttributes(
      range, [attributes](NSMutableDictionary* all) { all->addEntriesFromDictionary(attributes); });
}

void NSMutableAttributedString::addAttribute_value_range(NSString* name, NSObject* value,
                                                         NSRange range) {
  addAttributes_range(NSDictionary::dictionaryWithObject_forKey(value, name), range);
}

void NSMutableAttributedString::removeAttribute_range(NSString* name, NSRange range) {
  requireString(name, "removeAttribute:range:");
  detail::requireRange("removeAttribute:range:", range, length());
  changeAttributes(range, [name](NSMutableDictionary* all) { all->removeObjectForKey(name); });
}

void NSMutableAttributedString::replaceCharactersInRange_withString(NSRange range,
                                                                    NSString* string) {
  const NSString& added = requireString(string, "replaceCharactersInRange:withString:");
  detail::requireRange("replaceCharactersInRange:withString:", range, length());
  Runs runs;
  if (added.length() > 0) {
    const bool takesFromBefore = range.length == 0 && range.location > 0;
    const std::uint32_t model = takesFromBefore ? range.location - 1 : range.location;
    runs.push_back({added.length(),
                    length() == 0 ? NSDictionary::dictionary() : runs_[runAt(model)].attributes});
  }
  replaceRuns(range, std::move(runs), string);
}

void NSMutableAttributedString::replaceCharactersInRange_withAttributedString(
    NSRange range, NSAttributedString* string) {
  const char* const operation = "replaceCharactersInRange:withAttributedString:";
  // As it is now: it may be this very one.
  const Ref<NSAttributedString> added =
      as<NSAttributedString>(requireText(string, operation).copy());
  detail::requireRange(operation, range, length());
  replaceRuns(range, added->runs_, added->string());
}

void NSMutableAttributedString::deleteCharactersInRange(NSRange range) {
  detail::requireRange("deleteCharactersInRange:", range, length());
  replaceRuns(range, {}, ""_ns);
}

void NSMutableAttributedString::appendAttributedString(NSAttributedString* string) {
  replaceCharactersInRange_withAttributedString({length(), 0}, string);
}

void NSMutableAttributedString::insertAttributedString_atIndex(NSAttributedString* string,
                                                               std::uint32_t index) {
  replaceCharactersInRange_withAttributedString({index, 0}, string);
}

void NSMutableAttributedString::setAttributedString(NSAttributedString* string) {
  replaceCharactersInRange_withAttributedString({0, length()}, string);
}

}  // namespace qz
