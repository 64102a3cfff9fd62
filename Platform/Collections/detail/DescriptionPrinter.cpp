#include "Platform/Collections/detail/DescriptionPrinter.h"

#include <algorithm>

#include "Platform/Runtime/Class.h"

namespace qz::detail {
namespace {

constexpr std::u16string_view indentation = u"    ";
constexpr std::u16string_view dots = u"...";

constinit thread_local DescriptionPrinter* innermost = nullptr;

bool isPlain(char16_t unit) {
  return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
         (unit >= u'0' && unit <= u'9') || unit == u'_' || unit == u'-' || unit == u'.' ||
         unit == u'/' || unit == u':' || unit == u'$';
}

void appendEscapedUnit(std::u16string& to, char16_t unit) {
  constexpr std::u16string_view digits = u"0123456789ABCDEF";
  constexpr std::u16string_view named = u"\"\\\n\r\t";
  constexpr std::u16string_view names = u"\"\\nrt";
  if (const std::size_t at = named.find(unit); at != std::u16string_view::npos) {
    to += u'\\';
    to += names[at];
    return;
  }
  if (unit >= 0x20 && unit != 0x7F) {
    to += unit;
    return;
  }
  to += u"\\u00";
  to += digits[unit >> 4];
  to += digits[unit & 0xF];
}

}  // namespace

void appendQuoted(std::u16string& to, std::u16string_view text) {
  if (!text.empty() && std::all_of(text.begin(), text.end(), isPlain)) {
    to += text;
    return;
  }
  to += u'"';
  for (char16_t unit : text) appendEscapedUnit(to, unit);
  to += u'"';
}

DescriptionPrinter::DescriptionPrinter(const NSObject* container, const DescriptionStyle& style)
    : container_(container),
      style_(style),
      outer_(innermost),
      depth_(outer_ == nullptr ? 0 : outer_->depth_ + 1),
      entered_(depth_ < maximumDepth) {
  for (const DescriptionPrinter* each = outer_; each != nullptr && entered_; each = each->outer_)
    entered_ = each->container_ != container;
  innermost = this;
}

DescriptionPrinter::~DescriptionPrinter() { innermost = outer_; }

void DescriptionPrinter::element(NSObject* object, std::u16string_view suffix) {
  beginLine();
  appendObject(object);
  text_ += suffix;
}

void DescriptionPrinter::entry(NSObject* key, NSObject* value) {
  beginLine();
  appendObject(key);
  text_ += u" = ";
  appendObject(value);
}

Ref<NSString> DescriptionPrinter::finish() {
  if (!hasLines_) {
    text_ = style_.open;
    if (!entered_) text_ += dots;
    text_ += style_.close;
  } else {
    if (style_.separatesLast) text_ += style_.separator;
    text_ += u'\n';
    appendIndent(depth_);
    text_ += style_.close;
  }
  return NSString::stringWithCharacters(text_);
}

void DescriptionPrinter::beginLine() {
  text_ += hasLines_ ? style_.separator : style_.open;
  hasLines_ = true;
  text_ += u'\n';
  appendIndent(depth_ + 1);
}

void DescriptionPrinter::appendIndent(std::uint32_t levels) {
  for (std::uint32_t i = 0; i < levels; ++i) text_ += indentation;
}

void DescriptionPrinter::appendObject(NSObject* object) {
  if (auto* text = as<NSString>(object)) {
    appendQuoted(text_, text->view());
  } else if (object == nullptr) {
    text_ += u"(null)";
  } else if (const Ref<NSString> words = object->description()) {
    text_ += words->view();
  }
}

}  // namespace qz::detail
