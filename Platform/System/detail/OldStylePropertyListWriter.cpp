#include <string_view>

#include "Platform/Collections/NSArray.h"
#include "Platform/System/detail/ByteBuffer.h"
#include "Platform/System/detail/PropertyListWalk.h"
#include "Platform/System/detail/PropertyListWriters.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {
namespace {

constexpr std::string_view digits = "0123456789abcdef";

class Writer {
 public:
  Ref<NSData> write(NSObject* list) {
    value(list);
    out_.append('\n');
    return out_.toData();
  }

 private:
  void value(NSObject* object) {
    switch (walk_.typeOf(object)) {
      case PropertyListType::String:
        return string(static_cast<NSString*>(object)->view());
      case PropertyListType::Data:
        return data(static_cast<NSData*>(object)->view());
      case PropertyListType::Array:
        return array(static_cast<NSArray*>(object));
      case PropertyListType::Dictionary:
        return dictionary(object);
      case PropertyListType::Number:
        walk_.refuse("old-style text has no numbers");
      case PropertyListType::Date:
        walk_.refuse("old-style text has no dates");
      default:
        walk_.refuseClass(object);
    }
  }

  void array(NSArray* array) {
    const PropertyListWalk::Level inside(walk_, array);
    std::uint32_t index = 0;
    out_.append('(');
    for (NSObject* each : *array) {
      inside.isAt(index);
      out_.append(index++ == 0 ? "\n" : ",\n");
      indent(walk_.depth());
      value(each);
    }
    close(index == 0, ')');
  }

  void dictionary(NSObject* dictionary) {
    const PropertyListWalk::Level inside(walk_, dictionary);
    const auto entries = walk_.sortedEntries(dictionary);
    out_.append('{');
    for (const auto& [key, object] : entries) {
      inside.isAt(key.get());
      out_.append('\n');
      indent(walk_.depth());
      string(key->view());
      out_.append(" = ");
      value(object);
      out_.append(';');
    }
    close(entries.empty(), '}');
  }

  void close(bool isEmpty, char mark) {
    if (!isEmpty) {
      out_.append('\n');
      indent(walk_.depth() - 1);
    }
    out_.append(mark);
  }

  void indent(std::size_t levels) { out_.append(levels, '\t'); }

  void data(std::string_view bytes) {
    out_.append('<');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      if (i != 0 && i % 4 == 0) out_.append(' ');
      const auto byte = static_cast<unsigned char>(bytes[i]);
      out_.append(digits[byte >> 4]);
      out_.append(digits[byte & 0x0Fu]);
    }
    out_.append('>');
  }

  // A slash would do in a word, but two begin a comment; and a text that begins as a binary list
  // does would be taken for one.
  static bool isWord(std::u16string_view text) {
    if (text.starts_with(u"bplist")) return false;
    constexpr std::u16string_view others = u"_$:.+-";
    for (char16_t unit : text) {
      const bool isLetter = (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z');
      if (!isLetter && !(unit >= '0' && unit <= '9') && others.find(unit) == others.npos)
        return false;
    }
    return !text.empty();
  }

  void string(std::u16string_view text) {
    const bool isPlain = isWord(text);
    if (!isPlain) out_.append('"');
    for (char16_t unit : text) character(unit);
    if (!isPlain) out_.append('"');
  }

  void character(char16_t unit) {
    if (unit == '\n') return out_.append("\\n");
    if (unit == '\t') return out_.append("\\t");
    if (unit < ' ' || unit > '~') {
      out_.append("\\U");
      for (int shift = 12; shift >= 0; shift -= 4) out_.append(digits[(unit >> shift) & 0x0F]);
      return;
    }
    if (unit == '"' || unit == '\\') out_.append('\\');
    out_.append(static_cast<char>(unit));
  }

  ByteBuffer out_;
  PropertyListWalk walk_;
};

}  // namespace

Ref<NSData> writeOldStylePropertyList(NSObject* list) { return Writer().write(list); }

}  // namespace qz::detail
