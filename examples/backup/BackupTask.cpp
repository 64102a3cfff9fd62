#include "BackupTask.h"

#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Values/NSNumber.h"

namespace backup {

using namespace qz;

void File::describe(ClassDescription<File>& is) {
  is.named("BackupFile").field<&File::path>("path").field<&File::size>("size");
}

void BackupTask::describe(ClassDescription<BackupTask>& is) {
  is.named("BackupTask").method<&BackupTask::performTask>("performTask");
}

BackupTask::BackupTask(Step step, NSString* source, NSString* destination, OnFailure onFailure)
    : step_(step), source_(source), destination_(destination), onFailure_(std::move(onFailure)) {}

void BackupTask::performTask() {
  manager_ = currentThreadFileManager();
  // Not through links: a backup keeps them as links.
  const Ref<NSDirectoryEnumerator> entries = manager_->enumeratorAtPath(source_);
  if (!entries) {
    fail(source_, "it cannot be read"_ns);
    return;
  }
  if (step_ == Step::Copy && !isDirectoryAtPath(manager_, destination_))
    if (Ref<NSError> error = createDirectoryAtPath(manager_, destination_)) {
      fail(destination_, error->localizedDescription());
      return;
    }
  while (!isAborted_) {
    const Ref<NSObject> entry = entries->nextObject();
    if (!entry) break;
    // A backup of itself would have no end.
    if (equal(source_->stringByAppendingPathComponent(as<NSString>(entry)), destination_))
      entries->skipDescendents();
    else
      visit(as<NSString>(entry));
  }
  if (step_ == Step::Copy && !isAborted_) finishDirectories();
}

void BackupTask::visit(NSString* entry) {
  const Ref<NSString> from = source_->stringByAppendingPathComponent(entry);
  const Ref<NSString> to = destination_->stringByAppendingPathComponent(entry);
  const std::uint32_t type = objectTypeAtPath(manager_, from);
  const std::uint64_t size = totalSizeOfFileAtPath(manager_, from);
  if (step_ == Step::Count) noteSize(entry, size);
  if (step_ == Step::Copy)
    if (Ref<NSError> error = copy(from, to, type)) fail(entry, error->localizedDescription());
  if (step_ == Step::Verify && type != QZObjectTypeDirectory &&
      !manager_->contentsEqualAtPath_andPath(from, to))
    fail(entry, "the copy differs"_ns);
  ++progress.files;
  progress.bytes += size;
}

Ref<NSError> BackupTask::copy(NSString* from, NSString* to, std::uint32_t type) {
  if (type == QZObjectTypeDirectory)
    return isDirectoryAtPath_traverseLink(manager_, to, false)
               ? nullptr
               : createDirectoryAtPath(manager_, to);
  // The file that is there is replaced in one step, when the new one is whole.
  if (type == QZObjectTypeRegularFile)
    return copyPath_toPath_withOptions(manager_, from, to, QZCopyOverwrite);
  // A link may lead nowhere, and a pipe has no contents: what is there makes room first.
  Ref<NSError> error;
  if (objectTypeAtPath(manager_, to) != QZObjectTypeNone &&
      !manager_->removeItemAtPath_error(to, &error))
    return error;
  manager_->copyItemAtPath_toPath_error(from, to, &error);
  return error;
}

// Their permissions and dates come last: files that are put into them would change the dates, and
// permissions could keep files from being put there.
void BackupTask::finishDirectories() {
  const Ref<NSDirectoryEnumerator> entries = manager_->enumeratorAtPath(source_);
  for (NSObject* each : entries.get()) {
    NSString* entry = as<NSString>(each);
    const Ref<NSString> from = source_->stringByAppendingPathComponent(entry);
    if (!isDirectoryAtPath_traverseLink(manager_, from, false)) continue;
    const Ref<NSDictionary> attributes = manager_->fileAttributesAtPath_traverseLink(from, false);
    Ref<NSError> error;
    auto kept = NSMutableDictionary::dictionary();
    for (NSString* key : {NSFilePosixPermissions, NSFileModificationDate})
      if (auto value = attributes->objectForKey(key)) kept->setObject_forKey(value, key);
    if (!manager_->setAttributes_ofItemAtPath_error(
            kept, destination_->stringByAppendingPathComponent(entry), &error))
      fail(entry, error->localizedDescription());
  }
}

void BackupTask::noteSize(NSString* entry, std::uint64_t size) {
  constexpr std::uint32_t kept = 8;
  if (size == 0) return;
  largest_->addObject(make<File>(entry, size));
  if (largest_->count() <= kept) return;
  std::uint32_t smallest = 0;
  for (std::uint32_t i = 1; i < largest_->count(); ++i)
    if (as<File>(largest_->objectAtIndex(i))->size <
        as<File>(largest_->objectAtIndex(smallest))->size)
      smallest = i;
  largest_->removeObjectAtIndex(smallest);
}

void BackupTask::fail(NSString* path, NSString* reason) {
  ++progress.failures;
  NSRunLoop::mainRunLoop()->perform([tell = onFailure_, path = Ref<NSString>(path),
                                     reason = Ref<NSString>(reason)] { tell(path, reason); });
}

}  // namespace backup
