// Durations: any text is read or refused without harm, and what was read and shown again is read as
// the same.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/Values/NSNumber.h"
#include "QZFoundation/QZFoundation.h"
#include "fuzz/support/Require.h"

using namespace qz;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = NSString::stringWithUTF8String({reinterpret_cast<const char*>(data), size});
  const auto formatter = QZHMSFormatter::init();
  Ref<NSObject> value;
  Ref<NSString> error;
  const bool isRead = formatter->getObjectValue_forString_errorDescription(&value, text, &error);
  require(isRead == (error == nullptr) && isKind<NSNumber>(value));
  const auto number = as<NSNumber>(value);
  if (number->kind() != NumberKind::Int || number->intValue() == INT32_MIN) return 0;
  const Ref<NSString> shown = formatter->stringForObjectValue(number);
  require(formatter->getObjectValue_forString_errorDescription(&value, shown, nullptr));
  require(equal(value, number));
  return 0;
}
