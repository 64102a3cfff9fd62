#include "SourceWatch.h"

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"

namespace backup {

using namespace qz;

void SourceWatch::describe(ClassDescription<SourceWatch>& is) {
  is.named("BackupSourceWatch")
      .method<&SourceWatch::threadedTaskDidComplete>("threadedTaskDidComplete:");
}

Ref<SourceWatch> SourceWatch::start(const BackupTask::Settings& settings, Ref<NSError>* error) {
  auto watch = make<SourceWatch>(settings);
  watch->watcher_ = QZTreeWatcher::initWithPath(
      settings.source,
      [watch = WeakRef<SourceWatch>(watch)](NSArray* changes) {
        if (const Ref<SourceWatch> there = watch.load()) there->note(changes);
      },
      {}, error);
  return watch->watcher_ ? watch : nullptr;
}

SourceWatch::SourceWatch(const BackupTask::Settings& settings)
    : settings_(settings), noted_(make<NSMutableSet>()) {
  settings_.update = true;
}

SourceWatch::~SourceWatch() = default;

void SourceWatch::begin() {
  isCopying_ = true;
  copyNoted();
}

Ref<BackupTask> SourceWatch::end() {
  isCopying_ = false;
  if (task_) task_->abort();
  return task_;
}

void SourceWatch::note(NSArray* changes) {
  for (QZTreeChange* each : elements<QZTreeChange>(changes)) noteOne(each);
  copyNoted();
}

void SourceWatch::noteOne(QZTreeChange* change) {
  if ((change->kinds() & QZTreeChangeRescan) != 0) isAllNoted_ = true;
  const Ref<NSString> entry = change->relativePath();
  if (change->isDeleted() || entry->length() == 0) return;
  // A destination in the source changes with each copy.
  NSString* const leftOut = settings_.leftOut;
  const bool isLeftOut =
      leftOut != nullptr && (entry->isEqualToString(leftOut) ||
                             entry->hasPrefix(leftOut->stringByAppendingString("/"_ns)));
  if (!isLeftOut) noted_->addObject(entry);
}

void SourceWatch::copyNoted() {
  if (!isCopying_ || task_ || (noted_->count() == 0 && !isAllNoted_)) return;
  settings_.entries =
      isAllNoted_ ? nullptr : noted_->allObjects()->sortedArrayUsingSelector("compare:"_sel);
  noted_->removeAllObjects();
  isAllNoted_ = false;
  task_ = make<BackupTask>(BackupTask::Kind::Copy, settings_, Amount());
  task_->onFailure = onFailure;
  task_->setDelegate(this);
  task_->start();
}

void SourceWatch::threadedTaskDidComplete(NSNotification*) {
  const Ref<BackupTask> task = std::move(task_);
  if (onEnd) onEnd(task);
  copyNoted();
}

}  // namespace backup
