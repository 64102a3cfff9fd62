// Storage sizes: any text is read or refused without harm, and what was read and shown again is
// read as no more than before.

#include <cstddef>
#include <cstdint>

#include "Platform/Text/NSLocale.h"
#include "Platform/Values/NSNumber.h"
#include "QZFoundation/QZFoundation.h"
#include "fuzz/support/Require.h"

using namespace qz;
using fuzz::require;

namespace {

Ref<QZStorageSizeFormatter> makeFormatter(std::int32_t mode) {
  auto made = QZStorageSizeFormatter::init();
  made->setFormat("#,##0.0;0;#,##0.0"_ns);
  made->setLocale(NSLocale::localeWithLocaleIdentifier("en_US"_ns));
  made->setStorageSizeMode(mode);
  return made;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static QZStorageSizeFormatter* const formatters[] = {makeFormatter(0).leak(),
                                                       makeFormatter(1).leak()};
  const auto text = NSString::stringWithUTF8String({reinterpret_cast<const char*>(data), size});
  for (QZStorageSizeFormatter* formatter : formatters) {
    Ref<NSObject> value;
    Ref<NSString> error;
    const bool isRead = formatter->getObjectValue_forString_errorDescription(&value, text, &error);
    require(isRead == (error == nullptr) && isRead == (value != nullptr));
    if (!isRead) continue;
    const Ref<NSString> shown = formatter->stringForObjectValue(value);
    if (shown->isEqual("--"_ns)) continue;
    Ref<NSObject> again;
    require(formatter->getObjectValue_forString_errorDescription(&again, shown, nullptr));
  }
  return 0;
}
