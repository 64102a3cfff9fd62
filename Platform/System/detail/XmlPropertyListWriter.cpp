#include <algorithm>
#include <charconv>
#include <cstdio>

#include "Platform/Collections/NSArray.h"
#include "Platform/System/detail/ByteBuffer.h"
#include "Platform/System/detail/PropertyListLeaves.h"
#include "Platform/System/detail/PropertyListWalk.h"
#include "Platform/System/detail/PropertyListWriters.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/Utf.h"

namespace qz::detail {
namespace {

constexpr std::string_view head =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
constexpr std::string_view tail = "</plist>\n";

// Lines of data end near the column that texts are commonly set to; a tab counts as eight.
constexpr std::size_t widestData = 76;
constexpr std::size_t narrowestData = 16;

class Writer {
 public:
  Ref<NSData> write(NSObject* list) {
    out_.append(head);
    value(list);
    out_.append(tail);
    return out_.toData();
  }

 private:
  void value(NSObject* object) {
    const PropertyListType type = walk_.typeOf(object);
    if (type == PropertyListType::None || type == PropertyListType::UID) walk_.refuseClass(object);
    indent();
    switch (type) {
      case PropertyListType::String:
        element("string", static_cast<NSString*>(object)->view());
        break;
      case PropertyListType::Number:
        number(*static_cast<NSNumber*>(object));
        break;
      case PropertyListType::Date:
        date(*static_cast<NSDate*>(object));
        break;
      case PropertyListType::Data:
        data(*static_cast<NSData*>(object));
        break;
      case PropertyListType::Array:
        array(static_cast<NSArray*>(object));
        break;
      default:
        dictionary(object);
        break;
    }
  }

  void array(NSArray* array) {
    const PropertyListWalk::Level inside(walk_, array);
    if (array->count() == 0) return out_.append("<array/>\n");
    out_.append("<array>\n");
    std::uint32_t index = 0;
    for (NSObject* each : *array) {
      inside.isAt(index++);
      value(each);
    }
    close("</array>\n");
  }

  void dictionary(NSObject* dictionary) {
    const PropertyListWalk::Level inside(walk_, dictionary);
    const auto entries = walk_.sortedEntries(dictionary);
    if (entries.empty()) return out_.append("<dict/>\n");
    out_.append("<dict>\n");
    for (const auto& [key, object] : entries) {
      inside.isAt(key.get());
      indent();
      element("key", key->view());
      value(object);
    }
    close("</dict>\n");
  }

  void number(const NSNumber& number) {
    char buffer[32];
    if (number.kind() == NumberKind::Bool) {
      out_.append(number.boolValue() ? "<true/>\n" : "<false/>\n");
    } else if (isFloatingKind(number.kind())) {
      plainElement("real", writePropertyListReal(number.doubleValue(), buffer));
    } else {
      const auto end = number.kind() == NumberKind::UnsignedLongLong
                           ? std::to_chars(buffer, buffer + sizeof buffer, number.bits())
                           : std::to_chars(buffer, buffer + sizeof buffer, number.signedBits());
      plainElement("integer", {buffer, static_cast<std::size_t>(end.ptr - buffer)});
    }
  }

  void date(const NSDate& date) {
    const auto text = writePropertyListDate(date.timeIntervalSince1970());
    if (!text) walk_.refuse("XML has no room for a date outside the years 1 to 9999");
    plainElement("date", *text);
  }

  void data(const NSData& data) {
    out_.append("<data>\n");
    const std::string text = data.base64EncodedStringWithOptions(0)->UTF8String();
    const std::size_t blanks = 8 * walk_.depth();
    const std::size_t width =
        widestData > blanks + narrowestData ? widestData - blanks : narrowestData;
    for (std::size_t at = 0; at < text.size(); at += width) {
      indent();
      out_.append(std::string_view(text).substr(at, width));
      out_.append('\n');
    }
    indent();
    out_.append("</data>\n");
  }

  // The contents of a container one tab further in, its end where it began.
  void indent() { out_.append(walk_.depth(), '\t'); }
  void close(std::string_view end) {
    out_.append(walk_.depth() - 1, '\t');
    out_.append(end);
  }

  void plainElement(std::string_view name, std::string_view text) {
    open(name);
    out_.append(text);
    end(name);
  }

  void element(std::string_view name, std::u16string_view text) {
    open(name);
    escaped(text);
    end(name);
  }

  void open(std::string_view name) {
    out_.append('<');
    out_.append(name);
    out_.append('>');
  }
  void end(std::string_view name) {
    out_.append("</");
    out_.append(name);
    out_.append(">\n");
  }

  // ASCII without markup goes over as it is; everything else comes to `special`.
  void escaped(std::u16string_view text) {
    constexpr std::size_t piece = 4096;
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t stop = std::min(text.size(), at + piece);
      char* out = out_.room(stop - at);
      while (at < stop && isPlain(text[at])) *out++ = static_cast<char>(text[at++]);
      out_.commit(out);
      while (at < text.size() && !isPlain(text[at])) at += special(text.substr(at));
    }
  }

  static bool isPlain(char16_t unit) {
    return unit >= ' ' ? unit < 0x80 && unit != '<' && unit != '>' && unit != '&'
                       : unit == '\n' || unit == '\t';
  }

  /// Writes one character; answers how many units it took.
  std::size_t special(std::u16string_view text) {
    const char16_t unit = text[0];
    const bool isPair = isHighSurrogate(unit) && text.size() > 1 && isLowSurrogate(text[1]);
    if (unit == '<')
      out_.append("&lt;");
    else if (unit == '>')
      out_.append("&gt;");
    else if (unit == '&')
      out_.append("&amp;");
    else if (unit == '\r')  // else it would be read as the end of a line, LF
      out_.append("&#13;");
    else if (unit < 0x80 || unit >= 0xFFFE || ((unit & 0xF800) == 0xD800 && !isPair))
      refuseCharacter(unit);
    else
      out_.commit(encodeUtf8(text.substr(0, isPair ? 2 : 1), out_.room(6)));
    return isPair ? 2 : 1;
  }

  [[noreturn]] void refuseCharacter(char16_t unit) {
    char code[8];
    std::snprintf(code, sizeof code, "U+%04X", static_cast<unsigned>(unit));
    walk_.refuse(std::string("XML has no room for the character ") + code + " of a String");
  }

  ByteBuffer out_;
  PropertyListWalk walk_;
};

}  // namespace

Ref<NSData> writeXmlPropertyList(NSObject* list) { return Writer().write(list); }

}  // namespace qz::detail
