/// @file
/// The texts: the same for every side of a comparison, and in every run.
#pragma once

#include <string>

namespace qz::bench {

/// 1,000,000 units of lower-case words with a comma and a blank behind every sixth, a blank behind
/// the others.
std::u16string wordText();

/// About 1 MB of UTF-8: ASCII words, and Latin, Cyrillic, Chinese and emoji mixed.
std::string asciiText();
std::string mixedText();

/// 1,000,000 lines of 0 to 60 bytes.
std::string lineText();

/// About 20 MB of records, each on a line, with three fields that a tab ends each: names, versions
/// and sections of packages.
std::string recordText();

}  // namespace qz::bench
