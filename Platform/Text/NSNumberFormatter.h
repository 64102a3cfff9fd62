/// @file
/// Number formatters: Numbers into text for people, and back.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "Platform/Runtime/Derives.h"
#include "Platform/Text/NSFormatter.h"

#pragma GCC visibility push(default)

namespace qz {

class NSCoder;
class NSLocale;
class NSNumber;

namespace detail {
class NumberEngine;
struct NumberSettings;
}  // namespace detail

/// The locale's way of writing numbers of a kind; `None` is plain digits: up to three decimals,
/// nothing between thousands.
enum class NSNumberFormatterStyle : std::int32_t {
  None = 0,
  Decimal = 1,
  Currency = 2,
  Percent = 3,
  Scientific = 4,
  SpellOut = 5,  ///< In words. Of the settings, the locale and the limits count.
};

/// What becomes of digits that are not shown.
enum class NSNumberFormatterRoundingMode : std::int32_t {
  Ceiling = 0,
  Floor = 1,
  Down = 2,  ///< Towards zero.
  Up = 3,    ///< Away from zero.
  HalfEven = 4,
  HalfDown = 5,
  HalfUp = 6,
};

/// Turns Numbers into text and reads such text.
///
///     auto formatter = NSNumberFormatter::init();
///     formatter->setFormat("#,##0.00;-;(#,##0.00)"_ns);
///     formatter->setLocale(NSLocale::localeWithLocaleIdentifier("de"_ns));
///     formatter->stringFromNumber(NSNumber::of(-1234.5));   // "(1.234,50)"
///
/// A pattern is Unicode's (UTS #35): "#" a digit, "0" a digit even if it is zero, "," the places
/// that are grouped, "." the decimal point, "E", "%" and "¤"; other text stands for itself, in
/// quotes if need be. Without a pattern the style's is taken. What is set below counts whatever the
/// pattern or style says, and in whatever order it was set.
///
/// A floating Number is the shortest decimal number that reads back as the same value, and that is
/// what is rounded: half to even unless set otherwise. Numbers are ICU's; plain patterns in locales
/// that write ASCII digits are formatted here, with the same result, four times as fast.
///
/// Reading takes the whole text. Whole numbers come back as `LongLong`, or `UnsignedLongLong` where
/// that is needed; all others as `Double`. Threads: as NSFormatter; formatting takes no lock, but
/// for `SpellOut`.
class NSNumberFormatter : public Derives<NSNumberFormatter, NSFormatter> {
 public:
  static void describe(ClassDescription<NSNumberFormatter>& is);

  NSNumberFormatter();
  ~NSNumberFormatter() override;

  /// Of the style `None`.
  static Ref<NSNumberFormatter> init();

  /// A Number in the process's locale.
  static Ref<NSString> localizedStringFromNumber_numberStyle(NSNumber* number,
                                                             NSNumberFormatterStyle style);

  // Converting ------------------------------------------------------------------------------------

  /// `nilSymbol`, or nil unless one is set, for nil.
  Ref<NSString> stringFromNumber(NSNumber* number) const;

  /// Nil for text that is no number or beyond the limits, and for nil.
  Ref<NSNumber> numberFromString(NSString* string) const;

  /// The text of an NSNumber; nil for another Object.
  Ref<NSString> stringForObjectValue(NSObject* object) const override;
  bool getObjectValue_forString_errorDescription(Ref<NSObject>* object, NSString* string,
                                                 Ref<NSString>* error) const override;

  // Pattern, style, locale; each setting is a key too ---------------------------------------------

  /// The locale's way of writing that counts while no format is set.
  NSNumberFormatterStyle numberStyle() const;
  void setNumberStyle(NSNumberFormatterStyle style);

  /// One to three patterns with semicolons between them: "positive", "positive;negative" or
  /// "positive;zero;negative". Of the negative one, only the text around the digits counts; an
  /// empty one is the positive one behind a minus sign. Zero itself is written as its own pattern
  /// says, or as the text that stands there when it has no place for a digit; a number that is
  /// rounded to zero is not zero. Nil takes the pattern back. Raises NSInvalidArgumentException for
  /// what is no pattern.
  Ref<NSString> format() const;
  void setFormat(NSString* format);

  /// The parts of `format`. A nil one takes it back.
  Ref<NSString> positiveFormat() const;
  void setPositiveFormat(NSString* format);
  Ref<NSString> negativeFormat() const;
  void setNegativeFormat(NSString* format);

  /// The process's locale for numbers, unless set; nil takes back what was set.
  Ref<NSLocale> locale() const;
  void setLocale(NSLocale* locale);

  // Digits ----------------------------------------------------------------------------------------

