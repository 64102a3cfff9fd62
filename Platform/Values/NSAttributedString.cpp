#include "Platform/Values/NSAttributedString.h"

#include <algorithm>
#include <utility>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSMutableAttributedString.h"
#include "Platform/Values/NSMutableString.h"

namespace qz {

void NSAttributedString::describe(ClassDescription<NSAttributedString>& is) {
  using Self = NSAttributedString;
  is.named("NSAttributedString")
      .initializer<&Self::initWithString>("initWithString:")
      .initializer<&Self::initWithString_attributes>("initWithString:attributes:")
      .initializer<&Self::initWithAttributedString>("initWithAttributedString:")
      .method<&Self::string>("string")
      .method<&Self::length>("length")
      .method<&Self::attributesAtIndex_effectiveRange>("attributesAtIndex:effectiveRange:")
      .method<&Self::attribute_atIndex_effectiveRange>("attribute:atIndex:effectiveRange:")
      .method<&Self::attributedSubstringFromRange>("attributedSubstringFromRange:")
      .method<&Self::isEqualToAttributedString>("isEqualToAttributedString:");
}

// Making ------------------------------------------------------------------------------------------

NSAttributedString::NSAttributedString() : text_(""_ns) {}

NSAttributedString::NSAttributedString(NSString* text, Runs runs)
    : text_(text), runs_(std::move(runs)) {}

NSAttributedString::~NSAttributedString() = default;

Ref<NSAttributedString> NSAttributedString::initWithString(NSString* string) {
  return initWithString_attributes(string, nullptr);
}

Ref<NSAttributedString> NSAttributedString::initWithString_attributes(NSString* string,
                                                                      NSDictionary* attributes) {
  const Ref<NSString> text = NSString::stringWithString(string);
  Runs runs;
  if (text->length() > 0)
    runs.push_back({text->length(), NSDictionary::dictionaryWithDictionary(attributes)});
  return {new NSAttributedString(text, std::move(runs)), adopt};
}

Ref<NSAttributedString> NSAttributedString::initWithAttributedString(NSAttributedString* other) {
  if (other == nullptr)
    detail::raise(NSInvalidArgumentException, "initWithAttributedString: nil argument");
  return static_cast<NSAttributedString*>(other->copy().get());
}

// Reading -----------------------------------------------------------------------------------------

Ref<NSString> NSAttributedString::string() const { return NSString::stringWithString(text_); }

std::size_t NSAttributedString::runAt(std::uint32_t index) const {
  const auto found =
      std::upper_bound(runs_.begin(), runs_.end(), index,
                       [](std::uint64_t at, const Run& run) { return at < run.end; });
  return static_cast<std::size_t>(found - runs_.begin());
}

NSRange NSAttributedString::rangeOfRun(std::size_t run) const {
  const std::uint64_t start = run == 0 ? 0 : runs_[run - 1].end;
  return {static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(runs_[run].end - start)};
}

Ref<NSDictionary> NSAttributedString::attributesAtIndex_effectiveRange(std::uint32_t index,
                                                                       NSRange* range) const {
  if (index >= length()) detail::raiseIndex("attributesAtIndex:effectiveRange:", index, length());
  const std::size_t run = runAt(index);
  if (range != nullptr) *range = rangeOfRun(run);
  return runs_[run].attributes;
}

Ref<NSObject> NSAttributedString::attribute_atIndex_effectiveRange(NSString* name,
                                                                   std::uint32_t index,
                                                                   NSRange* range) const {
  if (index >= length()) detail::raiseIndex("attribute:atIndex:effectiveRange:", index, length());
  const std::size_t run = runAt(index);
  const Ref<NSObject> value = runs_[run].attributes->objectForKey(name);
  if (range == nullptr) return value;
  const auto isSame = [&](std::size_t other) {
    return equal(runs_[other].attributes->objectForKey(name), value);
  };
  std::size_t first = run;
  std::size_t last = run;
  while (first > 0 && isSame(first - 1)) --first;
  while (last + 1 < runs_.size() && isSame(last + 1)) ++last;
  *range = NSUnionRange(rangeOfRun(first), rangeOfRun(last));
  return value;
}

NSAttributedString::Runs NSAttributedString::runsOf(NSRange range) const {
  Runs runs;
  if (range.length == 0) return runs;
  const std::uint64_t end = NSMaxRange(range);
  for (std::size_t run = runAt(range.location); run < runs_.size(); ++run) {
    runs.push_back({std::min(runs_[run].end, end) - range.location, runs_[run].attributes});
    if (runs_[run].end >= end) break;
  }
  return runs;
}

Ref<NSAttributedString> NSAttributedString::attributedSubstringFromRange(NSRange range) const {
  const Ref<NSString> text = text_->substringWithRange(range);
  return {new NSAttributedString(text, runsOf(range)), adopt};
}

// Object ------------------------------------------------------------------------------------------

bool NSAttributedString::isEqualToAttributedString(NSAttributedString* other) const {
  if (other == this) return true;
  if (other == nullptr || !text_->isEqualToString(other->text_)) return false;
  return std::equal(runs_.begin(), runs_.end(), other->runs_.begin(), other->runs_.end(),
                    [](const Run& a, const Run& b) {
                      return a.end == b.end && equal(a.attributes, b.attributes);
                    });
}

bool NSAttributedString::isEqual(NSObject* other) const {
  return isEqualToAttributedString(as<NSAttributedString>(other));
}

std::size_t NSAttributedString::hash() const { return text_->hash(); }

Ref<NSObject> NSAttributedString::copy() const { return const_cast<NSAttributedString*>(this); }

Ref<NSObject> NSAttributedString::mutableCopy() const {
  return {new NSMutableAttributedString(text_, runs_), adopt};
}

Ref<NSString> NSAttributedString::description() const {
  auto text = NSMutableString::string();
  for (std::size_t run = 0; run < runs_.size(); ++run)
    text->appendFormat("%@%@"_ns, text_->substringWithRange(rangeOfRun(run)),
                       runs_[run].attributes);
  return NSString::stringWithString(text);
}

}  // namespace qz
