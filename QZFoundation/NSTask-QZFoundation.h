/// @file
/// The output of other programs. The receiver must not be nil.
///
///     Ref<NSData> listing =
///         dataByRunningTask_withArguments("/bin/ls"_ns, NSArray::arrayWithObject("-l"_ns));
#pragma once

#include "Platform/System/NSTask.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSData;
class NSFileHandle;

/// What the program at `path` writes to its standard output, to the end: until it, and whatever it
/// started that still holds that output, has closed it. Empty when it writes nothing; its standard
/// error and how it ended are not looked at. Does not wait for it to end.
///
/// Raises NSInvalidArgumentException when it cannot be launched (see NSTask.h), NSMallocException
/// when the output is longer than Data may be; the program then loses its reader.
Ref<NSData> dataByRunningTask_withArguments(NSString* path, NSArray* arguments);

/// Launches a task that has been set up, with its standard output copied to `handle` as it comes,
/// to the end of it. Raises as `launch` and `writeData:` do, and NSInvalidArgumentException for a
/// nil handle.
void launchAndWriteStandardOutputToFileHandle(NSTask* self, NSFileHandle* handle);

}  // namespace qz

#pragma GCC visibility pop
