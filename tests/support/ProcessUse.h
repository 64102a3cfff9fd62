// What this process holds of the system, for tests of what must not grow.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>

#include "Platform/Runtime/detail/Sanitizers.h"

namespace qz::test {

inline long openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// Of memory; always 0 under the sanitizers, which hold on to what was freed.
inline long residentPages() {
  if (detail::watchesAddresses || detail::watchesThreads) return 0;
  long all = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> all >> resident;
  return resident;
}

}  // namespace qz::test
