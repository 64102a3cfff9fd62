#include "QZFoundation/QZVersionNumber.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSMutableString.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/detail/NumberText.h"
#include "Platform/Values/detail/UnitKinds.h"

namespace qz {
namespace {

constexpr std::int32_t letterOffset = 122;  // 'z': every letter is negative, "a" before "b"

constexpr bool isLetter(char16_t unit) noexcept { return unit == u'a' || unit == u'b'; }

/// Reads a version's digits one by one, as a scanner that skips blanks and line ends would.
class DigitReader {
 public:
  explicit DigitReader(std::u16string_view text) noexcept : rest_(text) {}

  std::optional<std::int32_t> next() noexcept {
    if (const auto plain = nextPlain()) return plain;
    skipBlanks();
    if (rest_.empty()) return std::nullopt;
    const bool isSigned = rest_[0] == u'-' || rest_[0] == u'+';
    const auto digits = detail::readDigits(rest_.substr(isSigned ? 1 : 0), 10);
    if (digits.length != 0) {
      const bool negative = rest_[0] == u'-';
      rest_.remove_prefix(digits.length + (isSigned ? 1 : 0));
      skipBlanks();
      if (rest_.starts_with(u'.')) rest_.remove_prefix(1);
      return detail::signedWithin<std::int32_t>(negative, digits.value);
    }
    if (!isLetter(rest_[0])) {
      rest_ = {};
      return std::nullopt;
    }
    const std::int32_t letter = rest_[0] - letterOffset;
    while (!rest_.empty() && isLetter(rest_[0])) rest_.remove_prefix(1);
    return letter;
  }

 private:
  // Nearly every digit: a few figures, and then a point or the end.
  std::optional<std::int32_t> nextPlain() noexcept {
    constexpr std::size_t longest = 9;  // that surely fits
    std::int32_t value = 0;
    std::size_t length = 0;
    for (; length < rest_.size() && length < longest; ++length) {
      const int figure = rest_[length] - u'0';
      if (figure < 0 || figure > 9) break;
      value = value * 10 + figure;
    }
    const bool isLast = length == rest_.size();
    if (length == 0 || (!isLast && rest_[length] != u'.')) return std::nullopt;
    rest_.remove_prefix(length + (isLast ? 0 : 1));
    return value;
  }

  void skipBlanks() noexcept {
    while (!rest_.empty() && detail::isBlank(rest_[0])) rest_.remove_prefix(1);
  }

  std::u16string_view rest_;
};

/// Where the first digit begins that may differ: behind the plain digits that both texts begin
/// with.
std::size_t plainPrefix(std::u16string_view first, std::u16string_view second) noexcept {
  const std::size_t shorter = std::min(first.size(), second.size());
  std::size_t start = 0;
  for (std::size_t i = 0; i < shorter && first[i] == second[i]; ++i) {
    if (first[i] == u'.' && i > start)
      start = i + 1;
    else if (first[i] < u'0' || first[i] > u'9')
      break;
  }
  return start;
}

NSNumber& requireNumber(NSObject* object, const char* operation) {
  NSNumber* number = as<NSNumber>(object);
  if (number == nullptr)
    detail::raise(NSInvalidArgumentException,
                  std::string(operation) + ": " + to_string(object) + " is no Number");
  return *number;
}

void requireNumbers(NSArray* digits, const char* operation) {
  for (NSObject* each : digits) requireNumber(each, operation);
}

// Small Numbers are shared and live for ever.
NSNumber* zero() { return NSNumber::numberWithInt(0).leak(); }

/// Element `index`, or 0 where there is none.
NSNumber* digitAt(NSMutableArray* digits, std::uint32_t index) {
  const auto all = digits->contiguous();
  return index < all->size() ? static_cast<NSNumber*>((*all)[index]) : zero();
}

}  // namespace

QZVersionNumber::QZVersionNumber() : digits_(NSMutableArray::array()) {}
QZVersionNumber::~QZVersionNumber() = default;

Ref<QZVersionNumber> QZVersionNumber::versionWithString(NSString* string) {
  return initWithString(string);
}

Ref<QZVersionNumber> QZVersionNumber::initWithString(NSString* string) {
  if (string == nullptr) return nullptr;
  auto version = make<QZVersionNumber>();
  DigitReader reader(string->view());
  while (const auto digit = reader.next())
    version->digits_->addObject(NSNumber::numberWithInt(*digit));
  return version;
}

Ref<QZVersionNumber> QZVersionNumber::initWithDigits(NSArray* digits) {
  auto version = make<QZVersionNumber>();
  version->setDigits(digits);
  return version;
}

NSComparisonResult QZVersionNumber::compareVersionString_withVersionString(NSString* first,
                                                                           NSString* second) {
  const std::u16string_view one = first != nullptr ? first->view() : std::u16string_view();
  const std::u16string_view other = second != nullptr ? second->view() : std::u16string_view();
  const std::size_t start = plainPrefix(one, other);
  DigitReader left(one.substr(start));
  DigitReader right(other.substr(start));
  for (;;) {
    const auto a = left.next();
    const auto b = right.next();
    if (!a && !b) return NSOrderedSame;
    if (a.value_or(0) != b.value_or(0))
      return a.value_or(0) < b.value_or(0) ? NSOrderedAscending : NSOrderedDescending;
  }
}

Ref<NSString> QZVersionNumber::versionString() const {
  auto text = NSMutableString::string();
  const std::uint32_t count = digits_->count();
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::int32_t digit = digitAt(digits_, i)->intValue();
    if (digit < 0) {
      text->appendFormat("%c"_ns, static_cast<unsigned char>(digit + letterOffset));
      continue;
    }
    text->appendFormat("%d"_ns, digit);
    if (i + 1 < count && digitAt(digits_, i + 1)->intValue() >= 0) text->appendString("."_ns);
  }
  return as<NSString>(text->copy());
}

