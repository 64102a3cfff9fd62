/// @file
/// Private: what an observer is handed.
#pragma once

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/NSKeyValueObserving.h"
#include "Platform/Values/NSIndexSet.h"

namespace qz::detail {

/// The entries of a change, kept as members: one block instead of a table, since one is made for
/// every change that is told. Immutable, and a Dictionary in every respect.
class ChangeDictionary final : public NSDictionary {
 public:
  /// What is null has no entry.
  struct Entries {
    NSKeyValueChange kind = NSKeyValueChangeSetting;
    Ref<NSObject> newValue{};
    Ref<NSObject> oldValue{};
    Ref<NSIndexSet> indexes{};
    bool isPrior = false;
  };

  explicit ChangeDictionary(Entries entries) noexcept : entries_(std::move(entries)) {}

  std::uint32_t count() const override;
  Ref<NSObject> objectForKey(NSObject* key) const override;
  Ref<NSEnumerator> keyEnumerator() const override;
  Ref<NSObject> copy() const override { return const_cast<ChangeDictionary*>(this); }

 private:
  const Entries entries_;
};

}  // namespace qz::detail
