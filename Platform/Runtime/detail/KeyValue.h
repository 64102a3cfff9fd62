/// @file
/// Private: keys, and values in and out of words.
#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "Platform/Runtime/Selector.h"
#include "Platform/Runtime/detail/Dispatch.h"

#pragma GCC visibility push(default)

namespace qz {
class NSString;
}

namespace qz::detail {

/// A key that some class has, with the Selectors that read and write it. Never freed.
struct Key {
  std::u16string text;
  std::size_t hash = 0;
  Selector getter;
  Selector setter;
  mutable std::atomic<const NSString*> literal{nullptr};  ///< A literal of that text, once seen.
};

/// The Key of that text; null when no class has an operation of that name.
const Key* findKey(NSString* text);

/// The operation by which `object` reads `key`; null when it has none that answers a value.
const DispatchEntry* findGetter(const NSObject* object, const Key* key);

/// An answer as an Object; takes over its ownership.
Ref<NSObject> boxWord(Word word, Kind kind);

/// `value` (not nil) as a scalar, by sending `intValue`, `doubleValue`, …
Word unboxWord(NSObject* value, Kind kind);

/// The name of the operation that writes `key`: "setAge:" for "age".
std::string setterName(std::string_view key);

/// The Selector by that name if there is one; makes none.
const SelectorRecord* findSelector(std::string_view name);

}  // namespace qz::detail

#pragma GCC visibility pop
