// What has to hold of an input; where it does not, the fuzzer has found something.
#pragma once

#include <cstdlib>

namespace qz::fuzz {

inline void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace qz::fuzz
