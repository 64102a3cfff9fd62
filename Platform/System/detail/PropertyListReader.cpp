#include "Platform/System/detail/PropertyListReader.h"

#include <algorithm>
#include <string>

#include "Platform/System/detail/BinaryPropertyList.h"
#include "Platform/System/detail/XmlPropertyListReader.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/NSStringEncoding.h"
#include "Platform/Values/detail/Utf.h"

namespace qz::detail {
namespace {

struct Mark {
  std::string_view bytes;
  std::uint32_t encoding;
  bool isPartOfText = false;
};

using namespace std::string_view_literals;

// The longer marks come before those that they begin with. The last two are no marks, but the start
// of XML without one.
constexpr Mark marks[] = {
    {"\x00\x00\xFE\xFF"sv, NSUTF32BigEndianStringEncoding},
    {"\xFF\xFE\x00\x00"sv, NSUTF32LittleEndianStringEncoding},
    {"\xFE\xFF"sv, NSUTF16BigEndianStringEncoding},
    {"\xFF\xFE"sv, NSUTF16LittleEndianStringEncoding},
    {"\xEF\xBB\xBF"sv, NSUTF8StringEncoding},
    {"\x00<\x00?"sv, NSUTF16BigEndianStringEncoding, true},
    {"<\x00?\x00"sv, NSUTF16LittleEndianStringEncoding, true},
};

const Mark* markOf(std::string_view bytes) {
  for (const Mark& mark : marks)
    if (bytes.starts_with(mark.bytes)) return &mark;
  return nullptr;
}

/// A text in UTF-8, which may be the very bytes.
struct Text {
  std::string_view utf8;
  std::string converted;
};

Ref<NSString> decoded(std::string_view bytes, std::uint32_t encoding) {
  return NSString::initWithBytes_length_encoding(
      bytes.data(), static_cast<std::uint32_t>(bytes.size()), encoding);
}

// Bytes that are not well formed in UTF-8 are left: textOfFileBytes says where.
bool toUtf8(std::string_view bytes, Text& text, PropertyListFault* fault) {
  const Mark* const mark = markOf(bytes);
  if (mark != nullptr && !mark->isPartOfText) bytes.remove_prefix(mark->bytes.size());
  text.utf8 = bytes;
  std::uint32_t encoding = mark != nullptr ? mark->encoding : std::uint32_t{NSUTF8StringEncoding};
  std::string name = "Unicode";
  if (mark == nullptr) {
    name = encodingOfXmlDeclaration(bytes);
    if (!name.empty()) encoding = encodingNamed(name);
    if (encoding == 0) {
      *fault = faultInText(bytes, {"the encoding \"" + name + "\" is not known", 0});
      return false;
    }
  }
  if (encoding == NSUTF8StringEncoding || encoding == NSASCIIStringEncoding) return true;
  const Ref<NSString> string = decoded(bytes, encoding);
  if (!string) {
    *fault = faultInText(std::string_view(), {"the text is not in its encoding, " + name, 0});
    return false;
  }
  text.converted = string->UTF8String();
  text.utf8 = text.converted;
  return true;
}

}  // namespace

Ref<NSObject> readPropertyList(std::string_view bytes, const OldStyleOptions& options,
                               NSPropertyListFormat* format, PropertyListFault* fault) {
  if (bytes.starts_with(binaryPropertyListMagic)) {
    *format = NSPropertyListBinaryFormat;
    return readBinaryPropertyList(bytes, options.mutability, fault);
  }
  *format = NSPropertyListOldStyleFormat;
  Text text;
  if (!toUtf8(bytes, text, fault)) return nullptr;
  const bool isXml = looksLikeXmlPropertyList(text.utf8);
  if (isXml) *format = NSPropertyListXMLFormat;
  if (isXml && isValidUtf8(text.utf8))
    return readXmlPropertyList(text.utf8, options.mutability, fault);
  const Ref<NSString> string = textOfFileBytes(text.utf8, fault);
  return string ? readOldStylePropertyList(*string, options, fault) : nullptr;
}

}  // namespace qz::detail
