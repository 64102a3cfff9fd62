/// @file
/// Private: whether an element's value at a key path is the one looked for.
#pragma once

#include <cstdint>
#include <optional>

#include "Platform/Runtime/NSObject.h"
#include "QZFoundation/detail/KeyPathReader.h"

namespace qz::detail {

/// One search through many elements: the value of each is sent a Selector with the sought one.
class ValueSearch {
 public:
  ValueSearch(NSObject* value, NSString* keyPath, Selector selector);

  /// Reads the element's value twice, discarding the first answer, and asks. False for an element
  /// whose reading raises NSUndefinedKeyException.
  bool matches(NSObject* element);

 private:
  Ref<NSObject> value_;
  Selector selector_;
  KeyPathReader reader_;
  /// What is sought, if `isEqual:` asks no more than whether integers are the same.
  std::optional<std::int64_t> integer_;
};

}  // namespace qz::detail
