/// @file
/// Private: values of the lower storeys in archives.
#pragma once

namespace qz::detail {

/// Enters `encodeWithCoder:` and `initWithCoder:` for classes whose own files lie below the coders:
/// sort descriptors, URLs, UUIDs and index paths.
void describeArchivedValues();

}  // namespace qz::detail
