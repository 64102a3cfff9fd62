#include "Platform/Values/NSData.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSMutableData.h"
#include "Platform/Values/NSURL.h"
#include "Platform/Values/detail/DataStorage.h"
#include "Platform/Values/detail/StringStorage.h"

namespace qz {

NSData& detail::requireData(NSData* data, const char* operation) {
  if (data == nullptr) raise(NSInvalidArgumentException, std::string(operation) + ": nil argument");
  return *data;
}

std::uint32_t detail::checkedDataLength(std::uint64_t length) {
  if (length > NSData::maxLength)
    raise(NSMallocException, "Data of " + std::to_string(length) + " bytes is too long");
  return static_cast<std::uint32_t>(length);
}

void NSData::describe(ClassDescription<NSData>& is) {
  is.named("NSData")
      .classMethod<&NSData::data>("data")
      .classMethod<&NSData::dataWithBytes_length>("dataWithBytes:length:")
      .classMethod<&NSData::dataWithBytesNoCopy_length>("dataWithBytesNoCopy:length:")
      .classMethod<&NSData::dataWithData>("dataWithData:")
      .classMethod<&NSData::dataWithContentsOfFile>("dataWithContentsOfFile:")
      .classMethod<&NSData::dataWithContentsOfFile_options_error>(
          "dataWithContentsOfFile:options:error:")
      .classMethod<&NSData::dataWithContentsOfURL>("dataWithContentsOfURL:")
      .classMethod<&NSData::dataWithContentsOfURL_options_error>(
          "dataWithContentsOfURL:options:error:")
      .initializer<&NSData::initWithBytes_length>("initWithBytes:length:")
      .initializer<&NSData::initWithBytesNoCopy_length>("initWithBytesNoCopy:length:")
      .initializer<&NSData::initWithData>("initWithData:")
      .initializer<&NSData::initWithBase64EncodedString_options>(
          "initWithBase64EncodedString:options:")
      .initializer<&NSData::initWithBase64EncodedData_options>("initWithBase64EncodedData:options:")
      .initializer<&NSData::initWithContentsOfFile>("initWithContentsOfFile:")
      .initializer<&NSData::initWithContentsOfFile_options_error>(
          "initWithContentsOfFile:options:error:")
      .method<&NSData::writeToFile_atomically>("writeToFile:atomically:")
      .method<&NSData::writeToFile_options_error>("writeToFile:options:error:")
      .method<&NSData::writeToURL_atomically>("writeToURL:atomically:")
      .method<&NSData::writeToURL_options_error>("writeToURL:options:error:")
      .method<&NSData::length>("length")
      .method<&NSData::bytes>("bytes")
      .method<&NSData::getBytes>("getBytes:")
      .method<&NSData::getBytes_length>("getBytes:length:")
      .method<&NSData::getBytes_range>("getBytes:range:")
      .method<&NSData::subdataWithRange>("subdataWithRange:")
      .method<&NSData::rangeOfData_options_range>("rangeOfData:options:range:")
      .method<&NSData::base64EncodedStringWithOptions>("base64EncodedStringWithOptions:")
      .method<&NSData::base64EncodedDataWithOptions>("base64EncodedDataWithOptions:")
      .method<&NSData::isEqualToData>("isEqualToData:");
}

// Making ------------------------------------------------------------------------------------------

Ref<NSData> NSData::data() {
  static NSData* const empty = make<NSData>().leak();
  return empty;
}

Ref<NSData> NSData::dataWithBytes(std::span<const std::byte> bytes) {
  return detail::fillData(bytes.size(),
                          [bytes](std::byte* out) { std::copy(bytes.begin(), bytes.end(), out); });
}

Ref<NSData> NSData::dataWithBytes(std::string_view bytes) {
  return dataWithBytes(std::as_bytes(std::span(bytes)));
}

Ref<NSData> NSData::dataWithBytes_length(const void* bytes, std::uint32_t length) {
  return dataWithBytes(std::span(static_cast<const std::byte*>(bytes), length));
}

Ref<NSData> NSData::initWithBytes_length(const void* bytes, std::uint32_t length) {
  return dataWithBytes_length(bytes, length);
}

Ref<NSData> NSData::dataWithBytesNoCopy_length(void* bytes, std::uint32_t length) {
  std::unique_ptr<void, decltype(&std::free)> owned(bytes, &std::free);
  detail::checkedDataLength(length);
  auto data = make<detail::BufferData>(static_cast<const std::byte*>(bytes), length);
  static_cast<void>(owned.release());
  return data;
}

Ref<NSData> NSData::dataWithData(NSData* other) {
  const Ref<NSObject> copy = detail::requireData(other, "dataWithData:").copy();
  return static_cast<NSData*>(copy.get());
}

Ref<NSData> NSData::initWithBytesNoCopy_length(void* bytes, std::uint32_t length) {
  return dataWithBytesNoCopy_length(bytes, length);
}

Ref<NSData> NSData::initWithData(NSData* other) { return dataWithData(other); }

// Reading -----------------------------------------------------------------------------------------

void NSData::getBytes(void* buffer) const noexcept { getBytes_length(buffer, length_); }

void NSData::getBytes_length(void* buffer, std::uint32_t length) const noexcept {
  std::copy_n(bytes_, std::min(length, length_), static_cast<std::byte*>(buffer));
}

void NSData::getBytes_range(void* buffer, NSRange range) const {
  detail::requireRange("getBytes:range:", range, length_);
  std::copy_n(bytes_ + range.location, range.length, static_cast<std::byte*>(buffer));
}

Ref<NSData> NSData::subdataWithRange(NSRange range) const {
  detail::requireRange("subdataWithRange:", range, length_);
  if (range.length == length_) return dataWithData(const_cast<NSData*>(this));
  return dataWithBytes(span().subspan(range.location, range.length));
}

NSRange NSData::rangeOfData_options_range(NSData* data, std::uint32_t options,
                                          NSRange range) const {
  const std::string_view sought = detail::requireData(data, "rangeOfData:options:range:").view();
  detail::requireRange("rangeOfData:options:range:", range, length_);
  const std::string_view within = view().substr(range.location, range.length);
  if (sought.empty() || sought.size() > within.size()) return notFoundRange;
  const bool isBackwards = (options & NSDataSearchBackwards) != 0;
  std::size_t at = isBackwards ? within.size() - sought.size() : 0;
  if ((options & NSDataSearchAnchored) != 0)
    at = within.compare(at, sought.size(), sought) == 0 ? at : within.npos;
  else if (isBackwards)
    at = within.rfind(sought);
  else
    at = within.find(sought);
  if (at == within.npos) return notFoundRange;
  return {range.location + static_cast<std::uint32_t>(at), data->length_};
}

// As an Object ------------------------------------------------------------------------------------

bool NSData::isEqualToData(NSData* other) const noexcept {
  if (other == this) return true;
  return other != nullptr && view() == other->view();
}

bool NSData::isEqual(NSObject* other) const {
  if (other == this) return true;
  return other != nullptr && isKind<NSData>(other) && isEqualToData(static_cast<NSData*>(other));
}

// Of the ends alone where there are many bytes.
std::size_t NSData::hash() const {
  constexpr std::size_t counted = 64;
  std::string_view bytes = view();
  if (bytes.size() <= 2 * counted) return std::hash<std::string_view>()(bytes);
  return std::hash<std::string_view>()(bytes.substr(0, counted)) * 31 +
         std::hash<std::string_view>()(bytes.substr(bytes.size() - counted)) + bytes.size();
}

Ref<NSString> NSData::description() const {
  constexpr char16_t digits[] = u"0123456789abcdef";
  const std::span<const std::byte> all = span();
  const std::uint64_t blanks = all.empty() ? 0 : (all.size() - 1) / 4;
  return detail::fillString(2 * std::uint64_t{all.size()} + blanks + 2, [&](char16_t* out) {
    *out++ = u'<';
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (i != 0 && i % 4 == 0) *out++ = u' ';
      const auto byte = std::to_integer<unsigned>(all[i]);
      *out++ = digits[byte >> 4];
      *out++ = digits[byte & 15u];
    }
    *out = u'>';
  });
}

Ref<NSObject> NSData::copy() const { return const_cast<NSData*>(this); }

Ref<NSObject> NSData::mutableCopy() const { return NSMutableData::dataWithBytes(span()); }

}  // namespace qz
