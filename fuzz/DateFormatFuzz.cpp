// Two lines: a format and a text to be read, in percent formats, in Unicode's patterns and as
// everyday words. What is read has a text, and that is read as a date again.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/Text/NSDateFormatter.h"
#include "Platform/Text/NSLocale.h"
#include "Platform/Text/NSTimeZone.h"
#include "fuzz/support/Require.h"

using namespace qz;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::size_t end = std::min(bytes.find('\n'), bytes.size());
  const auto format = NSString::stringWithUTF8String(bytes.substr(0, end));
  const auto text = NSString::stringWithUTF8String(bytes.substr(std::min(end + 1, size)));
  for (const bool isPattern : {false, true}) {
    const auto formatter =
        NSDateFormatter::initWithDateFormat_allowNaturalLanguage(format, !isPattern);
    if (isPattern) formatter->setFormatterBehavior(NSDateFormatterBehavior::Pattern);
    formatter->setLocale(NSLocale::localeWithLocaleIdentifier(size % 2 == 0 ? "de"_ns : "en"_ns));
    formatter->setTimeZone(NSTimeZone::timeZoneWithName("Europe/Berlin"_ns));
    formatter->setLenient(size % 3 == 0);
    Ref<NSObject> value;
    Ref<NSString> error;
    const bool isRead = formatter->getObjectValue_forString_errorDescription(&value, text, &error);
    require(isRead == (error == nullptr) && isRead == isKind<NSDate>(value));
    const Ref<NSString> shown =
        formatter->stringForObjectValue(isRead ? value : Ref<NSObject>(NSDate::date()));
    require(shown != nullptr || isPattern);
    if (shown && !isPattern && !formatter->allowsNaturalLanguage())
      formatter->dateFromString(shown);
  }
  return 0;
}
