// What the library has to say to whoever runs the program, caught for a test.
#pragma once

#include "Platform/System/Diagnostics.h"
#include "tests/support/Test.h"

namespace qz::test {

/// Takes all diagnostics while it lives; one at a time.
class Diagnostics {
 public:
  Diagnostics() {
    current_ = this;
    NSSetDiagnosticFunction([](std::string_view message) {
      const std::lock_guard guard(current_->mutex_);
      current_->said_.append(message).append("\n");
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
  static inline Diagnostics* current_ = nullptr;
  mutable std::mutex mutex_;
  std::string said_;
};

}  // namespace qz::test
