#include "Platform/System/detail/XmlPropertyListReader.h"

#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <utility>

#include "Platform/System/detail/PropertyListBuilder.h"
#include "Platform/System/detail/PropertyListLeaves.h"
#include "Platform/System/detail/XmlText.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/Utf.h"

namespace qz::detail {
namespace {

using pugi::xml_node;

enum class Tag { Array, Data, Date, Dict, False, Integer, Key, Real, String, True, Unknown };

Tag tagOf(const char* name) {
  // Names are short: a call takes longer than the comparison.
  const auto is = [name](std::string_view other, Tag tag) {
    std::size_t i = 0;
    while (i < other.size() && name[i] == other[i]) ++i;
    return i == other.size() && name[i] == '\0' ? tag : Tag::Unknown;
  };
  switch (name[0]) {
    case 'a':
      return is("array", Tag::Array);
    case 'd':
      if (name[1] == 'i') return is("dict", Tag::Dict);
      return is("data", Tag::Data) == Tag::Data ? Tag::Data : is("date", Tag::Date);
    case 'f':
      return is("false", Tag::False);
    case 'i':
      return is("integer", Tag::Integer);
    case 'k':
      return is("key", Tag::Key);
    case 'r':
      return is("real", Tag::Real);
    case 's':
      return is("string", Tag::String);
    case 't':
      return is("true", Tag::True);
    default:
      return Tag::Unknown;
  }
}

std::string shown(const char* name) { return std::string("<") + name + ">"; }

std::string reasonOf(pugi::xml_parse_status status) {
  switch (status) {
    case pugi::status_out_of_memory:
      return "there is not enough memory";
    case pugi::status_end_element_mismatch:
      return "the end of an element is missing or that of another one";
    case pugi::status_bad_start_element:
      return "the element's start is not well formed";
    case pugi::status_bad_end_element:
      return "the element's end is not well formed";
    case pugi::status_bad_attribute:
      return "the attribute is not well formed";
    case pugi::status_bad_comment:
      return "the comment has no end";
    case pugi::status_bad_cdata:
      return "the CDATA section has no end";
    case pugi::status_bad_doctype:
      return "the document type is not well formed";
    case pugi::status_bad_pi:
      return "the processing instruction is not well formed";
    default:
      return "the XML is not well formed";
  }
}

bool isBlankText(const char* text) {
  for (; *text != '\0'; ++text)
    if (!isXmlBlank(*text)) return false;
  return true;
}

/// Keys of Dictionaries come again and again: one Object each, its hash known.
class KeyCache {
 public:
  Ref<NSString> key(std::string_view text) {
    std::uint32_t hash = static_cast<std::uint32_t>(text.size());
    for (char c : text) hash = hash * 31 + static_cast<unsigned char>(c);
    Slot& slot = slots_[(hash ^ hash >> 8) % slots_.size()];
    if (!slot.key || slot.text != text) {
      slot.text = text;
      slot.key = NSString::stringWithUTF8String(text);
    }
    return slot.key;
  }

 private:
  struct Slot {
    std::string text;
    Ref<NSString> key;
  };
  std::array<Slot, 256> slots_;
};

/// Thrown when leaving blanks out has lost what is part of a value.
struct BlanksMatter {};

class Reader {
 public:
  Reader(std::string_view source, std::uint32_t mutability)
      : source_(source), builder_(mutability) {}

  Ref<NSObject> read() {
    if (const std::size_t zero = source_.find('\0'); zero != source_.npos)
      throw PropertyListFailure{"a zero byte is no XML", zero};
    try {
      return read(pugi::parse_ws_pcdata_single);
    } catch (const BlanksMatter&) {
      keepsBlanks_ = true;
      return read(pugi::parse_ws_pcdata);
    }
  }

 private:
  // What pugixml would pass over or change in texts is left to this reader: escapes and ends of
  // lines, text outside the root (which makes this a "fragment"), comments inside of texts. A text
  // that an element begins with is the element's own value, which saves every other node.
  Ref<NSObject> read(unsigned blanks) {
    constexpr unsigned everything = pugi::parse_cdata | pugi::parse_comments | pugi::parse_pi |
                                    pugi::parse_declaration | pugi::parse_doctype |
                                    pugi::parse_fragment | pugi::parse_embed_pcdata;
    buffer_ = std::make_unique_for_overwrite<char[]>(source_.size() + 1);
    std::memcpy(buffer_.get(), source_.data(), source_.size());
    // pugixml puts a zero in the place of the last byte and overlooks that it may have been text.
    buffer_[source_.size()] = '\n';
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer_inplace(
        buffer_.get(), source_.size() + 1, everything | blanks, pugi::encoding_utf8);
    if (!parsed)
      throw PropertyListFailure{reasonOf(parsed.status), static_cast<std::size_t>(parsed.offset)};
    return root(document);
  }

