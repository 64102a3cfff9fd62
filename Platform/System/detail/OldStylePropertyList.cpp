#include "Platform/System/detail/OldStylePropertyList.h"

#include <cstdio>
#include <utility>
#include <vector>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/System/detail/PropertyListBuilder.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/UnitBuffer.h"
#include "Platform/Values/detail/UnitKinds.h"
#include "Platform/Values/detail/Utf.h"

namespace qz::detail {
namespace {

constexpr char16_t byteOrderMark = 0xFEFF;

bool isSpace(char16_t unit) { return isBlank(unit) || unit == byteOrderMark; }

bool isWordUnit(char16_t unit) {
  return isAsciiLower(unit) || isAsciiUpper(unit) || isDigit(unit) || unit == '_' || unit == '$' ||
         unit == '/' || unit == ':' || unit == '.' || unit == '-' || unit == '+';
}

int octalDigit(char16_t unit) { return unit >= '0' && unit <= '7' ? unit - '0' : -1; }

std::string shown(char16_t unit) {
  if (unit > ' ' && unit < 0x7F) return std::string("'") + static_cast<char>(unit) + "'";
  char code[8];
  std::snprintf(code, sizeof code, "U+%04X", static_cast<unsigned>(unit));
  return code;
}

class Reader {
 public:
  Reader(std::u16string_view text, const OldStyleOptions& options)
      : text_(text), builder_(options.mutability), isTable_(options.isTable) {}

  Ref<NSObject> document() {
    skipBlanks();
    if (atEnd() && !isTable_) fail("the text is empty");
    if (atEnd()) return NSDictionary::dictionary();
    Ref<NSObject> root;
    const std::size_t start = at_;
    if (!ahead('{') && !ahead('(') && !ahead('<')) {
      Ref<NSString> word = string();
      skipBlanks();
      if (atEnd()) return builder_.string(word);
      at_ = start;
      root = entries(/*braces=*/false);
    } else {
      root = value();
    }
    skipBlanks();
    if (!atEnd()) fail("unexpected " + shown(text_[at_]) + " behind the end");
    return root;
  }

 private:
  [[noreturn]] void fail(std::string reason) const {
    throw PropertyListFailure{std::move(reason), at_};
  }
  [[noreturn]] static void failAt(std::size_t position, std::string reason) {
    throw PropertyListFailure{std::move(reason), position};
  }

  bool atEnd() const { return at_ == text_.size(); }
  bool ahead(char16_t unit) const { return !atEnd() && text_[at_] == unit; }
  bool ahead(std::u16string_view units) const { return text_.substr(at_).starts_with(units); }

  bool take(char16_t unit) {
    if (!ahead(unit)) return false;
    ++at_;
    return true;
  }

  void skipBlanks() {
    while (!atEnd()) {
      if (isSpace(text_[at_])) {
        ++at_;
      } else if (ahead(u"//")) {
        while (!atEnd() && text_[at_] != '\n' && text_[at_] != '\r') ++at_;
      } else if (ahead(u"/*")) {
        const std::size_t close = text_.find(u"*/", at_ + 2);
        if (close == text_.npos) fail("the comment has no end");
        at_ = close + 2;
      } else {
        return;
      }
    }
  }

  Ref<NSObject> value() {
    if (atEnd()) fail("a value is missing at the end");
    switch (text_[at_]) {
      case '{':
        return entries(/*braces=*/true);
      case '(':
        return elements();
      case '<':
        return data();
      default:
        return builder_.string(string());
    }
  }

  void enter() {
    if (depth_ == deepestPropertyList) fail("nested too deep");
    ++depth_;
  }

  Ref<NSObject> elements() {
    enter();
    const std::size_t open = at_++, base = values_.size();
    for (;;) {
      skipBlanks();
      if (take(')')) break;
      if (atEnd()) failAt(open, "the array has no end");
      values_.push(value());
      skipBlanks();
      if (take(')')) break;
      if (atEnd()) failAt(open, "the array has no end");
      if (!take(',')) fail("a comma is missing before " + shown(text_[at_]));
    }
    --depth_;
    return builder_.array(values_, base);
  }

