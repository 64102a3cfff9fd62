/// @file
/// Operations of Data: compression, and identifiers as bytes.
#pragma once

#include "Platform/Values/NSData.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// The bytes as a zlib stream (RFC 1950) at the default level, and nothing around it: whoever
/// decompresses must know, or bound, the length. Nil when that fails, which takes want of memory.
/// Receivers must not be nil. Any thread.
Ref<NSData> compressedData(NSData* self);

/// Writes the bytes to a gzip file (RFC 1952), in place of what was there. How many were taken, 0
/// when writing fails. Where the file cannot be opened, and for a nil path, the error number that
/// zlib keeps then: -2, or 0 if it keeps none. What fails no sooner than closing the file, as on a
/// full disk, goes unnoticed.
int writeToGzipFile(NSData* self, NSString* path);

/// The 16 bytes of a new universally unique identifier, in the order in which its text shows them.
Ref<NSData> UUIDData();

}  // namespace qz

#pragma GCC visibility pop
