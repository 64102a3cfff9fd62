/// @file
/// Private: the Objects of a property list that is being read, as mutable as was asked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "Platform/Runtime/NSObject.h"

#pragma GCC visibility push(default)
namespace qz {
class NSData;
class NSNumber;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

/// Owned Objects, the last on top; lets go of what is left.
class ObjectStack {
 public:
  ObjectStack() = default;
  ObjectStack(const ObjectStack&) = delete;
  ObjectStack& operator=(const ObjectStack&) = delete;
  ~ObjectStack() { dropTo(0); }

  std::size_t size() const noexcept { return objects_.size(); }
  NSObject* at(std::size_t index) const noexcept { return objects_[index]; }

  void push(Ref<NSObject> object) {
    objects_.push_back(object.get());
    static_cast<void>(object.leak());
  }

  /// Those from `base` to the top.
  std::span<NSObject* const> from(std::size_t base) const noexcept {
    return std::span(objects_).subspan(base);
  }

  /// Takes away, and lets go of, or hands over, those from `base` to the top.
  void dropTo(std::size_t base) noexcept;
  void disownTo(std::size_t base) noexcept { objects_.resize(base); }

 private:
  std::vector<NSObject*> objects_;
};

/// Makes leaves and containers. Containers take what lies on the stacks above a base.
class PropertyListBuilder {
 public:
  /// `mutability` of NSPropertyListMutabilityOptions.
  explicit PropertyListBuilder(std::uint32_t mutability) noexcept;

  Ref<NSObject> string(Ref<NSString> text) const;
  Ref<NSObject> data(Ref<NSData> bytes) const;

  /// Of the first kind that has room: Int, LongLong, UnsignedLongLong.
  static Ref<NSNumber> integer(std::int64_t value);
  static Ref<NSNumber> integer(std::uint64_t value);

  Ref<NSObject> array(ObjectStack& elements, std::size_t base) const;

  /// Nil, with the stacks as they were, when a key stands twice.
  Ref<NSObject> dictionary(ObjectStack& keys, std::size_t keyBase, ObjectStack& values,
                           std::size_t valueBase) const;

  /// How many keys come before the first that stands for the second time.
  static std::size_t indexOfRepeatedKey(std::span<NSObject* const> keys);

 private:
  bool mutableContainers_;
  bool mutableLeaves_;
};

}  // namespace qz::detail
