/// @file
/// Private: the kernel's list of mounts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/System/NSMountTable.h"

namespace qz::detail {

struct MountInfoEntry {
  std::uint64_t identifier = 0;  // of the mount; statx(2) tells that of a file
  NSMountRecord record;
};

/// The entries of a text such as /proc/self/mountinfo (proc(5)). Lines of another form are left
/// out.
std::vector<MountInfoEntry> readMountInfo(std::string_view text);

/// The entry whose mount a path without symbolic links lies on, by the text alone: the deepest, and
/// of several in one place the last one. Null when there is none.
const MountInfoEntry* deepestMount(const std::vector<MountInfoEntry>& entries,
                                   std::string_view path);

}  // namespace qz::detail
