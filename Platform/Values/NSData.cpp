#include "Platform/Values/NSData.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSMutableData.h"
#include "Platform/Values/detail/DataStorage.h"
#include "Platform/Values/detail/StringStorage.h"

namespace qz {
namespace {

NSData& requireData(NSData* data, const char* operation) {
  if (data == nullptr)
    detail::raise(NSInvalidArgumentException, std::string(operation) + ": nil argument");
  return *data;
}

}  // namespace

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
      .initializer<&NSData::initWithBytes_length>("initWithBytes:length:")
      .method<&NSData::length>("length")
      .method<&NSData::bytes>("bytes")
      .method<&NSData::getBytes>("getBytes:")
      .method<&NSData::getBytes_length>("getBytes:length:")
      .method<&NSData::getBytes_range>("getBytes:range:")
      .method<&NSData::subdataWithRange>("subdataWithRange:")
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
  const Ref<NSObject> copy = requireData(other, "dataWithData:").copy();
  return static_cast<NSData*>(copy.get());
}

// Reading -----------------------------------------------------------------------------------------

void NSData::getBytes(void* buffer) const noexcept { getBytes_length(buffer, length_); }

void NSData::getBytes_length(void* buffer, std::uint32_t length) const noexcept {
  std::copy_n(bytes_, std::min(length, length_), static_cast<std::byte*>(buffer));
}

void NSData::getBytes_range(void* buffer, NSRange range) const {
  if (NSMaxRange(range) > length_)
    detail::raiseRange("getBytes:range:", range.location, range.length, length_);
  std::copy_n(bytes_ + range.location, range.length, static_cast<std::byte*>(buffer));
}

Ref<NSData> NSData::subdataWithRange(NSRange range) const {
  if (NSMaxRange(range) > length_)
    detail::raiseRange("subdataWithRange:", range.location, range.length, length_);
  if (range.length == length_) return dataWithData(const_cast<NSData*>(this));
  return dataWithBytes(span().subspan(range.location, range.length));
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

// Changing ----------------------------------------------------------------------------------------

void NSMutableData::describe(ClassDescription<NSMutableData>& is) {
  is.named("NSMutableData")
      .classMethod<&NSMutableData::data>("data")
      .classMethod<&NSMutableData::dataWithBytes_length>("dataWithBytes:length:")
      .classMethod<&NSMutableData::dataWithData>("dataWithData:")
      .classMethod<&NSMutableData::dataWithCapacity>("dataWithCapacity:")
      .classMethod<&NSMutableData::dataWithLength>("dataWithLength:")
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
  return dataWithBytes(requireData(other, "dataWithData:").span());
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
  appendBytes(requireData(other, "appendData:").span());
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
  if (NSMaxRange(range) > length_)
    detail::raiseRange("resetBytesInRange:", range.location, range.length, length_);
  std::fill_n(buffer() + range.location, range.length, std::byte{0});
}

void NSMutableData::replaceBytesInRange_withBytes(NSRange range, const void* bytes) {
  replaceBytesInRange_withBytes_length(range, bytes, range.length);
}

void NSMutableData::replaceBytesInRange_withBytes_length(NSRange range, const void* bytes,
                                                         std::uint32_t length) {
  if (NSMaxRange(range) > length_)
    detail::raiseRange("replaceBytesInRange:withBytes:length:", range.location, range.length,
                       length_);
  replace(range, std::span(static_cast<const std::byte*>(bytes), length));
}

void NSMutableData::setData(NSData* other) {
  replace({0, length_}, requireData(other, "setData:").span());
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