NSComparisonResult QZVersionNumber::compare(QZVersionNumber* other) const {
  if (other == nullptr) detail::raise(NSInvalidArgumentException, "compare: nil argument");
  const std::uint32_t count = std::max(countOfDigits(), other->countOfDigits());
  for (std::uint32_t i = 0; i < count; ++i) {
    const NSComparisonResult order = digitAt(digits_, i)->compare(digitAt(other->digits_, i));
    if (order != NSOrderedSame) return order;
  }
  return NSOrderedSame;
}

std::uint32_t QZVersionNumber::majorVersionNumber() const {
  return objectInDigitsAtIndex(0)->unsignedIntValue();
}

// The list ----------------------------------------------------------------------------------------

Ref<NSArray> QZVersionNumber::digits() const { return as<NSArray>(digits_->copy()); }

void QZVersionNumber::setDigits(NSArray* digits) {
  requireNumbers(digits, "setDigits:");
  digits_->setArray(digits);
}

Ref<NSEnumerator> QZVersionNumber::digitEnumerator() const { return digits_->objectEnumerator(); }

std::uint32_t QZVersionNumber::countOfDigits() const { return digits_->count(); }

Ref<NSNumber> QZVersionNumber::objectInDigitsAtIndex(std::uint32_t index) const {
  return as<NSNumber>(digits_->objectAtIndex(index));
}

void QZVersionNumber::insertObject_inDigitsAtIndex(NSNumber* digit, std::uint32_t index) {
  digits_->insertObject_atIndex(digit, index);
}

void QZVersionNumber::removeObjectFromDigitsAtIndex(std::uint32_t index) {
  digits_->removeObjectAtIndex(index);
}

void QZVersionNumber::addDigit(NSNumber* digit) {
  const Selector asObservable = "mutableArrayValueForKey:"_sel;
  if (!respondsToSelector(asObservable))
    return insertObject_inDigitsAtIndex(digit, countOfDigits());
  // Through the view that tells the observers.
  send<Ref<NSMutableArray>>(this, asObservable, "digits"_ns)->addObject(digit);
}

// As an Object ------------------------------------------------------------------------------------

bool QZVersionNumber::isEqual(NSObject* other) const {
  QZVersionNumber* version = as<QZVersionNumber>(other);
  return version != nullptr && compare(version) == NSOrderedSame;
}

// Zeros at the end make no difference.
std::size_t QZVersionNumber::hash() const {
  std::size_t hash = 0;
  std::size_t factor = 1;
  for (std::uint32_t i = 0; i < countOfDigits(); ++i) {
    const NSNumber* digit = digitAt(digits_, i);
    if (!digit->isEqualToNumber(zero())) hash += factor * digit->hash();
    factor *= 31;
  }
  return hash;
}

Ref<NSString> QZVersionNumber::description() const {
  return NSString::stringWithFormat("%@: {digits = %@, versionString = %@}"_ns,
                                    Derives::description(), digits_, versionString());
}

void QZVersionNumber::describe(ClassDescription<QZVersionNumber>& is) {
  is.named("QZVersionNumber")
      .classMethod<&QZVersionNumber::versionWithString>("versionWithString:")
      .classMethod<&QZVersionNumber::compareVersionString_withVersionString>(
          "compareVersionString:withVersionString:")
      .initializer<&QZVersionNumber::initWithString>("initWithString:")
      .initializer<&QZVersionNumber::initWithDigits>("initWithDigits:")
      .property<&QZVersionNumber::digits, &QZVersionNumber::setDigits>("digits")
      .method<&QZVersionNumber::versionString>("versionString")
      .method<&QZVersionNumber::compare>("compare:")
      .method<&QZVersionNumber::majorVersionNumber>("majorVersionNumber")
      .method<&QZVersionNumber::digitEnumerator>("digitEnumerator")
      .method<&QZVersionNumber::countOfDigits>("countOfDigits")
      .method<&QZVersionNumber::objectInDigitsAtIndex>("objectInDigitsAtIndex:")
      .method<&QZVersionNumber::insertObject_inDigitsAtIndex>("insertObject:inDigitsAtIndex:")
      .method<&QZVersionNumber::removeObjectFromDigitsAtIndex>("removeObjectFromDigitsAtIndex:")
      .method<&QZVersionNumber::addDigit>("addDigit:");
}

}  // namespace qz
