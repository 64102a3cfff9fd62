/// @file
/// The running process, and the machine it runs on.
#pragma once

#include <cstdint>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;
class NSDictionary;

/// What there is to know about this process. There is one such Object; any thread.
class NSProcessInfo final : public Derives<NSProcessInfo, NSObject> {
 public:
  static void describe(ClassDescription<NSProcessInfo>& is);

  /// Always the same Object.
  static Ref<NSProcessInfo> processInfo();

  /// The words of the command line, the program's own name first. Bytes that are not UTF-8 are kept
  /// as in `stringWithFileSystemRepresentation`.
  Ref<NSArray> arguments() const;

  /// The variables by name, as they are now; later changes do not show. Of a name that comes twice
  /// the first counts, as in getenv(3).
  Ref<NSDictionary> environment() const;

  /// The name of the program's file unless another was set; nil and "" go back to it.
  Ref<NSString> processName() const;
  void setProcessName(NSString* name);

  /// As getpid(2) tells it: another one in a child after fork(2).
  std::int32_t processIdentifier() const noexcept;

  /// "localhost" when the machine has none.
  Ref<NSString> hostName() const;

  /// Different each time, on every machine.
  Ref<NSString> globallyUniqueString() const;

  /// "Debian GNU/Linux 12 (bookworm)", from os-release(5); the kernel's name and release where
  /// there is no such file.
  Ref<NSString> operatingSystemVersionString() const;

  /// Processors that the machine has, and that this process may use.
  std::uint32_t processorCount() const noexcept;
  std::uint32_t activeProcessorCount() const noexcept;

  /// In bytes.
  std::uint64_t physicalMemory() const noexcept;

  /// Seconds since the machine was started, those it slept not counted.
  double systemUptime() const noexcept;
};

}  // namespace qz

#pragma GCC visibility pop
