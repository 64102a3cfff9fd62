#include "QZFoundation/detail/HmsReader.h"

#include "Platform/Values/NSScanner.h"
#include "Platform/Values/detail/NumberText.h"
#include "Platform/Values/detail/UnitKinds.h"
#include "QZFoundation/detail/LibraryBundle.h"

namespace qz::detail {
namespace {

constexpr struct {
  const char* name;  // stays in English in messages
  std::uint32_t seconds;
  std::uint32_t greatest;
} components[] = {
    {"seconds", 1, 59}, {"minutes", 60, 59}, {"hours", 3600, 23}, {"days", 86400, INT32_MAX}};

template <FormatValue... Args>
Ref<NSString> hmsMessage(NSString* key, const Args&... arguments) {
  return message(key, "HMS formatter error string"_ns, arguments...);
}

}  // namespace

void HmsReader::read() {
  end_ = text_.size();
  isNegative_ = startsWithMinus();
  // One unit goes, be it the minus sign or a blank before it.
  if (isNegative_) start_ = 1;
  readFraction();
  for (std::size_t i = 0; i < std::size(components) && !error_ && start_ < end_; ++i)
    readComponent(i);
  if (isNegative_) total_ = 0 - total_;
}

Ref<NSNumber> HmsReader::value() const {
  const auto total = static_cast<std::int32_t>(total_);
  if (fraction_ == 0) return NSNumber::numberWithInt(total);
  return NSNumber::numberWithDouble(total + fraction_);
}

std::size_t HmsReader::skipBlanks(std::size_t location) const noexcept {
  while (location < text_.size() && isBlank(text_[location])) ++location;
  return location;
}

HmsReader::Integer HmsReader::integerAt(std::size_t location) const noexcept {
  std::size_t at = skipBlanks(location);
  const bool isMinus = at < text_.size() && text_[at] == u'-';
  if (isMinus || (at < text_.size() && text_[at] == u'+')) ++at;
  const ReadDigits digits = readDigits(text_.substr(at), 10);
  if (digits.length == 0) return {};
  return {true, signedWithin<std::int32_t>(isMinus, digits.value), at + digits.length};
}

bool HmsReader::startsWithMinus() const {
  const std::size_t at = skipBlanks(0);
  if (at == text_.size() || text_[at] != u'-') return false;
  // What follows may be an accent on the minus sign; the scanner knows.
  if (at + 1 == text_.size() || text_[at + 1] < 0x80) return true;
  return NSScanner::scannerWithString(string_)->scanString_intoString("-"_ns, nullptr);
}

// The digits behind the last point are decimals: each one unit, blanks between them and the point
// included, divides by ten.
void HmsReader::readFraction() {
  const std::size_t point = text_.rfind(u'.');
  if (point == text_.npos || point < start_) return;
  const Integer digits = integerAt(point + 1);
  if (!digits.isThere) {
    error_ = hmsMessage("Illegal milliseconds value"_ns);
  } else if (skipBlanks(digits.end) != text_.size()) {
    error_ = hmsMessage("Illegal extra characters"_ns);
  } else {
    fraction_ = digits.value;
    for (std::size_t at = point + 1; at < digits.end && fraction_ != 0; ++at) fraction_ /= 10;
    end_ = point;
  }
}

void HmsReader::readComponent(std::size_t index) {
  const auto& component = components[index];
  const std::size_t colon = text_.substr(0, end_).rfind(u':');
  const bool isFirst = colon == text_.npos || colon < start_;
  const Integer number = integerAt(isFirst ? start_ : colon + 1);
  const auto value = static_cast<std::uint32_t>(number.value);
  if (!number.isThere) {
    error_ = hmsMessage("Invalid value for %@ component"_ns, component.name);
  } else if (value > component.greatest) {
    // Also for negative numbers, which are great ones without their sign.
    error_ = hmsMessage("Value %d too large for %@ component"_ns, number.value, component.name);
  } else if (number.end < end_) {
    error_ = hmsMessage("Illegal characters in %@ component"_ns, component.name);
  } else {
    total_ += component.seconds * value;
    end_ = isFirst ? start_ : colon;
  }
}

}  // namespace qz::detail
