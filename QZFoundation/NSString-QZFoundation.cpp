#include "QZFoundation/NSString-QZFoundation.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSAssertionHandler.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSCharacterSet.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSMutableString.h"
#include "Platform/Values/NSURL.h"
#include "Platform/Values/NSUUID.h"
#include "Platform/Values/detail/StringStorage.h"

namespace qz {

using detail::requireString;

namespace {

constexpr std::uint32_t recordCapacity = 255;

// Elements that an Array makes as it is asked are asked for once, and kept.
class Pieces {
 public:
  explicit Pieces(NSArray* strings) {
    for (NSString* each : elements<NSString>(strings)) {
      owned_.emplace_back(each);
      length_ += each->length();
    }
  }

  std::size_t count() const { return owned_.size(); }
  std::uint64_t length() const { return length_; }
  std::u16string_view operator[](std::size_t index) const { return owned_[index]->view(); }

 private:
  std::vector<Ref<NSString>> owned_;
  std::uint64_t length_ = 0;
};

Ref<NSString> join(const Pieces& pieces, std::u16string_view separator) {
  if (pieces.count() == 0) return ""_ns;
  const std::uint64_t length = pieces.length() + separator.size() * (pieces.count() - 1);
  if (length > NSString::maxLength)
    detail::raise(NSMallocException, "initWithStrings:separator: a String of " +
                                         std::to_string(length) + " units is too long");
  auto* const units =
      static_cast<char16_t*>(std::malloc(std::max<std::size_t>(length, 1) * sizeof(char16_t)));
  if (units == nullptr)
    detail::raise(NSMallocException,
                  "initWithStrings:separator: no memory for " + std::to_string(length) + " units");
  char16_t* end = units;
  for (std::size_t i = 0; i < pieces.count(); ++i) {
    if (i > 0) end = std::copy(separator.begin(), separator.end(), end);
    end = std::copy(pieces[i].begin(), pieces[i].end(), end);
  }
  return NSString::initWithCharactersNoCopy_length(units, static_cast<std::uint32_t>(length));
}

// The line is the caller's. (clang 14 has no std::source_location.)
void assertRecord(const HFSUniStr255& record, std::int32_t line = __builtin_LINE()) {
  if (record.length <= recordCapacity) return;
  NSAssertionHandler::currentHandler()->handleFailureInMethod_object_file_lineNumber_description(
      "initWithHFSUniStr255:"_sel, ""_ns, "NSString-QZFoundation"_ns, line,
      NSString::stringWithFormat("Illegal HFS string length 0x%x"_ns, record.length));
}

}  // namespace

// Building ----------------------------------------------------------------------------------------

Ref<NSString> stringWithStrings(NSArray* strings) { return initWithStrings(strings); }

Ref<NSString> stringWithStrings_separator(NSArray* strings, NSString* separator) {
  return initWithStrings_separator(strings, separator);
}

Ref<NSString> initWithStrings(NSArray* strings) { return join(Pieces(strings), u""); }

Ref<NSString> initWithStrings_separator(NSArray* strings, NSString* separator) {
  return join(Pieces(strings), separator != nullptr ? separator->view() : u"");
}

Ref<NSString> stringWithHFSUniStr255(const HFSUniStr255& record) {
  return initWithHFSUniStr255(record);
}

Ref<NSString> initWithHFSUniStr255(const HFSUniStr255& record) {
  assertRecord(record);
  return NSString::stringWithCharacters_length(
      record.unicode, std::min<std::uint32_t>(record.length, recordCapacity));
}

Ref<NSString> stringWithData_encoding(NSData* data, std::uint32_t encoding) {
  return NSString::initWithData_encoding(data, encoding);
}

Ref<NSString> stringWithCharacter(char16_t character) {
  return NSString::stringWithCharacters_length(&character, 1);
}

Ref<NSString> horizontalEllipsisString() { return "\u2026"_ns; }
Ref<NSString> longDashString() { return "\u2014"_ns; }
Ref<NSString> commandSymbolString() { return "\u2318"_ns; }

Ref<NSString> UUIDString() { return CFUUIDCreateString(CFUUIDCreate()); }

Ref<NSString> uniqueStringWithBaseString_appendFormatString_inStrings(NSString* base,
                                                                      NSString* format,
                                                                      NSObject* strings) {
  const char* const operation = "uniqueStringWithBaseString:appendFormatString:inStrings:";
  const auto isTaken = [strings](NSString* candidate) {
    return send<bool>(strings, "containsObject:"_sel, candidate);
  };
  if (!isTaken(&requireString(base, operation))) return base;
  const Ref<NSString> whole = base->stringByAppendingString(&requireString(format, operation));
  Ref<NSString> before;
  for (std::uint64_t number = 2;; ++number) {
    Ref<NSString> candidate = NSString::stringWithFormat(whole, number);
    if (!isTaken(candidate)) return candidate;
    if (candidate->isEqualToString(before))
      detail::raise(NSInvalidArgumentException,
                    to_string(NSString::stringWithFormat("%s: there is no number in %@"_ns,
                                                         operation, whole)));
    before = std::move(candidate);
  }
}

// Editing -----------------------------------------------------------------------------------------

Ref<NSString> stringByPrependingString(NSString* self, NSString* prefix) {
  return requireString(prefix, "stringByPrependingString:").stringByAppendingString(self);
}

Ref<NSString> stringByReplacingPrefix_withString(NSString* self, NSString* prefix,
                                                 NSString* replacement) {
  if (!self->hasPrefix(prefix)) return self;
  requireString(replacement, "stringByReplacingPrefix:withString:");
  if (self->length() == prefix->length()) return replacement;
  return replacement->stringByAppendingString(self->substringFromIndex(prefix->length()));
}

Ref<NSString> stringByReplacingCharactersInSet_withString(NSString* self, NSCharacterSet* set,
                                                          NSString* replacement) {
  const char* const operation = "stringByReplacingCharactersInSet:withString:";
  detail::requireArgument(operation, "the set", set);
  const std::u16string_view added = requireString(replacement, operation).view();
  const std::u16string_view text = self->view();
  auto result = NSMutableString::stringWithCapacity(self->length());
  std::size_t kept = 0;  // units from here on are not copied yet
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (!set->characterIsMember(text[at])) continue;
    result->appendCharacters(text.substr(kept, at - kept));
    result->appendCharacters(added);
    kept = at + 1;
  }
  result->appendCharacters(text.substr(kept));
  return NSString::stringWithString(result);
}

