// Any bytes as a format: printing arguments of every kind never reads beyond them, and fails in no
// other way than by refusing a width or precision.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSString.h"

using namespace qz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Each width may ask for a million units: more formats in one text only take more memory.
  if (size > 256) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto format = NSString::stringWithUTF8String(bytes);
  const char unterminated[4] = {'a', 'b', '\xC3', 'd'};
  try {
    const auto text = NSString::stringWithFormat(
        format, 3, "object"_ns, -1.5, bytes, nullptr, 'c', UINT64_MAX, "\xE2\x82\xAC", unterminated,
        u"\U0001F600", static_cast<void*>(nullptr), format, -7);
    // A text without a conversion prints as it stands.
    if (bytes.find('%') == bytes.npos && !text->isEqual(format)) std::abort();
    NSString::stringWithFormat(format);
  } catch (const Raised& raised) {
    if (!raised.is(NSInvalidArgumentException)) std::abort();
  }
  return 0;
}
