#include "Platform/Values/detail/UnitBuffer.h"

#include <cstdlib>

#include "Platform/Values/detail/StringStorage.h"
#include "Platform/Values/detail/Utf.h"

namespace qz::detail {

namespace {
// Below this, a copy into one block with the String's header beats keeping the buffer.
constexpr std::size_t adoptionLength = 2048;
}  // namespace

UnitBuffer::~UnitBuffer() {
  if (data_ != inline_) std::free(data_);
}

void UnitBuffer::grow(std::size_t count) {
  const std::size_t wanted = checkedLength(size_, count);
  // At most the longest String's length, and at least twice what there was.
  const std::size_t doubled = std::min<std::size_t>(2 * capacity_, NSString::maxLength);
  const std::size_t capacity = std::max(wanted, doubled);
  char16_t* old = data_ == inline_ ? nullptr : data_;
  data_ = reallocateUnits(old, capacity);
  if (old == nullptr) std::copy_n(inline_, size_, data_);
  capacity_ = capacity;
}

void UnitBuffer::appendUtf8(std::string_view bytes) {
  // Units are never more than bytes, but only more units than there may be are an error.
  const std::size_t atMost =
      bytes.size() <= NSString::maxLength - size_ ? bytes.size() : utf16Length(bytes);
  if (atMost == bytes.size()) {
    commit(decodeUtf8(bytes, room(atMost)));
    return;
  }
  checkedLength(size_, atMost);
  // Whole characters at a time, lest the decoder's room, one unit a byte, exceed the limit.
  constexpr std::size_t chunk = std::size_t{1} << 20;
  while (!bytes.empty()) {
    std::string_view piece = bytes.substr(0, chunk);
    if (piece.size() < bytes.size()) piece = withoutPartialCharacter(piece);
    UnitBuffer part;
    part.commit(decodeUtf8(piece, part.room(piece.size())));
    append(part.view());
    bytes.remove_prefix(piece.size());
  }
}

Ref<NSString> UnitBuffer::toString() {
  if (data_ == inline_ || size_ < adoptionLength) return makeString(view());
  char16_t* units = shrinkUnits(data_, size_);
  data_ = inline_;
  capacity_ = inlineCapacity;
  return adoptUnits(units, std::exchange(size_, 0));
}

}  // namespace qz::detail
