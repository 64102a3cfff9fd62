// Strings: bytes in any encoding, in and out.

#include "Platform/Values/NSStringEncoding.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSMutableData.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/Characters.h"
#include "Platform/Values/detail/DataStorage.h"
#include "Platform/Values/detail/StringDescriptions.h"
#include "Platform/Values/detail/StringStorage.h"
#include "Platform/Values/detail/UnitBuffer.h"
#include "Platform/Values/detail/Utf.h"

namespace qz {

void detail::describeEncodings(ClassDescription<NSString>& is) {
  is.initializer<&NSString::initWithData_encoding>("initWithData:encoding:")
      .initializer<&NSString::initWithBytes_length_encoding>("initWithBytes:length:encoding:")
      .method<&NSString::dataUsingEncoding>("dataUsingEncoding:")
      .method<&NSString::dataUsingEncoding_allowLossyConversion>(
          "dataUsingEncoding:allowLossyConversion:")
      .method<&NSString::canBeConvertedToEncoding>("canBeConvertedToEncoding:")
      .method<&NSString::lengthOfBytesUsingEncoding>("lengthOfBytesUsingEncoding:");
}

namespace {

using Byte = unsigned char;

// Charsets without a number of their own have this bit and their place in ICU's list.
constexpr std::uint32_t listed = 0x20000000;

constexpr bool isNativeLittle = std::endian::native == std::endian::little;

// How many bytes a unit or character takes in the encodings of fixed width, and in which order.
struct Wide {
  int size;
  bool isLittle;
  bool hasMark;
};

std::optional<Wide> wideEncoding(std::uint32_t encoding) noexcept {
  switch (encoding) {
    case NSUTF16StringEncoding:
      return Wide{2, isNativeLittle, true};
    case NSUTF16BigEndianStringEncoding:
      return Wide{2, false, false};
    case NSUTF16LittleEndianStringEncoding:
      return Wide{2, true, false};
    case NSUTF32StringEncoding:
      return Wide{4, isNativeLittle, true};
    case NSUTF32BigEndianStringEncoding:
      return Wide{4, false, false};
    case NSUTF32LittleEndianStringEncoding:
      return Wide{4, true, false};
    default:
      return std::nullopt;
  }
}

struct CloseConverter {
  void operator()(UConverter* converter) const noexcept { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

// One of ICU's converters, which stops at what it cannot convert.
Converter openConverter(std::uint32_t encoding) {
  UErrorCode status = U_ZERO_ERROR;
  Converter converter;
  const auto place = static_cast<std::int32_t>(encoding & ~listed);
  if ((encoding & listed) != 0 && encoding < 2 * listed && place < ucnv_countAvailable())
    converter.reset(ucnv_open(ucnv_getAvailableName(place), &status));
  if (converter == nullptr || U_FAILURE(status))
    detail::raise(NSInvalidArgumentException, "unknown encoding " + std::to_string(encoding));
  ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &status);
  return converter;
}

// Reading -----------------------------------------------------------------------------------------

char32_t readUnit(const Byte* at, Wide wide) noexcept {
  char32_t unit = 0;
  for (int i = 0; i < wide.size; ++i) unit = unit << 8 | at[wide.isLittle ? wide.size - 1 - i : i];
  return unit;
}

Ref<NSString> decodedWide(const Byte* bytes, std::size_t count, Wide wide) {
  const auto size = static_cast<std::size_t>(wide.size);
  if (count % size != 0) return nullptr;
  if (wide.hasMark) {
    wide.isLittle = false;
    const Wide other{wide.size, true, true};
    const bool isMarkedBig = count != 0 && readUnit(bytes, wide) == 0xFEFF;
    if (!isMarkedBig && count != 0 && readUnit(bytes, other) == 0xFEFF) wide = other;
    const std::size_t mark = isMarkedBig || wide.isLittle ? size : 0;
    bytes += mark;
    count -= mark;
  }
  const Byte* const end = bytes + count;
  detail::UnitBuffer units;
  char16_t* out = units.room(2 * (count / 4) + 1);
  for (; bytes != end; bytes += size) {
    const char32_t point = readUnit(bytes, wide);
    const bool isLone = size == 4 && detail::isLoneSurrogate({point, 1});
    if (point >= 0x110000 || isLone) return nullptr;
    out = detail::encodeUtf16(point, out);
  }
  units.commit(out);
  return detail::hasLoneSurrogate(units.view()) ? nullptr : units.toString();
}

Ref<NSString> decodedListed(const char* bytes, std::size_t count, std::uint32_t encoding) {
  const Converter converter = openConverter(encoding);
  detail::UnitBuffer units;
  const char* const end = bytes + count;
  constexpr std::size_t step = 4096;
  for (;;) {
    char16_t* const room = units.room(step);
    char16_t* out = room;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_toUnicode(converter.get(), &out, room + step, &bytes, end, nullptr, true, &status);
    units.commit(out);
    if (status == U_BUFFER_OVERFLOW_ERROR) continue;
    return U_FAILURE(status) ? nullptr : units.toString();
  }
}

// Writing -----------------------------------------------------------------------------------------

// `dataUsingEncoding`, with nil as "cannot be told".
Ref<NSData> encodedNarrow(std::u16string_view text, char32_t limit, bool lossy) {
  std::size_t pairs = 0;
  for (std::size_t at = 0; at < text.size();) {
    const detail::Character each = detail::characterAt(text, at);
    if (each.point >= limit && !lossy) return nullptr;
    pairs += each.width - 1;
    at += each.width;
  }
  return detail::fillData(text.size() - pairs, [&](std::byte* out) {
    for (std::size_t at = 0; at < text.size();) {
      const detail::Character each = detail::characterAt(text, at);
      *out++ = static_cast<std::byte>(each.point < limit ? each.point : U'?');
      at += each.width;
    }
  });
}

Ref<NSData> encodedUtf8(std::u16string_view text, bool lossy) {
  if (!lossy && detail::hasLoneSurrogate(text)) return nullptr;
  return detail::fillData(detail::utf8Length(text), [text](std::byte* out) {
    detail::encodeUtf8(text, reinterpret_cast<char*>(out));
  });
}

Ref<NSData> encodedWide(std::u16string_view text, Wide wide, bool lossy) {
  if (!lossy && detail::hasLoneSurrogate(text)) return nullptr;
  std::size_t count = wide.hasMark ? 1 : 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t width = detail::characterAt(text, at).width;
    count += wide.size == 2 ? width : 1;
    at += width;
  }
  return detail::fillData(count * static_cast<std::size_t>(wide.size), [&](std::byte* out) {
    const auto put = [&out, wide](char32_t unit) {
      for (int i = 0; i < wide.size; ++i)
        *out++ = static_cast<std::byte>(unit >> 8 * (wide.isLittle ? i : wide.size - 1 - i));
    };
    if (wide.hasMark) put(0xFEFF);
    for (std::size_t at = 0; at < text.size();) {
      const detail::Character each = detail::characterAt(text, at);
      if (detail::isLoneSurrogate(each)) {
        put(detail::replacementCharacter);
      } else if (wide.size == 4) {
        put(each.point);
      } else {
        put(text[at]);
        if (each.width == 2) put(text[at + 1]);
      }
      at += each.width;
    }
  });
}

Ref<NSData> encodedListed(std::u16string_view text, std::uint32_t encoding, bool lossy) {
  const Converter converter = openConverter(encoding);
  UErrorCode status = U_ZERO_ERROR;
  if (lossy) {
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr, nullptr,
                          nullptr, &status);
    // The Unicode encodings among them can tell U+FFFD; the others take the question mark.
    ucnv_setSubstString(converter.get(), u"\uFFFD", 1, &status);
    if (U_FAILURE(status)) {
      status = U_ZERO_ERROR;
      ucnv_setSubstString(converter.get(), u"?", 1, &status);
    }
  }
  auto data = NSMutableData::data();
  std::array<char, 4096> part;
  const char16_t* at = text.data();
  for (;;) {
    char* out = part.data();
    status = U_ZERO_ERROR;
    ucnv_fromUnicode(converter.get(), &out, part.data() + part.size(), &at,
                     text.data() + text.size(), nullptr, true, &status);
    data->appendBytes(std::as_bytes(std::span(part.data(), out)));
    if (status == U_BUFFER_OVERFLOW_ERROR) continue;
    if (U_FAILURE(status)) return nullptr;
    return NSData::dataWithData(data);
  }
}

Ref<NSData> encoded(std::u16string_view text, std::uint32_t encoding, bool lossy) {
  switch (encoding) {
    case NSASCIIStringEncoding:
      return encodedNarrow(text, 0x80, lossy);
    case NSISOLatin1StringEncoding:
      return encodedNarrow(text, 0x100, lossy);
    case NSUTF8StringEncoding:
      return encodedUtf8(text, lossy);
    default:
      if (const auto wide = wideEncoding(encoding)) return encodedWide(text, *wide, lossy);
      return encodedListed(text, encoding, lossy);
  }
}

}  // namespace

