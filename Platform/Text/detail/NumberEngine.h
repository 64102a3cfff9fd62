/// @file
/// Private: what a number formatter's settings come to. Includes ICU.
#pragma once

#include <unicode/decimfmt.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include "Platform/Text/detail/NumberSettings.h"
#include "Platform/Text/detail/PlainNumberFormat.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

/// What is wrong with a text that was to be a number.
enum class NumberFault { None, NoNumber, Fraction, TooSmall, TooGreat };

struct ReadNumber {
  Ref<NSNumber> value;
  NumberFault fault = NumberFault::None;
};

/// Formats and reads numbers. Any thread.
class NumberEngine {
 public:
  explicit NumberEngine(const NumberSettings& settings);

  /// Nil where ICU has no format at all.
  Ref<NSString> format(const NSNumber& number) const;

  ReadNumber read(std::u16string_view text) const;

  /// A text of ICU's for others: see what is hidden from it.
  Ref<NSString> shown(const icu::UnicodeString& text) const;

  /// Of a formatter that does not write in words.
  const icu::DecimalFormat* decimal() const noexcept { return decimal_; }

 private:
  void makeFormat();
  void applyDigits();
  void applyTexts();
  void makeZero();

  const NumberSettings::Text* symbolOf(const NSNumber& number) const noexcept;
  Ref<NSNumber> readSymbol(std::u16string_view text) const;
  ReadNumber checked(Ref<NSNumber> number) const;

  NumberSettings settings_;
  std::unique_ptr<icu::NumberFormat> format_;
  icu::DecimalFormat* decimal_ = nullptr;  // `format_`, when it is one
  bool hidesTilde_ = false;
  std::optional<PlainNumberFormat> plain_;
  std::optional<std::u16string> zero_;  // how zero is written, where that is special
  mutable std::mutex mutex_;            // for formats in words, which are not const inside
};

}  // namespace qz::detail
