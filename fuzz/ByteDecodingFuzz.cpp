// Bytes as Numbers of either sign and order, and as Base64: what is read says the same bytes again,
// and what is refused is not well formed.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/Values/NSMutableData.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/NSNumber-QZFoundation.h"
#include "fuzz/support/Require.h"

using namespace qz;
using fuzz::require;

namespace {

void readNumber(NSData* data, bool isSigned, std::int32_t order) {
  const Ref<NSNumber> number = numberWithData_isSigned_byteOrder(data, isSigned, order);
  const std::uint32_t length = data->length();
  const bool isSize = length == 1 || length == 2 || length == 4 || length == 8;
  require((number != nullptr) == isSize);
  if (!isSize) return;
  std::uint64_t bits = isSigned ? static_cast<std::uint64_t>(number->longLongValue())
                                : number->unsignedLongLongValue();
  const std::string_view bytes = data->view();
  for (std::uint32_t i = 0; i < length; ++i, bits >>= 8) {
    const char byte = bytes[order == NS_BigEndian ? length - 1 - i : i];
    require(static_cast<std::uint8_t>(byte) == (bits & 0xFF));
  }
  const bool isNegative = isSigned && number->longLongValue() < 0;
  require(length == 8 || bits == (isNegative ? ~std::uint64_t{0} >> 8 * length : 0));
}

void readBase64(NSData* text) {
  const Ref<NSData> strict = NSData::initWithBase64EncodedData_options(text, 0);
  if (strict) require(strict->base64EncodedDataWithOptions(0)->isEqualToData(text));
  const Ref<NSString> units = NSString::stringWithValidUTF8String(text->view());
  if (units) {
    const Ref<NSData> fromUnits = NSData::initWithBase64EncodedString_options(units, 0);
    require((fromUnits == nullptr) == (strict == nullptr));
  }
  const Ref<NSData> lenient =
      NSData::initWithBase64EncodedData_options(text, NSDataBase64DecodingIgnoreUnknownCharacters);
  require(strict == nullptr || (lenient != nullptr && lenient->isEqualToData(strict)));
  const Ref<NSString> lines = text->base64EncodedStringWithOptions(
      NSDataBase64Encoding64CharacterLineLength | NSDataBase64EncodingEndLineWithLineFeed);
  const Ref<NSData> again = NSData::initWithBase64EncodedString_options(
      lines, NSDataBase64DecodingIgnoreUnknownCharacters);
  require(again != nullptr && again->isEqualToData(text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  const Ref<NSData> data =
      NSData::dataWithBytes_length(bytes + 1, static_cast<std::uint32_t>(size - 1));
  readNumber(data, (bytes[0] & 1) != 0, bytes[0] >> 1);
  readBase64(data);
  return 0;
}
