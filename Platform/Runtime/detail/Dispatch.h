/// @file
/// Private: from an Object and a Selector to the function that answers.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "Platform/Runtime/Selector.h"
#include "Platform/Runtime/detail/VptrTable.h"
#include "Platform/Runtime/detail/Word.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// The one shape of every operation: receiver, Selector, the first three arguments in registers,
/// the rest behind a pointer; the answer in one word.
using Imp = Word (*)(NSObject* self, Selector selector, Word a0, Word a1, Word a2,
                     const Word* more);

inline constexpr std::size_t maxArguments = 8;

/// A shape in one word, compared before a call: the answer's kind, how many arguments there are,
/// and each one's kind. Equal shapes need no conversion; classes of Objects are checked by the
/// operation itself.
using Shape = std::uint64_t;

inline constexpr Shape allObjectsBit = Shape{1} << 63;

constexpr Shape makeShape(Kind answer, std::span<const Kind> arguments) noexcept {
  Shape shape = static_cast<Shape>(answer) | static_cast<Shape>(arguments.size()) << 8;
  bool allObjects = true;
  unsigned at = 16;
  for (Kind kind : arguments) {
    shape |= static_cast<Shape>(kind) << at;
    at += 4;
    allObjects = allObjects && kind == Kind::Object;
  }
  return allObjects ? shape | allObjectsBit : shape;
}

constexpr std::size_t shapeArguments(Shape shape) noexcept { return (shape >> 8) & 0xFF; }
constexpr Kind shapeAnswer(Shape shape) noexcept { return static_cast<Kind>(shape & 0xFF); }

/// A shape no call has: the operation is missing, or is answered by forwarding.
inline constexpr Shape missingShape = 0xFE;

template <class R, class... A>
constexpr Shape shapeOf() {
  constexpr std::array<Kind, sizeof...(A)> kinds{kindOf<A>()...};
  return makeShape(kindOf<R>(), kinds);
}

/// An operation as a class has it. Never freed once registered.
struct Method {
  Selector selector;
  Imp imp;
  Shape shape;
  const ValueType* answer;
  std::span<const ValueType* const> arguments;
  Class* owner;
  std::string_view category;
};

struct DispatchEntry {
  std::uintptr_t key = 0;  ///< The virtual table, or the address of a Class sent to.
  Imp imp = nullptr;
  Shape shape = missingShape;
  const Method* method = nullptr;  ///< Null when the operation is missing.
};

struct DispatchTable : VptrTable<DispatchEntry> {};

/// Looks up, under the run-time's lock unless it has been asked for before, and remembers the
/// answer. Never null.
const DispatchEntry* lookUpSlowly(const NSObject* receiver, Selector selector);

/// The entry for `receiver` (not nil) and `selector` if one look finds it, as it nearly always does
/// once it has been asked for before; else null.
inline const DispatchEntry* lookUpAtOnce(const NSObject* receiver, Selector selector) noexcept {
  if (const SelectorRecord* record = selector.record()) [[likely]] {
    const std::uintptr_t vptr = vptrOf(receiver);
    const DispatchEntry& entry = record->dispatch.load(std::memory_order_acquire)->first(vptr);
    if (entry.key == vptr) [[likely]]
      return &entry;
  }
  return nullptr;
}

/// The entry for `receiver` (not nil) and `selector`. No lock once it has been asked for before.
/// The entry lives for ever, but says what was true when it was looked up.
inline const DispatchEntry& lookUp(const NSObject* receiver, Selector selector) {
  if (const DispatchEntry* entry = lookUpAtOnce(receiver, selector)) [[likely]]
    return *entry;
  return *lookUpSlowly(receiver, selector);
}

/// An argument of a call whose shape is not the operation's own.
struct TypedWord {
  Word word;
  const ValueType* type;
};

/// Calls what `entry` names after converting scalars, or forwards, or raises; the answer, of kind
/// `*answer`, carries one count. `answer` is what the caller wants, or null for "whatever it is",
/// and is set to what it got.
Word sendSlowly(const DispatchEntry& entry, NSObject* receiver, Selector selector,
                std::span<const TypedWord> arguments, const ValueType*& answer);

/// Calls `imp` with `arguments`, of which there are at most `maxArguments`.
inline Word callWithWords(Imp imp, NSObject* receiver, Selector selector, const Word* words,
                          std::size_t count) {
  return imp(receiver, selector, count > 0 ? words[0] : 0, count > 1 ? words[1] : 0,
             count > 2 ? words[2] : 0, count > 3 ? words + 3 : nullptr);
}

/// Refuses an argument: raises NSInvalidArgumentException naming Selector, position and types.
[[noreturn]] void refuseArgument(const NSObject* receiver, Selector selector, std::size_t position,
                                 Class* wanted, const NSObject* given);
[[noreturn]] void refuseAnswer(Selector selector, Class* wanted, const NSObject* given);

}  // namespace qz::detail

#pragma GCC visibility pop
