#include "Platform/System/detail/ByteBuffer.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/detail/DataStorage.h"

namespace qz::detail {

ByteBuffer::~ByteBuffer() { std::free(bytes_); }

// What a number of bytes may need at most is not what it will: only `size_` has to fit Data.
void ByteBuffer::grow(std::size_t count) {
  checkedDataLength(size_);
  constexpr std::size_t least = 1024;
  const std::size_t capacity = std::max({least, size_ + count, capacity_ + capacity_ / 2});
  void* const memory = std::realloc(bytes_, capacity);
  if (memory == nullptr)
    raise(NSMallocException, "no memory for " + std::to_string(capacity) + " bytes");
  bytes_ = static_cast<char*>(memory);
  capacity_ = capacity;
}

Ref<NSData> ByteBuffer::toData() {
  const std::uint32_t length = checkedDataLength(size_);
  if (void* const fitting = std::realloc(bytes_, std::max<std::size_t>(length, 1)))
    bytes_ = static_cast<char*>(fitting);
  size_ = capacity_ = 0;
  return NSData::dataWithBytesNoCopy_length(std::exchange(bytes_, nullptr), length);
}

}  // namespace qz::detail
