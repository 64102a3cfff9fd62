/// @file
/// Private: the immutable Array's storage, and filling it in place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>

#include "Platform/Collections/NSArray.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// More elements than this raise NSMallocException; indices stay below NSNotFound.
inline constexpr std::uint32_t maximumArrayCount = NSNotFound - 1;

/// An immutable Array in one block: 24 bytes, then the elements.
class InlineArray final : public NSArray {
 public:
  std::uint32_t count() const override { return count_; }
  Ref<NSObject> objectAtIndex(std::uint32_t index) const override;
  std::optional<std::span<NSObject* const>> contiguous() const override { return elements(); }
  Ref<NSObject> copy() const override;

  /// Lets go of the elements and frees the block with its real size.
  void operator delete(InlineArray* self, std::destroying_delete_t) noexcept;

 private:
  friend class ArrayBuilder;
  friend union ImmortalArray;

  InlineArray(std::uint32_t count, std::uint32_t capacity) noexcept
      : count_(count), capacity_(capacity) {}
  constexpr explicit InlineArray(ImmortalTag tag) noexcept : NSArray(tag) {}

  std::span<NSObject* const> elements() const noexcept {
    return {reinterpret_cast<NSObject* const*>(this + 1), count_};
  }

  std::uint32_t count_ = 0;
  std::uint32_t capacity_ = 0;  // what the block has room for
};

/// Gathers owned elements in the very block that becomes an Array: nothing is copied or counted
/// twice. Lets go of the elements if it is destroyed before `finish`.
///
///     ArrayBuilder builder(source->count());
///     for (NSObject* each : source) builder.take(transformed(each));
///     return builder.finish();  // or finishMutable(builder)
class ArrayBuilder {
 public:
  ArrayBuilder() noexcept = default;

  /// With room for `capacity` elements; it grows when there are more.
  explicit ArrayBuilder(std::size_t capacity) { reserve(capacity); }
  ~ArrayBuilder();
  ArrayBuilder(ArrayBuilder&& other) noexcept
      : block_(std::exchange(other.block_, nullptr)),
        count_(std::exchange(other.count_, 0)),
        capacity_(std::exchange(other.capacity_, 0)) {}
  ArrayBuilder& operator=(ArrayBuilder&&) = delete;

  /// Makes room for `capacity` elements in all. Raises NSMallocException for too many.
  void reserve(std::size_t capacity);

  /// Appends `object` and retains it. Nil raises NSInvalidArgumentException.
  void add(NSObject* object) { take(Ref<NSObject>(object)); }

  /// Appends `object`, taking over the caller's count. Nil raises NSInvalidArgumentException.
  void take(Ref<NSObject> object) {
    if (!object) [[unlikely]]
      refuseNil();
    if (count_ == capacity_) grow();
    slots()[count_++] = object.leak();
  }

  /// Appends and retains all of `objects`; nil among them raises NSInvalidArgumentException.
  void addAll(std::span<NSObject* const> objects);

  /// Appends and retains the elements of `array`, of which nil has none.
  void addAll(const NSArray* array);

  /// What has been gathered. The Objects may be put in another order, not replaced.
  std::span<NSObject*> elements() noexcept {
    return {block_ == nullptr ? nullptr : slots(), count_};
  }

  /// Leaves the elements' counts to the caller and is empty again.
  void disown() noexcept { count_ = 0; }

  /// The Array of what has been gathered, in constant time unless much room is left over. The
  /// builder is empty afterwards.
  Ref<NSArray> finish();

 private:
  NSObject** slots() noexcept {
    return reinterpret_cast<NSObject**>(static_cast<std::byte*>(block_) + sizeof(InlineArray));
  }
  void grow();
  void moveTo(std::uint32_t capacity);
  [[noreturn]] static void refuseNil();

  void* block_ = nullptr;
  std::uint32_t count_ = 0;
  std::uint32_t capacity_ = 0;
};

/// A MutableArray of what `builder` has gathered, which is empty afterwards.
Ref<NSMutableArray> finishMutable(ArrayBuilder& builder);

/// The one empty Array.
NSArray* emptyArray() noexcept;

}  // namespace qz::detail

namespace qz {

namespace detail {

/// The elements of any range, gathered.
template <std::ranges::input_range R>
ArrayBuilder builderOf(R&& objects) {
  ArrayBuilder builder;
  if constexpr (std::ranges::sized_range<R>) builder.reserve(std::ranges::size(objects));
  for (auto&& object : objects) {
    // A Ref that the range makes for the asking gives its count away.
    using Each = decltype(object);
    if constexpr (isRef<Each> && std::is_rvalue_reference_v<Each> &&
                  !std::is_const_v<std::remove_reference_t<Each>>)
      builder.take(std::move(object));
    else
      builder.add(object);
  }
  return builder;
}

}  // namespace detail

template <std::ranges::input_range R>
requires std::is_convertible_v<std::ranges::range_reference_t<R>, NSObject*> Ref<NSArray>
NSArray::fromRange(R&& objects) {
  return detail::builderOf(std::forward<R>(objects)).finish();
}

}  // namespace qz

#pragma GCC visibility pop
