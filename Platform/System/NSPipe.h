/// @file
/// Pipes: what one process writes another one reads.
#pragma once

#include "Platform/System/NSFileHandle.h"

#pragma GCC visibility push(default)

namespace qz {

/// A pipe with its two ends. An NSTask that is given one as a standard stream passes the far end on
/// and closes this process's copy of it, so that the near end sees when the task is done.
///
///     auto pipe = NSPipe::pipe();
///     task->setStandardOutput(pipe);
///     task->launch();
///     Ref<NSData> output = pipe->fileHandleForReading()->readDataToEndOfFile();
class NSPipe : public Derives<NSPipe, NSObject> {
 public:
  static void describe(ClassDescription<NSPipe>& is);

  /// A new pipe; both ends close with it and their handles. Raises NSFileHandleOperationException
  /// when the process has too many descriptors open.
  NSPipe();
  static Ref<NSPipe> pipe();

  /// What is written to the second comes out of the first. Never nil.
  Ref<NSFileHandle> fileHandleForReading() const { return reading_; }
  Ref<NSFileHandle> fileHandleForWriting() const { return writing_; }

 private:
  Ref<NSFileHandle> reading_;
  Ref<NSFileHandle> writing_;
};

}  // namespace qz

#pragma GCC visibility pop