Ref<NSString> lowercaseFirst(NSString* self) {
  return self->substringToIndex(1)->lowercaseString()->stringByAppendingString(
      self->substringFromIndex(1));
}

Ref<NSString> uppercaseFirst(NSString* self) {
  return self->substringToIndex(1)->uppercaseString()->stringByAppendingString(
      self->substringFromIndex(1));
}

Ref<NSString> stringByDeletingNumberFromEnd(NSString* self) {
  const std::size_t space = self->view().rfind(u' ');
  if (space == std::u16string_view::npos) return self;
  const auto at = static_cast<std::uint32_t>(space);
  const Ref<NSString> end = self->substringFromIndex(at + 1);
  if (end->intValue() < 1) return self;
  // Blanks and a plus may go before the digits, nothing may follow them.
  constexpr std::u16string_view digits = u"0123456789";
  const std::size_t first = end->view().find_first_of(digits);
  if (end->view().find_first_not_of(digits, first) != std::u16string_view::npos) return self;
  return self->substringToIndex(at);
}

Ref<NSString> stringByReplacingPercentEscapes(NSString* self) {
  return CFURLCreateStringByReplacingPercentEscapes(self, ""_ns);
}

// Paths -------------------------------------------------------------------------------------------

Ref<NSString> stringWithPathComponents(NSArray* components) {
  auto path = NSMutableString::string();
  for (NSString* each : elements<NSString>(components)) {
    if (each->view() == u"/") continue;
    path->appendCharacters(u"/");
    path->appendString(each);
  }
  return NSString::stringWithString(path);
}

Ref<NSString> stringByAppendingPathComponents(NSString* self, NSArray* components) {
  Ref<NSString> path(self);
  for (NSString* each : elements<NSString>(components))
    path = path->stringByAppendingPathComponent(each);
  return path;
}

Ref<NSString> stringByPrependingPathComponent(NSString* self, NSString* component) {
  return requireString(component, "stringByPrependingPathComponent:")
      .stringByAppendingPathComponent(self);
}

Ref<NSString> stringByAppendingStringBeforePathExtension(NSString* self, NSString* string) {
  requireString(string, "stringByAppendingStringBeforePathExtension:");
  const Ref<NSString> extension = self->pathExtension();
  if (extension->length() == 0) return self->stringByAppendingString(string);
  return NSString::stringWithFormat("%@%@.%@"_ns, self->stringByDeletingPathExtension(), string,
                                    extension);
}

bool hasPathExtension(NSString* self, NSString* extension) {
  return self->pathExtension()->isEqualToString(extension);
}

bool containsPath(NSString* self, NSString* path) {
  if (path == nullptr || self->length() > path->length()) return false;
  const Ref<NSArray> mine = self->pathComponents();
  const Ref<NSArray> theirs = path->pathComponents();
  if (mine->count() > theirs->count()) return false;
  for (std::uint32_t i = 0; i < mine->count(); ++i)
    if (!equal(mine->objectAtIndex(i), theirs->objectAtIndex(i))) return false;
  return true;
}