  Ref<NSObject> entries(bool braces) {
    enter();
    const std::size_t open = at_, keyBase = keys_.size(), valueBase = values_.size();
    std::vector<std::size_t> places;  // of the keys, where they may not come again
    if (braces) ++at_;
    for (;;) {
      skipBlanks();
      if (braces && take('}')) break;
      if (atEnd()) {
        if (braces) failAt(open, "the dictionary has no end");
        break;
      }
      if (!isTable_) places.push_back(at_);
      Ref<NSString> key = string();
      keys_.push(key);
      skipBlanks();
      if (take('=')) {
        skipBlanks();
        values_.push(value());
        skipBlanks();
      } else {
        values_.push(builder_.string(key));
      }
      if (!take(';')) {
        // The line with the entry tells more than the place where something else begins.
        fail("a semicolon is missing behind the entry \"" + key->UTF8String() + "\"");
      }
    }
    --depth_;
    if (Ref<NSObject> dictionary = builder_.dictionary(keys_, keyBase, values_, valueBase))
      return dictionary;
    const std::size_t again = PropertyListBuilder::indexOfRepeatedKey(keys_.from(keyBase));
    if (!isTable_)
      failAt(places[again],
             "the key \"" + to_string(keys_.at(keyBase + again)) + "\" stands twice");
    return lastOfEachKey(keyBase, valueBase);
  }

  Ref<NSObject> lastOfEachKey(std::size_t keyBase, std::size_t valueBase) {
    const auto keys = keys_.from(keyBase);
    auto table = NSDictionary::dictionaryWithObjects_forKeys_count(
        values_.from(valueBase).data(), keys.data(), static_cast<std::uint32_t>(keys.size()));
    keys_.dropTo(keyBase);
    values_.dropTo(valueBase);
    return table;
  }

  Ref<NSObject> data() {
    const std::size_t open = at_++;
    std::string bytes;
    for (;;) {
      skipBlanks();
      if (take('>')) return builder_.data(NSData::dataWithBytes(bytes));
      if (atEnd()) failAt(open, "the data has no end");
      const int high = hexValue(text_[at_]);
      if (high < 0) fail("unexpected " + shown(text_[at_]) + " in data");
      const int low = at_ + 1 < text_.size() ? hexValue(text_[at_ + 1]) : -1;
      if (low < 0) fail("half a byte in data");
      bytes += static_cast<char>(high << 4 | low);
      at_ += 2;
    }
  }

  Ref<NSString> string() {
    if (ahead('"') || ahead('\'')) return quoted();
    const std::size_t start = at_;
    while (!atEnd() && isWordUnit(text_[at_])) ++at_;
    if (at_ == start)
      fail(atEnd() ? "a string is missing at the end" : "unexpected " + shown(text_[at_]));
    return NSString::stringWithCharacters(text_.substr(start, at_ - start));
  }

  Ref<NSString> quoted() {
    const std::size_t open = at_;
    const char16_t mark = text_[at_++];
    const char16_t stops[] = {mark, u'\\'};
    UnitBuffer units;
    for (;;) {
      const std::size_t stop = text_.find_first_of(stops, at_, 2);
      if (stop == text_.npos) failAt(open, "the string has no closing quote");
      const std::u16string_view plain = text_.substr(at_, stop - at_);
      at_ = stop + 1;
      if (text_[stop] == mark) {
        if (units.size() == 0) return NSString::stringWithCharacters(plain);
        units.append(plain);
        return units.toString();
      }
      units.append(plain);
      if (atEnd()) failAt(open, "the string has no closing quote");
      units.append(escape());
    }
  }

  // Behind the backslash.
  char16_t escape() {
    const char16_t unit = text_[at_++];
    switch (unit) {
      case 'a':
        return u'\a';
      case 'b':
        return u'\b';
      case 'f':
        return u'\f';
      case 'n':
        return u'\n';
      case 'r':
        return u'\r';
      case 't':
        return u'\t';
      case 'v':
        return u'\v';
      case 'U':
      case 'u':
        return number(&hexValue, 4, 4);
      default:
        break;
    }
    if (octalDigit(unit) < 0) return unit;
    --at_;
    return number(&octalDigit, 3, 3);
  }

