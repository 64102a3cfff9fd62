#include "Platform/Collections/detail/ArrayBuilder.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "Platform/Collections/detail/ReleaseElements.h"
#include "Platform/Runtime/NSException.h"

namespace qz::detail {
namespace {

constexpr std::size_t blockSize(std::uint32_t capacity) {
  return sizeof(InlineArray) + capacity * sizeof(void*);
}

// Room left over in a finished Array is given back when it is more than this part of the whole.
constexpr std::uint32_t toleratedPart = 8;

}  // namespace

static_assert(sizeof(InlineArray) == 24);

/// Holds the empty Array without ever destroying it.
union ImmortalArray {
  InlineArray array;
  constexpr ImmortalArray() noexcept : array(InlineArray::ImmortalTag()) {}
  constexpr ~ImmortalArray() {}  // NOLINT(modernize-use-equals-default): deleted by default
};

NSArray* emptyArray() noexcept {
  static constinit ImmortalArray empty;
  return &empty.array;
}

Ref<NSObject> InlineArray::objectAtIndex(std::uint32_t index) const {
  if (index >= count_) [[unlikely]]
    raiseIndex("-[NSArray objectAtIndex:]", index, count_);
  return elements()[index];
}

Ref<NSObject> InlineArray::copy() const { return const_cast<InlineArray*>(this); }

void InlineArray::operator delete(InlineArray* self, std::destroying_delete_t) noexcept {
  const std::size_t size = blockSize(self->capacity_);
  const auto elements = self->elements();
  self->count_ = 0;  // what the elements' ends bring about finds an empty Array
  releaseElements(elements.data(), elements.size());
  self->~InlineArray();
  poolFree(self, size);
}

ArrayBuilder::~ArrayBuilder() {
  if (block_ == nullptr) return;
  releaseElements(slots(), count_);
  poolFree(block_, blockSize(capacity_));
}

void ArrayBuilder::reserve(std::size_t capacity) {
  if (capacity > maximumArrayCount) raise(NSMallocException, "an Array of too many elements");
  if (capacity > capacity_) moveTo(static_cast<std::uint32_t>(capacity));
}

void ArrayBuilder::grow() {
  if (capacity_ == maximumArrayCount) raise(NSMallocException, "an Array of too many elements");
  moveTo(static_cast<std::uint32_t>(std::clamp<std::uint64_t>(
      std::uint64_t{capacity_} * 2, std::uint64_t{4}, std::uint64_t{maximumArrayCount})));
}

void ArrayBuilder::moveTo(std::uint32_t capacity) {
  void* block = poolAllocate(blockSize(capacity));
  if (block_ != nullptr) {
    std::memcpy(static_cast<std::byte*>(block) + sizeof(InlineArray), slots(),
                count_ * sizeof(void*));
    poolFree(block_, blockSize(capacity_));
  }
  block_ = block;
  capacity_ = capacity;
}

void ArrayBuilder::addAll(std::span<NSObject* const> objects) {
  reserve(std::size_t{count_} + objects.size());
  for (NSObject* object : objects) add(object);
}

void ArrayBuilder::addAll(const NSArray* array) {
  if (array == nullptr) return;
  if (const auto elements = array->contiguous()) return addAll(*elements);
  const std::uint32_t count = array->count();
  reserve(std::size_t{count_} + count);
  for (std::uint32_t i = 0; i < count; ++i) take(elementAt(array, i));
}

Ref<NSArray> ArrayBuilder::finish() {
  if (count_ == 0) return emptyArray();
  if (capacity_ - count_ > count_ / toleratedPart) moveTo(count_);
  auto* array = ::new (std::exchange(block_, nullptr)) InlineArray(count_, capacity_);
  count_ = capacity_ = 0;
  return Ref<NSArray>(array, adopt);
}

void ArrayBuilder::refuseNil() {
  raise(NSInvalidArgumentException, "an Array cannot hold nil; use NSNull");
}

}  // namespace qz::detail
