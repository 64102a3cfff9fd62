// Any bytes as the kernel's list of mounts: every entry that comes out has a place, a kind, and is
// found again by its own path.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "Platform/System/detail/MountInfo.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto entries =
      qz::detail::readMountInfo(std::string_view(reinterpret_cast<const char*>(data), size));
  for (const auto& each : entries) {
    const auto* found = qz::detail::deepestMount(entries, each.record.mountedOn);
    if (!each.record.mountedOn.starts_with('/') || each.record.type.empty() || found == nullptr ||
        found->record.mountedOn.size() > each.record.mountedOn.size())
      std::abort();
  }
  return 0;
}