  char16_t number(int (*digit)(char16_t), int most, int bits) {
    const std::size_t start = at_;
    std::uint32_t code = 0;
    for (int i = 0; i < most && !atEnd() && digit(text_[at_]) >= 0; ++i)
      code = (code << bits) | static_cast<std::uint32_t>(digit(text_[at_++]));
    if (at_ == start) fail("hexadecimal digits are missing");
    return static_cast<char16_t>(code);
  }

  const std::u16string_view text_;
  const PropertyListBuilder builder_;
  const bool isTable_;
  std::size_t at_ = 0;
  std::uint32_t depth_ = 0;
  ObjectStack keys_, values_;
};

Ref<NSString> textOfUtf16(std::string_view bytes, bool bigEndian, PropertyListFault* fault) {
  std::u16string units(bytes.size() / 2, u'\0');
  for (std::size_t i = 0; i < units.size(); ++i) {
    const auto first = static_cast<unsigned char>(bytes[2 * i]);
    const auto second = static_cast<unsigned char>(bytes[2 * i + 1]);
    units[i] = static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first);
  }
  if (bytes.size() % 2 != 0) {
    *fault = faultInText(units, {"the last UTF-16 unit is half there", units.size()});
    return nullptr;
  }
  return NSString::stringWithCharacters(units);
}

Ref<NSString> textOfUtf8(std::string_view bytes, PropertyListFault* fault) {
  if (auto text = NSString::stringWithValidUTF8String(bytes)) return text;
  // Up to the first ill-formed byte the text is the same however it is read.
  Ref<NSString> lossy = NSString::stringWithUTF8String(bytes);
  const std::u16string_view units = lossy->view();
  std::size_t valid = 0, used = 0;
  while (valid < units.size()) {
    const std::size_t pair = isHighSurrogate(units[valid]) ? 2 : 1;
    char encoded[8];
    const char* end = encodeUtf8(units.substr(valid, pair), encoded);
    const std::string_view expected(encoded, static_cast<std::size_t>(end - encoded));
    if (!bytes.substr(used).starts_with(expected)) break;
    used += expected.size();
    valid += pair;
  }
  *fault = faultInText(units, {"the text is not UTF-8", valid});
  return nullptr;
}

}  // namespace

Ref<NSString> textOfFileBytes(std::string_view bytes, PropertyListFault* fault) {
  if (bytes.starts_with("\xFE\xFF")) return textOfUtf16(bytes.substr(2), true, fault);
  if (bytes.starts_with("\xFF\xFE")) return textOfUtf16(bytes.substr(2), false, fault);
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  return textOfUtf8(bytes, fault);
}

Ref<NSObject> readOldStylePropertyList(std::u16string_view text, const OldStyleOptions& options,
                                       PropertyListFault* fault) {
  try {
    return Reader(text, options).document();
  } catch (PropertyListFailure& failure) {
    *fault = faultInText(text, std::move(failure));
    return nullptr;
  }
}

Ref<NSDictionary> readOldStyleDictionary(std::string_view bytes, bool onlyStrings,
                                         PropertyListFault* fault) {
  Ref<NSString> text = textOfFileBytes(bytes, fault);
  if (!text) return nullptr;
  Ref<NSObject> root = readOldStylePropertyList(*text, {}, fault);
  if (!root) return nullptr;
  auto dictionary = as<NSDictionary>(root);
  if (!dictionary) {
    *fault = {"the text is no dictionary", 1, 1};
    return nullptr;
  }
  if (!onlyStrings) return dictionary;
  for (const auto& [key, value] : dictionary) {
    if (isKind<NSString>(value)) continue;
    *fault = {"the value of \"" + as<NSString>(key)->UTF8String() + "\" is no string", 1, 1};
    return nullptr;
  }
  return dictionary;
}

}  // namespace qz::detail
