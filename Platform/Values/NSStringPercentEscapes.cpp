// Strings: percent escapes.

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSCharacterSet.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/PathText.h"
#include "Platform/Values/detail/PercentEscapes.h"
#include "Platform/Values/detail/StringDescriptions.h"

namespace qz {

void detail::describePercentEscapes(ClassDescription<NSString>& is) {
  is.method<&NSString::stringByAddingPercentEncodingWithAllowedCharacters>(
        "stringByAddingPercentEncodingWithAllowedCharacters:")
      .method<&NSString::stringByAddingPercentEncoding>("stringByAddingPercentEncoding")
      .method<&NSString::stringByRemovingPercentEncoding>("stringByRemovingPercentEncoding");
}

namespace {

Ref<NSString> addEscapes(std::u16string_view text, const detail::AsciiSet& allowed) {
  const Ref<NSString> whole = NSString::stringWithCharacters(text);
  const std::string bytes = whole->UTF8String();
  // A lone surrogate has become another character, and the text would not come back.
  if (NSString::stringWithUTF8String(bytes)->view() != text) return nullptr;
  return NSString::stringWithCharacters(detail::addEscapes(bytes, allowed));
}

}  // namespace

Ref<NSString> NSString::stringByAddingPercentEncodingWithAllowedCharacters(
    NSCharacterSet* allowed) const {
  if (allowed == nullptr)
    detail::raise(NSInvalidArgumentException,
                  "stringByAddingPercentEncodingWithAllowedCharacters: the set is nil");
  detail::AsciiSet set;
  for (int each = 0; each < 128; ++each)
    if (allowed->characterIsMember(static_cast<char16_t>(each)))
      set.insert(static_cast<char>(each));
  return addEscapes(view(), set);
}

Ref<NSString> NSString::stringByAddingPercentEncoding() const {
  return addEscapes(view(), detail::unreservedSet);
}

Ref<NSString> NSString::stringByRemovingPercentEncoding() const {
  const auto plain = detail::replaceEscapes(view(), {});
  return plain ? stringWithCharacters(*plain) : nullptr;
}

}  // namespace qz
