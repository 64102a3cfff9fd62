/// @file
/// Private: where text is put together before its length is known.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "Platform/Runtime/Ref.h"

#pragma GCC visibility push(default)
namespace qz {
class NSString;
}
#pragma GCC visibility pop

namespace qz::detail {

/// A growing row of code units; short ones take no memory of their own. Growing beyond the longest
/// String raises NSMallocException.
class UnitBuffer {
 public:
  UnitBuffer() noexcept = default;
  UnitBuffer(const UnitBuffer&) = delete;
  UnitBuffer& operator=(const UnitBuffer&) = delete;
  ~UnitBuffer();

  std::size_t size() const noexcept { return size_; }
  std::size_t capacity() const noexcept { return capacity_; }
  char16_t* data() noexcept { return data_; }
  std::u16string_view view() const noexcept { return {data_, size_}; }

  /// Makes room for `count` more units and answers where they go; `commit` says how many came.
  char16_t* room(std::size_t count) {
    if (count > capacity_ - size_) grow(count);
    return data_ + size_;
  }
  void commit(const char16_t* end) noexcept { size_ = static_cast<std::size_t>(end - data_); }

  void append(char16_t unit) { commit(std::fill_n(room(1), 1, unit)); }
  void append(std::u16string_view units) {
    commit(std::copy(units.begin(), units.end(), room(units.size())));
  }
  void append(std::size_t count, char16_t unit) { commit(std::fill_n(room(count), count, unit)); }
  void appendAscii(std::string_view text) {
    commit(std::transform(text.begin(), text.end(), room(text.size()),
                          [](char c) { return static_cast<char16_t>(c); }));
  }
  void appendUtf8(std::string_view bytes);

  /// A String of the units; a large buffer is handed over, which leaves this empty.
  Ref<NSString> toString();

 private:
  void grow(std::size_t count);

  static constexpr std::size_t inlineCapacity = 256;

  char16_t* data_ = inline_;
  std::size_t size_ = 0;
  std::size_t capacity_ = inlineCapacity;
  char16_t inline_[inlineCapacity];
};

}  // namespace qz::detail
