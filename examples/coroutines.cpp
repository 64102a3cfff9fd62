// What takes callbacks otherwise, written from top to bottom: work on other threads, another
// program, a task with progress and a Notification, while the main thread's loop runs.
#include <iostream>

#include "Platform/Concurrency/Coroutines.h"

#if defined(__cpp_impl_coroutine) && __has_include(<coroutine>)

#include "Platform/Concurrency/NSThread.h"
#include "Platform/System/NSTaskExit.h"
#include "Platform/Values/NSMutableData.h"
#include "Platform/Values/NSPathUtilities.h"
#include "QZFoundation/QZFoundation.h"

using namespace qz;
using namespace std::chrono_literals;

namespace {

NSString* const fileWasWritten = detail::literal<"fileWasWritten">();

Ref<NSString> textOfBytes(std::uint64_t bytes) {
  return QZStorageSizeFormatter::storageSizeStringForBytes(bytes);
}

/// How much is in a folder's files, found out on a thread of its own.
Async<std::uint64_t> sizeOf(Ref<NSString> folder) {
  co_await onNewThread();
  const auto manager = currentThreadFileManager();
  std::uint64_t sum = 0;
  for (NSObject* each : manager->enumeratorAtPath(folder))
    sum +=
        totalSizeOfFileAtPath(manager, folder->stringByAppendingPathComponent(as<NSString>(each)));
  co_return sum;
}

/// What a program exits with.
Async<int> statusOf(Ref<NSString> command) {
  const auto arguments = NSArray::arrayWithObjects({"-c"_ns, command});
  const auto task = NSTask::launchedTaskWithLaunchPath_arguments("/bin/sh"_ns, arguments);
  co_return co_await exitOf(task);
}

/// A task that tells its progress to the main thread, and answers how far it counted.
Ref<QZThreadedTask> counting(int limit) {
  return make<QZThreadedTask>([limit](QZThreadedTask* task) {
    int count = 0;
    while (count < limit && !task->abortRequestReceived()) {
      ++count;
      task->updatePercentComplete(100.0f * static_cast<float>(count) / static_cast<float>(limit));
    }
    task->setTaskResult(NSNumber::numberWithInt(count));
  });
}

/// Writes a file on another thread, and tells it.
Async<> writeFile(Ref<NSString> path) {
  co_await onNewThread();
  const Ref<NSData> letters = NSMutableData::dataWithLength(2048);
  letters->writeToFile_atomically(path, true);
  NSNotificationCenter::defaultCenter()->postNotificationName_object(fileWasWritten, nullptr);
}

Async<int> program() {
  const auto manager = NSFileManager::defaultManager();
  const auto folder =
      uniqueFilePathForName_inDirectory(manager, "coroutines"_ns, NSTemporaryDirectory());
  if (auto error = createDirectoryAtPath(manager, folder)) {
    std::cerr << error->localizedDescription() << '\n';
    co_return 1;
  }

  const auto write = [&] {
    start(writeFile(folder->stringByAppendingPathComponent("letters"_ns)));
  };
  if (!co_await nextNotification(fileWasWritten).within(10s).onceWaiting(write)) co_return 1;
  std::cout << "written: " << textOfBytes(co_await sizeOf(folder)) << '\n';

  // Two at a time; what follows runs on the main thread, wherever they ended.
  auto status = started(statusOf("exit 3"_ns));
  auto size = started(sizeOf(folder));
  std::cout << "the shell exited with " << co_await std::move(status) << '\n';
  std::cout << "still " << textOfBytes(co_await std::move(size)) << '\n';
  std::cout << "counted to " << co_await runToCompletion(counting(1000)) << '\n';

  // A failure is caught where it is awaited.
  try {
    co_await statusOf(nullptr);
  } catch (const Raised& mistake) {
    std::cout << "refused: " << mistake->reason() << '\n';
  }
  static_cast<void>(removeFileAtPath(manager, folder));
  co_return NSThread::isMainThread() ? 0 : 1;
}

}  // namespace

int main() { return runLoopUntilDone(program()); }

#else

int main() { std::cout << "This compiler has no coroutines.\n"; }

#endif