  Ref<NSObject> root(const pugi::xml_document& document) {
    xml_node plist;
    for (xml_node node = document.first_child(); node; node = node.next_sibling()) {
      switch (node.type()) {
        case pugi::node_element:
          if (plist) fail(node, "there is more than one root element");
          plist = node;
          break;
        case pugi::node_declaration:
          if (node != document.first_child() || placeOf(node) > 2)
            fail(node, "the XML declaration is not at the start");
          break;
        case pugi::node_doctype:
          if (std::strchr(node.value(), '[') != nullptr)
            fail(node, "the document type declares entities or elements of its own");
          break;
        case pugi::node_pcdata:
          if (!isBlankText(node.value())) fail(node, "there is text outside the root element");
          break;
        case pugi::node_cdata:
          fail(node, "there is text outside the root element");
        default:
          break;
      }
    }
    if (!plist) throw PropertyListFailure{"there is no <plist> element", source_.size()};
    if (std::strcmp(plist.name(), "plist") != 0)
      fail(plist, "the root element is " + shown(plist.name()) + ", not <plist>");
    const xml_node top = firstElement(plist);
    if (!top) fail(plist, "the <plist> element holds no value");
    Ref<NSObject> list = value(top);
    if (const xml_node more = nextElement(top))
      fail(more, "the <plist> element holds more than one value");
    return list;
  }

  Ref<NSObject> value(xml_node node) {
    switch (tagOf(node.name())) {
      case Tag::String:
        return builder_.string(NSString::stringWithUTF8String(text(node)));
      case Tag::Integer:
        return leaf(node, readPropertyListInteger(trimmed(node)), "an integer of 64 bits");
      case Tag::Real:
        return leaf(node, readPropertyListReal(trimmed(node)), "a number");
      case Tag::True:
      case Tag::False:
        if (!trimmed(node).empty()) fail(node, shown(node.name()) + " is not empty");
        return NSNumber::numberWithBool(node.name()[0] == 't');
      case Tag::Date: {
        const auto seconds = readPropertyListDate(trimmed(node));
        return leaf(node, seconds ? NSDate::dateWithTimeIntervalSince1970(*seconds) : nullptr,
                    "a date such as 2024-02-29T12:00:00Z");
      }
      case Tag::Data: {
        const Ref<NSData> bytes = readPropertyListData(text(node));
        if (!bytes) fail(node, "the data is not in base 64");
        return builder_.data(bytes);
      }
      case Tag::Array:
        return array(node);
      case Tag::Dict:
        return dictionary(node);
      case Tag::Key:
        fail(node, "a <key> stands where a value is wanted");
      case Tag::Unknown:
        break;
    }
    fail(node, shown(node.name()) + " is no element of a property list");
  }

  Ref<NSObject> leaf(xml_node node, Ref<NSObject> object, const char* wanted) {
    if (!object)
      fail(node, "\"" + std::string(trimmed(node).substr(0, 40)) + "\" is not " + wanted);
    return object;
  }

  Ref<NSObject> array(xml_node node) {
    enter(node);
    const std::size_t base = values_.size();
    for (xml_node child = firstElement(node); child; child = nextElement(child))
      values_.push(value(child));
    --depth_;
    return builder_.array(values_, base);
  }

  Ref<NSObject> dictionary(xml_node node) {
    enter(node);
    const std::size_t keyBase = keys_.size(), valueBase = values_.size();
    for (xml_node child = firstElement(node); child; child = nextElement(child)) {
      if (tagOf(child.name()) != Tag::Key)
        fail(child, "a <key> is missing before " + shown(child.name()));
      keys_.push(cache_.key(text(child)));
      const xml_node key = child;
      child = nextElement(child);
      if (!child) fail(key, "the key has no value");
      values_.push(value(child));
    }
    --depth_;
    Ref<NSObject> dictionary = builder_.dictionary(keys_, keyBase, values_, valueBase);
    if (!dictionary) failForRepeatedKey(node, keyBase);
    return dictionary;
  }

  [[noreturn]] void failForRepeatedKey(xml_node node, std::size_t keyBase) {
    const std::size_t index = PropertyListBuilder::indexOfRepeatedKey(keys_.from(keyBase));
    xml_node child = firstElement(node);
    for (std::size_t i = 0; i < 2 * index; ++i) child = nextElement(child);
    fail(child, "the key \"" + to_string(keys_.at(keyBase + index)) + "\" stands twice");
  }

