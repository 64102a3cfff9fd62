/// @file
/// How much memory a collection takes, whatever allocators it uses.
#pragma once

#include <cstddef>

namespace qz::bench {

/// By how many bytes the resident memory of a fresh copy of this process grows for each run of
/// `build(count)`, the mean of several. Call it while this process has one thread.
double residentBytes(void (*build)(std::size_t count), std::size_t count);

}  // namespace qz::bench
