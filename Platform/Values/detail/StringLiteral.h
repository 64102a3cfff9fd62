/// @file
/// Private: Strings written in the source. NSString.h includes this at its end.
#pragma once

#include <cstdint>

#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/LiteralText.h"

#pragma GCC visibility push(default)

namespace qz {
namespace detail {

/// A String written in the source.
class LiteralString final : public NSString {
 public:
  constexpr LiteralString(const char16_t* units, std::uint32_t length) noexcept
      : NSString(ImmortalTag(), units, length, hashUnits(units, length)) {}
};

/// Holds a literal without ever destroying it. A constexpr variable of this type registers nothing
/// with the end of the program, so literals may be used by the last code to run; what changes in a
/// literal (the flags of its header) is mutable.
union Immortal {
  LiteralString string;
  constexpr Immortal(const char16_t* units, std::uint32_t length) noexcept
      : string(units, length) {}
  constexpr ~Immortal() {}
};

template <FixedText Text>
struct LiteralHolder {
  static constexpr LiteralUnits<sizeof(Text.text)> units{Text};
  static constexpr Immortal holder{units.units, units.count};
};

/// The literal as a constant, for names that are initialised with it.
template <FixedText Text>
constexpr NSString* literal() noexcept {
  return const_cast<LiteralString*>(&LiteralHolder<Text>::holder.string);
}

}  // namespace detail

inline namespace literals {
/// The String written in the source: one immortal Object per text, made while compiling.
///
/// Not constexpr: clang 14 crashes when it tries to explain why a list of such constants is none.
template <detail::FixedText Text>
NSString* operator""_ns() noexcept {
  return detail::literal<Text>();
}
}  // namespace literals

}  // namespace qz

#pragma GCC visibility pop
