/// @file
/// Encodings: how a text is told in bytes.
#pragma once

#include <cstdint>
#include <string_view>

#pragma GCC visibility push(default)

namespace qz {

/// The encodings that have a number for ever. Any other that ICU knows has one too, which
/// `encodingNamed` answers and which holds for the ICU it was asked of.
///
/// The ones without an order in their name begin with a byte-order mark when they are written, in
/// this machine's order; when they are read, a mark decides and goes, and without one the first
/// byte is the highest. Those with an order have no mark, and one that is read stays as U+FEFF.
enum NSStringEncoding : std::uint32_t {
  NSASCIIStringEncoding = 1,
  NSUTF8StringEncoding = 4,
  NSISOLatin1StringEncoding = 5,
  NSUTF16StringEncoding = 10,
  NSUnicodeStringEncoding = 10,
  NSUTF16BigEndianStringEncoding = 0x90000100,
  NSUTF16LittleEndianStringEncoding = 0x94000100,
  NSUTF32StringEncoding = 0x8C000100,
  NSUTF32BigEndianStringEncoding = 0x98000100,
  NSUTF32LittleEndianStringEncoding = 0x9C000100,
};

/// The encoding with this name, such as "windows-1252" or "Shift_JIS"; case and punctuation do not
/// matter. 0 when there is none.
std::uint32_t encodingNamed(std::string_view name);

}  // namespace qz

#pragma GCC visibility pop
