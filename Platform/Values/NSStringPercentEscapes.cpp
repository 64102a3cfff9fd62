// Strings: percent escapes.

#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Values/NSCharacterSet.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/Characters.h"
#include "Platform/Values/detail/PercentEscapes.h"
#include "Platform/Values/detail/StringDescriptions.h"
#include "Platform/Values/detail/StringSearch.h"
#include "Platform/Values/detail/Utf.h"

namespace qz {

void detail::describePercentEscapes(ClassDescription<NSString>& is) {
  is.method<&NSString::stringByAddingPercentEncodingWithAllowedCharacters>(
        "stringByAddingPercentEncodingWithAllowedCharacters:")
      .method<&NSString::stringByAddingPercentEncoding>("stringByAddingPercentEncoding")
      .method<&NSString::stringByRemovingPercentEncoding>("stringByRemovingPercentEncoding");
}

namespace {

Ref<NSString> addEscapes(std::u16string_view text, const detail::AsciiSet& allowed) {
  if (detail::hasLoneSurrogate(text)) return nullptr;
  std::string bytes(detail::utf8Length(text), '\0');
  detail::encodeUtf8(text, bytes.data());
  return NSString::stringWithCharacters(detail::addEscapes(bytes, allowed));
}

}  // namespace

Ref<NSString> NSString::stringByAddingPercentEncodingWithAllowedCharacters(
    NSCharacterSet* allowed) const {
  const NSCharacterSet& members =
      detail::requireSet(allowed, "stringByAddingPercentEncodingWithAllowedCharacters:");
  detail::AsciiSet set;
  for (char16_t each = 0; each < 128; ++each)
    if (members.characterIsMember(each)) set.insert(static_cast<char>(each));
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