  /// What was not set reads as the pattern or style has it.
  std::uint32_t minimumIntegerDigits() const;
  void setMinimumIntegerDigits(std::uint32_t digits);
  std::uint32_t maximumIntegerDigits() const;
  void setMaximumIntegerDigits(std::uint32_t digits);
  std::uint32_t minimumFractionDigits() const;
  void setMinimumFractionDigits(std::uint32_t digits);
  std::uint32_t maximumFractionDigits() const;
  void setMaximumFractionDigits(std::uint32_t digits);
  bool usesSignificantDigits() const;
  void setUsesSignificantDigits(bool uses);
  std::uint32_t minimumSignificantDigits() const;
  void setMinimumSignificantDigits(std::uint32_t digits);
  std::uint32_t maximumSignificantDigits() const;
  void setMaximumSignificantDigits(std::uint32_t digits);
  bool usesGroupingSeparator() const;
  void setUsesGroupingSeparator(bool uses);
  std::uint32_t groupingSize() const;
  void setGroupingSize(std::uint32_t size);
  std::uint32_t secondaryGroupingSize() const;
  void setSecondaryGroupingSize(std::uint32_t size);
  bool alwaysShowsDecimalSeparator() const;
  void setAlwaysShowsDecimalSeparator(bool always);
  NSNumberFormatterRoundingMode roundingMode() const;
  void setRoundingMode(NSNumberFormatterRoundingMode mode);

  /// Numbers are rounded to its multiples; 0 for none.
  double roundingIncrement() const;
  void setRoundingIncrement(double increment);

  /// Numbers are multiplied by it when formatted, and divided when read: 100 for percentages.
  std::int32_t multiplier() const;
  void setMultiplier(std::int32_t multiplier);

  /// Texts shorter than this are filled up with `paddingCharacter` in front.
  std::uint32_t formatWidth() const;
  void setFormatWidth(std::uint32_t width);
  Ref<NSString> paddingCharacter() const;
  void setPaddingCharacter(NSString* character);

  // Texts -----------------------------------------------------------------------------------------

  /// What was not set reads as the locale or the pattern has it; nil takes back what was set. The
  /// currency's code (ISO 4217: "EUR") sets its symbol and number of decimals.
  Ref<NSString> decimalSeparator() const;
  void setDecimalSeparator(NSString* separator);
  Ref<NSString> groupingSeparator() const;
  void setGroupingSeparator(NSString* separator);
  Ref<NSString> minusSign() const;
  void setMinusSign(NSString* sign);
  Ref<NSString> percentSymbol() const;
  void setPercentSymbol(NSString* symbol);
  Ref<NSString> currencySymbol() const;
  void setCurrencySymbol(NSString* symbol);
  Ref<NSString> currencyCode() const;
  void setCurrencyCode(NSString* code);
  Ref<NSString> positivePrefix() const;
  void setPositivePrefix(NSString* text);
  Ref<NSString> positiveSuffix() const;
  void setPositiveSuffix(NSString* text);
  Ref<NSString> negativePrefix() const;
  void setNegativePrefix(NSString* text);
  Ref<NSString> negativeSuffix() const;
  void setNegativeSuffix(NSString* text);

  /// What stands for "not a number", the infinities, zero and nil. Unless set: the locale's texts,
  /// the pattern's, none.
  Ref<NSString> notANumberSymbol() const;
  void setNotANumberSymbol(NSString* symbol);
  Ref<NSString> positiveInfinitySymbol() const;
  void setPositiveInfinitySymbol(NSString* symbol);
  Ref<NSString> negativeInfinitySymbol() const;
  void setNegativeInfinitySymbol(NSString* symbol);
  Ref<NSString> zeroSymbol() const;
  void setZeroSymbol(NSString* symbol);
  Ref<NSString> nilSymbol() const;
  void setNilSymbol(NSString* symbol);

  // Reading ---------------------------------------------------------------------------------------

  /// Whether reading overlooks blanks, misplaced grouping and further signs. False unless set.
  bool isLenient() const;
  void setLenient(bool lenient);

  /// Whether numbers with a fraction may be read. True unless set.
  bool allowsFloats() const;
  void setAllowsFloats(bool allows);

  /// The least and the greatest number that is read; nil for no limit.
  Ref<NSNumber> minimum() const;
  void setMinimum(NSNumber* minimum);
  Ref<NSNumber> maximum() const;
  void setMaximum(NSNumber* maximum);

  // In archives -----------------------------------------------------------------------------------

  /// What was set, each setting under its key; what was not set is not stored.
  void encodeWithCoder(NSCoder* coder) const;

  /// What is of another kind than it should be counts as not set.
  static Ref<NSNumberFormatter> initWithCoder(NSCoder* coder);

  /// A formatter of the same class with the same settings.
  Ref<NSObject> copy() const override;

 protected:
  /// Takes over all that is set in `other`, or in an archive.
  void takeSettings(const NSNumberFormatter& other);
  void takeSettings(NSCoder* coder);

 private:
  const detail::NumberEngine& engine() const;
  void dropEngine() noexcept;
  template <class T, class V>
  void change(T detail::NumberSettings::*field, V value);

  std::unique_ptr<detail::NumberSettings> settings_;
  mutable std::atomic<const detail::NumberEngine*> engine_{nullptr};
};

}  // namespace qz

#pragma GCC visibility pop
