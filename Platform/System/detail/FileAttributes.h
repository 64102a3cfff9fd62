/// @file
/// Private: attribute Dictionaries made of what the system tells, and carried out.
#pragma once

#include "Platform/System/NSFileAttributes.h"

namespace qz::detail {

/// The attributes of what is at `path`; nil with `errno` when it cannot be asked.
Ref<NSDictionary> attributesOfFile(const char* path, bool followsLinks);

/// Changes what `attributes` has of those that can be changed, links followed; other keys and
/// Objects of other classes count for nothing, nil for an empty Dictionary. In the order owner,
/// creation date, permissions, modification date; the first that fails ends it. 0, or an `errno`.
int changeAttributes(const char* path, NSDictionary* attributes);

/// Sets the creation date that `attributesOfFile` reads. 0, or the `errno` with which the file
/// system refused. `nanoseconds` are below 1000000000.
int setCreationTime(const char* path, std::int64_t seconds, std::uint32_t nanoseconds);

}  // namespace qz::detail
