/// @file
/// Selectors: the interned names of operations.
///
///     Selector byName = "compare:"_sel;                      // a load, no look-up
///     Selector other  = NSSelectorFromString("compare:"_ns);  // the same Selector
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string_view>

#pragma GCC visibility push(default)

namespace qz {

namespace detail {

struct DispatchTable;
extern const DispatchTable emptyDispatchTable;

/// One per distinct name; never freed, so its address is the Selector's identity.
struct SelectorRecord {
  std::string_view name;
  std::uint32_t arguments;  ///< Number of colons.
  mutable std::atomic<const DispatchTable*> dispatch{&emptyDispatchTable};
};

const SelectorRecord* internSelector(std::string_view name);

/// A character array usable as a template argument.
template <std::size_t N>
struct FixedText {
  char text[N];
  constexpr FixedText(const char (&source)[N]) noexcept {  // NOLINT(google-explicit-constructor)
    std::copy_n(source, N, text);
  }
  constexpr std::string_view view() const noexcept { return {text, N - 1}; }
};

template <FixedText Name>
inline constinit std::atomic<const SelectorRecord*> selectorLiteral{nullptr};

}  // namespace detail

/// The name of an operation, interned: copying and comparing it costs what a pointer costs.
///
/// Names are ASCII or UTF-8, at most one per distinct text, never freed. All members may be called
/// from any thread.
class Selector {
 public:
  /// The null Selector: no operation. Sending it raises as an unknown Selector does.
  constexpr Selector() noexcept = default;

  /// For the run-time, which has one record for each name.
  constexpr explicit Selector(const detail::SelectorRecord* record) noexcept : record_(record) {}

  /// The Selector of that name, made on first use.
  static Selector named(std::string_view name) { return Selector(detail::internSelector(name)); }

  /// The name, with its colons; empty for the null Selector. Valid for ever.
  std::string_view name() const noexcept { return record_ ? record_->name : std::string_view(); }

  /// How many arguments the name calls for: its colons.
  std::uint32_t numberOfArguments() const noexcept { return record_ ? record_->arguments : 0; }

  /// Not the null Selector.
  explicit operator bool() const noexcept { return record_ != nullptr; }
  friend bool operator==(Selector, Selector) noexcept = default;

  /// The run-time's record of the name, one for each; null for the null Selector.
  const detail::SelectorRecord* record() const noexcept { return record_; }

 private:
  const detail::SelectorRecord* record_ = nullptr;
};

/// The name; "(null)" for the null Selector.
std::ostream& operator<<(std::ostream& out, Selector selector);

/// `"name"_sel`, a Selector, and `"text"_ns`, a String.
inline namespace literals {
/// The Selector of a name written in the source; after the first use it costs one load.
template <detail::FixedText Name>
Selector operator""_sel() {
  auto& slot = detail::selectorLiteral<Name>;
  const detail::SelectorRecord* record = slot.load(std::memory_order_acquire);
  if (record == nullptr) [[unlikely]] {
    record = detail::internSelector(Name.view());
    slot.store(record, std::memory_order_release);
  }
  return Selector(record);
}
}  // namespace literals

}  // namespace qz

/// Selectors as keys of the C++ library's containers.
template <>
struct std::hash<qz::Selector> {
  /// Differs from one run to the next.
  std::size_t operator()(qz::Selector s) const noexcept {
    return std::hash<const void*>()(s.record());
  }
};

#pragma GCC visibility pop
