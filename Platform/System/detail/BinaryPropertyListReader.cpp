#include <bit>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "Platform/System/NSPropertyListUID.h"
#include "Platform/System/detail/BinaryPropertyList.h"
#include "Platform/System/detail/PropertyListBuilder.h"
#include "Platform/System/detail/PropertyListLeaves.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/StringStorage.h"
#include "Platform/Values/detail/Utf.h"

namespace qz::detail {
namespace {

class Reader {
 public:
  Reader(std::string_view bytes, std::uint32_t mutability) : bytes_(bytes), builder_(mutability) {}

  Ref<NSObject> read() {
    if (!bytes_.starts_with(binaryPropertyListHead))
      fail(0, "this is no binary property list of version 00");
    readTrailer();
    objects_.resize(static_cast<std::size_t>(count_));
    isBeingRead_.resize(static_cast<std::size_t>(count_));
    return object(root_, bytes_.size() - 8 * 2);
  }

 private:
  void readTrailer() {
    if (bytes_.size() < binaryPropertyListHead.size() + binaryPropertyListTrailer)
      fail(bytes_.size(), "the trailer is missing");
    const std::size_t trailer = bytes_.size() - binaryPropertyListTrailer;
    offsetSize_ = unsignedAt(trailer + 6, 1);
    referenceSize_ = unsignedAt(trailer + 7, 1);
    count_ = unsignedAt(trailer + 8, 8);
    root_ = unsignedAt(trailer + 16, 8);
    table_ = unsignedAt(trailer + 24, 8);
    if (offsetSize_ < 1 || offsetSize_ > 8) fail(trailer + 6, "offsets have 1 to 8 bytes");
    if (referenceSize_ < 1 || referenceSize_ > 8) fail(trailer + 7, "references have 1 to 8 bytes");
    if (table_ < binaryPropertyListHead.size() || table_ > trailer)
      fail(trailer + 24, "the table of offsets lies outside of the file");
    if (count_ == 0 || count_ > (trailer - table_) / offsetSize_)
      fail(trailer + 8, "there is no room for as many objects");
    if (root_ >= count_) fail(trailer + 16, "there is no root");
  }

  /// `from` is the place that refers to the object.
  Ref<NSObject> object(std::uint64_t number, std::size_t from) {
    if (number >= count_) fail(from, "there is no object " + std::to_string(number));
    const auto index = static_cast<std::size_t>(number);
    if (objects_[index]) return objects_[index];
    if (isBeingRead_[index] != 0) fail(from, "a container contains itself");
    isBeingRead_[index] = 1;
    const std::size_t entry = static_cast<std::size_t>(table_ + number * offsetSize_);
    const std::uint64_t offset = unsignedAt(entry, offsetSize_);
    if (offset < binaryPropertyListHead.size() || offset >= table_)
      fail(entry, "object " + std::to_string(number) + " lies outside of the file");
    return objects_[index] = objectAt(static_cast<std::size_t>(offset));
  }

  Ref<NSObject> objectAt(std::size_t at) {
    const auto marker = static_cast<std::uint8_t>(bytes_[at]);
    const unsigned low = marker & 0x0Fu;
    switch (marker & 0xF0u) {
      case 0x00:
        if (marker == binaryMarker::boolFalse || marker == binaryMarker::boolTrue) {
          take(at, 1);
          return NSNumber::numberWithBool(marker == binaryMarker::boolTrue);
        }
        break;
      case binaryMarker::integer:
        if (low <= 4) return integer(at, std::size_t{1} << low);
        break;
      case binaryMarker::real:
        if (low == 2 || low == 3) return real(at, std::size_t{1} << low);
        break;
      case binaryMarker::date & 0xF0u:
        if (marker == binaryMarker::date) return date(at);
        break;
      case binaryMarker::data:
        return data(at);
      case binaryMarker::ascii:
        return asciiString(at);
      case binaryMarker::utf16:
        return utf16String(at);
      case binaryMarker::uid:
        return uid(at, low + 1);
      case binaryMarker::array:
        return array(at);
      case binaryMarker::dictionary:
        return dictionary(at);
      default:
        break;
    }
    fail(at, "there is no kind of object " + std::to_string(marker));
  }

  // Leaves ----------------------------------------------------------------------------------------

  Ref<NSObject> integer(std::size_t at, std::size_t size) {
    take(at, 1 + size);
    if (size < 8) return PropertyListBuilder::integer(unsignedAt(at + 1, size));
    const std::uint64_t low = unsignedAt(at + 1 + size - 8, 8);
    if (size == 8) return PropertyListBuilder::integer(static_cast<std::int64_t>(low));
    const std::uint64_t high = unsignedAt(at + 1, 8);
    if (high == 0) return PropertyListBuilder::integer(low);
    if (high == UINT64_MAX && low >> 63 == 1)
      return PropertyListBuilder::integer(static_cast<std::int64_t>(low));
    fail(at, "the integer takes more than 64 bits");
  }

