// Any bytes as UTF-8, and any bytes as UTF-16: once replaced, what was ill-formed stays the same,
// and well-formed text comes back as it was.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "Platform/Values/NSMutableString.h"
#include "Platform/Values/NSString.h"
#include "fuzz/support/Require.h"

using namespace qz;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto decoded = NSString::stringWithUTF8String(bytes);
  const std::string clean = decoded->UTF8String();
  require(decoded->length() <= size);
  require(NSString::stringWithValidUTF8String(clean)->isEqual(decoded));
  require((NSString::stringWithValidUTF8String(bytes) != nullptr) == (clean == bytes));
  require(NSMutableString::stringWithUTF8String(bytes)->hash() == decoded->hash());

  std::u16string units(size / 2, u'\0');
  if (!units.empty()) std::memcpy(units.data(), data, units.size() * 2);
  const auto fromUnits = NSString::stringWithCharacters(units);
  const std::string encoded = fromUnits->UTF8String();
  const auto again = NSString::stringWithValidUTF8String(encoded);
  require(again != nullptr && again->length() == fromUnits->length());
  require(again->UTF8String() == encoded);
  return 0;
}
