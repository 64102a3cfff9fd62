// Backs a folder up: counts it, copies it file by file, compares, and brings the copy up to date by
// overwriting it. Goes on where a file fails and lists it; Ctrl-C ends it after the file it is at,
// and no file at the destination is ever half written.
//
//     backup [source [destination]]
//         (default: /usr/share/doc, to a temporary folder that is removed afterwards)
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <vector>

#include "BackupTask.h"
#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Concurrency/NSThread.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSPathUtilities.h"

using namespace qz;
using backup::BackupTask;
using backup::File;

namespace {

std::atomic<BackupTask*> running{nullptr};

void onInterrupt(int) {
  if (BackupTask* task = running.load()) task->abort();
}

std::string sizeText(double bytes) {
  const char* units[] = {"B", "KiB", "MiB", "GiB", "TiB"};
  int unit = 0;
  for (; bytes >= 1024 && unit < 4; ++unit) bytes /= 1024;
  char text[32];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, units[unit]);
  return text;
}

std::string timeText(double seconds) {
  char text[32];
  const int whole = static_cast<int>(seconds);
  if (seconds < 60)
    std::snprintf(text, sizeof text, "%.1f s", seconds);
  else
    std::snprintf(text, sizeof text, "%d:%02d min", whole / 60, whole % 60);
  return text;
}

/// One line that is written again and again.
class ProgressLine {
 public:
  void show(const std::string& title, const backup::Progress& now, double seconds) {
    if (!isTerminal_) return;
    const double done = static_cast<double>(now.bytes);
    const double all = static_cast<double>(now.allBytes);
    const double part = all > 0 ? std::min(1.0, done / all) : 0;
    const double rate = seconds > 0 ? done / seconds : 0;
    std::string line = '\r' + title + ' ';
    if (all > 0) {
      constexpr int width = 28;
      const auto filled = static_cast<std::size_t>(part * width);
      line += '[' + std::string(filled, '#') + std::string(width - filled, ' ') + "] ";
    }
    line += sizeText(done) + ", " + sizeText(rate) + "/s";
    if (all > 0 && rate > 0) line += ", " + timeText((all - done) / rate) + " left";
    std::cout << line << "\x1b[K" << std::flush;
  }
  void clear() const {
    if (isTerminal_) std::cout << "\r\x1b[K" << std::flush;
  }

 private:
  const bool isTerminal_ = ::isatty(STDOUT_FILENO) == 1;
};

struct StepResult {
  std::string title;
  std::uint64_t files = 0;
  std::uint64_t bytes = 0;
  std::uint64_t failures = 0;
  double seconds = 0;
  bool isAborted = false;
};

/// Runs a task on a thread, and shows on this one how far it is.
StepResult run(const std::string& title, BackupTask* task) {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  const auto elapsed = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
  ProgressLine line;
  running = task;
  bool isDone = false;
  auto timer = NSTimer::scheduledTimer(
      0.1, true, [&](NSTimer*) { line.show(title, task->progress, elapsed()); });
  NSThread::detachNewThread([task = Ref<BackupTask>(task), &isDone] {
    task->performTask();
    NSRunLoop::mainRunLoop()->performAndWait([&] { isDone = true; });
  });
  while (!isDone)
    NSRunLoop::currentRunLoop()->runMode_beforeDate(NSDefaultRunLoopMode, NSDate::distantFuture());
  timer->invalidate();
  running = nullptr;
  line.clear();
  const backup::Progress& now = task->progress;
  return {title, now.files, now.bytes, now.failures, elapsed(), task->isAborted()};
}

void printSteps(const std::vector<StepResult>& steps) {
  std::printf("\n%-10s %9s %11s %11s %13s %9s\n", "", "entries", "bytes", "time", "rate", "failed");
  for (const StepResult& each : steps)
    std::printf("%-10s %9llu %11s %11s %11s/s %9llu%s\n", each.title.c_str(),
                static_cast<unsigned long long>(each.files),
                sizeText(static_cast<double>(each.bytes)).c_str(), timeText(each.seconds).c_str(),
                sizeText(static_cast<double>(each.bytes) / each.seconds).c_str(),
                static_cast<unsigned long long>(each.failures), each.isAborted ? "  ended" : "");
  ::rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  std::cout << "\nmemory at most: " << sizeText(1024.0 * static_cast<double>(usage.ru_maxrss))
            << '\n';
}

// The names alone, with as much of the folder as tells files of one name apart.
void printLargest(NSArray* files) {
  auto indexer = make<QZPathIndexer>();
  for (File* each : elements<File>(files)) indexer->addPath(each->path);
  const Ref<NSArray> bySize = arrayUsingMap(files, sortMapUsingKeyPath(files, "size"_ns));
  std::cout << "\nlargest files:\n";
  for (std::uint32_t i = bySize->count(); i-- > 0;) {
    const Ref<File> file = as<File>(bySize->objectAtIndex(i));
    std::printf("%11s  %s  (%s)\n", sizeText(static_cast<double>(file->size)).c_str(),
                file->path->lastPathComponent()->UTF8String().c_str(),
                indexer->prefixForPath(file->path)->UTF8String().c_str());
  }
}

int backUp(NSString* source, NSString* destination) {
  const auto tellFailure = [](NSString* path, NSString* reason) {
    std::cout << "\r\x1b[K  " << path->UTF8String() << ": " << reason->UTF8String() << '\n';
  };
  const auto task = [&](BackupTask::Step step) {
    return make<BackupTask>(step, source, destination, tellFailure);
  };
  std::cout << "from " << source->UTF8String() << "\nto   " << destination->UTF8String() << '\n';

  std::vector<StepResult> steps;
  const Ref<BackupTask> count = task(BackupTask::Step::Count);
  steps.push_back(run("count", count));
  using Step = BackupTask::Step;
  for (const auto& [title, step] :
       std::vector<std::pair<std::string, Step>>{{"copy", Step::Copy},
                                                 {"verify", Step::Verify},
                                                 {"overwrite", Step::Copy},
                                                 {"verify", Step::Verify}}) {
    if (steps.back().isAborted) break;
    const Ref<BackupTask> next = task(step);
    next->progress.allBytes = steps.front().bytes;
    steps.push_back(run(title, next));
  }
  printSteps(steps);
  printLargest(count->largestFiles());
  return 0;
}

}  // namespace

int main(int argc, char** argv) try {
  NSThread::becomeMainThread();
  std::signal(SIGINT, &onInterrupt);
  const Ref<NSString> source =
      NSString::stringWithFileSystemRepresentation(argc > 1 ? argv[1] : "/usr/share/doc");
  if (argc > 2) return backUp(source, NSString::stringWithFileSystemRepresentation(argv[2]));
  auto manager = NSFileManager::defaultManager();
  auto destination = uniqueFilePathForName_inDirectory(
      manager, NSString::stringWithFormat("qz-backup-%d"_ns, ::getpid()), NSTemporaryDirectory());
  const int status = backUp(source, destination);
  if (Ref<NSError> error = removeFileAtPath(manager, destination))
    std::cout << error->localizedDescription() << '\n';
  return status;
} catch (const Raised& raised) {
  std::cerr << raised.what() << '\n';
  return 1;
}
