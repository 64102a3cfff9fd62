/// @file
/// What failed last in an operation of the file manager that tells a handler, as an Error.
#pragma once

#include <mutex>

#include "Platform/System/NSFileManager.h"
#include "Platform/Values/NSError.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// A handler for the file manager's operations: keeps the failure it is told of, and has the
/// operation stop.
///
///     auto handler = QZFileManagerErrorHandler::sharedHandler();
///     manager->removeFileAtPath_handler(path, handler);
///     if (Ref<NSError> error = handler->lastError()) show(error);
///
/// There is one slot: each failure takes the place of the one before, and reading empties it. What
/// nobody reads is read by whoever asks next. Threads that use the shared handler at the same time
/// can get each other's Errors; who has to know runs such operations on one thread, or with a
/// handler of his own.
class QZFileManagerErrorHandler : public Derives<QZFileManagerErrorHandler, NSObject> {
 public:
  static void describe(ClassDescription<QZFileManagerErrorHandler>& is);

  /// The one of the process, made at the first call and never released.
  static Ref<QZFileManagerErrorHandler> sharedHandler();

  /// The file manager's callback. Keeps an Error in NSPOSIXErrorDomain with the code in `errno`,
  /// and with what `failure` has under "Error" as its description (no user information without).
  /// Always false. Both may be nil.
  bool fileManager_shouldProceedAfterError(NSFileManager* manager, NSDictionary* failure);

  /// Keeps `error`, or nothing for nil.
  void setLastError(NSError* error);

  /// Hands the Error over: it is not kept any longer. Nil when there is none.
  Ref<NSError> lastError();

 private:
  std::mutex mutex_;
  Ref<NSError> lastError_;
};

}  // namespace qz

#pragma GCC visibility pop
