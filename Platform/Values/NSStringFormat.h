/// @file
/// Format arguments: what a `%` in a format String can print.
///
///     NSString::stringWithFormat("%@ has %d of %.1f"_ns, name, count, 2.5)
///
/// Each argument brings its own type, so a format that does not fit its arguments prints something
/// odd and never reads memory that it should not:
///
/// - `%d %i` print the argument's value in decimal, `%u %x %X %o` without a sign: a negative value
///   reads as the unsigned one of the same size (32 bits at least). The value is never cut to the
///   size the conversion has in C: `%d` prints all of a 64-bit integer. Of the length modifiers
///   `hh h l ll q z t j L`, `hh` and `h` cut to 8 and 16 bits as in C; the others mean nothing.
/// - `%f %F %e %E %g %G %a %A` print numbers as C does in its own locale: "." is the decimal point
///   everywhere. A `long double` counts as the nearest `double`.
/// - `%@` prints an Object's description, "(null)" for nil. `%s` and `%S` print text, `%c` and `%C`
///   a character: a code unit, or two for a code point above U+FFFF. `%p` prints an address.
/// - Flags are those of C, of which the apostrophe does nothing; a width or precision may be `*`,
///   and `%2$@` and `*2$` name an argument by its position. A precision cuts texts: bytes of UTF-8
///   text, code units of other text, characters never in two. Widths count code units. A width or
///   precision above 1000000 raises NSInvalidArgumentException.
/// - An argument of another kind than the conversion expects prints as what it is: text as text,
///   an Object as its description, a number in decimal. Numbers of one kind are converted for
///   conversions of the other, `*` without an integer is ignored, a conversion without an
///   argument prints nothing, `%@` and `%s` print "(null)".
/// - `%%` prints "%". Any other conversion, `%n` among them, is copied as it stands.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>

#include "Platform/Runtime/NSObject.h"
#include "Platform/Runtime/detail/Word.h"

#pragma GCC visibility push(default)

namespace qz {

namespace detail {

template <class T>
inline constexpr bool isCharacterType =
    std::is_same_v<T, char> || std::is_same_v<T, char8_t> || std::is_same_v<T, char16_t> ||
    std::is_same_v<T, char32_t> || std::is_same_v<T, wchar_t>;

template <class T>
inline constexpr bool isUnscopedEnum = std::is_enum_v<T>&& std::is_convertible_v<T, long long>;

template <class T>
inline constexpr bool isFormatText = std::is_convertible_v<const T&, std::string_view> ||
                                     std::is_convertible_v<const T&, std::u8string_view> ||
                                     std::is_convertible_v<const T&, std::u16string_view>;

}  // namespace detail

/// What may be handed to a format: Objects, integers, floating values, characters, truth values,
/// texts (`std::string`, `std::u16string_view`, zero-terminated ones, …), `void*` and nil.
template <class T>
concept FormatValue = detail::isObjectType<T> || std::is_arithmetic_v<T> ||
    detail::isUnscopedEnum<T> || detail::isFormatText<T> || std::is_same_v<T, std::nullptr_t> ||
    (std::is_pointer_v<T>&& std::is_void_v<std::remove_pointer_t<T>>);

/// One argument of a format. Borrows texts and Objects, which must outlive it.
class FormatArgument {
 public:
  /// What an argument is, and how its text is given.
  enum class Kind : std::uint8_t {
    Object,
    Signed,
    Unsigned,
    Character,
    Floating,
    Utf8,     ///< Bytes of known length.
    CString,  ///< Bytes up to a zero.
    Units,    ///< UTF-16.
    Address,
  };

  /// Copies scalars, borrows the rest.
  template <FormatValue T>
  FormatArgument(const T& value) noexcept;  // NOLINT(google-explicit-constructor)

  /// Which of the readings below there is.
  Kind kind() const noexcept { return kind_; }

  /// Of an integer or a character: how many bytes its type has.
  std::uint8_t size() const noexcept { return size_; }

  /// Of an integer or a character: its bits, sign-extended for a signed type.
  std::uint64_t bits() const noexcept { return value_.bits; }