Ref<NSString> POSIXPathFromCarbonPath(NSString* self) {
  return CFURLCopyFileSystemPath(CFURLCreateWithFileSystemPath(self, URLPathStyle::HFS, false),
                                 URLPathStyle::POSIX);
}

Ref<NSString> carbonPathFromPOSIXPath(NSString* self) {
  return CFURLCopyFileSystemPath(CFURLCreateWithFileSystemPath(self, URLPathStyle::POSIX, false),
                                 URLPathStyle::HFS);
}

void getHFSUniStr255(NSString* self, HFSUniStr255* record) {
  if (record == nullptr)
    detail::raise(NSInvalidArgumentException, "getHFSUniStr255: the record is null");
  *record = {};
  const std::uint32_t length = std::min(self->length(), recordCapacity);
  record->length = static_cast<std::uint16_t>(length);
  self->getCharacters_range(record->unicode, {0, length});
}

// Scalars -----------------------------------------------------------------------------------------

bool boolValue(NSString* self) { return self->view() == u"YES"; }

NSRange fullRange(NSString* self) { return {0, self->length()}; }

std::uint32_t unsignedIntValue(NSString* self) {
  return static_cast<std::uint32_t>(std::max(self->intValue(), 0));
}

// The platform's own reading is what its scanner finds, so its operation answers to the Selector.
std::int64_t longLongValue(NSString* self) { return self->longLongValue(); }

std::uint32_t fourCharCode(NSString* self) {
  const std::u16string_view text = self->view();
  if (std::any_of(text.begin(), text.end(), [](char16_t unit) { return unit > 0x7F; })) return 0;
  std::uint32_t code = 0;
  for (std::size_t i = 0; i < 4; ++i) code = code << 8 | (i < text.size() ? text[i] : 0u);
  return code;
}

// By Selector -------------------------------------------------------------------------------------

void detail::registerNSStringQZFoundation() {
  extend<NSString>("QZFoundation")
      .classMethod<&stringWithStrings>("stringWithStrings:")
      .classMethod<&stringWithStrings_separator>("stringWithStrings:separator:")
      .initializer<&initWithStrings>("initWithStrings:")
      .initializer<&initWithStrings_separator>("initWithStrings:separator:")
      .classMethod<&stringWithHFSUniStr255>("stringWithHFSUniStr255:")
      .initializer<&initWithHFSUniStr255>("initWithHFSUniStr255:")
      .classMethod<&stringWithData_encoding>("stringWithData:encoding:")
      .classMethod<&stringWithCharacter>("stringWithCharacter:")
      .classMethod<&horizontalEllipsisString>("horizontalEllipsisString")
      .classMethod<&longDashString>("longDashString")
      .classMethod<&commandSymbolString>("commandSymbolString")
      .classMethod<&UUIDString>("UUIDString")
      .classMethod<&uniqueStringWithBaseString_appendFormatString_inStrings>(
          "uniqueStringWithBaseString:appendFormatString:inStrings:")
      .method<&stringByPrependingString>("stringByPrependingString:")
      .method<&stringByReplacingPrefix_withString>("stringByReplacingPrefix:withString:")
      .method<&stringByReplacingCharactersInSet_withString>(
          "stringByReplacingCharactersInSet:withString:")
      .method<&lowercaseFirst>("lowercaseFirst")
      .method<&uppercaseFirst>("uppercaseFirst")
      .method<&stringByDeletingNumberFromEnd>("stringByDeletingNumberFromEnd")
      .method<&stringByReplacingPercentEscapes>("stringByReplacingPercentEscapes")
      .classMethod<&stringWithPathComponents>("stringWithPathComponents:")
      .method<overload<Ref<NSString>(NSString*, NSArray*)>(&stringByAppendingPathComponents)>(
          "stringByAppendingPathComponents:")
      .method<&stringByPrependingPathComponent>("stringByPrependingPathComponent:")
      .method<&stringByAppendingStringBeforePathExtension>(
          "stringByAppendingStringBeforePathExtension:")
      .method<&hasPathExtension>("hasPathExtension:")
      .method<&containsPath>("containsPath:")
      .method<&POSIXPathFromCarbonPath>("POSIXPathFromCarbonPath")
      .method<&carbonPathFromPOSIXPath>("carbonPathFromPOSIXPath")
      .method<&getHFSUniStr255>("getHFSUniStr255:")
      .replace<&boolValue>("boolValue")
      .method<overload<NSRange(NSString*)>(&fullRange)>("fullRange")
      .method<&unsignedIntValue>("unsignedIntValue")
      .method<&fourCharCode>("fourCharCode");
}

}  // namespace qz
