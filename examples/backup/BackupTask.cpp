#include "BackupTask.h"

#include <cerrno>
#include <chrono>

#include "Platform/Collections/NSMutableSet.h"
#include "Platform/Concurrency/MainThread.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/System/FileProgress.h"
#include "QZFoundation/NSError-QZFoundation.h"

namespace backup {

using namespace qz;

namespace {

/// What isUserCancelledError looks for.
constexpr std::int32_t userCancelled = 3072;

/// The Error in `errno`, about a path.
Ref<NSError> systemError(NSString* path) {
  const auto error = POSIXError_description(errno, nullptr);
  return POSIXError_description(
      error->code(), NSString::stringWithFormat("%@: %@"_ns, path, error->localizedDescription()));
}

Ref<NSError> endedEarly() {
  return cocoaError_description(userCancelled, "The work was ended early"_ns);
}

/// The entries and the folders they are in, whose dates copying changes.
Ref<NSArray> touchedBy(NSArray* entries) {
  auto touched = make<NSMutableSet>();
  for (NSString* each : elements<NSString>(entries)) {
    touched->addObject(each);
    const auto folder = each->stringByDeletingLastPathComponent();
    if (folder->length() != 0) touched->addObject(folder);
  }
  return touched->allObjects();
}

}  // namespace

void StepResult::describe(ClassDescription<StepResult>& is) {
  is.named("BackupStepResult")
      .field<&StepResult::failures>("failures")
      .field<&StepResult::seconds>("seconds")
      .field<&StepResult::largestFiles>("largestFiles");
}

// performTask is overridden in C++, where the inherited description finds it.
void BackupTask::describe(ClassDescription<BackupTask>& is) { is.named("BackupTask"); }

BackupTask::BackupTask(Kind kind, const Settings& settings, const Amount& expected)
    : kind_(kind), settings_(settings), expected_(expected), largest_(settings.largest) {
  setCanAbort(true);
}

void BackupTask::performTask() {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  updateKnowsPercentComplete(expected_.entries != 0);
  setTaskError(work());
  // An update is dropped while another one is shown; the end of the bar must not be.
  if (expected_.entries != 0 && !abortRequestReceived())
    onMainThread(this).call(&BackupTask::setPercentComplete, 100.0F);
  auto result = make<StepResult>();
  result->done = done();
  result->failures = failures_;
  result->seconds = std::chrono::duration<double>(Clock::now() - start).count();
  result->largestFiles = largest_.files();
  setTaskResult(result);
}

Ref<NSError> BackupTask::work() {
  // A file larger than memory takes its time: what is done of it counts, and it need not be waited
  // for.
  const FileProgress progress([this](std::uint64_t bytes) {
    bytes_ += bytes;
    tellProgress();
    return !abortRequestReceived();
  });
  EntryCopy copy(settings_.source, settings_.destination, settings_.update);
  if (kind_ == Kind::Copy)
    if (!copy.begin()) return systemError(settings_.destination);
  const auto doOne = [&](NSString* entry) { return visit(entry, copy); };
  NSArray* const entries = settings_.entries;
  Ref<NSError> error =
      entries != nullptr ? goThrough(entries, doOne) : walk(doOne, kind_ != Kind::Count);
  if (error || kind_ != Kind::Copy) return error;
  const auto finishOne = [&](NSString* entry) {
    if (Ref<NSError> failure = copy.finishDirectory(entry)) fail(entry, failure);
    return true;
  };
  error = entries != nullptr ? goThrough(touchedBy(entries), finishOne) : walk(finishOne, false);
  return error ? error : copy.finish();
}

/// Not through links: a backup keeps them as links. A visit that answers false has the walk pass by
/// what is in the entry. A folder that cannot be read to its end is a failure if `tellsUnread`.
template <class Visit>
Ref<NSError> BackupTask::walk(const Visit& visit, bool tellsUnread) {
  const Ref<NSDirectoryEnumerator> entries =
      currentThreadFileManager()->enumeratorAtPath(settings_.source);
  if (!entries) return systemError(settings_.source);
  while (!abortRequestReceived()) {
    const Ref<NSObject> next = entries->nextObject();
    if (!next) {
      if (Ref<NSError> unread = entries->error(); unread && tellsUnread)
        fail(as<NSString>(unread->userInfo()->objectForKey(NSFilePathErrorKey)), unread);
      return nullptr;
    }
    if (equal(next, settings_.leftOut) || !visit(as<NSString>(next.get())))
      entries->skipDescendents();
  }
  return endedEarly();
}

template <class Visit>
Ref<NSError> BackupTask::goThrough(NSArray* entries, const Visit& visit) {
  for (NSString* each : elements<NSString>(entries)) {
    if (abortRequestReceived()) return endedEarly();
    const auto path = settings_.source->stringByAppendingPathComponent(each);
    if (objectTypeAtPath(currentThreadFileManager(), path) != QZObjectTypeNone) visit(each);
  }
  return nullptr;
}

bool BackupTask::visit(NSString* entry, EntryCopy& copy) {
  const auto path = settings_.source->stringByAppendingPathComponent(entry);
  const std::uint64_t size = totalSizeOfFileAtPath(currentThreadFileManager(), path);
  const std::uint64_t before = bytes_;
  updateProgressMessage_force(entry, false);
  Ref<NSError> error;
  if (kind_ == Kind::Count) largest_.add(entry, size);
  if (kind_ == Kind::Copy) error = copy.copy(entry);
  if (kind_ == Kind::Verify) error = copy.verify(entry);
  if (error && error->code() == ECANCELED && abortRequestReceived()) return false;
  if (error) fail(entry, error);
  ++entries_;
  bytes_ = before + size;
  tellProgress();
  return !error;
}

void BackupTask::tellProgress() {
  if (expected_.entries != 0)
    updatePercentComplete(static_cast<float>(100 * done().work() / expected_.work()));
}

/// Waits until it has been told, so that a folder full of failures does not fill the memory.
void BackupTask::fail(NSString* entry, NSError* error) {
  ++failures_;
  if (onFailure) callOnMainThread([&] { onFailure(entry, error); });
}

}  // namespace backup
