#include "QZFoundation/QZFileWatcher.h"

#include <sys/stat.h>
#include <sys/statfs.h>

#include <cstdint>
#include <mutex>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Concurrency/NSNotificationCenter.h"
#include "Platform/Concurrency/NSThread.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/System/Diagnostics.h"
#include "Platform/System/detail/NotifyQueue.h"
#include "Platform/System/detail/PathBytes.h"
#include "QZFoundation/QZDisk.h"
#include "QZFoundation/XJKQueue.h"
#include "QZFoundation/detail/PolledPaths.h"

namespace qz {
namespace {

constexpr std::uint32_t deletedOrWritten = 0x03;
constexpr std::uint32_t revoked = 0x40;

bool exists(NSString* path) {
  const detail::PathBytes bytes(path);
  struct stat is {};
  return bytes.error() == 0 && ::stat(bytes.c_str(), &is) == 0;
}

// The path itself, or the nearest folder above it that is there; a relative one ends at ".".
Ref<NSString> nearestExisting(NSString* wanted) {
  Ref<NSString> path(wanted);
  while (!exists(path) && !path->isEqualToString("/"_ns) && !path->isEqualToString("."_ns)) {
    Ref<NSString> above = path->stringByDeletingLastPathComponent();
    path = above->length() == 0 ? Ref<NSString>("."_ns) : above;
  }
  return path;
}

/// Of all file watchers, apart from the one that everybody may share. Nil when the system has none
/// to give, which is tried again later.
Ref<XJKQueue> sharedQueue() {
  static std::mutex mutex;
  static XJKQueue* queue = nullptr;
  std::lock_guard lock(mutex);
  if (queue == nullptr) queue = XJKQueue::init().leak();
  return Ref<XJKQueue>(queue);
}

NSNotificationCenter* center() {
  static NSNotificationCenter* const common = NSNotificationCenter::defaultCenter().leak();
  return common;
}

void startPolling() {
  NSThread::detachNewThreadSelector_toTarget_withObject("watchFilesInBackground"_sel,
                                                        classOf<QZFileWatcher>(), nullptr);
}

// Looks like a report of the shared queue, so that the same observers receive it.
void reportPolled(XJKQueue* queue, NSString* path, detail::PolledPaths::Change change) {
  const auto notification = make<NSNotification>(
      change == detail::PolledPaths::Change::written ? XJFileWatcherWriteNotification
                                                     : XJFileWatcherDeleteNotification,
      queue, NSDictionary::dictionaryWithObject_forKey(path, "path"_ns));
  center()->performSelectorOnMainThread_withObject_waitUntilDone("postNotification:"_sel,
                                                                 notification, true);
}

}  // namespace

Ref<QZFileWatcher> QZFileWatcher::initWithPath(NSString* path) {
  return initWithPath_usingKernelEvents(path, false);
}

Ref<QZFileWatcher> QZFileWatcher::initWithPath_usingKernelEvents(NSString* path, bool useThem) {
  auto watcher = make<QZFileWatcher>(path, useThem);
  const Ref<XJKQueue> queue = sharedQueue();
  for (NSString* name : {XJFileWatcherDeleteNotification, XJFileWatcherWriteNotification})
    center()->addObserver_selector_name_object(watcher, "fileDidChange:"_sel, name, queue);
  // A file whose file system is unmounted is not there any longer, either.
  if (useThem)
    center()->addObserver_selector_name_object(watcher, "fileDidChange:"_sel,
                                               XJFileWatcherAccessRevocationNotification, queue);
  watcher->watchFile();
  return watcher;
}

QZFileWatcher::QZFileWatcher(NSString* path, bool useKernelEvents)
    : useKernelEvents_(useKernelEvents) {
  if (path == nullptr)
    detail::raise(NSInvalidArgumentException, "a file watcher needs a path, not nil");
  filePath_ = NSString::stringWithString(path);
}

QZFileWatcher::~QZFileWatcher() {
  unwatchFile();
  center()->removeObserver(this);
}

void QZFileWatcher::setDelegate(NSObject* delegate) {
  if (delegate_.load() != delegate) delegate_ = WeakRef<NSObject>(delegate);
}

void QZFileWatcher::watchFile() {
  // What came into being between looking and watching would not be told by anybody.
  do {
    letGo();
    watchingPath_ = nearestExisting(filePath_);
    watchWatchingPath();
  } while (!watchingPath_->isEqualToString(nearestExisting(filePath_)));
  detail::PolledPaths::shared().endIfEmpty();
}

void QZFileWatcher::watchWatchingPath() {
  const Ref<QZDisk> disk = QZDisk::diskForFilePath(watchingPath_);
  const bool isLocal = (disk && disk->isLocalVolume()) || (useKernelEvents_ && kernelTellsAll());
  const Ref<XJKQueue> queue = isLocal ? sharedQueue() : nullptr;
  const std::uint32_t mask = useKernelEvents_ ? deletedOrWritten | revoked : deletedOrWritten;
  usesTimer_ = !queue || queue->addPathToQueue_notifyingAbout(watchingPath_, mask) != 0;
  if (usesTimer_) watchPathUsingTimer();
}

void QZFileWatcher::unwatchFile() {
  letGo();
  detail::PolledPaths::shared().endIfEmpty();
}

void QZFileWatcher::letGo() {
  if (!watchingPath_) return;
  if (usesTimer_)
    detail::PolledPaths::shared().remove(watchingPath_);
  else
    sharedQueue()->removePathFromQueue(watchingPath_);
  watchingPath_ = nullptr;
}

void QZFileWatcher::watchPathUsingTimer() {
  if (watchingPath_) detail::PolledPaths::shared().add(watchingPath_, &startPolling);
}

bool QZFileWatcher::kernelTellsAll() const {
  struct statfs is {};
  if (::statfs(detail::PathBytes(watchingPath_).c_str(), &is) != 0) return false;
  return detail::isToldOfChanges(static_cast<std::uint32_t>(is.f_type));
}

void QZFileWatcher::fileDidChange(NSNotification* notification) {
  const Ref<NSDictionary> info = notification->userInfo();
  const auto path = info ? as<NSString>(info->objectForKey("path"_ns)) : Ref<NSString>();
  if (!watchingPath_ || !path || !path->isEqualToString(watchingPath_)) return;
  Ref<QZFileWatcher> self(this);
  watchFile();
  const Ref<NSObject> delegate = delegate_.load();
  if (delegate) send<void>(delegate, "fileWatcherDidDetectChange:"_sel, this);
  center()->postNotificationName_object(QZFileDidChangeNotification, this);
}

void QZFileWatcher::watchFilesInBackground() {
  NSThread::currentThread()->setName("QZFileWatcher"_ns);
  detail::PolledPaths::shared().run([] {
    return NSTimer::scheduledTimerWithTimeInterval_target_selector_userInfo_repeats(
        1.0, classOf<QZFileWatcher>(), "checkFiles:"_sel, nullptr, true);
  });
}

void QZFileWatcher::checkFiles(NSTimer*) {
  const Ref<XJKQueue> queue = sharedQueue();
  detail::PolledPaths::shared().check([&](NSString* path, detail::PolledPaths::Change change) {
    try {
      reportPolled(queue, path, change);
    } catch (const Raised& raised) {
      // An observer that fails must not end the watching.
      detail::diagnose(std::string("An observer of a polled file failed: ") + raised.what());
    }
  });
}

Ref<NSString> QZFileWatcher::description() const {
  return NSString::stringWithFormat("%@: {filePath = %@, watchingPath = %@, isTimer = %d}"_ns,
                                    NSObject::description(), filePath_, watchingPath_,
                                    usesTimer_ ? 1 : 0);
}

void QZFileWatcher::describe(ClassDescription<QZFileWatcher>& is) {
  using Self = QZFileWatcher;
  is.named("QZFileWatcher")
      .initializer<&Self::initWithPath>("initWithPath:")
      .initializer<&Self::initWithPath_usingKernelEvents>("initWithPath:usingKernelEvents:")
      .classMethod<&Self::watchFilesInBackground>("watchFilesInBackground")
      .classMethod<&Self::checkFiles>("checkFiles:")
      .property<&Self::filePath>("filePath")
      .property<&Self::watchingPath>("watchingPath")
      .property<&Self::usesTimer>("usesTimer")
      .property<&Self::delegate, &Self::setDelegate>("delegate")
      .method<&Self::watchFile>("watchFile")
      .method<&Self::unwatchFile>("unwatchFile")
      .method<&Self::watchPathUsingTimer>("watchPathUsingTimer")
      .method<&Self::fileDidChange>("fileDidChange:");
}

}  // namespace qz
