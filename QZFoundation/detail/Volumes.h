/// @file
/// Private: from the mount table to Objects.
#pragma once

#include <optional>

#include "Platform/System/NSMountTable.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

/// The mount that `path` lies on; none for nil, for what can be no path, and when the system
/// refuses.
std::optional<NSMountRecord> mountRecordForPath(NSString* path);

/// The label as a String, with the zero that terminates it: deliberate, readers of volume names
/// have always had it. Nil when there is none.
Ref<NSString> volumeNameOf(const NSVolumeAttributes& attributes);

/// Nil for no time.
Ref<NSDate> dateOfSeconds(std::optional<std::int64_t> seconds);

}  // namespace qz::detail