  void enter(xml_node node) {
    if (depth_ == deepestPropertyList) fail(node, "nested too deep");
    ++depth_;
  }

  // Walking: elements, with nothing but blanks and comments between them --------------------------

  xml_node firstElement(xml_node parent) {
    if (!isBlankText(parent.value())) failAt(parent.value(), "there is text between the elements");
    return elementFrom(parent.first_child());
  }
  xml_node nextElement(xml_node node) { return elementFrom(node.next_sibling()); }
  xml_node elementFrom(xml_node node) {
    for (; node && node.type() != pugi::node_element; node = node.next_sibling()) {
      const bool isText = node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
      if (isText && (node.type() == pugi::node_cdata || !isBlankText(node.value())))
        fail(node, "there is text between the elements");
    }
    return node;
  }

  // Texts -----------------------------------------------------------------------------------------

  /// Of a leaf, decoded; good until the next call.
  std::string_view text(xml_node node) {
    const char* const start = node.value();
    const xml_node first = node.first_child();
    if (first && !keepsBlanks_) throw BlanksMatter();
    if (!first && isPlainXmlText(start)) return start;
    text_.clear();
    if (*start != '\0') append(start, true);
    for (xml_node part = first; part; part = part.next_sibling()) {
      const bool isText = part.type() == pugi::node_pcdata;
      if (isText || part.type() == pugi::node_cdata)
        append(part.value(), isText);
      else if (part.type() == pugi::node_element)
        fail(part, shown(part.name()) + " stands inside of " + shown(node.name()));
    }
    return text_;
  }

  void append(const char* value, bool unescapes) {
    try {
      appendXmlText(value, unescapes, text_);
    } catch (PropertyListFailure& failure) {
      failure.position += static_cast<std::size_t>(value - buffer_.get());
      throw;
    }
  }

  std::string_view trimmed(xml_node node) {
    std::string_view all = text(node);
    while (!all.empty() && isXmlBlank(all.front())) all.remove_prefix(1);
    while (!all.empty() && isXmlBlank(all.back())) all.remove_suffix(1);
    return all;
  }

  // Places ----------------------------------------------------------------------------------------

  // Names and texts lie in the buffer; what has neither is told by its parent.
  std::size_t placeOf(xml_node node) const {
    for (; node; node = node.parent()) {
      const bool isNamed =
          node.type() == pugi::node_element || node.type() == pugi::node_declaration;
      const char* const at = isNamed ? node.name() : node.value();
      const char* const start = buffer_.get();
      if (at >= start && at <= start + source_.size() && *at != '\0')
        return static_cast<std::size_t>(at - start) - (node.type() == pugi::node_element ? 1 : 0);
    }
    return 0;
  }

  [[noreturn]] void fail(xml_node node, std::string reason) const {
    throw PropertyListFailure{std::move(reason), placeOf(node)};
  }
  [[noreturn]] void failAt(const char* text, std::string reason) const {
    throw PropertyListFailure{std::move(reason), static_cast<std::size_t>(text - buffer_.get())};
  }

  const std::string_view source_;
  const PropertyListBuilder builder_;
  std::unique_ptr<char[]> buffer_;  // pugixml writes zeros into it
  bool keepsBlanks_ = false;
  std::uint32_t depth_ = 0;
  std::string text_;
  ObjectStack keys_, values_;
  KeyCache cache_;
};

}  // namespace

bool looksLikeXmlPropertyList(std::string_view bytes) {
  while (!bytes.empty() && isXmlBlank(bytes.front())) bytes.remove_prefix(1);
  return bytes.starts_with("<?") || bytes.starts_with("<!") || bytes.starts_with("<plist");
}

std::string encodingOfXmlDeclaration(std::string_view bytes) {
  if (!bytes.starts_with("<?xml")) return {};
  const std::string_view declaration = bytes.substr(0, bytes.find("?>"));
  const std::size_t name = declaration.find("encoding");
  if (name == declaration.npos) return {};
  const std::size_t open = declaration.find_first_of("\"'", name);
  if (open == declaration.npos) return {};
  const std::size_t close = declaration.find(declaration[open], open + 1);
  if (close == declaration.npos) return {};
  return std::string(declaration.substr(open + 1, close - open - 1));
}

Ref<NSObject> readXmlPropertyList(std::string_view text, std::uint32_t mutability,
                                  PropertyListFault* fault) {
  try {
    // Room for the keys, which are cached, is too much for the stack.
    return std::make_unique<Reader>(text, mutability)->read();
  } catch (PropertyListFailure& failure) {
    *fault = faultInText(text, std::move(failure));
    return nullptr;
  }
}

}  // namespace qz::detail
