/// @file
/// Private: reads durations such as "1:02:05.5".
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

/// Reads one text, from its end to its start. Integers are found where an NSScanner on the text
/// would find them, without making one.
class HmsReader {
 public:
  explicit HmsReader(NSString* text) : string_(text), text_(text->view()) {}

  void read();

  /// What was read; after an error, what had been summed up before.
  Ref<NSNumber> value() const;

  /// Nil when nothing is wrong.
  Ref<NSString> error() const { return error_; }

 private:
  struct Integer {
    bool isThere = false;
    std::int32_t value = 0;
    std::size_t end = 0;
  };
  Integer integerAt(std::size_t location) const noexcept;
  std::size_t skipBlanks(std::size_t location) const noexcept;
  bool startsWithMinus() const;
  void readFraction();
  void readComponent(std::size_t index);

  NSString* string_;
  std::u16string_view text_;
  std::size_t start_ = 0;  // the working range
  std::size_t end_ = 0;
  bool isNegative_ = false;
  std::uint32_t total_ = 0;
  double fraction_ = 0;
  Ref<NSString> error_;
};

}  // namespace qz::detail