  Ref<NSObject> real(std::size_t at, std::size_t size) {
    take(at, 1 + size);
    const std::uint64_t bits = unsignedAt(at + 1, size);
    if (size == 8) return NSNumber::numberWithDouble(std::bit_cast<double>(bits));
    return NSNumber::numberWithFloat(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
  }

  Ref<NSObject> date(std::size_t at) {
    take(at, 9);
    const auto seconds = std::bit_cast<double>(unsignedAt(at + 1, 8));
    if (!std::isfinite(seconds)) fail(at, "the date is infinite or no number");
    return NSDate::dateWithTimeIntervalSince1970(seconds + secondsFrom1970To2001);
  }

  Ref<NSObject> uid(std::size_t at, std::size_t size) {
    take(at, 1 + size);
    for (; size > 8; --size, ++at)
      if (bytes_[at + 1] != 0) fail(at, "the UID takes more than 64 bits");
    return NSPropertyListUID::UIDWithUnsignedLongLong(unsignedAt(at + 1, size));
  }

  Ref<NSObject> data(std::size_t at) {
    return builder_.data(NSData::dataWithBytes(contents(at, 1)));
  }

  Ref<NSObject> asciiString(std::size_t at) {
    const std::string_view text = contents(at, 1);
    const std::size_t ascii = asciiPrefix(text);
    if (ascii != text.size())
      fail(static_cast<std::size_t>(text.data() - bytes_.data()) + ascii,
           "the character is not ASCII");
    return builder_.string(fillString(text.size(), [text](char16_t* out) {
      for (char c : text) *out++ = static_cast<char16_t>(c);
    }));
  }

  Ref<NSObject> utf16String(std::size_t at) {
    const std::string_view text = contents(at, 2);
    return builder_.string(fillString(text.size() / 2, [text](char16_t* out) {
      std::memcpy(out, text.data(), text.size());
      if constexpr (std::endian::native == std::endian::little) {
        for (std::size_t i = 0; i < text.size() / 2; ++i)
          out[i] = static_cast<char16_t>(out[i] << 8 | out[i] >> 8);
      }
    }));
  }

  // Containers ------------------------------------------------------------------------------------

  Ref<NSObject> array(std::size_t at) {
    const std::string_view references = contents(at, referenceSize_);
    enter(at);
    const std::size_t base = values_.size();
    pushAll(references, values_);
    --depth_;
    return builder_.array(values_, base);
  }

  Ref<NSObject> dictionary(std::size_t at) {
    const std::string_view references = contents(at, 2 * referenceSize_);
    enter(at);
    const std::size_t keyBase = keys_.size(), valueBase = values_.size();
    pushAll(references.substr(0, references.size() / 2), keys_);
    for (NSObject* key : keys_.from(keyBase))
      if (!isKind<NSString>(key)) fail(at, "a key of the dictionary is no string");
    pushAll(references.substr(references.size() / 2), values_);
    --depth_;
    Ref<NSObject> dictionary = builder_.dictionary(keys_, keyBase, values_, valueBase);
    if (!dictionary) {
      const std::size_t index = PropertyListBuilder::indexOfRepeatedKey(keys_.from(keyBase));
      fail(at, "the key \"" + to_string(keys_.at(keyBase + index)) + "\" stands twice");
    }
    return dictionary;
  }

  void pushAll(std::string_view references, ObjectStack& stack) {
    const auto start = static_cast<std::size_t>(references.data() - bytes_.data());
    for (std::size_t i = 0; i < references.size(); i += referenceSize_)
      stack.push(object(unsignedAt(start + i, referenceSize_), start + i));
  }

  void enter(std::size_t at) {
    if (depth_ == deepestPropertyList) fail(at, "nested too deep");
    ++depth_;
  }

  // Bytes -----------------------------------------------------------------------------------------

  /// What follows the marker: a count of pieces, perhaps, and the pieces.
  std::string_view contents(std::size_t at, std::size_t pieceSize) {
    std::uint64_t count = static_cast<std::uint8_t>(bytes_[at]) & 0x0Fu;
    std::size_t start = at + 1;
    if (count == 0x0F) {
      const auto marker = start < table_ ? static_cast<std::uint8_t>(bytes_[start]) : 0;
      if (marker < 0x10 || marker > 0x13) fail(at, "the count is missing");
      const std::size_t size = std::size_t{1} << (marker & 0x0Fu);
      if (size >= table_ - start) fail(at, "the count is cut off");
      count = unsignedAt(start + 1, size);
      start += 1 + size;
    }
    if (count > (table_ - start) / pieceSize) fail(at, "the object is longer than the file");
    const std::size_t length = static_cast<std::size_t>(count) * pieceSize;
    take(at, start - at + length);
    return bytes_.substr(start, length);
  }

  /// Objects may not overlap: a small file could be made to hold endless ones. Together they take
  /// no more bytes than there are.
  void take(std::size_t at, std::size_t length) {
    if (length > table_ - at) fail(at, "the object is cut off");
    taken_ += length;
    if (taken_ > table_) fail(at, "objects overlap");
  }

  std::uint64_t unsignedAt(std::size_t at, std::uint64_t size) const {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
      value = value << 8 | static_cast<std::uint8_t>(bytes_[at + i]);
    return value;
  }

  [[noreturn]] static void fail(std::size_t at, std::string reason) {
    throw PropertyListFailure{std::move(reason), at};
  }

  const std::string_view bytes_;
  const PropertyListBuilder builder_;
  std::uint64_t offsetSize_ = 0;
  std::uint64_t referenceSize_ = 0;
  std::uint64_t count_ = 0;
  std::uint64_t root_ = 0;
  std::uint64_t table_ = 0;  // where it begins, which is where the objects end
  std::uint64_t taken_ = 0;
  std::uint32_t depth_ = 0;
  std::vector<Ref<NSObject>> objects_;
  std::vector<char> isBeingRead_;
  ObjectStack keys_, values_;
};

}  // namespace

Ref<NSObject> readBinaryPropertyList(std::string_view bytes, std::uint32_t mutability,
                                     PropertyListFault* fault) {
  try {
    return Reader(bytes, mutability).read();
  } catch (PropertyListFailure& failure) {
    *fault = faultInBytes(std::move(failure));
    return nullptr;
  }
}

}  // namespace qz::detail
