// String tables and property lists from outside: Strings, Arrays and Dictionaries come of them, or
// a fault that lies inside the text. What was read can be written down and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/System/detail/OldStylePropertyList.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSString.h"

using namespace qz;

namespace {

void write(NSObject* value, std::u16string& out) {
  if (auto* text = as<NSString>(value)) {
    out += u'"';
    for (char16_t unit : text->view()) {
      if (unit == '"' || unit == '\\') out += u'\\';
      out += unit;
    }
    out += u'"';
  } else if (auto* bytes = as<NSData>(value)) {
    out += u'<';
    for (const std::byte each : bytes->span())
      for (const unsigned digit :
           {std::to_integer<unsigned>(each) >> 4, std::to_integer<unsigned>(each) & 0xFu})
        out += u"0123456789abcdef"[digit];
    out += u'>';
  } else if (auto* array = as<NSArray>(value)) {
    out += u'(';
    for (NSObject* each : *array) {
      write(each, out);
      out += u',';
    }
    out += u')';
  } else {
    out += u'{';
    for (const auto& [key, object] : as<NSDictionary>(value)) {
      write(key, out);
      out += u'=';
      write(object, out);
      out += u';';
    }
    out += u'}';
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  detail::PropertyListFault fault;
  detail::readOldStyleDictionary(bytes, /*onlyStrings=*/true, &fault);
  Ref<NSString> text = detail::textOfFileBytes(bytes, &fault);
  if (!text) return 0;
  Ref<NSObject> value = detail::readOldStylePropertyList(*text, {}, &fault);
  if (!value) {
    if (fault.line == 0 || fault.column == 0 || fault.line > text->length() + 1 ||
        fault.column > text->length() + 1 || fault.reason.empty())
      std::abort();
    return 0;
  }
  std::u16string written;
  write(value, written);
  Ref<NSObject> again = detail::readOldStylePropertyList(written, {}, &fault);
  if (!again || !again->isEqual(value)) std::abort();
  return 0;
}
