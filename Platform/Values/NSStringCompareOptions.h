/// @file
/// Compare options: what a comparison or a search overlooks, and where it looks.
#pragma once

#include <cstdint>

#pragma GCC visibility push(default)

namespace qz {

/// How texts are compared and searched; added together. Any other bit means nothing.
enum NSStringCompareOptions : std::uint32_t {
  NSCaseInsensitiveSearch = 1,  ///< By Unicode's full case folding: "ß" is the same as "SS".
  NSLiteralSearch = 2,          ///< Unit by unit. So is everything that no option loosens.
  NSBackwardsSearch = 4,        ///< Searches: the last place instead of the first.
  NSAnchoredSearch = 8,         ///< Searches: at the range's start only, or end when backwards.
  NSNumericSearch = 64,         ///< Comparisons: runs of 0 … 9 by value, "file9" before "file10".
  NSDiacriticInsensitiveSearch = 128,  ///< Accents are overlooked: "é" is the same as "e".
  NSWidthInsensitiveSearch = 256,      ///< Full-width and half-width forms are the usual ones.
};

}  // namespace qz

#pragma GCC visibility pop
