#include "Platform/System/Diagnostics.h"

#include <atomic>
#include <cstdio>

namespace qz {
namespace {

void writeToStandardError(std::string_view message) {
  std::fprintf(stderr, "%.*s\n", static_cast<int>(message.size()), message.data());
}

std::atomic<NSDiagnosticFunction> current{&writeToStandardError};

}  // namespace

NSDiagnosticFunction NSSetDiagnosticFunction(NSDiagnosticFunction function) noexcept {
  return current.exchange(function != nullptr ? function : &writeToStandardError);
}

void detail::diagnose(std::string_view message) noexcept { current.load()(message); }

}  // namespace qz
