// Any bytes in any encoding: what is accepted can be told again, and reads the same.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/Values/NSData.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/NSStringEncoding.h"
#include "fuzz/support/Require.h"

using namespace qz;
using fuzz::require;

// The first byte chooses the encoding.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::uint32_t encodings[] = {1,
                                            4,
                                            5,
                                            10,
                                            0x90000100,
                                            0x94000100,
                                            0x8C000100,
                                            0x98000100,
                                            0x9C000100,
                                            encodingNamed("windows-1252"),
                                            encodingNamed("Shift_JIS"),
                                            encodingNamed("GB18030")};
  constexpr std::size_t exact = 9;  // the first ones leave nothing to choose
  if (size == 0) return 0;
  const std::size_t which = data[0] % (sizeof encodings / sizeof *encodings);
  const std::uint32_t encoding = encodings[which];
  const auto bytes = NSData::dataWithBytes_length(data + 1, static_cast<std::uint32_t>(size - 1));
  const auto text = NSString::initWithData_encoding(bytes, encoding);
  if (text && which < exact) {
    const auto again = text->dataUsingEncoding(encoding);
    require(again != nullptr);
    require(again->length() == text->lengthOfBytesUsingEncoding(encoding));
    const auto same = NSString::initWithData_encoding(again, encoding);
    require(same != nullptr && same->isEqual(text));
  }
  const auto any = NSString::stringWithUTF8String(bytes->view());
  const auto lossy = any->dataUsingEncoding_allowLossyConversion(encoding, true);
  require(lossy != nullptr);
  require(!any->canBeConvertedToEncoding(encoding) ||
          NSString::initWithData_encoding(lossy, encoding) != nullptr);
  return 0;
}
