/// @file
/// Private: how every collection writes its description.
///
///     Ref<NSString> NSArray::description() const {
///       detail::DescriptionPrinter printer(this, detail::arrayStyle);
///       if (printer.entered())
///         for (NSObject* each : *this) printer.element(each);
///       return printer.finish();
///     }
///
/// prints
///
///     (
///         first,
///         "with blanks",
///         (
///             nested
///         )
///     )
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Platform/Runtime/NSObject.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

/// The signs of one kind of collection.
struct DescriptionStyle {
  std::u16string_view open;
  std::u16string_view close;
  std::u16string_view separator;
  bool separatesLast;  ///< The separator also follows the last line.
};

inline constexpr DescriptionStyle arrayStyle{u"(", u")", u",", false};
inline constexpr DescriptionStyle dictionaryStyle{u"{", u"}", u";", true};
inline constexpr DescriptionStyle setStyle{u"{(", u")}", u",", false};

/// Writes one collection's description, for as long as a call of `description` lasts.
///
/// Knows, for each thread, which collections are being printed: their lines are indented by how
/// deep they are nested, and one that is met again inside itself, or lies deeper than
/// `maximumDepth`, prints as its signs around three dots. So cyclic and very deep structures print
/// in bounded space and time.
class DescriptionPrinter {
 public:
  static constexpr std::uint32_t maximumDepth = 512;

  DescriptionPrinter(const NSObject* container, const DescriptionStyle& style);
  ~DescriptionPrinter();
  DescriptionPrinter(const DescriptionPrinter&) = delete;
  DescriptionPrinter& operator=(const DescriptionPrinter&) = delete;

  /// Whether the elements are to be printed; false for a collection that prints as three dots.
  bool entered() const noexcept { return entered_; }

  /// A line of its own with the description of `object`, and `suffix` behind it.
  void element(NSObject* object, std::u16string_view suffix = {});

  /// A line "key = value".
  void entry(NSObject* key, NSObject* value);

  /// The whole description. Call once, last.
  Ref<NSString> finish();

 private:
  void beginLine();
  void appendIndent(std::uint32_t levels);
  void appendObject(NSObject* object);

  const NSObject* container_;
  const DescriptionStyle& style_;
  DescriptionPrinter* outer_;
  std::uint32_t depth_;
  bool entered_;
  bool hasLines_ = false;
  std::u16string text_;
};

/// Appends `text` as a collection shows it: bare when it is a plain word, otherwise in quotation
/// marks, with these, backslashes and control characters escaped.
void appendQuoted(std::u16string& to, std::u16string_view text);

}  // namespace qz::detail
