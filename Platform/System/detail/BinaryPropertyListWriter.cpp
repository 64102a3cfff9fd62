#include <bit>
#include <cmath>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/detail/HashSupport.h"
#include "Platform/System/NSPropertyListUID.h"
#include "Platform/System/detail/BinaryPropertyList.h"
#include "Platform/System/detail/ByteBuffer.h"
#include "Platform/System/detail/PropertyListLeaves.h"
#include "Platform/System/detail/PropertyListWalk.h"
#include "Platform/System/detail/PropertyListWriters.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/Utf.h"

namespace qz::detail {
namespace {

unsigned sizeOf(std::uint64_t value) {
  if (value < 1u << 8) return 1;
  if (value < 1u << 16) return 2;
  return value <= 0xFFFFFFFF ? 4 : 8;
}

/// What is written once: a kind and either a number that says all, or an Object to compare with.
struct Value {
  enum class Kind : std::uint8_t {
    Boolean,
    Integer,         // fits std::int64_t
    GreaterInteger,  // does not
    Float,
    Double,
    Date,
    UID,
    String,
    Data,
    Array,
    Dictionary,
  };
  Kind kind;
  std::uint32_t hash;
  std::uint32_t count;   // of a container
  std::uint64_t bits;    // of a number; of a container, where its references begin
  Ref<NSObject> object;  // nil for a number
};

constexpr std::uint64_t unfinished = UINT64_MAX;

class Writer {
 public:
  Ref<NSData> write(NSObject* list) {
    slots_.assign(64, 0);
    number(list);
    emit();
    return out_.toData();
  }

 private:
  using Kind = Value::Kind;

  // Numbering: containers before what they contain ------------------------------------------------

  std::uint32_t number(NSObject* object) {
    switch (walk_.typeOf(object)) {
      case PropertyListType::String: {
        auto* const string = static_cast<NSString*>(object);
        return numberOf(Kind::String, string->hash(), 0, string);
      }
      case PropertyListType::Number:
        return numberOf(*static_cast<NSNumber*>(object));
      case PropertyListType::Date: {
        const double seconds = static_cast<NSDate*>(object)->timeIntervalSince1970();
        if (!std::isfinite(seconds)) walk_.refuse("the date is infinite or no number");
        return numberOf(Kind::Date, std::bit_cast<std::uint64_t>(seconds - secondsFrom1970To2001));
      }
      case PropertyListType::UID:
        return numberOf(Kind::UID,
                        static_cast<NSPropertyListUID*>(object)->unsignedLongLongValue());
      case PropertyListType::Data:
        return numberOf(Kind::Data, object->hash(), 0, object);
      case PropertyListType::Array:
        return array(static_cast<NSArray*>(object));
      case PropertyListType::Dictionary:
        return dictionary(object);
      case PropertyListType::None:
        break;
    }
    walk_.refuseClass(object);
  }

  std::uint32_t numberOf(const NSNumber& number) {
    switch (number.kind()) {
      case NumberKind::Bool:
        return numberOf(Kind::Boolean, number.bits());
      case NumberKind::Float:
        return numberOf(Kind::Float, std::bit_cast<std::uint32_t>(number.floatValue()));
      case NumberKind::Double:
        return numberOf(Kind::Double, number.bits());
      case NumberKind::UnsignedLongLong:
        return numberOf(number.bits() >> 63 != 0 ? Kind::GreaterInteger : Kind::Integer,
                        number.bits());
      default:
        return numberOf(Kind::Integer, number.bits());
    }
  }

  std::uint32_t numberOf(Kind kind, std::uint64_t bits) {
    return numberOf(kind, bits, bits, nullptr);
  }

  std::uint32_t numberOf(Kind kind, std::size_t codeOf, std::uint64_t bits, NSObject* object) {
    const std::uint32_t hash = mixHash(codeOf * 16 + static_cast<std::size_t>(kind));
    const std::size_t mask = slots_.size() - 1;
    std::size_t place = hash & mask;
    for (; slots_[place] != 0; place = (place + 1) & mask) {
      const std::uint32_t number = slots_[place] - 1;
      const Value& value = values_[number];
      if (value.hash == hash && value.kind == kind && isSame(value, bits, object)) return number;
    }
    const auto number = static_cast<std::uint32_t>(values_.size());
    values_.push_back({kind, hash, 0, bits, object});
    slots_[place] = number + 1;
    if (values_.size() * 2 > slots_.size()) enlarge();
    return number;
  }

  /// Of Objects of one kind: containers are what they are, whatever they contain.
  static bool isSame(const Value& value, std::uint64_t bits, NSObject* object) {
    if (object == nullptr) return value.bits == bits;
    NSObject* const known = value.object;
    if (known == object) return true;
    if (value.kind == Kind::String)
      return static_cast<NSString*>(known)->isEqualToString(static_cast<NSString*>(object));
    return value.kind == Kind::Data &&
           static_cast<NSData*>(known)->isEqualToData(static_cast<NSData*>(object));
  }

  void enlarge() {
    slots_.assign(slots_.size() * 2, 0);
    const std::size_t mask = slots_.size() - 1;
    for (std::uint32_t number = 0; number < values_.size(); ++number) {
      std::size_t place = values_[number].hash & mask;
      while (slots_[place] != 0) place = (place + 1) & mask;
      slots_[place] = number + 1;
    }
  }

