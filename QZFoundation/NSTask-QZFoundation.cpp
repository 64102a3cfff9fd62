#include "QZFoundation/NSTask-QZFoundation.h"

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/System/NSPipe.h"
#include "Platform/Values/NSData.h"

namespace qz {

Ref<NSData> dataByRunningTask_withArguments(NSString* path, NSArray* arguments) {
  auto task = make<NSTask>();
  task->setLaunchPath(path);
  task->setArguments(arguments);
  auto pipe = NSPipe::pipe();
  task->setStandardOutput(pipe);
  task->launch();
  return pipe->fileHandleForReading()->readDataToEndOfFile();
}

void launchAndWriteStandardOutputToFileHandle(NSTask* self, NSFileHandle* handle) {
  if (handle == nullptr)
    detail::raise(NSInvalidArgumentException,
                  "launchAndWriteStandardOutputToFileHandle: nil argument");
  auto pipe = NSPipe::pipe();
  self->setStandardOutput(pipe);
  self->launch();
  const auto reading = pipe->fileHandleForReading();
  try {
    for (;;) {
      const Ref<NSData> chunk = reading->availableData();
      if (chunk->length() == 0) return;
      handle->writeData(chunk);
    }
  } catch (...) {
    // The task keeps the pipe, and the program would wait for its reader for ever.
    reading->closeFile();
    throw;
  }
}

void detail::registerNSTaskQZFoundation() {
  extend<NSTask>("QZFoundation")
      .method<&launchAndWriteStandardOutputToFileHandle>(
          "launchAndWriteStandardOutputToFileHandle:");
  extend<NSData>("QZTasks").classMethod<&dataByRunningTask_withArguments>(
      "dataByRunningTask:withArguments:");
}

}  // namespace qz
