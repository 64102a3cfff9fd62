#include "Backup.h"

#include <unistd.h>

#include <filesystem>
#include <iostream>

#include "Interruption.h"
#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Values/FileSystemPath.h"
#include "Platform/Values/NSPathUtilities.h"
#include "Texts.h"

namespace backup {

using namespace qz;

void Backup::describe(ClassDescription<Backup>& is) {
  is.named("Backup")
      .method<&Backup::threadedTaskDidBegin>("threadedTaskDidBegin:")
      .method<&Backup::threadedTaskDidComplete>("threadedTaskDidComplete:");
}

Backup::Backup(const Options& options) : options_(options) {
  settings_.update = options.update;
  settings_.largest = options.largest;
}

Backup::~Backup() = default;

int Backup::run() {
  findFolders();
  planSteps();
  tellDebugLog();
  if (!options_.quiet)
    std::cout << "from " << printable(settings_.source) << "\nto   "
              << printable(settings_.destination) << std::endl;
  handleInterruptions([this](int signal) { interrupt(signal); });
  if (options_.watch && !watchSource()) return 1;
  startNext();
  NSRunLoop::mainRunLoop()->run();
  if (options_.isTrial()) removeTrial();
  if (signal_ != 0) return 128 + signal_;
  return hasFailed_ ? 1 : 0;
}

void Backup::findFolders() {
  namespace fs = std::filesystem;
  const auto manager = NSFileManager::defaultManager();
  settings_.destination =
      options_.isTrial() ? uniqueFilePathForName_inDirectory(
                               manager, NSString::stringWithFormat("qz-backup-%d"_ns, ::getpid()),
                               NSTemporaryDirectory())
                         : options_.destination;
  const auto wholePath = [](NSString* path) {
    return fs::weakly_canonical(fs::absolute(fileSystemPath(path)));
  };
  const fs::path source = wholePath(options_.source);
  const fs::path destination = wholePath(settings_.destination);
  settings_.source = stringWithFileSystemPath(source);
  settings_.destination = stringWithFileSystemPath(destination);
  // A copy inside its own source would have no end; one around it would overwrite it.
  const fs::path inSource = destination.lexically_relative(source);
  const fs::path inDestination = source.lexically_relative(destination);
  if (inDestination == "." || *inDestination.begin() != "..")
    throw UsageError("the destination contains the source");
  if (*inSource.begin() != "..") settings_.leftOut = stringWithFileSystemPath(inSource);
}

void Backup::planSteps() {
  using Kind = BackupTask::Kind;
  steps_ = {{"count", Kind::Count, nullptr}, {"copy", Kind::Copy, nullptr}};
  if (options_.verify || options_.isTrial()) steps_.push_back({"verify", Kind::Verify, nullptr});
  if (!options_.isTrial()) return;
  steps_.push_back({"overwrite", Kind::Copy, nullptr});
  steps_.push_back({"verify", Kind::Verify, nullptr});
}

/// What changes from now on is copied after the last step; nothing falls between.
bool Backup::watchSource() {
  Ref<NSError> error;
  watch_ = SourceWatch::start(settings_, &error);
  if (!watch_) {
    std::cerr << "backup: " << printable(error->localizedDescription()) << '\n';
    return false;
  }
  watch_->onFailure = [this](NSString* entry, NSError* failure) { tellFailure(entry, failure); };
  watch_->onEnd = [this](BackupTask* task) { tellBatch(task); };
  return true;
}

void Backup::startNext() {
  if (next_ == steps_.size() || signal_ != 0) {
    afterLastStep();
    return;
  }
  const Step& step = steps_[next_++];
  const Amount expected = next_ == 1 ? Amount() : steps_.front().result->done;
  task_ = make<BackupTask>(step.kind, settings_, expected);
  task_->onFailure = [this](NSString* entry, NSError* error) { tellFailure(entry, error); };
  task_->setDelegate(this);
  task_->start();
}

void Backup::afterLastStep() {
  if (!options_.quiet) report();
  if (!watch_ || signal_ != 0) {
    NSRunLoop::mainRunLoop()->stop();
    return;
  }
  if (!options_.quiet) std::cout << "\nwatching; Ctrl-C ends it" << std::endl;
  watch_->begin();
}

void Backup::threadedTaskDidBegin(NSNotification*) {
  QZDebugLog("backup"_ns, "%@ begins"_ns, NSString::stringWithUTF8String(current().title));
  if (!options_.quiet) line_.emplace(current().title, task_);
}

void Backup::threadedTaskDidComplete(NSNotification*) {
  line_.reset();
  const Ref<BackupTask> task = std::move(task_);
  const Ref<NSError> error = task->taskError();
  QZDebugLog("backup"_ns, "%@ ends, error: %@"_ns, NSString::stringWithUTF8String(current().title),
             error);
  if (error && !isUserCancelledError(error)) {
    hasFailed_ = true;
    std::cerr << "backup: " << printable(error->localizedDescription()) << '\n';
    NSRunLoop::mainRunLoop()->stop();
    return;
  }
  current().result = as<StepResult>(task->taskResult());
  startNext();
}

/// Ending the watch is not an interruption, unless something is being copied just then.
void Backup::interrupt(int signal) {
  Ref<BackupTask> task = task_;
  if (!task && watch_) task = watch_->end();
  if (task) {
    signal_ = signal;
    task->abort();
  } else {
    NSRunLoop::mainRunLoop()->stop();
  }
}

void Backup::tellBatch(BackupTask* task) {
  const Ref<NSError> error = task->taskError();
  if (error && !isUserCancelledError(error)) {
    hasFailed_ = true;
    std::cerr << "backup: " << printable(error->localizedDescription()) << std::endl;
  }
  const Amount done = task->done();
  const Ref<NSString> last = task->progressMessage();
  if (!options_.quiet && done.entries != 0 && last)
    std::cout << "copied " << countText(done.entries) << (done.entries == 1 ? " entry" : " entries")
              << ", " << sizeText(done.bytes) << ": " << printable(last) << std::endl;
  if (signal_ != 0) NSRunLoop::mainRunLoop()->stop();
}

void Backup::tellFailure(NSString* entry, NSError* error) {
  hasFailed_ = true;
  QZDebugLog("backup"_ns, "%@: %@"_ns, entry, error);
  if (line_) line_->clear();
  std::cerr << "failed: " << printable(entry) << ": " << printable(error->localizedDescription())
            << std::endl;
}

void Backup::removeTrial() {
  const auto manager = NSFileManager::defaultManager();
  if (!manager->fileExistsAtPath(settings_.destination)) return;
  if (const auto error = removeFileAtPath(manager, settings_.destination)) {
    hasFailed_ = true;
    std::cerr << "backup: " << printable(error->localizedDescription()) << '\n';
  }
}

void Backup::report() const {
  const auto& counted = steps_.front().result;
  if (!counted) return;
  printSteps(steps_);
  printLargest(counted->largestFiles);
  if (signal_ != 0) std::cout << "\nended early" << std::endl;
}

/// The log says nothing when it cannot be written; who asked for it should know.
void Backup::tellDebugLog() const {
  if (!QZIsDebugEnabled("progress"_ns) && !QZIsDebugEnabled("backup"_ns) &&
      !QZIsDebugEnabled("all"_ns))
    return;
  const auto path = QZGetDebugLog()->logFilePath();
  const bool isWritable = NSFileManager::defaultManager()->isWritableFileAtPath(
      path->stringByDeletingLastPathComponent());
  std::cerr << "debug log: " << printable(path)
            << (isWritable ? "" : " cannot be written: its folder is missing or closed")
            << std::endl;
}

}  // namespace backup
