#include "Platform/Values/NSMutableData.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSURL.h"
#include "Platform/Values/detail/DataStorage.h"

namespace qz {

void NSMutableData::describe(ClassDescription<NSMutableData>& is) {
  is.named("NSMutableData")
      .classMethod<&NSMutableData::data>("data")
      .classMethod<&NSMutableData::dataWithBytes_length>("dataWithBytes:length:")
      .classMethod<&NSMutableData::dataWithBytesNoCopy_length>("dataWithBytesNoCopy:length:")
      .classMethod<&NSMutableData::dataWithData>("dataWithData:")
      .classMethod<&NSMutableData::dataWithContentsOfFile>("dataWithContentsOfFile:")
      .classMethod<&NSMutableData::dataWithContentsOfFile_options_error>(
          "dataWithContentsOfFile:options:error:")
      .classMethod<&NSMutableData::dataWithContentsOfURL>("dataWithContentsOfURL:")
      .classMethod<&NSMutableData::dataWithContentsOfURL_options_error>(
          "dataWithContentsOfURL:options:error:")
      .classMethod<&NSMutableData::dataWithCapacity>("dataWithCapacity:")
      .classMethod<&NSMutableData::dataWithLength>("dataWithLength:")
      .initializer<&NSMutableData::initWithBytes_length>("initWithBytes:length:")
      .initializer<&NSMutableData::initWithBytesNoCopy_length>("initWithBytesNoCopy:length:")
      .initializer<&NSMutableData::initWithData>("initWithData:")
      .initializer<&NSMutableData::initWithCapacity>("initWithCapacity:")
      .initializer<&NSMutableData::initWithLength>("initWithLength:")
      .initializer<&NSMutableData::initWithBase64EncodedString_options>(
          "initWithBase64EncodedString:options:")
      .initializer<&NSMutableData::initWithBase64EncodedData_options>(
          "initWithBase64EncodedData:options:")
      .initializer<&NSMutableData::initWithContentsOfFile>("initWithContentsOfFile:")
      .initializer<&NSMutableData::initWithContentsOfFile_options_error>(
          "initWithContentsOfFile:options:error:")
      .method<&NSMutableData::mutableBytes>("mutableBytes")
      .method<&NSMutableData::appendBytes_length>("appendBytes:length:")
      .method<&NSMutableData::appendData>("appendData:")
      .method<&NSMutableData::setLength>("setLength:")
      .method<&NSMutableData::increaseLengthBy>("increaseLengthBy:")
      .method<&NSMutableData::resetBytesInRange>("resetBytesInRange:")
      .method<&NSMutableData::replaceBytesInRange_withBytes>("replaceBytesInRange:withBytes:")
      .method<&NSMutableData::replaceBytesInRange_withBytes_length>(
          "replaceBytesInRange:withBytes:length:")
      .method<&NSMutableData::setData>("setData:");
}

NSMutableData::~NSMutableData() { std::free(buffer()); }

Ref<NSMutableData> NSMutableData::data() { return make<NSMutableData>(); }

Ref<NSMutableData> NSMutableData::dataWithBytes(std::span<const std::byte> bytes) {
  auto data = make<NSMutableData>();
  data->appendBytes(bytes);
  return data;
}

Ref<NSMutableData> NSMutableData::dataWithBytes(std::string_view bytes) {
  return dataWithBytes(std::as_bytes(std::span(bytes)));
}

Ref<NSMutableData> NSMutableData::dataWithBytes_length(const void* bytes, std::uint32_t length) {
  return dataWithBytes(std::span(static_cast<const std::byte*>(bytes), length));
}

Ref<NSMutableData> NSMutableData::dataWithData(NSData* other) {
  return dataWithBytes(detail::requireData(other, "dataWithData:").span());
}

Ref<NSMutableData> NSMutableData::dataWithBytesNoCopy_length(void* bytes, std::uint32_t length) {
  std::unique_ptr<void, decltype(&std::free)> owned(bytes, &std::free);
  detail::checkedDataLength(length);
  auto data = make<NSMutableData>();
  data->bytes_ = static_cast<const std::byte*>(owned.release());
  data->length_ = data->capacity_ = length;
  return data;
}

Ref<NSMutableData> NSMutableData::initWithBytes_length(const void* bytes, std::uint32_t length) {
  return dataWithBytes_length(bytes, length);
}

Ref<NSMutableData> NSMutableData::initWithBytesNoCopy_length(void* bytes, std::uint32_t length) {
  return dataWithBytesNoCopy_length(bytes, length);
}

Ref<NSMutableData> NSMutableData::initWithData(NSData* other) { return dataWithData(other); }

Ref<NSMutableData> NSMutableData::initWithCapacity(std::uint32_t capacity) {
  return dataWithCapacity(capacity);
}

Ref<NSMutableData> NSMutableData::initWithLength(std::uint32_t length) {
  return dataWithLength(length);
}

Ref<NSMutableData> NSMutableData::dataWithCapacity(std::uint32_t capacity) {
  auto data = make<NSMutableData>();
  data->reserve(capacity);
  return data;
}

Ref<NSMutableData> NSMutableData::dataWithLength(std::uint32_t length) {
  auto data = make<NSMutableData>();
  data->setLength(length);
  return data;
}

void NSMutableData::appendBytes(std::span<const std::byte> bytes) { replace({length_, 0}, bytes); }

void NSMutableData::appendBytes_length(const void* bytes, std::uint32_t length) {
  appendBytes(std::span(static_cast<const std::byte*>(bytes), length));
}

void NSMutableData::appendData(NSData* other) {
  appendBytes(detail::requireData(other, "appendData:").span());
}

void NSMutableData::setLength(std::uint32_t length) {
  if (length > length_) {
    reserve(length);
    std::fill(buffer() + length_, buffer() + length, std::byte{0});
  }
  length_ = length;
}

void NSMutableData::increaseLengthBy(std::uint32_t more) {
  setLength(detail::checkedDataLength(std::uint64_t{length_} + more));
}

void NSMutableData::resetBytesInRange(NSRange range) {
  detail::requireRange("resetBytesInRange:", range, length_);
  std::fill_n(buffer() + range.location, range.length, std::byte{0});
}

void NSMutableData::replaceBytesInRange_withBytes(NSRange range, const void* bytes) {
  replaceBytesInRange_withBytes_length(range, bytes, range.length);
}

void NSMutableData::replaceBytesInRange_withBytes_length(NSRange range, const void* bytes,
                                                         std::uint32_t length) {
  detail::requireRange("replaceBytesInRange:withBytes:length:", range, length_);
  replace(range, std::span(static_cast<const std::byte*>(bytes), length));
}

void NSMutableData::setData(NSData* other) {
  replace({0, length_}, detail::requireData(other, "setData:").span());
}

void NSMutableData::reserve(std::uint64_t length) {
  const std::uint32_t wanted = detail::checkedDataLength(length);
  if (wanted <= capacity_) return;
  constexpr std::uint32_t least = 32;
  const std::uint32_t doubled = capacity_ > maxLength / 2 ? maxLength : 2 * capacity_;
  const std::uint32_t capacity = std::max({wanted, doubled, least});
  void* memory = std::realloc(buffer(), capacity);
  if (memory == nullptr)
    detail::raise(NSMallocException, "no memory for " + std::to_string(capacity) + " bytes");
  bytes_ = static_cast<const std::byte*>(memory);
  capacity_ = capacity;
}

void NSMutableData::replace(NSRange range, std::span<const std::byte> bytes) {
  if (range.length == 0 && bytes.empty()) return;
  const std::less<const std::byte*> before;
  const bool isOwn =
      !bytes.empty() && !before(bytes.data(), bytes_) && before(bytes.data(), bytes_ + length_);
  std::vector<std::byte> kept;
  if (isOwn) {
    kept.assign(bytes.begin(), bytes.end());
    bytes = kept;
  }
  const std::uint32_t rest = length_ - range.length;
  reserve(std::uint64_t{rest} + bytes.size());
  std::byte* const gap = buffer() + range.location;
  const std::byte* const tail = gap + range.length;
  const std::size_t tailLength = rest - range.location;
  if (tailLength != 0) std::memmove(gap + bytes.size(), tail, tailLength);
  std::copy(bytes.begin(), bytes.end(), gap);
  length_ = static_cast<std::uint32_t>(rest + bytes.size());
}

Ref<NSObject> NSMutableData::copy() const { return NSData::dataWithBytes(span()); }

}  // namespace qz
