/// @file
/// Private: how a library's classes and operations come to be known.
///
/// Each library has one function that registers everything it has, in order. Every public header
/// includes a hook that names that function, so a program that links the library statically keeps
/// it; the function itself runs once, before the first look-up, never among static constructors.
#pragma once

#pragma GCC visibility push(default)

namespace qz::detail {

struct LibraryHook {
  void (*registerAll)();
  LibraryHook* next = nullptr;

  /// Queues `registerAll` for the next look-up. May run before any other static constructor.
  explicit LibraryHook(void (*function)()) noexcept;
};

}  // namespace qz::detail

namespace qz {

/// Registers the platform's classes, in order. Called by the run-time before the first look-up.
void registerPlatform();

}  // namespace qz

#pragma GCC visibility pop
