/// @file
/// Null: the one Object that stands for "nothing" where a collection cannot hold nil.
#pragma once

#include "Platform/Runtime/Derives.h"

#pragma GCC visibility push(default)

namespace qz {

/// There is exactly one Null; it is never freed and equals only itself.
///
///     array->addObject(NSNull::null());
class NSNull final : public Derives<NSNull, NSObject> {
 public:
  static void describe(ClassDescription<NSNull>& is);

  /// The one Null. Any thread; no allocation.
  static Ref<NSNull> null() noexcept;

  /// "<null>".
  Ref<NSString> description() const override;

  /// The one Null.
  Ref<NSObject> copy() const override;

 private:
  union Holder;
  static const Holder holder;

  constexpr explicit NSNull(ImmortalTag tag) noexcept : Derives(tag) {}
};

}  // namespace qz

#pragma GCC visibility pop
