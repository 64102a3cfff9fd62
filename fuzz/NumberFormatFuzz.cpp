// Three lines: a pattern, texts to be put around numbers, and a text to be read. A pattern is taken
// or refused with an exception; what is formatted without loss is read as the same number.

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "Platform/Runtime/NSException.h"
#include "Platform/Text/NSLocale.h"
#include "Platform/Text/NSNumberFormatter.h"
#include "Platform/Values/NSNumber.h"
#include "fuzz/support/Require.h"

using namespace qz;
using fuzz::require;

namespace {

std::string_view takeLine(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  const auto pattern = NSString::stringWithUTF8String(takeLine(rest));
  const auto around = NSString::stringWithUTF8String(takeLine(rest));
  const auto text = NSString::stringWithUTF8String(rest);
  const auto formatter = NSNumberFormatter::init();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier(size % 2 == 0 ? "en_US"_ns : "fr"_ns));
  formatter->setLenient(size % 3 == 0);
  try {
    formatter->setFormat(pattern);
  } catch (const Raised& raised) {
    require(raised.is(NSInvalidArgumentException));
  }
  if (around->length() != 0) formatter->setPositivePrefix(around);
  if (around->length() > 3) formatter->setNegativeSuffix(around);
  if (around->length() > 6) formatter->setMinimumFractionDigits(around->characterAtIndex(0));

  Ref<NSObject> value;
  Ref<NSString> error;
  const bool isRead = formatter->getObjectValue_forString_errorDescription(&value, text, &error);
  require(isRead == (error == nullptr) && isRead == isKind<NSNumber>(value));
  if (isRead) formatter->stringForObjectValue(value);
  double number = 0;
  if (rest.size() >= sizeof number) std::memcpy(&number, rest.data(), sizeof number);
  const Ref<NSString> shown = formatter->stringFromNumber(NSNumber::numberWithDouble(number));
  if (shown) formatter->numberFromString(shown);
  return 0;
}
