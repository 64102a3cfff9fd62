/// @file
/// An Array of other Objects' values.
#pragma once

#include "Platform/Collections/NSArray.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// A read-only view: for each element of an Array, that element's value at a key path, read
/// whenever it is asked for. It holds no values, so it shows what the elements answer now, and it
/// grows and shrinks with an Array that changes.
///
///     Ref<QZKeyPathArray> names = arrayForKeyPath(people, "name.family"_ns);
///     names->objectAtIndex(0);
///     names->componentsJoinedByString(", "_ns);
///
/// It is an Array in every respect; `copy` gives the values of now as an ordinary one. Only
/// `objectAtIndex` answers nil for a value of nil: whatever walks or copies the view meets Null.
class QZKeyPathArray : public Derives<QZKeyPathArray, NSArray> {
 public:
  static void describe(ClassDescription<QZKeyPathArray>& is);

  /// Retains `array` (nil is as good as an empty one) and copies `keyPath`.
  QZKeyPathArray(NSArray* array, NSString* keyPath);
  static Ref<QZKeyPathArray> initWithArray_keyPath(NSArray* array, NSString* keyPath);

  std::uint32_t count() const override;

  /// The element's `valueForKeyPath:`. Raises NSRangeException, and what the reading raises.
  Ref<NSObject> objectAtIndex(std::uint32_t index) const override;

  /// The changes of the Array looked at.
  const std::uint32_t* mutationCounter() const override { return array_->mutationCounter(); }

 private:
  Ref<NSArray> array_;
  Ref<NSString> keyPath_;
};

/// A view of the receiver through `keyPath`. Constant time.
Ref<QZKeyPathArray> arrayForKeyPath(NSArray* self, NSString* keyPath);

}  // namespace qz

#pragma GCC visibility pop
