#include "QZFoundation/XJKQueue.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <map>
#include <mutex>
#include <string>
#include <unordered_map>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Concurrency/NSNotificationCenter.h"
#include "Platform/Concurrency/NSThread.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/System/Diagnostics.h"
#include "Platform/System/detail/PathBytes.h"
#include "Platform/System/detail/VnodeEvents.h"
#include "QZFoundation/XJMainThreadProxy.h"

namespace qz {

using detail::VnodeEvents;

/// Shared by a queue and its thread, so that the thread does not keep the queue.
struct detail::KQueueState {
  explicit KQueueState(std::unique_ptr<VnodeEvents> kernel) : events(std::move(kernel)) {}

  const std::unique_ptr<VnodeEvents> events;
  std::atomic<bool> keepThreadRunning{true};
  std::atomic<bool> alwaysNotify{false};
  WeakRef<XJKQueue> queue;  // written before the thread starts

  struct PathHash {
    std::size_t operator()(NSString* path) const { return path->hash(); }
  };
  struct SamePath {
    bool operator()(NSString* a, NSString* b) const { return a->isEqualToString(b); }
  };

  std::mutex mutex;                                   // guards what follows
  std::map<VnodeEvents::Watch, Ref<NSString>> paths;  // in the order they were added
  std::unordered_multimap<NSString*, VnodeEvents::Watch, PathHash, SamePath> byPath;
  WeakRef<NSObject> delegate;
  Ref<XJMainThreadProxy> delegateProxy;