  /// The argument, for those of the kind only.
  NSObject* object() const noexcept { return const_cast<NSObject*>(value_.object); }
  double floating() const noexcept { return value_.floating; }
  const void* address() const noexcept { return value_.address; }
  const char* cString() const noexcept { return static_cast<const char*>(value_.address); }
  std::string_view utf8() const noexcept { return {value_.text.utf8, value_.text.length}; }
  std::u16string_view units() const noexcept { return {value_.text.units, value_.text.length}; }

 private:
  void setText(std::string_view text) noexcept {
    kind_ = Kind::Utf8;
    value_.text.utf8 = text.data();
    value_.text.length = text.size();
  }
  void setText(std::u16string_view text) noexcept {
    kind_ = Kind::Units;
    value_.text.units = text.data();
    value_.text.length = text.size();
  }

  union {
    const NSObject* object;
    std::uint64_t bits;
    double floating;
    const void* address;
    struct {
      union {
        const char* utf8;
        const char16_t* units;
      };
      std::size_t length;
    } text;
  } value_{nullptr};
  Kind kind_ = Kind::Object;
  std::uint8_t size_ = 0;
};

/// A list of arguments, borrowed for the length of the call.
using FormatArguments = std::span<const FormatArgument>;

/// Packs arguments for the operations that take a list. The texts and Objects must outlive it:
///
///     log->logWithKey_format_args(key, format, formatArguments(path, size));
template <FormatValue... Args>
std::array<FormatArgument, sizeof...(Args)> formatArguments(const Args&... args) noexcept {
  return {FormatArgument(args)...};
}

template <FormatValue T>
FormatArgument::FormatArgument(const T& value) noexcept {
  using E = std::remove_cv_t<std::remove_pointer_t<std::decay_t<T>>>;
  if constexpr (std::is_same_v<T, std::nullptr_t>) {
    value_.object = nullptr;
  } else if constexpr (detail::isRef<T>) {
    value_.object = value.get();
  } else if constexpr (detail::isObjectType<T>) {
    value_.object = value;
  } else if constexpr (std::is_floating_point_v<T>) {
    kind_ = Kind::Floating;
    value_.floating = static_cast<double>(value);
  } else if constexpr (detail::isUnscopedEnum<T>) {
    *this = FormatArgument(static_cast<std::underlying_type_t<T>>(value));
  } else if constexpr (std::is_arithmetic_v<T>) {
    constexpr bool character = detail::isCharacterType<T>;
    kind_ = character ? Kind::Character : std::is_signed_v<T> ? Kind::Signed : Kind::Unsigned;
    size_ = sizeof(T);
    value_.bits = static_cast<std::uint64_t>(value);
  } else if constexpr (std::is_array_v<T> && std::is_same_v<E, char>) {
    // The text ends with the array, zero or none.
    setText(std::string_view(value, ::strnlen(value, std::extent_v<T>)));
  } else if constexpr (std::is_pointer_v<T> && std::is_same_v<E, char>) {
    kind_ = Kind::CString;
    value_.address = value;
  } else if constexpr (std::is_pointer_v<T> && detail::isFormatText<T>) {
    if (value == nullptr) return;  // prints as nil does
    if constexpr (std::is_same_v<E, char16_t>) {
      setText(std::u16string_view(value));
    } else {
      const std::u8string_view text(value);
      setText(std::string_view(reinterpret_cast<const char*>(text.data()), text.size()));
    }
  } else if constexpr (std::is_pointer_v<T>) {
    kind_ = Kind::Address;
    value_.address = const_cast<const void*>(static_cast<const volatile void*>(value));
  } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
    setText(std::string_view(value));
  } else if constexpr (std::is_convertible_v<const T&, std::u16string_view>) {
    setText(std::u16string_view(value));
  } else {
    const std::u8string_view text(value);
    setText(std::string_view(reinterpret_cast<const char*>(text.data()), text.size()));
  }
}

}  // namespace qz

#pragma GCC visibility pop
