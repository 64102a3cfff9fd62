#include "QZFoundation/NSString-QZSearch.h"

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "QZFoundation/detail/LibraryBundle.h"

namespace qz {
namespace {

constexpr NSRange notFound{NSNotFound, 0};

bool fits(std::uint32_t kind, NSRange match, std::uint32_t length) {
  if (match.location == NSNotFound) return false;
  const bool atStart = match.location == 0;
  const bool atEnd = match.location + match.length == length;
  switch (kind) {
    case QZSearchAtStart:
      return atStart;
    case QZSearchAtEnd:
      return atEnd;
    case QZSearchAnywhere:
      return true;
    case QZSearchWhole:
      return atStart && atEnd;
    default:
      return false;
  }
}

[[noreturn]] void raiseIllegalKind(std::uint32_t kind) {
  NSException::raise_reason(
      NSInternalInconsistencyException,
      detail::message("Illegal value for search kind (%d)"_ns,
                      "Reason for exception raised for illegal search kind"_ns,
                      static_cast<std::int32_t>(kind)));
}

/// Calls `use` with the Range of each line that counts, until it answers false.
template <class Use>
void walkLines(NSString* self, Use use) {
  const std::uint32_t length = self == nullptr ? 0 : self->length();
  for (NSRange probe{0, 1}; probe.location + 1 < length;) {
    const NSRange line = self->lineRangeForRange(probe);
    if (!use(line)) return;
    probe.location = line.location + line.length;
  }
}

}  // namespace

NSRange rangeOfString_options_range_searchKind(NSString* self, NSString* part,
                                               std::uint32_t options, NSRange range,
                                               std::uint32_t kind) {
  if (self == nullptr) return notFound;
  const NSRange match = self->rangeOfString_options_range(part, options, range);
  if (kind == 4 || kind > QZSearchWhole) raiseIllegalKind(kind);
  if (kind == QZSearchAbsent && match.location == NSNotFound) return {0, self->length()};
  return {fits(kind, match, self->length()) ? match.location : NSNotFound, match.length};
}

bool isEqualCaseInsensitive(NSString* self, NSObject* other) {
  if (self == nullptr) return false;
  if (auto* text = as<NSString>(other)) return self->caseInsensitiveCompare(text) == NSOrderedSame;
  return self->isEqual(other);
}

NSComparisonResult numericCompare(NSString* self, NSString* other) {
  return self == nullptr ? NSOrderedSame : self->compare_options(other, NSNumericSearch);
}

NSComparisonResult numericCaseInsensitiveCompare(NSString* self, NSString* other) {
  if (self == nullptr) return NSOrderedSame;
  return self->compare_options(other, NSNumericSearch | NSCaseInsensitiveSearch);
}

Ref<NSString> longestPrefixInStrings(NSString* self, NSEnumerator* strings) {
  if (self == nullptr || strings == nullptr) return nullptr;
  Ref<NSString> best;
  while (Ref<NSObject> each = strings->nextObject()) {
    auto candidate = as<NSString>(each);
    if (candidate && self->hasPrefix(candidate) && (!best || candidate->length() > best->length()))
      best = candidate;
  }
  return best;
}

std::uint32_t numberOfLines(NSString* self) {
  std::uint32_t count = 0;
  walkLines(self, [&count](NSRange) {
    ++count;
    return true;
  });
  return count;
}

NSRange rangeForLineNumber(NSString* self, std::uint32_t number) {
  NSRange found = notFound;
  walkLines(self, [&found, number, count = std::uint32_t{0}](NSRange line) mutable {
    if (count++ != number) return true;
    found = line;
    return false;
  });
  return found;
}

Ref<NSMutableArray> stringsBySeparatingAtCharactersInSet(NSString* self, NSCharacterSet* set) {
  if (self == nullptr) return nullptr;
  auto pieces = NSMutableArray::array();
  const std::u16string_view units = self->view();
  std::uint32_t start = 0;
  for (std::uint32_t i = 1; i < units.size(); ++i) {
    if (set == nullptr || !set->characterIsMember(units[i])) continue;
    pieces->addObject(self->substringWithRange({start, i - start}));
    start = i;
  }
  pieces->addObject(self->substringFromIndex(start));
  return pieces;
}

Ref<NSString> substringUpToString_remainingString(NSString* self, NSString* separator,
                                                  Ref<NSString>* remaining) {
  const NSRange match = self == nullptr ? notFound : self->rangeOfString(separator);
  const bool found = match.location != NSNotFound;
  if (remaining != nullptr)
    *remaining = found ? self->substringFromIndex(match.location + match.length) : nullptr;
  return found ? self->substringToIndex(match.location) : nullptr;
}

Ref<NSDictionary> parseQueryString(NSString* self) {
  if (self == nullptr) return nullptr;
  auto keys = NSMutableArray::array(), values = NSMutableArray::array();
  const Ref<NSArray> pieces = self->componentsSeparatedByString("&"_ns);
  for (NSObject* each : *pieces) {
    Ref<NSString> value;
    Ref<NSString> key =
        substringUpToString_remainingString(static_cast<NSString*>(each), "="_ns, &value);
    if (!key) continue;
    keys->addObject(key);
    values->addObject(value);
  }
  return NSDictionary::dictionaryWithObjects_forKeys(values, keys);
}

void detail::registerNSStringQZSearch() {
  extend<NSString>("QZFoundation")
      .method<&rangeOfString_options_range_searchKind>("rangeOfString:options:range:searchKind:")
      .method<&isEqualCaseInsensitive>("isEqualCaseInsensitive:")
      .method<&numericCompare>("numericCompare:")
      .method<&numericCaseInsensitiveCompare>("numericCaseInsensitiveCompare:")
      .method<&longestPrefixInStrings>("longestPrefixInStrings:")
      .method<&numberOfLines>("numberOfLines")
      .method<&rangeForLineNumber>("rangeForLineNumber:")
      .method<&stringsBySeparatingAtCharactersInSet>("stringsBySeparatingAtCharactersInSet:")
      .method<&substringUpToString_remainingString>("substringUpToString:remainingString:")
      .method<&parseQueryString>("parseQueryString");
}

}  // namespace qz