  Ref<NSString> pathOf(VnodeEvents::Watch watch) {
    std::lock_guard lock(mutex);
    const auto found = paths.find(watch);
    return found == paths.end() ? nullptr : found->second;
  }
};

namespace {

constexpr std::uint32_t defaultMask =
    detail::vnodeDeleted | detail::vnodeWritten | detail::vnodeAttributes | detail::vnodeRenamed;

struct Kind {
  std::uint32_t bit;
  NSString* name;
};

// In the order of reporting.
const Kind* kinds() {
  static const Kind all[] = {{detail::vnodeRenamed, XJFileWatcherRenameNotification},
                             {detail::vnodeWritten, XJFileWatcherWriteNotification},
                             {detail::vnodeDeleted, XJFileWatcherDeleteNotification},
                             {detail::vnodeAttributes, XJFileWatcherAttributeChangeNotification},
                             {detail::vnodeExtended, XJFileWatcherSizeIncreaseNotification},
                             {detail::vnodeLinked, XJFileWatcherLinkCountChangeNotification},
                             {detail::vnodeRevoked, XJFileWatcherAccessRevocationNotification},
                             {0, nullptr}};
  return all;
}

// The queue is kept for one report, not while the thread waits: its last owner may be elsewhere.
void report(detail::KQueueState& state, const VnodeEvents::Event& event) {
  for (const Kind* kind = kinds(); kind->bit != 0; ++kind) {
    if ((event.kinds & kind->bit) == 0) continue;
    const Ref<XJKQueue> queue = state.queue.load();
    const Ref<NSString> path = state.pathOf(event.watch);  // none once it was removed
    if (queue && path) queue->postNotification_forFile(kind->name, path);
  }
}

void watch(const std::shared_ptr<detail::KQueueState>& state) {
  while (state->keepThreadRunning) {
    for (const VnodeEvents::Event& event : state->events->wait(std::chrono::seconds(5))) {
      if (!state->keepThreadRunning) return;
      try {
        report(*state, event);
      } catch (const Raised& raised) {
        // A delegate or observer that fails must not end the watching.
        detail::diagnose(std::string("An observer of a watched file failed: ") + raised.what());
      }
    }
  }
}

}  // namespace

XJKQueue::XJKQueue(std::shared_ptr<detail::KQueueState> state) : state_(std::move(state)) {}

XJKQueue::~XJKQueue() {
  state_->keepThreadRunning = false;
  state_->events->wake();
}

Ref<XJKQueue> XJKQueue::sharedFileWatcher() {
  static std::mutex mutex;
  static XJKQueue* shared = nullptr;
  std::lock_guard lock(mutex);
  if (shared == nullptr) shared = init().leak();
  return Ref<XJKQueue>(shared);
}

Ref<XJKQueue> XJKQueue::init() {
  auto events = VnodeEvents::open();
  if (!events) return nullptr;
  auto state = std::make_shared<detail::KQueueState>(std::move(events));
  auto queue = make<XJKQueue>(state);
  state->queue = queue;
  auto thread = make<NSThread>([state] { watch(state); });
  thread->setName("XJKQueue"_ns);
  thread->start();
  return queue;
}

int XJKQueue::queueFD() const noexcept { return state_->events->descriptor(); }

void XJKQueue::addPath(NSString* path) { addPathToQueue(path); }

std::int32_t XJKQueue::addPathToQueue(NSString* path) {
  return addPathToQueue_notifyingAbout(path, defaultMask);
}

std::int32_t XJKQueue::addPathToQueue_notifyingAbout(NSString* path, std::uint32_t mask) {
  const detail::PathBytes bytes(path);
  if (bytes.error() != 0) return bytes.error();
  Ref<NSString> kept = NSString::stringWithString(path);
  // Under the lock, so that the thread finds the path of a watch that reports at once.
  std::lock_guard lock(state_->mutex);
  const VnodeEvents::Watch watch = state_->events->add(std::string(bytes.view()), mask);
  if (watch == 0) return errno;
  state_->byPath.emplace(kept, watch);
  state_->paths.emplace_hint(state_->paths.end(), watch, std::move(kept));
  return 0;
}

void XJKQueue::removePath(NSString* path) { removePathFromQueue(path); }

void XJKQueue::removePathFromQueue(NSString* path) {
  if (path == nullptr) return;
  std::lock_guard lock(state_->mutex);
  const auto [first, last] = state_->byPath.equal_range(path);
  if (first == last) return;
  const auto eldest = std::min_element(
      first, last, [](const auto& a, const auto& b) { return a.second < b.second; });
  const VnodeEvents::Watch watch = eldest->second;
  state_->byPath.erase(eldest);
  state_->paths.erase(watch);
  state_->events->remove(watch);
}

void XJKQueue::removeAllPathsFromQueue() {
  std::lock_guard lock(state_->mutex);
  for (const auto& [watch, path] : state_->paths) state_->events->remove(watch);
  state_->paths.clear();
  state_->byPath.clear();
}

Ref<NSObject> XJKQueue::delegate() const {
  std::lock_guard lock(state_->mutex);
  return state_->delegate.load();
}

void XJKQueue::setDelegate(NSObject* delegate) {
  Ref<XJMainThreadProxy> proxy = copyMainThreadProxy(delegate);
  std::lock_guard lock(state_->mutex);
  state_->delegate = WeakRef<NSObject>(delegate);
  state_->delegateProxy.swap(proxy);
}

bool XJKQueue::alwaysNotify() const noexcept { return state_->alwaysNotify; }
void XJKQueue::setAlwaysNotify(bool always) noexcept { state_->alwaysNotify = always; }

void XJKQueue::postNotification_forFile(NSString* name, NSString* path) {
  Ref<XJMainThreadProxy> proxy;
  {
    std::lock_guard lock(state_->mutex);
    proxy = state_->delegateProxy;
  }
  if (proxy) {
    send<void>(proxy, "watcher:receivedNotification:forPath:"_sel, this, name, path);
    if (!alwaysNotify()) return;
  }
  const auto center = mainThreadProxy(NSNotificationCenter::defaultCenter());
  send<void>(center, "postNotificationName:object:userInfo:"_sel, name, this,
             NSDictionary::dictionaryWithObject_forKey(path, "path"_ns));
}

void XJKQueue::watcherThread(NSObject*) {
  const std::shared_ptr<detail::KQueueState> state = state_;
  watch(state);
}

Ref<NSString> XJKQueue::description() const {
  auto paths = make<NSMutableArray>();
  {
    std::lock_guard lock(state_->mutex);
    for (const auto& [watch, path] : state_->paths) paths->addObject(path);
  }
  return NSString::stringWithFormat("%@ { watchedPaths = %@, alwaysNotify = %@ }"_ns,
                                    NSStringFromClass(classObject()), paths,
                                    alwaysNotify() ? "YES"_ns : "NO"_ns);
}

void XJKQueue::describe(ClassDescription<XJKQueue>& is) {
  using Self = XJKQueue;
  is.named("XJKQueue")
      .classMethod<&Self::sharedFileWatcher>("sharedFileWatcher")
      .initializer<&Self::init>("init")
      .method<&Self::queueFD>("queueFD")
      .method<&Self::addPath>("addPath:")
      .method<&Self::addPathToQueue>("addPathToQueue:")
      .method<&Self::addPathToQueue_notifyingAbout>("addPathToQueue:notifyingAbout:")
      .method<&Self::removePath>("removePath:")
      .method<&Self::removePathFromQueue>("removePathFromQueue:")
      .method<&Self::removeAllPathsFromQueue>("removeAllPathsFromQueue")
      .property<&Self::delegate, &Self::setDelegate>("delegate")
      .property<&Self::alwaysNotify, &Self::setAlwaysNotify>("alwaysNotify")
      .method<&Self::postNotification_forFile>("postNotification:forFile:")
      .method<&Self::watcherThread>("watcherThread:");
}

}  // namespace qz
