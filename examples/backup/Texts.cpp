#include "Texts.h"

#include "Platform/Text/NSNumberFormatter.h"
#include "Platform/Values/NSNumber.h"
#include "QZFoundation/QZHMSFormatter.h"
#include "QZFoundation/QZStorageSizeFormatter.h"

namespace backup {

using namespace qz;

namespace {

std::string durationText(double seconds, bool withMilliseconds) {
  auto formatter = QZHMSFormatter::init();
  formatter->setIncludeMilliseconds(withMilliseconds);
  const std::string text = formatter->stringForObjectValue(NSNumber::of(seconds))->UTF8String();
  return text[0] == ':' ? "00" + text : text;
}

}  // namespace

std::string sizeText(std::uint64_t bytes) {
  return QZStorageSizeFormatter::storageSizeStringForBytes(bytes)->UTF8String();
}

std::string rateText(double bytes, double seconds) {
  return seconds > 0 ? sizeText(static_cast<std::uint64_t>(bytes / seconds)) + "/s" : "-";
}

std::string timeText(double seconds) { return durationText(seconds, false); }

std::string exactTimeText(double seconds) { return durationText(seconds, true); }

std::string countText(std::uint64_t count) {
  return NSNumberFormatter::localizedStringFromNumber_numberStyle(NSNumber::of(count),
                                                                  NSNumberFormatterStyle::Decimal)
      ->UTF8String();
}

std::string printable(NSString* text) {
  std::u16string shown(text->view());
  for (char16_t& unit : shown)
    if (unit < 0x20 || (unit >= 0x7f && unit < 0xa0)) unit = u'?';
  return NSString::stringWithCharacters(shown)->UTF8String();
}

}  // namespace backup