std::uint32_t encodingNamed(std::string_view name) {
  const std::string zeroTerminated(name);
  if (name.empty() || zeroTerminated.find('\0') != zeroTerminated.npos) return 0;
  UErrorCode status = U_ZERO_ERROR;
  const Converter converter(ucnv_open(zeroTerminated.c_str(), &status));
  if (U_FAILURE(status)) return 0;
  const std::string_view canonicalName = ucnv_getName(converter.get(), &status);
  struct Numbered {
    const char* name;
    std::uint32_t encoding;
  };
  static constexpr Numbered numbered[] = {
      {"US-ASCII", NSASCIIStringEncoding},
      {"UTF-8", NSUTF8StringEncoding},
      {"ISO-8859-1", NSISOLatin1StringEncoding},
      {"UTF-16", NSUTF16StringEncoding},
      {"UTF-16BE", NSUTF16BigEndianStringEncoding},
      {"UTF-16LE", NSUTF16LittleEndianStringEncoding},
      {"UTF-32", NSUTF32StringEncoding},
      {"UTF-32BE", NSUTF32BigEndianStringEncoding},
      {"UTF-32LE", NSUTF32LittleEndianStringEncoding},
  };
  for (const Numbered& each : numbered)
    if (canonicalName == each.name) return each.encoding;
  for (std::int32_t i = 0; i < ucnv_countAvailable(); ++i)
    if (canonicalName == ucnv_getAvailableName(i)) return listed | static_cast<std::uint32_t>(i);
  return 0;
}

