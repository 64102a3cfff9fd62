// What this process holds of the system, for tests of what must not grow.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>

namespace qz::test {

inline long openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// Of memory; always 0 under the sanitizers, which hold on to what was freed.
inline long residentPages() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return 0;
#else
  long all = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> all >> resident;
  return resident;
#endif
}

}  // namespace qz::test
