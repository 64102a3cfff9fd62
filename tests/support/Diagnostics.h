// What the library has to say to whoever runs the program, caught for a test.
#pragma once

#include "Platform/System/Diagnostics.h"
#include "tests/support/Test.h"

namespace qz::test {

/// Takes all diagnostics while it lives; one at a time. A thread may still be telling when it goes,
/// so what is told has a place that stays.
class Diagnostics {
 public:
  Diagnostics() {
    clear();
    NSSetDiagnosticFunction([](std::string_view message) {
      const std::lock_guard guard(mutex_);
      said_.append(message).append("\n");
    });
  }
  Diagnostics(const Diagnostics&) = delete;
  Diagnostics& operator=(const Diagnostics&) = delete;
  ~Diagnostics() { NSSetDiagnosticFunction(nullptr); }

  /// All of them until now, each with a line end.
  std::string said() const {
    const std::lock_guard guard(mutex_);
    return said_;
  }

 private:
  static void clear() {
    const std::lock_guard guard(mutex_);
    said_.clear();
  }

  static inline std::mutex mutex_;
  static inline std::string said_;
};

}  // namespace qz::test
