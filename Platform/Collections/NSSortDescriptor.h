/// @file
/// Sort descriptors: one key to sort by, as an Object.
#pragma once

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

/// Says by which value, by which comparison and in which direction Objects are ordered.
///
///     auto byName = NSSortDescriptor::initWithKey_ascending("name.family"_ns, true);
///     people->sortedArrayUsingDescriptors(NSArray::arrayWithObject(byName));
///
/// Immutable. A derived class may override `compareObject_toObject`, which sorting then calls.
class NSSortDescriptor : public Derives<NSSortDescriptor, NSObject> {
 public:
  static void describe(ClassDescription<NSSortDescriptor>& is);

  /// Reads the value at `key`, a key path that is copied (nil: the Object itself), and sends it
  /// `selector` with the other's value (the null Selector: `compare:`).
  NSSortDescriptor(NSString* key, bool ascending, Selector selector = Selector());
  static Ref<NSSortDescriptor> initWithKey_ascending(NSString* key, bool ascending);
  static Ref<NSSortDescriptor> initWithKey_ascending_selector(NSString* key, bool ascending,
                                                              Selector selector);

  /// As it was made: nil for no key, `compare:` where no Selector was given.
  Ref<NSString> key() const { return key_; }
  bool ascending() const noexcept { return ascending_; }
  Selector selector() const noexcept { return selector_; }

  /// How `first` and `second` are ordered. A value of nil orders before all others when ascending,
  /// after them when descending, and with another nil.
  virtual NSComparisonResult compareObject_toObject(NSObject* first, NSObject* second) const;

  /// How two values read at the key are ordered, by the same rules.
  NSComparisonResult compareValues(NSObject* first, NSObject* second) const;

  /// The value at the key; nil for nil.
  Ref<NSObject> valueOf(NSObject* object) const;

  /// The same key and comparison in the other direction.
  Ref<NSSortDescriptor> reversedSortDescriptor() const;

  /// The same key, direction and Selector.
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

  /// This very descriptor.
  Ref<NSObject> copy() const override;

  /// "(key, ascending, compare:)".
  Ref<NSString> description() const override;

 private:
  bool ascending_;
  Ref<NSString> key_;
  Selector selector_;
};

}  // namespace qz

#pragma GCC visibility pop
