// Watchers, tasks and copies at once for as long as is wanted, in seconds: memory and descriptors
// must stay where they were when everything had begun.
//
//     soak SECONDS
//
// Files and folders come, change and go; a tree watcher tells of it; each telling starts a task
// that copies what changed; watchers of single files and observers of the tasks come and go as
// well.
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <thread>

#include "QZFoundation/QZFoundation.h"
#include "tests/support/ProcessUse.h"
#include "tests/support/TemporaryDirectory.h"

using namespace qz;

namespace {

namespace fs = std::filesystem;

struct Sample {
  long pages = test::residentPages();
  long descriptors = test::openDescriptors();
};

struct Totals {
  std::atomic<long> changes{0};
  std::atomic<long> copies{0};
  std::atomic<long> failures{0};
  long tasks = 0;
  long told = 0;
  long events = 0;
};

/// Makes random changes in a folder of a bounded size.
void change(const std::string& top, std::mt19937& random) {
  const std::string folder = top + "/folder" + std::to_string(random() % 8);
  const std::string file = folder + "/file" + std::to_string(random() % 16);
  std::error_code ignored;
  switch (random() % 10) {
    case 0:
      fs::remove_all(folder, ignored);
      break;
    case 1:
      fs::rename(folder, top + "/folder" + std::to_string(random() % 8), ignored);
      break;
    case 2:
      fs::remove(file, ignored);
      break;
    default:
      fs::create_directories(folder, ignored);
      std::ofstream(file) << std::string(random() % 20000, 'x');
  }
}

/// Copies each changed file. What is gone again by then is no failure of the copy.
void copyChanges(QZThreadedTask* task, NSArray* changes, NSString* to, Totals& totals) {
  const auto manager = currentThreadFileManager();
  float done = 0;
  for (auto* each : elements<QZTreeChange>(changes)) {
    task->updatePercentComplete(100 * ++done / static_cast<float>(changes->count()));
    if (each->isFolder() || each->isDeleted()) continue;
    const auto target = to->stringByAppendingPathComponent(each->relativePath());
    createDirectoryAtPath_attributes_createParents(
        manager, target->stringByDeletingLastPathComponent(), nullptr, true);
    const auto error = copyPath_toPath_withOptions(manager, each->path(), target, QZCopyOverwrite);
    ++totals.copies;
    if (!error || error->code() == ENOENT) continue;
    ++totals.failures;
    std::cerr << error->localizedDescription() << '\n';
  }
}

}  // namespace

int main(int count, char** arguments) {
  const double seconds = count > 1 ? std::atof(arguments[1]) : 5;
  test::TemporaryDirectory directory;
  const std::string from = directory.path() + "/from";
  const auto to = NSString::stringWithUTF8String(directory.path() + "/to");
  fs::create_directory(from);
  std::ofstream(from + "/watched") << "watched";
  fs::create_directory(to->UTF8String());

  const auto loop = NSRunLoop::mainRunLoop();
  Totals totals;
  int running = 0;
  const auto watcher =
      QZTreeWatcher::initWithPath(NSString::stringWithUTF8String(from), [&](NSArray* changes) {
        ++totals.events;
        if (running >= 4) return;  // the next telling has what matters
        ++running;
        const auto task =
            make<QZThreadedTask>([&, kept = Ref<NSArray>(changes)](QZThreadedTask* own) {
              copyChanges(own, kept, to, totals);
            });
        // Both keep themselves until the task is done.
        const auto done = std::make_shared<Ref<NSNotificationToken>>();
        const auto observing = std::make_shared<KeyValueObservation>(
            observe(task, "percentComplete"_ns, 0, [&](const ObservedChange&) { ++totals.told; }));
        *done = NSNotificationCenter::defaultCenter()->observe(
            QZThreadedTaskDidCompleteNotification, task, [&, done, observing](NSNotification*) {
              ++totals.tasks;
              --running;
              observing->invalidate();
              *done = nullptr;
            });
        task->start();
      });

  std::atomic<bool> isOver{false};
  std::thread writer([&] {
    std::mt19937 random(1);
    while (!isOver) {
      for (int i = 0; i < 20; ++i, ++totals.changes) change(from, random);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  });
  const auto watching = NSTimer::scheduledTimer(0.01, true, [&](NSTimer*) {
    const auto file = QZFileWatcher::initWithPath_usingKernelEvents(
        NSString::stringWithUTF8String(from + "/watched"), true);
  });

  // A fifth of the time is for caches to fill.
  const auto begin = NSDate::date();
  loop->runUntilDate(NSDate::dateWithTimeIntervalSinceNow(seconds / 5));
  const Sample first;
  Sample most = first;
  const auto sampling = NSTimer::scheduledTimer(seconds / 100, true, [&](NSTimer*) {
    const Sample now;
    most.pages = std::max(most.pages, now.pages);
    most.descriptors = std::max(most.descriptors, now.descriptors);
  });
  loop->runUntilDate(begin->dateByAddingTimeInterval(seconds));
  isOver = true;
  writer.join();
  watching->invalidate();
  sampling->invalidate();
  while (running > 0) loop->runUntilDate(NSDate::dateWithTimeIntervalSinceNow(0.01));
  const Sample last;

  std::cout << totals.changes << " changes, " << totals.events << " tellings, " << totals.tasks
            << " tasks, " << totals.copies << " copies, " << totals.failures << " failed, "
            << totals.told << " progress values observed\n"
            << "pages: " << first.pages << " after a fifth, at most " << most.pages << ", "
            << last.pages << " at the end; descriptors: " << first.descriptors << ", at most "
            << most.descriptors << ", " << last.descriptors << " at the end\n";
  const bool isFlat = last.pages < first.pages + first.pages / 10 + 256 &&
                      last.descriptors <= first.descriptors + 8;
  const bool isBusy = totals.tasks > 0 && totals.copies > 0 && totals.told > 0;
  if (!isFlat) std::cerr << "Memory or descriptors have grown\n";
  if (!isBusy) std::cerr << "Nothing was going on\n";
  return isFlat && isBusy && totals.failures == 0 ? 0 : 1;
}