Ref<NSString> NSString::initWithData_encoding(NSData* data, std::uint32_t encoding) {
  if (data == nullptr) return nullptr;
  return initWithBytes_length_encoding(data->bytes(), data->length(), encoding);
}

Ref<NSString> NSString::initWithBytes_length_encoding(const void* bytes, std::uint32_t length,
                                                      std::uint32_t encoding) {
  const std::string_view text(static_cast<const char*>(bytes), length);
  const auto* const first = static_cast<const Byte*>(bytes);
  switch (encoding) {
    case NSUTF8StringEncoding:
      return stringWithValidUTF8String(text);
    case NSASCIIStringEncoding:
      if (detail::asciiPrefix(text) != text.size()) return nullptr;
      [[fallthrough]];
    case NSISOLatin1StringEncoding:
      return detail::fillString(length,
                                [=](char16_t* out) { std::copy(first, first + length, out); });
    default:
      if (const auto wide = wideEncoding(encoding)) return decodedWide(first, length, *wide);
      return decodedListed(text.data(), length, encoding);
  }
}

Ref<NSData> NSString::dataUsingEncoding(std::uint32_t encoding) const {
  return encoded(view(), encoding, false);
}

Ref<NSData> NSString::dataUsingEncoding_allowLossyConversion(std::uint32_t encoding,
                                                             bool lossy) const {
  return encoded(view(), encoding, lossy);
}

bool NSString::canBeConvertedToEncoding(std::uint32_t encoding) const {
  return encoded(view(), encoding, false) != nullptr;
}

std::uint32_t NSString::lengthOfBytesUsingEncoding(std::uint32_t encoding) const {
  const Ref<NSData> data = encoded(view(), encoding, false);
  return data ? data->length() : 0;
}

}  // namespace qz