  // One that is met again while it is being numbered contains itself: it is walked once more, and
  // again, until the walk refuses.
  std::uint32_t array(NSArray* array) {
    const PropertyListWalk::Level inside(walk_, array);
    const std::uint32_t number = container(Kind::Array, array);
    if (values_[number].bits != unfinished) return number;
    const std::uint32_t count = array->count();
    const std::size_t first = reserve(number, count, count);
    std::uint32_t index = 0;
    for (NSObject* each : *array) {
      inside.isAt(index);
      const std::uint32_t reference = this->number(each);
      references_[first + index++] = reference;
    }
    values_[number].bits = first;
    return number;
  }

  std::uint32_t dictionary(NSObject* dictionary) {
    const PropertyListWalk::Level inside(walk_, dictionary);
    const std::uint32_t number = container(Kind::Dictionary, dictionary);
    if (values_[number].bits != unfinished) return number;
    const auto entries = walk_.sortedEntries(dictionary);
    const auto count = static_cast<std::uint32_t>(entries.size());
    const std::size_t first = reserve(number, count, 2 * std::size_t{count});
    std::size_t next = first;
    for (const auto& entry : entries) references_[next++] = this->number(entry.key);
    for (const auto& [key, value] : entries) {
      inside.isAt(key.get());
      const std::uint32_t reference = this->number(value);
      references_[next++] = reference;
    }
    values_[number].bits = first;
    return number;
  }

  std::uint32_t container(Kind kind, NSObject* object) {
    return numberOf(kind, reinterpret_cast<std::uintptr_t>(object) / 16, unfinished, object);
  }

  std::size_t reserve(std::uint32_t number, std::uint32_t count, std::size_t references) {
    const std::size_t first = references_.size();
    references_.resize(first + references);
    values_[number].count = count;
    return first;
  }

  // Writing ---------------------------------------------------------------------------------------

  void emit() {
    referenceSize_ = sizeOf(values_.size() - 1);
    out_.append(binaryPropertyListHead);
    std::vector<std::uint64_t> offsets;
    offsets.reserve(values_.size());
    for (const Value& value : values_) {
      offsets.push_back(out_.size());
      emit(value);
    }
    const std::uint64_t table = out_.size();
    const unsigned offsetSize = sizeOf(table);
    for (std::uint64_t offset : offsets) out_.appendBigEndian(offset, offsetSize);
    out_.append(std::size_t{6}, '\0');
    out_.appendBigEndian(offsetSize, 1);
    out_.appendBigEndian(referenceSize_, 1);
    out_.appendBigEndian(values_.size(), 8);
    out_.appendBigEndian(0, 8);
    out_.appendBigEndian(table, 8);
  }

  void emit(const Value& value) {
    switch (value.kind) {
      case Kind::Boolean:
        return byte(value.bits != 0 ? binaryMarker::boolTrue : binaryMarker::boolFalse);
      case Kind::Integer:
        return integer(value.bits);
      case Kind::GreaterInteger:
        byte(binaryMarker::integer | 4);
        out_.appendBigEndian(0, 8);
        return out_.appendBigEndian(value.bits, 8);
      case Kind::Float:
        byte(binaryMarker::real | 2);
        return out_.appendBigEndian(value.bits, 4);
      case Kind::Double:
        byte(binaryMarker::real | 3);
        return out_.appendBigEndian(value.bits, 8);
      case Kind::Date:
        byte(binaryMarker::date);
        return out_.appendBigEndian(value.bits, 8);
      case Kind::UID: {
        const unsigned size = sizeOf(value.bits);
        byte(static_cast<std::uint8_t>(binaryMarker::uid | (size - 1)));
        return out_.appendBigEndian(value.bits, size);
      }
      case Kind::String:
        return string(static_cast<NSString*>(value.object.get())->view());
      case Kind::Data: {
        const std::string_view bytes = static_cast<NSData*>(value.object.get())->view();
        head(binaryMarker::data, bytes.size());
        return out_.append(bytes);
      }
      case Kind::Array:
        head(binaryMarker::array, value.count);
        return references(value, value.count);
      case Kind::Dictionary:
        head(binaryMarker::dictionary, value.count);
        return references(value, 2 * std::size_t{value.count});
    }
  }

  void references(const Value& value, std::size_t count) {
    const auto first = static_cast<std::size_t>(value.bits);
    for (std::size_t i = 0; i < count; ++i)
      out_.appendBigEndian(references_[first + i], referenceSize_);
  }

  void string(std::u16string_view text) {
    if (asciiPrefix(text) == text.size()) {
      head(binaryMarker::ascii, text.size());
      out_.commit(encodeUtf8(text, out_.room(3 * text.size())));
      return;
    }
    head(binaryMarker::utf16, text.size());
    char* out = out_.room(2 * text.size());
    for (char16_t unit : text) {
      *out++ = static_cast<char>(unit >> 8);
      *out++ = static_cast<char>(unit);
    }
    out_.commit(out);
  }

  // Those of up to four bytes have no sign.
  void integer(std::uint64_t bits) {
    const unsigned size = sizeOf(bits);
    byte(static_cast<std::uint8_t>(binaryMarker::integer | std::countr_zero(size)));
    out_.appendBigEndian(bits, size);
  }

  void head(std::uint8_t marker, std::size_t count) {
    byte(static_cast<std::uint8_t>(marker | (count < 15 ? count : 15)));
    if (count >= 15) integer(count);
  }

  void byte(std::uint8_t value) { out_.append(static_cast<char>(value)); }

  ByteBuffer out_;
  PropertyListWalk walk_;
  std::vector<Value> values_;
  std::vector<std::uint32_t> slots_;       // hash table: numbers of values plus 1
  std::vector<std::uint32_t> references_;  // of all containers
  unsigned referenceSize_ = 1;
};

}  // namespace

Ref<NSData> writeBinaryPropertyList(NSObject* list) { return Writer().write(list); }

}  // namespace qz::detail
