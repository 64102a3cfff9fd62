/// @file
/// The diagnostic stream: what the library has to say to whoever runs the program.
#pragma once

#include <string_view>

#pragma GCC visibility push(default)

namespace qz {

/// Takes one message, UTF-8, without a line end. Called from any thread, with no lock held. Must
/// not throw.
using NSDiagnosticFunction = void (*)(std::string_view message);

/// Has diagnostics handed to `function` instead of being written to standard error; null restores
/// that. Answers what was there before. Any thread.
NSDiagnosticFunction NSSetDiagnosticFunction(NSDiagnosticFunction function) noexcept;

namespace detail {

/// Hands a message to the function in place. Such messages are rare: a file that cannot be used is
/// reported once.
void diagnose(std::string_view message) noexcept;

}  // namespace detail
}  // namespace qz

#pragma GCC visibility pop
