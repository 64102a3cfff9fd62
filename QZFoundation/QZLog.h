/// @file
/// Log files whose lines are switched on and off by key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "Platform/Runtime/Derives.h"
#include "Platform/System/NSFileHandle.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/LogStamp.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSData;
class NSMutableSet;

/// Writes lines with the time in front to a file. Each line has a key; only lines whose key is
/// enabled, or all lines when the key "all" is, are written.
///
///     auto log = QZLog::initWithFilePath(path);
///     log->setKey_enabled("import"_ns, true);
///     log->logWithKey_format("import"_ns, "%@: %d rows"_ns, name, count);
///
///     07-03-14 09:26:53.589 people.csv: 1200 rows
///
/// The time is local, with milliseconds; the text is UTF-8 and followed by a line feed. The file is
/// made when the first line is written, and emptied then unless `appendToLog`.
///
/// Nothing here fails: what cannot be written is lost, and the next line tries again. Lines go to
/// the end of the file whatever other processes do with it, each in one piece. When the file is
/// moved or removed, as log rotation does, a new one is made within about a second, and what was
/// written until then stays in the old one.
///
/// `logWithKey:message:` hands a line over as three pieces, the time, the message and the line
/// feed, each through a message `logData:`; a class below that overrides it, and an implementation
/// put in its place, see the three. `logData:` as it is here collects them and writes once.
///
/// One thread at a time may use a log.
class QZLog : public Derives<QZLog, NSObject> {
 public:
  static void describe(ClassDescription<QZLog>& is);

  /// Without a file: writes nothing.
  QZLog();
  ~QZLog() override;

  /// The keys that the user default "QZDebug" lists, a String or an Array of Strings, are enabled.
  /// The file is not touched.
  static Ref<QZLog> initWithFilePath(NSString* path);

  /// Where the file is, or will be when the first line is written; nil for a log without a file.
  Ref<NSString> logFilePath() const { return logFilePath_; }

  /// Whether what the file has is kept when it is opened. False unless set; counts the next time
  /// that it is opened, so a log that was closed starts anew unless this is set.
  bool appendToLog() const noexcept { return appendToLog_; }
  void setAppendToLog(bool append) noexcept { appendToLog_ = append; }

  /// Whether the key itself is enabled: that "all" is does not count here.
  bool isKeyEnabled(NSString* key) const;

  /// Raises NSInvalidArgumentException for a nil key.
  void setKey_enabled(NSString* key, bool enabled);

  // Writing ---------------------------------------------------------------------------------------
  // By Selector, formats without an `args:` have no arguments.

  /// A line of a format and its arguments; see NSStringFormat.h. What is not written is not put
  /// together either.
  void logWithKey_format_args(NSString* key, NSString* format, FormatArguments arguments);
  template <FormatValue... Args>
  void logWithKey_format(NSString* key, NSString* format, const Args&... args) {
    logWithKey_format_args(key, format, formatArguments(args...));
  }

  /// A line. A nil message is an empty one.
  virtual void logWithKey_message(NSString* key, NSString* message);

  /// Lines with the key "all": written when that one is enabled, not always.
  void logMessage(NSString* message);
  template <FormatValue... Args>
  void logFormat(NSString* format, const Args&... args) {
    logWithKey_format_args("all"_ns, format, formatArguments(args...));
  }

  /// Writes bytes, whatever keys are enabled; opens the file if need be. Nothing for nil.
  virtual void logData(NSData* data);

  // The file --------------------------------------------------------------------------------------

  /// Opens the file, and closes it; nothing when that is how it is.
  virtual void openLog();
  virtual void closeLog();

  /// Closes and removes the file; the next line makes a new one.
  void clearLog();

  /// The handle that is written to; nil while the file is closed.
  Ref<NSFileHandle> logOutputHandle() const { return logOutputHandle_; }

 private:
  bool isWritten(NSString* key) const;
  std::string takeLine();
  void write(std::span<const std::byte> bytes);
  void open(bool keepsContents);
  void followFile();

  Ref<NSString> logFilePath_;
  Ref<NSMutableSet> enabledKeys_;
  bool appendToLog_ = false;
  bool collects_ = false;  // a line is being put together
  Ref<NSFileHandle> logOutputHandle_;
  std::string line_;
  detail::LogStamp stamp_;
  std::int64_t followed_ = 0;  // the second in which the file was last looked for
};

}  // namespace qz

#pragma GCC visibility pop
