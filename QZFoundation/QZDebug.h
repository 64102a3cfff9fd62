/// @file
/// The debug log: one log file for the whole process, whose lines a user default switches on.
///
///     QZDebugLog("progress"_ns, "%d of %d"_ns, done, all);
///
/// The file is "Desktop/NAME.log" in the user's home directory, where NAME is the application's
/// name. It is made anew by each run, and nothing is written unless the user default "QZDebug" (a
/// String, or an Array of Strings) names the key or "all", or the program enables it.
///
/// The log comes into being with the first call of any of these functions, which removes the file
/// of the run before. Any thread may call these; lines are for one thread at a time, as QZLog says.
#pragma once

#include "QZFoundation/QZLog.h"

#pragma GCC visibility push(default)

namespace qz {

/// Makes the log, unless it is there.
void QZDebugInitialize();

/// Raises NSInvalidArgumentException for a nil key.
void QZSetDebugEnabled(NSString* key, bool enabled);

/// Whether the key itself is enabled: that "all" is does not count here.
bool QZIsDebugEnabled(NSString* key);

/// The log; never nil. Calls after QZDebugClose have another one.
Ref<QZLog> QZGetDebugLog();

/// Writes a line when its key, or "all", is enabled. NSStringFormat.h has the formats.
template <FormatValue... Args>
void QZDebugLog(NSString* key, NSString* format, const Args&... args) {
  QZGetDebugLog()->logWithKey_format_args(key, format, formatArguments(args...));
}

/// Closes the file and forgets the log; the next call starts a new one, without the lines of this.
void QZDebugClose();

/// Makes the log, and has no other effect: the report on the machine is set up and not run.
void QZDebugLogSystemProfile();

}  // namespace qz

#pragma GCC visibility pop
