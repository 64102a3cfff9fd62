#include "tools/qzplist/Values.h"

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "tools/Command.h"

namespace qz::tool {
namespace {

void show(NSObject* value, unsigned level, std::string& out);

void newLine(unsigned level, std::string& out) { out += "\n" + std::string(2 * level, ' '); }

void showText(std::string_view text, std::string& out) {
  constexpr std::string_view digits = "0123456789abcdef";
  out += '"';
  for (char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      out += {'\\', c};
    } else if (c == '\n') {
      out += "\\n";
    } else if (c == '\t') {
      out += "\\t";
    } else if (byte < ' ' || byte == 0x7F) {  // nothing that commands a terminal
      out += {'\\', 'x', digits[byte >> 4], digits[byte & 15u]};
    } else {
      out += c;
    }
  }
  out += '"';
}

void showEntries(NSDictionary* dictionary, unsigned level, std::string& out) {
  out += '{';
  for (const auto& [key, value] : dictionary) {
    newLine(level + 1, out);
    showText(to_string(key), out);
    out += ": ";
    show(value, level + 1, out);
  }
  if (dictionary->count() != 0) newLine(level, out);
  out += '}';
}

void showElements(NSArray* array, unsigned level, std::string& out) {
  out += '[';
  for (NSObject* each : *array) {
    newLine(level + 1, out);
    show(each, level + 1, out);
  }
  if (array->count() != 0) newLine(level, out);
  out += ']';
}

// The writer's own text of a leaf that XML has room for, between its tags.
std::string writtenInXml(NSObject* leaf) {
  auto data = NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
      leaf, NSPropertyListXMLFormat, nullptr);
  if (!data) return to_string(leaf);
  const std::string_view xml = data->view();
  const std::size_t end = xml.rfind("</", xml.rfind("</plist>") - 1);
  const std::size_t start = xml.rfind('>', end) + 1;
  return std::string(xml.substr(start, end - start));
}

void show(NSObject* value, unsigned level, std::string& out) {
  if (auto* dictionary = as<NSDictionary>(value))
    showEntries(dictionary, level, out);
  else if (auto* array = as<NSArray>(value))
    showElements(array, level, out);
  else if (auto* text = as<NSString>(value))
    showText(text->UTF8String(), out);
  else
    out += plain(value);
}

Ref<NSObject> readLeaf(const std::string& element, const std::string& text) {
  std::string escaped;
  for (char c : text) escaped += c == '<' || c == '&' ? std::string("?") : std::string(1, c);
  const std::string xml = "<plist><" + element + ">" + escaped + "</" + element + "></plist>";
  return NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
      NSData::dataWithBytes(xml), NSPropertyListMutableContainers, nullptr, nullptr);
}

Ref<NSObject> parsedList(const std::string& text) {
  Ref<NSString> problem;
  auto list =
      NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
          NSData::dataWithBytes(text), NSPropertyListMutableContainers, nullptr, &problem);
  if (!list) fail(problem->UTF8String());
  return list;
}

}  // namespace

std::string shown(NSObject* list) {
  std::string out;
  show(list, 0, out);
  return out;
}

std::string plain(NSObject* value) {
  if (auto* number = as<NSNumber>(value)) {
    if (number->kind() == NumberKind::Bool) return number->boolValue() ? "true" : "false";
    return number->stringValue()->UTF8String();
  }
  if (isKind<NSDate>(value)) return writtenInXml(value);
  if (isKind<NSDictionary>(value) || isKind<NSArray>(value)) return shown(value);
  return to_string(value);
}

Ref<NSObject> parsedValue(std::string_view type, const std::string& text) {
  if (type == "string") return NSString::stringWithUTF8String(text);
  if (type == "array" || type == "dictionary") {
    Ref<NSObject> list = parsedList(text);
    const bool fits = type == "array" ? isKind<NSArray>(list) : isKind<NSDictionary>(list);
    if (!fits) fail("this is no " + std::string(type));
    return list;
  }
  Ref<NSObject> value;
  if (type == "bool") {
    if (text == "true" || text == "false") value = NSNumber::numberWithBool(text == "true");
  } else if (type == "integer" || type == "real" || type == "date" || type == "data") {
    value = readLeaf(std::string(type), text);
  } else {
    misuse("there is no type \"" + std::string(type) + "\"");
  }
  if (!value) fail("\"" + text + "\" is no value of the type " + std::string(type));
  return value;
}

}  // namespace qz::tool
